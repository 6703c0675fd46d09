// JsonObject: a table from member names to values that can remember insertion order.
//
// Deliberate behaviours kept here:
// - Without the keep-order flag, iteration and printing follow the member table's order, which
//   is exactly the order of a std::unordered_map with std::hash given the same history
//   (JsonMemberTable.h); that order is observable, so the table is never reserved.
// - A replaced member keeps its first sequence number, so it keeps its printed place.
// - Once more than half of the sequence numbers are gaps (counter > 2 * size), ordered
//   iteration falls back to the map's order.
// - InsertValueWithNonUTF8Key(key, const JsonValue&) checks the key despite its name.
#pragma once

#include "json/JsonMemberTable.h"
#include "json/JsonValue.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class JsonArray;
class ObjectRef;

class JsonObject final : public JsonValue {
public:
    using MemberTable = JsonMemberTable;
    /// One member: Key(), fSequence (its insertion sequence number) and fValue.
    using Member = JsonMemberTable::Member;

    JsonObject() : JsonValue(eJsonObject) {}
    explicit JsonObject(bool keepOrder) : JsonValue(eJsonObject), fOrder(keepOrder ? 1 : 0) {}
    /// Deep copy: same keys, sequence numbers, flag and counter; every value copied.
    JsonObject(const JsonObject& other);
    JsonObject& operator=(const JsonObject& other);
    JsonObject& operator=(JsonObject&& other) noexcept;
    ~JsonObject() override;

    size_t Size() const noexcept { return fMembers.Size(); }
    bool Empty() const noexcept { return fMembers.Empty(); }
    bool GetKeepOrder() const noexcept { return (fOrder & 1) != 0; }
    void SetKeepOrder(bool keepOrder) noexcept { fOrder = (fOrder & ~1UL) | (keepOrder ? 1 : 0); }
    unsigned long GetNextSequence() const noexcept { return fOrder >> 1; }
    /// The members in the table's order (see JsonMemberTable.h). Inserts and erasures move
    /// members: pointers into the table are valid only until the object changes.
    const MemberTable& Members() const noexcept { return fMembers; }

    // ---- Inserts: a key is checked for UTF-8 unless `trusted`; null values erase ----
    bool InsertValue(const std::string& key, const JsonAutoRefPtr<JsonValue>& value, bool trusted);
    bool InsertValue(std::string&& key, const JsonAutoRefPtr<JsonValue>& value, bool trusted);
    bool InsertValue(const std::string& key, JsonAutoRefPtr<JsonValue>&& value, bool trusted);
    bool InsertValue(std::string&& key, JsonAutoRefPtr<JsonValue>&& value, bool trusted);
    /// Takes over `value`'s reference; on an invalid key the value is released.
    bool InsertValueInternal(const std::string& key, JsonValue* value, bool trusted);
    bool InsertValueInternal(std::string&& key, JsonValue* value, bool trusted);
    bool InsertValueWithNonUTF8Key(const std::string& key, const JsonAutoRefPtr<JsonValue>& value);
    bool InsertValueWithNonUTF8Key(std::string&& key, const JsonAutoRefPtr<JsonValue>& value);
    bool InsertValueWithNonUTF8Key(const std::string& key, JsonAutoRefPtr<JsonValue>&& value);
    bool InsertValueWithNonUTF8Key(std::string&& key, JsonAutoRefPtr<JsonValue>&& value);
    bool InsertValueWithNonUTF8KeyInternal(const std::string& key, JsonValue* value);
    bool InsertValueWithNonUTF8KeyInternal(std::string&& key, JsonValue* value);
    /// Deep-copies `value`; deliberately checks the key and refuses an invalid one.
    bool InsertValueWithNonUTF8Key(const std::string& key, const JsonValue& value);
    bool InsertValueWithNonUTF8Key(std::string&& key, const JsonValue& value);
    /// Inserts a deep copy of `value`.
    bool InsertValue(const std::string& key, const JsonValue& value, bool trusted);
    bool InsertValue(std::string&& key, const JsonValue& value, bool trusted);
    bool InsertString(const std::string& key, const std::string& text, bool trusted, bool textTrusted);
    bool InsertString(std::string&& key, const std::string& text, bool trusted, bool textTrusted);
    bool InsertString(const std::string& key, std::string&& text, bool trusted, bool textTrusted);
    bool InsertString(std::string&& key, std::string&& text, bool trusted, bool textTrusted);
    bool InsertInteger(const std::string& key, long long value, bool trusted);
    bool InsertInteger(std::string&& key, long long value, bool trusted);
    bool InsertInteger(const std::string& key, unsigned long long value, bool trusted);
    bool InsertInteger(std::string&& key, unsigned long long value, bool trusted);
    bool InsertReal(const std::string& key, double value, bool trusted);
    bool InsertReal(std::string&& key, double value, bool trusted);
    bool InsertBool(const std::string& key, bool value, bool trusted);
    bool InsertBool(std::string&& key, bool value, bool trusted);
    bool InsertNull(const std::string& key, bool trusted);
    bool InsertNull(std::string&& key, bool trusted);

    /// Removes the member and releases its value; false when the key was absent.
    bool Erase(const std::string& key);

    // ---- Reads: absent members give null, "", 0, 0.0 or false ----
    JsonAutoRefPtr<JsonValue> At(const std::string& key) const;
    /// The member value without adding a reference, or null.
    JsonValue* Find(const std::string& key) const noexcept;
    std::string KeyValAsString(const std::string& key) const;
    long long KeyValAsInteger(const std::string& key) const;
    double KeyValAsReal(const std::string& key) const;
    bool KeyValAsBool(const std::string& key) const;
    JsonAutoRefPtr<JsonObject> KeyValAsObject(const std::string& key) const;
    JsonAutoRefPtr<JsonArray> KeyValAsArray(const std::string& key) const;
    /// An assignable reference to the member `key` (see ObjectRef).
    ObjectRef operator[](const std::string& key);

    JsonValue* GetSubNode(const std::string& step) const override;

    /// The members in member order: insertion order for an ordered object with few enough
    /// gaps, else the map's own order. Clears `out` first.
    void OrderedMembers(std::vector<const Member*>& out) const;
    /// Appends the members in member order to `out` without clearing it.
    void AppendOrderedMembers(std::vector<const Member*>& out) const;

    /// Visits the members in member order. The members are collected before the first call,
    /// so a callback that changes this object sees the members of the start (each value is
    /// kept alive for its call).
    void ForEach(const std::function<void(const std::string&, const JsonAutoRefPtr<JsonValue>&)>& f) const;
    bool IsEqual(const JsonObject& other) const;

    void AppendToString(std::string& out) const override;
    void AppendToStringPretty(std::string& out, const std::string& indent,
                              const std::string& newLine, int level) const override;
    void AppendToMsgPack(BigEndianWriter* writer) const override;

    static JsonAutoRefPtr<JsonObject> ReadFromString(const std::string& text, ParserContext* ctx);
    /// Parses an object at ctx.fPos; a new node with count 1, or null with the message set.
    static JsonObject* Parse(const std::string& text, ParserContext& ctx);
    static JsonAutoRefPtr<JsonObject> ReadFromMsgPack(const std::string& input, ParserContext* context);
    /// Reads `count` key/value pairs; a new node with count 1, or null with the message set.
    static JsonObject* ParseFromMsgPack(const char*& position, const char* end, unsigned long count,
                                        ParserContext& context);

    /// Inserts or replaces without any key check, taking over `value` (never null); when out of
    /// memory the value is released and std::bad_alloc passed on.
    void Put(std::string_view key, JsonValue* value);
    /// On an empty object: makes room for `count` members whose keys take `keyBytes` bytes
    /// (JsonMemberTable::StoredBytes), so that readers put them without the table moving.
    /// Member order is unchanged by it. Throws std::bad_alloc.
    void PrepareMembers(size_t count, size_t keyBytes) { fMembers.Prepare(count, keyBytes); }

    // ---- Tree-walk internals (deep copy and teardown without recursion) ----
    /// A copy with the same keys, sequence numbers, flag and counter whose values are all null.
    static JsonObject* CloneShell(const JsonObject& other);
    MemberTable& MutableMembers() noexcept { return fMembers; }
    /// Hands every member value's reference to `drop` (which must not throw) and leaves the
    /// object empty.
    template <class F> void TakeChildren(F&& drop) noexcept {
        for (const Member& member : fMembers) drop(member.fValue);
        fMembers.Clear();
    }

private:
    friend class ObjectRef;

    template <class K> bool InsertChecked(K&& key, JsonValue* value, bool trusted);
    template <class K> bool InsertOrErase(K&& key, JsonValue* value);

    void SetNextSequence(unsigned long next) noexcept { fOrder = (next << 1) | (fOrder & 1); }

    MemberTable fMembers;
    // The next insertion sequence number, shifted left by one, and the keep-order flag in the
    // low bit: one word for both keeps an object within 96 bytes, a block size of the node pool.
    unsigned long fOrder = 0;
};

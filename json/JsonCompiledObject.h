// Compiled objects: objects whose possible keys are fixed in advance by a shared key table
// (JsonCompiledObjectContext). Each object holds one value slot per key, addressed by index.
//
// Deliberate behaviours kept here:
// - AddKey stores a compiled-object mask (bit 0x200) without a sub-context as a plain-object
//   mask (0x100), keeping the other bits: such a key then expects a plain object.
// - KeyValAsInteger gives 0 for an integer with the unsigned flag.
// - The pretty form separates keys with "\":" (no blank), unlike JsonObject's "\": ".
#pragma once

#include "json/JsonValue.h"

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

class JsonObject;
class JsonArray;
class CompObjectRef;

/// A key table shared by compiled objects: key texts, their expected-type masks and the key
/// table of nested compiled objects. It must outlive every object made from it; it only grows.
class JsonCompiledObjectContext {
public:
    static constexpr unsigned long sMaxIndex = static_cast<unsigned long>(-1);

    // Expected-type mask bits.
    static constexpr unsigned short kString = 0x1;
    static constexpr unsigned short kNumber = 0x2;
    static constexpr unsigned short kBoolean = 0x4;
    static constexpr unsigned short kNull = 0x8;
    static constexpr unsigned short kArray = 0xF0;
    static constexpr unsigned short kObject = 0x100;
    static constexpr unsigned short kCompiledObject = 0x200;
    static constexpr unsigned short kRequired = 0x400;

    /// The index of `key`, adding it (with its mask and sub-context) when it is new. An
    /// existing key keeps its index, mask and sub-context.
    unsigned long AddKey(const std::string& key, unsigned short typeMask,
                         JsonCompiledObjectContext* subContext);
    /// The index of `key`, or sMaxIndex.
    unsigned long IndexOf(const std::string& key) const;

    size_t KeyCount() const noexcept { return fKeys.size(); }
    const std::string& Key(unsigned long index) const { return fKeys[index]; }
    unsigned short TypeMask(unsigned long index) const { return fTypeMasks[index]; }
    const JsonCompiledObjectContext* SubContext(unsigned long index) const {
        return fSubContexts[index];
    }

    /// The expected-type bit of a value's type (string 1, numbers 2, booleans 4, null 8,
    /// arrays F0, objects 100, compiled objects 200).
    static unsigned short TypeBit(JsonValue::EJsonValueType type);

private:
    std::vector<std::string> fKeys;
    std::unordered_map<std::string, unsigned long> fKeyIndex;
    std::vector<unsigned short> fTypeMasks;
    std::vector<const JsonCompiledObjectContext*> fSubContexts;
};

class JsonCompiledObject final : public JsonValue {
public:
    /// One empty slot per key the context holds now (none without a context).
    explicit JsonCompiledObject(const JsonCompiledObjectContext* context);
    /// Deep copy; the key table is shared, never copied.
    JsonCompiledObject(const JsonCompiledObject& other);
    JsonCompiledObject& operator=(const JsonCompiledObject& other);
    JsonCompiledObject& operator=(JsonCompiledObject&& other) noexcept;
    ~JsonCompiledObject() override;

    const JsonCompiledObjectContext* GetContext() const noexcept { return fContext; }
    /// The number of non-empty slots.
    unsigned long GetSetCount() const noexcept { return fSetCount; }
    size_t SlotCount() const noexcept { return fSlots.size(); }
    const std::vector<JsonValue*>& Slots() const noexcept { return fSlots; }

    // ---- Inserts; an index outside the slots gives false (a made value is released) ----
    bool InsertValue(unsigned long index, const JsonAutoRefPtr<JsonValue>& value);
    bool InsertValue(unsigned long index, const JsonValue& value);
    bool InsertValueInternal(unsigned long index, JsonValue* value);
    bool InsertString(unsigned long index, const std::string& text);
    bool InsertInteger(unsigned long index, long long value);
    bool InsertInteger(unsigned long index, unsigned long long value);
    bool InsertReal(unsigned long index, double value);
    bool InsertBool(unsigned long index, bool value);
    bool InsertNull(unsigned long index);

    JsonAutoRefPtr<JsonValue> At(unsigned long index) const;
    /// The value for `key` without adding a reference, or null.
    JsonValue* Find(const std::string& key) const;
    bool Erase(unsigned long index);

    std::string KeyValAsString(unsigned long index) const;
    long long KeyValAsInteger(unsigned long index) const;
    double KeyValAsReal(unsigned long index) const;
    bool KeyValAsBool(unsigned long index) const;
    JsonAutoRefPtr<JsonObject> KeyValAsObject(unsigned long index) const;
    JsonAutoRefPtr<JsonCompiledObject> KeyValAsCompObject(unsigned long index) const;
    JsonAutoRefPtr<JsonArray> KeyValAsArray(unsigned long index) const;
    /// An assignable reference to the slot `index` (see CompObjectRef).
    CompObjectRef operator[](unsigned long index);

    JsonValue* GetSubNode(const std::string& key) const override;
    /// False when a slot whose key is marked required (0x400) is empty.
    bool Completed() const;
    /// Visits every non-empty slot in index order, holding a reference during each call.
    void ForEach(const std::function<void(unsigned long, const JsonAutoRefPtr<JsonValue>&)>& f) const;
    /// Same key table (identity), same slot count, equal slots (null equals only null).
    bool IsEqual(const JsonCompiledObject& other) const;

    void AppendToString(std::string& out) const override;
    void AppendToStringPretty(std::string& out, const std::string& indent,
                              const std::string& newLine, int level) const override;
    void AppendToMsgPack(BigEndianWriter* writer) const override;

    static JsonAutoRefPtr<JsonCompiledObject> ReadFromString(const std::string& text,
                                                             const JsonCompiledObjectContext* context,
                                                             ParserContext* ctx);
    /// Parses a compiled object at ctx.fPos: unknown keys are skipped, container values must
    /// have the kind their key expects. A new node with count 1, or null with the message set.
    static JsonCompiledObject* Parse(const std::string& text, ParserContext& ctx,
                                     const JsonCompiledObjectContext* context);
    static JsonAutoRefPtr<JsonCompiledObject> ReadFromMsgPack(const std::string& input,
                                                              const JsonCompiledObjectContext* context,
                                                              ParserContext* ctx);
    static JsonCompiledObject* ParseFromMsgPack(const char*& position, const char* end,
                                                unsigned long count, ParserContext& context,
                                                const JsonCompiledObjectContext* compiled);

    /// Stores `value` (reference taken over, may be null) in a valid slot, keeping the count.
    void PutSlot(unsigned long index, JsonValue* value) noexcept;

    // ---- Tree-walk internals (deep copy and teardown without recursion) ----
    /// A copy with the same key table and set count whose slots are all empty.
    static JsonCompiledObject* CloneShell(const JsonCompiledObject& other);
    std::vector<JsonValue*>& MutableSlots() noexcept { return fSlots; }
    /// Hands every slot's reference to `drop` and leaves the object empty.
    template <class F> void TakeChildren(F&& drop) noexcept {
        for (JsonValue*& slot : fSlots) drop(std::exchange(slot, nullptr));
        fSetCount = 0;
    }

private:
    friend class CompObjectRef;

    void ReleaseSlots() noexcept;

    const JsonCompiledObjectContext* fContext;
    unsigned long fSetCount = 0;
    std::vector<JsonValue*> fSlots;
};

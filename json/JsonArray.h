// JsonArray: a vector of element values.
//
// Deliberate behaviours kept here:
// - SetValueAtIndex with a null value removes the element only at the last position and puts
//   a null anywhere else, so that no other index shifts.
// - InsertValueAtIndex never appends (an index at or beyond the size does nothing).
// - ForEachWithUserData records at most 20 item errors and never stops early.
#pragma once

#include "json/JsonElements.h"
#include "json/JsonValue.h"

#include <functional>
#include <string>
#include <vector>

class JsonObject;
class ArrayRef;

class JsonArray final : public JsonValue {
public:
    static constexpr unsigned long npos = static_cast<unsigned long>(-1);

    JsonArray() : JsonValue(eJsonArray) {}
    /// Deep copy of every element, in order.
    JsonArray(const JsonArray& other);
    JsonArray& operator=(const JsonArray& other);
    JsonArray& operator=(JsonArray&& other) noexcept;
    ~JsonArray() override;

    using ElementVector = JsonElements;

    size_t Size() const noexcept { return fElements.size(); }
    bool Empty() const noexcept { return fElements.empty(); }
    const ElementVector& Elements() const noexcept { return fElements; }

    // ---- Appends (a null pointer appends nothing) ----
    void AddValue(const JsonAutoRefPtr<JsonValue>& value);
    void AddValue(JsonAutoRefPtr<JsonValue>&& value);
    void AddValue(const JsonValue& value);
    /// Takes over `value`'s reference.
    void AddValueInternal(JsonValue* value);
    void AddString(const std::string& text, bool* ok, bool trusted);
    void AddString(std::string&& text, bool* ok, bool trusted);
    void AddInteger(long long value);
    void AddReal(double value);
    void AddBool(bool value);
    void AddNull();

    // ---- Changes by index; indexes outside the array do nothing ----
    void InsertValueAtIndex(unsigned long index, const JsonAutoRefPtr<JsonValue>& value);
    void SetValueAtIndex(unsigned long index, const JsonAutoRefPtr<JsonValue>& value);
    /// As SetValueAtIndex, taking over `value`'s reference (released when index >= size).
    void SetValueAtIndexInternal(unsigned long index, JsonValue* value);
    void EraseAtIndex(unsigned long index);
    /// Removes up to `count` elements from `first`; returns how many were removed.
    unsigned long Erase(unsigned long first, unsigned long count);

    // ---- Reads: out of range gives null, "", 0, 0.0 or false ----
    JsonAutoRefPtr<JsonValue> AtIndex(unsigned long index) const;
    std::string AtIndexAsString(unsigned long index) const;
    long long AtIndexAsInteger(unsigned long index) const;
    double AtIndexAsReal(unsigned long index) const;
    bool AtIndexAsBool(unsigned long index) const;
    JsonAutoRefPtr<JsonObject> AtIndexAsObject(unsigned long index) const;
    JsonAutoRefPtr<JsonArray> AtIndexAsArray(unsigned long index) const;
    /// An assignable reference to the element at `index` (see ArrayRef).
    ArrayRef operator[](unsigned long index);

    JsonValue* GetSubNode(const std::string& step) const override;

    /// Visits every element; the size is read again after each call, so a callback may
    /// change the array's length.
    void ForEach(const std::function<void(unsigned long, const JsonAutoRefPtr<JsonValue>&)>& f) const;
    /// Visits every element and collects up to 20 item errors into `errors` as
    /// "Item 'N' has error 'TEXT'" joined by ", "; returns the callback's success flag.
    /// Throws std::bad_function_call for an empty `f` on a non-empty array.
    bool ForEachWithUserData(
        const std::function<void(unsigned long, const JsonValue*, void*, bool&, std::string*)>& f,
        void* userData, std::string* errors) const;
    bool IsEqual(const JsonArray& other) const;

    void AppendToString(std::string& out) const override;
    void AppendToStringPretty(std::string& out, const std::string& indent,
                              const std::string& newLine, int level) const override;
    void AppendToMsgPack(BigEndianWriter* writer) const override;

    static JsonAutoRefPtr<JsonArray> ReadFromString(const std::string& text, ParserContext* ctx,
                                                    const JsonCompiledObjectContext* keys);
    /// Parses an array at ctx.fPos; with `keys` every element must be a compiled object of that
    /// key table. A new node with count 1, or null with the message set.
    static JsonArray* Parse(const std::string& text, ParserContext& ctx,
                            const JsonCompiledObjectContext* keys);
    static JsonAutoRefPtr<JsonArray> ReadFromMsgPack(const std::string& input, ParserContext* context,
                                                     const JsonCompiledObjectContext* compiled);
    static JsonArray* ParseFromMsgPack(const char*& position, const char* end, unsigned long count,
                                       ParserContext& context,
                                       const JsonCompiledObjectContext* compiled);

    /// Appends taking over `value` (never null). Storage grows as JsonElements says: two
    /// elements in place, then a first block of ten, then doubling.
    void Push(JsonValue* value) { fElements.push_back(value); }
    /// Makes room for `count` more elements at once (used by readers that know the count).
    void Reserve(size_t count) { fElements.reserve(count); }
    /// Appends `count` elements at once, taking over their references (used by the parser,
    /// which knows an array's elements when it closes).
    void TakeElements(JsonValue* const* elements, size_t count) { fElements.append(elements, count); }

    // ---- Tree-walk internals (deep copy and teardown without recursion) ----
    /// A copy with as many elements as `other`, all null.
    static JsonArray* CloneShell(const JsonArray& other);
    ElementVector& MutableElements() noexcept { return fElements; }
    /// Hands every element's reference to `drop` (which must not throw) and leaves the array
    /// empty.
    template <class F> void TakeChildren(F&& drop) noexcept {
        for (JsonValue* element : fElements) drop(element);
        fElements.clear();
    }

private:
    friend class ArrayRef;

    ElementVector fElements;
};

// The node base of the value tree: the intrusive reference count, the type tag, the owning
// pointer JsonAutoRefPtr and the conversions every node offers. Containers live in
// JsonObject.h, JsonArray.h and JsonCompiledObject.h; scalars in JsonScalar.h. The members
// that read and write JSON text are defined in json/text/, those for MessagePack in
// json/msgpack/.
//
// Threads. A tree has no lock. Any number of threads may read one tree at once: every const
// operation (lookups, conversions, equality, copying, writing text or MessagePack) is a read,
// including the first use of a real that still holds its text, whose conversion is published
// atomically (JsonReal). Changing a tree (inserts, erasures, SetValueAtIndex, the reference
// helpers of JsonRefs.h) is a write: nothing else may use that tree meanwhile. Reference
// counts are atomic, so a node may be shared between trees and threads and is freed by
// whichever thread drops its last reference.
//
// Deliberate: releasing the last reference of a container never recurses once per nesting
// level (see JsonValue::Release); documents of any depth can be freed on a small stack.
#pragma once

#include "json/JsonMemory.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

class BigEndianWriter;
class JsonCompiledObjectContext;
struct ParserContext;
template <class T> class JsonAutoRefPtr;

/// The intrusive reference count. A node starts with one reference, owned by its creator.
class JsonUseCounted {
public:
    JsonUseCounted() noexcept = default;
    JsonUseCounted(const JsonUseCounted&) noexcept {}
    JsonUseCounted& operator=(const JsonUseCounted&) noexcept { return *this; }

    uint32_t GetUseCount() const noexcept { return fUseCount.load(std::memory_order_relaxed); }

protected:
    mutable std::atomic<uint32_t> fUseCount{1};
};

/// One node of a JSON value tree. Nodes are created with count 1 and destroyed by the
/// Release that takes the count to 0. For threads, see the top of this file.
class JsonValue : public JsonUseCounted {
public:
    enum EJsonValueType : uint32_t {
        eJsonString = 0,
        eJsonInteger = 1,
        eJsonReal = 2,
        eJsonObject = 3,
        eJsonCompiledObject = 4,
        eJsonArray = 5,
        eJsonTrue = 6,
        eJsonFalse = 7,
        eJsonNull = 8,
    };
    static const std::string fTypeStrings[9];

    JsonValue(const JsonValue&) = delete;
    JsonValue& operator=(const JsonValue&) = delete;

    EJsonValueType GetType() const noexcept { return fType; }
    bool IsContainer() const noexcept {
        return fType == eJsonObject || fType == eJsonCompiledObject || fType == eJsonArray;
    }

    // Reference counting is not virtual: every node counts the same way, and the counting
    // sits on the hottest paths of the tree.
    void AddRef() const noexcept { fUseCount.fetch_add(1, std::memory_order_relaxed); }
    /// Drops one reference; returns true when this call removed the last one and destroyed
    /// the node (and, iteratively, every child that no one else holds).
    bool Release() const noexcept {
        if (fUseCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return false;
        Destroy(this);
        return true;
    }
    /// Drops one reference without destroying; true when the count reached 0 and the caller
    /// now owns the node's destruction. Used by the iterative tree teardown.
    bool ReleaseKeep() const noexcept {
        return fUseCount.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }

    virtual ~JsonValue() = default;

    // Nodes come from the small-block pool: a tree is allocated and freed node by node.
    static void* operator new(size_t size) { return JsonMemory::Allocate(size); }
    static void operator delete(void* node, size_t size) noexcept { JsonMemory::Free(node, size); }

    /// Appends the compact JSON text of this node.
    virtual void AppendToString(std::string& out) const = 0;
    /// Appends the pretty JSON text of a node standing at nesting depth `level`; scalars
    /// write their compact text.
    virtual void AppendToStringPretty(std::string& out, const std::string& indent,
                                      const std::string& newLine, int level) const;
    /// Appends the MessagePack encoding of this node.
    virtual void AppendToMsgPack(BigEndianWriter* writer) const = 0;
    /// The child named by one path step, without adding a reference; null for scalars.
    /// Arrays may throw std::out_of_range for a step with too many digits.
    virtual JsonValue* GetSubNode(const std::string& step) const;

    // ---- Conversions (fixed rules per type; never throw for bad data) ----
    bool GetAsString(std::string& out) const;
    std::string GetAsString() const;
    bool GetAsInteger(long long& out) const;
    long long GetAsInteger() const;
    bool GetAsReal(double& out) const;
    double GetAsReal() const;
    bool GetAsBool(bool& out) const;
    bool GetAsBool() const;

    // ---- Copying ----
    /// A new deep copy with count 1, owned by the caller. Never recurses per nesting level.
    static JsonValue* CopyNoARefPtr(const JsonValue& value);
    static JsonAutoRefPtr<JsonValue> Copy(const JsonValue& value);

    // ---- Node paths ----
    /// The node that a slash-separated path names (one leading slash dropped), with a new
    /// reference, or null. Throws std::out_of_range for an array step beyond int range.
    JsonAutoRefPtr<JsonValue> NodeFromPath(const std::string& path) const;

    // ---- Text ----
    /// Parses one JSON document. On failure returns null, leaves the fixed message in
    /// ctx->fError and the line in ctx->fLine; never throws for bad text. ctx may be null
    /// (a private context is used and the error is lost).
    static JsonAutoRefPtr<JsonValue> ReadFromString(const std::string& text, ParserContext* ctx,
                                                    const JsonCompiledObjectContext* keys);
    /// Parses one value starting exactly at ctx.fPos; a new node with count 1, or null.
    static JsonValue* Parse(const std::string& text, ParserContext& ctx,
                            const JsonCompiledObjectContext* keys);
    static JsonValue* ParseNumber(const std::string& text, ParserContext& ctx);
    /// Reads one quoted string at ctx.fPos into `out` (decoded); false with a message on error.
    static bool ParseString(const std::string& text, std::string& out, ParserContext& ctx);

    // ---- MessagePack ----
    /// Encodes this value into `out` (emptied first). False, with `out` empty, when a string or
    /// container is too long for the format.
    bool WriteToMsgPack(std::string& out) const;
    static JsonAutoRefPtr<JsonValue> ReadFromMsgPack(const std::string& input,
                                                     ParserContext* context,
                                                     const JsonCompiledObjectContext* compiled);
    /// Reads one value at `position`, advancing it; a new node with count 1, or null with the
    /// message in `context`.
    static JsonValue* ParseFromMsgPack(const char*& position, const char* end,
                                       ParserContext& context,
                                       const JsonCompiledObjectContext* compiled);

    // ---- UTF-8 ----
    /// Structural UTF-8 check (overlong forms, surrogates and values up to F7 lead bytes are
    /// accepted on purpose). On success *errorPos receives the length, on failure the index of
    /// the first bad sequence's lead byte.
    static bool IsUTF8(const std::string& s, unsigned long* errorPos = nullptr);
    static bool IsUTF8(std::string_view s, unsigned long* errorPos = nullptr);

protected:
    explicit JsonValue(EJsonValueType type) noexcept : fType(type) {}

private:
    static void Destroy(const JsonValue* node) noexcept;

    const EJsonValueType fType;
};

/// Writes the diagnostic line about object counting (counting itself is not built in).
void PrintCounter();

/// The owning pointer to a node. Wrapping a raw pointer takes over its reference (a fresh node
/// comes with one); copying adds a reference; destruction releases one.
template <class T> class JsonAutoRefPtr {
public:
    JsonAutoRefPtr() noexcept = default;
    JsonAutoRefPtr(std::nullptr_t) noexcept {}
    /// Takes over the caller's reference to `p`.
    explicit JsonAutoRefPtr(T* p) noexcept : fPtr(p) {}
    JsonAutoRefPtr(const JsonAutoRefPtr& other) noexcept : fPtr(other.fPtr) {
        if (fPtr) fPtr->AddRef();
    }
    JsonAutoRefPtr(JsonAutoRefPtr&& other) noexcept : fPtr(other.fPtr) { other.fPtr = nullptr; }
    template <class U>
    JsonAutoRefPtr(const JsonAutoRefPtr<U>& other) noexcept : fPtr(other.Get()) {
        if (fPtr) fPtr->AddRef();
    }
    template <class U> JsonAutoRefPtr(JsonAutoRefPtr<U>&& other) noexcept : fPtr(other.Detach()) {}
    ~JsonAutoRefPtr() {
        if (fPtr) fPtr->Release();
    }

    JsonAutoRefPtr& operator=(const JsonAutoRefPtr& other) noexcept {
        JsonAutoRefPtr(other).Swap(*this);
        return *this;
    }
    JsonAutoRefPtr& operator=(JsonAutoRefPtr&& other) noexcept {
        JsonAutoRefPtr(std::move(other)).Swap(*this);
        return *this;
    }
    JsonAutoRefPtr& operator=(std::nullptr_t) noexcept {
        Reset();
        return *this;
    }

    /// A pointer sharing `p` (one reference added).
    static JsonAutoRefPtr Share(T* p) noexcept {
        if (p) p->AddRef();
        return JsonAutoRefPtr(p);
    }

    T* Get() const noexcept { return fPtr; }
    T* operator->() const noexcept { return fPtr; }
    T& operator*() const noexcept { return *fPtr; }
    explicit operator bool() const noexcept { return fPtr != nullptr; }

    /// Gives up ownership without releasing: the caller now holds the reference.
    T* Detach() noexcept { return std::exchange(fPtr, nullptr); }
    void Reset(T* p = nullptr) noexcept {
        T* old = std::exchange(fPtr, p);
        if (old) old->Release();
    }
    void Swap(JsonAutoRefPtr& other) noexcept { std::swap(fPtr, other.fPtr); }

private:
    T* fPtr = nullptr;
};

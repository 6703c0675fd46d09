// MessagePack decoding into value trees, with an explicit stack of open containers.
//
// Deliberate behaviours kept here:
// - White space after the value is tolerated (and counts lines), as after JSON text.
// - A string value that is not valid UTF-8 silently becomes "" (unless UTF-8 is trusted).
// - A map whose input ends where a key should start fails with "string expected": the reader
//   sees the input's terminating zero byte, which is no string code.
// - A map key that is not valid UTF-8 is dropped, or fails with "duplicate key" (the text
//   parser's message for a member an object cannot take) when keys are strict.
// - Binary and extension types are refused; the position stays on their code byte.
// Counts and lengths from the input are never trusted for allocation: bytes are checked
// before they are copied, and element storage is reserved only for elements that the bytes
// still unread can hold, summed over every open array (see OpenArray).
#include "json/msgpack/MsgPackReader.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonFrameStack.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParseHelpers.h"
#include "json/ParseMessages.h"
#include "json/ParserContext.h"

#include <cstring>
#include <vector>

using namespace ParseMessages;

namespace {

unsigned long long ReadBigEndian(const char* at, int bytes) {
    unsigned long long value = 0;
    for (int i = 0; i < bytes; ++i) value = (value << 8) | static_cast<unsigned char>(at[i]);
    return value;
}

bool Fail(ParserContext& ctx, const char* message) {
    ctx.fError = message;
    return false;
}

// A string's bytes, where they stand in the input (see ParseStringFromMsgPack).
bool StringBytes(unsigned char code, const char*& position, const char* end, ParserContext& context,
                 std::string_view& out) {
    unsigned long long length;
    int lengthBytes = 0;
    if (code == 0xDB) {
        lengthBytes = 4;
    } else if (code == 0xDA) {
        lengthBytes = 2;
    } else if (code == 0xD9) {
        lengthBytes = 1;
    } else if ((code & 0xE0) == 0xA0) {
        length = code & 0x1F;
    } else {
        return Fail(context, kStringExpected);
    }
    if (lengthBytes) {
        if (end - position < lengthBytes) return Fail(context, kUnexpectedEnd);
        length = ReadBigEndian(position, lengthBytes);
        position += lengthBytes;
    }
    if (static_cast<unsigned long long>(end - position) < length) return Fail(context, kUnexpectedEnd);
    out = std::string_view(position, static_cast<size_t>(length));
    position += length;
    return true;
}

} // namespace

bool ParseStringFromMsgPack(unsigned char code, const char*& position, const char* end,
                            ParserContext& context, std::string& out) {
    std::string_view bytes;
    if (!StringBytes(code, position, end, context, bytes)) return false;
    out.assign(bytes);
    return true;
}

namespace {

// Reads values with an explicit stack of open containers: nesting costs heap, not native
// stack. The parser owns everything it has built until it hands the finished value back, so an
// error or an exception (only std::bad_alloc) at any point releases all of it.
class MsgPackParser {
public:
    MsgPackParser(const char*& position, const char* end, ParserContext& ctx)
        : fPos(position), fEnd(end), fCtx(ctx) {}
    MsgPackParser(const MsgPackParser&) = delete;
    MsgPackParser& operator=(const MsgPackParser&) = delete;
    ~MsgPackParser() { Unwind(); }

    /// Reads one value.
    JsonValue* Run(const JsonCompiledObjectContext* keys) { return Read(keys); }
    /// Reads the `count` entries of a map (`map`) or array whose header was already consumed.
    JsonValue* RunContainer(bool map, unsigned long count, const JsonCompiledObjectContext* keys) {
        if (map) {
            OpenMap(count, keys);
        } else {
            OpenArray(count, keys);
        }
        return Read(keys, true);
    }

private:
    struct Frame {
        JsonValue* fContainer = nullptr;
        JsonValue::EJsonValueType fKind = JsonValue::eJsonNull;
        unsigned long long fRemaining = 0; // members or elements still to read
        size_t fReserved = 0;              // arrays: reserved element slots not yet filled
        const JsonCompiledObjectContext* fKeys = nullptr;
        unsigned long fSlot = 0;        // compiled objects: slot of the value being read
        const char* fValueStart = nullptr; // compiled objects: where that value started
        size_t fFirstMember = 0;        // objects: where their members start in fMembers
        std::string_view fKey;          // key of the value being read, where it stands in the input
    };

    // A member read and waiting for its map to end: an object takes all its members at once,
    // its table laid out for them. Keys stay where they stand in the input.
    struct PendingMember {
        std::string_view fKey;
        JsonValue* fValue; // owned until the object takes it
    };

    JsonValue* Fail(const char* message) {
        fCtx.fError = message;
        return Unwind();
    }
    JsonValue* Unwind() noexcept {
        while (fFrames.Depth() > 0) fFrames.Pop().fContainer->Release();
        for (const PendingMember& member : fMembers)
            if (member.fValue) member.fValue->Release();
        fMembers.clear();
        fReserved = 0;
        return nullptr;
    }
    void Push(JsonValue* container, JsonValue::EJsonValueType kind, unsigned long long count,
              const JsonCompiledObjectContext* keys);
    // A container header: `count` entries follow. Maps become compiled objects under a key table.
    void OpenMap(unsigned long long count, const JsonCompiledObjectContext* keys);
    void OpenArray(unsigned long long count, const JsonCompiledObjectContext* keys);
    /// Closes the innermost frame and hands its container over; an object takes its pending
    /// members first. Throws std::bad_alloc with the frame still open (see Unwind).
    JsonValue* Pop();
    bool ReadKey(std::string_view& key);
    /// Stores a finished value in the innermost container; takes over `value` in every case.
    /// False (with the message set) when the container refuses it.
    bool Store(JsonValue* value);
    JsonValue* Read(const JsonCompiledObjectContext* keys, bool opened = false);
    bool Need(size_t bytes) const { return static_cast<size_t>(fEnd - fPos) >= bytes; }

    const char*& fPos;
    const char* fEnd;
    ParserContext& fCtx;
    JsonFrameStack<Frame> fFrames;
    // Element slots reserved and not yet filled, over all open arrays. Each such slot needs at
    // least one byte of what is still unread, so this never exceeds the bytes left.
    size_t fReserved = 0;
    std::vector<PendingMember> fMembers; // of the open objects, stacked
    std::string fScratch;
};

void MsgPackParser::Push(JsonValue* container, JsonValue::EJsonValueType kind,
                         unsigned long long count, const JsonCompiledObjectContext* keys) {
    JsonAutoRefPtr<JsonValue> owned(container); // released should the stack fail to grow
    Frame& frame = fFrames.Push();
    frame.fContainer = owned.Detach();
    frame.fKind = kind;
    frame.fRemaining = count;
    frame.fReserved = 0;
    frame.fKeys = keys;
    frame.fFirstMember = fMembers.size();
}

JsonValue* MsgPackParser::Pop() {
    Frame& frame = fFrames.Top();
    if (frame.fKind == JsonValue::eJsonObject) {
        auto* object = static_cast<JsonObject*>(frame.fContainer);
        size_t keyBytes = 0;
        for (size_t i = frame.fFirstMember; i < fMembers.size(); ++i)
            keyBytes += JsonMemberTable::StoredBytes(fMembers[i].fKey.size());
        object->PrepareMembers(fMembers.size() - frame.fFirstMember, keyBytes);
        // In reading order: the later of two duplicate keys wins. Each member leaves the list
        // as the object takes it, so that an allocation failure releases every value once.
        for (size_t i = frame.fFirstMember; i < fMembers.size(); ++i)
            object->Put(fMembers[i].fKey, std::exchange(fMembers[i].fValue, nullptr));
        fMembers.resize(frame.fFirstMember);
    }
    fFrames.Pop();
    fReserved -= frame.fReserved; // 0 by now: its reserved slots were filled first
    return frame.fContainer;
}

void MsgPackParser::OpenMap(unsigned long long count, const JsonCompiledObjectContext* keys) {
    if (keys) {
        Push(new JsonCompiledObject(keys), JsonValue::eJsonCompiledObject, count, keys);
    } else {
        Push(new JsonObject(fCtx.fKeepOrder), JsonValue::eJsonObject, count, nullptr);
    }
}

void MsgPackParser::OpenArray(unsigned long long count, const JsonCompiledObjectContext* keys) {
    Push(new JsonArray(), JsonValue::eJsonArray, count, keys);
    // Every element takes at least one byte, and so does every slot the open arrays have
    // reserved but not filled yet: reserve only what the unread bytes can still fill. Nested
    // headers that each claim 2^32 elements therefore reserve no more, together, than the
    // input is long; an array whose header claims more than it holds grows as elements arrive.
    const auto unread = static_cast<size_t>(fEnd - fPos);
    const size_t budget = unread > fReserved ? unread - fReserved : 0;
    const size_t reserve = count < budget ? static_cast<size_t>(count) : budget;
    if (reserve == 0) return;
    Frame& frame = fFrames.Top();
    static_cast<JsonArray*>(frame.fContainer)->Reserve(reserve); // the frame owns the array
    frame.fReserved = reserve;
    fReserved += reserve;
}

bool MsgPackParser::ReadKey(std::string_view& key) {
    // A key may start exactly at the end: the byte there is the input's terminating zero,
    // which is no string code.
    const unsigned char code = fPos < fEnd ? static_cast<unsigned char>(*fPos) : 0;
    ++fPos;
    if (!StringBytes(code, fPos, fEnd, fCtx, key)) {
        if (fPos > fEnd) fPos = fEnd;
        Unwind();
        return false;
    }
    return true;
}

JsonValue* MsgPackParser::Read(const JsonCompiledObjectContext* keys, bool opened) {
    JsonValue* value = nullptr;
    if (opened) goto containerStep;

beginValue: {
    if (fPos >= fEnd) return Fail(kUnexpectedEnd);
    const auto code = static_cast<unsigned char>(*fPos++);
    if (code <= 0x7F) { // positive fixint
        value = new JsonInteger(static_cast<long long>(code));
    } else if (code <= 0x8F) { // fixmap
        OpenMap(code & 0x0F, keys);
        goto containerStep;
    } else if (code <= 0x9F) { // fixarray
        OpenArray(code & 0x0F, keys);
        goto containerStep;
    } else if (code <= 0xBF || (code >= 0xD9 && code <= 0xDB)) { // fixstr, str 8/16/32
        std::string_view text;
        if (!StringBytes(code, fPos, fEnd, fCtx, text)) return Unwind();
        bool trusted = fCtx.fTrustUTF8;
        // Deliberate: invalid UTF-8 becomes the empty string, without an error.
        value = new JsonString(text, &trusted, nullptr);
    } else if (code >= 0xE0) { // negative fixint
        value = new JsonInteger(static_cast<long long>(static_cast<signed char>(code)));
    } else {
        switch (code) {
        case 0xC0: value = new JsonNull(); break;
        case 0xC2: value = new JsonFalse(); break;
        case 0xC3: value = new JsonTrue(); break;
        case 0xCA: { // float 32
            if (!Need(4)) return Fail(kUnexpectedEnd);
            const auto bits = static_cast<uint32_t>(ReadBigEndian(fPos, 4));
            float narrow;
            std::memcpy(&narrow, &bits, 4);
            fPos += 4;
            value = new JsonReal(static_cast<double>(narrow));
            break;
        }
        case 0xCB: { // float 64
            if (!Need(8)) return Fail(kUnexpectedEnd);
            const uint64_t bits = ReadBigEndian(fPos, 8);
            double wide;
            std::memcpy(&wide, &bits, 8);
            fPos += 8;
            value = new JsonReal(wide);
            break;
        }
        case 0xCC: case 0xCD: case 0xCE: case 0xCF: { // uint 8/16/32/64
            const int bytes = 1 << (code - 0xCC);
            if (!Need(static_cast<size_t>(bytes))) return Fail(kUnexpectedEnd);
            const unsigned long long v = ReadBigEndian(fPos, bytes);
            fPos += bytes;
            value = new JsonInteger(v, true); // unsigned only above the signed range
            break;
        }
        case 0xD0: case 0xD1: case 0xD2: case 0xD3: { // int 8/16/32/64
            const int bytes = 1 << (code - 0xD0);
            if (!Need(static_cast<size_t>(bytes))) return Fail(kUnexpectedEnd);
            unsigned long long v = ReadBigEndian(fPos, bytes);
            fPos += bytes;
            const int unused = 64 - 8 * bytes;
            if (unused) { // sign-extend
                const unsigned long long sign = 1ULL << (8 * bytes - 1);
                if (v & sign) v |= ~0ULL << (8 * bytes);
            }
            value = new JsonInteger(static_cast<long long>(v));
            break;
        }
        case 0xDC: case 0xDD: case 0xDE: case 0xDF: { // array 16/32, map 16/32
            const int bytes = (code & 1) ? 4 : 2;
            if (!Need(static_cast<size_t>(bytes))) return Fail(kUnexpectedEnd);
            const unsigned long long count = ReadBigEndian(fPos, bytes);
            fPos += bytes;
            if (code <= 0xDD) {
                OpenArray(count, keys);
            } else {
                OpenMap(count, keys);
            }
            goto containerStep;
        }
        default: // C1, bin C4-C6, ext C7-C9, fixext D4-D8
            --fPos;
            return Fail(kUnsupportedMsgPackCode);
        }
    }
    goto valueDone;
}

containerStep: {
    Frame& frame = fFrames.Top();
    if (frame.fRemaining == 0) {
        value = Pop();
        goto valueDone;
    }
    --frame.fRemaining;
    switch (frame.fKind) {
    case JsonValue::eJsonArray:
        keys = frame.fKeys; // an array of compiled objects keeps its key table
        goto beginValue;
    case JsonValue::eJsonObject:
        if (!ReadKey(frame.fKey)) return nullptr;
        keys = nullptr; // key tables do not reach into plain objects
        goto beginValue;
    default: {
        if (!ReadKey(frame.fKey)) return nullptr;
        const auto* object = static_cast<const JsonCompiledObject*>(frame.fContainer);
        fScratch.assign(frame.fKey);
        const unsigned long index = frame.fKeys->IndexOf(fScratch);
        frame.fValueStart = fPos;
        if (index >= object->SlotCount()) { // unknown keys are skipped without error
            frame.fSlot = JsonCompiledObjectContext::sMaxIndex;
            keys = nullptr;
        } else {
            frame.fSlot = index;
            keys = frame.fKeys->SubContext(index);
        }
        goto beginValue;
    }
    }
}

valueDone:
    if (fFrames.Depth() == 0) return value;
    if (!Store(value)) return nullptr;
    goto containerStep;
}

bool MsgPackParser::Store(JsonValue* value) {
    JsonAutoRefPtr<JsonValue> owned(value); // released here unless a container takes it
    Frame& frame = fFrames.Top();
    switch (frame.fKind) {
    case JsonValue::eJsonArray:
        static_cast<JsonArray*>(frame.fContainer)->AddValueInternal(owned.Detach());
        if (frame.fReserved > 0) {
            --frame.fReserved;
            --fReserved;
        }
        return true;
    case JsonValue::eJsonObject:
        // Keys are always checked here, even when UTF-8 is trusted.
        if (!JsonValue::IsUTF8(frame.fKey)) {
            if (fCtx.fStrictKeys) {
                Fail(kDuplicateKey);
                return false;
            }
            return true; // dropped silently
        }
        fMembers.push_back({frame.fKey, value});
        owned.Detach();
        return true;
    default: {
        if (frame.fSlot == JsonCompiledObjectContext::sMaxIndex) return true; // skipped key
        const unsigned short mask = frame.fKeys->TypeMask(frame.fSlot);
        if (mask && !(JsonCompiledObjectContext::TypeBit(value->GetType()) & mask)) {
            fPos = frame.fValueStart;
            Fail(kNotExpectedType);
            return false;
        }
        static_cast<JsonCompiledObject*>(frame.fContainer)->PutSlot(frame.fSlot, owned.Detach());
        return true;
    }
    }
}

} // namespace

JsonValue* JsonValue::ParseFromMsgPack(const char*& position, const char* end, ParserContext& context,
                                       const JsonCompiledObjectContext* compiled) {
    MsgPackParser parser(position, end, context);
    return parser.Run(compiled);
}

JsonObject* JsonObject::ParseFromMsgPack(const char*& position, const char* end, unsigned long count,
                                         ParserContext& context) {
    MsgPackParser parser(position, end, context);
    return static_cast<JsonObject*>(parser.RunContainer(true, count, nullptr));
}

JsonArray* JsonArray::ParseFromMsgPack(const char*& position, const char* end, unsigned long count,
                                       ParserContext& context, const JsonCompiledObjectContext* compiled) {
    MsgPackParser parser(position, end, context);
    return static_cast<JsonArray*>(parser.RunContainer(false, count, compiled));
}

JsonCompiledObject* JsonCompiledObject::ParseFromMsgPack(const char*& position, const char* end,
                                                         unsigned long count, ParserContext& context,
                                                         const JsonCompiledObjectContext* compiled) {
    if (!compiled) return nullptr;
    MsgPackParser parser(position, end, context);
    return static_cast<JsonCompiledObject*>(parser.RunContainer(true, count, compiled));
}

// MARK: - Entry points

JsonAutoRefPtr<JsonValue> JsonValue::ReadFromMsgPack(const std::string& input, ParserContext* context,
                                                     const JsonCompiledObjectContext* compiled) {
    ParserContext privateContext = ParserContext::Private();
    ParserContext& ctx = context ? *context : privateContext;
    ctx.Reset();
    if (input.empty()) {
        ctx.fError = kEmptyInput;
        return nullptr;
    }
    const char* position = input.data();
    const char* end = position + input.size();
    JsonAutoRefPtr<JsonValue> value(ParseFromMsgPack(position, end, ctx, compiled));
    ctx.fPos = static_cast<uint64_t>(position - input.data());
    if (!value) return nullptr;
    // Deliberate: white space after the binary value is skipped like after JSON text.
    SkipWhiteSpace(input.data(), input.size(), ctx);
    if (ctx.fPos < input.size()) {
        ctx.fError = kTrailingCharacters;
        return nullptr;
    }
    ctx.fComplete = true;
    return value;
}

JsonAutoRefPtr<JsonObject> JsonObject::ReadFromMsgPack(const std::string& input, ParserContext* context) {
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromMsgPack(input, context, nullptr);
    if (!value || value->GetType() != eJsonObject) return nullptr;
    return JsonAutoRefPtr<JsonObject>(static_cast<JsonObject*>(value.Detach()));
}

JsonAutoRefPtr<JsonArray> JsonArray::ReadFromMsgPack(const std::string& input, ParserContext* context,
                                                     const JsonCompiledObjectContext* compiled) {
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromMsgPack(input, context, compiled);
    if (!value || value->GetType() != eJsonArray) return nullptr;
    return JsonAutoRefPtr<JsonArray>(static_cast<JsonArray*>(value.Detach()));
}

JsonAutoRefPtr<JsonCompiledObject> JsonCompiledObject::ReadFromMsgPack(
    const std::string& input, const JsonCompiledObjectContext* context, ParserContext* ctx) {
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromMsgPack(input, ctx, context);
    if (!value || value->GetType() != eJsonCompiledObject) return nullptr;
    return JsonAutoRefPtr<JsonCompiledObject>(static_cast<JsonCompiledObject*>(value.Detach()));
}

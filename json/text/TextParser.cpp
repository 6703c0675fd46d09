// The JSON text parser: the entry points of every node class, the string reader, and one
// iterative engine that reads values, objects, arrays and compiled objects with an explicit
// stack of frames. Numbers are read by json/NumberReader.cpp. Text that starts like a
// MessagePack container is handed to the MessagePack reader when the context accepts it: the
// one place where one format calls the other.
//
// Deliberate behaviours kept here:
// - fLine counts line breaks consumed, so an error on the first line is line 0; CR LF and
//   LF CR are one break each.
// - A surrogate pair is decoded with (((high | 0x40) << 10) - 0x3600000) | (low - 0xDC00):
//   for high surrogates with bit 6 set it gives a code point 0x10000 below the standard one.
// - Duplicate keys: the last value wins and keeps the first key's place.
// - A plain object appends " while parsing a value" to a member value's error at every level;
//   arrays append nothing; compiled objects append " while parsing value".
#include "json/ByteScan.h"
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonFrameStack.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParseHelpers.h"
#include "json/ParseMessages.h"
#include "json/ParserContext.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

using namespace ParseMessages;

namespace {

// Most calls find no white space at all: that case stays inline.
inline void SkipWhiteSpace(const std::string& text, ParserContext& ctx) {
    if (ctx.fPos < text.size() && static_cast<unsigned char>(text[ctx.fPos]) > ' ') return;
    ::SkipWhiteSpace(text.data(), text.size(), ctx);
}

size_t FindStringStop(const char* text, size_t pos, size_t size) {
    return ByteScan::FindStringStop(reinterpret_cast<const unsigned char*>(text), pos, size);
}

bool FailString(std::string& out, ParserContext& ctx) {
    out.clear();
    if (ctx.fError.empty()) ctx.fError = kQuoteExpected;
    return false;
}

// One \u escape at text[backslash]; appends the decoded bytes and moves `pos` behind it.
bool ReadUnicodeEscape(const std::string& text, size_t backslash, size_t& pos, std::string& out,
                       ParserContext& ctx) {
    const size_t size = text.size();
    // Accepted only when a byte follows the four hex digits.
    unsigned long digits = backslash + 2;
    unsigned short unit = 0;
    if (backslash + 6 >= size || !Parse4HexDigits(text, digits, unit)) {
        ctx.fError = kUtf16Escape;
        return false;
    }
    size_t next = backslash + 6;
    if (unit >= 0xD800 && unit <= 0xDBFF && size - next >= 7 && text[next] == '\\' &&
        text[next + 1] == 'u') {
        unsigned long lowDigits = next + 2;
        unsigned short low = 0;
        if (!Parse4HexDigits(text, lowDigits, low)) {
            ctx.fError = kUtf32Escape;
            return false;
        }
        if (low >= 0xDC00 && low <= 0xDFFF) {
            // Deliberate: this exact formula, asymmetry included (see the file header); the
            // standard profile decodes the pair as Unicode says.
            const unsigned int high = unit;
            AppendUnicodeAsUTF8(out, ctx.fStandard
                                         ? 0x10000 + ((high - 0xD800u) << 10) + (low - 0xDC00u)
                                         : (((high | 0x40) << 10) - 0x3600000) | (low - 0xDC00u));
        } else {
            AppendUnicodeAsUTF8(out, unit);
            AppendUnicodeAsUTF8(out, low);
        }
        pos = next + 6;
        return true;
    }
    AppendUnicodeAsUTF8(out, unit);
    pos = next;
    return true;
}

} // namespace

// MARK: - Strings

bool JsonValue::ParseString(const std::string& text, std::string& out, ParserContext& ctx) {
    const char* s = text.data();
    const size_t size = text.size();
    size_t pos = ctx.fPos;
    ctx.fPos = pos + 1; // past the opening quote, whether or not it is one
    if (pos >= size || s[pos] != '"') return FailString(out, ctx);
    ++pos;

    size_t stop = FindStringStop(s, pos, size);
    if (stop >= size) {
        ctx.fPos = size;
        return FailString(out, ctx);
    }
    out.assign(s + pos, stop - pos);
    pos = stop;
    for (;;) {
        if (pos >= size) {
            ctx.fPos = size;
            return FailString(out, ctx);
        }
        const char c = s[pos];
        if (c == '"') {
            ++pos;
            break;
        }
        if (static_cast<unsigned char>(c) < 0x20) {
            ctx.fPos = pos;
            ctx.fError = kControlCharacter;
            return FailString(out, ctx);
        }
        if (c != '\\') {
            stop = FindStringStop(s, pos, size);
            out.append(s + pos, stop - pos);
            pos = stop;
            continue;
        }
        if (pos + 1 >= size) {
            ctx.fPos = size;
            return FailString(out, ctx);
        }
        const char escape = s[pos + 1];
        char decoded;
        switch (escape) {
        case '"':
        case '\\':
        case '/': decoded = escape; break;
        case 'b': decoded = '\b'; break;
        case 'f': decoded = '\f'; break;
        case 'n': decoded = '\n'; break;
        case 'r': decoded = '\r'; break;
        case 't': decoded = '\t'; break;
        case 'u':
            if (!ReadUnicodeEscape(text, pos, pos, out, ctx)) {
                ctx.fPos = pos;
                return FailString(out, ctx);
            }
            continue;
        default:
            ctx.fPos = pos;
            ctx.fError = kIllegalEscape;
            return FailString(out, ctx);
        }
        out += decoded;
        pos += 2;
    }
    ctx.fPos = pos;

    unsigned long bad = 0;
    if (!ctx.fTrustUTF8 && !ctx.fInputIsUTF8 && !IsUTF8(out, &bad)) {
        out.resize(std::min<unsigned long>(bad, 20));
        ctx.fPos += bad;
        ctx.fError = kIllegalUtf8 + std::to_string(bad);
        if (!out.empty()) {
            ctx.fError += kUtf8StringStart;
            ctx.fError += '"';
            ctx.fError += out;
            ctx.fError += '"';
        }
        out.clear();
        return false;
    }
    return true;
}

// MARK: - The value engine

namespace {

enum class EStart { kValue, kObject, kArray, kCompiled };

// Reads one value with an explicit stack: nesting depth costs heap, not native stack.
class TextParser {
public:
    TextParser(const std::string& text, ParserContext& ctx) : fText(text), fCtx(ctx) {}

    JsonValue* Run(EStart start, const JsonCompiledObjectContext* keys);

private:
    struct Frame {
        JsonValue* fContainer = nullptr;
        // Arrays: the key table of compiled elements; compiled objects: their own key table.
        const JsonCompiledObjectContext* fKeys = nullptr;
        unsigned long fSlot = 0; // compiled objects: the slot of the value being read
        // Arrays: where their elements start in fElements; objects: their members in fMembers.
        size_t fFirstElement = 0;
        size_t fFirstKeyByte = 0; // objects: where their decoded keys start in fKeyBytes
        // Objects: the key of the value being read: in place in the input when it has no
        // escapes (fKeyInText), else decoded into fKeyBytes.
        size_t fKeyOffset = 0;
        size_t fKeyLength = 0;
        JsonValue::EJsonValueType fKind = JsonValue::eJsonNull;
        char fPrevious = 0;    // last separator: '{', '[', ',' or a member's first byte
        bool fInValue = false; // a member value or element is being read
        bool fKeyInText = false;
    };

    // A member read and waiting for its object to close: an object takes all its members at
    // once, its table laid out for them, as an array takes its elements.
    struct PendingMember {
        size_t fKeyOffset; // in the input text, or (decoded keys) in fKeyBytes
        size_t fKeyLength;
        bool fKeyInText;
        JsonValue* fValue; // owned until the object takes it
    };

    bool AtEnd() const { return fCtx.fPos >= fText.size(); }
    char Peek() const { return fText[fCtx.fPos]; }
    void SkipSpace() { SkipWhiteSpace(fText, fCtx); }
    Frame& Push(JsonValue* container, JsonValue::EJsonValueType kind,
                const JsonCompiledObjectContext* keys, char opening);
    JsonValue* PopContainer() { return fFrames.Pop().fContainer; }
    /// Closes the innermost frame, an array: it takes the elements read for it.
    JsonValue* PopArray();
    /// Closes the innermost frame, an object: it takes the members read for it.
    JsonValue* PopObject();
    /// Reads the key at fPos into the innermost frame; false with the message set.
    bool ReadKey(Frame& frame);
    /// The innermost frame's key has its value: the member waits for its object's close.
    void AddMember(Frame& frame, JsonValue* value);
    std::string_view KeyOf(const PendingMember& member) const {
        return {(member.fKeyInText ? fText.data() : fKeyBytes.data()) + member.fKeyOffset,
                member.fKeyLength};
    }
    JsonValue* Fail(const char* message) {
        fCtx.fError = message;
        return Unwind();
    }

public:
    /// Releases everything built so far, adding the enclosing levels' suffixes to the message.
    JsonValue* Unwind();

private:

    const std::string& fText;
    ParserContext& fCtx;
    JsonFrameStack<Frame> fFrames; // frames are reused, so their key strings keep their capacity
    // The elements of the open arrays, stacked; an array takes its own when it closes, so that
    // its vector is allocated once at the right size. The same for the members of open objects.
    std::vector<JsonValue*> fElements;
    std::vector<PendingMember> fMembers;
    std::string fKeyBytes; // the decoded keys of fMembers that are not read in place
    std::string fScratch;
};

TextParser::Frame& TextParser::Push(JsonValue* container, JsonValue::EJsonValueType kind,
                                    const JsonCompiledObjectContext* keys, char opening) {
    JsonAutoRefPtr<JsonValue> owned(container); // released should the stack fail to grow
    Frame& frame = fFrames.Push();
    frame.fContainer = owned.Detach();
    frame.fKind = kind;
    frame.fKeys = keys;
    frame.fPrevious = opening;
    frame.fInValue = false;
    frame.fFirstElement = kind == JsonValue::eJsonObject ? fMembers.size() : fElements.size();
    frame.fFirstKeyByte = fKeyBytes.size();
    return frame;
}

JsonValue* TextParser::PopArray() {
    Frame& frame = fFrames.Top();
    auto* array = static_cast<JsonArray*>(frame.fContainer);
    array->TakeElements(fElements.data() + frame.fFirstElement, fElements.size() - frame.fFirstElement);
    fElements.resize(frame.fFirstElement);
    fFrames.Pop(); // only now: should taking the elements throw, the frame still owns the array
    return array;
}

JsonValue* TextParser::PopObject() {
    Frame& frame = fFrames.Top();
    auto* object = static_cast<JsonObject*>(frame.fContainer);
    const size_t first = frame.fFirstElement;
    size_t keyBytes = 0;
    for (size_t i = first; i < fMembers.size(); ++i)
        keyBytes += JsonMemberTable::StoredBytes(fMembers[i].fKeyLength);
    object->PrepareMembers(fMembers.size() - first, keyBytes);
    // In reading order: a later duplicate replaces the value and keeps the first one's place.
    // Each member leaves the list as the object takes it, so that an allocation failure
    // releases every value once (see Unwind).
    for (size_t i = first; i < fMembers.size(); ++i)
        object->Put(KeyOf(fMembers[i]), std::exchange(fMembers[i].fValue, nullptr));
    fMembers.resize(first);
    fKeyBytes.resize(frame.fFirstKeyByte);
    fFrames.Pop();
    return object;
}

bool TextParser::ReadKey(Frame& frame) {
    // A key without escapes is taken where it stands when its bytes need no check of their
    // own (trusted, or checked with the whole input): no copy until the object takes it.
    const char* s = fText.data();
    const size_t size = fText.size();
    const size_t pos = fCtx.fPos;
    if ((fCtx.fTrustUTF8 || fCtx.fInputIsUTF8) && pos < size && s[pos] == '"') {
        const size_t stop = FindStringStop(s, pos + 1, size);
        if (stop < size && s[stop] == '"') {
            frame.fKeyInText = true;
            frame.fKeyOffset = pos + 1;
            frame.fKeyLength = stop - pos - 1;
            fCtx.fPos = stop + 1;
            return true;
        }
    }
    if (!JsonValue::ParseString(fText, fScratch, fCtx)) return false;
    frame.fKeyInText = false;
    frame.fKeyOffset = fKeyBytes.size();
    frame.fKeyLength = fScratch.size();
    fKeyBytes += fScratch;
    return true;
}

void TextParser::AddMember(Frame& frame, JsonValue* value) {
    JsonAutoRefPtr<JsonValue> owned(value); // released here should the list fail to grow
    fMembers.push_back({frame.fKeyOffset, frame.fKeyLength, frame.fKeyInText, value});
    owned.Detach();
}

// Releases every open container; each level that was reading a member value adds its suffix
// to the message, innermost first, as the nested readers of a recursive parser would.
JsonValue* TextParser::Unwind() {
    // Everything is released even when a suffix cannot be added for lack of memory; that
    // failure is passed on at the end.
    bool outOfMemory = false;
    while (fFrames.Depth() > 0) {
        Frame& frame = fFrames.Pop();
        frame.fContainer->Release();
        if (!frame.fInValue || outOfMemory) continue;
        try {
            if (frame.fKind == JsonValue::eJsonObject) {
                if (!fCtx.fError.empty()) fCtx.fError += kWhileParsingValue;
            } else if (frame.fKind == JsonValue::eJsonCompiledObject) {
                // No message means the value was not of the kind the key expects.
                if (fCtx.fError.empty()) {
                    fCtx.fError = kNotExpectedType;
                } else {
                    fCtx.fError += kCompiledWhileParsingValue;
                }
            }
        } catch (const std::bad_alloc&) {
            outOfMemory = true;
        }
    }
    for (JsonValue* element : fElements) element->Release();
    fElements.clear();
    for (const PendingMember& member : fMembers)
        if (member.fValue) member.fValue->Release();
    fMembers.clear();
    fKeyBytes.clear();
    if (outOfMemory) throw std::bad_alloc();
    return nullptr;
}

JsonValue* TextParser::Run(EStart start, const JsonCompiledObjectContext* keys) {
    const char* s = fText.data();
    const size_t size = fText.size();
    EStart mode = start;
    JsonValue* value = nullptr;

beginValue:
    switch (mode) {
    case EStart::kValue: {
        if (AtEnd()) return Fail(kUnexpectedEnd);
        const size_t pos = fCtx.fPos;
        switch (s[pos]) {
        case '"': {
            bool trusted = true; // checked as the options ask, by the whole input or below
            if (fCtx.fTrustUTF8 || fCtx.fInputIsUTF8) {
                // Without escapes the text is copied once, straight from the input.
                const size_t stop = FindStringStop(s, pos + 1, size);
                if (stop < size && s[stop] == '"') {
                    value = new JsonString(std::string_view(s + pos + 1, stop - pos - 1), &trusted, nullptr);
                    fCtx.fPos = stop + 1;
                    goto valueDone;
                }
            }
            if (!JsonValue::ParseString(fText, fScratch, fCtx)) return Unwind();
            value = new JsonString(std::string_view(fScratch), &trusted, nullptr);
            goto valueDone;
        }
        case '[':
            mode = EStart::kArray;
            goto beginValue;
        case '{':
            mode = keys ? EStart::kCompiled : EStart::kObject;
            goto beginValue;
        case 't':
            if (size - pos < 4 || std::memcmp(s + pos, "true", 4) != 0) return Fail(kNotAValue);
            fCtx.fPos += 4;
            value = new JsonTrue();
            goto valueDone;
        case 'f':
            if (size - pos < 5 || std::memcmp(s + pos, "false", 5) != 0) return Fail(kNotAValue);
            fCtx.fPos += 5;
            value = new JsonFalse();
            goto valueDone;
        case 'n':
            if (size - pos < 4 || std::memcmp(s + pos, "null", 4) != 0) return Fail(kNotAValue);
            fCtx.fPos += 4;
            value = new JsonNull();
            goto valueDone;
        default:
            if (s[pos] == '-' || IsDecimalDigit(s[pos])) {
                value = JsonValue::ParseNumber(fText, fCtx);
                if (!value) return Unwind();
                goto valueDone;
            }
            return Fail(kNotAValue);
        }
    }
    case EStart::kObject:
        if (AtEnd() || Peek() != '{') return Fail(kIllegalObject);
        Push(new JsonObject(fCtx.fKeepOrder), JsonValue::eJsonObject, nullptr, '{');
        ++fCtx.fPos;
        SkipSpace();
        goto containerStep;
    case EStart::kArray:
        if (AtEnd() || Peek() != '[') return Fail(kIllegalArray);
        Push(new JsonArray(), JsonValue::eJsonArray, keys, '[');
        ++fCtx.fPos;
        SkipSpace();
        goto containerStep;
    case EStart::kCompiled:
        if (!keys || AtEnd() || Peek() != '{') return Fail(kIllegalCompiledObject);
        Push(new JsonCompiledObject(keys), JsonValue::eJsonCompiledObject, keys, '{');
        ++fCtx.fPos;
        SkipSpace();
        if (!AtEnd() && Peek() == '}') {
            ++fCtx.fPos;
            SkipSpace();
            value = PopContainer();
            goto valueDone;
        }
        if (!AtEnd() && Peek() == ',') return Fail(kObjectLeadingComma);
        goto compiledMember;
    }

containerStep: {
    Frame& frame = fFrames.Top();
    if (frame.fKind == JsonValue::eJsonObject) {
        // object: "{" [ member *( "," member ) ] "}"   member: string ":" value
        if (AtEnd()) return Fail(kIllegalObject);
        // Members dropped for a bad key do not count: the object is still empty then.
        const bool empty = fMembers.size() == frame.fFirstElement;
        const char c = Peek();
        if (c == ',') {
            if (frame.fPrevious == ',' || empty) return Fail(kObjectLeadingComma);
            ++fCtx.fPos;
            SkipSpace();
            frame.fPrevious = ',';
            goto containerStep;
        }
        if (c == '}') {
            if (frame.fPrevious == ',') return Fail(kObjectTrailingComma);
            ++fCtx.fPos;
            SkipSpace();
            value = PopObject();
            goto valueDone;
        }
        if (frame.fPrevious != ',' && !empty) return Fail(kObjectCommaExpected);
        if (!ReadKey(frame)) {
            if (fCtx.fError.empty()) return Fail(kKeyExpected);
            fCtx.fError += kWhileParsingKey;
            return Unwind();
        }
        SkipSpace();
        if (AtEnd() || Peek() != ':') return Fail(kColonExpected);
        ++fCtx.fPos;
        SkipSpace();
        frame.fInValue = true;
        frame.fPrevious = '"';
        mode = EStart::kValue;
        keys = nullptr; // members of a plain object are never compiled objects
        goto beginValue;
    }
    if (frame.fKind == JsonValue::eJsonArray) {
        // array: "[" [ value *( "," value ) ] "]"
        if (AtEnd()) return Fail(kIllegalArray);
        const bool empty = fElements.size() == frame.fFirstElement;
        const char c = Peek();
        if (c == ',') {
            if (frame.fPrevious == ',' || empty) return Fail(kArrayLeadingComma);
            ++fCtx.fPos;
            SkipSpace();
            frame.fPrevious = ',';
            goto containerStep;
        }
        if (c == ']') {
            if (frame.fPrevious == ',') return Fail(kArrayTrailingComma);
            ++fCtx.fPos;
            SkipSpace();
            value = PopArray();
            goto valueDone;
        }
        if (frame.fPrevious != ',' && !empty) return Fail(kArrayCommaExpected);
        frame.fPrevious = c;
        frame.fInValue = true;
        keys = frame.fKeys;
        mode = keys ? EStart::kCompiled : EStart::kValue;
        goto beginValue;
    }
    // A compiled object continues after a member.
    if (AtEnd()) return Fail(kObjectCommaExpected);
    if (Peek() == '}') {
        ++fCtx.fPos;
        SkipSpace();
        value = PopContainer();
        goto valueDone;
    }
    if (Peek() != ',') return Fail(kObjectCommaExpected);
    ++fCtx.fPos;
    SkipSpace();
    if (!AtEnd() && Peek() == '}') return Fail(kCompiledTrailingComma);
    goto compiledMember;
}

compiledMember: {
    // Unknown keys are read and thrown away; a known key's mask picks the reader for its value.
    Frame& frame = fFrames.Top();
    if (!JsonValue::ParseString(fText, fScratch, fCtx)) {
        if (fCtx.fError.empty()) return Fail(kKeyExpected);
        fCtx.fError += kWhileParsingKey;
        return Unwind();
    }
    SkipSpace();
    if (AtEnd() || Peek() != ':') return Fail(kColonExpected);
    ++fCtx.fPos;
    SkipSpace();
    const auto* object = static_cast<const JsonCompiledObject*>(frame.fContainer);
    const unsigned long index = frame.fKeys->IndexOf(fScratch);
    frame.fInValue = true;
    mode = EStart::kValue;
    keys = nullptr;
    if (index >= object->SlotCount()) {
        frame.fSlot = JsonCompiledObjectContext::sMaxIndex;
        goto beginValue;
    }
    frame.fSlot = index;
    const unsigned short mask = frame.fKeys->TypeMask(index);
    const JsonCompiledObjectContext* sub = frame.fKeys->SubContext(index);
    char opening = 0;
    if ((mask & JsonCompiledObjectContext::kCompiledObject) && sub) {
        mode = EStart::kCompiled;
        opening = '{';
    } else if (mask & JsonCompiledObjectContext::kObject) {
        mode = EStart::kObject;
        opening = '{';
    } else if (mask & JsonCompiledObjectContext::kArray) {
        mode = EStart::kArray;
        opening = '[';
    }
    keys = sub;
    // A value that does not even start like the expected container fails without a message
    // of its own; the compiled level then reports "value is not of expected type".
    if (opening && (AtEnd() || Peek() != opening)) return Unwind();
    goto beginValue;
}

valueDone:
    if (fFrames.Depth() == 0) return value;
    {
        Frame& frame = fFrames.Top();
        frame.fInValue = false;
        switch (frame.fKind) {
        case JsonValue::eJsonObject: {
            // A key read in place was taken only when no check was due.
            if (!frame.fKeyInText && !fCtx.fTrustUTF8 && !fCtx.fInputIsUTF8 &&
                !JsonValue::IsUTF8(std::string_view(fKeyBytes).substr(frame.fKeyOffset, frame.fKeyLength))) {
                value->Release();
                // Deliberate: the message for a member the object cannot take is this one.
                if (fCtx.fStrictKeys) return Fail(kDuplicateKey);
            } else {
                AddMember(frame, value); // out of memory: see RunParser
            }
            SkipSpace();
            goto containerStep;
        }
        case JsonValue::eJsonArray:
            try {
                fElements.push_back(value);
            } catch (...) {
                value->Release();
                throw;
            }
            SkipSpace();
            goto containerStep;
        default:
            if (frame.fSlot == JsonCompiledObjectContext::sMaxIndex) {
                value->Release();
            } else {
                static_cast<JsonCompiledObject*>(frame.fContainer)->PutSlot(frame.fSlot, value);
            }
            SkipSpace();
            goto containerStep;
        }
    }
}

JsonValue* RunParser(const std::string& text, ParserContext& ctx, EStart start,
                     const JsonCompiledObjectContext* keys) {
    TextParser parser(text, ctx);
    try {
        return parser.Run(start, keys);
    } catch (...) {
        parser.Unwind(); // only allocation failure gets here: free what was built, pass it on
        throw;
    }
}

} // namespace

// MARK: - Entry points

JsonValue* JsonValue::Parse(const std::string& text, ParserContext& ctx,
                            const JsonCompiledObjectContext* keys) {
    return RunParser(text, ctx, EStart::kValue, keys);
}

JsonObject* JsonObject::Parse(const std::string& text, ParserContext& ctx) {
    return static_cast<JsonObject*>(RunParser(text, ctx, EStart::kObject, nullptr));
}

JsonArray* JsonArray::Parse(const std::string& text, ParserContext& ctx,
                            const JsonCompiledObjectContext* keys) {
    return static_cast<JsonArray*>(RunParser(text, ctx, EStart::kArray, keys));
}

JsonCompiledObject* JsonCompiledObject::Parse(const std::string& text, ParserContext& ctx,
                                              const JsonCompiledObjectContext* context) {
    return static_cast<JsonCompiledObject*>(RunParser(text, ctx, EStart::kCompiled, context));
}

JsonAutoRefPtr<JsonValue> JsonValue::ReadFromString(const std::string& text, ParserContext* ctx,
                                                    const JsonCompiledObjectContext* keys) {
    ParserContext privateContext = ParserContext::Private();
    if (ctx && ctx->fAcceptMsgPack && !text.empty()) {
        const auto first = static_cast<unsigned char>(text[0]);
        // fixmap, fixarray, array 16/32, map 16/32
        if ((first >= 0x80 && first <= 0x9F) || (first >= 0xDC && first <= 0xDF))
            return ReadFromMsgPack(text, ctx, keys);
    }
    if (!ctx) ctx = &privateContext;
    ctx->Reset();
    if (!ctx->fTrustUTF8 && ctx->fCheckUTF8) ctx->fInputIsUTF8 = IsUTF8(text);
    if (text.size() >= 3 && std::memcmp(text.data(), "\xEF\xBB\xBF", 3) == 0) ctx->fPos = 3;

    SkipWhiteSpace(text, *ctx);
    JsonAutoRefPtr<JsonValue> value(Parse(text, *ctx, keys));
    if (!value) return nullptr;
    SkipWhiteSpace(text, *ctx);
    if (ctx->fPos < text.size()) {
        ctx->fError = kTrailingCharacters;
        return nullptr;
    }
    ctx->fComplete = true;
    return value;
}

JsonAutoRefPtr<JsonObject> JsonObject::ReadFromString(const std::string& text, ParserContext* ctx) {
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, ctx, nullptr);
    if (!value || value->GetType() != eJsonObject) return nullptr;
    return JsonAutoRefPtr<JsonObject>(static_cast<JsonObject*>(value.Detach()));
}

JsonAutoRefPtr<JsonArray> JsonArray::ReadFromString(const std::string& text, ParserContext* ctx,
                                                    const JsonCompiledObjectContext* keys) {
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, ctx, keys);
    if (!value || value->GetType() != eJsonArray) return nullptr;
    return JsonAutoRefPtr<JsonArray>(static_cast<JsonArray*>(value.Detach()));
}

JsonAutoRefPtr<JsonCompiledObject> JsonCompiledObject::ReadFromString(
    const std::string& text, const JsonCompiledObjectContext* context, ParserContext* ctx) {
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, ctx, context);
    if (!value || value->GetType() != eJsonCompiledObject) return nullptr;
    return JsonAutoRefPtr<JsonCompiledObject>(static_cast<JsonCompiledObject*>(value.Detach()));
}

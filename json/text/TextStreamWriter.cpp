// TextStreamWriter. The layouts mirror TextWriter's visitors byte for byte; scalars and key
// escaping are TextWriter's own (WriteCompact of the node, AppendQuotedString), so that number
// and string formatting has one definition, apart from the standard profile's two additions.
#include "json/text/TextStreamWriter.h"

#include "json/JsonScalar.h"
#include "json/TreeWalk.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace {

constexpr size_t kNone = std::string_view::npos;

// An encoded surrogate is ED, then A0..BF, then a continuation byte: code points D800..DFFF.
size_t FindEncodedSurrogate(std::string_view text, size_t from) {
    for (size_t at = text.find('\xED', from); at != kNone; at = text.find('\xED', at + 1)) {
        if (at + 2 >= text.size()) return kNone;
        const auto second = static_cast<unsigned char>(text[at + 1]);
        const auto third = static_cast<unsigned char>(text[at + 2]);
        if ((second & 0xE0) == 0xA0 && (third & 0xC0) == 0x80) return at;
    }
    return kNone;
}

// Puts scalars and keys into the output's buffer.
class TextItems {
public:
    TextItems(ChunkedOutput& out, const TextWriterOptions& options)
        : fOut(out), fOptions(options) {}

    std::string& Buffer() { return fOut.Buffer(); }

    void Scalar(const JsonValue& node) {
        if (fOptions.fStandard && node.GetType() == JsonValue::eJsonReal &&
            PutShortestReal(static_cast<const JsonReal&>(node)))
            return;
        if (fOptions.fStandard && node.GetType() == JsonValue::eJsonString) {
            const std::string_view text = static_cast<const JsonString&>(node).Get();
            if (FindEncodedSurrogate(text, 0) != kNone) {
                Buffer() += '"';
                PutQuoted(text);
                Buffer() += '"';
                return;
            }
        }
        // Through a small string: TextWriter grows its target by doubling, which on the
        // output's buffer would cost the buffer's size for every scalar.
        fItem.clear();
        TextWriter::WriteCompact(node, fItem, fOptions);
        Buffer() += fItem;
    }

    /// The opening quote mark and the escaped key; the layout adds the rest.
    void KeyText(std::string_view key) {
        Buffer() += '"';
        PutQuoted(key);
    }

private:
    // A real made from a double (as MessagePack gives them) in the fewest digits that read
    // back to the same double: TextWriter's fixed notation loses the sign of -0.0 and, beyond
    // 255 characters, every digit of the tiniest values. Reals that hold their text, reals
    // with a digit count and non-finite values are left to TextWriter.
    bool PutShortestReal(const JsonReal& real) {
        if (real.HasPendingText() || real.GetDigitCount() != 0) return false;
        const double value = real.Get();
        if (!std::isfinite(value)) return false;
        char text[32];
        const auto result = std::to_chars(text, text + sizeof text, value);
        const std::string_view digits(text, static_cast<size_t>(result.ptr - text));
        Buffer() += digits;
        // As TextWriter: a whole number keeps a fraction, so that it still reads as a real.
        if (digits.find_first_of(".e") == std::string_view::npos) Buffer() += ".0";
        return true;
    }

    void PutQuoted(std::string_view text) {
        size_t clean = 0;
        if (fOptions.fStandard) {
            for (size_t at = FindEncodedSurrogate(text, 0); at != kNone;
                 at = FindEncodedSurrogate(text, clean)) {
                PutEscaped(text.substr(clean, at - clean));
                const unsigned unit = 0xD000u | ((static_cast<unsigned char>(text[at + 1]) & 0x3Fu) << 6) |
                                      (static_cast<unsigned char>(text[at + 2]) & 0x3Fu);
                static constexpr char kHex[] = "0123456789ABCDEF";
                const char escape[6] = {'\\', 'u', kHex[unit >> 12], kHex[(unit >> 8) & 0xF],
                                        kHex[(unit >> 4) & 0xF], kHex[unit & 0xF]};
                Buffer().append(escape, sizeof escape);
                clean = at + 3;
            }
        }
        PutEscaped(text.substr(clean));
    }

    void PutEscaped(std::string_view text) {
        fText.assign(text); // AppendQuotedString takes a std::string
        fItem.clear();      // and grows its target as TextWriter does (see Scalar)
        AppendQuotedString(fText, fItem);
        Buffer() += fItem;
    }

    ChunkedOutput& fOut;
    const TextWriterOptions& fOptions;
    // Reused for every item, so that they keep their room.
    std::string fText;
    std::string fItem;
};

// TextWriter's compact layout.
struct CompactLayout {
    static constexpr bool kVisitMissing = false;
    TextItems& fItems;
    ChunkedOutput& fOut;

    void Put(char c) { fOut.Buffer() += c; }
    void Scalar(const JsonValue& node) {
        fItems.Scalar(node);
        fOut.Step();
    }
    void BeginObject(const JsonObject&) { Put('{'); }
    void EndObject(const JsonObject&, size_t) { Close('}'); }
    void BeginArray(const JsonArray&) { Put('['); }
    void EndArray(const JsonArray&, size_t) { Close(']'); }
    void BeginCompiled(const JsonCompiledObject&) { Put('{'); }
    void EndCompiled(const JsonCompiledObject&, size_t) { Close('}'); }
    void Close(char bracket) {
        Put(bracket);
        fOut.Step();
    }
    void Key(const JsonValue&, std::string_view key, bool first) {
        if (!first) Put(',');
        fItems.KeyText(key);
        fOut.Buffer().append("\":", 2);
        fOut.Step();
    }
    void Element(bool first) {
        if (!first) Put(',');
    }
    void Missing() {}
    size_t CompiledLimit(const JsonCompiledObject&) { return SIZE_MAX; }
};

// TextWriter's pretty layout: children of a container at level L start on a new line indented
// L + 1 times, its closing bracket is indented L times.
struct PrettyLayout {
    static constexpr bool kVisitMissing = false;
    TextItems& fItems;
    ChunkedOutput& fOut;
    const std::string& fIndent;
    const std::string& fNewLine;
    int fLevel = 0; // level of the innermost open container, once one is open
    // The line break and the indentation of the deepest level so far: any new line is a
    // prefix of it.
    std::string fLineStart = fNewLine;

    void Put(char c) { fOut.Buffer() += c; }
    void Scalar(const JsonValue& node) {
        fItems.Scalar(node);
        fOut.Step();
    }
    void NewLine(int level) {
        const size_t length = fNewLine.size() + fIndent.size() * static_cast<size_t>(std::max(level, 0));
        while (fLineStart.size() < length) fLineStart += fIndent;
        fOut.Buffer().append(fLineStart.data(), length);
    }
    void Open(char bracket) {
        Put(bracket);
        ++fLevel;
    }
    void Close(char bracket, size_t written) {
        --fLevel;
        if (written) NewLine(fLevel);
        Put(bracket);
        fOut.Step();
    }
    void BeginObject(const JsonObject&) { Open('{'); }
    void EndObject(const JsonObject&, size_t written) { Close('}', written); }
    void BeginArray(const JsonArray&) { Open('['); }
    void EndArray(const JsonArray&, size_t written) { Close(']', written); }
    void BeginCompiled(const JsonCompiledObject&) { Open('{'); }
    void EndCompiled(const JsonCompiledObject&, size_t written) { Close('}', written); }
    void StartChild(bool first) {
        if (!first) Put(',');
        NewLine(fLevel);
    }
    void Key(const JsonValue& container, std::string_view key, bool first) {
        StartChild(first);
        fItems.KeyText(key);
        // As TextWriter: compiled objects write no blank after the colon, plain objects do.
        if (container.GetType() == JsonValue::eJsonCompiledObject) {
            fOut.Buffer().append("\":", 2);
        } else {
            fOut.Buffer().append("\": ", 3);
        }
        fOut.Step();
    }
    void Element(bool first) { StartChild(first); }
    void Missing() {}
    size_t CompiledLimit(const JsonCompiledObject&) { return SIZE_MAX; }
};

template <class Layout> void Walk(const JsonValue& root, Layout& layout, bool sortKeys) {
    if (sortKeys) {
        WalkTree<EMemberOrder::kKeyOrder>(root, layout);
    } else {
        WalkTree<EMemberOrder::kMemberOrder>(root, layout);
    }
}

} // namespace

namespace TextStreamWriter {

void Write(const JsonValue& root, ChunkedOutput& out, const TextStreamOptions& options) {
    TextItems items(out, options.fWriter);
    if (options.fPretty) {
        PrettyLayout layout{items, out, options.fIndent, options.fNewLine};
        Walk(root, layout, options.fSortKeys);
    } else {
        CompactLayout layout{items, out};
        Walk(root, layout, options.fSortKeys);
    }
    out.Flush();
}

} // namespace TextStreamWriter

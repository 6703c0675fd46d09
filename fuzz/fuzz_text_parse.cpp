// Fuzz target: JSON text. The input is parsed with member order kept and UTF-8 checked once;
// when it parses, the compact text must be a fixed point of writing and re-reading, the trees
// must agree, a deep copy must print the same, the pretty text must read back to an equal
// tree and the MessagePack encoding must decode to an equal tree. The input is then parsed a
// second time with options taken from its last byte: bit 0 trusted UTF-8, bit 1 strict keys,
// bit 2 MessagePack accepted, bit 3 order not kept, bit 4 no whole-input UTF-8 check.
//
// Properties a tree deliberately breaks are skipped for that tree only: the writer prints
// nan/inf for non-finite reals and a leading 0 for integers whose digit count comes out one too
// high (9999999999999999 prints as 09999999999999999), and a whole real made from a double
// (MessagePack input) at or beyond 2^63 prints without ".0", so it reads back as an integer,
// and one below about 1e-233 prints through std::to_string with six decimals (1e-300 as 0.0).
// A real below 1 that holds no text (converted, or made from a double) reads back with one
// digit more than it prints with, so for such trees the texts are not compared, only the trees.
#include "fuzz/FuzzSupport.h"

#include "json/JsonEquality.h"
#include "json/ParserContext.h"

namespace {

using namespace FuzzSupport;

struct Options {
    bool fTrustUTF8 = false;
    bool fStrictKeys = false;
    bool fAcceptMsgPack = false;
    bool fKeepOrder = true;
    bool fCheckUTF8 = true;

    static Options FromByte(uint8_t bits) {
        Options options;
        options.fTrustUTF8 = bits & 0x01;
        options.fStrictKeys = bits & 0x02;
        options.fAcceptMsgPack = bits & 0x04;
        options.fKeepOrder = !(bits & 0x08);
        options.fCheckUTF8 = !(bits & 0x10);
        return options;
    }
    ParserContext Context() const {
        ParserContext ctx;
        ctx.fTrustUTF8 = fTrustUTF8;
        ctx.fStrictKeys = fStrictKeys;
        ctx.fAcceptMsgPack = fAcceptMsgPack;
        ctx.fKeepOrder = fKeepOrder;
        ctx.fCheckUTF8 = fCheckUTF8;
        return ctx;
    }
};

JsonAutoRefPtr<JsonValue> Read(const std::string& text, const Options& options) {
    ParserContext ctx = options.Context();
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, &ctx, nullptr);
    CheckReadOutcome(value.Get() != nullptr, ctx);
    return value;
}

void CheckDocument(const std::string& text, const Options& options) {
    // Text that starts like a MessagePack container may go to the MessagePack reader.
    const size_t perByte =
        options.fAcceptMsgPack ? MemoryBounds::kMsgPackPerByte : MemoryBounds::kTextPerByte;
    const JsonAutoRefPtr<JsonValue> first =
        HeldWithin(perByte, text.size(), [&] { return Read(text, options); });
    if (!first) return;

    // Everything is written before anything reads a number: reading converts a real's pending
    // text, which changes how it prints.
    const std::string compact = Compact(*first);
    const bool prettyToo = Depth(*first) <= kPrettyDepth;
    std::string pretty;
    std::string tabbed;
    if (prettyToo) {
        first->AppendToStringPretty(pretty, "  ", "\n", 0);
        first->AppendToStringPretty(tabbed, "\t", "\r\n", 2);
    }
    if (options.fKeepOrder) {
        const JsonAutoRefPtr<JsonValue> copy = JsonValue::Copy(*first);
        FUZZ_CHECK(Compact(*copy) == compact);
    }

    const TreeFacts facts = Inspect(*first);
    if (!options.fTrustUTF8) FUZZ_CHECK(!facts.fNonUTF8String && !facts.fNonUTF8Key);

    if (!facts.fNonFinite && !facts.fLeadingZeroInteger && !facts.fRealPrintsAsInteger &&
        !facts.fRealPrintsRounded) {
        const JsonAutoRefPtr<JsonValue> second = Read(compact, options);
        FUZZ_CHECK(second);
        // A member map's own order may differ between two trees built alike; the fixed point
        // is promised for the kept order only.
        if (options.fKeepOrder && !facts.fFractionWithoutText) FUZZ_CHECK(Compact(*second) == compact);
        FUZZ_CHECK(*second == *first);
        if (prettyToo) {
            const JsonAutoRefPtr<JsonValue> fromPretty = Read(pretty, options);
            FUZZ_CHECK(fromPretty);
            FUZZ_CHECK(*fromPretty == *first);
        }
    }

    std::string packed;
    FUZZ_CHECK(first->WriteToMsgPack(packed));
    ParserContext binary;
    binary.fTrustUTF8 = options.fTrustUTF8;
    binary.fKeepOrder = options.fKeepOrder;
    const JsonAutoRefPtr<JsonValue> unpacked = JsonValue::ReadFromMsgPack(packed, &binary, nullptr);
    FUZZ_CHECK(unpacked);
    // MessagePack reading checks keys even when UTF-8 is trusted, and drops the bad ones.
    if (!facts.fNaN && !facts.fNonUTF8Key) FUZZ_CHECK(*unpacked == *first);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const Options defaults;
    CheckDocument(text, defaults);
    if (size > 0) {
        const uint8_t bits = data[size - 1] & 0x1F;
        if (bits) CheckDocument(text, Options::FromByte(bits));
    }
    return 0;
}

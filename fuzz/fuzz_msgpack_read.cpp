// Fuzz target: MessagePack. The input is decoded; when it decodes, its encoding must decode
// again to an equal tree (NaN aside, which equals nothing), and encoding is a fixed point after
// one round: encode(decode(encode(x))) == encode(x). The input's size picks the options:
// bit 0 trusted UTF-8, bit 1 strict keys.
//
// Members are encoded in the member map's own order, and two maps filled in different orders
// may iterate differently; where an object has two members or more, the fixed point is checked
// as equal length and equal decoded trees instead of equal bytes.
#include "fuzz/FuzzSupport.h"

#include "json/JsonEquality.h"
#include "json/ParserContext.h"

namespace {

using namespace FuzzSupport;

/// Whether any object in the tree has two members or more.
bool HasWideObject(const JsonValue& root) {
    std::vector<const JsonValue*> pending{&root};
    while (!pending.empty()) {
        const JsonValue* node = pending.back();
        pending.pop_back();
        if (!node) continue;
        if (node->GetType() == JsonValue::eJsonObject) {
            const auto& members = static_cast<const JsonObject&>(*node).Members();
            if (members.Size() >= 2) return true;
            for (const JsonObject::Member& member : members) pending.push_back(member.fValue);
        } else if (node->GetType() == JsonValue::eJsonArray) {
            for (const JsonValue* element : static_cast<const JsonArray&>(*node).Elements())
                pending.push_back(element);
        }
    }
    return false;
}

ParserContext MakeContext(size_t size) {
    ParserContext ctx;
    ctx.fKeepOrder = true;
    ctx.fTrustUTF8 = size & 1;
    ctx.fStrictKeys = size & 2;
    return ctx;
}

JsonAutoRefPtr<JsonValue> Decode(const std::string& bytes, ParserContext& ctx) {
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromMsgPack(bytes, &ctx, nullptr);
    CheckReadOutcome(value.Get() != nullptr, ctx);
    return value;
}

std::string Encode(const JsonValue& value) {
    std::string bytes;
    FUZZ_CHECK(value.WriteToMsgPack(bytes));
    FUZZ_CHECK(!bytes.empty());
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    ParserContext ctx = MakeContext(size);
    const JsonAutoRefPtr<JsonValue> first =
        HeldWithin(MemoryBounds::kMsgPackPerByte, size, [&] { return Decode(input, ctx); });
    if (!first) return 0;

    // The text writers must cope with whatever the reader builds.
    std::string text;
    first->AppendToString(text);
    if (Depth(*first) <= kPrettyDepth) first->AppendToStringPretty(text, " ", "\n", 0);

    const std::string once = Encode(*first);
    ParserContext again = MakeContext(size);
    const JsonAutoRefPtr<JsonValue> second = Decode(once, again);
    FUZZ_CHECK(second);
    FUZZ_CHECK(again.fPos == once.size());
    const TreeFacts facts = Inspect(*first);
    if (!facts.fNaN) FUZZ_CHECK(*second == *first);

    const std::string twice = Encode(*second);
    if (!HasWideObject(*second)) {
        FUZZ_CHECK(twice == once);
    } else {
        FUZZ_CHECK(twice.size() == once.size());
        ParserContext third = MakeContext(size);
        const JsonAutoRefPtr<JsonValue> thirdValue = Decode(twice, third);
        FUZZ_CHECK(thirdValue);
        if (!facts.fNaN) FUZZ_CHECK(*thirdValue == *second);
    }
    return 0;
}

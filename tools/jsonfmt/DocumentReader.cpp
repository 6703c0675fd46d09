// Reading documents. Text goes through JsonValue::ReadFromString. MessagePack is read here with
// JsonValue::ParseFromMsgPack rather than ReadFromMsgPack, whose tolerance of white space after
// the value would silently drop further values (a blank is the MessagePack integer 32).
#include "tools/jsonfmt/DocumentReader.h"

#include "tools/jsonfmt/ErrorLocation.h"

#include "json/ParseMessages.h"
#include "json/ParserContext.h"

namespace jsonfmt {

JsonAutoRefPtr<JsonValue> ReadTextDocument(const std::string& text, Problem& problem) {
    ParserContext ctx;
    ctx.fStandard = true;
    ctx.fKeepOrder = true;
    ctx.fCheckUTF8 = true; // once over the whole input, not string by string
    JsonAutoRefPtr<JsonValue> value = JsonValue::ReadFromString(text, &ctx, nullptr);
    if (!value) {
        const TextLocation at = LocateTextError(text, ctx);
        problem = {":" + std::to_string(at.fLine) + ":" + std::to_string(at.fColumn), OneLine(ctx.fError)};
    }
    return value;
}

JsonAutoRefPtr<JsonValue> ReadMsgPackDocument(const std::string& bytes, Problem& problem) {
    ParserContext ctx;
    ctx.fStandard = true;
    ctx.fKeepOrder = true;
    // Strings keep their bytes (the reader would make a string that is not UTF-8 empty without
    // a word; MeaningCheck refuses it instead), and a map key that is not UTF-8 fails instead
    // of being dropped.
    ctx.fTrustUTF8 = true;
    ctx.fStrictKeys = true;
    ctx.Reset();
    const char* position = bytes.data();
    const char* end = position + bytes.size();
    JsonAutoRefPtr<JsonValue> value;
    if (bytes.empty()) {
        ctx.fError = ParseMessages::kEmptyInput;
    } else {
        value.Reset(JsonValue::ParseFromMsgPack(position, end, ctx, nullptr));
        if (value && position != end) {
            value = nullptr;
            ctx.fError = ParseMessages::kTrailingCharacters;
        }
    }
    if (!value) {
        // With strict keys the reader's one message for a key it cannot take is "duplicate
        // key", and the only such key is one that is not UTF-8 (duplicates replace).
        const std::string message = ctx.fError == ParseMessages::kDuplicateKey
                                        ? "map key is not valid UTF-8"
                                        : OneLine(ctx.fError);
        problem = {": byte " + std::to_string(position - bytes.data()), message};
    }
    return value;
}

} // namespace jsonfmt

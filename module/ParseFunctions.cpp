// Parse, print and convert: JSON text and MessagePack in and out of a script's JSON value.
//
// Deliberate behaviours kept here:
// - JSON.FromString reports a parse error (severity 2, "Error.JSON.Parse") and returns no JSON
//   at all; JSON.FromStringIgnoreErrors returns a JSON holding null and reports nothing.
// - JSON.FromMsgPack reports nothing: undecodable bytes give a JSON holding no value.
// - Parsed objects keep their member order.
#include "host/Data.h"
#include "json/ParserContext.h"
#include "module/ScriptFunctions.h"

namespace JsonModule {

namespace {
// The options of every script-level parse: keep member order, check the input's UTF-8 once.
JsonAutoRefPtr<JsonValue> ParseScriptText(const std::string& text, ParserContext& ctx) {
    ctx.fKeepOrder = true;
    ctx.fCheckUTF8 = true;
    return JsonValue::ReadFromString(text, &ctx, nullptr);
}
} // namespace

std::string JsonToString(const JSONObjPtr& json) {
    return JsonToFormattedString(json, std::string());
}

std::string JsonToFormattedString(const JSONObjPtr& json, const std::string& indent) {
    std::string text;
    const JsonAutoRefPtr<JsonValue>& value = json->Value();
    if (!value) return text;
    if (indent.empty()) {
        value->AppendToString(text);
    } else {
        value->AppendToStringPretty(text, indent, "\n", 0);
    }
    return text;
}

JSONObjPtr StringToJson(const std::string& text, IContext* context) {
    return StringToJsonImpl(text, false, context);
}

JSONObjPtr StringToJsonIgnoreErrors(const std::string& text, IContext* context) {
    return StringToJsonImpl(text, true, context);
}

JSONObjPtr StringToJsonImpl(const std::string& text, bool ignoreErrors, IContext* context) {
    JSONObjPtr json = NewJSON(context, JsonValue::eJsonNull);
    ParserContext ctx;
    JsonAutoRefPtr<JsonValue> value = ParseScriptText(text, ctx);
    if (value) {
        json->SetValue(std::move(value));
        return json;
    }
    if (ignoreErrors) return json;
    // Deliberate: the line is the count of line breaks before the error (line 0 first).
    Report(context, Virelo::eSeveritySevere, kErrorParse, Texts::ParseErrorMessage(ctx));
    return nullptr;
}

bool IsValid(const std::string& text, IContext*) {
    ParserContext ctx;
    return static_cast<bool>(ParseScriptText(text, ctx));
}

JSONObjPtr MsgPackToJson(const DataRefPtr& data, IContext* context) {
    JSONObjPtr json = NewJSON(context, JsonValue::eJsonNull);
    if (!data) return json;
    std::string bytes;
    const unsigned long long size = data->Interface_GetSize();
    if (const char* direct = data->Interface_GetData()) {
        bytes.assign(direct, static_cast<size_t>(size));
    } else {
        bytes.resize(static_cast<size_t>(size));
        if (data->Interface_Read(bytes.data(), size, 0) != size) return json;
    }
    // Whatever the reader returns becomes the value, nothing included: undecodable bytes give
    // a JSON that holds no value, without a report.
    json->SetValue(JsonValue::ReadFromMsgPack(bytes, nullptr, nullptr));
    return json;
}

DataRefPtr JsonToMsgPack(const JSONObjPtr& json) {
    std::string bytes;
    if (!json->Value() || !json->Value()->WriteToMsgPack(bytes)) bytes.clear();
    return DataRefPtr(new Virelo::Data(std::move(bytes)));
}

} // namespace JsonModule

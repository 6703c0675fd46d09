// engine_example: the JSON engine on its own: parse a document, change it, print it compact
// and pretty, send it through MessagePack and back, and report a parse error. Nodes are
// reference counted: JsonAutoRefPtr holds one reference and frees the tree with the last.
#include <json/JsonArray.h>
#include <json/JsonEquality.h>
#include <json/JsonObject.h>
#include <json/JsonValue.h>
#include <json/ParserContext.h>

#include <iostream>
#include <string>

namespace {

std::string Compact(const JsonValue& value) {
    std::string text;
    value.AppendToString(text);
    return text;
}

} // namespace

int main() {
    // Parse. The context carries the options and, on failure, the message and the line.
    ParserContext options;
    options.fKeepOrder = true; // print members in the order they were read
    const std::string input = R"({"name":"demo","tags":["json"],"size":1.50})";
    JsonAutoRefPtr<JsonObject> doc = JsonObject::ReadFromString(input, &options);
    if (!doc) {
        std::cerr << "cannot parse: " << options.fError << '\n';
        return 1;
    }
    std::cout << "read:    " << Compact(*doc) << '\n';

    // Change. A member read as a container is the document's own node, shared, not a copy.
    // The adders' last argument says whether the text is known to be UTF-8 (false: check it).
    JsonAutoRefPtr<JsonArray> tags = doc->KeyValAsArray("tags");
    tags->AddString("msgpack", nullptr, false);
    doc->InsertInteger("version", 116LL, false);
    doc->Erase("size");
    std::cout << "changed: " << Compact(*doc) << '\n';
    std::string pretty;
    doc->AppendToStringPretty(pretty, "  ", "\n", 0);
    std::cout << "pretty:\n" << pretty << '\n';

    // MessagePack round trip. Equality compares structure; member order plays no part.
    std::string packed;
    if (!doc->WriteToMsgPack(packed)) return 1;
    ParserContext unpackOptions;
    JsonAutoRefPtr<JsonValue> back = JsonValue::ReadFromMsgPack(packed, &unpackOptions, nullptr);
    std::cout << "msgpack: " << packed.size() << " bytes, read back "
              << (back && *back == *doc ? "equal" : "different") << '\n';

    // Errors: no exception, a null result and the context's message and line (0: the first).
    ParserContext bad;
    if (!JsonValue::ReadFromString("[1,\n2,,3]", &bad, nullptr))
        std::cout << "error:   line " << bad.fLine << ": " << bad.fError << '\n';
    return 0;
}

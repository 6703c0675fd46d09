// The text members of the node classes: declared on the nodes, defined here with the writer
// they use, so that the value model knows nothing of JSON text. Every node writes through the
// one writer (TextWriter.cpp); scalars have no pretty form of their own.
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/text/TextWriter.h"

void JsonValue::AppendToStringPretty(std::string& out, const std::string&, const std::string&,
                                     int) const {
    AppendToString(out);
}

void JsonString::AppendToString(std::string& out) const {
    TextWriter::WriteCompact(*this, out);
}

void JsonInteger::AppendToString(std::string& out) const {
    TextWriter::WriteCompact(*this, out);
}

void JsonReal::AppendToString(std::string& out) const {
    TextWriter::WriteCompact(*this, out);
}

void JsonTrue::AppendToString(std::string& out) const {
    TextWriter::WriteCompact(*this, out);
}

void JsonFalse::AppendToString(std::string& out) const {
    TextWriter::WriteCompact(*this, out);
}

void JsonNull::AppendToString(std::string& out) const {
    TextWriter::WriteCompact(*this, out);
}

void JsonObject::AppendToString(std::string& out) const {
    TextWriter::WriteCompact(*this, out);
}

void JsonObject::AppendToStringPretty(std::string& out, const std::string& indent,
                                      const std::string& newLine, int level) const {
    TextWriter::WritePretty(*this, out, indent, newLine, level);
}

void JsonArray::AppendToString(std::string& out) const {
    TextWriter::WriteCompact(*this, out);
}

void JsonArray::AppendToStringPretty(std::string& out, const std::string& indent,
                                     const std::string& newLine, int level) const {
    TextWriter::WritePretty(*this, out, indent, newLine, level);
}

void JsonCompiledObject::AppendToString(std::string& out) const {
    TextWriter::WriteCompact(*this, out);
}

void JsonCompiledObject::AppendToStringPretty(std::string& out, const std::string& indent,
                                              const std::string& newLine, int level) const {
    TextWriter::WritePretty(*this, out, indent, newLine, level);
}

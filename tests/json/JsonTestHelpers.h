// Helpers shared by the engine suites: parsing, shared data files, compact text, and MessagePack
// bytes written as spaced hex ("D0 DF") so that expectations and failures read like a dump.
#pragma once

#include "json/JsonValue.h"
#include "json/ParserContext.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace json_test {

using ValuePtr = JsonAutoRefPtr<JsonValue>;

/// `text` parsed with these options; a parse error fails the test (and gives null).
inline ValuePtr Parse(const std::string& text, bool keepOrder = true, bool standard = false) {
    ParserContext ctx;
    ctx.fKeepOrder = keepOrder;
    ctx.fStandard = standard;
    ValuePtr value(JsonValue::ReadFromString(text, &ctx, nullptr));
    EXPECT_TRUE(value) << ctx.fError << " in line " << ctx.fLine;
    return value;
}

/// The folder of the shared corpora (bench-data/, test-data/): $VIRELO_JSON_SHARED_DATA when
/// set, else the folder the build was configured with.
inline std::filesystem::path SharedRoot() {
    const char* env = std::getenv("VIRELO_JSON_SHARED_DATA");
    return env && *env ? std::filesystem::path(env) : std::filesystem::path(VIRELO_JSON_SHARED_DATA);
}

inline std::filesystem::path SharedPath(const std::string& relative) {
    return SharedRoot() / relative;
}

/// Skips a corpus test on a machine without the shared data instead of failing it.
#define SKIP_WITHOUT_SHARED_DATA()                                                        \
    if (!std::filesystem::is_directory(json_test::SharedRoot()))                         \
    GTEST_SKIP() << "shared data not found at " << json_test::SharedRoot()

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// The compact text of a node (strings quoted); "" for none.
inline std::string Text(const JsonValue* value) {
    std::string out;
    if (value) value->AppendToString(out);
    return out;
}
inline std::string Text(const JsonValue& value) { return Text(&value); }
template <class T> std::string Text(const JsonAutoRefPtr<T>& value) { return Text(value.Get()); }

/// "D0 DF" -> the two bytes D0 DF; spaces are ignored.
inline std::string Bytes(const std::string& hex) {
    std::string out;
    for (size_t i = 0; i < hex.size(); ++i) {
        if (hex[i] == ' ') continue;
        out += static_cast<char>(std::stoi(hex.substr(i++, 2), nullptr, 16));
    }
    return out;
}

/// The bytes as upper-case hex pairs separated by single spaces.
inline std::string Hex(const std::string& bytes) {
    std::string out;
    char pair[4];
    for (unsigned char c : bytes) {
        std::snprintf(pair, sizeof pair, out.empty() ? "%02X" : " %02X", c);
        out += pair;
    }
    return out;
}

} // namespace json_test

// Where jsonfmt says a text's error is, checked against the parser: first line, after CR LF
// and LF CR, at the end of the input, after a byte order mark; the two messages whose offset
// the parser leaves elsewhere; and messages kept on one line.
#include "tools/jsonfmt/DocumentReader.h"
#include "tools/jsonfmt/ErrorLocation.h"

#include <gtest/gtest.h>

namespace {

// "LINE:COLUMN: MESSAGE" of a text that fails.
std::string ErrorOf(const std::string& text) {
    jsonfmt::Problem problem;
    if (jsonfmt::ReadTextDocument(text, problem)) return "(valid)";
    return problem.fWhere.substr(1) + ": " + problem.fMessage;
}

TEST(ErrorLocation, LinesAndColumns) {
    struct Row { const char* fName; std::string fText; std::string fError; };
    const Row rows[] = {
        {"first line", "[1,2 3]", "1:6: comma separator expected between values"},
        {"first byte", "x", "1:1: not a JSON value"},
        {"after LF", "[1,\n 2 3]", "2:4: comma separator expected between values"},
        {"after CR LF", "[1,\r\n 2 3]", "2:4: comma separator expected between values"},
        {"after CR alone", "[1,\r 2 3]", "2:4: comma separator expected between values"},
        {"LF CR is one break", "[1,\n\r 2 3]", "2:4: comma separator expected between values"},
        {"LF LF is two", "[1,\n\n 2 3]", "3:4: comma separator expected between values"},
        {"end of input", "[1,", "1:4: illegal array"},
        {"end of input after a break", "[1,\n", "2:1: illegal array"},
        {"empty input", "", "1:1: unexpected end of input"},
        {"blanks only", " \n ", "2:2: unexpected end of input"},
        {"trailing characters", "[1]\n  2", "2:3: illegal trailing characters after value"},
        {"columns count bytes", "[\"\xC3\xA9\xC3\xA9\" x]", "1:9: comma separator expected between values"},
        {"byte order mark counts", "\xEF\xBB\xBF" "x", "1:4: not a JSON value"},
        {"inside a string", "[\"a\\x\"]", "1:4: illegally quoted character"},
        {"bad unicode escape", "\"ab\\u12\"", "1:4: incorrect utf16 char quoting"},
        {"control character", "\"a\tb\"", "1:3: control character must be quoted"},
        {"missing fraction digit", "[1.]", "1:4: minimum one digit after decimal dot required"},
        {"nested member", "{\"a\":\n{\"b\":[1,}}",
         "2:9: not a JSON value while parsing a value while parsing a value"},
        // The parser leaves these two elsewhere; jsonfmt points at the byte.
        {"key without quote mark", "{\n  a: 1}", "2:3: string quote sign expected while parsing a key"},
        {"key without quote mark, last byte", "{x", "1:3: string quote sign expected while parsing a key"},
        {"unterminated string", "[\"abc", "1:6: string quote sign expected"},
        {"bad UTF-8 in a value", "[\"ok\",\n \"b\xC3(\"]",
         "2:4: illegal UTF8 character found at position 1 in string which starts with \"b\""},
        {"bad UTF-8 after escapes", "[\"\\n\\u0041\xFF\"]",
         "1:11: illegal UTF8 character found at position 2 in string which starts with \"\\nA\""},
        {"bad UTF-8 in a key", "{\"k\xC3\":1}",
         "1:4: illegal UTF8 character found at position 1 in string which starts with \"k\" while parsing a key"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        EXPECT_EQ(ErrorOf(row.fText), row.fError);
    }
}

TEST(ErrorLocation, MessagesStayOnOneLine) {
    struct Row { std::string fMessage; std::string fLine; };
    const Row rows[] = {
        {"plain", "plain"},
        {"a\nb\r\tc", "a\\nb\\r\\tc"},
        {std::string("nul\0 and \x1F and \x7F", 16), "nul\\u0000 and \\u001F and \\u007F"},
        {"\xC3\xA9 stays", "\xC3\xA9 stays"},
    };
    for (const Row& row : rows) EXPECT_EQ(jsonfmt::OneLine(row.fMessage), row.fLine);
}

} // namespace

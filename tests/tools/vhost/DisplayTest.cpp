// Display forms: numbers (integer form below 2^53, shortest round-trip text otherwise), hex
// bytes, quoted strings in vectors, and the forms of every value kind.
#include "tools/vhost/script/Display.h"
#include "tools/vhost/host/HostDataRef.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using vhost::ScriptValue;

struct NumberRow {
    double fNumber;
    const char* fText;
};

// clang-format off
static const NumberRow sNumbers[] = {
    // integers below 2^53 print without fraction or exponent
    {3, "3"},
    {-2, "-2"},
    {-0.0, "0"},
    {1e15, "1000000000000000"},
    {9007199254740991.0, "9007199254740991"},
    {-9007199254740991.0, "-9007199254740991"},
    // from 2^53 on, and for fractions, the shortest text that reads back
    {9007199254740992.0, "9007199254740992"},
    {1e16, "1e+16"},
    {1e300, "1e+300"},
    {0.1, "0.1"},
    {-2.5, "-2.5"},
    {1.0 / 3.0, "0.3333333333333333"},
    {5e-324, "5e-324"},
    {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    // non-finite values
    {std::numeric_limits<double>::quiet_NaN(), "nan"},
    {std::numeric_limits<double>::infinity(), "inf"},
    {-std::numeric_limits<double>::infinity(), "-inf"},
};
// clang-format on

TEST(Display, FormatsNumbers) {
    for (const NumberRow& row : sNumbers) {
        SCOPED_TRACE(row.fText);
        EXPECT_EQ(vhost::FormatNumber(row.fNumber), row.fText);
    }
}

TEST(Display, FormatsHexAndQuotedStrings) {
    EXPECT_EQ(vhost::FormatHex(""), "");
    EXPECT_EQ(vhost::FormatHex(std::string("\x81\xa1"
                                           "a\x01\x00",
                                           5)),
              "81 A1 61 01 00");
    EXPECT_EQ(vhost::QuoteString("a\"b\\c/\n\t\x01\x1f\xc3\xa9"),
              "\"a\\\"b\\\\c/\\n\\t\\u0001\\u001f\xc3\xa9\"");
}

TEST(Display, ShowsEveryValueKind) {
    const auto noObjects = [](const ScriptValue&) { return std::string("OBJECT"); };
    ScriptValue strings;
    strings.fKind = vhost::EValueKind::eStringVector;
    strings.fStrings = {"a", "b\"c", ""};
    ScriptValue numbers;
    numbers.fKind = vhost::EValueKind::eNumberVector;
    numbers.fNumbers = {1, 0.5, -1e300};
    ScriptValue booleans;
    booleans.fKind = vhost::EValueKind::eBooleanVector;
    booleans.fBooleans = {true, false};
    ScriptValue empty;
    empty.fKind = vhost::EValueKind::eEmptyVector;
    ScriptValue none;
    none.fKind = vhost::EValueKind::eNone;
    ScriptValue object;
    object.fKind = vhost::EValueKind::eObject;
    const ScriptValue data = ScriptValue::Data(
        vhost::HostDataRef::Create("\x81\xa1", vhost::HostDataRef::EAccess::eReadOnly));

    EXPECT_EQ(vhost::DisplayForm(ScriptValue::String("a b"), noObjects), "a b");
    EXPECT_EQ(vhost::DisplayForm(ScriptValue::Boolean(false), noObjects), "false");
    EXPECT_EQ(vhost::DisplayForm(strings, noObjects), "[\"a\", \"b\\\"c\", \"\"]");
    EXPECT_EQ(vhost::DisplayForm(numbers, noObjects), "[1, 0.5, -1e+300]");
    EXPECT_EQ(vhost::DisplayForm(booleans, noObjects), "[true, false]");
    EXPECT_EQ(vhost::DisplayForm(empty, noObjects), "[]");
    EXPECT_EQ(vhost::DisplayForm(none, noObjects), "<none>");
    EXPECT_EQ(vhost::DisplayForm(object, noObjects), "OBJECT");
    EXPECT_EQ(vhost::DisplayForm(data, noObjects), "81 A1");
}

// Node basics: reference counting, the owning pointer, the per-type conversions, the integer
// and real constructors, the UTF-8 check, deep copies and the counter report.
#include "tests/json/JsonTestHelpers.h"

#include "json/JsonArray.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string_view>

namespace {

using namespace json_test;

ValuePtr Str(const std::string& text) {
    bool trusted = true;
    return ValuePtr(new JsonString(text, &trusted, nullptr));
}
ValuePtr Int(long long v) { return ValuePtr(new JsonInteger(v)); }
ValuePtr Real(double v) { return ValuePtr(new JsonReal(v)); }
ValuePtr Read(const char* text) { return JsonValue::ReadFromString(text, nullptr, nullptr); }

TEST(JsonValue, ReferenceCounting) {
    JsonValue* node = new JsonNull();
    node->AddRef();
    EXPECT_EQ(node->GetUseCount(), 2u);
    EXPECT_FALSE(node->Release());
    EXPECT_TRUE(node->Release()); // the last reference reports the destruction

    // A child shared with the test outlives its parent; ASan shows the rest freed.
    ValuePtr shared = Int(7);
    JsonArray* array = new JsonArray();
    array->AddValue(shared);
    array->AddValueInternal(new JsonObject());
    EXPECT_EQ(shared->GetUseCount(), 2u);
    EXPECT_TRUE(array->Release());
    EXPECT_EQ(shared->GetUseCount(), 1u);
}

TEST(JsonAutoRefPtr, OwnershipRules) {
    JsonValue* raw = new JsonTrue();
    {
        ValuePtr first(raw); // takes over the creator's reference
        ValuePtr copy = first, other(new JsonFalse());
        other = first; // releases the false node, shares the true one
        EXPECT_EQ(raw->GetUseCount(), 3u);
        ValuePtr moved = std::move(copy);
        EXPECT_FALSE(copy);
        EXPECT_EQ(raw->GetUseCount(), 3u);
        moved = nullptr;
        other = ValuePtr::Share(raw);
        EXPECT_EQ(raw->GetUseCount(), 2u);
        EXPECT_EQ(first.Detach(), raw); // the caller now holds the reference
        EXPECT_FALSE(first);
    }
    EXPECT_EQ(raw->GetUseCount(), 1u);
    EXPECT_TRUE(raw->Release());

    // Converting to and from the base class keeps the count right.
    JsonAutoRefPtr<JsonObject> object(new JsonObject());
    ValuePtr base = object;
    EXPECT_EQ(object->GetUseCount(), 2u);
    ValuePtr taken = std::move(object);
    EXPECT_FALSE(object);
    EXPECT_EQ(taken->GetUseCount(), 2u);
}

TEST(JsonValue, TypeNamesAndCounterReport) {
    const char* names[] = {"String", "Integer", "Real",  "Object", "CompiledObject",
                           "Array",  "True",    "False", "Null"};
    for (int type = 0; type < 9; ++type)
        EXPECT_EQ(JsonValue::fTypeStrings[type], names[type]);
    testing::internal::CaptureStdout();
    PrintCounter();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "*** Object counters not activated\n");
}

TEST(JsonValue, ConversionsPerType) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Row { const char* fName; ValuePtr fNode; bool fIntOk; long long fInt; bool fRealOk; double fReal; bool fBoolOk, fBool; std::string fString; };
    const Row rows[] = {
        // strings: read as a JSON number from position 0; anything after the number is ignored
        {"string -42.7", Str("-42.7"), true, -42, true, -42.7, true, true, "-42.7"},
        {"string 1.5x", Str("1.5x"), true, 1, true, 1.5, true, true, "1.5x"},
        {"string 01", Str("01"), true, 0, true, 0.0, true, true, "01"},
        {"string 2e1", Str("2e1"), true, 20, true, 20.0, true, true, "2e1"},
        {"string leading blank", Str(" 42"), false, 0, false, 0.0, true, true, " 42"},
        {"string 1e400", Str("1e400"), false, 0, false, 0.0, true, true, "1e400"},
        {"string unsigned max", Str("18446744073709551615"), false, 0, true, 18446744073709551615.0, true, true, "18446744073709551615"},
        // GetAsBool of a string only asks whether it is empty
        {"string false", Str("false"), false, 0, false, 0.0, true, true, "false"},
        {"string 0", Str("0"), true, 0, true, 0.0, true, true, "0"},
        {"string empty", Str(""), false, 0, false, 0.0, true, false, ""},
        // integers
        {"integer 0", Int(0), true, 0, true, 0.0, true, false, "0"},
        {"integer min", Int(JsonInteger::sMinInt64), true, JsonInteger::sMinInt64, true, -0x1p63, true, true, "-9223372036854775808"},
        {"unsigned max", ValuePtr(new JsonInteger(JsonInteger::sMaxUInt64, false)), false, 0, true, 0x1p64, true, true, "18446744073709551615"},
        // reals: truncation toward zero inside the 64-bit range
        {"real -3.9", Real(-3.9), true, -3, true, -3.9, true, true, "-3.9"},
        {"real 0.0", Real(0.0), true, 0, true, 0.0, true, false, "0.0"},
        {"real -1e19", Real(-1e19), false, 0, true, -1e19, true, true, "-10000000000000000000"},
        {"real -2^63", Real(-0x1p63), true, JsonInteger::sMinInt64, true, -0x1p63, true, true, "-9223372036854775808.0"},
        {"real NaN", Real(nan), false, 0, true, nan, true, true, "nan"},
        // the numeric conversions run first and convert the text, which then prints by digit count
        {"real pending 2.50", ValuePtr(new JsonReal(std::string("2.50"), 3u)), true, 2, true, 2.5, true, true, "2.5"},
        // literals
        {"true", ValuePtr(new JsonTrue()), true, 1, true, 1.0, true, true, "true"},
        {"false", ValuePtr(new JsonFalse()), true, 0, true, 0.0, true, false, "false"},
        // containers and null never convert to numbers or booleans
        {"null", ValuePtr(new JsonNull()), false, 0, false, 0.0, false, false, "null"},
        {"object", Read("{\"k\":1}"), false, 0, false, 0.0, false, false, "{\"k\":1}"},
        {"array", Read("[true]"), false, 0, false, 0.0, false, false, "[true]"},
    };
    for (const Row& c : rows) {
        SCOPED_TRACE(c.fName);
        long long i = 99;
        EXPECT_EQ(c.fNode->GetAsInteger(i), c.fIntOk);
        EXPECT_EQ(i, c.fInt);
        double r = 99.0;
        EXPECT_EQ(c.fNode->GetAsReal(r), c.fRealOk);
        EXPECT_TRUE(r == c.fReal || (std::isnan(r) && std::isnan(c.fReal))) << r;
        bool b = true;
        EXPECT_EQ(c.fNode->GetAsBool(b), c.fBoolOk);
        EXPECT_EQ(b, c.fBool);
        std::string s = "previous";
        EXPECT_TRUE(c.fNode->GetAsString(s));
        EXPECT_EQ(s, c.fString);
    }
}

TEST(JsonInteger, UnsignedExactlyAboveSignedRange) {
    struct Row { unsigned long long fValue; bool fUnsigned; };
    // the bool argument is not a request for an unsigned integer
    const Row rows[] = {{0ULL, false}, {9223372036854775807ULL, false}, {9223372036854775808ULL, true}, {18446744073709551615ULL, true}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fValue);
        JsonInteger integer(row.fValue, true);
        EXPECT_EQ(integer.IsUnsigned(), row.fUnsigned);
        unsigned long long u = 1;
        integer.Get(u);
        EXPECT_EQ(u, row.fValue);
        long long s = 1;
        integer.Get(s);
        EXPECT_EQ(s, row.fUnsigned ? 0LL : static_cast<long long>(row.fValue));
    }
    unsigned long long u = 1;
    JsonInteger(-5LL).Get(u);
    EXPECT_EQ(u, 0u);
}

TEST(JsonReal, StrToDouble) {
    const double inf = std::numeric_limits<double>::infinity();
    struct Row { const char* fText; double fValue; };
    const Row rows[] = {
        {"1.5", 1.5},
        {"  2", 2.0},  // leading blanks are allowed here
        {"3abc", 3.0}, // conversion stops at the first character that cannot continue
        {"", 0.0},
        {"1e400", inf},
        {"-1e400", inf}, // negative overflow gives positive infinity as well
        {"1e-400", 0.0},
    };
    for (const Row& row : rows)
        EXPECT_EQ(JsonReal::StrToDouble(row.fText), row.fValue) << row.fText;
}

TEST(JsonReal, PendingTextConvertsOnFirstUseAndSurvivesCopy) {
    JsonReal original(std::string("1.50"), 3u);
    ValuePtr copy = JsonValue::Copy(original);
    const auto& real = static_cast<const JsonReal&>(*copy);
    ASSERT_TRUE(real.HasPendingText());
    EXPECT_EQ(real.PendingText(), "1.50");
    EXPECT_EQ(real.GetDigitCount(), 3u);
    EXPECT_EQ(Text(copy), "1.50");
    // Converting the copy leaves the original untouched.
    EXPECT_EQ(real.Get(), 1.5);
    EXPECT_FALSE(real.HasPendingText());
    EXPECT_TRUE(original.HasPendingText());
    EXPECT_EQ(Text(original), "1.50");
    EXPECT_EQ(Text(copy), "1.5");
}

// A real keeps short texts in the node and longer ones (or large digit counts) in a block of
// their own; each form must keep its text, count and value through copies and conversion.
TEST(JsonReal, TextAndDigitCountSurviveEveryStorageForm) {
    const std::string digits300 = "0." + std::string(300, '1');
    struct Row { const char* fName; std::string fText; uint32_t fDigits; };
    const Row rows[] = {
        {"empty", "", 0},
        {"21 bytes, the longest kept in the node", "-65.61361699999997712", 19},
        {"22 bytes", "-65.613616999999977123", 20},
        {"digit count 255", "1.5", 255},
        {"digit count 256", "1.5", 256},
        {"digit count beyond 16 bits", "2.25", 70000},
        {"300 digits", digits300, 301},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        const double value = JsonReal::StrToDouble(row.fText);
        JsonReal pending(row.fText, row.fDigits);
        ValuePtr copy = JsonValue::Copy(pending);
        const auto* copied = static_cast<const JsonReal*>(copy.Get());
        for (const JsonReal* real : {static_cast<const JsonReal*>(&pending), copied}) {
            EXPECT_EQ(real->HasPendingText(), !row.fText.empty());
            EXPECT_EQ(real->PendingText(), row.fText);
            EXPECT_EQ(real->GetDigitCount(), row.fDigits);
            EXPECT_EQ(real->Get(), value);
            EXPECT_FALSE(real->HasPendingText());
            EXPECT_EQ(real->GetDigitCount(), row.fDigits);
        }
        // A converted real copies its value and count, not the text.
        ValuePtr converted = JsonValue::Copy(pending);
        const auto& again = static_cast<const JsonReal&>(*converted);
        EXPECT_FALSE(again.HasPendingText());
        EXPECT_EQ(again.Get(), value);
        EXPECT_EQ(again.GetDigitCount(), row.fDigits);
        EXPECT_EQ(JsonReal(value, row.fDigits).GetDigitCount(), row.fDigits);
    }
}
TEST(JsonString, InvalidUTF8IsStoredEmpty) {
    const std::string bad = "ab\xC3";
    bool yes = true, no = false;
    struct Row { const char* fName; bool* fTrusted; std::string fText, fStored; bool fOk; };
    const Row rows[] = {
        {"unchecked invalid", nullptr, bad, "", false},
        {"untrusted invalid", &no, bad, "", false},
        {"trusted invalid", &yes, bad, bad, true},
        {"valid", nullptr, "caf\xC3\xA9", "caf\xC3\xA9", true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fName);
        bool ok = !row.fOk;
        EXPECT_EQ(JsonString(row.fText, row.fTrusted, &ok).Get(), row.fStored);
        EXPECT_EQ(ok, row.fOk);
        ok = !row.fOk;
        EXPECT_EQ(JsonString(std::string(row.fText), row.fTrusted, &ok).Get(), row.fStored);
        EXPECT_EQ(ok, row.fOk);
    }
}

TEST(JsonValue, IsUTF8) {
    const std::string k8 = "abcdefgh", k16 = k8 + "ijklmnop";
    // fPos: the length when valid, else the first bad lead byte
    struct Row { const char* fName; std::string fBytes; bool fValid; unsigned long fPos; };
    const Row rows[] = {
        {"empty", "", true, 0},
        {"embedded zero", std::string("a\0b", 3), true, 3},
        {"two, three, four bytes", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", true, 9},
        // structural only: overlong forms, surrogates, beyond U+10FFFF pass
        {"overlong C0 80", "\xC0\x80", true, 2},
        {"surrogate", "\xED\xA0\x80", true, 3},
        {"lead F7", "\xF7\xBF\xBF\xBF", true, 4},
        // bad lead or continuation bytes
        {"lone C3", "\xC3", false, 0},
        {"stray continuation", "a\x80", false, 1},
        {"lead F8", "\xF8\x88\x80\x80\x80", false, 0},
        {"two bytes, bad second", "\xC3\x41", false, 0},
        {"C3 then zero", std::string("\xC3\0", 2), false, 0},
        {"three bytes, bad third", "x\xE2\x82\x41", false, 1},
        {"four bytes, bad fourth", "\xF0\x9F\x98\x41", false, 0},
        {"four bytes cut", "xy\xF0\x9F\x98", false, 2},
        // around the 8-byte blocks of the fast path
        {"cut sequence after a block", k8 + "ab\xF0\x9F\x98", false, 10},
        {"sequence across a block edge", "abcdefg\xE2\x82\xAC" + k8, true, 18},
        {"sequence ending a block", "abcde\xE2\x82\xAC", true, 8},
        {"valid after a multi-byte", "\xC3\xA9" + k16 + "\xC3", false, 18},
    };
    for (const Row& c : rows) {
        SCOPED_TRACE(c.fName);
        unsigned long pos = 12345;
        EXPECT_EQ(JsonValue::IsUTF8(std::string_view(c.fBytes), &pos), c.fValid);
        EXPECT_EQ(pos, c.fPos);
        EXPECT_EQ(JsonValue::IsUTF8(c.fBytes), c.fValid);
    }
    // Every position of a 41-byte ASCII text, so that every offset in and after the 8-byte
    // blocks is hit, with a stray continuation byte and with a lead byte missing its tail.
    for (const char bad : {'\x80', '\xC3', '\xF0'}) {
        for (unsigned long at = 0; at < 41; ++at) {
            std::string text(41, 'a');
            text[at] = bad;
            unsigned long pos = 0;
            EXPECT_FALSE(JsonValue::IsUTF8(text, &pos));
            EXPECT_EQ(pos, at) << "byte " << int(static_cast<unsigned char>(bad));
        }
    }
}

TEST(JsonValue, CopyKeepsKindAndValue) {
    bool trusted = true;
    // Strings at each side of the inline limit, and bytes a caller vouched for, come back as
    // they were.
    const ValuePtr originals[] = {
        Str(""),
        Str("text"),
        Str(std::string(23, 'a')),
        Str(std::string(24, 'b')),
        Str(std::string(5000, 'c')),
        ValuePtr(new JsonString(std::string("\xFF\xFE"), &trusted, nullptr)),
        Read("18446744073709551615"),
        Real(0.25),
        Read("true"),
        Read("null"),
        Read("{\"k\":[1]}"),
    };
    for (const ValuePtr& original : originals) {
        SCOPED_TRACE(Text(original));
        ValuePtr copy = JsonValue::Copy(*original);
        EXPECT_NE(copy.Get(), original.Get());
        EXPECT_EQ(copy->GetUseCount(), 1u);
        EXPECT_EQ(copy->GetType(), original->GetType());
        EXPECT_EQ(Text(copy), Text(original));
        if (original->GetType() == JsonValue::eJsonString) {
            EXPECT_EQ(static_cast<const JsonString&>(*copy).Get(),
                      static_cast<const JsonString&>(*original).Get());
        }
    }
}

} // namespace

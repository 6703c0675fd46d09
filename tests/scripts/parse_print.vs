# JSON.FromString, JSON.FromStringIgnoreErrors, JSON.IsValid, ToString and ToFormattedString.

# parse errors: no JSON at all, severity 2 "Error.JSON.Parse", the line counts the breaks before
expect(JSON.FromString(""), "<none>")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: unexpected end of input")
JSON.FromString(" \n\t")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 1: unexpected end of input")
JSON.FromString("x")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: not a JSON value")
JSON.FromString("tru")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: not a JSON value")
JSON.FromString("truex")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: illegal trailing characters after value")
JSON.FromString("[1]\x00")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: illegal trailing characters after value")
# CR LF, LF CR and a lone CR are one break each, LF LF two
JSON.FromString("\r\n\n\r\r[01]")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 3: comma separator expected between values")
JSON.FromString("\n\n01")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 2: illegal trailing characters after value")

# numbers
JSON.FromString("-")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: not a number")
JSON.FromString("1.")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: minimum one digit after decimal dot required")
JSON.FromString("1e+")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: minimum one digit after exponent required")
JSON.FromString("1e400")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: real number out of double range")
JSON.FromString("-1e400")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: real number out of double range")

# strings
JSON.FromString('"abc')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: string quote sign expected")
JSON.FromString("\"a\tb\"")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: control character must be quoted")
JSON.FromString('"\x"')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: illegally quoted character")
JSON.FromString('"\u12"')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: incorrect utf16 char quoting")
JSON.FromString('"\uD83D\u12G4"')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: incorrect utf32 char quoting")
# invalid UTF-8: the position of the bad byte, and at most 20 bytes of what came before
JSON.FromString("[\"\xC3\x28\"]")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: illegal UTF8 character found at position 0")
JSON.FromString("\"abcdefghijklmnopqrstuvwxyz\xFF\"")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: illegal UTF8 character found at position 26 in string which starts with \"abcdefghijklmnopqrst\"")
JSON.FromString("{\"\xC3\x28\":1}")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: illegal UTF8 character found at position 0 while parsing a key")
# the check is structural: overlong forms, encoded surrogates and sequences past U+10FFFF pass
expect(str2hex(JSON.AsString(JSON.FromString("\"\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80\""))), "C0 80 ED A0 80 F4 90 80 80")

# arrays
JSON.FromString("[1,]")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: array must not end with comma")
JSON.FromString("[,1]")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: expected value in front before comma")
JSON.FromString("[1,,2]")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: expected value in front before comma")
JSON.FromString("[1 2]")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: comma separator expected between values")
JSON.FromString("[1")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: illegal array")

# objects; a nested error gets one suffix per object level
JSON.FromString("{")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: illegal object")
JSON.FromString('{"a":1,}')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: object list must not end with a comma")
JSON.FromString('{,}')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: expected key value pair in front before comma")
JSON.FromString('{"a":1 "b":2}')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: comma separator expected between key value pairs")
JSON.FromString('{"a" 1}')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: colon expected")
JSON.FromString('{1:2}')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: string quote sign expected while parsing a key")
JSON.FromString('{"a":}')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: not a JSON value while parsing a value")
JSON.FromString('{"a":{"b":x}}')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: not a JSON value while parsing a value while parsing a value")
JSON.FromString('{"a":[1,}')
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: not a JSON value while parsing a value")

# FromStringIgnoreErrors gives null instead and reports nothing; IsValid says whether it parses
expect(JSON.FromStringIgnoreErrors("{"), "null")
expect(JSON.FromStringIgnoreErrors(""), "null")
expect(JSON.FromStringIgnoreErrors(" [1] "), "[1]")
expect([JSON.IsValid(""), JSON.IsValid("[1,]"), JSON.IsValid("\"\xC3\x28\""), JSON.IsValid("01")], "[false, false, false, false]")
expect([JSON.IsValid(" 1 "), JSON.IsValid("null"), JSON.IsValid("\xEF\xBB\xBF{}")], "[true, true, true]")
expect(lasterror(), "")

# a byte-order mark is skipped at the very start only
expect(JSON.FromString("\xEF\xBB\xBF[1]"), "[1]")
expect(JSON.FromString(" \xEF\xBB\xBF[1]"), "<none>")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: not a JSON value")

# member order is kept; a repeated key keeps its first place and takes the last value
expect(JSON.FromString('{"b":1,"a":2,"c":3}'), '{"b":1,"a":2,"c":3}')
expect(JSON.FromString('{"a":1,"b":2,"a":3}'), '{"a":3,"b":2}')

# ToString and ToFormattedString: "" is compact; the indent is used as given, lines end in LF
let doc = JSON.FromString(' { "a" : 1 , "b" : [ true , null ] , "c" : { } , "d" : [ ] , "e" : { "x" : "y" } } ')
expect(ToString(doc), '{"a":1,"b":[true,null],"c":{},"d":[],"e":{"x":"y"}}')
expect(ToFormattedString(doc, ""), '{"a":1,"b":[true,null],"c":{},"d":[],"e":{"x":"y"}}')
expect(ToFormattedString(doc, "\t"), "{\n\t\"a\": 1,\n\t\"b\": [\n\t\ttrue,\n\t\tnull\n\t],\n\t\"c\": {},\n\t\"d\": [],\n\t\"e\": {\n\t\t\"x\": \"y\"\n\t}\n}")
expect(ToFormattedString(doc, "  "), "{\n  \"a\": 1,\n  \"b\": [\n    true,\n    null\n  ],\n  \"c\": {},\n  \"d\": [],\n  \"e\": {\n    \"x\": \"y\"\n  }\n}")
expect(ToFormattedString(JSON.FromString("[[1]]"), "ab"), "[\nab[\nabab1\nab]\n]")
expect(ToFormattedString(JSON.FromString('"x"'), "  "), '"x"')
expect(ToFormattedString(JSON.FromString("[]"), "  "), "[]")

# reals are echoed as read until they are used as numbers
expect(JSON.FromString("[1.50,1E5,1.0e+2,0.1e1,-0.0]"), "[1.50,1E5,1.0e+2,0.1e1,-0.0]")
let half = JSON.FromString("1.50")
expect(JSON.AsNumber(half), 1.5)
expect(half, "1.5")
let three = JSON.FromString("3.0")
expect(JSON.AsNumber(three), 3)
expect(three, "3.0")
# long exponents and fractions of 18 digits or more are converted at once
expect(JSON.FromString("[1.5e10,1e10,1e-400]"), "[1.5e+10,1e+10,0.0]")
expect(JSON.FromString("12.345678901234567890123"), "12.345678901234567348411")

# integers: -0 is 0; -2^63 is read as a real, 2^63 as an unsigned integer; digits beyond
# 64 bits make a real; magnitudes just below a power of ten past 2^53 print a leading 0
expect(JSON.FromString("-0"), "0")
expect(JSON.FromString("[-9223372036854775807,-9223372036854775808,9223372036854775808,18446744073709551615,18446744073709551616]"), "[-9223372036854775807,-9223372036854775808,9223372036854775808,18446744073709551615,18446744073709551616]")
expect(JSON.IsDouble(JSON.FromString("-9223372036854775808")), true)
expect(JSON.IsInt64(JSON.FromString("9223372036854775808")), true)
expect(JSON.IsDouble(JSON.FromString("18446744073709551616")), true)
expect(JSON.FromString("[9999999999999999,-9999999999999999,999999999999999999,9007199254740993]"), "[09999999999999999,-09999999999999999,0999999999999999999,9007199254740993]")
# the digit count is floor(log10(double(n))) + 1, and log10 rounds up just below 10^15 too
expect(JSON.FromString("[999999999999999,999999999999998,999999999999997]"), "[0999999999999999,0999999999999998,999999999999997]")

# escapes: decoded on reading, written back with the short forms, other controls as \u00XX
# (upper-case hex), everything else as it is
expect(JSON.FromString('"\"\\\/\b\f\n\r\t\u0001\u001f\u00e9\u20ac"'), '"\"\\/\b\f\n\r\t\u0001\u001Fé€"')
expect(str2hex(JSON.AsString(JSON.FromString('"\u0000\u00e9\uD83D\uDE00"'))), "00 C3 A9 F0 9F 98 80")
# the surrogate formula gives \uD840\uDC00 the code point U+10000
expect(str2hex(JSON.AsString(JSON.FromString('"\uD840\uDC00"'))), "F0 90 80 80")
# a high surrogate without its low half, and a lone low surrogate, stay 3-byte sequences
expect(str2hex(JSON.AsString(JSON.FromString('"\uD83Dx\uDC00"'))), "ED A0 BD 78 ED B0 80")
expect(str2hex(JSON.AsString(JSON.FromString('"\uD83D\u0041"'))), "ED A0 BD 41")
expect(lasterror(), "")

# The script language's literals: escapes in "..." strings, raw '...' strings, numbers in
# JSON syntax, the special numbers and booleans.
expect(str2hex("\"\\\/\b\f\n\r\t"), "22 5C 2F 08 0C 0A 0D 09")
expect(str2hex("\u0041\u00e9\u20AC"), "41 C3 A9 E2 82 AC")
# each \u unit is written on its own: a surrogate pair stays two 3-byte sequences
expect(str2hex("\ud83d\ude00"), "ED A0 BD ED B8 80")
expect(str2hex("\x00\xff\xC3"), "00 FF C3")
expect(str2hex("a#b"), "61 23 62")  # no comment inside strings
# raw strings keep every byte, backslashes and double quotes included
expect(str2hex('a\n"b'), "61 5C 6E 22 62")
expect('{"a":[1,2]}', "{\"a\":[1,2]}")
expect('', "")

# numbers
expect(0, "0")
expect(-0, "0")
expect(-12, "-12")
expect(1.5e3, "1500")
expect(1E-2, "0.01")
expect(2.50, "2.5")
expect(25e-1, 2.5)
expect(1e400, "inf")
expect(-1e400, "-inf")
expect(1e-400, "0")
expect(nan, "nan"); expect(inf, "inf"); expect(-inf, "-inf")

# booleans
expect(true, "true"); expect(false, "false")

# statements: ";" and line breaks separate, "let" is optional, names rebind
let a = 1; b = 2
expect(a, 1); expect(b, "2")
a = "x#y"  # a comment after a statement
expect(a, 'x#y')

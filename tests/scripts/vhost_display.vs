# Display forms: numbers, vectors, data blocks, NONE and JSON values, and typeof.
expect(9007199254740991, "9007199254740991")
expect(-9007199254740991, "-9007199254740991")
expect(9007199254740992, "9007199254740992")
expect(1e16, "1e+16")
expect(0.1, "0.1")
expect(1e300, "1e+300")
expect(-2.5e-7, "-2.5e-07")
expect(0.30000000000000004, "0.30000000000000004")

# vectors: strings quoted and escaped as JSON
expect(["a", "b\"c", "\n\u0001"], '["a", "b\"c", "\n\u0001"]')
expect([1, 2.5, -3, 1e300], "[1, 2.5, -3, 1e+300]")
expect([true, false], "[true, false]")
expect([], "[]")
let n = 5
expect([n, n], "[5, 5]")

# data blocks: upper-case hex pairs, nothing for no bytes
expect(hex2data("81 a1 61 01"), "81 A1 61 01")
expect(hex2stream("81A16101"), "81 A1 61 01")
expect(hex2data(""), "")

# typeof
expect(typeof("x"), "STRING")
expect(typeof(1), "NUMBER")
expect(typeof(nan), "NUMBER")
expect(typeof(true), "BOOLEAN")
expect(typeof(hex2data("00")), "DATAREF")
expect(typeof(hex2stream("00")), "DATAREF")
expect(typeof(["a"]), "VECTOR<STRING>")
expect(typeof([1]), "VECTOR<NUMBER>")
expect(typeof([false]), "VECTOR<BOOLEAN>")
expect(typeof([]), "VECTOR<STRING>")

# JSON values show as the module's compact text; a JSON result left unset is NONE
let j = JSON.FromString('{"a":[1,2.50,"x"]}')
expect(typeof(j), "JSON")
expect(j, '{"a":[1,2.50,"x"]}')
let bad = JSON.FromString('{')
expect(typeof(bad), "NONE")
expect(bad, "<none>")
lasterror()

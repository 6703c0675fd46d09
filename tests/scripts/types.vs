# Type tests (JSON.Is*), conversions (JSON.As*), JSON.Equals and JSON.Create*. None of them
# reports an error. `none` holds no value at all (a failed MessagePack decode gives one).
let none = JSON.FromMsgPack(hex2data("C1"))

# type tests, in the order IsNull IsBool IsNumber IsDouble IsInt64 IsString IsArray IsObject
let v = JSON.FromString("null")
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[true, false, false, false, false, false, false, false]")
v = JSON.FromString("true")
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[false, true, false, false, false, false, false, false]")
v = JSON.FromString("false")
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[false, true, false, false, false, false, false, false]")
v = JSON.FromString("1")
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[false, false, true, false, true, false, false, false]")
v = JSON.FromString("18446744073709551615")
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[false, false, true, false, true, false, false, false]")
v = JSON.FromString("1.5")
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[false, false, true, true, false, false, false, false]")
v = JSON.FromString('"1"')
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[false, false, false, false, false, true, false, false]")
v = JSON.FromString("[]")
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[false, false, false, false, false, false, true, false]")
v = JSON.FromString("{}")
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[false, false, false, false, false, false, false, true]")
v = none
expect([JSON.IsNull(v), JSON.IsBool(v), JSON.IsNumber(v), JSON.IsDouble(v), JSON.IsInt64(v), JSON.IsString(v), JSON.IsArray(v), JSON.IsObject(v)], "[false, false, false, false, false, false, false, false]")

# conversions: AsBool; AsNumber, AsDouble and AsInt64; AsString
v = JSON.FromString("null")
expect(JSON.AsBool(v), false); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[0, 0, 0]"); expect(JSON.AsString(v), "null")
v = JSON.FromString("true")
expect(JSON.AsBool(v), true); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[1, 1, 1]"); expect(JSON.AsString(v), "true")
v = JSON.FromString("false")
expect(JSON.AsBool(v), false); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[0, 0, 0]"); expect(JSON.AsString(v), "false")
v = JSON.FromString("-7")
expect(JSON.AsBool(v), true); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[-7, -7, -7]"); expect(JSON.AsString(v), "-7")
v = JSON.FromString("0")
expect(JSON.AsBool(v), false); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[0, 0, 0]"); expect(JSON.AsString(v), "0")
# an unsigned integer has no signed value: AsInt64 gives 0
v = JSON.FromString("18446744073709551615")
expect(JSON.AsBool(v), true); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[18446744073709551616, 18446744073709551616, 0]"); expect(JSON.AsString(v), "18446744073709551615")
# beyond 2^53 the host's double rounds
expect(JSON.AsInt64(JSON.FromString("9007199254740993")), 9007199254740992)
# reals truncate toward zero; out of the 64-bit range AsInt64 gives 0; 0.0 is false
v = JSON.FromString("-3.9")
expect(JSON.AsBool(v), true); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[-3.9, -3.9, -3]"); expect(JSON.AsString(v), "-3.9")
expect([JSON.AsInt64(JSON.FromString("1e19")), JSON.AsNumber(JSON.FromString("1e19"))], "[0, 1e+19]")
expect(JSON.AsBool(JSON.FromString("0.0")), false)
expect(JSON.AsBool(JSON.FromMsgPack(hex2data("CB 7F F8 00 00 00 00 00 00"))), true)
# strings: the leading JSON number counts, the rest is ignored; a leading blank or no number
# gives 0; AsBool asks whether the text is empty
v = JSON.FromString('"12abc"')
expect(JSON.AsBool(v), true); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[12, 12, 12]"); expect(JSON.AsString(v), "12abc")
v = JSON.FromString('"42.7"')
expect([JSON.AsNumber(v), JSON.AsInt64(v)], "[42.7, 42]")
v = JSON.FromString('" 42"')
expect([JSON.AsNumber(v), JSON.AsInt64(v)], "[0, 0]")
v = JSON.FromString('"1e400"')
expect([JSON.AsNumber(v), JSON.AsInt64(v)], "[0, 0]")
expect([JSON.AsBool(JSON.FromString('"false"')), JSON.AsBool(JSON.FromString('"0"')), JSON.AsBool(JSON.FromString('""'))], "[true, true, false]")
# containers convert to nothing but their text
v = JSON.FromString('[1,"a"]')
expect(JSON.AsBool(v), false); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[0, 0, 0]"); expect(JSON.AsString(v), '[1,"a"]')
v = JSON.FromString('{"a":{}}')
expect(JSON.AsBool(v), false); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[0, 0, 0]"); expect(JSON.AsString(v), '{"a":{}}')
v = none
expect(JSON.AsBool(v), false); expect([JSON.AsNumber(v), JSON.AsDouble(v), JSON.AsInt64(v)], "[0, 0, 0]"); expect(JSON.AsString(v), "")

# equality: deep, member order does not count, no numeric cross-type equality
expect(JSON.Equals(JSON.FromString('{"a":1,"b":[1,{"c":null}]}'), JSON.FromString('{"b":[1,{"c":null}],"a":1}')), true)
expect(JSON.Equals(JSON.FromString("[1,2]"), JSON.FromString("[2,1]")), false)
expect(JSON.Equals(JSON.FromString('{"a":1}'), JSON.FromString('{"a":1,"b":2}')), false)
expect(JSON.Equals(JSON.FromString("1"), JSON.FromString("1.0")), false)
expect(JSON.Equals(JSON.FromString("true"), JSON.FromString("1")), false)
expect(JSON.Equals(JSON.FromString('"1"'), JSON.FromString("1")), false)
expect(JSON.Equals(JSON.FromString("{}"), JSON.FromString("[]")), false)
expect(JSON.Equals(JSON.FromString("18446744073709551615"), JSON.FromMsgPack(hex2data("FF"))), false)
expect(JSON.Equals(JSON.FromString("0.0"), JSON.FromString("-0.0")), true)
# reals compare by value; the comparison converts their text, which then prints converted
let p = JSON.FromString("[1.50]")
expect(JSON.Equals(p, JSON.FromString("[1.5]")), true)
expect(p, "[1.5]")
# a document equals itself, even when it is NaN; two NaNs are unequal
let n = JSON.FromMsgPack(hex2data("CB 7F F8 00 00 00 00 00 00"))
expect(JSON.Equals(n, n), true)
expect(JSON.Equals(n, JSON.FromMsgPack(hex2data("CB 7F F8 00 00 00 00 00 00"))), false)
# a JSON holding no value equals nothing, not even itself
expect([JSON.Equals(none, none), JSON.Equals(none, JSON.CreateNull()), JSON.Equals(JSON.CreateNull(), none)], "[false, false, false]")

# creating
expect(JSON.CreateEmptyArray(), "[]"); expect(JSON.IsArray(JSON.CreateEmptyArray()), true)
expect(JSON.CreateEmptyObject(), "{}"); expect(JSON.IsObject(JSON.CreateEmptyObject()), true)
expect(JSON.CreateNull(), "null"); expect(JSON.IsNull(JSON.CreateNull()), true)
expect(lasterror(), "")

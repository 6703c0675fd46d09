# Member functions: JSON.Set, JSON.SetNull, JSON.Remove, JSON.HasMember, JSON.Get, JSON.GetAs*,
# JSON.Keys and JSON.ElementMatching. Changing functions return a changed copy; the argument
# is checked after each group. `none` holds no value at all.
let none = JSON.FromMsgPack(hex2data("C1"))
let o = JSON.FromString('{"a":1}')
let arr = JSON.FromString("[1,2]")

# every overload of JSON.Set; numbers are stored as reals, vectors as arrays
expect(JSON.Set(o, "b", true), '{"a":1,"b":true}')
expect(JSON.Set(o, "b", 2.5), '{"a":1,"b":2.5}')
expect(JSON.Set(o, "b", "x\"y"), '{"a":1,"b":"x\"y"}')
expect(JSON.Set(o, "b", arr), '{"a":1,"b":[1,2]}')
expect(JSON.Set(o, "b", [true, false]), '{"a":1,"b":[true,false]}')
expect(JSON.Set(o, "b", [1, 2.5]), '{"a":1,"b":[1.0,2.5]}')
expect(JSON.Set(o, "b", ["p", ""]), '{"a":1,"b":["p",""]}')
expect(JSON.Set(o, "b", []), '{"a":1,"b":[]}')
# an existing member is replaced in its place; null turns into an object
expect(JSON.Set(JSON.FromString('{"b":1,"a":2,"c":3}'), "a", "new"), '{"b":1,"a":"new","c":3}')
expect(JSON.Set(JSON.CreateNull(), "a", 1), '{"a":1.0}')
expect(JSON.Set(JSON.CreateNull(), "a", [1]), '{"a":[1.0]}')
# a JSON holding no value as the member value removes the member
expect(JSON.Set(o, "a", none), "{}")
expect(lasterror(), "")
expect(o, '{"a":1}')
expect(arr, "[1,2]")

# reals made from numbers print with ".0" when whole, in plain decimals otherwise
expect(JSON.Set(o, "n", 2), '{"a":1,"n":2.0}')
expect(JSON.Set(o, "n", -0), '{"a":1,"n":0.0}')
expect(JSON.Set(o, "n", 0.1), '{"a":1,"n":0.1}')
expect(JSON.Set(o, "n", 1e-7), '{"a":1,"n":0.0000001}')
expect(JSON.Set(o, "n", 1e-300), '{"a":1,"n":0.0}')
expect(JSON.Set(o, "n", 1e18), '{"a":1,"n":1000000000000000000.0}')
# whole numbers past the 64-bit range get no ".0"
expect(JSON.Set(o, "n", 1e19), '{"a":1,"n":10000000000000000000}')
expect(JSON.Set(o, "n", 1e20), '{"a":1,"n":100000000000000000000}')
expect(JSON.Set(o, "n", nan), '{"a":1,"n":nan}')
expect(JSON.Set(o, "n", -inf), '{"a":1,"n":-inf}')

# number formats: double keeps the real; the integer formats truncate toward zero and are not
# narrowed to 32 bits; the names are case-sensitive
expect(JSON.Set(o, "n", 3.9, "double"), '{"a":1,"n":3.9}')
expect(JSON.Set(o, "n", 3.9, "int64"), '{"a":1,"n":3}')
expect(JSON.Set(o, "n", -3.9, "int32"), '{"a":1,"n":-3}')
expect(JSON.Set(o, "n", 5e9, "int32"), '{"a":1,"n":5000000000}')
expect(JSON.Set(o, "n", 3.9, "uint64"), '{"a":1,"n":3}')
expect(JSON.Set(o, "n", 5e9, "uint32"), '{"a":1,"n":5000000000}')
expect(JSON.Set(o, "n", 9223372036854775808, "uint64"), '{"a":1,"n":9223372036854775808}')
expect(JSON.Set(JSON.CreateNull(), "n", 1, "int64"), '{"n":1}')
expect(JSON.IsInt64(JSON.Get(JSON.Set(o, "n", 1, "uint32"), "n")), true)
expect(lasterror(), "")
expect(JSON.Set(o, "n", 3, "Int32"), "<none>")
expect(lasterror(), "1 JSON Error.JSON.NoObject: Unknown number format!")
expect(JSON.Set(o, "n", 3, ""), "<none>")
expect(lasterror(), "1 JSON Error.JSON.NoObject: Unknown number format!")
expect(o, '{"a":1}')

# JSON.Set failures. Scalars and JSON: severity 2, the unchanged copy
expect(JSON.Set(arr, "b", 1), "[1,2]")
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON element is not a JSON object")
expect(JSON.Set(JSON.FromString('"s"'), "b", true), '"s"')
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON element is not a JSON object")
expect(JSON.Set(arr, "b", 1, "uint64"), "[1,2]")
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON element is not a JSON object")
expect(JSON.Set(arr, "b", o), "[1,2]")
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON element is not a JSON object")
expect(JSON.Set(none, "b", "x"), "")
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON")
expect(JSON.Set(none, "b", 1, "int32"), "")
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON")
expect(JSON.Set(o, "\xC3\x28", 1), '{"a":1}')
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON key is not a valid UTF8-string")
expect(JSON.Set(o, "\xC3\x28", o), '{"a":1}')
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON key is not a valid UTF8-string")
expect(JSON.Set(o, "k", "\xC3\x28"), '{"a":1}')
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, value for key \"k\" is not a valid UTF8-string")
# vectors: severity 1 and no JSON
expect(JSON.Set(arr, "b", [1]), "<none>")
expect(lasterror(), "1 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON element is not a JSON object")
expect(JSON.Set(none, "b", ["x"]), "<none>")
expect(lasterror(), "1 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON element is not a JSON object")
expect(JSON.Set(o, "\xC3\x28", [true]), "<none>")
expect(lasterror(), "1 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON key is not a valid UTF8-string")
expect(o, '{"a":1}')
expect(arr, "[1,2]")

# JSON.SetNull: like JSON.Set, but failures give severity 2 and no JSON
expect(JSON.SetNull(o, "a"), '{"a":null}')
expect(JSON.SetNull(o, "z"), '{"a":1,"z":null}')
expect(JSON.SetNull(JSON.CreateNull(), "z"), '{"z":null}')
expect(lasterror(), "")
expect(JSON.SetNull(arr, "z"), "<none>")
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON element is not a JSON object")
expect(JSON.SetNull(none, "z"), "<none>")
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON element is not a JSON object")
expect(JSON.SetNull(o, "\xC3\x28"), "<none>")
expect(lasterror(), "2 JSON Error.JSON.Exception: Can't set key/value pair into JSON, JSON key is not a valid UTF8-string")
expect(o, '{"a":1}')

# JSON.Remove never reports
expect(JSON.Remove(o, "a"), "{}")
expect(JSON.Remove(o, "z"), '{"a":1}')
expect(JSON.Remove(arr, "0"), "[1,2]")
expect(JSON.Remove(none, "a"), "")
expect(lasterror(), "")
expect(o, '{"a":1}')

# reading members: JSON.Get shares the member; a missing one gives a JSON holding "", not null
let doc = JSON.FromString('{"s":"txt","i":7,"r":2.50,"t":true,"f":false,"n":null,"a":[1,"2",true,null,[3],"x"],"o":{"k":1},"e":"","z":0}')
expect(JSON.Get(doc, "a"), '[1,"2",true,null,[3],"x"]')
expect(JSON.Get(doc, "r"), "2.50")
expect(JSON.Get(doc, "missing"), '""')
expect(JSON.IsString(JSON.Get(doc, "missing")), true)
expect(JSON.Get(arr, "0"), '""')
expect(JSON.Get(none, "a"), '""')
# the scalar readers convert, starting from false, 0 and ""
expect([JSON.GetAsBool(doc, "s"), JSON.GetAsBool(doc, "e"), JSON.GetAsBool(doc, "i"), JSON.GetAsBool(doc, "z"), JSON.GetAsBool(doc, "t"), JSON.GetAsBool(doc, "f"), JSON.GetAsBool(doc, "n"), JSON.GetAsBool(doc, "a"), JSON.GetAsBool(doc, "missing"), JSON.GetAsBool(none, "t")], "[true, false, true, false, true, false, false, false, false, false]")
expect([JSON.GetAsNumber(doc, "s"), JSON.GetAsNumber(doc, "i"), JSON.GetAsNumber(doc, "r"), JSON.GetAsNumber(doc, "t"), JSON.GetAsNumber(doc, "n"), JSON.GetAsNumber(doc, "o"), JSON.GetAsNumber(doc, "missing"), JSON.GetAsNumber(none, "i")], "[0, 7, 2.5, 1, 0, 0, 0, 0]")
expect([JSON.GetAsString(doc, "s"), JSON.GetAsString(doc, "i"), JSON.GetAsString(doc, "t"), JSON.GetAsString(doc, "n"), JSON.GetAsString(doc, "o"), JSON.GetAsString(doc, "missing"), JSON.GetAsString(none, "s")], '["txt", "7", "true", "null", "{\"k\":1}", "", ""]')
# the vector readers take an array member element by element, else give an empty vector
expect(JSON.GetAsBoolVector(doc, "a"), "[true, true, true, false, false, true]")
expect(JSON.GetAsNumberVector(doc, "a"), "[1, 2, 1, 0, 0, 0]")
expect(JSON.GetAsStringVector(doc, "a"), '["1", "2", "true", "null", "[3]", "x"]')
expect(JSON.GetAsNumberVector(JSON.FromString('{"a":[18446744073709551615,"12x",1.50]}'), "a"), "[18446744073709551616, 12, 1.5]")
expect(JSON.GetAsBoolVector(doc, "s"), "[]")
expect(JSON.GetAsNumberVector(doc, "o"), "[]")
expect(JSON.GetAsStringVector(doc, "missing"), "[]")
expect(JSON.GetAsStringVector(JSON.FromString("[[1]]"), "0"), "[]")
expect(JSON.GetAsStringVector(none, "a"), "[]")
expect(lasterror(), "")

# JSON.HasMember: a present key (also holding null); never the empty key; on an array,
# whether an element's text equals the key
expect([JSON.HasMember(doc, "s"), JSON.HasMember(doc, "n"), JSON.HasMember(doc, "missing"), JSON.HasMember(JSON.FromString('{"":1}'), ""), JSON.HasMember(none, "s")], "[true, true, false, false, false]")
expect([JSON.HasMember(JSON.FromString('["a","b"]'), "b"), JSON.HasMember(JSON.FromString('["a"]'), "A"), JSON.HasMember(JSON.FromString('[1,true,null,[2]]'), "[2]"), JSON.HasMember(JSON.FromString('[1.50]'), "1.50"), JSON.HasMember(JSON.FromString('[1.50]'), "1.5"), JSON.HasMember(JSON.FromString('"abc"'), "abc")], "[true, false, true, true, false, false]")

# JSON.Keys: a parsed object lists its members in their order, replaced members stay in place,
# new ones go last
expect(JSON.Keys(JSON.FromString('{"b":1,"a":2,"c":3}')), '["b", "a", "c"]')
expect(JSON.Keys(JSON.Set(JSON.Remove(JSON.FromString('{"a":1,"b":2,"c":3}'), "b"), "b", 9)), '["a", "c", "b"]')
expect(JSON.Keys(JSON.Remove(JSON.Remove(JSON.FromString('{"a":1,"b":2,"c":3,"d":4}'), "a"), "b")), '["c", "d"]')
# once more than half the insert positions are gaps, the order is the hash table's
expect(JSON.Keys(JSON.Remove(JSON.Remove(JSON.Remove(JSON.FromString('{"a":1,"b":2,"c":3,"d":4,"e":5}'), "a"), "b"), "c")), '["e", "d"]')
# objects made empty or from null keep no order: the hash table's order
expect(JSON.Keys(JSON.Set(JSON.Set(JSON.CreateEmptyObject(), "b", 1), "a", 2)), '["a", "b"]')
expect(JSON.Keys(JSON.Set(JSON.Set(JSON.CreateEmptyObject(), "a", 1), "b", 2)), '["b", "a"]')
expect(JSON.Set(JSON.Set(JSON.CreateNull(), "x", 1), "y", 2), '{"y":2.0,"x":1.0}')
expect(JSON.Keys(JSON.FromMsgPack(hex2data("82 A1 62 01 A1 61 02"))), '["a", "b"]')
expect(JSON.Keys(arr), "[]"); expect(JSON.Keys(JSON.FromString("{}")), "[]"); expect(JSON.Keys(none), "[]")
expect(lasterror(), "")

# JSON.ElementMatching: the first object element whose member reads equal; else null
let list = JSON.FromString('[1,{"id":"3"},{"id":3.7},{"id":3,"n":"a"},{"id":3,"n":"b"},{"x":3},{"id":true},{"id":[1]},{"id":null}]')
expect(JSON.ElementMatching(list, "id", "3"), '{"id":"3"}')
expect(JSON.ElementMatching(list, "id", "3.7"), '{"id":3.7}')
expect(JSON.ElementMatching(list, "id", "true"), '{"id":true}')
expect(JSON.ElementMatching(list, "id", "[1]"), '{"id":[1]}')
expect(JSON.ElementMatching(list, "id", "null"), '{"id":null}')
expect(JSON.ElementMatching(list, "id", "4"), "null")
expect(JSON.ElementMatching(list, "n", "b"), '{"id":3,"n":"b"}')
# the number form reads the member as a number (a string holding a number counts) ...
expect(JSON.ElementMatching(list, "id", 3), '{"id":"3"}')
expect(JSON.ElementMatching(list, "id", 3.7), '{"id":3.7}')
expect(JSON.ElementMatching(list, "id", 1), '{"id":true}')
expect(JSON.ElementMatching(list, "id", 4), "null")
expect(JSON.ElementMatching(JSON.FromString('[{"id":"3.7"},{"id":"3x"}]'), "id", 3), '{"id":"3x"}')
# ... and, where that fails, as an integer read from its text: " 3.7" reads as 3
expect(JSON.ElementMatching(JSON.FromString('[{"id":" 3.7"},{"id":3}]'), "id", 3), '{"id":" 3.7"}')
expect(JSON.ElementMatching(JSON.FromString('[{"id":"1e400"},{"id":1}]'), "id", 1), '{"id":"1e400"}')
# members that cannot be read either way are skipped
expect(JSON.ElementMatching(JSON.FromString('[{"id":"abc"},{"id":null},{"id":3}]'), "id", 3), '{"id":3}')
expect(JSON.ElementMatching(o, "a", 1), "null"); expect(JSON.ElementMatching(none, "a", "1"), "null")
expect(lasterror(), "")

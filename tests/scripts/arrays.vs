# Array functions: JSON.Size, JSON.IsEmpty/JSON.Empty, JSON.At, JSON.ArrayAppend,
# JSON.ArrayRemove, JSON.ArrayInsertAt, JSON.ArrayReplaceAt, JSON.UnionArrays and the
# JSON.ArrayFrom*Vector functions. Changing functions return a changed copy; the arguments are
# checked after each group. `none` holds no value at all.
let none = JSON.FromMsgPack(hex2data("C1"))
let a = JSON.FromString("[1,2,3]")
let o = JSON.FromString('{"a":1,"b":2}')

# JSON.Size counts members or elements; anything else is an error and 0
expect([JSON.Size(a), JSON.Size(o), JSON.Size(JSON.CreateEmptyArray()), JSON.Size(JSON.CreateEmptyObject())], "[3, 2, 0, 0]")
expect(lasterror(), "")
expect(JSON.Size(JSON.FromString('"abc"')), 0)
expect(lasterror(), "1 JSON Error.JSON.NoObject: No JSON object given!")
expect(JSON.Size(JSON.FromString("5")), 0)
expect(lasterror(), "1 JSON Error.JSON.NoObject: No JSON object given!")
expect(JSON.Size(JSON.CreateNull()), 0)
expect(lasterror(), "1 JSON Error.JSON.NoObject: No JSON object given!")
expect(JSON.Size(none), 0)
expect(lasterror(), "1 JSON Error.JSON.NoObject: No JSON object given!")

# JSON.IsEmpty and JSON.Empty: "", null, no value and empty containers are empty; numbers and
# booleans never are
expect([JSON.IsEmpty(JSON.FromString('""')), JSON.IsEmpty(JSON.CreateNull()), JSON.IsEmpty(none), JSON.IsEmpty(JSON.CreateEmptyArray()), JSON.IsEmpty(JSON.CreateEmptyObject())], "[true, true, true, true, true]")
expect([JSON.IsEmpty(JSON.FromString('"x"')), JSON.IsEmpty(JSON.FromString("0")), JSON.IsEmpty(JSON.FromString("0.0")), JSON.IsEmpty(JSON.FromString("false")), JSON.IsEmpty(a), JSON.IsEmpty(o)], "[false, false, false, false, false, false]")
expect([JSON.Empty(JSON.FromString('""')), JSON.Empty(none), JSON.Empty(JSON.FromString("0")), JSON.Empty(a)], "[true, true, false, false]")
expect(lasterror(), "")

# JSON.At shares the element; the index is truncated toward zero
expect(JSON.At(a, 0), "1")
expect(JSON.At(a, 2.9), "3")
expect(JSON.At(JSON.FromString('[{"k":[1]}]'), 0), '{"k":[1]}')
# not an array, or no value: null without a report
expect(JSON.At(o, 0), "null")
expect(JSON.At(JSON.CreateNull(), 0), "null")
expect(JSON.At(none, 0), "null")
expect(lasterror(), "")
# out of bounds (-1 is read as the largest unsigned index): severity 2 and null
expect(JSON.At(a, 3), "null")
expect(lasterror(), "2 JSON Error.JSON.Exception: Index is out of bounds")
expect(JSON.At(a, -1), "null")
expect(lasterror(), "2 JSON Error.JSON.Exception: Index is out of bounds")

# JSON.ArrayAppend, all four overloads
expect(JSON.ArrayAppend(a, true), "[1,2,3,true]")
expect(JSON.ArrayAppend(a, 4), "[1,2,3,4.0]")
expect(JSON.ArrayAppend(a, "x"), '[1,2,3,"x"]')
expect(JSON.ArrayAppend(a, o), '[1,2,3,{"a":1,"b":2}]')
expect(JSON.ArrayAppend(a, a), "[1,2,3,[1,2,3]]")
expect(JSON.ArrayAppend(JSON.CreateEmptyArray(), "a\x00b"), '["a\u0000b"]')
# nothing is appended for a JSON holding no value, nor for text that is not UTF-8
expect(JSON.ArrayAppend(a, none), "[1,2,3]")
expect(JSON.ArrayAppend(a, "\xC3\x28"), "[1,2,3]")
expect(lasterror(), "")
# not an array (null is not turned into one): severity 1, the unchanged copy
expect(JSON.ArrayAppend(JSON.CreateNull(), 1), "null")
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't push back to JSON array, JSON object is not an array")
expect(JSON.ArrayAppend(o, true), '{"a":1,"b":2}')
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't push back to JSON array, JSON object is not an array")
expect(JSON.ArrayAppend(o, "s"), '{"a":1,"b":2}')
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't push back to JSON array, JSON object is not an array")
expect(JSON.ArrayAppend(o, a), '{"a":1,"b":2}')
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't push back to JSON array, JSON object is not an array")
expect(JSON.ArrayAppend(none, 1), "")
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't push back to JSON array, JSON object is not an array")
expect(a, "[1,2,3]")
expect(o, '{"a":1,"b":2}')

# JSON.ArrayRemove
expect(JSON.ArrayRemove(a, 0), "[2,3]")
expect(JSON.ArrayRemove(a, 1), "[1,3]")
expect(JSON.ArrayRemove(a, 2), "[1,2]")
expect(lasterror(), "")
expect(JSON.ArrayRemove(a, 3), "[1,2,3]")
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't remove element at position 3")
expect(JSON.ArrayRemove(a, -1), "[1,2,3]")
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't remove element at position 18446744073709551615")
expect(JSON.ArrayRemove(o, 0), '{"a":1,"b":2}')
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't remove element at position 0, JSON object is not an array")
expect(JSON.ArrayRemove(none, 2), "")
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't remove element at position 2, JSON object is not an array")
expect(a, "[1,2,3]")

# JSON.ArrayInsertAt inserts before the index; at or past the end it does nothing
expect(JSON.ArrayInsertAt(a, 0, o), '[{"a":1,"b":2},1,2,3]')
expect(JSON.ArrayInsertAt(a, 2, o), '[1,2,{"a":1,"b":2},3]')
expect(JSON.ArrayInsertAt(a, 3, o), "[1,2,3]")
expect(JSON.ArrayInsertAt(JSON.CreateEmptyArray(), 0, o), "[]")
expect(JSON.ArrayInsertAt(a, 0, none), "[1,2,3]")
expect(lasterror(), "")
expect(JSON.ArrayInsertAt(o, 4, a), '{"a":1,"b":2}')
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't insert element at position 4, JSON object is not an array")
expect(JSON.ArrayInsertAt(none, 0, a), "")
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't insert element at position 0, JSON object is not an array")
expect(a, "[1,2,3]")
expect(o, '{"a":1,"b":2}')

# JSON.ArrayReplaceAt replaces inside the array only; a JSON holding no value makes the element
# null, or removes it when it is the last one
expect(JSON.ArrayReplaceAt(a, 0, o), '[{"a":1,"b":2},2,3]')
expect(JSON.ArrayReplaceAt(a, 2, JSON.FromString('"z"')), '[1,2,"z"]')
expect(JSON.ArrayReplaceAt(a, 3, o), "[1,2,3]")
expect(JSON.ArrayReplaceAt(a, 0, none), "[null,2,3]")
expect(JSON.ArrayReplaceAt(a, 2, none), "[1,2]")
expect(lasterror(), "")
expect(JSON.ArrayReplaceAt(o, 1, a), '{"a":1,"b":2}')
expect(lasterror(), "1 JSON Error.JSON.Exception: Couldn't replace element at position 1, JSON object is not an array")
expect(a, "[1,2,3]")

# JSON.UnionArrays concatenates, keeping duplicates; a non-array gives severity 2 and no JSON
expect(JSON.UnionArrays(JSON.FromString("[1,2]"), JSON.FromString("[2,3]")), "[1,2,2,3]")
expect(JSON.UnionArrays(a, JSON.CreateEmptyArray()), "[1,2,3]")
expect(JSON.UnionArrays(JSON.CreateEmptyArray(), a), "[1,2,3]")
expect(lasterror(), "")
expect(JSON.UnionArrays(a, o), "<none>")
expect(lasterror(), "2 JSON Error.JSON.Exception: Given JSON is not a JSON array")
expect(JSON.UnionArrays(o, a), "<none>")
expect(lasterror(), "2 JSON Error.JSON.Exception: Given JSON is not a JSON array")
expect(JSON.UnionArrays(none, a), "<none>")
expect(lasterror(), "2 JSON Error.JSON.Exception: Given JSON is not a JSON array")
expect(a, "[1,2,3]")

# arrays from vectors: numbers become reals; strings are read up to their first zero byte
expect(JSON.ArrayFromBooleanVector([true, false]), "[true,false]")
expect(JSON.ArrayFromNumberVector([1, 2.5, -0]), "[1.0,2.5,0.0]")
expect(JSON.ArrayFromStringVector(["a", "\"", "b\x00c"]), '["a","\"","b"]')
expect(JSON.ArrayFromBooleanVector([]), "[]")
expect(JSON.ArrayFromNumberVector([]), "[]")
expect(JSON.ArrayFromStringVector([]), "[]")
expect(lasterror(), "")
# one string per element: text that is not UTF-8 becomes "" so that no index shifts
expect(JSON.ArrayFromStringVector(["\xC3\x28", "b"]), '["","b"]')

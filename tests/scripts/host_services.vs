# The host services: serialize/deserialize (the serialized form, read back through the host's
# own IJSON, so the module takes the text way), clone, transfer (the 11100 channel) and
# lessthan. Their refusals are script errors, pinned in CMakeLists.txt.
let none = JSON.FromMsgPack(hex2data("C1"))

# serialize: 8-byte host-order length, then the compact text, in a direct data block
expect(data2hex(serialize(JSON.FromString("{\"a\":1}"))), "07 00 00 00 00 00 00 00 7B 22 61 22 3A 31 7D")
expect(data2hex(serialize(JSON.FromString('[ 1 , true ]'))), "08 00 00 00 00 00 00 00 5B 31 2C 74 72 75 65 5D")
expect(typeof(serialize(JSON.FromString("null"))), "DATAREF")

# deserialize(serialize(j)) equals j; a document shaped like a wrapped value
# ({"type":"JSON","value":...}) comes back whole
let j = JSON.FromString("null"); let back = deserialize(serialize(j)); expect(back, j); expect(JSON.Equals(back, j), true)
j = JSON.FromString("-0.5"); back = deserialize(serialize(j)); expect(back, j); expect(JSON.Equals(back, j), true)
j = JSON.FromString("18446744073709551615"); back = deserialize(serialize(j)); expect(back, j); expect(JSON.Equals(back, j), true)
j = JSON.FromString('"\u00e9\ud83d\ude00 \\n \""'); back = deserialize(serialize(j)); expect(back, j); expect(JSON.Equals(back, j), true)
j = JSON.FromString('[[],{},"",[1,[2,{"k":[null,false,true]}]]]'); back = deserialize(serialize(j)); expect(back, j); expect(JSON.Equals(back, j), true)
# (objects of several members: equal, but the order in which members come back is the module's)
j = JSON.FromString('{"a":{"b":[1.25e300,"x"],"c":{}},"d":-7}'); expect(JSON.Equals(deserialize(serialize(j)), j), true)
j = JSON.FromString('{"type":"JSON","value":5}'); back = deserialize(serialize(j)); expect(JSON.Equals(back, j), true)
expect(JSON.Size(back), 2)
expect(typeof(back), "JSON")
# the bytes are read from any data block, a read-only stream too, and need no module object
expect(deserialize(hex2stream("02 00 00 00 00 00 00 00 5B 5D")), "[]")
expect(deserialize(hex2data("0700000000000000 7B2261223A317D")), '{"a":1}')

# clone: an equal, separate value; the original's later copies do not reach it
j = JSON.FromString('{"a":[1,2]}')
let c = clone(j)
expect(c, j); expect(JSON.Equals(c, j), true); expect([lessthan(c, j), lessthan(j, c)], "[false, false]")
j = JSON.Set(j, "a", 3)
expect(c, '{"a":[1,2]}')
expect(clone(none), none)

# transfer: the new value holds the same tree (equal text); a value without a tree hands
# nothing over and the new value stays null
j = JSON.FromString('[{"x":"y"},2]')
let t = transfer(j)
expect(t, j); expect(JSON.Equals(t, j), true); expect(typeof(t), "JSON")
expect(transfer(t), j)
expect(transfer(none), "null")

# lessthan: byte order of the compact texts, not of numbers; a prefix is less
expect([lessthan(JSON.FromString("1"), JSON.FromString("10")), lessthan(JSON.FromString("10"), JSON.FromString("1"))], "[true, false]")
expect([lessthan(JSON.FromString("9"), JSON.FromString("10")), lessthan(JSON.FromString("10"), JSON.FromString("9"))], "[false, true]")
expect([lessthan(JSON.FromString("[1, 2]"), JSON.FromString("[1,2]")), lessthan(JSON.FromString("[1,2]"), JSON.FromString("[1, 2]"))], "[false, false]")
expect([lessthan(JSON.FromString('{"b":1}'), JSON.FromString('{"a":2}')), lessthan(JSON.FromString('{"a":2}'), JSON.FromString('{"b":1}'))], "[false, true]")
expect([lessthan(none, JSON.FromString("1")), lessthan(JSON.FromString("1"), none), lessthan(none, none)], "[true, false, false]")

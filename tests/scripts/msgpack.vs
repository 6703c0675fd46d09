# JSON.ToMsgPack and JSON.FromMsgPack.

# writing: the shortest form for each value
expect(JSON.ToMsgPack(JSON.FromString("[null,false,true]")), "93 C0 C2 C3")
expect(JSON.ToMsgPack(JSON.FromString("[0,127,128,255,256,65535,65536,4294967295,4294967296]")), "99 00 7F CC 80 CC FF CD 01 00 CD FF FF CE 00 01 00 00 CE FF FF FF FF CF 00 00 00 01 00 00 00 00")
expect(JSON.ToMsgPack(JSON.FromString("[-1,-32,-33,-128,-129,-32768,-32769,-2147483648,-2147483649]")), "99 FF E0 D0 DF D0 80 D1 FF 7F D1 80 00 D2 FF FF 7F FF D2 80 00 00 00 D3 FF FF FF FF 7F FF FF FF")
expect(JSON.ToMsgPack(JSON.FromString("9223372036854775807")), "CF 7F FF FF FF FF FF FF FF")
expect(JSON.ToMsgPack(JSON.FromString("18446744073709551615")), "CF FF FF FF FF FF FF FF FF")
expect(JSON.ToMsgPack(JSON.FromMsgPack(hex2data("D3 80 00 00 00 00 00 00 00"))), "D3 80 00 00 00 00 00 00 00")
# reals: float32 when the double survives the round trip through float, else float64
expect(JSON.ToMsgPack(JSON.FromString("[1.5,-0.0,0.1,1e30]")), "94 CA 3F C0 00 00 CA 80 00 00 00 CB 3F B9 99 99 99 99 99 9A CB 46 29 3E 59 39 A0 8C EA")
expect(JSON.ToMsgPack(JSON.ArrayFromNumberVector([nan, inf, -inf, 3])), "94 CB 7F F8 00 00 00 00 00 00 CA 7F 80 00 00 CA FF 80 00 00 CA 40 40 00 00")
# strings up to 31 bytes are fixstr, then str 8; no UTF-8 check on writing
expect(JSON.ToMsgPack(JSON.FromString('["","a","abcdefghijklmnopqrstuvwxyz01234"]')), "93 A0 A1 61 BF 61 62 63 64 65 66 67 68 69 6A 6B 6C 6D 6E 6F 70 71 72 73 74 75 76 77 78 79 7A 30 31 32 33 34")
expect(JSON.ToMsgPack(JSON.FromString('"abcdefghijklmnopqrstuvwxyz012345"')), "D9 20 61 62 63 64 65 66 67 68 69 6A 6B 6C 6D 6E 6F 70 71 72 73 74 75 76 77 78 79 7A 30 31 32 33 34 35")
# containers: fixarray / fixmap up to 15 entries, then array 16 / map 16
expect(JSON.ToMsgPack(JSON.CreateEmptyArray()), "90")
expect(JSON.ToMsgPack(JSON.CreateEmptyObject()), "80")
expect(JSON.ToMsgPack(JSON.FromString('[[],[],[],[],[],[],[],[],[],[],[],[],[],[],[]]')), "9F 90 90 90 90 90 90 90 90 90 90 90 90 90 90 90")
expect(JSON.ToMsgPack(JSON.FromString('[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0]')), "DC 00 10 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00")
expect(JSON.ToMsgPack(JSON.FromString('{"a":{"b":[1]}}')), "81 A1 61 81 A1 62 91 01")
# members go in the hash table's order, not in the order the parsed object keeps; map 16
expect(JSON.ToMsgPack(JSON.FromString('{"b":1,"a":2}')), "82 A1 61 02 A1 62 01")
expect(JSON.ToMsgPack(JSON.FromString('{"a":1,"b":2,"c":3,"d":4,"e":5,"f":6,"g":7,"h":8,"i":9,"j":10,"k":11,"l":12,"m":13,"n":14,"o":15,"p":16}')), "DE 00 10 A1 6F 0F A1 61 01 A1 62 02 A1 70 10 A1 68 08 A1 6E 0E A1 64 04 A1 6B 0B A1 63 03 A1 69 09 A1 66 06 A1 67 07 A1 65 05 A1 6A 0A A1 6C 0C A1 6D 0D")
# a JSON holding no value writes no bytes
expect(JSON.ToMsgPack(JSON.FromMsgPack(hex2data("C1"))), "")

# reading every code (hex2stream blocks are read through the stream interface)
expect(JSON.FromMsgPack(hex2data("C0")), "null")
expect(JSON.FromMsgPack(hex2stream("93 C2 C3 7F")), "[false,true,127]")
expect(JSON.FromMsgPack(hex2data("9F 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E")), "[0,1,2,3,4,5,6,7,8,9,10,11,12,13,14]")
expect(JSON.FromMsgPack(hex2data("96 E0 FF D0 80 D1 80 00 D2 80 00 00 00 D3 FF FF FF FF FF FF FF FE")), "[-32,-1,-128,-32768,-2147483648,-2]")
expect(JSON.FromMsgPack(hex2stream("94 CC FF CD FF FF CE FF FF FF FF CF 00 00 00 00 00 00 00 05")), "[255,65535,4294967295,5]")
expect(JSON.FromMsgPack(hex2data("CF FF FF FF FF FF FF FF FF")), "18446744073709551615")
expect(JSON.IsInt64(JSON.FromMsgPack(hex2data("CF FF FF FF FF FF FF FF FF"))), true)
expect(JSON.FromMsgPack(hex2data("93 CA 3F C0 00 00 CB 3F B9 99 99 99 99 99 9A CA FF 80 00 00")), "[1.5,0.1,-inf]")
expect(JSON.FromMsgPack(hex2data("94 A1 61 D9 01 62 DA 00 01 63 DB 00 00 00 01 64")), '["a","b","c","d"]')
expect(JSON.FromMsgPack(hex2stream("92 DC 00 01 C0 DD 00 00 00 01 C3")), "[[null],[true]]")
expect(JSON.FromMsgPack(hex2data("93 80 DE 00 01 A1 61 C2 DF 00 00 00 01 A0 C0")), '[{},{"a":false},{"":null}]')
expect(JSON.FromMsgPack(hex2stream("81 A1 61 01")), '{"a":1}')
# a repeated key: the later value wins
expect(JSON.FromMsgPack(hex2data("82 A1 61 01 A1 61 02")), '{"a":2}')
# a string value that is not UTF-8 becomes ""; a pair whose key is not UTF-8 is dropped
expect(JSON.FromMsgPack(hex2data("92 A2 C3 28 A1 62")), '["","b"]')
expect(JSON.FromMsgPack(hex2data("82 A2 C3 28 01 A1 62 02")), '{"b":2}')
# white space after the value is tolerated
expect(JSON.FromMsgPack(hex2data("C0 20 0D 0A 09")), "null")
expect(lasterror(), "")

# a failed decode reports nothing and gives a JSON that holds no value: its text is ""
let bad = JSON.FromMsgPack(hex2data("C1"))
expect(typeof(bad), "JSON")
expect(bad, "")
expect(ToFormattedString(bad, "  "), "")
# unsupported codes (never used, bin, ext, fixext), keys that are no strings, cut input,
# trailing bytes, and the zero-length block
expect([ToString(JSON.FromMsgPack(hex2data("C4 00"))), ToString(JSON.FromMsgPack(hex2data("C5 00 00"))), ToString(JSON.FromMsgPack(hex2data("C6 00 00 00 00")))], '["", "", ""]')
expect([ToString(JSON.FromMsgPack(hex2data("C7 00 01"))), ToString(JSON.FromMsgPack(hex2data("C8 00 00 01"))), ToString(JSON.FromMsgPack(hex2data("C9 00 00 00 00 01")))], '["", "", ""]')
expect([ToString(JSON.FromMsgPack(hex2data("D4 01 00"))), ToString(JSON.FromMsgPack(hex2data("D5 01 00 00"))), ToString(JSON.FromMsgPack(hex2data("D6 01 00 00 00 00")))], '["", "", ""]')
expect([ToString(JSON.FromMsgPack(hex2data("D7 01 00 00 00 00 00 00 00 00"))), ToString(JSON.FromMsgPack(hex2data("D8 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00")))], '["", ""]')
expect(JSON.FromMsgPack(hex2data("81 01 02")), "")
expect(JSON.FromMsgPack(hex2data("81")), "")
expect(JSON.FromMsgPack(hex2data("A5 61 62")), "")
expect(JSON.FromMsgPack(hex2data("CB 00")), "")
expect(JSON.FromMsgPack(hex2data("92 01")), "")
expect(JSON.FromMsgPack(hex2data("C0 C0")), "")
expect(JSON.FromMsgPack(hex2data("")), "")
expect(JSON.FromMsgPack(hex2stream("")), "")
expect(JSON.IsNull(JSON.FromMsgPack(hex2data(""))), false)
expect(lasterror(), "")

# round trips: the decoded tree equals the original
let doc = JSON.FromString('{"s":"t\u00e9","i":[-1,300,-70000,5000000000,18446744073709551615],"r":[0.1,1.5],"o":{"n":null,"b":[true,false]},"e":{},"a":[]}')
expect(JSON.Equals(JSON.FromMsgPack(JSON.ToMsgPack(doc)), doc), true)
let wide = JSON.FromString('{"a":1,"b":2,"c":3,"d":4,"e":5,"f":6,"g":7,"h":8,"i":9,"j":10,"k":11,"l":12,"m":13,"n":14,"o":15,"p":16}')
expect(JSON.Equals(JSON.FromMsgPack(JSON.ToMsgPack(wide)), wide), true)
expect(data2hex(JSON.ToMsgPack(JSON.FromMsgPack(hex2data("DE 00 01 A1 61 01")))), "81 A1 61 01")
expect(lasterror(), "")

# MessagePack: the shortest encoding of every value, and back.
let doc = JSON.FromString('{"a":1}')
let bytes = JSON.ToMsgPack(doc)
print(bytes)                                       # 81 A1 61 01
print(ToString(JSON.FromMsgPack(hex2data("93 C3 C2 C0"))))
print(JSON.Equals(JSON.FromMsgPack(bytes), doc))

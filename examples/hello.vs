# Parse a document, print it compact and pretty, test and convert it, round-trip MessagePack.
let doc = JSON.FromString('{"name":"Ada","langs":["en","fr"],"born":1815,"ratio":1.50}')
print(ToString(doc))                       # reals are echoed as they were read: 1.50
print(ToFormattedString(doc, "  "))
print(JSON.IsObject(doc), JSON.AsNumber(JSON.FromString("42")), JSON.AsString(JSON.FromString('"x"')))
print(JSON.ToMsgPack(JSON.FromString("[1,true,null]")))     # 93 01 C3 C0
print(JSON.Equals(JSON.FromMsgPack(JSON.ToMsgPack(doc)), doc))
# The last call parses bad text on purpose, to show how an error is reported (vhost writes it to
# standard error as "FILE:LINE: error: ...") and how lasterror() reads it; the printed label says so.
print("(expected: the next lines report a parse error; the text is bad on purpose)")
JSON.FromString('{"a" 1}')                 # reported: JSON parse error in line 0: colon expected
print(lasterror())

# Node paths: read and change nested documents by "a/b/0" paths or by vectors of segments.
let doc = JSON.FromString('{"shop":{"items":[{"id":1,"price":9.50},{"id":2,"price":4}]}}')
print(JSON.SubNode(doc, "shop/items/1/price"))
print(JSON.GetSubNode(doc, ["shop", "items", "0"]))
doc = JSON.SetSubNode(doc, "shop/items/0/price", 8.25)
doc = JSON.SetSubNode(doc, "shop/items/2", JSON.FromString('{"id":3}'))   # one past the end appends
doc = JSON.RemoveSubNode(doc, "shop/items/1")
print(ToString(doc))
print(ToString(JSON.ElementMatching(JSON.SubNode(doc, "shop/items"), "id", 3)))
JSON.SetSubNode(doc, "shop/nothing/here", 1)    # reported: intermediate nodes are never created
print(lasterror())

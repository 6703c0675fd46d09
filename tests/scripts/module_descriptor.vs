# The function table as scripts see it (the full table is compared with `vhost --info` by the
# test script/module_info). Here: the names that share one behaviour, and the context-only
# functions that take no argument.

# ToString and ToFormattedString carry no "JSON." prefix
let j = JSON.FromString('{"a":[1.50]}')
expect(ToString(j), '{"a":[1.50]}')
expect(call("virelo_module_JsonToString", j), '{"a":[1.50]}')

# JSON.AsNumber and JSON.AsDouble: two symbols, one reading
expect(JSON.AsNumber(JSON.FromString("2.5")), 2.5)
expect(JSON.AsDouble(JSON.FromString("2.5")), 2.5)
expect(call("virelo_module_AsNumber", JSON.FromString('"7x"')), 7)
expect(call("virelo_module_AsDouble", JSON.FromString('"7x"')), 7)

# JSON.IsEmpty and JSON.Empty
expect(call("virelo_module_IsEmpty", JSON.FromString('""')), true)
expect(call("virelo_module_Empty", JSON.FromString('""')), true)
expect(call("virelo_module_Empty", JSON.FromString('[0]')), false)

# JSON.SubNode and the string form of JSON.GetSubNode
expect(call("virelo_module_FindNodePath", j, "a/0"), "1.50")
expect(call("virelo_module_GetFromNodePath", j, "a/0"), "1.50")

# functions whose only parameter is the call context
expect(call("virelo_module_CreateEmptyArray"), "[]")
expect(call("virelo_module_CreateEmptyObject"), "{}")
expect(call("virelo_module_CreateNull"), "null")
expect(lasterror(), "")

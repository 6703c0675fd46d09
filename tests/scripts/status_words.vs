# The call status word: (1-based parameter position << 16) | reason, read through lasterror().
# A failed call leaves the plain result empty and does not run the function.
let none = JSON.FromString("{")
expect(lasterror(), "2 JSON Error.JSON.Parse: JSON parse error in line 0: illegal object")

# reason 1: argument missing; the string result is ""
expect(call("virelo_module_JsonToString"), "")
expect(lasterror(), "status 65537")
expect(call("virelo_module_JsonToFormattedString", JSON.CreateNull()), "")
expect(lasterror(), "status 131073")
# boolean and number results read false and 0
expect(call("virelo_module_IsValid"), false)
expect(lasterror(), "status 65537")
expect(call("virelo_module_JsonSize"), 0)
expect(lasterror(), "status 65537")

# reason 2: wrong type; 4: a JSON argument without object (NONE)
expect(call("virelo_module_JsonToString", 1), "")
expect(lasterror(), "status 65538")
expect(call("virelo_module_JsonToString", none), "")
expect(lasterror(), "status 65540")
expect(call("virelo_module_Equals", JSON.CreateNull(), none), false)
expect(lasterror(), "status 131076")
expect(call("virelo_module_SetNumber", JSON.CreateNull(), "a", "x"), "<none>")
expect(lasterror(), "status 196610")

# the first bad parameter decides; later ones are not looked at
call("virelo_module_SetNumber", 1)
expect(lasterror(), "status 65538")

# a JSON holding no value is a JSON: the call runs
expect(call("virelo_module_JsonToString", JSON.FromMsgPack(hex2data("C1"))), "")
expect(lasterror(), "")

# an index parameter takes the number truncated toward zero: 3.9 reads as 3
expect(call("virelo_module_JsonArrayAt", JSON.FromString("[10,11,12,13]"), 3.9), 13)
expect(lasterror(), "")

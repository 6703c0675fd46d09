# lasterror(): the last error since the previous lasterror(), read once; a call whose status
# word is not 0 reads as "status N". call() passes exactly the arguments given.
expect(lasterror(), "")
# position 1 missing
call("virelo_module_JsonToString")
expect(lasterror(), "status 65537")
expect(lasterror(), "")
# position 1 of the wrong type
call("virelo_module_JsonToString", 1)
expect(lasterror(), "status 65538")
# position 1 a JSON without object
call("virelo_module_JsonToString", JSON.FromString("{"))
expect(lasterror(), "status 65540")
# a successful call leaves no error behind
expect(call("virelo_module_JsonToString", JSON.FromString("[]")), "[]")
expect(lasterror(), "")

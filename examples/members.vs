# Members: set, read, test and remove; numbers stored in a chosen format.
let o = JSON.CreateEmptyObject()
o = JSON.Set(o, "title", "Report")
o = JSON.Set(o, "pages", 12)
o = JSON.Set(o, "ratio", 0.75, "double")
o = JSON.Set(o, "count", 3.9, "int64")      # stored as the integer 3
o = JSON.Set(o, "tags", ["draft", "internal"])
print(JSON.GetAsNumber(o, "pages"), JSON.GetAsString(o, "count"), JSON.HasMember(o, "tags"))
print(JSON.GetAsStringVector(o, "tags"))
print(JSON.Get(o, "missing"))               # a missing member reads as ""
o = JSON.Remove(o, "ratio")
print(JSON.Size(o))

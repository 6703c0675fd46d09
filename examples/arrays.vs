# Arrays: build, append, insert, replace, remove, join.
let a = JSON.ArrayFromNumberVector([1, 2, 3])
a = JSON.ArrayAppend(a, "four")
a = JSON.ArrayInsertAt(a, 0, JSON.FromString("0"))
a = JSON.ArrayReplaceAt(a, 1, JSON.FromString("true"))
a = JSON.ArrayRemove(a, 2)
print(ToString(a), JSON.Size(a))
print(ToString(JSON.UnionArrays(a, JSON.FromString("[1,2]"))))   # concatenation
print(JSON.At(a, 1))

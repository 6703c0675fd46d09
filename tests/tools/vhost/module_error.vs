print("before")
JSON.FromString("")
print("after")

# The data helpers: hex2data (direct bytes), hex2stream (read-only bytes), data2hex,
# str2hex, and readfile relative to the script's folder.
expect(data2hex(hex2data(" 00 ff 7F ")), "00 FF 7F")
expect(data2hex(hex2stream("00ff7f")), "00 FF 7F")
expect(data2hex(hex2stream("")), "")
expect(str2hex("\xC3\xA9"), "C3 A9")
expect(str2hex(""), "")
expect(str2hex(readfile("vhost_data.vs")), str2hex(readfile("../scripts/vhost_data.vs")))
expect(typeof(readfile("vhost_data.vs")), "STRING")

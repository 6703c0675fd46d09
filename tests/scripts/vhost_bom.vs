# Starts with a UTF-8 byte-order mark (EF BB BF), which vhost skips as some editors write it.
expect(ToString(JSON.FromString("[1, 2]")), "[1,2]")

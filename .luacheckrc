-- Lua 5.1, with the table that the library sets.
std = "lua51+luajit"
globals = { "librpc" }
max_line_length = 120

-- Made from the descriptions, a table a line.
files["docs/reference/librpc.lua"] = { max_line_length = false, unused_args = false }
files["docs/reference/librpc/*.lua"] = { max_line_length = false, unused_args = false, unused = false }
files["tools/wireshark/librpc.lua"] = { max_line_length = false }

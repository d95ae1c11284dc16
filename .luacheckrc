-- Lua 5.1, with the table that the library sets.
std = "lua51+luajit"
globals = { "librpc" }
max_line_length = 120

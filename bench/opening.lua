-- Prints the processor's microseconds that luaopen_librpc takes in a fresh process:
-- opening.lua LIBRARY.
local bench = require("bench")

local open = assert(package.loadlib(arg[1], "luaopen_librpc"))
local start = bench.used()
open()
print(bench.used() - start)

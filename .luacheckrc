-- luacheck: the Lua modules, the command line, examples and tests run on Lua
-- 5.1 to 5.4 and LuaJIT.
std = "max"
max_line_length = 120
globals = { "librpc" }
include_files = { "lua", "bin/rpcctl", "examples", "tests/lua", "bench" }

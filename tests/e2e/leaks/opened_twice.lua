-- Opens the module again and again: the replaced nodes are all that may leak.
require "librpc"
local library = package.cpath:match("([^;]*)%?%.so") .. "librpc.so"
for _ = 1, 3 do
  package.loadlib(library, "luaopen_librpc")()
  assert(librpc.callapi("oltmib_devinfo_get_1", ""))
  assert(not librpc.callapi("oltmib_nothing_get_1", ""))
end

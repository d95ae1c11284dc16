-- Calls every API once, then prints what the kernel says of the library's pages
-- in KiB: resident, of that its own copies (written to), both with the zeroed
-- data right behind the file's mappings. residence.lua LIBRARY.
local bench = require("bench")
local librpc = require("librpc")

for _, api in ipairs(bench.apis()) do
  if not librpc.callapi(api.name, bench.argument(api.name)) then
    error(("residence: %s: expected a reply, found none"):format(api.name), 0)
  end
end

local last, counts
local resident, private = 0, 0
for line in io.lines("/proc/self/smaps") do
  local from, to, name = line:match("^(%x+)%-(%x+) %S+ %S+ %S+ %d+%s*(.*)$")
  if from then
    counts = name == arg[1] or name == "" and from == last
    last = counts and to or nil
  elseif counts then
    resident = resident + tonumber(line:match("^Rss:%s+(%d+)") or 0)
    private = private + tonumber(line:match("^Private_Dirty:%s+(%d+)") or 0)
  end
end
print(resident, private)

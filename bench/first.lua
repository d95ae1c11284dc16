-- Prints the microseconds that the first calls of all services take in a fresh
-- process: first.lua API...
local bench = require("bench")
local librpc = require("librpc") and librpc

local start = bench.now()
for _, api in ipairs(arg) do
  if not librpc.callapi(api, "1") then
    error(("first: %s: expected a reply, found none"):format(api))
  end
end
print(bench.now() - start)

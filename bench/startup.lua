-- What it costs to start: fresh interpreters that load nothing, libtirpc alone,
-- or the library; and luaopen_librpc by itself.
local bench = require("bench")
local output = require("output")
local stats = require("stats")

local startup = {}

-- The microseconds of an interpreter that runs this.
local function running(code)
  return function() return bench.run("lua5.1", "-e", code) end
end

function startup.measure(library, rounds)
  local result = stats.medians({
    bare = running "",
    tirpc = running 'require "only_tirpc"',
    library = running 'require "librpc"',
  }, rounds)
  result.opening = stats.medians({
    function() return tonumber(output.of("lua5.1 bench/fresh.lua opening " .. library)) end,
  }, math.ceil(rounds / 4))[1]
  return result
end

return startup

-- What it costs to start: fresh interpreters that load nothing, libtirpc alone,
-- or the library; and luaopen_librpc by itself.
local bench = require("bench")
local output = require("output")
local stats = require("stats")

local startup = {}

function startup.measure(library, rounds)
  local programs = {
    { key = "bare", code = "" },
    { key = "tirpc", code = 'require "only_tirpc"' },
    { key = "library", code = 'require "librpc"' },
  }
  local times = { bare = {}, tirpc = {}, library = {} }
  for round = 1, rounds do
    for _, program in ipairs(programs) do
      times[program.key][round] = bench.run("lua5.1", "-e", program.code)
    end
  end
  local result = {}
  for key, list in pairs(times) do
    result[key] = stats.median(list)
  end
  local opening = {}
  for round = 1, math.ceil(rounds / 4) do
    opening[round] = tonumber(output.of("lua5.1 bench/opening.lua " .. library))
  end
  result.opening = stats.median(opening)
  return result
end

return startup

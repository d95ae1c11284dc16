-- What a page costs, which is a process that makes first calls: the first calls of
-- all services beside bare sockets, a page of five services and its parts, and a
-- page with named fields beside a plain one.
local bench = require("bench")
local output = require("output")
local stats = require("stats")

local pages = {}

-- The first getter of each service, as bench.apis has it.
local function getters()
  local list, seen = {}, {}
  for _, api in ipairs(bench.apis()) do
    if api.name:find("_get_1$") and not seen[api.program] and api.request > 0 then
      seen[api.program] = true
      list[#list + 1] = api
    end
  end
  return list
end

-- Microseconds of the clock, from inside the processes.
local function first_calls(build, rounds)
  local names, bare = {}, {}
  for _, api in ipairs(getters()) do
    names[#names + 1] = api.name
    bare[#bare + 1] = ("%d %d %d"):format(api.program, api.procedure, api.request)
  end
  local library = "lua5.1 bench/fresh.lua first " .. table.concat(names, " ")
  local sockets = build .. "/bench/bare_first " .. table.concat(bare, " ")
  local result = stats.medians({
    library = function() return tonumber(output.of(library)) end,
    sockets = function() return tonumber(output.of(sockets)) end,
  }, rounds)
  result.services = #names
  return result
end

-- Processor microseconds of whole processes.
local function processes(rounds)
  local function lua(code)
    return function() return bench.run("lua5.1", "-e", code) end
  end
  local calls, names = {}, getters()
  for i = 1, 5 do
    calls[i] = ('assert(librpc.callapi("%s", "1"))'):format(names[i].name)
  end
  local one = names[1].name
  return stats.medians({
    bare = lua(""),
    tirpc = lua('require "only_tirpc"'),
    library = lua('require "librpc"'),
    page = lua('require "librpc" ' .. table.concat(calls, " ")),
    plain = lua(('require "librpc" assert(librpc.callapi("%s", "1"))'):format(one)),
    named = lua(('assert(require("librpc.record").call("%s", {}))'):format(one)),
  }, rounds)
end

function pages.measure(build, rounds)
  return { first = first_calls(build, rounds), processes = processes(rounds) }
end

return pages

-- A page of one table of each service, beside bench_slow_daemon: at_once_page.lua
-- all ROUNDS | one ROUNDS | deadline ROUNDS. Prints the median in milliseconds, and
-- how many of the fifteen texts there were.
local bench = require("bench")
local librpc = require("librpc")
local calls = require("librpc.calls")
local schema = require("librpc.schema")
local stats = require("stats")

local way, rounds = arg[1], tonumber(arg[2])
local list, seen = {}, {}
for _, api in ipairs(schema.apis) do
  if api.operation == "get" and api.request == api.reply and not seen[api.service] then
    seen[api.service] = true
    list[#list + 1] = { api.name, "1" }
  end
end

local ways = {}

function ways.all()
  return calls.all(list)
end

function ways.deadline()
  return calls.all(list, 1)
end

function ways.one()
  local texts = {}
  for i, one in ipairs(list) do
    texts[i] = librpc.callapi(one[1], one[2])
  end
  return texts
end

ways[way]() -- finds the daemons
local times, there = {}, 0
for round = 1, rounds do
  local start = bench.now()
  local texts = ways[way]()
  times[round] = (bench.now() - start) / 1e3
  there = 0
  for i = 1, #list do
    there = there + (texts[i] and 1 or 0)
  end
end
print(stats.median(times), there)

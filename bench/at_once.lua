-- Many calls at once: 48 rows of one service beside the bare echo, and pages of
-- fifteen services beside slow daemons, which take the fast one's place at the port
-- mapper: the last thing that is measured.
local bench = require("bench")
local calls = require("librpc.calls")
local librpc = require("librpc")
local output = require("output")
local stats = require("stats")
local timing = require("timing")

local at_once = {}

local rows = 48

-- 48 rows of a table: bare echoes one after another, callapi one after another, and
-- calls.all. Microseconds a call.
local function many_rows(rounds)
  local name, argument, list = "oltmib_portinfo_get_1", nil, {}
  for _, call in ipairs(require("calls")) do
    argument = call.api == name and call.argument or argument
  end
  for i = 1, rows do
    list[i] = { name, argument }
  end
  local api
  for _, one in ipairs(bench.apis()) do
    api = one.name == name and one or api
  end
  local function one_by_one()
    for _ = 1, rows do
      librpc.callapi(name, argument)
    end
  end
  local times = { echo = {}, one = {}, all = {} }
  for round = 1, rounds do
    times.echo[round] = timing.echo(api, rows)
    times.one[round] = timing.round(one_by_one, 1) / rows
    times.all[round] = timing.round(calls.all, 1, list, 1.0) / rows
  end
  local result = {}
  for way, list_of_times in pairs(times) do
    result[way] = stats.median(list_of_times)
  end
  return result
end

-- A page beside slow daemons: milliseconds and texts.
local function page(build, way, rounds, milliseconds, silent)
  local ready = os.tmpname()
  os.execute(("'%s/bench/bench_slow_daemon' %d %s >%s & echo $! >%s.pid"):format(build, milliseconds, silent or "",
    ready, ready))
  local text = output.of(("until grep -q ready %s; do sleep 0.02; done; lua5.1 bench/at_once_page.lua %s %d; "
    .. "kill $(cat %s.pid); rm -f %s %s.pid"):format(ready, way, rounds, ready, ready, ready))
  local median, there = text:match("([%d.]+)%s+(%d+)")
  return { time = tonumber(median), texts = tonumber(there) }
end

function at_once.measure(build, rounds)
  return {
    rows = many_rows(rounds),
    page = page(build, "all", 15, 20),
    one = page(build, "one", 3, 20),
    dead = page(build, "deadline", 3, 20, "nsminfo"),
  }
end

local function verdict(value, limit)
  return value <= limit and "met" or ("%.1f%% over"):format((value / limit - 1) * 100)
end

function at_once.table(results)
  local from = results.at_once
  local ratio, time = from.rows.all / from.rows.echo, from.page.time / 20
  return {
    title = "Many calls at once",
    head = { "what", "found", "at most" },
    rows = {
      { rows .. " rows, a bare echo after another, us each", ("%.2f"):format(from.rows.echo), "" },
      { rows .. " rows by callapi, us each", ("%.2f"):format(from.rows.one), "" },
      { rows .. " rows by calls.all, us each", ("%.2f"):format(from.rows.all), "" },
      { "- x echo", ("%.2f"):format(ratio), "0.85: " .. verdict(ratio, 0.85) },
      { "15 services of 20 ms by callapi, ms", ("%.1f"):format(from.one.time), "" },
      { "15 services of 20 ms by calls.all, ms", ("%.1f"):format(from.page.time), "" },
      { "- x 20 ms", ("%.2f"):format(time), "1.15: " .. verdict(time, 1.15) },
      { "one of them silent, a deadline of 1 s, ms", ("%.0f"):format(from.dead.time),
        "1050: " .. verdict(from.dead.time, 1050) },
      { "- texts of the 14 others", ("%d"):format(from.dead.texts), "" },
    },
  }
end

return at_once

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
  return stats.medians({
    echo = function() return timing.echo(api, rows) end,
    one = function() return timing.round(one_by_one, 1) / rows end,
    all = function() return timing.round(calls.all, 1, list, 1.0) / rows end,
  }, rounds)
end

-- What a command prints beside slow daemons: its two numbers.
local function beside_slow(build, daemons, command)
  local ready = os.tmpname()
  os.execute(("'%s/bench/bench_slow_daemon' %s >%s & echo $! >%s.pid"):format(build, daemons, ready, ready))
  local text = output.of(("until grep -q ready %s; do sleep 0.02; done; %s; kill $(cat %s.pid); rm -f %s %s.pid")
    :format(ready, command, ready, ready, ready))
  local first, second = text:match("([%d.]+)%s+([%d.]+)")
  return tonumber(first), tonumber(second)
end

-- A page beside slow daemons: milliseconds and texts.
local function page(build, way, rounds, daemons)
  local time, texts = beside_slow(build, daemons, ("lua5.1 bench/at_once_page.lua %s %d"):format(way, rounds))
  return { time = time, texts = texts }
end

-- Threads on all cores, with the daemon there too: calls a second of one and of
-- several; how long nearly every call takes beside another service's daemon of 500 ms.
local several = 8
local function threads(build, seconds)
  local cores = ("0-%d"):format(tonumber(output.of("nproc --all")) - 1)
  local program = ("taskset -c %s '%s/bench/bench_threads' %g "):format(cores, build, seconds)
  local function calls_a_second(count)
    return tonumber((output.of(program .. count):match("[%d.]+")))
  end
  timing.on_cores(cores)
  local one, many = calls_a_second(1), calls_a_second(several)
  local _, nearly_all = beside_slow(build, "0 nsminfo 500", program .. several .. " oltmib_vlaninfo_get_1")
  return { one = one, many = many, nearly_all = nearly_all }
end

function at_once.measure(build, rounds)
  return {
    rows = many_rows(rounds),
    threads = threads(build, 2),
    page = page(build, "all", 15, "20"),
    one = page(build, "one", 3, "20"),
    dead = page(build, "deadline", 3, "20 nsminfo silent"),
  }
end

local function verdict(value, limit)
  return value <= limit and "met" or ("%.1f%% over"):format((value / limit - 1) * 100)
end

function at_once.table(results)
  local from = results.at_once
  local ratio, time = from.rows.all / from.rows.echo, from.page.time / 20
  local speedup = from.threads.many / from.threads.one
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
      { "one thread, calls a second", ("%.0f"):format(from.threads.one), "" },
      { several .. " threads, calls a second", ("%.0f"):format(from.threads.many), "" },
      { "- x one", ("%.2f"):format(speedup), "at least 1.6: " .. (speedup >= 1.6 and "met" or "missed") },
      { several .. " threads beside another service's daemon of 500 ms, 999 of 1000 calls, ms",
        ("%.1f"):format(from.threads.nearly_all), "5: " .. verdict(from.threads.nearly_all, 5) },
    },
  }
end

return at_once

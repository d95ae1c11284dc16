-- Times of calls: the library, the plain way and the bare echo in turn, round
-- by round, so that what disturbs the machine disturbs all three.
local bench = require("bench")
local librpc = require("librpc")
local plain = require("plain")
local calls = require("calls")
local stats = require("stats")

local timing = {}

local least_own = 0.97 -- of a round's time, that client and daemon used the core
local most_tries = 20000 -- for a round that counts

local look_up_rounds = 5

local daemon -- {port, pid}

-- Says where the daemon is.
function timing.use(port, pid)
  daemon = { port = port, pid = pid }
end

-- Lets the daemon run on these cores ("0-1"), for the rest of the benchmark.
function timing.on_cores(cores)
  os.execute(("taskset -pc %s %d >/dev/null"):format(cores, daemon.pid))
end

-- One round: the microseconds a call, over `count` calls. A round in which
-- somebody else had the core does not count and is made again.
local function time(call, count, ...)
  for _ = 1, most_tries do
    local used, start = bench.used(daemon.pid), bench.now()
    for _ = 1, count do
      call(...)
    end
    local taken = bench.now() - start
    if bench.used(daemon.pid) - used >= least_own * taken then
      return taken / count
    end
  end
  error(("bench: core: expected a round to itself, found none in %d"):format(most_tries), 0)
end

local function time_echo(api, count)
  return time(bench.echo, 1, daemon.port, api, count) / count
end

timing.round, timing.echo = time, time_echo

local function apis_by_name()
  local by_name = {}
  for _, api in ipairs(bench.apis()) do
    by_name[api.name] = api
  end
  return by_name
end

local function expect_reply(api, argument)
  local reply = librpc.callapi(api, argument)
  if not reply then
    error(("bench: %s: expected a reply, found none"):format(api), 0)
  end
  return reply
end

-- Each measured call's three times, their spread and their ratios.
function timing.calls(rounds, count)
  local apis, rows = apis_by_name(), {}
  for _, row in ipairs(calls) do
    local ours, theirs = expect_reply(row.api, row.argument), plain[row.api](row.argument)
    if ours ~= theirs then
      error(("bench: %s: expected the plain way's reply '%s', found '%s'"):format(row.api, tostring(theirs), ours), 0)
    end
    rows[#rows + 1] = { api = apis[row.api], argument = row.argument, library = {}, echo = {}, plain = {} }
  end
  for _ = 1, rounds do
    for _, row in ipairs(rows) do
      row.echo[#row.echo + 1] = time_echo(row.api, count)
      row.library[#row.library + 1] = time(librpc.callapi, count, row.api.name, row.argument)
      row.plain[#row.plain + 1] = time(plain[row.api.name], count, row.argument)
    end
  end
  for _, row in ipairs(rows) do
    row.spread = stats.spread(row.library)
    row.library, row.echo, row.plain = stats.median(row.library), stats.median(row.echo), stats.median(row.plain)
  end
  return rows
end

-- The library beside the echo over records of growing size: one getter of each
-- of about `most` sizes.
function timing.by_size(rounds, count, most)
  local sizes, seen = {}, {}
  for _, api in ipairs(bench.apis()) do
    if api.request == api.reply and not seen[api.reply] then
      seen[api.reply] = true
      sizes[#sizes + 1] = { api = api, argument = bench.argument(api.name), library = {}, echo = {} }
    end
  end
  table.sort(sizes, function(a, b)
    return a.api.reply < b.api.reply
  end)
  local chosen, least = {}, 0
  local step = (sizes[#sizes].api.reply / sizes[1].api.reply) ^ (1 / (most - 1))
  for i, size in ipairs(sizes) do
    if size.api.reply >= least or i == #sizes then
      chosen[#chosen + 1] = size
      least = size.api.reply * step
    end
  end
  for _, row in ipairs(chosen) do
    expect_reply(row.api.name, row.argument)
  end
  for _ = 1, rounds do
    for _, row in ipairs(chosen) do
      row.echo[#row.echo + 1] = time_echo(row.api, count)
      row.library[#row.library + 1] = time(librpc.callapi, count, row.api.name, row.argument)
    end
  end
  for _, row in ipairs(chosen) do
    row.library, row.echo = stats.median(row.library), stats.median(row.echo)
  end
  return chosen
end

-- A call's and a look-up's time as the registry grows.
function timing.by_registry(library, sizes, rounds, count)
  local row, registered, result = calls[2], #bench.apis(), {}
  for _, size in ipairs(sizes) do
    bench.add_apis(library, registered + 1, size)
    registered = size
    local times, look_ups = {}, {}
    for round = 1, rounds do
      times[round] = time(librpc.callapi, count, row.api, row.argument)
      look_ups[round] = time(bench.look_up, 1, library, look_up_rounds) * 1e3 / look_up_rounds / #bench.apis()
    end
    result[#result + 1] = { apis = size, call = stats.median(times), look_up = stats.median(look_ups) }
  end
  return result
end

return timing

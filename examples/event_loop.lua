-- Calls in an event loop, here cqueues' (Debian: lua-cqueues): eight ports are read
-- at once, each by a coroutine that reads as if it waited, beside a ticker that keeps
-- ticking. What a loop needs of a group is its descriptor, its events and its
-- timeout; any other loop takes the same three.
--
--     lua5.1 examples/event_loop.lua [SECONDS]
--
-- SECONDS is each call's deadline, 2 if not given.
local calls = require "librpc.calls"
local condition = require "cqueues.condition"
local cqueues = require "cqueues"

local seconds = tonumber(arg[1] or 2)
local loop, group = cqueues.new(), calls.group()
local ended_by_id, open, closed = {}, 0, condition.new() -- readers that have not ended

-- One call: its text, or false and why. Suspends the coroutine, not the process.
local function call(name, argument)
  local id, message, code = group:call(name, argument, seconds)
  if not id then
    return false, { code = code, message = message }
  end
  local ended = { condition = condition.new() }
  ended_by_id[id] = ended
  ended.condition:wait()
  return ended.text, ended.failure
end

-- Wakes whoever waits for a call that has ended.
local function dispatch()
  while open > 0 do
    cqueues.poll(group, closed)
    for id, text, failure in group:finished() do
      local ended = ended_by_id[id]
      ended_by_id[id] = nil
      ended.text, ended.failure = text, failure
      ended.condition:signal()
    end
  end
end

local started, lines, ticks = cqueues.monotime(), {}, 0
for port = 1, 8 do
  open = open + 1
  loop:wrap(function()
    local text, failure = call("oltmib_portinfo_get_1", tostring(port))
    lines[port] = text and text:match("^%d+&([^&]*)") or failure.message
    open = open - 1
    closed:signal()
  end)
end
loop:wrap(dispatch)
loop:wrap(function()
  while open > 0 do
    ticks = ticks + 1
    cqueues.sleep(0.02)
  end
end)
assert(loop:loop())
print(table.concat(lines, "\n"))
print(("%d calls in %.0f ms, %d ticks"):format(#lines, (cqueues.monotime() - started) * 1000, ticks))

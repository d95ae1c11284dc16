-- Shows how fast the ports' counters grow:
--
--     lua5.1 examples/watch_counters.lua [SECONDS [ROUNDS]]
--
-- rpcctl watch portstat does more; this is how it is done.
local record = require "librpc.record"

local interval, rounds = tonumber(arg[1] or 2), tonumber(arg[2] or math.huge)

local function read()
  local rows, message = record.rows "portstat"
  if not rows then
    io.stderr:write("watch_counters: ", message, "\n")
    os.exit(1)
  end
  return rows
end

local before = read()
for round = 1, rounds do
  os.execute("sleep " .. interval)
  local now = read()
  print("round " .. round)
  for i, port in ipairs(now) do
    -- counters are texts of digits, as 64 bits do not fit every Lua's numbers
    local grown = before[i] and record.difference(port.counter9, before[i].counter9) or 0
    print(("  %-6s counter9 %20s  %8.1f a second"):format(port.name, port.counter9, grown / interval))
  end
  before = now
end

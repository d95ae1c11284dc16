-- Finalizers that call the library: they run in the middle of anything that asks
-- for memory, the pushing of another call's reply among it.
local harness = require "harness"
local case, call, equal, tell = harness.case, harness.call, harness.equal, harness.tell

-- newproxy is of 5.1 alone, where tables have no __gc.
local function finalized(body)
  local object = newproxy(true)
  getmetatable(object).__gc = body
end

case "finalizers_that_call_while_replies_are_pushed_change_none" (function() -- with every interpreter
  local rows = {}
  for port = 1, 8 do rows[port] = call("oltmib_portinfo_get_1", port) end
  local neighbour = call("oltmib_lldpifnei_get_1", "1&$00-1E-80-CC-00-01")
  equal(rows[3]:match("^3&ge3&"), "3&ge3&", "a first reply")
  equal(neighbour ~= nil, true, "a long reply")
  local wanted, inner, outer, wrong = 100000, 0, 0, 0
  local running = true

  local function check(api, argument, reply)
    if call(api, argument) ~= reply then wrong = wrong + 1 end
  end
  local function finalizer()
    if not running then return end
    inner = inner + 1
    local port = inner % 8 + 1
    check("oltmib_portinfo_get_1", port, rows[port])
  end

  while inner + outer < wanted do
    outer = outer + 1
    local port = (outer + 4) % 8 + 1
    finalized(finalizer)
    check("oltmib_portinfo_get_1", port, rows[port])
    if outer % 50 == 0 then check("oltmib_lldpifnei_get_1", "1&$00-1E-80-CC-00-01", neighbour) end
    if outer % 50 == 25 then check("oltmib_nothing_get_1", "", nil) end
  end
  running = false
  print(("%d calls, %d of finalizers, %d wrong"):format(inner + outer, inner, wrong))
  equal(wrong, 0, "wrong replies")
  equal(inner > wanted / 4, true, "calls of finalizers: " .. inner)
  equal(harness.calls "oltmib_portinfo_get_1", inner + outer + 8, "executions")
end)

-- The state is closing: its finalizers still may call.
case "finalizers_that_call_while_the_state_closes_get_replies" (function() -- with every interpreter
  local text, status = harness.run [[
    local kept = {}
    for i = 1, 50 do
      local object = newproxy(true)
      getmetatable(object).__gc = function()
        local reply = librpc.callapi("oltmib_portinfo_get_1", i % 8 + 1)
        print(reply:match("^%d+&ge%d+&") == ("%d&ge%d&"):format(i % 8 + 1, i % 8 + 1))
      end
      kept[i] = object
    end
    librpc.callapi("oltmib_devinfo_get_1", "")
  ]]
  equal(status, 0, "status")
  equal(text, ("true\n"):rep(50), "replies")
  equal(tell "count oltmib_portinfo_get_1", "50", "executions")
end)

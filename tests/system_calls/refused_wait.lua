-- A socket that refuses how long its receive may wait: the calls of a group end at
-- their deadlines all the same, the first one and those after it.
--
--     run.sh BUILD lua5.1 refused_wait.lua, with failing.so preloaded
require "librpc"
local calls = require "librpc.calls"
local check = require "check"
local clock = require "clock"
local failing = require "failing"

local vlan = "oltmib_vlaninfo_get_1"
local group = calls.group()

-- The code of the next call that ends.
local function next_end()
  while true do
    group:wait()
    local finished, state = group:finished()
    local id, text, failure = finished(state)
    if id then
      return text and "a reply" or failure.code
    end
  end
end

group:call(vlan, "10", 5)
check.equal("a call before", next_end(), "a reply")
assert(os.execute("$SIM_DEVICE --tell $SIM_CONTROL 'fault nsminfo drop' >/dev/null") == 0)
failing.arm("setsockopt", 1, "ENOMEM", true)
check.equal("both calls' time", clock.takes(1.5, function()
  group:call(vlan, "10", 0.7)
  group:call(vlan, "10", 1.5)
  check.equal("one call's time", clock.takes(0.7, function()
    check.equal("one call", next_end(), "timed_out")
  end), true)
  check.equal("the other call", next_end(), "timed_out")
end), true)
check.equal("a wait was refused", failing.disarm(), true)
group:close()
check.finish()

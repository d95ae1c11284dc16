-- Many calls of every end, for valgrind: nothing of them stays.
require "librpc"
local calls = require "librpc.calls"
local record = require "librpc.record"
local devinfo, vlan = "oltmib_devinfo_get_1", "oltmib_vlaninfo_get_1"

local function tell(command)
  os.execute("$SIM_DEVICE --tell $SIM_CONTROL '" .. command .. "' >/dev/null")
end

local list = { { "oltmib_nothing_get_1", "" }, { "oltmib_lpdet_global_get_1", "" } }
for i = 3, 60 do
  list[i] = { i % 2 == 0 and devinfo or vlan, ("1&"):rep(i) }
end
tell "stop lpdet"
tell "fault nsminfo after=3 count=3 error system_err"
for _ = 1, 3 do
  calls.all(list, 5)
end
pcall(calls.all, { { vlan, "1" }, 5 })
tell "fault erpsinfo drop"
for _ = 1, 3 do
  local group = calls.group()
  group:pollfd()
  for i = 1, 20 do
    group:call("oltmib_lldpifnei_get_1", tostring(i), 5)
    group:call(vlan, tostring(i), 5)
  end
  group:call("oltmib_lldpifnei_get_1", "1", 0.05)
  group:wait(1)
  group:finished()(group) -- the others are never fetched
  group = nil -- luacheck: ignore 311
  collectgarbage()
end
local datagram, _, _, message = calls.message(vlan, "10")
assert(message:reply(datagram:sub(1, 4) .. ("\0"):rep(20)) == false)
calls.services(5)
record.all({ { vlan, { field1 = 10 } }, { "oltmib_lldpifnei_get_1" } }, 0.1)
record.walks({ { "portinfo" }, { "lldpifnei" } }, 0.1)
open_at_the_end = calls.group() -- luacheck: ignore 111
open_at_the_end:call("oltmib_lldpifnei_get_1", "1") -- luacheck: ignore 113
print "done"

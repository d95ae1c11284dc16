-- Calls at and beyond their deadline of 25 seconds, look-ups at theirs of 5, and sets
-- that take their time. They wait; ctest runs them beside one another.
local clock = require "clock"
local harness = require "harness"
local process = require "e2e_process"
local status = require "librpc.status"
local case, call, equal, tell, calls = harness.case, harness.call, harness.equal, harness.tell, harness.calls

local vlan, vlan10 = harness.vlan, harness.vlan10

case "late_reply_in_the_middle_of_the_next_call_is_passed_over" (function()
  equal(call(vlan, "10"), vlan10, "a first call")
  tell "fault oltmib_vlaninfo_get_1 count=1 delay 27000"
  equal(select("#", call(vlan, "20")), 0, "values of a call whose reply takes 27 seconds")
  tell "fault oltmib_vlaninfo_get_1 count=1 delay 4000" -- the late reply comes after two of them
  equal(call(vlan, "10"), vlan10, "the next call")
  for i = 1, 50 do
    equal(call(vlan, "10"), vlan10, "call " .. i .. " after that")
  end
  equal(calls(), 53, "executions")
  equal(harness.lookups(50004), 2, "lookups: one more after the failure")
end)

case "set_that_takes_17_seconds_is_carried_out_once" (function()
  tell("fault oltmib_sysloginfo_set_1 delay 17000 raw " .. harness.accepted .. harness.int(17))
  equal(call("oltmib_sysloginfo_set_1", "1&6"), "17", "status")
  equal(calls(), 1, "executions")
end)

case "other_services_answer_while_one_reply_is_late" (function()
  tell "fault oltmib_sysloginfo_set_1 delay 17000"
  local child = process.fork()
  if child == 0 then
    process.exit(call("oltmib_sysloginfo_set_1", "1&6") == "0" and 0 or 1)
  end
  for _ = 1, 100 do
    equal(call(vlan, "10"), vlan10, "a call of another service")
  end
  equal(process.wait(child), 0, "the late call's status")
  equal(calls "oltmib_sysloginfo_set_1", 1, "executions of the late call")
end)

case "deadline_is_25_seconds_from_the_call_whatever_comes_in_between" (function()
  local other = ("11223344" .. "00000001" .. "00000000" .. "00000000" .. "00000000" .. "00000000")
  tell("fault oltmib_vlaninfo_get_1 count=1 double delay 10000 raw " .. other) -- replies of another call
  equal(clock.takes(25, function() equal(select("#", call(vlan, "10")), 0, "values") end), true, "25 seconds")
  equal(calls(), 1, "executions")
  equal(call(vlan, "10"), vlan10, "the next call")
end)

case "no_reply_at_all_is_one_request_and_no_value" (function()
  tell "fault oltmib_vlaninfo_get_1 count=1 drop"
  equal(select("#", call(vlan, "10")), 0, "values")
  equal(calls(), 1, "executions")
  equal(call(vlan, "10"), vlan10, "the next call")
end)

case "empty_and_short_replies_of_the_daemon_are_passed_over" (function()
  tell "fault oltmib_vlaninfo_get_1 count=1 raw -"
  equal(select("#", call(vlan, "10")), 0, "values of an empty reply")
  equal(calls(), 1, "executions")
  equal(call(vlan, "10"), vlan10, "the next call")
end)

-- At a real port mapper that is stopped for a while.
case "stopped_port_mapper_is_given_up_after_five_seconds_and_asked_again_later" (function()
  local SIGCONT, SIGSTOP = 18, 19
  local mapper = tonumber(os.getenv("RPCBIND_PID"))
  process.kill(mapper, SIGSTOP)
  equal(clock.takes(5, function() equal(select("#", call("oltmib_devinfo_get_1", "")), 0, "values") end), true,
    "5 seconds")
  equal(status.last(), "no_portmapper", "code")
  process.kill(mapper, SIGCONT)
  equal(call("oltmib_devinfo_get_1", ""):match("^[^&]+"), "OLT-8G", "the next call")
  equal(status.last(), nil, "code")
end)

-- As Lua modules install them: it defers itself with a hook.
case "handler_of_sigchld_that_defers_itself_ends_no_set" (function() -- with every interpreter
  local has_posix, signals = pcall(require, "posix.signal")
  if not has_posix then
    print("skipped: expected the module posix (Debian: lua-posix), found none")
    return
  end
  local handled = 0
  signals.signal(signals.SIGCHLD, function() handled = handled + 1 end)
  local set = "oltmib_sysloginfo_set_1"
  tell("fault " .. set .. " delay 600 raw " .. harness.accepted .. harness.int(17))
  local before, replies = handled, 0
  for _ = 1, 4 do
    local child = process.fork()
    if child == 0 then
      process.sleep(200)
      process.exit(0)
    end
    if call(set, "1&6") == "17" then replies = replies + 1 end
    process.wait(child)
  end
  equal(replies, 4, "replies")
  equal(calls(set), 4, "executions")
  equal(handled > before, true, "the handler ran")
end)

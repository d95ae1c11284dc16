-- The call path on a faulty, shared machine: nobody's reply but the daemon's own,
-- every call carried out once.
local harness = require "harness"
local process = require "e2e_process"
local reasons = require "librpc.status"
local case, call, equal, tell = harness.case, harness.call, harness.equal, harness.tell
local calls, run, shell, lookups = harness.calls, harness.run, harness.shell, harness.lookups
local in_child = harness.in_child

local vlan, vlan10 = harness.vlan, harness.vlan10

local function expect_vlan10(where)
  equal(call(vlan, "10"), vlan10, where)
end

local function expect_failure(where)
  equal(select("#", call(vlan, "10")), 0, "values after " .. where)
end

case "strangers_never_reach_a_caller" (function()
  local accepted = harness.accepted
  for _, effect in ipairs {
    "forge", "stranger -", "stranger 00", "stranger XID", "stranger XID00000001", "stranger 11223344",
    "stranger " .. accepted, "stranger " .. accepted .. "00000000", "stranger XID0000000100000001",
    "stranger XID00000000", "forge stranger - stranger 00 stranger XID forge",
  } do
    tell "clear"
    local before = calls()
    tell("fault * delay 100 " .. effect) -- the stranger's datagram comes first
    expect_vlan10(effect)
    equal(call("oltmib_sysloginfo_set_1", "1&6"), "0", "set, " .. effect)
    equal(calls(), before + 2, "executions, " .. effect)
  end
  equal(lookups(50004), 1, "lookups: no call failed")
  equal(lookups(50006), 1, "lookups: no call failed")
end)

case "doubled_replies_change_nothing" (function()
  tell "fault * double"
  for i = 1, 200 do
    expect_vlan10("call " .. i)
    equal(call(vlan, "20"):match("^%d+&%d+&(%a+)"), "video", "call " .. i)
    equal(call("oltmib_portinfo_get_1", "3"):match("^3&ge3&"), "3&ge3&", "call " .. i)
  end
  equal(calls(), 600, "executions")
  equal(lookups(50004), 1, "lookups")
end)

case "reply_that_takes_two_seconds_is_waited_for_and_executed_once" (function()
  tell "fault * delay 2000"
  expect_vlan10("a late reply")
  equal(calls(), 1, "executions")
end)

case "error_replies_give_no_value_and_a_fresh_client" (function()
  local failed = 0
  for _, status in ipairs { "prog_unavail", "prog_mismatch", "proc_unavail", "garbage_args", "system_err", "denied",
    "rpc_mismatch" } do
    expect_vlan10("before " .. status)
    tell("fault * count=1 error " .. status)
    local before = calls()
    expect_failure(status)
    equal(calls(), before + 1, "executions with " .. status)
    failed = failed + 1
    expect_vlan10("after " .. status)
    equal(lookups(50004), failed + 1, "lookups after " .. status)
  end
end)

case "short_replies_give_no_value_whatever_their_length" (function()
  -- a route record has 912 bytes; every multiple of four and some odd lengths
  local route = "0.0.0.0/0&192.0.2.1&vlan1&1&1&static&&0&0"
  for size = 0, 911, 4 do
    for _, bytes in ipairs(size % 200 == 0 and { size, size + 1, size + 2, size + 3 } or { size }) do
      tell("fault oltmib_route_get_1 count=1 truncate " .. bytes)
      equal(select("#", call("oltmib_route_get_1", "0.0.0.0/0")), 0, "values of a reply of " .. bytes .. " bytes")
    end
  end
  equal(call("oltmib_route_get_1", "0.0.0.0/0"), route, "whole reply")
end)

case "reply_cut_inside_its_header_gives_no_value_or_is_passed_over" (function()
  for bytes = 4, 23 do
    tell("fault * count=1 cut " .. bytes)
    expect_failure("a header of " .. bytes .. " bytes")
  end
  expect_vlan10("a whole reply")
end)

case "random_replies_never_crash" (function()
  tell "fault * random 0"
  local listing = run "librpc.showapi()"
  for name in listing:gmatch("name ([%w_]+),") do
    for _ = 1, 3 do
      local reply = call(name, "1&2&3")
      equal(type(reply), "string", name)
      equal(#reply < 4000, true, "length of the reply of " .. name)
    end
  end
end)

case "reply_of_8800_bytes_and_more_is_read_as_far_as_its_record" (function()
  for _, bytes in ipairs { 8776, 8777, 8800, 8804, 9000, 60000 } do
    tell("fault oltmib_sysloginfo_set_1 count=1 random " .. bytes)
    equal(type(call("oltmib_sysloginfo_set_1", "1")), "string", "a body of " .. bytes .. " bytes")
  end
  equal(call("oltmib_sysloginfo_set_1", "1"), "0", "a true reply")
end)

case "wrong_verifier_lengths_give_no_value" (function()
  for _, length in ipairs { "00000001", "00000190", "00000191", "7fffffff", "80000000", "ffffffff", "fffffffc" } do
    tell("fault * count=1 raw XID00000001" .. "00000000" .. "00000000" .. length .. "00000000" .. "00000000")
    equal(select("#", call("oltmib_sysloginfo_set_1", "1")), 0, "values with a verifier of " .. length)
  end
  tell("fault * count=1 raw XID00000001" .. "00000000" .. "00000000" .. "00000005" .. "0102030405000000" ..
    "00000000" .. "00000009")
  equal(call("oltmib_sysloginfo_set_1", "1"), "9", "a verifier of five bytes is skipped")
end)

case "replies_that_are_no_replies_give_no_value" (function()
  for where, text in pairs {
    ["a call"] = "XID" .. ("00000000"):rep(6),
    ["a direction of 2"] = "XID00000002" .. ("00000000"):rep(5),
    ["a status of 2"] = "XID0000000100000002" .. ("00000000"):rep(4),
    ["a denial without a reason"] = "XID0000000100000001",
    ["a denial for reason 2"] = "XID000000010000000100000002",
    ["an acceptance of 6"] = "XID00000001" .. ("00000000"):rep(3) .. "00000006" .. "00000000",
    ["nothing but the xid"] = "XID",
  } do
    tell("fault * count=1 raw " .. text)
    equal(select("#", call("oltmib_sysloginfo_set_1", "1")), 0, "values of " .. where)
  end
  equal(call("oltmib_sysloginfo_set_1", "1"), "0", "a true reply")
end)

case "texts_without_nul_print_their_array_at_most" (function()
  local chars, int = harness.chars, harness.int
  -- account: int1 text40 int2 text64 text80a text80b int3 text32 oper res
  local body = int(1) .. chars(("a"):rep(40), 40) .. int(2) .. chars(("b"):rep(64), 64) ..
    chars(("c"):rep(80), 80) .. chars(("d"):rep(80), 80) .. int(3) .. chars(("e"):rep(32), 32) .. int(4) .. int(5)
  tell("fault * raw " .. harness.accepted .. body)
  equal(call("oltmib_account_get_1", ""), table.concat({ 1, ("a"):rep(40), 2, ("b"):rep(64), ("c"):rep(80),
    ("d"):rep(80), 3, ("e"):rep(32), 4, 5 }, "&"))
end)

case "bad_arguments_never_crash" (function() -- with every interpreter
  local listing = run "librpc.showapi()"
  local million = 1000000
  local arguments = {
    (""), ("&"):rep(39), ("&"):rep(million), ("x"):rep(million), ("9"):rep(million), ("x&"):rep(10000),
    ("$&"):rep(10000), (","):rep(10000), ("%s%n%p%x%d&"):rep(50), ("\255\128&"):rep(100),
    ("-1&"):rep(50), ("99999999999999999999&"):rep(50), ("1,2,3,"):rep(200) .. "&1",
    ("aa:bb:cc:dd:ee:ff:00:11&"):rep(40), ("aabb.ccdd.eeff.0011&"):rep(40), ("zz"):rep(200) .. "&" .. ("f"):rep(999),
  }
  local count, before = 0, calls()
  for name in listing:gmatch("name ([%w_]+),") do
    for i, argument in ipairs(arguments) do
      if #argument < million or count % 20 == 0 then
        equal(type(call(name, argument)), "string", name .. " with argument " .. i)
        before = before + 1
      end
    end
    count = count + 1
  end
  equal(calls(), before, "executions")
end)

case "a_percent_sign_in_any_position_stays_as_it_is" (function()
  for _, sign in ipairs { "%", "%s", "%n", "%%", "%1$s", "%99999d" } do
    local row = table.concat({ "1", sign, "1", sign, sign, sign, "1", sign, "0", "0" }, "&")
    equal(call("oltmib_account_set_1", row), "0", "set " .. sign)
    equal(call("oltmib_account_get_1", "1&" .. sign), row, "get " .. sign)
  end
end)

case "a_percent_sign_is_traced_as_it_is" (function()
  local text = run [[
    librpc.enabledebug()
    librpc.callapi("oltmib_nothing%s%n_get_1", "%s%n&%p")
  ]]
  equal(text, "[lua_callapi: 160]name oltmib_nothing%s%n_get_1, str %s%n&%p.\r\n" ..
    "[lua_callapi: 165]api oltmib_nothing%s%n_get_1 not found.\r\n")
end)

case "exec_inherits_no_socket" (function()
  local function inherited()
    local text = shell("ls -l /proc/self/fd")
    local found = 0
    for _ in text:gmatch("socket:") do
      found = found + 1
    end
    return found
  end
  local before = inherited()
  expect_vlan10("a call")
  call("oltmib_devinfo_get_1", "")
  call("oltmib_sysloginfo_get_1", "")
  equal(inherited(), before, "sockets of a program started with io.popen")
  tell "fault * count=1 error system_err" -- a failed client keeps its port for a while
  expect_failure("an error")
  equal(inherited(), before, "sockets after a failed call")
  expect_vlan10("a call with a fresh client")
  equal(inherited(), before, "sockets after a renewed client")
  equal(os.execute("test $(ls -l /proc/self/fd | grep -c socket:) -eq " .. before) == 0, true, "os.execute")
end)

-- Calls `count` times for the port and checks that the reply is of that port.
local function call_for_port(port, count)
  for i = 1, count do
    local reply = call("oltmib_portinfo_get_1", port)
    equal(reply and reply:match("^%d+&ge%d+&"), port .. "&ge" .. port .. "&", "call " .. i .. " for port " .. port)
  end
end

case "fork_parent_and_child_each_get_their_own_replies" (function()
  call_for_port(1, 10)
  local child = in_child(function() call_for_port(2, 3000) end)
  call_for_port(3, 3000)
  equal(process.wait(child), 0, "the child's status")
  call_for_port(3, 10)
  equal(calls(), 6020, "executions")
end)

case "fork_leaves_the_parents_client_undisturbed" (function()
  call_for_port(1, 1)
  for port = 2, 6 do
    equal(process.wait(in_child(function() call_for_port(port, 20) end)), 0, "a child's status")
    call_for_port(1, 5)
  end
  equal(lookups(50004), 6, "lookups: one of the parent, one of each child")
end)

case "fork_before_the_first_call" (function()
  local child = in_child(function() call_for_port(2, 500) end)
  call_for_port(3, 500)
  equal(process.wait(child), 0, "the child's status")
end)

case "fork_of_a_fork" (function()
  call_for_port(1, 5)
  local child = in_child(function()
    call_for_port(2, 100)
    local grandchild = in_child(function() call_for_port(4, 1000) end)
    call_for_port(2, 1000)
    equal(process.wait(grandchild), 0, "the grandchild's status")
  end)
  call_for_port(3, 1000)
  equal(process.wait(child), 0, "the child's status")
end)

case "fork_while_the_child_fails" (function()
  call_for_port(1, 5)
  tell "fault oltmib_vlaninfo_get_1 error system_err"
  local child = in_child(function()
    for _ = 1, 50 do
      expect_failure("an error")
    end
    call_for_port(2, 500)
  end)
  call_for_port(3, 1000)
  equal(process.wait(child), 0, "the child's status")
end)

-- How a child ended whose call a signal reached.
local function interrupt(signal, setup)
  return harness.signalled(signal, function()
    setup()
    call(vlan, "10")
  end)
end

local SIGINT, SIGALRM, SIGTERM = 2, 14, 15

case "ctrl_c_with_the_default_action_acts_at_once" (function() -- with every interpreter
  equal(interrupt(SIGINT, function() process.default_action(SIGINT) end), 1000 + SIGINT, "status")
end)

case "sigterm_acts_at_once" (function() -- with every interpreter
  equal(interrupt(SIGTERM, function() process.default_action(SIGTERM) end), 1000 + SIGTERM, "status")
end)

case "sigalrm_with_the_default_action_acts_at_once" (function() -- with every interpreter
  equal(interrupt(SIGALRM, function() process.default_action(SIGALRM) end), 1000 + SIGALRM, "status")
end)

case "ctrl_c_with_the_interpreters_own_handler_acts_at_once" (function() -- with every interpreter
  tell "fault oltmib_vlaninfo_get_1 drop"
  local name = os.tmpname()
  local file = assert(io.open(name, "w"))
  file:write([[
    require "librpc"
    local status = require "librpc.status"
    local message = select(2, pcall(function() librpc.callapi("oltmib_vlaninfo_get_1", "10") return "went on" end))
    print(tostring(message):match("interrupted!") or message, (status.last()))
  ]])
  file:close()
  local text, status = shell("$E2E_INTERPRETER " .. name .. " & child=$!; " ..
    "while [ $($SIM_DEVICE --tell $SIM_CONTROL count oltmib_vlaninfo_get_1) = 0 ]; do sleep 0.02; done; " ..
    "kill -INT $child; wait $child")
  os.remove(name)
  equal(text, "interrupted!\tinterrupted\n", "the interpreter's error, at once and not at the deadline")
  equal(status, 0, "status")
end)

case "sigalrm_handler_that_returns_lets_the_call_go_on" (function() -- with every interpreter
  tell "fault oltmib_vlaninfo_get_1 delay 1500"
  process.alarms_every(50)
  expect_vlan10("a call under alarms")
  process.alarms_every(0)
  equal(process.alarms() > 1, true, "alarms")
  equal(calls(), 1, "executions")
end)

-- A profiler's or a debugger's hook is no sign of Ctrl-C while the interpreter's
-- handler is in its place; nor is a handler that is gone without a hook.
case "sigalrm_beside_a_hosts_own_debug_hook_lets_the_call_go_on" (function() -- with every interpreter
  for _, body in ipairs {
    'debug.sethook(function() end, "", 1000)',
    "process.default_action(2)",
    -- a host that never had a handler
    'process.default_action(2) package.loaded.librpc = nil require "librpc" debug.sethook(function() end, "", 1000)',
  } do
    tell "clear"
    tell "fault oltmib_vlaninfo_get_1 count=1 delay 700"
    local before = calls()
    local text, status = run(([[
      local process = require "e2e_process"
      %s
      process.alarms_every(50)
      local reply = librpc.callapi("oltmib_vlaninfo_get_1", "10")
      process.alarms_every(0)
      debug.sethook()
      print(reply, process.alarms() > 1)
    ]]):format(body))
    equal(text, vlan10 .. "\ttrue\n", body)
    equal(status, 0, "status")
    equal(calls(), before + 1, "executions")
  end
end)

case "descriptor_limit_gives_no_value_and_the_next_call_works" (function()
  for free = 0, 4 do
    process.use_up_descriptors(free)
    local _, why = io.open("/dev/null") -- the words are the C library's
    local reply = call(vlan, "10")
    process.give_back_descriptors()
    equal(reply == nil or reply == vlan10, true, "reply with " .. free .. " descriptors left")
    if free == 0 then
      equal(reply, nil, "reply without a descriptor")
      local code, sentence, details = reasons.last()
      equal(code, "no_client", "code")
      equal(sentence, vlan .. " (service nsminfo, program 50004): no client could be made for the daemon "
        .. "[RPC: Remote system error - " .. why:match("^/dev/null: (.*)$") .. "]", "sentence")
      equal(details.errno, 24, "errno")
      equal(select("#", call("oltmib_nothing_get_1", "")), 0, "values")
      local _, next_sentence, next_details = reasons.last()
      equal(next_sentence, "oltmib_nothing_get_1: no API of that name is registered", "the next sentence")
      equal(next_details.errno, nil, "the next number")
      equal(next_details.reason, nil, "the next reason")
    end
    expect_vlan10("a call without a limit")
    tell "fault nsminfo count=1 error system_err" -- so that the next round makes a client again
    expect_failure("an error")
  end
end)

-- The life of a service's client.
local golden = require "golden"
local harness = require "harness"
local case, call, equal, tell = harness.case, harness.call, harness.equal, harness.tell
local calls, lookups, shell, run = harness.calls, harness.lookups, harness.shell, harness.run

local devinfo = "oltmib_devinfo_get_1"
local identity = "OLT-8G&SN20260117-0042&00-1E-80-4C-00-01&1.4.2&2.0.1&V3&0&86400&olt-lab-1&0"

case "first_call_makes_the_client_and_later_ones_ask_no_port_mapper" (function()
  equal(lookups(50002), 0, "lookups after opening the module")
  for _ = 1, 50 do
    equal(call(devinfo, ""), identity, "reply")
    equal(call("oltmib_devcapint_get_1", "ports"), "ports&Number of ports&8&&&0&0", "reply")
  end
  equal(lookups(50002), 1, "lookups")
  equal(calls("devinfo"), 100, "executions")
end)

case "later_calls_work_without_a_port_mapper" (function()
  equal(call(devinfo, ""), identity, "first reply")
  shell("kill $RPCBIND_PID; while kill -0 $RPCBIND_PID; do sleep 0.02; done")
  equal(call(devinfo, ""), identity, "second reply")
  equal(call("oltmib_vlaninfo_get_1", "1"), nil, "a service without a client")
end)

case "no_port_mapper_gives_no_value_and_the_next_call_with_one_works" (function()
  shell("kill $RPCBIND_PID; while kill -0 $RPCBIND_PID; do sleep 0.02; done")
  equal(select("#", call(devinfo, "")), 0, "values")
  local mapper = shell("rpcbind -f >/dev/null 2>&1 & echo $!")
  shell("until rpcinfo -T udp 127.0.0.1 100000 2 >/dev/null; do sleep 0.02; done; " ..
    "for s in $($SIM_DEVICE --tables | cut -d' ' -f1 | sort -u); do $SIM_DEVICE --tell $SIM_CONTROL restart $s; done")
  local reply = call(devinfo, "")
  shell("kill " .. mapper) -- who started the other one ends that one alone
  equal(reply, identity, "reply")
end)

case "no_daemon_gives_no_value_and_a_line_on_standard_error" (function()
  tell "stop devinfo"
  local text, status = run 'print(select("#", librpc.callapi("oltmib_devinfo_get_1", "")))'
  equal(text, "127.0.0.1: RPC: Program not registered\n0\n", "output")
  equal(status, 0, "status")
end)

case "daemon_started_later_answers_without_reloading_the_module" (function()
  tell "stop devinfo"
  equal(select("#", call(devinfo, "")), 0, "values without a daemon")
  tell "start devinfo"
  equal(call(devinfo, ""), identity, "reply")
  equal(calls(devinfo), 1, "executions")
end)

case "daemon_restarted_on_another_port_first_call_fails_second_succeeds" (function()
  equal(call(devinfo, ""), identity, "reply")
  local port = tell "port devinfo"
  tell "restart devinfo"
  equal(tell "port devinfo" ~= port, true, "another port")
  equal(select("#", call(devinfo, "")), 0, "values of the first call")
  equal(call(devinfo, ""), identity, "reply")
  equal(lookups(50002), 2, "lookups")
  equal(calls(devinfo), 2, "executions")
end)

case "failed_call_drops_the_client_of_its_service_only" (function()
  call(devinfo, "")
  call("oltmib_vlaninfo_get_1", "1")
  tell "fault devinfo count=1 error system_err"
  equal(select("#", call("oltmib_devcapint_get_1", "ports")), 0, "values")
  equal(call(devinfo, ""), identity, "next reply")
  call("oltmib_vlaninfo_get_1", "1")
  equal(lookups(50002), 2, "lookups of the service that failed")
  equal(lookups(50004), 1, "lookups of another service")
end)

case "unregistered_daemon_is_reached_while_the_client_lives" (function()
  equal(call(devinfo, ""), identity, "first reply")
  tell "unregister devinfo"
  equal(call(devinfo, ""), identity, "second reply")
end)

case "set_reply_of_0_reaches_lua_as_0" (function()
  equal(call("oltmib_sysloginfo_set_1", "1&2"), "0")
end)

case "set_status_other_than_0_is_a_reply_and_keeps_the_client" (function()
  for _, status in ipairs { 5, -3, 2147483647, -2147483648 } do
    tell("fault oltmib_sysloginfo_set_1 count=1 raw " .. harness.accepted .. harness.int(status))
    equal(call("oltmib_sysloginfo_set_1", "1&2"), tostring(status), "status")
  end
  equal(lookups(50006), 1, "lookups")
end)

case "set_without_a_reply_never_reaches_a_formatter" (function()
  tell "fault oltmib_sysloginfo_set_1 error proc_unavail"
  equal(select("#", call("oltmib_sysloginfo_set_1", "1&2")), 0, "values")
end)

case "char40_occupies_160_bytes_on_the_wire" (function()
  local int, chars = harness.int, harness.chars
  local body = int(20) .. chars("ge1", 40) .. chars("behind", 32) .. int(3) .. int(0)
  equal(#body / 2, 4 + 160 + 128 + 8, "bytes")
  tell("fault oltmib_igmpsnp_mrouter_get_1 raw " .. harness.accepted .. body)
  equal(call("oltmib_igmpsnp_mrouter_get_1", "20"), "20&ge1&behind&3&0", "reply")
end)

case "set_get_and_getn_work_on_the_same_rows" (function()
  equal(call("oltmib_vlaninfo_getn_1", "10"):match("^%d+"), "20", "row after 10")
  equal(call("oltmib_vlaninfo_set_1", "15&1&guests&1&ge5&&&1&0"), "0", "set")
  equal(call("oltmib_vlaninfo_get_1", "15"), "15&1&guests&1&ge5&&&1&0", "get")
  equal(call("oltmib_vlaninfo_getn_1", "10"):match("^%d+"), "15", "row after 10")
  equal(call("oltmib_vlaninfo_getn_1", "20"):match("%d+$"), "1", "res after the last row")
end)

case "tables_that_share_a_record_have_rows_of_their_own" (function()
  call("oltmib_sarp_set_1", "192.0.2.99&00-1E-80-00-00-99&vlan1&0&&0&0")
  equal(call("oltmib_sarp_get_1", "192.0.2.99"), "192.0.2.99&00-1E-80-00-00-99&vlan1&0&&0&0", "sarp")
  equal(call("oltmib_arp_get_1", "192.0.2.99"):match("%d+$"), "1", "res of arp")
end)

case "host_name_of_70_characters_is_cut_to_63_before_sending" (function()
  equal(call("oltmib_devinfo_set_1", "m&s&&&&&0&0&" .. ("h"):rep(70) .. "&1&0"), "0", "set")
  equal(call(devinfo, ""), "m&s&00-1E-80-4C-00-01&&&&0&0&" .. ("h"):rep(63) .. "&0", "get")
end)

case "every_registered_api_gets_a_reply" (function()
  local listing = run "librpc.showapi()"
  local count = 0
  for name in listing:gmatch("name ([%w_]+),") do
    equal(type(call(name, "")), "string", name)
    count = count + 1
  end
  local expected = #golden.list "apis.txt"
  equal(count, expected, "APIs")
  equal(calls(), expected, "executions")
end)

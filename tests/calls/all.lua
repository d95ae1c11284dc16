-- calls.all: a page's calls at once, beside the device.
local clock = require "clock"
local harness = require "harness"
local calls = require "librpc.calls"
local host = require "calls_host"
local process = require "e2e_process"
local schema = require "librpc.schema"
local status = require "librpc.status"
local case, call, equal, tell = harness.case, harness.call, harness.equal, harness.tell
local executions, lookups, shell = harness.calls, harness.lookups, harness.shell

local devinfo, vlan, port = harness.devinfo, harness.vlan, harness.port
local identity, vlan10 = harness.identity, harness.vlan10

-- The simulated device's process, a sister of the port mapper's.
local function device_process()
  return (shell("for p in $(cat /proc/$(cut -d' ' -f4 /proc/$RPCBIND_PID/stat)/task/*/children); do "
    .. "[ $(readlink /proc/$p/exe) != $SIM_DEVICE ] || echo $p; done"):gsub("%s", ""))
end

-- `count` reads of ports, each of which has eight.
local function ports(count)
  local list = {}
  for i = 1, count do
    list[i] = { port, tostring((i - 1) % 8 + 1) }
  end
  return list
end

local function expect_ports(where, count, texts, failures)
  for i = 1, count do
    local number = (i - 1) % 8 + 1
    equal(failures[i], nil, where .. ": failure " .. i)
    equal(texts[i]:match("^%d+&ge%d+&"), ("%d&ge%d&"):format(number, number), where .. ": text " .. i)
  end
end

case "texts_stand_in_the_order_of_the_list" (function()
  local texts, failures = calls.all({ { devinfo, "" }, { vlan, "10" }, { devinfo }, { vlan, 10 } }, 5)
  equal(#texts, 4, "texts")
  equal(texts[1], identity, "first")
  equal(texts[2], vlan10, "second")
  equal(texts[3], identity, "no argument is an empty one")
  equal(texts[4], vlan10, "a number is a text")
  equal(next(failures), nil, "failures")
  expect_ports("48 ports", 48, calls.all(ports(48)))
end)

case "an_empty_list_gives_nothing" (function()
  local texts, failures = calls.all {}
  equal(next(texts), nil, "texts")
  equal(next(failures), nil, "failures")
end)

-- Each pass has a fresh device, whose counters move at each read.
local function every_api(body)
  local name = os.tmpname()
  local file = assert(io.open(name, "w"))
  file:write([[
    require "librpc"
    local calls, schema = require "librpc.calls", require "librpc.schema"
    for _, argument in ipairs { "", "1", "1&ge1&3&4&5&6&7&8&9&10&11&12" } do
      local list = {}
      for i, api in ipairs(schema.apis) do
        list[i] = { api.name, argument }
      end
      local texts, failures = {}, {}
      ]], body, [[
      for i, one in ipairs(list) do
        print(one[1], texts[i], failures[i] and failures[i].message)
      end
    end]])
  file:close()
  local printed, ended = shell('"$LIBRPC_TEST_SOURCE/tools/with_device.sh" "$(dirname "$SIM_DEVICE")" -- '
    .. "$E2E_INTERPRETER " .. name)
  os.remove(name)
  equal(ended, 0, printed)
  return printed
end

case "every_api_gives_what_callapi_gives" (function() -- with every interpreter
  local one_by_one = every_api "for i, one in ipairs(list) do texts[i] = librpc.callapi(one[1], one[2]) end"
  equal(select(2, one_by_one:gsub("\n", "")), 3 * 304, "lines")
  equal(one_by_one:find("\tnil", 1, true) and one_by_one:match("[^\n]*\tnil\t[^\n]*"), nil, "calls without a text")
  local at_once = every_api "texts, failures = calls.all(list, 60)"
  local rest = at_once
  for line in one_by_one:gmatch("[^\n]*\n") do
    equal(rest:match("^[^\n]*\n"), line)
    rest = rest:sub(#line + 1)
  end
  equal(at_once, one_by_one, "all of them")
end)

case "failures_are_what_status_last_gives" (function() -- with every interpreter
  tell "fault nsminfo error system_err"
  tell "fault ribinfo truncate 8"
  tell "stop vrrpinfo"
  call("oltmib_sdsminfo_get_1", "1")
  tell "restart sdsminfo"
  local list = { { vlan, "10" }, { "oltmib_route_get_1", "" }, { "oltmib_vrrp_ssstate_get_1", "1" },
    { "oltmib_nothing_get_1", "" }, { "oltmib_sdsminfo_get_1", "1" }, { devinfo, "" } }
  local texts, failures = calls.all(list, 5)
  equal(texts[6], identity, "the text beside them")
  equal(failures[6], nil, "and no failure")
  equal(status.last(), nil, "the last callapi's status is left alone")
  tell "restart sdsminfo" -- all has left a client to the daemon before
  for i = 1, 5 do
    equal(texts[i], false, "text of " .. list[i][1])
    if i == 5 then
      call("oltmib_sdsminfo_get_1", "1")
      tell "restart sdsminfo"
    end
    equal(call(list[i][1], list[i][2]), nil, list[i][1])
    local code, message, details = status.last()
    equal(failures[i].code, code, "code of " .. list[i][1])
    equal(failures[i].message, message, "message of " .. list[i][1])
    for _, key in ipairs { "api", "service", "program", "reason", "errno" } do
      equal(failures[i].details[key], details[key], key .. " of " .. list[i][1])
    end
  end
end)

case "a_list_that_is_none_is_an_error_and_sends_nothing" (function() -- with every interpreter
  for message, list in pairs {
    ["calls.all: item 2: expected { name, argument }, found a string"] = { { devinfo }, "x" },
    ["calls.all: item 1: expected an API's name, found a nil"] = { {} },
    ["calls.all: item 2: expected an API's name, found a boolean"] = { { devinfo }, { true } },
    ["calls.all: item 1: expected an argument's text, found a table"] = { { devinfo, {} } },
  } do
    local ok, found = pcall(calls.all, list)
    equal(ok, false, message)
    equal(found, message)
  end
  equal(pcall(calls.all), false, "no list")
  equal(pcall(calls.all, "x"), false, "a text")
  equal(pcall(calls.all, {}, "soon"), false, "a text as seconds")
  equal(pcall(calls.all, {}, -1), false, "a negative deadline")
  equal(pcall(calls.all, {}, 0 / 0), false, "no number")
  equal(executions(), 0, "executions")
end)

case "two_sets_of_one_table_are_refused" (function()
  local set = "oltmib_vlaninfo_set_1"
  local ok, message = pcall(calls.all, { { vlan, "10" }, { set, "30&1&a" }, { devinfo }, { set, "31&1&b" } })
  equal(ok, false, "two sets")
  equal(message, "calls.all: item 4: expected one set of a table, found a second of oltmib_vlaninfo_set_1 "
    .. "(their order is not promised: callapi keeps it)")
  equal(executions(), 0, "executions")
  local _, failures = calls.all({ { "oltmib_nothing_set_1", "1" }, { "oltmib_nothing_set_1", "2" } }, 5)
  equal(failures[1].code .. " " .. failures[2].code, "unknown_api unknown_api", "sets of no table")
  local texts = calls.all({ { set, "30&1&a" }, { "oltmib_sysloginfo_set_1", "1&2" }, { vlan, "10" } }, 5)
  equal(texts[1] .. texts[2] .. texts[3], "00" .. vlan10, "sets of two tables beside a get")
  equal(call(vlan, "30"):match("^30&1&a&") ~= nil, true, "the row that was set")
end)

case "one_dead_daemon_costs_the_deadline_and_its_own_rows" (function()
  tell "fault nsminfo drop"
  local list = { { vlan, "10" } }
  for _, service in ipairs(schema.services) do
    if service.name ~= "nsminfo" then
      for _, api in ipairs(schema.apis) do
        if api.service == service.name and api.operation == "get" then
          list[#list + 1] = { api.name, "1" }
          break
        end
      end
    end
  end
  equal(#list, 15, "services")
  local texts, failures
  equal(clock.takes(1, function() texts, failures = calls.all(list, 1) end), true, "the deadline")
  equal(texts[1], false, "the dead daemon's text")
  equal(failures[1].code, "timed_out", "its failure")
  for i = 2, #list do
    equal(type(texts[i]), "string", list[i][1])
  end
  equal(executions(), 15, "executions")
end)

-- More than a socket's buffer holds, to a daemon that looks at nothing meanwhile.
local function expect_none_lost(name, count)
  local list = {}
  for i = 1, count do
    list[i] = { name, tostring(i) }
  end
  call(name, "1")
  local device = device_process()
  shell(("kill -STOP %s; { sleep 0.5; kill -CONT %s; } >/dev/null 2>&1 &"):format(device, device))
  local texts, failures = calls.all(list, 20)
  for i = 1, count do
    equal(failures[i] and failures[i].message, nil, "failure " .. i)
    equal(type(texts[i]), "string", "text " .. i)
  end
  equal(executions(), count + 1, "executions")
  local seen, lines = {}, 0
  for line in io.lines(os.getenv "SIM_LOG") do
    local argument = line:match("^%d+ %d+ %d+ [%w_]+ (%d+)")
    seen[argument] = (seen[argument] or 0) + 1
    lines = lines + 1
  end
  equal(lines, count + 1, "lines of the log")
  for i = 2, count do
    equal(seen[tostring(i)], 1, "executions of " .. i)
  end
end

case "of_320_largest_requests_none_is_lost" (function()
  expect_none_lost("oltmib_lldpifnei_get_1", 320)
end)

case "of_1000_smallest_requests_none_is_lost" (function()
  expect_none_lost("oltmib_fdbparam_get_1", 1000)
end)

case "replies_in_any_order_find_their_calls" (function()
  for i = 1, 8 do -- the first call's reply comes last
    tell(("fault nsminfo count=1 delay %d"):format(50 * (8 - i)))
  end
  expect_ports("backwards", 8, calls.all(ports(8), 5))
  equal(executions(), 8, "executions")
end)

case "doubled_replies_and_strangers_change_nothing" (function()
  for _, effect in ipairs { "double", "delay 30 forge", "delay 30 stranger XID",
    "delay 30 stranger XID" .. harness.accepted:sub(4), "delay 30 stranger - stranger 00 double" } do
    tell "clear"
    tell("fault * " .. effect)
    local before = executions()
    for round = 1, 5 do
      expect_ports(effect .. " " .. round, 48, calls.all(ports(48), 10))
    end
    equal(executions(), before + 240, "executions, " .. effect)
  end
  equal(lookups(50004), 1, "lookups: one client for all")
end)

case "late_replies_are_nobodys" (function()
  tell "fault nsminfo delay 400"
  local _, failures = calls.all({ { vlan, "10" }, { vlan, "20" } }, 0.1)
  equal(failures[1].code .. failures[2].code, "timed_outtimed_out", "codes")
  tell "clear"
  local texts = calls.all({ { vlan, "20" }, { vlan, "10" } }, 5)
  equal(texts[1]:match("^%d+") .. texts[2]:match("^%d+"), "2010", "rows")
  equal(executions(), 4, "executions")
end)

case "clients_are_shared_with_callapi" (function()
  call(devinfo, "")
  local before = host.descriptors()
  calls.all({ { devinfo }, { devinfo } }, 5)
  equal(lookups(50002), 1, "lookups: the idle client was used")
  equal(host.descriptors(), before, "descriptors")
  calls.all({ { vlan, "10" } }, 5)
  call(vlan, "10")
  calls.all({ { vlan, "10" }, { devinfo } }, 5)
  equal(lookups(50004), 1, "lookups: the client was left to callapi")
  equal(host.descriptors(), before + 1, "descriptors of two services")
end)

case "a_restarted_daemon_is_looked_up_anew" (function()
  expect_ports("before", 8, calls.all(ports(8), 5))
  tell "restart nsminfo"
  local texts, failures = calls.all(ports(8), 5)
  local refused = 0
  for i = 1, 8 do
    if not texts[i] then
      equal(failures[i].code, "refused", "code " .. i)
      refused = refused + 1
    end
  end
  equal(refused > 0, true, "calls that found the old port")
  equal(executions(), 16 - refused, "executions")
  expect_ports("after", 8, calls.all(ports(8), 5))
end)

case "a_daemon_that_was_silent_is_looked_up_anew" (function()
  expect_ports("before", 8, calls.all(ports(8), 5))
  tell "fault nsminfo drop"
  equal(select(2, calls.all(ports(2), 0.2))[2].code, "timed_out", "code")
  tell "clear"
  tell "restart nsminfo"
  equal(call(vlan, "10"), vlan10, "the next call")
  expect_ports("after", 8, calls.all(ports(8), 5))
end)

case "no_port_mapper_fails_every_service_at_once" (function()
  call(devinfo, "")
  shell("kill $RPCBIND_PID; while kill -0 $RPCBIND_PID; do sleep 0.02; done")
  local texts, failures = calls.all({ { vlan, "10" }, { devinfo }, { "oltmib_route_get_1", "" }, { port, "3" } }, 5)
  equal(texts[2], identity, "a client that is there needs no port mapper")
  for _, i in ipairs { 1, 3, 4 } do
    equal(failures[i].code, "no_portmapper", "code " .. i)
  end
end)

case "port_look_ups_run_beside_one_another" (function()
  local list = {}
  for i, api in ipairs { devinfo, vlan, "oltmib_route_get_1", "oltmib_sysloginfo_get_1" } do
    list[i] = { api, "" }
  end
  local first = {}
  -- which goes on once all of them ask
  shell(("kill -STOP $RPCBIND_PID; { until [ $(grep -c ' 0100007F:006F ' /proc/net/udp) = %d ]; do sleep 0.02; done; "
    .. "kill -CONT $RPCBIND_PID; } >/dev/null 2>&1 &"):format(#list))
  first.texts, first.failures = calls.all(list, 20)
  for i = 1, #list do
    equal(first.failures[i], nil, "failure " .. i)
    equal(type(first.texts[i]), "string", "text " .. i)
  end
end)

case "a_port_mapper_that_hangs_costs_the_deadline_and_sends_nothing" (function()
  shell "kill -STOP $RPCBIND_PID"
  local texts, failures
  equal(clock.takes(0.5, function() texts, failures = calls.all({ { devinfo }, { vlan, "10" } }, 0.5) end), true,
    "the deadline")
  equal(tostring(texts[1]) .. tostring(texts[2]), "falsefalse", "texts")
  equal(failures[1].code .. " " .. failures[2].code, "not_sent not_sent", "codes")
  shell "kill -CONT $RPCBIND_PID"
  equal(executions(), 0, "executions")
  equal(call(devinfo, ""), identity, "callapi once it goes on")
end)

case "descriptors_refused_fail_the_call_and_the_next_one_works" (function()
  for free = 0, 4 do
    process.use_up_descriptors(free)
    local texts, failures = calls.all({ { vlan, "10" }, { devinfo } }, 5)
    process.give_back_descriptors()
    for i = 1, 2 do
      equal(texts[i] and "text" or failures[i].code, texts[i] and "text" or "no_client", free .. " left, call " .. i)
    end
    if free == 0 then
      equal(texts[1], false, "without a descriptor")
    end
    local again = calls.all({ { vlan, "10" }, { devinfo } }, 5)
    equal(again[1], vlan10, "once there are descriptors")
    equal(again[2], identity, "once there are descriptors")
    tell "fault * count=2 error system_err" -- so that the next round makes clients again
    calls.all({ { vlan, "10" }, { devinfo } }, 5)
  end
end)

case "a_thousand_calls_to_every_service" (function()
  local list, by_service = {}, {}
  for _, api in ipairs(schema.apis) do
    if api.operation == "get" and not by_service[api.service] then
      by_service[api.service] = api.name
    end
  end
  for i = 1, 1000 do
    local service = schema.services[(i - 1) % 15 + 1].name
    list[i] = { by_service[service], tostring(i % 8 + 1) }
  end
  local texts, failures = calls.all(list, 20)
  for i = 1, 1000 do
    equal(failures[i] and failures[i].message, nil, list[i][1])
    equal(type(texts[i]), "string", list[i][1])
  end
  equal(executions(), 1000, "executions")
end)

-- How a child ended whose calls a signal with the default action reached.
local function interrupt(signal, body)
  return harness.signalled(signal, function()
    process.default_action(signal)
    body()
  end)
end

case "signals_with_the_default_action_act_at_once" (function() -- with every interpreter
  for _, signal in ipairs { 2, 14, 15 } do
    equal(interrupt(signal, function() calls.all({ { vlan, "10" }, { devinfo } }, 20) end), 1000 + signal, "status")
    tell "clear"
  end
end)

-- The interpreter's own handler sets a hook that raises an error once Lua goes on. The
-- deadlines are longer than a test may take.
local function interrupted(code)
  tell "fault oltmib_vlaninfo_get_1 drop"
  local name = os.tmpname()
  local file = assert(io.open(name, "w"))
  file:write('require "librpc" local calls = require "librpc.calls"\n', code, '\nprint("went on")')
  file:close()
  local text, ended = shell("$E2E_INTERPRETER " .. name .. " & child=$!; "
    .. "while [ $($SIM_DEVICE --tell $SIM_CONTROL count oltmib_vlaninfo_get_1) = 0 ]; do sleep 0.02; done; "
    .. "kill -INT $child; wait $child")
  os.remove(name)
  equal(ended, 1, "status")
  equal(text:find("interrupted!", 1, true) ~= nil, true, "the interpreter's message, in " .. text)
  equal(text:find("went on", 1, true), nil, "what stands behind the call")
end

case "ctrl_c_ends_all_at_once" (function() -- with every interpreter
  interrupted 'calls.all({ { "oltmib_vlaninfo_get_1", "10" }, { "oltmib_devinfo_get_1", "" } }, 1000)'
end)

case "ctrl_c_ends_wait_at_once" (function() -- with every interpreter
  interrupted [[
    local group = calls.group()
    group:call("oltmib_vlaninfo_get_1", "10", 1000)
    group:wait()
  ]]
end)

case "a_signal_whose_handler_returns_lets_all_go_on" (function() -- with every interpreter
  tell "fault oltmib_vlaninfo_get_1 delay 800"
  process.alarms_every(20)
  local texts = calls.all({ { vlan, "10" }, { devinfo } }, 10)
  process.alarms_every(0)
  equal(texts[1], vlan10, "text")
  equal(process.alarms() > 1, true, "alarms")
  equal(executions(), 2, "executions")
end)

case "services_tells_who_is_there" (function()
  tell "stop lpdet"
  call("oltmib_sdsminfo_get_1", "1")
  tell "restart sdsminfo"
  local list = calls.services(5)
  equal(#list, 15, "services")
  for i, one in ipairs(list) do
    local service = schema.services[i]
    equal(one.service, service.name, "name")
    equal(one.title, service.title, "title of " .. service.name)
    equal(one.program, service.program, "program of " .. service.name)
    if service.name == "lpdet" then
      equal(one.failure.code, "no_daemon", "lpdet")
    elseif service.name == "sdsminfo" then
      equal(one.failure.code, "refused", "sdsminfo")
    else
      equal(one.failure, nil, service.name)
      equal(tostring(one.port), tell("port " .. service.name), "port of " .. service.name)
      equal(one.seconds > 0 and one.seconds < 5, true, "seconds of " .. service.name)
    end
  end
  call(devinfo, "")
  equal(lookups(50002), 1, "lookups: the client was left to callapi")
end)

case "a_failed_call_drops_the_client_of_its_service_only" (function()
  calls.all({ { devinfo }, { vlan, "10" } }, 5)
  tell "fault devinfo count=1 error prog_unavail"
  local _, failures = calls.all({ { devinfo }, { vlan, "10" } }, 5)
  equal(failures[1].code, "rejected", "code")
  local texts = calls.all({ { devinfo }, { vlan, "10" } }, 5)
  equal(texts[1], identity, "the next call")
  equal(lookups(50002), 2, "lookups of the service that failed")
  equal(lookups(50004), 1, "lookups of another service")
end)

case "what_never_left_the_queue_says_not_sent" (function()
  tell "fault erpsinfo drop"
  local list = {}
  for i = 1, 40 do
    list[i] = { "oltmib_lldpifnei_get_1", tostring(i) } -- the largest record
  end
  local texts, failures = calls.all(list, 0.5)
  local codes = {}
  for i = 1, #list do
    equal(texts[i], false, "text " .. i)
    codes[failures[i].code] = (codes[failures[i].code] or 0) + 1
  end
  equal((codes.timed_out or 0) + (codes.not_sent or 0), 40, "failures")
  equal(codes.not_sent > 0 and codes.timed_out > 0, true, "both kinds")
  equal(executions(), codes.timed_out, "executions")
  equal(failures[40].message, "oltmib_lldpifnei_get_1 (service erpsinfo, program 50005): the wait was over before the "
    .. "call's turn came; it was not sent, so it may be repeated")
end)

case "arguments_of_any_length_are_what_they_are_to_callapi" (function()
  local list = {}
  for i, argument in ipairs { "10", "10" .. ("&"):rep(1000000), ("9"):rep(1000000), ("x&"):rep(10000), "10\0" .. "&7",
    ("&"):rep(3990) .. "1", ("&"):rep(4000) .. "1" } do
    list[i] = { vlan, argument }
  end
  local texts, failures = calls.all(list, 20)
  for i, one in ipairs(list) do
    equal(failures[i], nil, "failure " .. i)
    equal(texts[i], call(one[1], one[2]), "text " .. i)
  end
end)

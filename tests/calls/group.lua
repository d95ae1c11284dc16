-- calls.group: calls of an event loop, beside the device.
local clock = require "clock"
local harness = require "harness"
local calls = require "librpc.calls"
local host = require "calls_host"
local process = require "e2e_process"
local schema = require "librpc.schema"
local case, call, equal, tell = harness.case, harness.call, harness.equal, harness.tell
local ends_of, executions, lookups, shell = harness.ends_of, harness.calls, harness.lookups, harness.shell

local devinfo, vlan, port = harness.devinfo, harness.vlan, harness.port
local identity, vlan10 = harness.identity, harness.vlan10

-- What ends_of gives, by the descriptor alone, as an event loop does.
local function ends_by_descriptor(group, count)
  local fd, texts, failures, ended = group:pollfd(), {}, {}, 0
  while ended < count do
    equal(host.readable(fd, 20), true, "readable, with " .. ended .. " ended")
    for id, text, failure in group:finished() do
      equal(texts[id], nil, "an id that ended twice")
      texts[id], failures[id] = text, failure
      ended = ended + 1
    end
  end
  equal(group:pollfd(), fd, "the descriptor, afterwards")
  return texts, failures
end

case "each_id_ends_exactly_once" (function()
  local group, wanted = calls.group(), {}
  for i = 1, 100 do
    local id = group:call(port, tostring(i % 8 + 1), 10)
    equal(wanted[id], nil, "an id given twice")
    wanted[id] = i % 8 + 1
  end
  local texts = ends_of(group, 100)
  for id, number in pairs(wanted) do
    equal(texts[id]:match("^%d+&ge%d&"), ("%d&ge%d&"):format(number, number), "text of " .. id)
  end
  local id = group:call(devinfo, "")
  equal(wanted[id], nil, "an id given again")
  equal(ends_of(group, 1)[id], identity, "a later call")
  equal(executions(), 101, "executions")
  equal(lookups(50004), 1, "lookups")
end)

case "the_descriptor_tells_when_there_is_something_to_do" (function()
  local group = calls.group()
  local fd = group:pollfd()
  equal(type(fd), "number", "descriptor")
  equal(group:events(), "r", "events")
  equal(host.readable(fd, 0.05), false, "with nothing open")
  equal(group:timeout(), nil, "timeout with nothing open")
  tell "fault nsminfo delay 300"
  local id = group:call(vlan, "10", 10)
  local texts = ends_by_descriptor(group, 1)
  equal(texts[id], vlan10, "text")
  equal(host.readable(fd, 0.05), false, "once everything is fetched")
  local ids = {}
  for i = 1, 8 do
    ids[i] = group:call(port, tostring(i), 10)
  end
  texts = ends_by_descriptor(group, 8)
  for i = 1, 8 do
    equal(texts[ids[i]]:match("^%d"), tostring(i), "text of " .. i)
  end
end)

case "a_descriptor_that_is_asked_for_late_tells_too" (function()
  tell "fault nsminfo delay 300"
  local group = calls.group()
  group:call(vlan, "10", 10)
  group:call(devinfo, "", 10)
  local texts = ends_by_descriptor(group, 2)
  equal(texts[1], vlan10, "first text")
  equal(texts[2], identity, "second text")
end)

case "the_descriptor_tells_of_calls_that_never_began_to_run" (function()
  tell "stop devinfo"
  local group = calls.group()
  local fd = group:pollfd()
  shell "kill $RPCBIND_PID; while kill -0 $RPCBIND_PID; do sleep 0.02; done"
  group:call(devinfo, "", 10)
  equal(host.readable(fd, 5), true, "readable")
  local _, failures = ends_by_descriptor(group, 1)
  equal(select(2, next(failures)).code, "no_portmapper", "code")
end)

case "a_deadline_is_told_by_the_descriptor_and_by_timeout" (function()
  tell "fault nsminfo drop"
  local group = calls.group()
  local fd = group:pollfd()
  local late, soon = group:call(vlan, "10", 3), group:call(vlan, "20", 0.3)
  local started, left = process.now(), group:timeout()
  equal(left > 0 and left <= 0.31, true, "timeout of " .. left)
  local texts, failures = {}, {}
  while texts[soon] == nil do
    equal(host.readable(fd, 5), true, "readable")
    for id, text, failure in group:finished() do
      texts[id], failures[id] = text, failure
    end
  end
  equal(process.now() - started >= 0.29, true, "not before its time")
  equal(texts[late], nil, "the other one is open")
  equal(failures[soon].code, "timed_out", "code")
  left = group:timeout()
  equal(left > 1 and left <= 3, true, "timeout of " .. left)
  equal(host.readable(fd, 0.05), false, "with nothing to do")
  equal(executions(), 2, "executions")
end)

case "a_deadline_is_told_by_a_descriptor_that_was_asked_for_later" (function()
  tell "fault nsminfo drop"
  local group = calls.group()
  local id = group:call(vlan, "10", 0.5)
  equal(group:wait(0.1), false, "nothing has ended")
  equal(group:timeout() > 0, true, "there is time left")
  local fd = group:pollfd()
  equal(host.readable(fd, 5), true, "readable")
  equal(select(2, ends_of(group, 1))[id].code, "timed_out", "code")
end)

case "the_time_in_the_queue_counts" (function()
  tell "fault erpsinfo drop"
  local group, ids = calls.group(), {}
  for i = 1, 30 do -- the largest record: most of them wait
    ids[i] = group:call("oltmib_lldpifnei_get_1", tostring(i), 0.4)
  end
  local failures
  equal(clock.takes(0.4, function() failures = select(2, ends_of(group, 30)) end), true,
    "not one deadline after another")
  local not_sent = 0
  for i = 1, 30 do
    not_sent = not_sent + (failures[ids[i]].code == "not_sent" and 1 or 0)
  end
  equal(not_sent, 30 - executions(), "not sent")
  equal(not_sent > 0, true, "some wait")
end)

case "wait_ends_when_its_time_is_over_and_leaves_the_calls_open" (function()
  tell "fault nsminfo delay 600"
  local group = calls.group()
  local id = group:call(vlan, "10", 10)
  equal(group:wait(0.1), false, "wait")
  equal(group:wait(0), false, "wait for no time")
  for _ in group:finished() do
    error("nothing has ended")
  end
  equal(ends_of(group, 1)[id], vlan10, "text")
end)

case "a_call_that_cannot_begin_gives_nil_a_message_and_a_code" (function() -- with every interpreter
  local group = calls.group()
  local id, message, code = group:call("oltmib_nothing_get_1", "")
  equal(id, nil, "id")
  equal(message, "oltmib_nothing_get_1: no API of that name is registered")
  equal(code, "unknown_api", "code")
  equal(group:timeout(), nil, "nothing is open")
  for _, arguments in ipairs { { nil, "" }, { vlan, nil }, { vlan, {} }, { {}, "" } } do
    equal(pcall(group.call, group, arguments[1], arguments[2]), false, "an argument error")
  end
  for _, seconds in ipairs { -1, 0 / 0, "soon", {} } do
    equal(pcall(group.call, group, vlan, "10", seconds), false, "seconds of " .. tostring(seconds))
  end
  equal(pcall(group.call, {}, vlan, "10"), false, "no group")
  equal(pcall(group.call, io.stdout, vlan, "10"), false, "another userdata")
  equal(executions(), 0, "executions")
  id = group:call(vlan, "10", 1e300) -- as long as anybody waits
  equal(ends_of(group, 1)[id], vlan10, "text")
end)

case "a_group_that_is_collected_gives_its_calls_up" (function() -- with every interpreter
  tell "fault nsminfo drop"
  call(devinfo, "")
  collectgarbage()
  collectgarbage()
  local before, memory = host.descriptors(), host.memory()
  for _ = 1, 50 do
    local group = calls.group()
    group:pollfd()
    for i = 1, 20 do
      group:call(vlan, tostring(i), 10)
      group:call(devinfo, "", 10)
    end
    group:wait(10)
    group = nil -- luacheck: ignore 311
    collectgarbage()
    collectgarbage()
    equal(host.descriptors(), before, "descriptors")
  end
  equal(host.memory() - memory < 200000, true, "memory of 50 groups: " .. host.memory() - memory)
  equal(call(devinfo, ""), identity, "callapi afterwards")
end)

case "closing_the_state_closes_everything" (function() -- with every interpreter
  local text, ended = harness.run [[
    local calls = require "librpc.calls"
    open_for_ever = calls.group()
    open_for_ever:pollfd()
    for i = 1, 50 do open_for_ever:call("oltmib_vlaninfo_get_1", tostring(i), 20) end
    print "done"
  ]]
  equal(text, "done\n", "output")
  equal(ended, 0, "status")
end)

case "callapi_and_all_beside_a_group_disturb_nothing" (function()
  tell "fault oltmib_vlaninfo_get_1 delay 400"
  local group = calls.group()
  local slow = group:call(vlan, "10", 10)
  for i = 1, 20 do
    equal(call(port, tostring(i % 8 + 1)):match("^%d"), tostring(i % 8 + 1), "callapi")
    equal(calls.all({ { port, "4" } }, 5)[1]:match("^%d"), "4", "all")
  end
  equal(ends_of(group, 1)[slow], vlan10, "the group's")
  equal(lookups(50004), 2, "lookups: one client of the group's, one of the others'")
  tell "fault oltmib_portinfo_get_1 error system_err" -- a failed callapi drops its client
  slow = group:call(vlan, "10", 10)
  equal(call(port, "3"), nil, "a call that fails")
  equal(ends_of(group, 1)[slow], vlan10, "the group's, again")
  equal(executions(vlan), 2, "executions")
end)

case "a_restarted_daemon_ends_its_own_open_calls_only" (function()
  tell "fault nsminfo drop"
  tell "fault devinfo delay 700"
  local group = calls.group()
  local lost, kept = {}, group:call(devinfo, "", 10)
  for i = 1, 5 do
    lost[i] = group:call(vlan, tostring(i), 10)
  end
  while executions() < 6 do
    group:wait(0.02)
  end
  tell "clear"
  tell "restart nsminfo"
  local poke = group:call(vlan, "10", 10) -- a closed port is heard of once something is sent there
  local texts, failures = ends_of(group, 7)
  for i = 1, 5 do
    equal(failures[lost[i]].code, "refused", "code of an open call")
  end
  equal(failures[poke].code, "refused", "code of the call that found out")
  equal(texts[kept], identity, "another service's call")
  local again = group:call(vlan, "10", 10)
  equal(ends_of(group, 1)[again], vlan10, "the next call")
  equal(executions(vlan), 6, "executions")
  equal(lookups(50002), 1, "lookups of the other service")
end)

case "calls_that_wait_go_to_the_daemons_new_port" (function()
  tell "fault erpsinfo drop"
  local group, ids = calls.group(), {}
  for i = 1, 12 do -- four of the largest are under way
    ids[i] = group:call("oltmib_lldpifnei_get_1", tostring(i), i <= 4 and 4 or 20)
  end
  while executions() < 4 do
    group:wait(0.02)
  end
  tell "clear"
  tell "restart erpsinfo"
  local texts, failures = ends_of(group, 12)
  for i = 1, 12 do
    local code = texts[ids[i]] and "text" or failures[ids[i]].code
    -- the first to end has the daemon looked up, which is another by now
    local ends = i == 1 and "timed_out" or i <= 4 and (code == "refused" and code or "timed_out") or "text"
    equal(code, ends, "call " .. i)
  end
  equal(executions(), 12, "executions")
  equal(lookups(50005), 2, "lookups")
end)

case "a_rejected_call_has_its_service_looked_up_anew" (function()
  tell "fault oltmib_vlaninfo_get_1 delay 500"
  tell "fault oltmib_portinfo_get_1 count=1 error prog_unavail"
  local group = calls.group()
  local slow, rejected = group:call(vlan, "10", 10), group:call(port, "3", 10)
  group:wait(10)
  for id, _, failure in group:finished() do
    equal(id, rejected, "the first to end")
    equal(failure.code, "rejected", "code")
  end
  equal(lookups(50004), 1, "lookups so far")
  local good = group:call(port, "4", 10)
  local texts = ends_of(group, 2)
  equal(texts[good]:match("^%d"), "4", "the next call")
  equal(texts[slow], vlan10, "the call that was open all the time")
  equal(lookups(50004), 2, "lookups: the daemon may have been another")
  equal(executions(), 3, "executions")
end)

-- As long as one call is open, the others' port must not stay what it was.
case "a_daemon_that_took_the_port_over_is_left_while_calls_are_open" (function()
  local group = calls.group()
  local first = group:call(vlan, "10", 10)
  equal(ends_of(group, 1)[first], vlan10, "before")
  tell "fault oltmib_vlaninfo_get_1 drop"
  tell "fault oltmib_portinfo_get_1 error prog_unavail"
  local open = group:call(vlan, "10", 20)
  group:call(port, "3", 10)
  equal(group:wait(10), true, "rejected")
  for _, _, failure in group:finished() do
    equal(failure.code, "rejected", "code")
  end
  tell "unregister nsminfo"
  group:call(port, "4", 10)
  equal(group:wait(10), true, "the next call")
  for id, _, failure in group:finished() do
    equal(failure.code, "no_daemon", "nobody is registered")
    equal(id ~= open, true, "the call that is open")
  end
  equal(executions(port), 1, "executions")
end)

case "a_port_mapper_that_is_slow_delays_only_those_who_need_it" (function()
  local group = calls.group()
  local warm = group:call(devinfo, "", 10)
  equal(ends_of(group, 1)[warm], identity, "a first call")
  shell "kill -STOP $RPCBIND_PID"
  local waiting, known = group:call(vlan, "10", 10), group:call(devinfo, "", 10)
  equal(group:wait(5), true, "wait")
  for id, text in group:finished() do
    equal(id, known, "the first to end")
    equal(text, identity, "text")
  end
  shell "kill -CONT $RPCBIND_PID"
  equal(ends_of(group, 1)[waiting], vlan10, "the one that waited")
  equal(executions(), 3, "executions")
end)

case "a_thousand_open_calls_take_three_megabytes_at_most" (function() -- with every interpreter
  tell "fault * delay 500"
  local group, apis, ids = calls.group(), {}, {}
  for _, api in ipairs(schema.apis) do
    if api.operation == "get" and api.name ~= "oltmib_lldpifnei_get_1" then
      apis[#apis + 1] = api.name
    end
  end
  local before = host.memory()
  for i = 1, 1000 do
    ids[group:call(apis[i % #apis + 1], tostring(i), 20)] = true
  end
  local open = host.memory() - before
  equal(open < 3e6, true, "memory of the open calls: " .. open)
  local count = 0
  while count < 1000 do
    equal(group:wait(20), true, "wait")
    local now = host.memory() - before
    equal(now < 3e6, true, "memory with their replies: " .. now)
    for id, text, failure in group:finished() do
      equal(failure and failure.message, nil, "failure")
      equal(type(text), "string", "text")
      equal(ids[id], true, "an open id")
      ids[id] = nil
      count = count + 1
    end
  end
  equal(executions(), 1000, "executions")
end)

case "a_child_that_ends_leaves_the_parents_descriptor_working" (function()
  local group = calls.group()
  local fd = group:pollfd()
  tell "fault nsminfo delay 300"
  local id = group:call(vlan, "10", 10)
  for _ = 1, 5 do
    local child = process.fork()
    if child == 0 then
      process.exit(0)
    end
    equal(process.wait(child), 0, "the child's status")
  end
  equal(ends_by_descriptor(group, 1)[id], vlan10, "text")
  equal(host.readable(fd, 0.05), false, "nothing more")
end)

case "descriptors_refused_fail_calls_and_the_group_goes_on" (function()
  local group = calls.group()
  process.use_up_descriptors(0)
  local fd, message, code = group:pollfd()
  equal(fd, nil, "descriptor")
  local _, words = io.open("/dev/null") -- the C library's own
  equal(message, "group:pollfd: expected a descriptor, found none" .. words:match(": .*$"))
  equal(code, "no_client", "code")
  local id = group:call(vlan, "10", 5)
  local _, failures = ends_of(group, 1)
  equal(failures[id].code, "no_client", "code")
  process.use_up_descriptors(1)
  fd = group:pollfd()
  equal(fd, nil, "one descriptor is not enough")
  process.give_back_descriptors()
  equal(type(group:pollfd()), "number", "descriptor")
  id = group:call(vlan, "10", 5)
  equal(ends_by_descriptor(group, 1)[id], vlan10, "text")
end)

-- Somebody closes every descriptor of the process, as hosts do that become daemons.
case "a_socket_that_the_host_closed_ends_its_calls_and_is_made_anew" (function()
  tell "fault oltmib_vlaninfo_get_1 drop"
  local group = calls.group()
  local open = group:call(vlan, "10", 20)
  while executions() < 1 do
    group:wait(0.02)
  end
  host.close_sockets()
  local next_one = group:call("oltmib_vlaninfo_set_1", "15&1&guests&1&ge5&ge6&text&3&0", 5)
  local good = group:call(devinfo, "", 5)
  local texts, failures = ends_of(group, 3)
  equal(failures[open] and failures[open].code, "failed", "code of the open call")
  equal(texts[good], identity, "a call of another service")
  equal(texts[next_one], "0", "the next call")
  equal(executions(), 3, "executions")
  tell "clear"
  equal(call(vlan, "15"), "15&1&guests&1&ge5&ge6&text&3&0", "what it set: all of its argument")
end)

case "an_interrupted_wait_says_what_was_sent" (function() -- with every interpreter
  if jit then -- whose interpreter's handler ends the process as it likes
    return
  end
  local text = harness.run [[
    local calls = require "librpc.calls"
    local shell = function(command) os.execute(command) end
    shell "$SIM_DEVICE --tell $SIM_CONTROL 'fault erpsinfo drop'"
    local group = calls.group()
    for i = 1, 12 do group:call("oltmib_lldpifnei_get_1", tostring(i), 20) end
    io.popen(require "harness".interrupt_when_waiting "erpsinfo")
    print((pcall(group.wait, group)))
    local codes = {}
    for _, _, failure in group:finished() do
      codes[failure.code] = (codes[failure.code] or 0) + 1
    end
    print(codes.interrupted, codes.not_sent)
  ]]
  local sent, waiting = text:match("^false\n(%d+)\t(%d+)\n$")
  equal(sent and sent + waiting, 12, text)
  equal(tonumber(sent), executions(), "executions")
end)

case "a_closed_group_says_so" (function() -- with every interpreter
  tell "fault nsminfo drop"
  local group = calls.group()
  local before = host.descriptors()
  local fd = group:pollfd()
  for i = 1, 100 do
    group:call(vlan, tostring(i), 10)
    group:call(devinfo, "", 10)
  end
  equal(group:wait(10), true, "something has ended")
  equal(select("#", group:close()), 0, "values")
  equal(host.descriptors(), before, "descriptors")
  equal(host.readable(fd, 0), false, "the old number")
  for _ in group:finished() do
    error("a closed group has no ends")
  end
  local id, message, code = group:call(devinfo, "")
  equal(id, nil, "id")
  equal(message, "oltmib_devinfo_get_1: the group was closed, or it is the parent's of this forked process")
  equal(code, "closed", "code")
  fd, message, code = group:pollfd()
  equal(fd, nil, "descriptor")
  equal(message:match("^group:pollfd: expected a descriptor, found none: ") ~= nil, true, message)
  equal(code, "closed", "code of pollfd")
  local ended
  ended, message, code = group:wait(5)
  equal(ended, nil, "wait")
  equal(message, "group:wait: the group was closed, or it is the parent's of this forked process")
  equal(code, "closed", "code of wait")
  equal(group:timeout(), nil, "timeout")
  group:close()
end)

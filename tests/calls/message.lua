-- calls.message: a call through a socket of the host's own, beside the device.
local harness = require "harness"
local calls = require "librpc.calls"
local host = require "calls_host"
local process = require "e2e_process"
local schema = require "librpc.schema"
local case, call, equal, tell = harness.case, harness.call, harness.equal, harness.tell
local executions, lookups, shell = harness.calls, harness.lookups, harness.shell

local devinfo, vlan, vlan10 = harness.devinfo, harness.vlan, harness.vlan10

-- The datagram that the device sends back for a call's, and the message.
local function ask(name, argument)
  local datagram, address, port, message = calls.message(name, argument)
  return host.exchange(datagram, address, port, 10), message
end

case "a_message_goes_there_and_its_reply_comes_back" (function()
  local datagram, address, port, message = calls.message(vlan, "10")
  equal(address, "127.0.0.1", "address")
  equal(tostring(port), tell "port nsminfo", "port")
  equal(#datagram, 40 + 4 * 1094, "bytes") -- a header and the record's units
  equal(message:reply(host.exchange(datagram, address, port, 10)), vlan10, "text")
  equal(executions(), 1, "executions")
end)

case "every_api_that_reads_gives_what_callapi_gives" (function() -- with every interpreter
  local compared = 0
  for _, api in ipairs(schema.apis) do
    local datagram, message = ask(api.name, "1")
    local text, failure = message:reply(datagram)
    equal(failure, nil, api.name)
    local expected = call(api.name, "1")
    local counts = false
    for _, position in ipairs(api.output or {}) do
      counts = counts or position.kind == "counter"
    end
    if not counts then -- counters move at each read
      equal(text, expected, api.name)
      compared = compared + 1
    end
    equal(type(text), "string", api.name)
  end
  equal(executions(), 608, "executions")
  equal(compared > 250, true, "APIs compared: " .. compared)
end)

case "the_daemons_port_is_asked_for_once" (function()
  for _ = 1, 10 do
    calls.message(devinfo, "")
  end
  equal(lookups(50002), 1, "lookups")
  local _, _, _, message = calls.message(devinfo, "")
  equal(select("#", message:lost()), 0, "values")
  calls.message(devinfo, "")
  equal(lookups(50002), 2, "lookups after lost")
  call(devinfo, "")
  tell "fault devinfo count=1 error system_err"
  call(devinfo, "")
  for _ = 1, 3 do
    calls.message(devinfo, "")
  end
  equal(lookups(50002), 4, "lookups after a failed callapi")
end)

case "a_restarted_daemon_is_found_after_lost" (function()
  equal(select(2, ask(vlan, "10")):reply((ask(vlan, "10"))), nil, "another call's reply")
  tell "restart nsminfo"
  local datagram, message = ask(vlan, "10")
  equal(datagram, nil, "nobody listens there")
  message:lost()
  datagram, message = ask(vlan, "10")
  equal(message:reply(datagram), vlan10, "text")
end)

case "a_datagram_of_others_is_nil" (function()
  local datagram, message = ask(vlan, "10")
  equal(select("#", message:reply("")), 1, "values")
  for _, other in ipairs { "", "x", "xyz", "\0\0\0\0", ("x"):rep(24), ("x"):rep(100000), (ask(vlan, "10")),
    "\1" .. datagram, datagram:sub(1, 3) } do
    equal(message:reply(other), nil, "a datagram of " .. #other .. " bytes")
  end
  equal(message:reply(datagram), vlan10, "its own")
  equal(message:reply(datagram), vlan10, "its own, doubled")
  equal(message:reply(datagram .. ("x"):rep(60000)), vlan10, "its own with something behind")
end)

case "a_reply_without_a_text_is_false_and_a_failure" (function() -- with every interpreter
  for effect, code in pairs {
    ["error prog_unavail"] = "rejected", ["error garbage_args"] = "rejected", ["error denied"] = "rejected",
    ["truncate 8"] = "bad_reply", ["cut 12"] = "bad_reply", ["cut 4"] = "bad_reply",
  } do
    tell "clear"
    tell("fault * " .. effect)
    local datagram, message = ask(vlan, "10")
    local text, failure = message:reply(datagram)
    equal(text, false, effect)
    equal(failure.code, code, effect)
    equal(failure.details.api, vlan, "details of " .. effect)
    equal(failure.message:find(vlan .. " (service nsminfo, program 50004): ", 1, true), 1, failure.message)
  end
end)

case "what_cannot_be_sent_is_nil_a_message_and_a_code" (function() -- with every interpreter
  local datagram, message, code = calls.message("oltmib_nothing_get_1", "")
  equal(datagram, nil, "datagram")
  equal(message, "oltmib_nothing_get_1: no API of that name is registered")
  equal(code, "unknown_api", "code")
  tell "stop lpdet"
  equal(select(3, calls.message("oltmib_lpdet_global_get_1", "")), "no_daemon", "code")
  equal(pcall(calls.message, vlan), false, "no argument")
  equal(pcall(calls.message), false, "no name")
  local message_of = select(4, calls.message(vlan, "10"))
  equal(pcall(message_of.reply, message_of), false, "no datagram")
  equal(pcall(message_of.reply, {}, "x"), false, "no message")
  equal(pcall(message_of.reply, calls.group(), "x"), false, "another userdata")
  shell "kill $RPCBIND_PID; while kill -0 $RPCBIND_PID; do sleep 0.02; done"
  equal(select(3, calls.message(devinfo, "")), "no_portmapper", "code")
  equal(type(calls.message(vlan, "10")), "string", "a service whose port is known")
  equal(executions(), 0, "executions")
end)

case "a_million_characters_are_an_argument" (function() -- with every interpreter
  for _, argument in ipairs { ("&"):rep(1000000), ("9"):rep(1000000), ("x&"):rep(10000), "10\0" .. ("x"):rep(1000) } do
    local datagram, message = ask(vlan, argument)
    equal(type(message:reply(datagram)), "string", "text")
  end
  equal(select(2, ask(vlan, "10\0&7")):reply((ask(vlan, "10"))), nil, "xids differ")
end)

case "a_message_works_in_a_forked_child" (function()
  local datagram, address, port, message = calls.message(vlan, "10")
  local child = process.fork()
  if child == 0 then
    local ok = message:reply(host.exchange(datagram, address, port, 10)) == vlan10
    process.exit(ok and 0 or 1)
  end
  equal(process.wait(child), 0, "the child's status")
end)

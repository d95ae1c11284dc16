-- librpc.calls on every Lua: what it gives and what it refuses, beside the device.
-- tests/calls has what becomes of calls on a faulty machine.
local calls = require "librpc.calls"
local check = require "check"
local shell = require "shell"
local librpc = require "librpc"

local devinfo, vlan = "oltmib_devinfo_get_1", "oltmib_vlaninfo_get_1"
local identity = "OLT-8G&SN20260117-0042&00-1E-80-4C-00-01&1.4.2&2.0.1&V3&0&86400&olt-lab-1&0"
local voice = "10&1&voice&1&ge1,ge2&ge3,ge4&&0&0"
local unknown = { code = "unknown_api", message = "oltmib_nothing_get_1: no API of that name is registered",
  details = { api = "oltmib_nothing_get_1" } }

local members = {}
for name in pairs(librpc) do
  members[#members + 1] = name
end
table.sort(members)
check.equal("librpc keeps its four functions", members, { "callapi", "disabledebug", "enabledebug", "showapi" })

-- all
check.row(calls.all, { { { devinfo, "" }, { vlan, "10" }, { vlan, 10 }, { devinfo } }, 5 },
  { { identity, voice, voice, identity }, {} })
check.row(calls.all, { {} }, { {}, {} })
check.row(calls.all, { { { "oltmib_nothing_get_1", "" }, { devinfo } } }, { { false, identity }, { unknown } })
check.row(calls.all, { { { devinfo }, { "oltmib_nothing_get_1", "" } } }, { { identity, false }, { [2] = unknown } })
local list = {}
for i = 1, 300 do
  list[i] = { "oltmib_portinfo_get_1", tostring(i % 8 + 1) }
end
local texts, failures = calls.all(list, 20)
check.equal("as many texts as calls", { #texts, failures }, { 300, {} })
for i, text in ipairs(texts) do
  check.equal("text " .. i, text:match("^%d"), tostring(i % 8 + 1))
end
check.equal("an error of all", tostring(select(2, pcall(calls.all, { { devinfo }, 5 }))),
  "calls.all: item 2: expected { name, argument }, found a number")
for _, wrong in ipairs { { nil }, { 5 }, { {}, "x" }, { {}, -1 }, { { {} } }, { { { devinfo, {} } } },
  { { { "oltmib_svi_set_1", "" }, { "oltmib_svi_set_1", "" } } } } do
  check.equal("an error of all", pcall(calls.all, wrong[1], wrong[2]), false)
end

-- a group
local group = calls.group()
local first, second = group:call(devinfo, ""), group:call(vlan, 10, 5)
check.equal("ids are numbers", { type(first), first ~= second }, { "number", true })
check.row(group.call, { group, "oltmib_nothing_get_1", "" }, { "nil", unknown.message, "unknown_api" })
check.equal("an open call has a deadline", group:timeout() > 0 and group:timeout() <= 5, true)
check.equal("events", group:events(), "r")
check.equal("pollfd", type(group:pollfd()), "number")
local found, ended = {}, 0
while ended < 2 do
  check.equal("wait", group:wait(10), true)
  for id, text, failure, seconds in group:finished() do
    found[id], ended = { text, failure, seconds >= 0 }, ended + 1
  end
end
check.equal("the first call's end", found[first], { identity, [3] = true })
check.equal("the second call's end", found[second], { voice, [3] = true })
check.row(group.wait, { group, 0 }, { false })
check.row(group.timeout, { group }, { "nil" })
shell.tell "fault nsminfo drop"
local silent = group:call(vlan, "10", 0.1)
check.equal("wait for a silent daemon", group:wait(), true)
for id, text, failure in group:finished() do
  check.equal("its end", { id, text, failure.code, failure.details.service }, { silent, false, "timed_out", "nsminfo" })
end
shell.tell "clear"

-- in a coroutine, where an event loop's calls are made
local worker = coroutine.wrap(function()
  local id = group:call(vlan, "10", 5)
  local reply
  repeat
    coroutine.yield()
    for done, text in group:finished() do
      reply = done == id and text
    end
  until reply
  return reply
end)
local text
repeat
  text = worker()
until text
check.equal("in a coroutine", text, voice)
group:close()
check.row(group.wait, { group }, { "nil",
  "group:wait: the group was closed, or it is the parent's of this forked process", "closed" })
check.row(group.call, { group, devinfo, "" }, { "nil",
  "oltmib_devinfo_get_1: the group was closed, or it is the parent's of this forked process", "closed" })
for _, method in ipairs { "call", "pollfd", "events", "timeout", "finished", "wait", "close" } do
  check.equal("no group: " .. method, pcall(group[method], {}), false)
  check.equal("another userdata: " .. method, pcall(group[method], io.stdout), false)
end

-- an error between two ends leaves the others to be fetched
group = calls.group()
for _ = 1, 5 do
  group:call(devinfo, "")
end
local count = 0
while count < 5 do
  group:wait()
  pcall(function()
    for _ in group:finished() do
      count = count + 1
      error "in the middle"
    end
  end)
end
check.equal("ends after errors", count, 5)
group = nil -- luacheck: ignore 311
collectgarbage()

-- a message
local datagram, address, port, message = calls.message(vlan, "10")
check.equal("a message", { #datagram, address, type(port), type(message) }, { 4416, "127.0.0.1", "number", "userdata" })
check.row(message.reply, { message, "" }, { "nil" })
check.row(message.reply, { message, datagram:sub(1, 4) .. "\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1" },
  { false, { code = "rejected", message = "oltmib_vlaninfo_get_1 (service nsminfo, program 50004): the daemon answered "
    .. "that it will not or cannot carry the call out [RPC: Program unavailable]", details = {
    api = vlan, service = "nsminfo", program = 50004, reason = "RPC: Program unavailable" } } })
check.row(message.reply, { message, datagram:sub(1, 4) .. ("\0"):rep(7) .. "\1" .. ("\0"):rep(8) },
  { false, { code = "bad_reply", message = "oltmib_vlaninfo_get_1 (service nsminfo, program 50004): the daemon's "
    .. "answer is not this call's reply [RPC: Can't decode result]", details = {
    api = vlan, service = "nsminfo", program = 50004, reason = "RPC: Can't decode result" } } }, "half a header")
check.row(message.reply, { message, datagram:sub(1, 4) .. "\0\0\0\1" .. ("\0"):rep(16 + 4 * 1094) },
  { "0&0&&0&&&&0&0" }, "a reply of zeros")
check.row(calls.message, { "oltmib_nothing_get_1", "" }, { "nil", unknown.message, "unknown_api" })
message:lost()

-- services
local services = calls.services(5)
check.equal("services", #services, 15)
for _, one in ipairs(services) do
  check.equal(one.service, { type(one.program), type(one.title), type(one.port), one.seconds > 0, one.failure },
    { "number", "string", "number", true })
end

check.finish()

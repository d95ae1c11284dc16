-- A tour of librpc, which `./dev demo` runs beside the simulated device.
--
--     librpc.callapi(name, argument)
--
-- sends one record, written as text with '&' between its fields, to the daemon
-- that owns the table, and returns the reply in the same form; no value when the
-- call failed. On a device `require` finds the library by itself, here LUA_CPATH
-- says where it is.
require "librpc"

local callapi = librpc.callapi

local function headline(text)
  print(("\n%s\n%s"):format(text, ("-"):rep(#text)))
end

-- The fields of a reply. There is no escaping: a '&' always ends a field.
local function fields(reply)
  local found = {}
  for field in (reply .. "&"):gmatch("(.-)&") do
    found[#found + 1] = field
  end
  return found
end

headline "The APIs of the device information service"
-- showapi() prints the whole registry to standard output, so another
-- interpreter prints it here and its lines are filtered.
local listing = io.popen(arg[-1] .. " -l librpc -e 'librpc.showapi()'")
for line in listing:lines() do
  local name = line:match("^name (oltmib_dev[%w_]+),")
  if name then
    print("  " .. name)
  end
end
listing:close()

headline "The device's identity"
-- A get of the device's only row needs no key: missing fields read as empty.
local identity = callapi("oltmib_devinfo_get_1", "")
print("reply     " .. identity)
local is = fields(identity)
print("model     " .. is[1])
print("serial    " .. is[2])
print("MAC       " .. is[3])
print("host name " .. is[9])

headline "The ports"
-- getn returns the row after the one whose key it is given; the last field of a
-- row, `res`, is not 0 when there is none.
local port = fields(callapi("oltmib_portinfo_getn_1", "0"))
while port[#port] == "0" do
  print(("  %-4s %-6s %-20s speed %-5s mtu %s"):format(port[1], port[2], port[3], port[6], port[12]))
  port = fields(callapi("oltmib_portinfo_getn_1", port[1]))
end

headline "The ports by the names of their fields"
-- librpc.record takes and gives tables. What a field is called is no part of the
-- device's interface; a file of names tells it, here sim/names.lua.
local record = require "librpc.record"
for _, row in ipairs(record.rows("portinfo", nil, { limit = 100 })) do
  print(("  %-6s link %-5s speed %-5s %s"):format(row.name, row.link, row.speed, row.description))
end
local _, changes = record.change("portinfo", { port = 2 }, { description = "customer 22" })
print(("change    %s -> %s"):format(changes.description.before, changes.description.after))

headline "Counters move"
for _ = 1, 2 do
  local stat = fields(callapi("oltmib_portstat_get_1", "1"))
  print(("  %s: first counters %s, %s, %s"):format(stat[3], stat[4], stat[5], stat[6]))
end

headline "Changing the host name"
-- A set sends the whole row and returns the daemon's status. The argument has
-- one field more than the reply: the operation code before `res`.
is[9] = "olt-lab-2"
is[11], is[10] = is[10], "1"
print("set       " .. callapi("oltmib_devinfo_set_1", table.concat(is, "&")))
print("host name " .. fields(callapi("oltmib_devinfo_get_1", ""))[9])

headline "A call that fails"
-- No such API: no value, and no error. librpc.status tells why.
print("reply     " .. tostring((callapi("oltmib_nothing_get_1", ""))))
print("because   " .. select(2, require "librpc.status".last()))
-- An argument that is no text is a programming error, and Lua says so.
print("error     " .. select(2, pcall(callapi, "oltmib_devinfo_get_1", {})))

headline "What enabledebug prints"
librpc.enabledebug()
callapi("oltmib_vrrp_ssstate_get_1", "1")
callapi("oltmib_nothing_get_1", "x&y")
librpc.disabledebug()
io.stdout:flush()

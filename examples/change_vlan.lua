-- Gives a VLAN another name; everything else of it stays as it is:
--
--     lua5.1 examples/change_vlan.lua 10 phones
--
-- The fields' names are those of the simulated device's file of names,
-- sim/names.lua.
local record = require "librpc.record"

local vlan, name = arg[1], arg[2]
if not name then
  io.stderr:write("usage: change_vlan.lua VLAN NAME\n")
  os.exit(2)
end

-- Reads the row of the key, changes the fields given and sends all of it.
local status, message = record.change("vlaninfo", { vlan = vlan }, { name = name })
if not status then
  io.stderr:write("change_vlan: ", message, "\n")
  os.exit(1)
elseif status ~= 0 then
  io.stderr:write("change_vlan: the daemon refused, status ", status, "\n")
  os.exit(1)
end

local row = assert(record.get("vlaninfo", { vlan = vlan }))
print(("VLAN %d is now %s, ports %s"):format(row.vlan, row.name, row.untagged))

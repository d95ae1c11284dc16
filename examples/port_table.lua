-- Shows the device's ports as a table:
--
--     lua5.1 examples/port_table.lua
--
-- The fields' names are those of the simulated device's file of names,
-- sim/names.lua.
local record = require "librpc.record"

local ports, message = record.rows "portinfo"
if not ports then
  io.stderr:write("port_table: ", message, "\n")
  os.exit(1)
end

local line = "%-4s %-6s %-20s %6s %6s\n"
io.write(line:format("port", "name", "description", "speed", "MTU"))
for _, port in ipairs(ports) do
  io.write(line:format(port.port, port.name, port.description, port.speed, port.mtu))
end

-- Shows the device's ports as a table:
--
--     lua5.1 examples/port_table.lua
local record = require "librpc.record"

local ports, message = record.rows "oltmib_portinfo_getn_1"
if not ports then
  io.stderr:write("port_table: ", message, "\n")
  os.exit(1)
end

local line = "%-4s %-6s %-20s %6s %6s\n"
io.write(line:format("ifx", "name", "description", "speed", "MTU"))
for _, port in ipairs(ports) do
  io.write(line:format(port.ifx, port.name, port.field3, port.field8, port.field15))
end

-- Puts the ratios of docs/performance.md into README.md, between its marks:
--
--     lua5.1 bench/readme.lua docs/performance.md README.md
local output = require("output")
local source, target = ...

local rows = {
  "| call | library, µs | bare echo, µs | rpcgen's way, µs | library / echo | library / rpcgen's |",
  "|---|---|---|---|---|---|",
}
for line in output.read(source):gmatch("[^\n]+") do
  local cells = {}
  for cell in line:gmatch("|%s*([^|]-)%s*%f[|]") do
    cells[#cells + 1] = cell
  end
  -- API, units, library, echo, plain, x echo, at most, x plain, at most, floor, spread
  if #cells == 11 and cells[1]:find("^oltmib_") then
    rows[#rows + 1] = ("| `%s` | %s | %s | %s | %s | %s |"):format(cells[1], cells[3], cells[4], cells[5], cells[6],
      cells[8])
  end
end
if #rows < 3 then
  io.stderr:write("readme: ", source, ": expected a table of calls, found none\n")
  os.exit(1)
end

local block = "<!-- performance -->\n" .. table.concat(rows, "\n") .. "\n<!-- /performance -->"
local text, found = output.read(target):gsub("<!%-%- performance %-%->.-<!%-%- /performance %-%->", function()
  return block
end)
if found ~= 1 then
  io.stderr:write("readme: ", target, ": expected one block of performance, found ", found, "\n")
  os.exit(1)
end
output.write(target, text)

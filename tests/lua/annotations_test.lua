-- The annotations for editors name every function of the modules, and nothing else.
local check = require "check"

local source = os.getenv("LIBRPC_TEST_SOURCE")
local calls = require "librpc.calls"
require "librpc.record"

-- The functions that a file declares: "group:call", "calls.all" ...
local function annotated(name)
  local file = assert(io.open(("%s/docs/reference/librpc/%s.lua"):format(source, name)))
  local list = {}
  for line in file:lines() do
    list[#list + 1] = line:match("^function ([%w_.:]+)%(")
  end
  file:close()
  table.sort(list)
  return list
end

local function functions(list, prefix, methods)
  for name, value in pairs(methods) do
    if type(value) == "function" and not name:match("^__") then
      list[#list + 1] = prefix .. name
    end
  end
  table.sort(list)
  return list
end

local group = getmetatable(calls.group())
local list = functions({ "message:lost", "message:reply" }, "calls.", calls)
check.equal("calls", annotated("calls"), functions(list, "group:", group))
check.equal("schema", annotated("schema"), functions({}, "schema.", require "librpc.schema"))
check.equal("status", annotated("status"), functions({}, "status.", require "librpc.status"))

-- Modules of several rooms: what their first file says, and what the rooms have.
local function of_rooms(name)
  local found, text = {}, assert(io.open(("%s/lua/librpc/%s.lua"):format(source, name))):read("*a")
  for entry in text:match("local rooms = {(.-)}"):gmatch("([%w_]+) = ") do
    found[entry] = require("librpc." .. name)[entry]
    check.equal(name .. "." .. entry .. " is there", found[entry] ~= nil, true)
  end
  return functions({}, name .. ".", found)
end
check.equal("record", annotated("record"), of_rooms("record"))
local in_names = of_rooms("names")
in_names[#in_names + 1] = "names.loaded"
in_names[#in_names + 1] = "names.keep"
table.sort(in_names)
check.equal("names", annotated("names"), in_names)

-- Editors know every code.
local file = assert(io.open(source .. "/docs/reference/librpc/status.lua")):read("*a")
for code, meaning in pairs(require("librpc.status").codes) do
  local line = ('---| "%s" # %s\n'):format(code, meaning)
  check.equal(code, file:find(line, 1, true) and line, line)
end

check.finish()

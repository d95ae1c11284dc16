-- The global table librpc, on every Lua: there with the first require, one table
-- whatever was there before, and the modules' functions whatever else they are given.
local check = require "check"
local shell = require "shell"

local function printed(script)
  local name = os.tmpname()
  local file = assert(io.open(name, "w"))
  file:write(script)
  file:close()
  local output, errors, status = shell.run(shell.interpreter .. " " .. name)
  os.remove(name)
  return output .. errors, status
end

local functions = [[
  local function functions_of(t)
    local list = {}
    for name, value in pairs(t) do
      list[#list + 1] = type(value) == "function" and name or nil
    end
    table.sort(list)
    return table.concat(list, " ")
  end
]]
local four = "callapi disabledebug enabledebug showapi"

check.equal("the first require makes the global table",
  printed(functions .. [[
    local before = librpc
    local module = require "librpc"
    print(before, module == librpc, package.loaded.librpc == module, functions_of(librpc))
  ]]), "nil\ttrue\ttrue\t" .. four .. "\n")

-- A page may have named a table of its own so.
check.equal("a foreign table of that name gets the functions and keeps its own",
  printed(functions .. [[
    local own = { mine = 5, own = print }
    librpc = own
    local module = require "librpc"
    print(module == own, librpc == own, librpc.mine, librpc.own == print, functions_of(librpc))
    print(select("#", librpc.callapi("oltmib_nothing_get_1", "")))
  ]]), "true\ttrue\t5\ttrue\t" .. "callapi disabledebug enabledebug own showapi\n0\n")

check.equal("opened again it is the same table, whose functions are there again",
  printed(functions .. [[
    local module = require "librpc"
    module.callapi, module.mine = nil, 5
    package.loaded.librpc = nil
    print(require "librpc" == module, librpc == module, module.mine, functions_of(librpc))
  ]]), "true\ttrue\t5\t" .. four .. "\n")

-- Lua 5.1 calls that a conflict of names; the later ones have no such rule.
local output, status = printed [[
  librpc = "a text"
  local ok, found = pcall(require, "librpc")
  print(ok, ok and found == librpc and type(librpc.callapi) or tostring(found):match("name conflict[^\n]*"))
]]
check.equal("another value of that name", { output, status },
  { _VERSION == "Lua 5.1" and "false\tname conflict for module 'librpc'\n" or "true\tfunction\n", 0 })

check.equal("the switches take any arguments and return nothing", printed [[
  require "librpc"
  print(select("#", librpc.enabledebug({}, 2)), select("#", librpc.disabledebug(print)))
]], "0\t0\n")

-- The schema's functions look at their first argument alone.
local schema = require "librpc.schema"
local plain = schema.api "oltmib_svi_get_1"
check.equal("schema.api", plain and plain.name, "oltmib_svi_get_1")
check.equal("schema.api with more arguments", schema.api("oltmib_svi_get_1", "oltmib_route_get_1", {}, 5) == plain,
  true)
check.equal("schema.api of nothing, with more arguments", { schema.api("nothing", "oltmib_svi_get_1") }, {})
check.equal("schema.api gives one value", select("#", schema.api("oltmib_svi_get_1", 1, 2, 3)), 1)
local tables = schema.table "svi"
check.equal("schema.table", tables and tables.get == plain, true)
check.equal("schema.table with more arguments", schema.table("svi", { mine = 1 }, 5), tables)
check.equal("schema.table of nothing, with more arguments", { schema.table("nothing", {}, 5) }, {})
check.equal("schema.table gives one value", select("#", schema.table("svi", {}, 5)), 1)
check.equal("a method call is a name of another type", pcall(schema.api, schema, "oltmib_svi_get_1"), false)
check.equal("status.last ignores arguments", select("#", require("librpc.status").last(1, 2)), 1)

check.finish()

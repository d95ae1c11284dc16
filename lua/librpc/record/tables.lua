-- The schema by name: an API, a table's APIs, its fields and its key. The other
-- rooms and librpc.names look here.
local names = require "librpc.names"
local schema = require "librpc.schema"

local tables = {}

-- nil, a message and a code, see problems.lua, which a page without a mistake
-- does not load. What was found is a value, or a text that says it.
function tables.fail(code, where, expected, value, found)
  local problems = require "librpc.record.problems"
  return problems.fail(code, where, expected, found or problems.shown(value))
end

-- The API of that name, or nil.
function tables.api_named(name)
  return type(name) == "string" and schema.api(name) or nil
end

-- The API of that name; nil, a message and a code.
function tables.api_of(name)
  local api = tables.api_named(name)
  if api then
    return api
  end
  return require("librpc.record.problems").unknown_api(name)
end

-- The API of that name, and how its table's rows read.
function tables.open(name)
  local api, message, code = tables.api_of(name)
  if not api then
    return nil, message, code
  end
  local view
  view, message, code = names.view(api.table)
  if not view then
    return nil, message, code
  end
  return api, view
end

local operations_of = {} -- by table: false, or { get = api, getn = api, set = api, other = api }

-- A table's APIs by operation, or nil.
function tables.operations(table_name)
  if type(table_name) ~= "string" then
    return nil
  end
  if operations_of[table_name] == nil then
    operations_of[table_name] = schema.table(table_name) or false
  end
  return operations_of[table_name] or nil
end

-- The APIs of a table, which one of its APIs' names stands for as well.
function tables.apis_of(name)
  local api = tables.api_named(name)
  local apis = tables.operations(api and api.table or name)
  if not apis then
    return require("librpc.record.problems").unknown_table(name)
  end
  return apis
end

-- The API of a table's operation.
function tables.find(table_name, operation)
  local apis, message, code = tables.apis_of(table_name)
  if not apis then
    return nil, message, code
  elseif apis[operation] then
    return apis[operation]
  end
  return require("librpc.record.problems").no_operation(table_name, apis, operation)
end

local input_names = setmetatable({}, { __mode = "k" })

-- The positions of an API's argument by name.
function tables.inputs_of(api)
  local positions = input_names[api]
  if not positions then
    positions = {}
    for _, position in ipairs(api.input) do
      positions[position.name] = position
    end
    input_names[api] = positions
  end
  return positions
end

function tables.has_output(api, name)
  for _, position in ipairs(api.output or {}) do
    if position.name == name then
      return true
    end
  end
  return false
end

-- The fields that say which row of a table: those that the names tell; else, by
-- rule, the first where the table is walked, and none where it has one row. The
-- second value is true where the names tell.
function tables.key_of(apis, view)
  if view.key then
    return view.key, true
  end
  local first = apis.getn and apis.getn.input[1]
  return first and { first.name } or {}, false
end

return tables

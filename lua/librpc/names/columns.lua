-- A table's fields as a page's columns, a form's inputs or a reference's lines.
local tables = require "librpc.record.tables"
local names = require "librpc.names"

local columns = {}

-- The fields of a table's rows in the record's order, then those that only an
-- argument has. Each has `field` (its name in the schema), `name` (the given one,
-- else the schema's), `title` (a heading), `kind` and `size` as in the schema,
-- `key` where it says which row, `argument` where an argument carries it, and
-- `unit`, `description`, `values` and `secret` where the names tell them.
function columns.fields(table_name)
  local apis, message, code = tables.apis_of(table_name)
  if not apis then
    return nil, message, code
  end
  local view
  table_name = select(2, next(apis)).table
  view, message, code = names.view(table_name)
  if not view then
    return nil, message, code
  end
  local entry = names.tables[table_name]
  local facts_of = entry and entry.fields or {}
  local keys, inputs = {}, {}
  for _, field in ipairs((tables.key_of(apis, view))) do
    keys[field] = true
  end
  for _, api in pairs(apis) do
    for _, position in ipairs(api.input) do
      inputs[position.name] = inputs[position.name] or position.kind ~= "skip"
    end
  end
  local list = {}
  for _, position in ipairs(select(2, tables.fields_of(apis))) do
    local facts = facts_of[position.name] or {}
    local name = facts.name or position.name
    list[#list + 1] = {
      field = position.name, name = name, title = facts.title or name:gsub("_", " "),
      kind = position.kind, size = position.size, key = keys[position.name], argument = inputs[position.name] or nil,
      unit = facts.unit, description = facts.description, values = facts.values, secret = facts.secret,
    }
  end
  return list
end

return columns

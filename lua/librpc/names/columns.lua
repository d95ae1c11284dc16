-- A table's fields as a page's columns, a form's inputs or a reference's lines.
local tables = require "librpc.record.tables"
local names = require "librpc.names"

local columns = {}

local sides, operations = { "output", "input" }, { "get", "getn", "set", "other" }

-- The arrays of positions of a table's APIs, replies first; those that APIs share
-- once.
function columns.texts_of(apis)
  local texts, last = {}, nil
  for s = 1, #sides do
    for o = 1, #operations do
      local api = apis[operations[o]]
      local positions = api and api[sides[s]]
      if positions and positions ~= last then
        texts[#texts + 1], last = positions, positions
      end
    end
  end
  return texts
end

-- A field as a reply has it, else as an argument has it; nil: there is none of that
-- name.
function columns.position_in(texts, field)
  for t = 1, #texts do
    local positions = texts[t]
    for i = 1, #positions do
      if positions[i].name == field then
        return positions[i]
      end
    end
  end
end

-- The fields of a table's rows in the record's order, then those that only an
-- argument has. Each has `field` (its name in the schema), `name` (the given one,
-- else the schema's), `title` (a heading), `kind` and `size` as in the schema,
-- `key` where it says which row, `argument` where an argument carries it, and
-- `unit`, `description`, `values`, `secret` and `role` where the names tell them.
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
  local list, listed = {}, {}
  for _, positions in ipairs(columns.texts_of(apis)) do
    for _, position in ipairs(positions) do
      local field = position.name
      if not listed[field] then
        local facts = facts_of[field] or {}
        local name = facts.name or field
        listed[field] = true
        list[#list + 1] = {
          field = field, name = name, title = facts.title or name:gsub("_", " "),
          kind = position.kind, size = position.size, key = keys[field], argument = inputs[field] or nil,
          unit = facts.unit, description = facts.description, values = facts.values, secret = facts.secret,
          role = facts.role,
        }
      end
    end
  end
  return list
end

return columns

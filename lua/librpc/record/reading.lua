-- One row by its key.
local calling = require "librpc.record.calling"
local names = require "librpc.names"
local tables = require "librpc.record.tables"
local values = require "librpc.record.values"

local reading = {}
local fail, to_text = tables.fail, values.to_text

-- True, or what fail gives, where a row is not that of the key's fields.
local function is_asked_for(api, view, key, row)
  local inputs = tables.inputs_of(api)
  for field, value in pairs(key) do
    local position = inputs[field]
    if row[field] ~= nil and position.kind ~= "bytes" and field ~= view.res and field ~= view.oper
      and to_text[position.kind](value, position, api) ~= to_text[position.kind](row[field], position, api) then
      local where = api.name .. ": " .. (view.name[field] or field)
      if view.secret[field] then
        return fail("other_row", where, "the row of that key", nil, "a secret of another")
      end
      local shown = require("librpc.record.problems").shown
      return fail("other_row", where, "the row " .. shown(value), row[field])
    end
  end
  return true
end

-- The row of a table that has no get, found by walking it.
local function find_row(getn, view, key, seconds)
  local walk, message, code = require("librpc.record.walking").start(getn.name, nil, { call_seconds = seconds })
  while walk and walk.text do
    walk:take(calling.exchange(walk.api, walk.text, walk:call_left()))
    local row = walk.rows[#walk.rows]
    row = row and calling.by_schema(view, row)
    if row and is_asked_for(getn, view, key, row) then
      return row
    end
  end
  if walk and walk.code then
    message, code = walk.message, walk.code
  elseif walk then
    local _
    _, message, code = fail("no_row", getn.name, "the row of that key", nil, "none among " .. #walk.rows)
  end
  return nil, message, code, walk and walk.last
end

-- A row as get gave it for a key, both by the schema's names; nil, a message, a code
-- and that row where it is none or another's.
function reading.accept(api, view, key, row)
  local message, code, _
  local result = row[view.res]
  if result ~= nil and result ~= 0 then
    _, message, code = fail("no_row", api.name .. ": res", "0, of a row that is there", result)
    return nil, message, code, names.present(view, row)
  end
  local asked
  asked, message, code = is_asked_for(api, view, key, row)
  if not asked then
    return nil, message, code, names.present(view, row)
  end
  return row
end

-- The row of a key (by the schema's names), by the schema's names; nil, a message,
-- a code and, where the daemon gave one that is no such row, that row. Each call has
-- so many seconds where they are given.
function reading.read_row(apis, view, key, seconds)
  local api = apis.get
  if not api then
    return find_row(apis.getn, view, key, seconds)
  end
  local row, message, code = calling.call_api(api, view, key, seconds)
  if not row then
    return nil, message, code
  end
  return reading.accept(api, view, key, row)
end

-- A table's APIs, its view and its key's fields; nil, a message and a code where it
-- cannot be read.
function reading.open(name)
  local apis, message, code = tables.apis_of(name)
  if not apis then
    return nil, message, code
  end
  local table_name = select(2, next(apis)).table
  local view
  view, message, code = names.view(table_name)
  if not view then
    return nil, message, code
  elseif not (apis.get or apis.getn) then
    return tables.find(table_name, "get")
  end
  return apis, view, table_name
end

-- The caller's key by the schema's names. Where the names say what the key is, all
-- of it has to be there; by rule, something.
function reading.checked_key(apis, view, table_name, key)
  local wanted, told = tables.key_of(apis, view)
  if key ~= nil and type(key) ~= "table" then
    return fail("bad_type", table_name .. ": key", "a table of fields", key)
  end
  local plain = calling.by_schema(view, key or {})
  for _, field in ipairs(wanted) do
    if plain[field] == nil and (told or key == nil) then
      local called = {}
      for i, each in ipairs(wanted) do
        called[i] = view.name[each] or each
      end
      return fail("no_key", table_name .. ": key", table.concat(called, ", "), nil,
        key == nil and "none" or "no " .. (view.name[field] or field))
    end
  end
  return key or {}
end

-- The same, and the text of the API's argument for it.
function reading.checked_argument(api, apis, view, table_name, key)
  local checked, message, code = reading.checked_key(apis, view, table_name, key)
  if not checked then
    return nil, message, code
  end
  local text
  text, message, code = calling.argument_of(api, view, checked)
  if not text then
    return nil, message, code
  end
  return checked, text
end

-- The row of a key, which is a table of the fields that say which row; nil where
-- the table has one row. Where there is no such row nil, a message, "no_row" and
-- the row that the daemon gave.
function reading.get(name, key, options)
  local apis, view, table_name = reading.open(name)
  if not apis then
    return nil, view, table_name
  end
  local seconds, message, code = calling.seconds_of("record.get", options)
  if seconds == false then
    return nil, message, code
  end
  local checked
  checked, message, code = reading.checked_argument(apis.get or apis.getn, apis, view, table_name, key)
  if not checked then
    return nil, message, code
  end
  local row, given
  row, message, code, given = reading.read_row(apis, view, calling.by_schema(view, checked), seconds)
  if not row then
    return nil, message, code, given
  end
  return names.present(view, row)
end

return reading

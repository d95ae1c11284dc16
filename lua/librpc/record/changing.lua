-- One row by its key: reading it, and changing some of its fields without losing
-- what the others hold.
local calling = require "librpc.record.calling"
local names = require "librpc.names"
local tables = require "librpc.record.tables"
local values = require "librpc.record.values"

local changing = {}
local fail = tables.fail
local to_text, to_value = values.to_text, values.to_value

-- From here on a double's two neighbours print otherwise with two decimals.
local told_by_two_decimals = 2 ^ 46

-- The text that sends a value of a row back as the daemon holds it, or nil where
-- the reply does not tell what that is: a real prints two decimals (`exact`: the
-- daemon holds no more), raw bytes are sent as a text, and a text that fills its
-- array would be cut.
local function sent_back(value, position, api, exact)
  if position.kind == "real" and not exact and math.abs(value) < told_by_two_decimals then
    return nil
  elseif position.kind == "bytes" then
    local bytes = {}
    for pair in value:gmatch("%x%x") do
      bytes[#bytes + 1] = tonumber(pair, 16)
    end
    value = bytes
  end
  return (to_text[position.kind](value, position, api))
end

-- The value that an argument's text stands for, as a row has it.
local function value_of(text, position)
  if position.kind == "bytes" then
    return values.to_hex(text .. ("\0"):rep(position.size - #text), "%02X", "-")
  end
  return (to_value[position.kind](text, position))
end

-- True, or what fail gives, where a row is not that of the key's fields.
local function is_asked_for(api, view, key, row)
  local inputs = tables.inputs_of(api)
  for field, value in pairs(key) do
    local position = inputs[field]
    if row[field] ~= nil and position.kind ~= "bytes" and field ~= view.res and field ~= view.oper
      and to_text[position.kind](value, position, api) ~= to_text[position.kind](row[field], position, api) then
      local shown = require("librpc.record.problems").shown
      return fail("other_row", api.name .. ": " .. (view.name[field] or field), "the row " .. shown(value), row[field])
    end
  end
  return true
end

-- The row of a table that has no get, found by walking it.
local function find_row(getn, view, key)
  local walk, message, code = require("librpc.record.walking").start(getn.name)
  while walk and walk.text do
    walk:take(calling.exchange(walk.api, walk.text))
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

-- The row of a key (by the schema's names), by the schema's names; nil, a message,
-- a code and, where the daemon gave one that is no such row, that row.
local function read_row(apis, view, key)
  local api = apis.get
  if not api then
    return find_row(apis.getn, view, key)
  end
  local row, message, code = calling.call_api(api, view, key)
  if not row then
    return nil, message, code
  end
  local result = row[view.res]
  if result ~= nil and result ~= 0 then
    local _
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

-- A table's APIs, its view and its key's fields; nil, a message and a code where it
-- cannot be read.
local function open(name)
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
local function checked_key(apis, view, table_name, key)
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

-- The row of a key, which is a table of the fields that say which row; nil where
-- the table has one row. Where there is no such row nil, a message, "no_row" and
-- the row that the daemon gave.
function changing.get(name, key)
  local apis, view, table_name = open(name)
  if not apis then
    return nil, view, table_name
  end
  local api = apis.get or apis.getn
  local checked, message, code = checked_key(apis, view, table_name, key)
  if not checked then
    return nil, message, code
  end
  local text
  text, message, code = calling.argument_of(api, view, checked)
  if not text then
    return nil, message, code
  end
  local row, given
  row, message, code, given = read_row(apis, view, calling.by_schema(view, checked))
  if not row then
    return nil, message, code, given
  end
  return names.present(view, row)
end

-- The key among the fields of change(table, fields).
local function key_among(apis, view, table_name, fields)
  local key, wanted, told = {}, tables.key_of(apis, view)
  local plain = calling.by_schema(view, fields)
  for _, field in ipairs(wanted) do
    key[field] = plain[field]
  end
  if told then
    return checked_key(apis, view, table_name, key)
  end
  return key
end

-- The texts of a set: the changes, and of the row what they leave alone. nil and the
-- field that cannot be sent as the daemon holds it.
local function texts_of(set, view, row, changes)
  local texts = {}
  for _, position in ipairs(set.input) do
    local field = position.name
    if changes[field] ~= nil then
      texts[field] = to_text[position.kind](changes[field], position, set)
    elseif row[field] ~= nil and position.kind ~= "skip" and field ~= view.res and field ~= view.oper then
      texts[field] = sent_back(row[field], position, set, view.exact[field])
      if not texts[field] then
        return nil, field
      end
    end
  end
  return texts
end

-- What a set changed, by its fields' names: each { before, after } where they differ.
local function difference(set, view, row, changes, texts)
  local inputs, changed = tables.inputs_of(set), {}
  for field in pairs(changes) do
    local before, after = row[field], value_of(texts[field], inputs[field])
    local is_list = type(before) == "table"
    if (is_list and table.concat(before, ",") or before) ~= (is_list and table.concat(after, ",") or after) then
      local words = view.words[field] or {}
      changed[view.name[field] or field] = {
        before = words[before] or before,
        after = words[after] or after,
      }
    end
  end
  return changed
end

-- Changes some fields of one row: reads the row of `key`, puts the changes in and
-- sends all of it back. The status of the set, and what differs from the row as it
-- was read: by field { before, after }. With two arguments the key is among the
-- fields.
function changing.change(name, key, changes)
  local apis, view, table_name = open(name)
  if not apis then
    return nil, view, table_name
  end
  local set, message, code = tables.find(table_name, "set")
  if not set then
    return nil, message, code
  end
  local text
  local given = changes == nil and key or changes
  text, message, code = calling.argument_of(set, view, given)
  if not text then
    return nil, message, code
  end
  if changes == nil then
    key, message, code = key_among(apis, view, table_name, given)
  else
    key, message, code = checked_key(apis, view, table_name, key)
  end
  if not key then
    return nil, message, code
  end
  text, message, code = calling.argument_of(apis.get or apis.getn, view, key)
  if not text then
    return nil, message, code
  end
  local row, other
  row, message, code, other = read_row(apis, view, calling.by_schema(view, key))
  if not row then
    return nil, message, code, other
  end
  local plain = calling.by_schema(view, given)
  local texts, field = texts_of(set, view, row, plain)
  if not texts then
    return fail("not_carried", set.name .. ": " .. (view.name[field] or field),
      "a value, because the argument cannot carry the row's own", row[field], view.secret[field] and "a secret" or nil)
  end
  local reply
  reply, message, code = calling.exchange(set, calling.join(set, texts))
  if not reply then
    return nil, message, code
  end
  local result
  result, message, code = calling.row_of(set, view, reply)
  if not result then
    return nil, message, code
  end
  return result, difference(set, view, row, plain, texts)
end

return changing

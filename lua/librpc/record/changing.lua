-- Changing some fields of one row without losing what the others hold.
local calling = require "librpc.record.calling"
local reading = require "librpc.record.reading"
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
    return (text .. ("\0"):rep(position.size - #text)):gsub(".", function(byte)
      return ("%02X-"):format(byte:byte())
    end):sub(1, -2)
  end
  return (to_value[position.kind](text, position))
end

-- The key among the fields of change(table, fields).
local function key_among(apis, view, table_name, fields)
  local key, wanted, told = {}, tables.key_of(apis, view)
  local plain = calling.by_schema(view, fields)
  for _, field in ipairs(wanted) do
    key[field] = plain[field]
  end
  if told then
    return reading.checked_key(apis, view, table_name, key)
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
  local apis, view, table_name = reading.open(name)
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
    key, message, code = reading.checked_key(apis, view, table_name, key)
  end
  if not key then
    return nil, message, code
  end
  text, message, code = calling.argument_of(apis.get or apis.getn, view, key)
  if not text then
    return nil, message, code
  end
  local row, other
  row, message, code, other = reading.read_row(apis, view, calling.by_schema(view, key))
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

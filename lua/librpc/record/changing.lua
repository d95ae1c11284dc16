-- Changing fields of a row.
local calling = require "librpc.record.calling"
local values = require "librpc.record.values"
local walking = require "librpc.record.walking"
local changing = {}
local fail, to_text = calling.fail, values.to_text

local function shown(value)
  return require("librpc.record.problems").shown(value)
end

-- The first field of an argument, which is a row's key as a rule.
local function asked_for(api, fields, row)
  local first = api.input[1]
  local value = first and fields[first.name]
  if value == nil or row[first.name] == nil then
    return true
  end
  local asked = to_text[first.kind](value, first, api)
  local got = to_text[first.kind](row[first.name], first, api)
  if asked ~= got then
    return fail("other_row", api.name .. ": " .. first.name, "the row " .. shown(value), shown(row[first.name]))
  end
  return true
end

-- Changes some fields of one row of a table: reads the row, puts the given
-- fields in and sends all of it back. The status of the set.
function changing.change(table_name, fields)
  local get, message, code = calling.find(table_name, "get")
  if not get then
    return nil, message, code
  end
  local set
  set, message, code = calling.find(table_name, "set")
  if not set then
    return nil, message, code
  end
  local sent, ok, row
  sent, message, code = calling.encode(set.name, fields)
  if not sent then
    return nil, message, code
  end
  local key = calling.carried_of(get, fields)
  row, message, code = calling.call(get.name, key)
  if not row then
    return nil, message, code
  end
  if walking.result_is_not_0(row) then
    return fail("daemon_status", get.name .. ": res", "the row to change, with 0", shown(row.res))
  end
  ok, message, code = asked_for(get, key, row)
  if not ok then
    return nil, message, code
  end
  local whole = calling.carried_of(set, row)
  for name, value in pairs(fields) do
    whole[name] = value
  end
  for _, position in ipairs(set.input) do
    if position.kind == "bytes" and whole[position.name] == nil then
      return fail("not_carried", set.name .. ": " .. position.name,
        "a value, because the argument cannot carry the row's own", shown(row[position.name]))
    end
  end
  return calling.call(set.name, whole)
end

return changing

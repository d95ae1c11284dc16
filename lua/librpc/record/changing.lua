-- Changing some fields of one row without losing what the others hold, and adding a row.
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

-- What a field holds as a reader has it, and whether two such are the same.
local function presented(view, field, value)
  local words = view.words[field]
  return words and words[value] or value
end

local function same(a, b)
  return (type(a) == "table" and table.concat(a, ",") or a) == (type(b) == "table" and table.concat(b, ",") or b)
end

-- What a set changes, by its fields' names: each { before, after } where they differ.
local function difference(set, view, row, changes, texts)
  local inputs, changed = tables.inputs_of(set), {}
  for field in pairs(changes) do
    local before, after = row[field], value_of(texts[field], inputs[field])
    if not same(before, after) then
      changed[view.name[field] or field] = {
        before = presented(view, field, before),
        after = presented(view, field, after),
      }
    end
  end
  return changed
end

-- What a position without a value is sent as.
local blanks = { int = "0", unsigned = "0", real = "0" }

-- The changes, and every other field as 0 or empty.
local function alone(set, view, changes)
  local all, texts = {}, {}
  for _, position in ipairs(set.input) do
    local field = position.name
    if changes[field] ~= nil then
      all[field], texts[field] = true, to_text[position.kind](changes[field], position, set)
    elseif blanks[position.kind] and field ~= view.res and field ~= view.oper then
      all[field], texts[field] = true, blanks[position.kind]
    elseif position.kind == "text" then
      all[field], texts[field] = true, ""
    end
  end
  return texts, all
end

local change_options = { call_seconds = "number", dry_run = "boolean", only = "boolean" }
local add_options = { call_seconds = "number", dry_run = "boolean" }

-- Sends the texts of a set: its status, false where that is not to be (dry_run), or
-- nil, a message and a code.
local function send(set, view, texts, seconds, options)
  if options and options.dry_run then
    return false
  end
  local argument, gap = calling.join(set, texts)
  if not argument then
    return fail("empty_text", set.name .. ": " .. (view.name[gap] or gap),
      "a text that is not empty, because the fields behind it would move up", "")
  end
  local reply, message, code = calling.exchange(set, argument, seconds)
  if not reply then
    return nil, message, code
  end
  return calling.row_of(set, view, reply)
end

-- The same of what `open` gave, and how what was sent differs from the row before.
local function send_and_compare(at, texts, options, row, sent)
  local result, message, code = send(at.set, at.view, texts, at.seconds, options)
  if result == nil then
    return nil, message, code
  end
  return result, difference(at.set, at.view, row, sent, texts)
end

-- What both change and add begin with: the APIs, the view, the set, the key (`among`
-- the fields that are given, or its own), the seconds of each call; nil, a message and
-- a code.
local function open(where, name, given, key, among, options, types)
  local apis, view, table_name = reading.open(name)
  if not apis then
    return nil, view, table_name
  end
  local seconds, message, code = calling.seconds_of(where, options, types)
  if seconds == false then
    return nil, message, code
  end
  local set, text
  set, message, code = tables.find(table_name, "set")
  if not set then
    return nil, message, code
  end
  text, message, code = calling.argument_of(set, view, given)
  if not text then
    return nil, message, code
  end
  if among then
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
  return { apis = apis, view = view, set = set, key = calling.by_schema(view, key), table_name = table_name,
    plain = calling.by_schema(view, given), seconds = seconds or nil }
end

-- Changes some fields of one row: reads the row of `key`, puts the changes in and
-- sends all of it back. The status of the set, and what differs from the row as it
-- was read: by field { before, after }. Without changes the key is among the fields.
-- Options:
--   only          the others are sent as 0 or empty, whatever the row has
--   dry_run       nothing is sent: the status is false
--   call_seconds  that each call may take
function changing.change(name, key, changes, options)
  local given = changes == nil and key or changes
  local at, message, code = open("record.change", name, given, key, changes == nil, options, change_options)
  if not at then
    return nil, message, code
  end
  local set, view = at.set, at.view
  local row, other
  row, message, code, other = reading.read_row(at.apis, view, at.key, at.seconds)
  if not row then
    return nil, message, code, other
  end
  local texts, sent
  if options and options.only then
    texts, sent = alone(set, view, at.plain)
  else
    texts, sent = texts_of(set, view, row, at.plain), at.plain
  end
  if not texts then
    local _, field = texts_of(set, view, row, at.plain)
    return fail("not_carried", set.name .. ": " .. (view.name[field] or field),
      "a value, because the argument cannot carry the row's own", row[field], view.secret[field] and "a secret" or nil)
  end
  return send_and_compare(at, texts, options, row, sent)
end

-- A new row: sends the fields, all others as 0 or empty, where the daemon has no row
-- of that key. The status of the set, and what the row got: by field { after }.
-- Options as of change, but for `only`.
function changing.add(name, fields, options)
  local at, message, code = open("record.add", name, fields, nil, true, options, add_options)
  if not at then
    return nil, message, code
  end
  local set, view = at.set, at.view
  local row
  row, message, code = reading.read_row(at.apis, view, at.key, at.seconds)
  if row then
    return fail("row_exists", set.name, "a key of which there is no row", nil,
      next(at.key) == nil and "a table of one row" or "a row")
  elseif code ~= "no_row" then
    return nil, message, code
  end
  local texts = {}
  for field, value in pairs(at.plain) do
    texts[field] = to_text[tables.inputs_of(set)[field].kind](value, tables.inputs_of(set)[field], set)
  end
  return send_and_compare(at, texts, options, {}, at.plain)
end

return changing

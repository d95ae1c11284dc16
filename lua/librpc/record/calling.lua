-- Calls with named fields: finding an API, its argument's text, the row of its
-- reply.
local librpc = require "librpc"
local schema = require "librpc.schema"
local status = require "librpc.status"
local values = require "librpc.record.values"

local calling = {}
local to_text, to_value = values.to_text, values.to_value

local function shown(value)
  return require("librpc.record.problems").shown(value)
end

local function nearest_of(name, names)
  return require("librpc.record.problems").nearest(name, names)
end

function calling.fail(...)
  return require("librpc.record.problems").fail(...)
end
local fail = calling.fail

local function names_of(list)
  local names = {}
  for i, item in ipairs(list) do
    names[i] = item.name
  end
  return names
end

function calling.api_of(name)
  local api = type(name) == "string" and schema.api(name)
  if api then
    return api
  end
  local nearest = type(name) == "string" and nearest_of(name, names_of(schema.apis))
  local expected = nearest and "the name of an API (did you mean " .. nearest .. "?)" or "the name of an API"
  return fail("unknown_api", "librpc", expected, shown(name))
end

-- The API of a table's operation ("get", "getn" or "set").
local tables -- by name: { get = api, getn = api, set = api }

function calling.find(table_name, operation)
  if not tables then
    tables = {}
    for _, api in ipairs(schema.apis) do
      tables[api.table] = tables[api.table] or {}
      tables[api.table][api.operation] = api
    end
  end
  local apis = tables[table_name]
  if not apis then
    local names = {}
    for name in pairs(tables) do
      names[#names + 1] = name
    end
    table.sort(names)
    local nearest = type(table_name) == "string" and nearest_of(table_name, names)
    local expected = nearest and "the name of a table (did you mean " .. nearest .. "?)" or "the name of a table"
    return fail("unknown_api", "librpc", expected, shown(table_name))
  end
  if not apis[operation] then
    local operations = {}
    for _, name in ipairs { "get", "getn", "set", "other" } do
      operations[#operations + 1] = apis[name] and name
    end
    return fail("unknown_api", table_name, table.concat(operations, " or "), shown(operation))
  end
  return apis[operation]
end

-- The input positions of an API by name.
local input_names = setmetatable({}, { __mode = "k" })

local function inputs_of(api)
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

function calling.has_output(api, name)
  for _, position in ipairs(api.output or {}) do
    if position.name == name then
      return true
    end
  end
  return false
end

local function wrong_field(api, name, value)
  if type(name) == "string" and calling.has_output(api, name) then
    local _, code, expected = to_text.skip()
    return fail(code, api.name .. ": " .. name, expected, shown(value))
  end
  local names = names_of(api.input)
  local nearest = type(name) == "string" and nearest_of(name, names)
  local expected = #names == 0 and "no field, because it takes none"
    or nearest and "one of its fields (did you mean " .. nearest .. "?)"
    or "one of " .. table.concat(names, ", ")
  return fail("unknown_field", api.name, expected, shown(name))
end

-- What a position without a value is sent as where the text cannot be empty.
local blanks = { int = "0", unsigned = "0", mac = "00-00-00-00-00-00", skip = "0" }

-- An argument that runs of delimiters separate: nothing before its last value
-- may be empty.
local function fill_gaps(api, parts, last)
  for i = 1, last do
    if parts[i] == "" then
      local position = api.input[i]
      parts[i] = blanks[position.kind]
      if not parts[i] then
        return fail("empty_text", api.name .. ": " .. position.name,
          "a text that is not empty, because the fields behind it would move up", '""')
      end
    end
  end
  return true
end

-- The argument's text of some named fields; those that are left out are sent
-- as 0 or empty.
function calling.encode(name, fields)
  local api, message, code = calling.api_of(name)
  if not api then
    return nil, message, code
  end
  fields = fields or {}
  if type(fields) ~= "table" then
    return fail("bad_type", api.name, "a table of fields", shown(fields))
  end
  local positions = inputs_of(api)
  for field, value in pairs(fields) do
    if not positions[field] then
      return wrong_field(api, field, value)
    end
  end
  local parts, last = {}, 0
  for i, position in ipairs(api.input) do
    local value = fields[position.name]
    local text = ""
    if value ~= nil then
      local problem, expected, found
      text, problem, expected, found = to_text[position.kind](value, position, api)
      if not text then
        return fail(problem, api.name .. ": " .. position.name, expected, found or shown(value))
      end
    end
    parts[i] = text
    if text ~= "" then
      last = i
    end
  end
  if #api.delimiters > 1 then
    local filled
    filled, message, code = fill_gaps(api, parts, last)
    if not filled then
      return nil, message, code
    end
  end
  return table.concat(parts, api.delimiters:sub(1, 1), 1, last)
end

local function split(text, separator)
  local parts, from = {}, 1
  while true do
    local first, last = text:find(separator, from, true)
    parts[#parts + 1] = text:sub(from, (first or 0) - 1)
    if not first then
      return parts
    end
    from = last + 1
  end
end

-- The number whose bytes begin with the text's and go on with zeros.
local function number_of_bytes(text, low_first)
  local number = 0
  for i = 1, 4 do
    local byte = text:byte(low_first and 5 - i or i) or 0
    number = number * 256 + byte
  end
  return number > values.int_most and number - values.unsigned_values or number
end

-- The status of a set. Three sets print theirs as if it began a record; what
-- stands there as a text (the bytes of the number) has lost all behind a zero.
local function decode_status(api, text)
  local form = api.status
  local body = text
  if form then
    local rest = #text - #form.rest
    body = rest >= 0 and text:sub(rest + 1) == form.rest and text:sub(1, rest) or nil
    if body and form.kind ~= "int" and #body <= 4 then
      return number_of_bytes(body, form.kind == "little")
    end
  end
  local number = body and to_value.int(body)
  if not number then
    return fail("bad_text", api.name, "a status", shown(text))
  end
  return number
end

-- The row that a reply's text stands for; of a set, the daemon's status.
function calling.decode(name, text)
  local api, message, code = calling.api_of(name)
  if not api then
    return nil, message, code
  end
  if type(text) ~= "string" then
    return fail("bad_type", api.name, "a reply's text", shown(text))
  end
  if not api.output then
    return decode_status(api, text)
  end
  if #text >= api.longest then
    return fail("cut_reply", api.name, ("a reply of less than %d characters"):format(api.longest),
      ("%d, so that its end may be missing"):format(#text))
  end
  local parts = split(text, api.separator)
  if #parts ~= #api.output then
    return fail("bad_text", api.name, ("a reply of %d fields"):format(#api.output),
      ("%d (a text of the daemon's may hold '%s')"):format(#parts, api.separator))
  end
  local row = {}
  for i, position in ipairs(api.output) do
    local value, expected = to_value[position.kind](parts[i], position)
    if value == nil then
      return fail("bad_text", api.name .. ": " .. position.name, expected, shown(parts[i]))
    end
    row[position.name] = value
  end
  return row
end

-- One call with named fields: the row, or a set's status.
function calling.call(name, fields)
  local text, message, code = calling.encode(name, fields)
  if not text then
    return nil, message, code
  end
  local reply = librpc.callapi(name, text)
  if not reply then
    code, message = status.last()
    return nil, message or name .. ": no reply", code or "failed"
  end
  return calling.decode(name, reply)
end

-- What of a row an argument of the API carries back: no counters, no raw bytes,
-- no `oper` and `res`. Where runs of delimiters count as one, only the fields
-- before the first text that would not stay where it is.
function calling.carried_of(api, row)
  local fields = {}
  for _, position in ipairs(api.input) do
    local value = row[position.name]
    local kind = position.kind
    if #api.delimiters > 1 and kind == "text" and (value == "" or not to_text.text(value, position, api)) then
      break
    end
    if kind ~= "skip" and kind ~= "bytes" and position.name ~= "res" and position.name ~= "oper" then
      fields[position.name] = value
    end
  end
  return fields
end

function calling.carried(name, row)
  local api, message, code = calling.api_of(name)
  if not api then
    return nil, message, code
  end
  return calling.carried_of(api, row)
end

return calling

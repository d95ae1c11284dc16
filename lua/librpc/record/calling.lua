-- Calls with named fields: an argument's text, a reply's row. Everything between
-- here and the other rooms goes by the schema's names; what a caller gives or
-- gets has the names and words of librpc.names where there are any.
local librpc = require "librpc"
local names = require "librpc.names"
local status = require "librpc.status"
local tables = require "librpc.record.tables"
local values = require "librpc.record.values"

local calling = {}
local fail = tables.fail
local to_text, to_value = values.to_text, values.to_value

-- A field's value by the schema: words of its own are numbers there.
function calling.plain_value(view, field, value)
  local numbers = view.numbers[field]
  local number = numbers and numbers[value]
  if number == nil then
    return value
  end
  return number
end

-- A caller's fields, or a row of any names, by the schema's.
function calling.by_schema(view, fields)
  local plain = {}
  for name, value in pairs(fields) do
    local field = view.field[name] or name
    plain[field] = calling.plain_value(view, field, value)
  end
  return plain
end

-- What a position without a value is sent as where the text cannot be empty.
local blanks = { int = "0", unsigned = "0", mac = "00-00-00-00-00-00", skip = "0" }

-- The argument of its fields' texts. Where runs of delimiters separate them,
-- nothing before the last value may be empty: nil and the field that is.
function calling.join(api, texts)
  local parts, last = {}, 0
  for i, position in ipairs(api.input) do
    parts[i] = texts[position.name] or ""
    if parts[i] ~= "" then
      last = i
    end
  end
  for i = 1, #api.delimiters > 1 and last or 0 do
    if parts[i] == "" then
      parts[i] = blanks[api.input[i].kind]
      if not parts[i] then
        return nil, api.input[i].name
      end
    end
  end
  return table.concat(parts, api.delimiters:sub(1, 1), 1, last)
end

-- The argument's text of a caller's fields, by the API and its view. Where one is
-- wrong, wrong.lua says which.
function calling.argument_of(api, view, fields)
  if type(fields) ~= "table" then
    return fail("bad_type", api.name, "a table of fields", fields)
  end
  local inputs, texts, right = tables.inputs_of(api), {}, true
  for name, value in pairs(fields) do
    local field = view.field[name] or name
    local position = inputs[field]
    local text = position and not texts[field]
      and to_text[position.kind](calling.plain_value(view, field, value), position, api)
    right = right and text
    texts[field] = text
  end
  local argument = right and calling.join(api, texts)
  if argument then
    return argument
  end
  return require("librpc.record.wrong").first(api, view, fields)
end

-- The argument's text of some named fields; those that are left out are sent
-- as 0 or empty.
function calling.encode(name, fields)
  local api, view, code = tables.open(name)
  if not api then
    return nil, view, code
  end
  return calling.argument_of(api, view, fields == nil and {} or fields)
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

-- The row that a reply's text stands for, by the schema's names; of a set, the
-- daemon's status.
function calling.row_of(api, view, text)
  if not api.output then
    return require("librpc.record.statuses")(api, text)
  elseif #text >= api.longest then
    return fail("cut_reply", api.name, ("a reply of less than %d characters"):format(api.longest), nil,
      ("%d, so that its end may be missing"):format(#text))
  end
  local parts = split(text, api.separator)
  if #parts ~= #api.output then
    return fail("bad_text", api.name, ("a reply of %d fields"):format(#api.output), nil,
      ("%d (a text of the daemon's may hold '%s')"):format(#parts, api.separator))
  end
  local row = {}
  for i, position in ipairs(api.output) do
    local field = position.name
    local value, expected = to_value[position.kind](parts[i], position)
    if value == nil then
      return fail("bad_text", api.name .. ": " .. (view.name[field] or field), expected, parts[i],
        view.secret[field] and "a secret" or nil)
    end
    row[field] = value
  end
  return row
end

-- The row of a reply's text with the names' names and words; of a set, the status.
function calling.decode(name, text)
  local api, view, code = tables.open(name)
  if not api then
    return nil, view, code
  elseif type(text) ~= "string" then
    return fail("bad_type", api.name, "a reply's text", text)
  end
  local row, message
  row, message, code = calling.row_of(api, view, text)
  if not row then
    return nil, message, code
  end
  return api.output and names.present(view, row) or row
end

-- One call of texts, within so many seconds where they are given: the reply's, or
-- nil, a message and a code.
function calling.exchange(api, text, seconds)
  if seconds then
    local texts, failures = require("librpc.calls").all({ { api.name, text } }, seconds)
    local failure = failures[1] or {}
    return texts[1] or nil, failure.message, failure.code
  end
  local reply = librpc.callapi(api.name, text)
  if not reply then
    local code, message = status.last()
    return nil, message or api.name .. ": no reply", code or "failed"
  end
  return reply
end

-- One call with fields, within so many seconds where they are given: the row by the
-- schema's names, or a set's status.
function calling.call_api(api, view, fields, seconds)
  local text, message, code = calling.argument_of(api, view, fields)
  if not text then
    return nil, message, code
  end
  local reply
  reply, message, code = calling.exchange(api, text, seconds)
  if not reply then
    return nil, message, code
  end
  return calling.row_of(api, view, reply)
end

local option_types = { call_seconds = "number" }

-- The seconds that the options of a function give each call, or nil; false, a message
-- and a code where the options are wrong. `types` are those it has beside.
function calling.seconds_of(where, options, types)
  if options == nil then
    return nil
  end
  local right, message, code = require("librpc.record.problems").check_options(where, options, types or option_types)
  if not right then
    return false, message, code
  end
  return options.call_seconds
end

-- One call with named fields: the row, or a set's status.
function calling.call(name, fields, options)
  local api, view, code = tables.open(name)
  if not api then
    return nil, view, code
  end
  local row, seconds, message
  seconds, message, code = calling.seconds_of("record.call", options)
  if seconds == false then
    return nil, message, code
  end
  row, message, code = calling.call_api(api, view, fields == nil and {} or fields, seconds)
  if not row then
    return nil, message, code
  end
  return api.output and names.present(view, row) or row
end

return calling

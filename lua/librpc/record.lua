-- Named fields for callapi: rows as tables in, rows as tables out, and an error
-- wherever the plain text would lose something without a word. For Lua 5.1 to
-- 5.4 and LuaJIT; see docs/named_fields.md.
--
-- Every function returns nil, a message and a code on failure. A message reads
-- "API: FIELD: expected X, found Y"; the codes stand in record.codes and, for
-- calls that gave no value, in librpc.status.
local librpc = require "librpc"
local schema = require "librpc.schema"
local status = require "librpc.status"

local record = {}

-- What each code of this module means; a failed call has librpc.status's.
record.codes = {
  unknown_api = "no API, or no table, of that name",
  unknown_field = "the API has no field of that name",
  read_only = "the API's argument does not carry that field",
  bad_type = "a value of another type",
  bad_number = "not a number of that kind",
  out_of_range = "the number does not fit",
  bad_mac = "not a MAC address",
  bad_hex = "not bytes in hexadecimal digits",
  bad_list = "not a list of that many numbers",
  too_long = "the text would be cut",
  separator = "the text holds a character that separates fields",
  zero_byte = "the text holds a zero byte, which would end it",
  empty_text = "an empty text where the fields behind it would move up",
  not_carried = "a field that cannot be sent back as it was read",
  cut_reply = "the reply is as long as it can be: its end may be missing",
  bad_text = "the reply's text is not the API's",
  other_row = "the daemon answered with another row",
  no_end = "nothing says which row is the last",
  daemon_status = "the daemon's own result is not 0",
  repeated_row = "the daemon gave a row again",
  too_many_rows = "the daemon gave more rows than the limit",
}

local default_limit = 100000 -- rows of one walk
local int_least, int_most = -2147483648, 2147483647
local unsigned_most, unsigned_values = 4294967295, 4294967296

-- A value as a message shows it: short, on one line, printable.
local function shown(value)
  if type(value) ~= "string" then
    return type(value) == "table" and "a table" or tostring(value)
  end
  local cut = #value > 40
  local text = value:sub(1, 40):gsub("[%c\127-\255\\\"]", function(byte)
    return (byte == '"' or byte == "\\") and "\\" .. byte or ("\\x%02x"):format(byte:byte())
  end)
  return '"' .. text .. '"' .. (cut and ("... (%d characters)"):format(#value) or "")
end

local function fail(code, where, expected, found)
  return nil, ("%s: expected %s, found %s"):format(where, expected, found), code
end

-- How many single edits lie between two names.
local function distance(a, b)
  local row = {}
  for j = 0, #b do
    row[j] = j
  end
  for i = 1, #a do
    local diagonal = row[0]
    row[0] = i
    for j = 1, #b do
      local edit = a:byte(i) == b:byte(j) and diagonal or diagonal + 1
      diagonal = row[j]
      row[j] = math.min(edit, row[j] + 1, row[j - 1] + 1)
    end
  end
  return row[#b]
end

-- The name of the list that is closest to a wrong one, where one is close.
function record.nearest(name, names)
  local best, least = nil, math.max(1, math.floor(#name / 3)) + 1
  for _, candidate in ipairs(names) do
    local edits = distance(name, candidate)
    if edits < least then
      best, least = candidate, edits
    end
  end
  return best
end

local function names_of(list)
  local names = {}
  for i, item in ipairs(list) do
    names[i] = item.name
  end
  return names
end

-- The whole number that `value` is, or nil, a code and what was expected.
local function whole_number(value, least, most)
  local number = value
  if type(value) == "string" then
    number = value:match("^[+-]?%d+$") and tonumber(value)
  end
  if type(number) ~= "number" or number ~= math.floor(number) then
    return nil, "bad_number", "a whole number"
  end
  if number < least or number > most then
    return nil, "out_of_range", ("a number from %.0f to %.0f"):format(least, most)
  end
  return number
end

local function digits_of(number)
  return ("%.0f"):format(number)
end

-- A Lua number without ".0" where the Lua at hand tells integers from others.
local as_integer = math.tointeger or function(number) -- luacheck: ignore 143
  return number
end

-- Checks that a text reaches the record as it is.
local function carried_text(text, longest, delimiters)
  if text:find("\0", 1, true) then
    return nil, "zero_byte", "a text without zero bytes"
  end
  local found = text:match("[" .. delimiters .. "]")
  if found then
    return nil, "separator", ("a text without '%s', which separates fields"):format(found)
  end
  if #text > longest then
    return nil, "too_long", ("at most %d characters"):format(longest), ("%d: "):format(#text) .. shown(text)
  end
  return text
end

-- The bytes of a table of numbers as a text, or nil.
local function text_of_bytes(bytes, most)
  if #bytes > most then
    return nil
  end
  local text = {}
  for i, byte in ipairs(bytes) do
    local number = whole_number(byte, 0, 255)
    if not number then
      return nil
    end
    text[i] = string.char(number)
  end
  return table.concat(text)
end

local function to_hex(bytes, format, separator)
  local digits = {}
  for i = 1, #bytes do
    digits[i] = format:format(bytes:byte(i))
  end
  return table.concat(digits, separator)
end

local function six_pairs(separator)
  local pair = "(%x%x)"
  return "^" .. table.concat({ pair, pair, pair, pair, pair, pair }, separator) .. "$"
end

local mac_notations = {
  six_pairs(""),
  six_pairs(":"),
  six_pairs("%-"),
  "^(%x%x)(%x%x)%.(%x%x)(%x%x)%.(%x%x)(%x%x)$",
}

-- The number of a decimal text, in whichever notation the locale has.
local function real_number(text)
  local special = text:lower():match("^[+-]?(%a+)$")
  if special == "inf" or special == "infinity" then
    return text:sub(1, 1) == "-" and -math.huge or math.huge
  elseif special == "nan" then
    return 0 / 0
  end
  if not text:match("^[+-]?%d*[.,]?%d*[eE]?[+-]?%d*$") then
    return nil
  end
  return tonumber(text) or tonumber((text:gsub("[.,]", { ["."] = ",", [","] = "." })))
end

-- From values to the argument's text, by the position's kind: the text, or nil,
-- a code, what was expected and, where it is not the value itself, what was found.
local to_text = {}

function to_text.int(value)
  local number, code, expected = whole_number(value, int_least, int_most)
  return number and digits_of(number), code, expected
end

-- The library reads every number as a signed one.
function to_text.unsigned(value)
  local number, code, expected = whole_number(value, 0, unsigned_most)
  if number and number > int_most then
    number = number - unsigned_values
  end
  return number and digits_of(number), code, expected
end

function to_text.real(value)
  local number = value
  if type(value) == "string" then
    number = real_number(value)
  end
  if type(number) ~= "number" or number ~= number or number == math.huge or number == -math.huge then
    return nil, "bad_number", "a number"
  end
  return ("%.17g"):format(number)
end

function to_text.text(value, position, api)
  if type(value) == "number" then
    value = tostring(value)
  elseif type(value) ~= "string" then
    return nil, "bad_type", "a text"
  end
  return carried_text(value, position.size - 1, api.delimiters)
end

-- Six bytes into which the text is copied as it is.
function to_text.bytes(value, position, api)
  if type(value) == "table" then
    local bytes = text_of_bytes(value, position.size)
    value = bytes and bytes:gsub("%z+$", "")
  end
  if type(value) ~= "string" then
    return nil, "bad_type", ("a text, or a list of at most %d bytes"):format(position.size)
  end
  return carried_text(value, position.size - 1, api.delimiters)
end

function to_text.mac(value, position)
  if type(value) == "table" then
    local bytes = #value == position.size and text_of_bytes(value, position.size)
    if bytes then
      return to_hex(bytes, "%02X", "-")
    end
  elseif type(value) == "string" then
    for _, notation in ipairs(mac_notations) do
      if value:match(notation) then
        return table.concat({ value:match(notation) }, "-"):upper()
      end
    end
  end
  return nil, "bad_mac", "a MAC address such as 00-11-22-AA-BB-CC"
end

function to_text.hex(value, position)
  local digits
  if type(value) == "table" then
    local bytes = text_of_bytes(value, #value)
    digits = bytes and to_hex(bytes, "%02x")
  elseif type(value) == "string" then
    digits = value:gsub("(%x%x)[:%- ]", "%1"):lower()
    digits = #digits % 2 == 0 and digits:match("^%x*$")
  end
  if not digits then
    return nil, "bad_hex", "bytes in hexadecimal digits, such as 00ff10"
  end
  if #digits > 2 * position.size then
    return nil, "too_long", ("at most %d bytes"):format(position.size), ("%d bytes"):format(#digits / 2)
  end
  return digits
end

function to_text.list(value, position)
  local items = value
  if type(value) == "string" then
    items = {}
    for item in (value .. ","):gmatch("%s*(.-)%s*,") do
      items[#items + 1] = item
    end
  end
  if type(items) ~= "table" or #items ~= position.size then
    local found = type(items) == "table" and ("%d items"):format(#items) or nil
    return nil, "bad_list", ("a list of %d numbers"):format(position.size), found
  end
  local digits = {}
  for i, item in ipairs(items) do
    local number, code, expected = whole_number(item, position.least, position.most)
    if not number then
      return nil, code, ("%s as item %d"):format(expected, i), shown(item)
    end
    digits[i] = digits_of(number)
  end
  local text = table.concat(digits, ",")
  if #text > position.longest then
    return nil, "too_long", ("a list of at most %d characters"):format(position.longest),
      ("%d characters"):format(#text)
  end
  return text
end

function to_text.skip()
  return nil, "read_only", "no value, because the argument does not carry this field"
end

-- From a position of the reply's text to a value: the value, or nil and what
-- was expected.
local to_value = {}

function to_value.int(text)
  local number = text:match("^-?%d+$") and tonumber(text)
  if not number or number < int_least or number > int_most then
    return nil, "a whole number"
  end
  return number
end

-- Some are printed signed.
function to_value.unsigned(text)
  local number = text:match("^-?%d+$") and tonumber(text)
  if not number or number < int_least or number > unsigned_most then
    return nil, "a whole number"
  end
  return number < 0 and number + unsigned_values or number
end

-- 64 bits do not fit a number of Lua 5.1: counters stay digits, see
-- record.difference.
function to_value.counter(text)
  return text:match("^-?%d+$"), "a whole number"
end

function to_value.real(text)
  return real_number(text), "a number"
end

function to_value.text(text, position)
  return #text <= position.size and text or nil, ("at most %d characters"):format(position.size)
end

function to_value.mac(text)
  return text:match("^%x%x%-%x%x%-%x%x%-%x%x%-%x%x%-%x%x$"), "a MAC address"
end

function to_value.hex(text, position)
  if not text:match("^%x*$") or #text % 2 ~= 0 or #text > 2 * position.size then
    return nil, ("at most %d bytes in hexadecimal digits"):format(position.size)
  end
  return text
end

function to_value.list(text, position)
  local items = {}
  for item in (text .. ","):gmatch("(.-),") do
    items[#items + 1] = to_value.int(item)
  end
  if #items ~= position.size then
    return nil, ("a list of %d numbers"):format(position.size)
  end
  return items
end

local function api_of(name)
  local api = type(name) == "string" and schema.api(name)
  if api then
    return api
  end
  local nearest = type(name) == "string" and record.nearest(name, names_of(schema.apis))
  local expected = nearest and "the name of an API (did you mean " .. nearest .. "?)" or "the name of an API"
  return fail("unknown_api", "librpc", expected, shown(name))
end

-- The API of a table's operation ("get", "getn" or "set").
local tables -- by name: { get = api, getn = api, set = api }

function record.find(table_name, operation)
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
    local nearest = type(table_name) == "string" and record.nearest(table_name, names)
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

local function has_output(api, name)
  for _, position in ipairs(api.output or {}) do
    if position.name == name then
      return true
    end
  end
  return false
end

local function wrong_field(api, name, value)
  if type(name) == "string" and has_output(api, name) then
    local _, code, expected = to_text.skip()
    return fail(code, api.name .. ": " .. name, expected, shown(value))
  end
  local names = names_of(api.input)
  local nearest = type(name) == "string" and record.nearest(name, names)
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
function record.encode(name, fields)
  local api, message, code = api_of(name)
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
  return number > int_most and number - unsigned_values or number
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
function record.decode(name, text)
  local api, message, code = api_of(name)
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
function record.call(name, fields)
  local text, message, code = record.encode(name, fields)
  if not text then
    return nil, message, code
  end
  local reply = librpc.callapi(name, text)
  if not reply then
    code, message = status.last()
    return nil, message or name .. ": no reply", code or "failed"
  end
  return record.decode(name, reply)
end

-- What of a row an argument of the API carries back: no counters, no raw bytes,
-- no `oper` and `res`. Where runs of delimiters count as one, only the fields
-- before the first text that would not stay where it is.
local function carried(api, row)
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

function record.carried(name, row)
  local api, message, code = api_of(name)
  if not api then
    return nil, message, code
  end
  return carried(api, row)
end

local function result_is_not_0(row)
  return row.res ~= nil and row.res ~= 0
end

-- Walks a table by its getn API from the row behind `key` (a table of fields;
-- nil: the first row) and returns an array of rows. Each row is the key of the
-- next. The walk ends at a row whose `res` is not 0; options may change that:
--   done(row)  true at the end, which is not a row
--   next(row)  the fields of the request for the row behind this one
--   limit      rows at most, 100000 if not given
-- On an error the rows so far are the fourth value.
function record.rows(name, key, options)
  local rows, asked, fields = {}, {}, key or {}
  local function stop(_, message, code)
    return nil, message, code, rows
  end
  local api, problem, code = api_of(name)
  if not api then
    return stop(nil, problem, code)
  elseif api.operation ~= "getn" then
    return stop(fail("unknown_api", api.name, "a getn API", shown(api.operation)))
  end
  options = options or {}
  local done, limit = options.done or result_is_not_0, options.limit or default_limit
  if not options.done and not has_output(api, "res") then
    return stop(fail("no_end", api.name, "a `done` option, because its rows have no `res`", "none"))
  end
  while true do
    local text, row
    text, problem, code = record.encode(name, fields)
    if not text then
      return stop(nil, problem, code)
    elseif asked[text] then
      return stop(fail("repeated_row", api.name, "another row", "row " .. shown(text) .. " again"))
    end
    asked[text] = true
    row, problem, code = record.call(name, fields)
    if not row then
      return stop(nil, problem, code)
    elseif done(row) then
      return rows
    elseif #rows >= limit then
      return stop(fail("too_many_rows", api.name, ("at most %d rows"):format(limit), "more"))
    end
    rows[#rows + 1] = row
    if options.next then
      fields = options.next(row)
    else
      fields = carried(api, row)
      fields.oper = key and key.oper
    end
  end
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
function record.change(table_name, fields)
  local get, message, code = record.find(table_name, "get")
  if not get then
    return nil, message, code
  end
  local set
  set, message, code = record.find(table_name, "set")
  if not set then
    return nil, message, code
  end
  local sent, ok, row
  sent, message, code = record.encode(set.name, fields)
  if not sent then
    return nil, message, code
  end
  local key = carried(get, fields)
  row, message, code = record.call(get.name, key)
  if not row then
    return nil, message, code
  end
  if result_is_not_0(row) then
    return fail("daemon_status", get.name .. ": res", "the row to change, with 0", shown(row.res))
  end
  ok, message, code = asked_for(get, key, row)
  if not ok then
    return nil, message, code
  end
  local whole = carried(set, row)
  for name, value in pairs(fields) do
    whole[name] = value
  end
  for _, position in ipairs(set.input) do
    if position.kind == "bytes" and whole[position.name] == nil then
      return fail("not_carried", set.name .. ": " .. position.name,
        "a value, because the argument cannot carry the row's own", shown(row[position.name]))
    end
  end
  return record.call(set.name, whole)
end

-- How far a counter went from `earlier` to `later`, over the end of its 64 bits
-- if need be: the shorter way, so below 0 where it went back; exact up to 2^53.
function record.difference(later, earlier)
  local high, low = 0, 0
  for sign, counter in pairs { [1] = later, [-1] = earlier } do
    local minus, digits = tostring(counter):match("^(-?)(%d+)$")
    if not digits then
      return fail("bad_number", "record.difference", "a counter's digits", shown(counter))
    end
    local to = minus == "-" and -sign or sign
    high = high + to * (tonumber(digits:sub(1, -11)) or 0)
    low = low + to * tonumber(digits:sub(-10))
  end
  high, low = high + math.floor(low / 1e10), low % 1e10
  if high * 1e10 + low >= 2 ^ 63 then -- 2^64 is 1844674407 3709551616
    high, low = high - 1844674407, low - 3709551616
  elseif high * 1e10 + low < -2 ^ 63 then
    high, low = high + 1844674407, low + 3709551616
  end
  return as_integer(high * 1e10 + low)
end

return record

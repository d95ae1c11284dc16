-- What librpc.record says when something is wrong: the codes, the shape of a
-- message, the suggestion for a misspelt name. Loaded when the first is wanted.
local printable = require "librpc.record.printable"
local schema = require "librpc.schema"

local problems = {}

-- What each code of librpc.record means; a failed call has librpc.status's.
problems.codes = {
  unknown_api = "no API, or no table, of that name",
  no_operation = "the table has no such operation",
  unknown_field = "the API has no field of that name",
  unknown_option = "no option of that name",
  same_field = "two names of one field",
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
  no_key = "the fields that say which row are missing",
  no_row = "the daemon has no such row",
  row_exists = "the daemon has such a row already",
  not_carried = "a field that cannot be sent back as it was read",
  cut_reply = "the reply is as long as it can be: its end may be missing",
  bad_text = "the reply's text is not the API's",
  other_row = "the daemon answered with another row",
  no_end = "nothing says which row is the last",
  daemon_status = "the daemon's own result is not 0",
  repeated_row = "the daemon gave a row again",
  too_many_rows = "the daemon gave more rows than the limit",
  deadline = "the rows did not end in time",
  two_sets = "two sets of one table at once, whose order nobody promises",
  bad_names = "a file of names has mistakes, so that none is used",
}

local most_shown = 40 -- characters of a text

-- How many characters of UTF-8 a text has, each byte that is none counting too.
local function characters_of(text)
  local continued = text:gsub("[\194-\244][\128-\191]+", "x")
  return #continued
end

-- The text's first characters.
local function beginning_of(text)
  local last = 0
  for _ = 1, most_shown do
    last = select(2, text:find("^[\194-\244][\128-\191]+", last + 1)) or last + 1
  end
  return text:sub(1, math.min(last, 4 * most_shown))
end

local function quoted(text)
  local shown = printable.line(beginning_of(text)):gsub('"', '\\"')
  return '"' .. shown .. '"' .. (characters_of(text) > most_shown and "..." or "")
end

-- A value as a message shows it: short, on one line, printable. This is the only
-- place that escapes, and it leaves no control character.
function problems.shown(value)
  if type(value) ~= "string" then
    return type(value) == "table" and "a table" or (tostring(value):gsub("%.0$", "")) -- 5, of Lua 5.3's floats, too
  end
  local count = characters_of(value)
  return quoted(value) .. (count > most_shown and (" (%d characters)"):format(count) or "")
end

-- A text that is longer than `longest` bytes: what was expected and found.
function problems.too_long(text, longest)
  local bytes, characters = #text, characters_of(text)
  if bytes == characters then
    return ("at most %d characters"):format(longest), ("%d: %s"):format(bytes, quoted(text))
  end
  return ("at most %d bytes"):format(longest),
    ("%d bytes in %d characters: %s"):format(bytes, characters, quoted(text))
end

-- nil, "WHERE: expected X, found Y" and the code.
function problems.fail(code, where, expected, found)
  return nil, ("%s: expected %s, found %s"):format(where, expected, found), code
end

-- How many single edits lie between two names; two letters that changed places are one.
local function distance(a, b)
  local before, row = nil, {}
  for j = 0, #b do
    row[j] = j
  end
  for i = 1, #a do
    local last = row
    row = { [0] = i }
    for j = 1, #b do
      local edit = a:byte(i) == b:byte(j) and 0 or 1
      row[j] = math.min(last[j - 1] + edit, last[j] + 1, row[j - 1] + 1)
      if before and j > 1 and a:byte(i) == b:byte(j - 1) and a:byte(i - 1) == b:byte(j) then
        row[j] = math.min(row[j], before[j - 2] + 1)
      end
    end
    before = last
  end
  return row[#b]
end

-- The name of the list that is closest to a wrong one, where one is close. A
-- name that is far longer than another is no misspelling of it.
function problems.nearest(name, names)
  if type(name) ~= "string" then
    return nil
  end
  local best, least = nil, math.max(1, math.floor(#name / 3)) + 1
  for _, candidate in ipairs(names) do
    if math.abs(#name - #candidate) < least and #name < 2 * #candidate then
      local edits = distance(name, candidate)
      if edits < least then
        best, least = candidate, edits
      end
    end
  end
  return best
end

-- What a wrong name of a list should have been: `what`, with a suggestion.
function problems.meant(what, name, names)
  local nearest = problems.nearest(name, names)
  return nearest and ("%s (did you mean %s?)"):format(what, nearest) or what
end

-- The names in a table, sorted.
function problems.names_in(map)
  local list = {}
  for name in pairs(map) do
    list[#list + 1] = name
  end
  table.sort(list)
  return list
end

-- What a name that is none of a table's should have been.
function problems.one_of(known, name)
  local list = problems.names_in(known)
  return problems.meant("one of " .. table.concat(list, ", "), name, list)
end

local function unknown(what, name, known)
  return problems.fail("unknown_api", "librpc", problems.meant("the name of " .. what, name, known),
    problems.shown(name))
end

-- What fail gives for a name that no API has.
function problems.unknown_api(name)
  local known = {}
  for i, api in ipairs(schema.apis) do
    known[i] = api.name
  end
  return unknown("an API", name, known)
end

-- The names of all tables, sorted.
local function table_names()
  local seen = {}
  for _, api in ipairs(schema.apis) do
    seen[api.table] = true
  end
  return problems.names_in(seen)
end

-- What a name that no table has should have been.
function problems.meant_table(name)
  return problems.meant("the name of a table", name, table_names())
end

-- What fail gives for it.
function problems.unknown_table(name)
  return unknown("a table", name, table_names())
end

-- What fail gives for an operation that the table's APIs do not have.
function problems.no_operation(table_name, apis, operation)
  local there = {}
  for _, name in ipairs { "get", "getn", "set", "other" } do
    there[#there + 1] = apis[name] and name
  end
  return problems.fail("no_operation", table_name, table.concat(there, " or "), problems.shown(operation))
end

-- Checks a table of options: true, or what fail gives.
function problems.check_options(where, options, types)
  if type(options) ~= "table" then
    return problems.fail("bad_type", where .. ": options", "a table", problems.shown(options))
  end
  for name, value in pairs(options) do
    if not types[name] then
      return problems.fail("unknown_option", where .. ": options", problems.one_of(types, name), problems.shown(name))
    elseif type(value) ~= types[name] or value ~= value or type(value) == "number" and value < 0 then
      return problems.fail("bad_type", where .. ": options." .. name,
        types[name] == "number" and "a number from 0" or "a " .. types[name], problems.shown(value))
    end
  end
  return true
end

return problems

-- The words that a file of names says of a table and of a field, and what each may
-- be. A new word is a function and a row of the tables at the end; tell it in
-- docs/named_fields.md.
local tables = require "librpc.record.tables"

local words = {}

local function shown(value)
  return require("librpc.record.problems").shown(value)
end

-- Checks of a word's value: nil when it is right, else what was expected and,
-- where it is not the value itself, what was found.
local function line(value)
  if type(value) ~= "string" or value == "" or value:find("%c") then
    return "a text of one line"
  end
end

local function text(value)
  if type(value) ~= "string" or value == "" then
    return "a text"
  end
end

local function truth(value)
  if type(value) ~= "boolean" then
    return "true or false"
  end
end

local function identifier(value)
  if type(value) ~= "string" or not value:match("^[%a_][%w_]*$") then
    return "a name of letters, digits and underscores"
  end
end

local function numbers(value)
  if type(value) ~= "table" or #value == 0 then
    return "a list of numbers"
  end
  for _, number in ipairs(value) do
    if type(number) ~= "number" or number ~= math.floor(number) or number == 0 then
      return "a list of whole numbers that are not 0", shown(number)
    end
  end
end

local key_kinds = { int = true, unsigned = true, text = true, mac = true, hex = true }

-- Fields that the argument of the table's get or getn carries; {}: one row.
local function key(value, apis)
  if type(value) ~= "table" then
    return "a list of fields"
  end
  local count, reader, seen = 0, apis.get or apis.getn or apis.set or apis.other, {}
  for _ in pairs(value) do
    count = count + 1
  end
  if count ~= #value then
    return "a list of fields"
  end
  for _, field in ipairs(value) do
    local position = tables.inputs_of(reader)[field]
    if not position or not key_kinds[position.kind] then
      return "fields that the argument carries", shown(field)
    elseif seen[field] then
      return "each field once", shown(field) .. " again"
    end
    seen[field] = true
  end
end

local whole = { int = true, unsigned = true }

local function values(value, position)
  if not whole[position.kind] then
    return "none, because the field is no whole number", "some"
  elseif type(value) ~= "table" or next(value) == nil then
    return "words by their numbers"
  end
  local seen = {}
  for number, word in pairs(value) do
    if type(number) ~= "number" or number ~= math.floor(number) then
      return "whole numbers in brackets", shown(number)
    elseif line(word) then
      return "a text of one line for " .. number, shown(word)
    elseif seen[word] then
      return "words of their own", shown(word) .. " twice"
    elseif tonumber(word) and tonumber(word) ~= number then
      return "a word for " .. number .. " that is no other number", shown(word)
    end
    seen[word] = true
  end
end

local function exact(value, position)
  if position.kind ~= "real" then
    return "nothing, because only a real prints less than it holds"
  end
  return truth(value)
end

-- What a table or a field is to a page that knows no device: hints, for a front panel,
-- plots, an identity. Who wants another role adds it here.
words.roles_of_table = { device = "the identity of the device" }
words.roles_of_field = {
  port = "the number of a port",
  port_name = "what people call the port",
  enabled = "whether it is switched on",
  link = "whether it has a link",
  speed = "the speed of its link",
  errors_in = "counts frames that came with an error",
  errors_out = "counts frames that could not be sent",
  octets_in = "counts bytes that came",
  octets_out = "counts bytes that were sent",
  packets_in = "counts frames that came",
  packets_out = "counts frames that were sent",
}

local function role(known)
  return function(value)
    if not known[value] then
      return require("librpc.record.problems").one_of(known, value)
    end
  end
end

words.of_table = { title = line, description = text, key = key, ends = numbers,
  table_role = role(words.roles_of_table) } -- a field may be called role
words.of_field = { name = identifier, title = line, unit = line, description = text, values = values,
  secret = truth, exact = exact, role = role(words.roles_of_field) }

return words

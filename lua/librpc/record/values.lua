-- Values and the texts that stand for them: what an argument's text holds for a
-- value, and what value a position of a reply's text is, by the position's kind.
-- Numbers and texts are here, the other kinds in kinds.lua, which is loaded when the
-- first of them comes; there a new kind of common/schema.cpp is a function in each
-- of the two tables.
local values = {}

local int_least, int_most = -2147483648, 2147483647
local unsigned_most, unsigned_values = 4294967295, 4294967296

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
    return nil, "too_long", require("librpc.record.problems").too_long(text, longest)
  end
  return text
end

local other_kinds = {
  __index = function(of_kind, kind)
    require("librpc.record.kinds")(values)
    return rawget(of_kind, kind)
  end,
}

-- From values to the argument's text, by the position's kind: the text, or nil,
-- a code, what was expected and, where it is not the value itself, what was found.
local to_text = setmetatable({}, other_kinds)
values.to_text = to_text

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

function to_text.text(value, position, api)
  if type(value) == "number" then
    value = tostring(value)
  elseif type(value) ~= "string" then
    return nil, "bad_type", "a text"
  end
  return carried_text(value, position.size - 1, api.delimiters)
end

-- From a position of the reply's text to a value: the value, or nil and what
-- was expected.
local to_value = setmetatable({}, other_kinds)
values.to_value = to_value

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
-- librpc.record.difference.
function to_value.counter(text)
  return text:match("^-?%d+$"), "a whole number"
end

function to_value.text(text, position)
  if #text > position.size then
    return nil, ("at most %d characters"):format(position.size)
  end
  return text
end

values.whole_number, values.digits_of, values.carried_text = whole_number, digits_of, carried_text
values.int_least, values.int_most = int_least, int_most
values.unsigned_most, values.unsigned_values = unsigned_most, unsigned_values

return values

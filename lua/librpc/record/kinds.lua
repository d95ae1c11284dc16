-- The kinds of values that few fields have: MAC addresses, bytes, hexadecimal,
-- lists and reals; see values.lua, to whose two tables they are added.
local to_text, to_value = {}, {}
local values

local function shown(value)
  return require("librpc.record.problems").shown(value)
end

-- The bytes of a table of numbers as a text, or nil.
local function text_of_bytes(bytes, most)
  if #bytes > most then
    return nil
  end
  local text = {}
  for i, byte in ipairs(bytes) do
    local number = values.whole_number(byte, 0, 255)
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

-- The number of a decimal text, in whichever notation the locale has; nil for
-- infinities and for what is no number.
local function real_number(text)
  if not text:match("^[+-]?%d*[.,]?%d*[eE]?[+-]?%d*$") then
    return nil
  end
  local number = tonumber(text) or tonumber((text:gsub("[.,]", { ["."] = ",", [","] = "." })))
  return number and math.abs(number) < math.huge and number or nil
end

function to_text.real(value)
  local number = type(value) == "number" and math.abs(value) < math.huge and value
    or type(value) == "string" and real_number(value)
  if not number then
    return nil, "bad_number", "a number"
  end
  local text = ("%.17g"):format(number)
  if os.setlocale(nil, "numeric") ~= "C" then
    -- the library reads the locale's point, LuaJIT writes its own: none, then
    local whole, fraction, exponent = text:match("^(-?%d+)[.,](%d+)e?(.*)$")
    text = whole and ("%s%se%d"):format(whole, fraction, (tonumber(exponent) or 0) - #fraction) or text
  end
  return text
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
  return values.carried_text(value, position.size - 1, api.delimiters)
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
    local number, code, expected = values.whole_number(item, position.least, position.most)
    if not number then
      return nil, code, ("%s as item %d"):format(expected, i), shown(item)
    end
    digits[i] = values.digits_of(number)
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

function to_value.real(text)
  return real_number(text), "a number"
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
    items[#items + 1] = values.whole_number(item, position.least, position.most)
  end
  if #items ~= position.size then
    return nil, ("a list of %d numbers"):format(position.size)
  end
  return items
end

return function(of_all)
  values = of_all
  for kind, convert in pairs(to_text) do
    values.to_text[kind] = convert
  end
  for kind, convert in pairs(to_value) do
    values.to_value[kind] = convert
  end
end

-- JSON in and out, by lua-cjson: bounded when it is read; when it is written, with
-- arrays that may be empty, which a table of Lua does not tell from an object, and
-- with UTF-8 whatever bytes the device's texts have.
local cjson = require("cjson").new() -- whose settings are nobody else's

local json = { null = cjson.null }

local deepest = 8 -- an object's place in another one; no request is deeper than 5

cjson.decode_max_depth(deepest)
cjson.decode_invalid_numbers(false)

local array, raw = {}, {} -- metatables

-- A list that is written as an array, empty or not.
function json.array(list)
  return setmetatable(list, array)
end

-- JSON that is written already.
function json.raw(text)
  return setmetatable({ text }, raw)
end

-- What a character of UTF-8 can be, by its number of bytes.
local characters = {
  "^[%z\1-\127]+", "^[\194-\223][\128-\191]", "^\224[\160-\191][\128-\191]",
  "^[\225-\236\238\239][\128-\191][\128-\191]", "^\237[\128-\159][\128-\191]",
  "^\240[\144-\191][\128-\191][\128-\191]", "^[\241-\243][\128-\191][\128-\191][\128-\191]",
  "^\244[\128-\143][\128-\191][\128-\191]",
}

-- Where the character at a place ends, nil where none begins there.
local function character_end(text, from)
  for i = 1, #characters do
    local last = select(2, text:find(characters[i], from))
    if last then
      return last
    end
  end
end

-- The text with U+FFFD in place of each byte that is no UTF-8, and whether there is one.
local function as_utf8(text)
  if not text:find("[\128-\255]") then
    return text, false
  end
  local parts, from, replaced = {}, 1, false
  while from <= #text do
    local last = character_end(text, from)
    if last then
      parts[#parts + 1] = text:sub(from, last)
    else
      parts[#parts + 1], last, replaced = "\239\191\189", from, true
    end
    from = last + 1
  end
  return table.concat(parts), replaced
end

-- The text as UTF-8.
function json.utf8(text)
  return (as_utf8(text))
end

local function text_of(text)
  return cjson.encode((as_utf8(text)))
end

local write

local function write_array(list, out)
  out[#out + 1] = "["
  for i = 1, #list do
    if i > 1 then
      out[#out + 1] = ","
    end
    write(list[i], out)
  end
  out[#out + 1] = "]"
end

-- Sorted by name, so that what is the same reads the same.
local function write_object(object, out)
  local names = {}
  for name in pairs(object) do
    names[#names + 1] = name
  end
  table.sort(names)
  out[#out + 1] = "{"
  for i = 1, #names do
    out[#out + 1] = (i > 1 and "," or "") .. text_of(names[i]) .. ":"
    write(object[names[i]], out)
  end
  out[#out + 1] = "}"
end

function write(value, out)
  if type(value) == "string" then
    out[#out + 1] = text_of(value)
  elseif type(value) ~= "table" then
    out[#out + 1] = cjson.encode(value)
  elseif getmetatable(value) == raw then
    out[#out + 1] = value[1]
  elseif getmetatable(value) == array or value[1] ~= nil then
    write_array(value, out)
  else
    write_object(value, out)
  end
end

-- A value as JSON: nil nowhere, json.null where there is none; a table with a first
-- item, or one of json.array, is an array, any other an object by its texts.
function json.encode(value)
  local out = {}
  write(value, out)
  return table.concat(out)
end

-- The value of a text; nil and a sentence where it is no JSON, too deep or no UTF-8.
function json.decode(text)
  if select(2, as_utf8(text)) then
    return nil, "expected UTF-8, found bytes that are none"
  end
  local right, value = pcall(cjson.decode, text)
  if not right then
    return nil, (tostring(value):gsub("^.-:%d+: ", ""))
  end
  return value
end

-- Whether a decoded value is an object, whether it is an array; of an empty one, both.
function json.is_object(value)
  return type(value) == "table" and value[1] == nil
end

function json.is_array(value)
  return type(value) == "table" and (next(value) == nil or value[1] ~= nil)
end

return json

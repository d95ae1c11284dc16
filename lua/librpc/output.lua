-- How rpcctl writes: aligned tables for people, tab-separated lines for
-- programs, JSON. Texts of the daemons are shown without their control
-- characters, so that none of them reaches a terminal.
local output = {}

-- The length of the UTF-8 sequence at `at`, or nil where there is none.
local function sequence(text, at)
  local first, second = text:byte(at, at + 1)
  local length = first < 0x80 and 1
    or first >= 0xC2 and first <= 0xDF and 2
    or first >= 0xE0 and first <= 0xEF and 3
    or first >= 0xF0 and first <= 0xF4 and 4
  if not length or at + length - 1 > #text then
    return nil
  end
  for i = at + 1, at + length - 1 do
    local byte = text:byte(i)
    if byte < 0x80 or byte > 0xBF then
      return nil
    end
  end
  local overlong = first == 0xE0 and second < 0xA0 or first == 0xF0 and second < 0x90
  local beyond = first == 0xED and second > 0x9F or first == 0xF4 and second > 0x8F
  return not (overlong or beyond) and length or nil
end

-- Calls plain(text) or odd(byte) for each piece of a text: UTF-8 characters,
-- and the bytes that are none. Returns the pieces' results joined.
local function translate(text, plain, odd)
  local pieces, at = {}, 1
  while at <= #text do
    local length = sequence(text, at)
    pieces[#pieces + 1] = length and plain(text:sub(at, at + length - 1)) or odd(text:byte(at))
    at = at + (length or 1)
  end
  return table.concat(pieces)
end

local short_escapes = { ["\t"] = "\\t", ["\n"] = "\\n", ["\r"] = "\\r", ["\\"] = "\\\\" }

local function hex_escape(byte)
  return ("\\x%02x"):format(byte)
end

local function printable_character(character)
  -- C1 controls are two bytes in UTF-8
  if character:match("^[%c\\]$") or character:match("^\194[\128-\159]$") then
    return short_escapes[character] or character:gsub(".", function(byte)
      return hex_escape(byte:byte())
    end)
  end
  return character
end

-- A text on one line of printable characters.
function output.printable(text)
  if not text:find("[%c\\\127-\255]") then
    return text
  end
  return translate(text, printable_character, hex_escape)
end

-- A field's value as one cell.
function output.cell(value)
  if value == nil then
    return ""
  elseif type(value) == "table" then
    local items = {}
    for i, item in ipairs(value) do
      items[i] = output.cell(item)
    end
    return table.concat(items, ",")
  elseif type(value) == "number" then
    return ("%.14g"):format(value)
  end
  return output.printable(tostring(value))
end

local json_escapes = { ['"'] = '\\"', ["\\"] = "\\\\", ["\n"] = "\\n", ["\r"] = "\\r", ["\t"] = "\\t" }

local function json_character(character)
  if character:match('^[%c"\\]$') then
    return json_escapes[character] or ("\\u%04x"):format(character:byte())
  end
  return character
end

local function json_byte(byte)
  return ("\\u%04x"):format(byte)
end

-- A JSON text. An array is a table with [1], or one marked by output.array; the
-- keys of others come in the order of `order`, or sorted. Bytes that are not
-- UTF-8 stand as the character of that number.
function output.json(value, order)
  if type(value) == "string" then
    return '"' .. translate(value, json_character, json_byte) .. '"'
  elseif type(value) == "number" then
    if value ~= value or value == math.huge or value == -math.huge then
      return "null"
    end
    return value == math.floor(value) and math.abs(value) < 2 ^ 53 and ("%.0f"):format(value)
      or (("%.17g"):format(value):gsub(",", "."))
  elseif type(value) ~= "table" then
    return tostring(value)
  end
  local items = {}
  if value[1] ~= nil or getmetatable(value) == output.array then
    for i, item in ipairs(value) do
      items[i] = output.json(item, order)
    end
    return "[" .. table.concat(items, ",") .. "]"
  end
  local keys = {}
  for _, key in ipairs(order or {}) do
    keys[#keys + 1] = value[key] ~= nil and key or nil
  end
  if #keys == 0 then
    for key in pairs(value) do
      keys[#keys + 1] = key
    end
    table.sort(keys)
  end
  for i, key in ipairs(keys) do
    items[i] = output.json(key) .. ":" .. output.json(value[key])
  end
  return "{" .. table.concat(items, ",") .. "}"
end

-- Marks an array that may be empty.
output.array = {}

function output.as_array(list)
  return setmetatable(list, output.array)
end

-- How wide a text is on a terminal: its characters, not its bytes.
local function width(text)
  local _, continuations = text:gsub("[\128-\191]", "")
  return #text - continuations
end

local colours = { header = "1", changed = "1;33" }

-- Lines of cells. A cell is a text, or { text, style } in one of the colours.
-- aligned: columns side by side, for people; otherwise tabs, for programs.
-- A cell beyond `most` characters is cut, with a sign that it was.
function output.lines(rows, options)
  local widths, lines = {}, {}
  local function text_of(cell)
    return type(cell) == "table" and cell[1] or cell
  end
  local function fitted(text)
    local most = options.aligned and options.most
    if not most or width(text) <= most then
      return text
    end
    local cut = translate(text, function(character)
      most = most - 1
      return most >= 3 and character or ""
    end, hex_escape)
    return cut .. "..."
  end
  for _, row in ipairs(rows) do
    for i, cell in ipairs(row) do
      widths[i] = math.max(widths[i] or 0, width(fitted(text_of(cell))))
    end
  end
  for n, row in ipairs(rows) do
    local cells = {}
    for i, cell in ipairs(row) do
      local text = fitted(text_of(cell))
      local padding = options.aligned and i < #row and (" "):rep(widths[i] - width(text)) or ""
      local colour = type(cell) == "table" and options.coloured and colours[cell[2]]
      cells[i] = (colour and "\27[" .. colour .. "m" .. text .. "\27[0m" or text) .. padding
    end
    lines[n] = table.concat(cells, options.aligned and "  " or "\t") .. "\n"
  end
  return table.concat(lines)
end

-- True when standard output is a terminal.
function output.is_terminal()
  local result = os.execute("test -t 1")
  return result == true or result == 0
end

-- True when colours are welcome on that terminal.
function output.is_coloured()
  local refusal = os.getenv("NO_COLOR")
  return (refusal == nil or refusal == "") and os.getenv("TERM") ~= "dumb"
end

return output

-- How rpcctl writes a value: as a cell, as JSON, and cells in aligned lines. Texts
-- of the daemons are shown without what would change how a terminal shows the rest.
local printable = require "librpc.record.printable"

local output = {}
local translate = printable.translate
output.printable = printable.line

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
  if json_escapes[character] then
    return json_escapes[character]
  elseif printable.hidden(character) then
    return ("\\u%04x"):format(printable.number(character))
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

-- The characters that take two columns of a terminal, and those that take none.
local wide = {
  { 0x1100, 0x115F }, { 0x2E80, 0x303E }, { 0x3041, 0xA4CF }, { 0xAC00, 0xD7A3 }, { 0xF900, 0xFAFF },
  { 0xFE30, 0xFE6F }, { 0xFF00, 0xFF60 }, { 0xFFE0, 0xFFE6 }, { 0x1F300, 0x1F64F }, { 0x1F680, 0x1F6FF },
  { 0x1F900, 0x1F9FF }, { 0x20000, 0x3FFFD },
}
local narrow = { { 0x300, 0x36F }, { 0x200B, 0x200D }, { 0x20D0, 0x20FF }, { 0xFE00, 0xFE0F } }

local function width_of(character)
  local number = #character > 1 and printable.number(character) or 0
  return number < 0x300 and 1 or printable.is_in(wide, number) and 2 or printable.is_in(narrow, number) and 0 or 1
end

-- How many columns of a terminal a printable text takes.
function output.width(text)
  if not text:find("[\128-\255]") then
    return #text
  end
  local columns = 0
  translate(text, function(character)
    columns = columns + width_of(character)
    return ""
  end, function()
    columns = columns + 1
    return ""
  end)
  return columns
end
local width = output.width

-- A text in at most so many columns, with a sign where it was cut.
function output.fitted(text, most)
  if not most or width(text) <= most then
    return text
  end
  local sign = most > 3 and "..." or ("."):rep(most)
  local left = most - #sign
  return translate(text, function(character)
    left = left - width_of(character)
    return left >= 0 and character or ""
  end, printable.escape) .. sign
end

local colours = { header = "1", changed = "1;33", note = "2", well = "32", wrong = "1;31" }

-- A text in a colour, where colours are wanted.
function output.styled(text, style, coloured)
  return coloured and colours[style] and "\27[" .. colours[style] .. "m" .. text .. "\27[0m" or text
end

-- One line of cells, each a text or { text, style }, in columns of these widths, or
-- with tabs between where there are none.
function output.line(cells, widths, coloured)
  local shown = {}
  for i, cell in ipairs(cells) do
    local text = type(cell) == "table" and cell[1] or cell
    local style = type(cell) == "table" and cell[2]
    local padding = ""
    if widths then
      text = output.fitted(text, widths[i])
      padding = i < #cells and (" "):rep(widths[i] - width(text)) or ""
    end
    shown[i] = output.styled(text, style, coloured) .. padding
  end
  return table.concat(shown, widths and "  " or "\t") .. "\n"
end

-- Lines of cells side by side (aligned), or with tabs between. A cell of more than
-- `most` columns is cut.
function output.lines(rows, options)
  local widths, lines = options.aligned and {}, {}
  for _, row in ipairs(widths and rows or {}) do
    for i, cell in ipairs(row) do
      local wanted = width(type(cell) == "table" and cell[1] or cell)
      widths[i] = math.max(widths[i] or 0, math.min(wanted, options.most or wanted))
    end
  end
  for n, row in ipairs(rows) do
    lines[n] = output.line(row, widths, options.coloured)
  end
  return table.concat(lines)
end

return output

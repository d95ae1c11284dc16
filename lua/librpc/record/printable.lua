-- Texts of daemons as they may be shown: UTF-8 taken apart, and what would change
-- how a terminal or a reader shows the rest (control characters, marks that turn
-- the direction of writing, bytes that are no UTF-8) written as `\x1b`.
local printable = {}

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
function printable.translate(text, plain, odd)
  local pieces, at = {}, 1
  while at <= #text do
    local length = sequence(text, at)
    pieces[#pieces + 1] = length and plain(text:sub(at, at + length - 1)) or odd(text:byte(at))
    at = at + (length or 1)
  end
  return table.concat(pieces)
end

-- The number of a character of UTF-8.
function printable.number(character)
  local first = character:byte()
  local number = #character == 1 and first or first % 2 ^ (7 - #character)
  for i = 2, #character do
    number = number * 64 + character:byte(i) % 64
  end
  return number
end

-- Characters that no reader sees and that change how others are read: marks and
-- overrides of direction, separators of lines, the byte order mark.
local invisible = { { 0x61C, 0x61C }, { 0x200E, 0x200F }, { 0x2028, 0x202E }, { 0x2066, 0x2069 }, { 0xFEFF, 0xFEFF } }

-- True of a character's number that lies in one of the ranges.
function printable.is_in(ranges, number)
  for _, range in ipairs(ranges) do
    if number >= range[1] and number <= range[2] then
      return true
    end
  end
  return false
end

-- True of a character that is not to reach a reader as it is.
function printable.hidden(character)
  if #character == 1 then
    return character:find("%c") ~= nil
  end
  local number = printable.number(character)
  if number < 0xA0 then -- the C1 controls
    return true
  end
  return printable.is_in(invisible, number)
end

local short_escapes = { ["\t"] = "\\t", ["\n"] = "\\n", ["\r"] = "\\r", ["\\"] = "\\\\" }

local function escape(byte)
  return ("\\x%02x"):format(byte)
end
printable.escape = escape

local function character_shown(character)
  if short_escapes[character] then
    return short_escapes[character]
  elseif printable.hidden(character) then
    return (character:gsub(".", function(byte)
      return escape(byte:byte())
    end))
  end
  return character
end

-- A text on one line of printable characters.
function printable.line(text)
  if not text:find("[%c\\\127-\255]") then
    return text
  end
  return printable.translate(text, character_shown, escape)
end

return printable

-- A file of settings, as backup writes it: a row a line, `TABLE FIELD=VALUE...`; `#`
-- begins a comment. A value with blanks or signs of a shell stands in double quotes;
-- in either, \n, \t, \r, \\, \" and \x1b stand for what they do in most languages.
local ending = require "rpcctl.ending"
local formats = require "rpcctl.formats"
local output = require "rpcctl.output"
local settings = require "rpcctl.settings"
local subject = require "rpcctl.subject"

local backup_file = {}

local about = "# Settings of a device, written by rpcctl backup. A row a line: the table, its key, its "
  .. "other fields.\n# rpcctl restore sends what differs, from top to bottom; rpcctl diff shows it."

-- The line of an entry.
function backup_file.line(entry)
  local words = { entry.this.name }
  for _, one in ipairs(settings.fields_of(entry)) do
    words[#words + 1] = one.field.name .. "=" .. formats.word(output.cell(one.value))
  end
  return table.concat(words, " ")
end

-- The lines of a file: what is not kept, then the rows.
function backup_file.lines(notes, entries)
  local lines = { about, "" }
  for _, note in ipairs(notes) do
    lines[#lines + 1] = "# " .. output.printable(note)
  end
  if #notes > 0 then
    lines[#lines + 1] = ""
  end
  for _, entry in ipairs(entries) do
    lines[#lines + 1] = backup_file.line(entry)
  end
  return table.concat(lines, "\n") .. "\n"
end

local escapes = { n = "\n", t = "\t", r = "\r", ["\\"] = "\\", ['"'] = '"' }

-- The value that begins at `at`, and where it ends; nil where a quote is not closed or
-- an escape is none.
local function value_at(line, at)
  local quoted = line:sub(at, at) == '"'
  local pieces = {}
  at = quoted and at + 1 or at
  while true do
    local plain, sign, behind = line:match(quoted and '^([^"\\]*)(["\\]?)()' or '^([^%s"\\]*)([%s"\\]?)()', at)
    pieces[#pieces + 1] = plain
    if sign == "\\" then
      local hex = line:match("^x(%x%x)", behind)
      local escape = hex and string.char(tonumber(hex, 16)) or escapes[line:sub(behind, behind)]
      if not escape then
        return nil
      end
      pieces[#pieces + 1] = escape
      at = behind + (hex and 3 or 1)
    elseif quoted and sign == '"' or not quoted and (sign == "" or sign:match("%s")) then
      return table.concat(pieces), behind
    else
      return nil
    end
  end
end

-- The table's name and the fields of a line; nil and what was expected.
local function parse(line)
  local name, at = line:match("^%s*([%w_]+)()")
  if not name then
    return nil, "a table's name"
  end
  local words = {}
  while true do
    at = line:match("^%s*()", at)
    if at > #line then
      return name, words
    end
    local field, behind = line:match("^([%w_]+)=()", at)
    if not field then
      return nil, "FIELD=VALUE"
    end
    local value
    value, at = value_at(line, behind)
    if not value then
      return nil, "a value of " .. field .. " that ends, with escapes that there are"
    end
    words[#words + 1] = field .. "=" .. value
  end
end

-- All of a file ("-": of standard input).
local function text_of(command, path)
  local file, reason
  if path == "-" then
    file = io.stdin
  else
    file, reason = io.open(path, "rb")
  end
  local text = file and file:read("*a")
  if file and path ~= "-" then
    file:close()
  end
  if not text then
    ending.give_up(("%s: %s: expected a file that can be read, found %s"):format(command, path,
      reason or "a folder, or a device"), "bad_file")
  end
  return text
end

-- The entries of a file in its order, and by table and key. Ends the program where a
-- line is wrong: nothing of such a file is used.
function backup_file.read(command, path)
  local entries, by_key, opened, number = {}, {}, {}, 0
  for line in (text_of(command, path) .. "\n"):gmatch("(.-)\r?\n") do
    number = number + 1
    if not line:match("^%s*#") and line:match("%S") then
      local name, words = parse(line)
      local where = ("%s: %s:%d"):format(command, path, number)
      if not name then
        ending.give_up(("%s: expected %s, found %s"):format(where, words,
          require("librpc.record.problems").shown(line)),
          "bad_file")
      end
      local this = opened[name] or subject.open(where, name)
      opened[name] = this
      this.command = where
      if not this.apis.set then
        ending.give_up(("%s: expected a table that can be set, found %s"):format(where, name), "bad_file")
      end
      local entry, message, code = settings.entry(this, this:assigned(words))
      if not entry then
        ending.give_up(code == "no_key" and message or where .. ": " .. message, "bad_file")
      end
      by_key[name] = by_key[name] or {}
      if by_key[name][entry.key] then
        ending.give_up(("%s: expected each row once, found %s again"):format(where, entry.named), "bad_file")
      end
      entries[#entries + 1], by_key[name][entry.key] = entry, entry
    end
  end
  return entries, by_key
end

-- A text as one word of a shell.
local function shell_word(text)
  return "'" .. text:gsub("'", "'\\''") .. "'"
end

local function run(command)
  local result = os.execute(command)
  return result == true or result == 0
end

local function first_line(command)
  local pipe = io.popen(command .. " 2>/dev/null")
  local line = pipe:read("*l")
  pipe:close()
  return line ~= "" and line or nil
end

-- Writes a text to a file that is there; true, or nil and why.
local function write_into(path, text)
  local file, reason = io.open(path, "wb")
  if not file then
    return nil, reason
  end
  local written, why = file:write(text)
  local closed, close_why = file:close()
  if not (written and closed) then
    return nil, why or close_why
  end
  return true
end

-- Writes a file, or leaves the old one as it is: the new one takes its place when all
-- of it is on the disk. `private`: nobody else may read it. True, or nil and why.
function backup_file.write(path, text, private)
  if path == "-" then
    ending.write(text)
    return true
  end
  if run("test -e " .. shell_word(path) .. " && test ! -f " .. shell_word(path)) then
    return write_into(path, text) -- a device or a pipe, which nothing may take the place of
  end
  path = first_line("readlink -f -- " .. shell_word(path)) or path -- what a link leads to is replaced, not the link
  local word = shell_word(path)
  local pipe = io.popen("mktemp -- " .. shell_word(path .. ".XXXXXX") .. " 2>&1")
  local new = pipe:read("*l") or ""
  pipe:close()
  if new:sub(1, #path + 1) ~= path .. "." then
    return nil, new
  end
  local function fail(reason)
    os.remove(new)
    return nil, reason
  end
  local done, reason = write_into(new, text)
  if not done then
    return fail(reason)
  end
  -- mktemp's file is its owner's alone; another gets the mode that a new file has
  local mode = private and "" or (" && chmod $(printf '%%o' $((0666 & ~$(umask)))) %s"):format(shell_word(new))
  if not run(("{ sync %s || sync; } 2>/dev/null%s && mv -f -- %s %s 2>/dev/null"):format(shell_word(new), mode,
    shell_word(new), word)) then
    return fail("that the new file could not take its place")
  end
  return true
end

return backup_file

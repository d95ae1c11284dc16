-- Files of names: reading them, finding every mistake, putting later ones over
-- earlier. A new word of a table or a field is a row of table_words or
-- field_words; tell it in docs/named_fields.md.
local tables = require "librpc.record.tables"
local names = require "librpc.names"
local problems = require "librpc.record.problems"

local files = {}
local shown = problems.shown

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

local table_words = { title = line, description = text, key = key, ends = numbers }
local field_words = { name = identifier, title = line, unit = line, description = text, values = values,
  secret = truth, exact = exact }

local function sorted_names(map)
  local list = {}
  for name in pairs(map) do
    list[#list + 1] = name
  end
  table.sort(list)
  return list
end

-- What stands in one file as read() collects it: complaints go to `mistakes`.
local File = {}
File.__index = File

function File:complain(where, expected, found)
  local _, message = problems.fail("bad_names", table.concat({ self.path, where }, ": "), expected, found)
  self.mistakes[#self.mistakes + 1] = message
end

-- Copies a value of a file, which may hold only texts, numbers and lists of them.
local function copy(value)
  if type(value) ~= "table" then
    return value
  end
  local copied = {}
  for index, item in pairs(value) do
    copied[index] = item
  end
  return copied
end

function File:field(where, into, field, facts, position)
  where = where .. ": " .. field
  if type(facts) ~= "table" then
    return self:complain(where, "a table of what is known of the field", shown(facts))
  end
  for word, value in pairs(facts) do
    local check = field_words[word]
    if not check then
      local known = sorted_names(field_words)
      self:complain(where, problems.meant("one of " .. table.concat(known, ", "), word, known), shown(word))
    else
      local expected, found = check(value, position)
      if expected then
        self:complain(where .. ": " .. word, expected, found or shown(value))
      else
        into[word] = copy(value)
      end
    end
  end
end

-- A given name is nobody else's.
function File:unique_names(where, fields, known)
  local taken = {}
  for _, field in ipairs(sorted_names(fields)) do
    local name = fields[field].name
    if name then
      local other = known[name] and name ~= field and name or taken[name]
      if other then
        self:complain(where .. ": " .. field .. ": name", "a name of its own", shown(name) .. ", which is " .. other
          .. "'s")
      end
      taken[name] = field
    end
  end
end

function File:entry(all, name, entry)
  local where = tostring(name)
  local apis = type(name) == "string" and tables.operations(name)
  if name == "*" then
    apis = {}
  elseif not apis then
    return self:complain("expected", tables.meant_table(name), shown(name))
  end
  if type(entry) ~= "table" then
    return self:complain(where, "a table of what is known of it", shown(entry))
  end
  local known = tables.fields_of(apis)
  local into = all[name] or { fields = {} }
  all[name] = into
  for word, value in pairs(entry) do
    local check = table_words[word]
    if check and (name ~= "*" or word == "ends") then
      local expected, found = check(value, apis)
      if expected then
        self:complain(where .. ": " .. word, expected, found or shown(value))
      else
        into[word] = copy(value)
      end
    elseif name == "*" then
      self:complain(where, "ends and nothing else", shown(word))
    elseif not known[word] then
      local list = sorted_names(known)
      self:complain(where, problems.meant("a field of the table, or one of "
        .. table.concat(sorted_names(table_words), ", "), word, list), shown(word))
    else
      into.fields[word] = into.fields[word] or {}
      self:field(where, into.fields[word], word, value, known[word])
    end
  end
  self:unique_names(where, into.fields, known)
end

-- What a file returns, run in an environment without anything.
function File:run()
  local file, problem = io.open(self.path)
  local source = file and file:read("*a")
  if file then
    file:close()
  end
  if not source then
    return self:complain(nil, "a file that can be read", problem and problem:gsub("^.*: ", "") or "none")
  elseif source:byte() == 27 then
    return self:complain(nil, "Lua as text", "compiled Lua")
  end
  local chunk
  if setfenv then
    chunk, problem = loadstring(source, "@" .. self.path) -- luacheck: ignore 113
    chunk = chunk and setfenv(chunk, {}) -- luacheck: ignore 113
  else
    chunk, problem = load(source, "@" .. self.path, "t", {}) -- luacheck: ignore
  end
  local ran, result = false, problem
  if chunk then
    ran, result = pcall(chunk)
  end
  if not ran then
    return self:complain(nil, "Lua that returns a table", (tostring(result):gsub("^.-:(%d+: )", "line %1")))
  elseif type(result) ~= "table" then
    return self:complain(nil, "Lua that returns a table", shown(result))
  end
  return result
end

local function copy_of(all)
  local copied = {}
  for name, entry in pairs(all) do
    copied[name] = copy(entry)
    copied[name].fields = {}
    for field, facts in pairs(entry.fields) do
      copied[name].fields[field] = copy(facts)
    end
  end
  return copied
end

-- What the files say over `before`, which stays as it is; nil, every mistake as
-- one text, and as a list.
function files.read(paths, before)
  local all, mistakes = copy_of(before), {}
  for _, path in ipairs(paths) do
    local file = setmetatable({ path = path, mistakes = mistakes }, File)
    for name, entry in pairs(file:run() or {}) do
      file:entry(all, name, entry)
    end
  end
  if #mistakes > 0 then
    table.sort(mistakes)
    return nil, table.concat(mistakes, "\n"), mistakes
  end
  return all
end

function files.check(path)
  local all, message, mistakes = files.read({ path }, {})
  if not all then
    return nil, message, "bad_names", mistakes
  end
  return true
end

function files.load(path)
  local before, problem = names.loaded()
  if not before then
    return nil, problem, "bad_names"
  end
  local all, message, mistakes = files.read({ path }, before)
  if not all then
    return nil, message, "bad_names", mistakes
  end
  names.use(all)
  return true
end

return files

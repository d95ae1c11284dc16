-- Files of names: reading them, finding every mistake, putting later ones over
-- earlier.
local columns = require "librpc.names.columns"
local names = require "librpc.names"
local tables = require "librpc.record.tables"
local words = require "librpc.names.words"

local files = {}
local table_words, field_words = words.of_table, words.of_field

-- Loaded with the first mistake.
local function problems()
  return require "librpc.record.problems"
end

local function shown(value)
  return problems().shown(value)
end

-- What stands in one file as read() collects it: complaints go to `mistakes`.
local File = {}
File.__index = File

function File:complain(where, expected, found)
  local _, message = problems().fail("bad_names", table.concat({ self.path, where }, ": "), expected, found)
  self.mistakes[#self.mistakes + 1] = message
end

local function copy(value)
  local copied = {}
  for index, item in pairs(value) do
    copied[index] = item
  end
  return copied
end

-- Checks one of a table's or a field's words; true where it is right.
function File:word(where, word, value, check, about)
  local expected, found = check(value, about)
  if expected then
    self:complain(where() .. ": " .. word, expected, found or shown(value))
  end
  return not expected
end

-- Checks what is known of a field. The same table of it may stand at many fields.
function File:field(where, facts, position)
  if type(facts) ~= "table" then
    return self:complain(where(), "a table of what is known of the field", shown(facts))
  end
  local right = self.right[facts] ~= position.kind
  for word, value in pairs(right and facts or {}) do
    if field_words[word] then
      right = self:word(where, word, value, field_words[word], position) and right
    else
      self:complain(where(), problems().one_of(field_words, word), shown(word))
      right = false
    end
  end
  self.right[facts] = right and position.kind or self.right[facts]
end

-- What is known of a field, with what an earlier file said and this one does not.
local function over(before, facts)
  local both = before and type(facts) == "table" and copy(before)
  for word, value in pairs(both and facts or {}) do
    both[word] = value
  end
  return both or facts
end

-- A given name is nobody else's: no field is called so in the schema, and no other
-- by the names.
function File:unique_names(table_name, fields, texts)
  local taken = {}
  for field, facts in pairs(fields) do
    local name, later = type(facts) == "table" and type(facts.name) == "string" and facts.name, field
    local other = name and name ~= field and columns.position_in(texts, name) and name
    if name and not other and taken[name] then
      other = taken[name] < field and taken[name] or field
      later = other == field and taken[name] or field
    end
    if other then
      self:complain(table_name .. ": " .. later .. ": name", "a name of its own",
        shown(name) .. ", which is " .. other .. "'s")
    end
    if name then
      taken[name] = field
    end
  end
end

function File:unknown_field(where, word, texts)
  local known = {}
  for _, positions in ipairs(texts) do
    for _, position in ipairs(positions) do
      known[#known + 1] = position.name
    end
  end
  self:complain(where, problems().meant("a field of the table, or one of " ..
    table.concat(problems().names_in(table_words), ", "), word, known), shown(word))
end

function File:entry(all, name, entry)
  local where_table = tostring(name)
  local apis = type(name) == "string" and tables.operations(name)
  if name == "*" then
    apis = {}
  elseif not apis then
    return self:complain(nil, problems().meant_table(name), shown(name))
  end
  if type(entry) ~= "table" then
    return self:complain(where_table, "a table of what is known of it", shown(entry))
  end
  local texts = columns.texts_of(apis)
  local into = all[name] or { fields = {} }
  all[name] = into
  local field
  local function where()
    return field and where_table .. ": " .. field or where_table
  end
  for word, value in pairs(entry) do
    field = nil
    if table_words[word] and (name ~= "*" or word == "ends") then
      self:word(where, word, value, table_words[word], apis)
      into[word] = value
    elseif name == "*" then
      self:complain(where(), "ends and nothing else", shown(word))
    else
      local position = columns.position_in(texts, word)
      if position then
        field = word
        self:field(where, value, position)
        into.fields[word] = over(into.fields[word], value)
      else
        self:unknown_field(where(), word, texts)
      end
    end
  end
  self:unique_names(where_table, into.fields, texts)
end

-- The text of a file, or nothing where there is none to run.
function File:text()
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
  return source
end

-- What a file's text returns, run in an environment without anything.
function File:run(source)
  local chunk, problem
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
    copied[name].fields = copy(entry.fields)
  end
  return copied
end

-- Takes what is said of a table of which nothing needs to be checked.
local function take(all, name, entry)
  local into = all[name] or { fields = {} }
  all[name] = into
  for word, value in pairs(entry) do
    if table_words[word] then
      into[word] = value
    else
      into.fields[word] = over(into.fields[word], value)
    end
  end
end

local function text_of(path)
  local file = io.open(path, "rb")
  local text = file and file:read("*a")
  if file then
    file:close()
  end
  return text
end

-- Writes a file where that can be done. Of two processes at once one may keep a part of
-- it: then it is no file's text, and written again.
local function keep(path, text)
  local new = path .. ".new"
  local file = io.open(new, "wb")
  if file then
    file:write(text)
    file:close()
    os.rename(new, path)
  end
end

-- What the files say over `before`, which stays as it is; nil, every mistake as
-- one text, and as a list. Files whose texts stand in the file `kept` were right
-- already; it gets the texts of those that are.
function files.read(paths, before, kept)
  local all, mistakes, list, texts = copy_of(before), {}, {}, {}
  for i, path in ipairs(paths) do
    local file = setmetatable({ path = path, mistakes = mistakes, right = {} }, File)
    file.source = file:text()
    list[i], texts[i] = file, ("%s: %d\n%s"):format(path, #(file.source or ""), file.source or "")
  end
  local text = table.concat(texts)
  local is_right = kept and #mistakes == 0 and text_of(kept) == text
  for _, file in ipairs(list) do
    for name, entry in pairs(file.source and file:run(file.source) or {}) do
      if is_right then
        take(all, name, entry)
      else
        file:entry(all, name, entry)
      end
    end
  end
  if kept and not is_right and #mistakes == 0 then
    keep(kept, text)
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

-- A site's configuration, /etc/librpc/web.lua (LIBRPC_WEB names another file): who
-- may read and change which tables, what is logged where, the limits of a request.
-- It is Lua that returns a table, run in an empty environment; docs/web.md tells its
-- words. A new word is a row of `words` below, and its value without a file a row
-- of `defaults`.
local tables = require "librpc.record.tables"

local site = {}

local default_path = "/etc/librpc/web.lua"

-- What holds where the file says nothing, or is not there.
local defaults = {
  everybody = { read = "*", change = {} }, -- whom the web server let in
  users = {},
  groups = {},
  without_user = false, -- rights of requests whose sender the web server did not name; false: they are refused
  without_names = false, -- whether to serve where no file of names says which fields are secret
  origins = {}, -- of pages that may change; empty: the server's own
  log = "syslog", -- or a file
  state = "/run/librpc-web", -- a folder of the gateway's own, for tokens
  metrics = {}, -- tables
}

local default_limits = {
  seconds = 25, -- of one request, where it asks for more
  deadline = 1, -- seconds of one that does not ask
  rows = 20000, -- of one request, shared by its walks
  calls = 64, -- reads, or walks, of one request
  body = 65536, -- bytes
}

-- Loaded with the first mistake.
local function problems()
  return require "librpc.record.problems"
end

local function shown(value)
  return problems().shown(value)
end

-- The mistakes of one file, a line each.
local Mistakes = {}
Mistakes.__index = Mistakes

function Mistakes:add(where, expected, found)
  self[#self + 1] = ("%s: %s: expected %s, found %s"):format(self.path, where, expected, found)
end

function Mistakes:unknown(where, word, known)
  self:add(where, problems().one_of(known, word), shown(word))
end

local function check_tables(mistakes, where, value)
  if value == "*" then
    return
  elseif type(value) ~= "table" then
    return mistakes:add(where, 'a list of tables, or "*" for all', shown(value))
  end
  for i, name in pairs(value) do
    if type(i) ~= "number" then
      mistakes:add(where, "a list of tables", "the name " .. shown(i))
    elseif not tables.operations(name) then
      mistakes:add(where, problems().meant_table(name), shown(name))
    end
  end
end

local function check_texts(mistakes, where, value, what)
  if type(value) ~= "table" then
    return mistakes:add(where, "a list of " .. what, shown(value))
  end
  for i, text in pairs(value) do
    if type(i) ~= "number" or type(text) ~= "string" or text == "" then
      mistakes:add(where, "a list of " .. what, shown(type(i) == "number" and text or i))
    end
  end
end

local rights_words = { read = check_tables, change = check_tables }
local group_words = { read = check_tables, change = check_tables, members = function(mistakes, where, value)
  check_texts(mistakes, where, value, "users")
end }

local function check_rights(mistakes, where, value, words)
  if type(value) ~= "table" then
    return mistakes:add(where, "a table of " .. table.concat(problems().names_in(words), ", "), shown(value))
  end
  for word, item in pairs(value) do
    if words[word] then
      words[word](mistakes, where .. ": " .. word, item)
    else
      mistakes:unknown(where, word, words)
    end
  end
end

local function check_named_rights(words)
  return function(mistakes, where, value)
    if type(value) ~= "table" then
      return mistakes:add(where, "rights by name", shown(value))
    end
    for name, rights in pairs(value) do
      if type(name) == "string" then
        check_rights(mistakes, where .. ": " .. name, rights, words)
      else
        mistakes:add(where, "rights by name", shown(name))
      end
    end
  end
end

local function check_limits(mistakes, where, value)
  if type(value) ~= "table" then
    return mistakes:add(where, "a table of numbers", shown(value))
  end
  for name, number in pairs(value) do
    if not default_limits[name] then
      mistakes:unknown(where, name, default_limits)
    elseif type(number) ~= "number" or not (number > 0 and number < math.huge) then
      mistakes:add(where .. ": " .. name, "a number above 0", shown(number))
    end
  end
end

local function check_truth(mistakes, where, value)
  if type(value) ~= "boolean" then
    mistakes:add(where, "true or false", shown(value))
  end
end

local function check_path(mistakes, where, value, or_else)
  if value ~= or_else and (type(value) ~= "string" or not value:match("^/[^%c']*$")) then
    mistakes:add(where, (or_else and shown(or_else) .. " or " or "") .. "a path from / on, without quotes",
      shown(value))
  end
end

-- How each word is checked.
local words = {
  everybody = function(mistakes, where, value)
    check_rights(mistakes, where, value, rights_words)
  end,
  users = check_named_rights(rights_words),
  groups = check_named_rights(group_words),
  without_user = function(mistakes, where, value)
    if value ~= false then
      check_rights(mistakes, where, value, rights_words)
    end
  end,
  without_names = check_truth,
  origins = function(mistakes, where, value)
    check_texts(mistakes, where, value, "origins")
  end,
  log = function(mistakes, where, value)
    check_path(mistakes, where, value, "syslog")
  end,
  state = check_path,
  metrics = check_tables,
  limits = check_limits,
}

-- What the file returns; {} where there is none and none is named.
local function run(path, is_named, mistakes)
  local file, problem, number = io.open(path)
  if not file and number == 2 and not is_named then
    return {}
  end
  local source = file and file:read("*a")
  if file then
    file:close()
  end
  if not source then
    return mistakes:add("file", "one that can be read", problem and problem:gsub("^.*: ", "") or "none")
  elseif source:byte() == 27 then
    return mistakes:add("file", "Lua as text", "compiled Lua")
  end
  local chunk
  if setfenv then
    chunk, problem = loadstring(source, "@" .. path) -- luacheck: ignore 113
    chunk = chunk and setfenv(chunk, {}) -- luacheck: ignore 113
  else
    chunk, problem = load(source, "@" .. path, "t", {}) -- luacheck: ignore
  end
  local ran, result = false, problem
  if chunk then
    ran, result = pcall(chunk)
  end
  if not ran then
    return mistakes:add("file", "Lua that returns a table", (tostring(result):gsub("^.-:(%d+: )", "line %1")))
  elseif type(result) ~= "table" then
    return mistakes:add("file", "Lua that returns a table", shown(result))
  end
  return result
end

-- The configuration of a file, or of the site's; nil and every mistake, a line each.
function site.read(path)
  local named = path or os.getenv("LIBRPC_WEB")
  local mistakes = setmetatable({ path = named or default_path }, Mistakes)
  local told = run(mistakes.path, named ~= nil, mistakes) or {}
  for word, value in pairs(told) do
    if words[word] then
      words[word](mistakes, word, value)
    else
      mistakes:unknown("file", word, words)
    end
  end
  if #mistakes > 0 then
    table.sort(mistakes)
    return nil, table.concat(mistakes, "\n")
  end
  local read = {}
  for word, value in pairs(defaults) do
    read[word] = value
    if told[word] ~= nil then
      read[word] = told[word]
    end
  end
  read.limits = {}
  for name, number in pairs(default_limits) do
    read.limits[name] = told.limits and told.limits[name] or number
  end
  return read
end

local kept = {} -- the configuration, or its mistakes

-- The site's configuration, read once in a process: a server that answers many requests
-- takes a change when it is reloaded. nil and every mistake.
function site.current()
  if not kept[1] then
    kept = { site.read() }
  end
  return kept[1], kept[2]
end

return site

-- A table as a command has it: its APIs, its fields by either name, and its rows as
-- they come.
local ending = require "rpcctl.ending"
local names = require "librpc.names"
local output = require "rpcctl.output"
local problems = require "librpc.record.problems"
local record = require "librpc.record"
local tables = require "librpc.record.tables"

local subject = {}

local Subject = {}
Subject.__index = Subject

-- The table of that name; one of its APIs' names stands for it, too. Ends the program
-- where there is none. A subject has
--   name, apis, view    as in librpc.record.tables and librpc.names
--   fields              names.fields, each with `reply`, its position in replies, where it has one
--   columns             those of the fields that replies have
--   command             the name of the command, for messages
function subject.open(command, name)
  local apis = ending.need(tables.apis_of(name))
  local self = setmetatable({ command = command, name = select(2, next(apis)).table, apis = apis }, Subject)
  self.view = ending.need(names.view(self.name))
  self.fields = ending.need(names.fields(self.name))
  self.by_name, self.columns, self.key = {}, {}, {}
  local reader = self.apis.get or self.apis.getn or self.apis.other
  local replies = {}
  for _, position in ipairs(reader and reader.output or {}) do
    replies[position.name] = position
  end
  self.reader = reader and reader.output and reader or nil
  for _, field in ipairs(self.fields) do
    self.by_name[field.field] = field
  end
  for _, field in ipairs(self.fields) do
    self.by_name[field.name] = field
    field.reply = replies[field.field]
    field.minor = field.field == self.view.res or field.field == self.view.oper
    self.columns[#self.columns + 1] = field.reply and field or nil
    self.key[#self.key + 1] = field.key and field or nil
  end
  self.key_told = self.view.key ~= nil
  return self
end

-- The names of a list of fields, between commas.
function subject.names_of(fields)
  local list = {}
  for i, field in ipairs(fields) do
    list[i] = field.name
  end
  return table.concat(list, ", ")
end

-- The field of a name, or the end.
function Subject:field(name)
  local field = self.by_name[name]
  if not field then
    local known = {}
    for _, each in ipairs(self.fields) do
      known[#known + 1] = each.name
    end
    local all = #known
    for i = 1, all do
      known[all + i] = self.fields[i].field
    end
    local nearest = problems.nearest(name, known)
    ending.give_up(("%s: %s: expected %s, found %s"):format(self.command, self.name,
      nearest and "one of its fields (did you mean " .. nearest .. "?)" or "one of " .. subject.names_of(self.fields),
      problems.shown(name)), "unknown_field")
  end
  return field
end

-- The API of an operation, or the end.
function Subject:need(operation)
  return ending.need(record.find(self.name, operation))
end

-- The columns that --fields chooses; all of them without it, or with "all".
function Subject:chosen(list)
  if not list or list == "all" then
    return self.columns
  end
  local chosen = {}
  for name in list:gmatch("[^,]+") do
    local field = self:field(name)
    if not field.reply then
      ending.misuse(self.command, "fields of a row of " .. self.name .. " (" .. subject.names_of(self.columns) .. ")",
        ending.quoted(name))
    end
    chosen[#chosen + 1] = field
  end
  if #chosen == 0 then
    ending.misuse(self.command, "--fields and names between commas", ending.quoted(list))
  end
  return chosen
end

-- FIELD=VALUE words as a table by the schema's names.
function Subject:assigned(words)
  local fields = {}
  for _, word in ipairs(words) do
    local name, value = word:match("^([^=!<>~]+)=(.*)$")
    if not name then
      ending.misuse(self.command, "FIELD=VALUE", ending.quoted(word))
    end
    local field = self:field(name)
    if fields[field.field] ~= nil then
      ending.misuse(self.command, "each field once", ending.quoted(name) .. " again")
    end
    fields[field.field] = value
  end
  return fields
end

-- Fields by the schema's names with the names that people know them by.
function Subject:called(fields)
  local named = {}
  for field, value in pairs(fields) do
    named[self.by_name[field].name] = value
  end
  return named
end

-- "port=3", the key of a row as a person reads it.
function Subject:key_of(row)
  local words = {}
  for i, field in ipairs(self.key) do
    words[i] = field.name .. "=" .. self:shown(field, row[field.name])
  end
  return table.concat(words, " ")
end

-- A value as a cell. `open`: secrets too.
function Subject.shown(_, field, value, open)
  if field.secret and not open then
    return (value ~= nil and value ~= "") and "(set)" or ""
  end
  return output.cell(value)
end

-- What of the filters says which row: a key for record.get, or nil where it does not
-- say all of it. Where nobody told the key, every field that the daemon takes is sent.
function Subject:key_in(filters)
  local key = {}
  for _, filter in ipairs(filters) do
    local field = filter.field
    if filter.operator == "=" and field.argument and not field.minor and (field.key or not self.key_told) then
      key[field.field] = filter.value
    end
  end
  for _, field in ipairs(self.key) do
    if key[field.field] == nil then
      return nil
    end
  end
  return key
end

local function matches(filters, row)
  for _, filter in ipairs(filters) do
    if not filter.matches(row) then
      return false
    end
  end
  return true
end

-- Reads the rows that pass the filters, and hands each to take(row) as it comes; one
-- that gives false ends it. True, or nil, a message and a code. Options:
--   after         the fields of the row behind which to begin
--   ending        a filter: the row that passes it stands behind the last
--   call_seconds  how long each answer may take
function Subject:each(filters, options, take)
  local getn = self.apis.getn
  local key = self:key_in(filters)
  if not getn or key and self.apis.get and not options.after then
    local found, message, code = self:one(key, filters, options, take)
    if found ~= false then
      return found, message, code
    elseif not getn or self.key_told then
      return true
    end -- nobody told the key of this table: a walk tells more
  end
  local settings = { call_seconds = options.call_seconds, limit = 1e9 }
  function settings.each(row)
    if options.ending and options.ending.matches(row) then
      return false
    end
    return not matches(filters, row) or take(row)
  end
  if not tables.has_output(getn, self.view.res) then
    if not options.ending then
      return nil, getn.name .. ": expected --end FIELD=VALUE, because its rows do not say which is the last, found "
        .. "none",
        "usage"
    end
    function settings.done(row)
      return options.ending.matches(row)
    end
  end
  local rows, message, code = record.rows(getn.name, options.after, settings)
  if not rows then
    return nil, message, code
  end
  return true
end

-- The one row of a key; false where there is none.
function Subject:one(key, filters, options, take)
  if options.after then
    return nil, ("%s: expected a table that is walked, for --after, found no getn"):format(self.name), "usage"
  elseif not self.apis.get then
    return select(2, nil, record.find(self.name, "get"))
  elseif not key then
    return nil, self:key_missing(), "no_key"
  end
  local row, message, code = record.get(self.name, key, { call_seconds = options.call_seconds })
  if code == "no_row" or code == "other_row" and not self.key_told then
    return false
  elseif not row then
    return nil, message, code
  elseif matches(filters, row) then
    take(row)
  end
  return true
end

-- What is wrong where the key is missing.
function Subject:key_missing()
  local wanted = {}
  for i, field in ipairs(self.key) do
    wanted[i] = field.name .. "=..."
  end
  return ("%s: %s: expected %s, which says which row, found no such word"):format(self.command, self.name,
    table.concat(wanted, " "))
end

return subject

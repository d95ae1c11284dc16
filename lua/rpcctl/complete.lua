-- What may follow on a command line, for the completions of all shells:
--
--     rpcctl --complete WORD...
--
-- The words after the program's name, the last one as far as it is typed. Prints a
-- candidate a line, and behind a tab what it means where that is known. A kind of word
-- (`what` of options.lua) is a function of `kinds`.
local commands = require "rpcctl.commands"
local ending = require "rpcctl.ending"
local names = require "librpc.names"
local options = require "rpcctl.options"
local output = require "rpcctl.output"
local schema = require "librpc.schema"
local tables = require "librpc.record.tables"

local complete = {}

-- Calls take(name, meaning) for each table for which want(apis) holds.
local function each_table(want, take)
  local seen, known = {}, names.loaded() or {}
  for _, api in ipairs(schema.apis) do
    if not seen[api.table] and want(tables.operations(api.table)) then
      take(api.table, known[api.table] and known[api.table].title)
    end
    seen[api.table] = true
  end
end

-- The fields of the table that a line names, or none.
local function fields_of(line)
  return line.table and names.fields(line.table) or {}
end

local function has_reply(line, field)
  local apis = tables.operations(line.table)
  local api = apis and (apis.get or apis.getn)
  return api and tables.has_output(api, field.field)
end

-- FIELD, FIELD=WORD where the field's words are known and `typed` has come so far. With
-- "=" behind the name, the shell adds no blank.
local function field_words(line, typed, take, want)
  local name = typed:match("^([^=!<>~]+)[!<>]?[=~]") or typed:match("^([^=!<>~]+)[<>]")
  for _, field in ipairs(fields_of(line)) do
    if want(field) then
      if name and (name == field.name or name == field.field) then
        local operator = typed:match("^[^=!<>~]+([!<>=~]+)")
        local numbers = {}
        for number in pairs(field.values or {}) do
          numbers[#numbers + 1] = number
        end
        table.sort(numbers)
        for _, number in ipairs(numbers) do
          take(name .. operator .. field.values[number])
        end
      elseif not name then
        take(field.name .. "=", field.title ~= field.name and field.title or nil)
      end
    end
  end
end

local kinds = {}

function kinds.command(_, _, take)
  for _, name in ipairs(commands.list) do
    take(name, commands.find(name).summary)
  end
end

function kinds.rows(_, _, take)
  each_table(function(apis) return apis.get or apis.getn end, take)
end

function kinds.settable(_, _, take)
  each_table(function(apis) return apis.set end, take)
end

kinds["table"] = function(_, _, take)
  each_table(function() return true end, take)
end

function kinds.API(_, _, take)
  for _, api in ipairs(schema.apis) do
    take(api.name)
  end
end

function kinds.service(_, _, take)
  for _, service in ipairs(schema.services) do
    take(service.name, service.title)
  end
end

kinds["table or API"] = function(line, typed, take)
  kinds["table"](line, typed, take)
  kinds.API(line, typed, take)
end

kinds["table or service"] = function(line, typed, take)
  kinds.settable(line, typed, take)
  kinds.service(line, typed, take)
end

function kinds.filter(line, typed, take)
  field_words(line, typed, take, function(field) return has_reply(line, field) end)
end

function kinds.assignment(line, typed, take)
  field_words(line, typed, take, function(field)
    return field.argument and field.name ~= "res" and field.name ~= "oper"
  end)
end

kinds.field = kinds.filter

function kinds.column(line, _, take)
  for _, field in ipairs(fields_of(line)) do
    if has_reply(line, field) then
      take(field.name, field.title ~= field.name and field.title or nil)
    end
  end
end

-- Of a list between commas, what follows the last one.
function kinds.fields(line, typed, take)
  local before = typed:match("^(.*,)") or ""
  take(before .. "all")
  kinds.column(line, typed, function(name, title)
    take(before .. name, title)
  end)
end

function kinds.file() end -- the shell's own affair

-- The words of a line by what they are: { table = }, how many words are no options, and
-- the option whose value the last one is.
local function read(command, words)
  local line, count, at = { table = nil }, 0, 2
  while at < #words do
    local name, equals = words[at]:match("^%-%-([%w-]+)(=?)")
    local option = name and options.find(command, name)
    if option and option[2] and equals == "" then
      if at + 1 == #words then
        return line, count, option
      end
      at = at + 1
    elseif words[at]:sub(1, 1) ~= "-" then
      count = count + 1
      local first = (command.arguments or {})[1]
      local what = first and first.what
      if count == 1 and (what == "rows" or what == "settable") then
        local api = schema.api(words[at])
        line.table = tables.operations(words[at]) and words[at] or api and api.table
      end
    end
    at = at + 1
  end
  return line, count
end

-- Calls take(word, meaning) for all that may stand where the last word is.
local function candidates(words, take)
  local last = words[#words] or ""
  local command = commands.find(words[1])
  if #words <= 1 then
    kinds.command(nil, last, take)
    take("--help")
    take("--version")
    return
  elseif not command then
    return
  end
  local line, count, option = read(command, words)
  local prefix = ""
  local inline, value = last:match("^(%-%-[%w-]+=)(.*)$")
  if inline then
    option, prefix, last = options.find(command, inline:match("[%w-]+", 3)), inline, value
  end
  if option then
    for _, one in ipairs(option.one_of or {}) do
      take(prefix .. one)
    end
    if kinds[option.what] then
      kinds[option.what](line, last, function(word, meaning)
        take(prefix .. word, meaning)
      end)
    end
  elseif last:sub(1, 1) == "-" then
    for _, each in ipairs(options.of(command)) do
      take("--" .. each[1] .. (each[2] and "=" or ""), each[3])
    end
  else
    local arguments = command.arguments or {}
    local argument = arguments[count + 1] or (arguments[#arguments] and arguments[#arguments].many
      and arguments[#arguments])
    if argument and kinds[argument.what] then
      kinds[argument.what](line, last, take)
    end
  end
end

function complete.print(arguments)
  local words = {}
  for i = 2, #arguments do
    words[i - 1] = arguments[i]
  end
  local last = words[#words] or ""
  candidates(words, function(word, meaning)
    if word:sub(1, #last) == last then
      ending.write(output.printable(word), meaning and "\t" .. output.printable(meaning) or "", "\n")
    end
  end)
end

return complete

-- What a command is, as data, and what derives from it: the parsed arguments, the
-- usage, the help, and (in complete.lua) what may follow a word. A command is the
-- table that a file of commands/ returns:
--
--     name, summary          what it is called, and in a few words does
--     arguments              { { "TABLE", what = "table" }, { "FIELD=VALUE", many = true, optional = true } }
--     options                { { "limit", "N", "at most so many rows", number = 1 }, { "json", nil, "..." } }
--     details, examples      more for --help; examples are { command line, what it does }
--     run(words, options)
--
-- An argument has a placeholder; `optional`; `many`, which only the last may be; and
-- `what` it names, which completion looks up. An option has a name, the placeholder of
-- its value (nil: it takes none) and its help; `number`, the least that it may be;
-- `one_of`, a list; `many`, where it may be given again: its value is then a list.
local ending = require "rpcctl.ending"
local problems = require "librpc.record.problems"

local options = {}

-- How long a command waits for each answer where nothing else is said.
function options.timeout(seconds)
  return { "timeout", "SECONDS", ("how long to wait for each answer, %d if not given"):format(seconds), number = 0.001 }
end

-- What every command takes, but where it has an option of that name itself.
options.common = { options.timeout(25), { "help", nil, "print this" } }

-- All options of a command.
function options.of(command)
  local list, own = {}, {}
  for _, option in ipairs(command.options or {}) do
    list[#list + 1], own[option[1]] = option, true
  end
  for _, option in ipairs(options.common) do
    if not own[option[1]] then
      list[#list + 1] = option
    end
  end
  return list
end

-- The option of that name, or nil.
function options.find(command, name)
  for _, option in ipairs(options.of(command)) do
    if option[1] == name then
      return option
    end
  end
end

-- How a command is called: "TABLE [FIELD=VALUE]...".
function options.usage(command)
  local words = {}
  for i, argument in ipairs(command.arguments or {}) do
    local word = argument.optional and "[" .. argument[1] .. "]" or argument[1]
    words[i] = argument.many and word .. "..." or word
  end
  return table.concat(words, " ")
end

local function unknown_option(command, word)
  local names = {}
  for i, option in ipairs(options.of(command)) do
    names[i] = "--" .. option[1]
  end
  local nearest = problems.nearest(word:match("^[^=]*"), names)
  ending.misuse(command.name, nearest and "an option (did you mean " .. nearest .. "?)" or "an option of --help",
    ending.quoted(word))
end

-- The value of an option as the command gets it.
local function checked(command, option, value)
  if option.number then
    local number = value:match("^[%d.]+$") and tonumber(value)
    if not number or number < option.number or option.whole and number ~= math.floor(number) then
      ending.misuse(command.name, ("--%s and a %snumber from %.14g"):format(option[1], option.whole and "whole " or "",
        option.number), ending.quoted(value))
    end
    return number
  end
  for _, one in ipairs(option.one_of or {}) do
    if value == one then
      return value
    end
  end
  if option.one_of then
    local nearest = problems.nearest(value, option.one_of)
    ending.misuse(command.name, nearest and ("--%s %s"):format(option[1], nearest)
      or ("--%s and one of %s"):format(option[1], table.concat(option.one_of, ", ")), ending.quoted(value))
  end
  return value
end

-- The words and the options of a command's arguments, from the one at `first` on.
function options.parse(command, arguments, first)
  local words, given, at = {}, {}, first
  while at <= #arguments do
    local word = arguments[at]
    local name, equals, value = word:match("^%-%-([%w-]+)(=?)(.*)$")
    local option = name and options.find(command, name)
    if word == "--" then
      for i = at + 1, #arguments do
        words[#words + 1] = arguments[i]
      end
      break
    elseif word == "-h" then
      given.help = true
    elseif option and option[2] then
      if equals == "" then
        at = at + 1
        value = arguments[at] or ending.misuse(command.name, option[2] .. " behind --" .. name, "nothing")
      end
      value = checked(command, option, value)
      if option.many then
        given[name] = given[name] or {}
        table.insert(given[name], value)
      elseif given[name] ~= nil then
        ending.misuse(command.name, "--" .. name .. " once", ending.quoted(word) .. " again")
      else
        given[name] = value
      end
    elseif option then
      if equals ~= "" then
        ending.misuse(command.name, "--" .. name .. " without a value", ending.quoted(word))
      end
      given[name] = true
    elseif word:match("^%-%a") or word:match("^%-%-.") then
      unknown_option(command, word)
    else
      words[#words + 1] = word
    end
    at = at + 1
  end
  return words, given
end

-- Ends the program where a command has not as many words as it takes.
function options.check_count(command, words)
  local least, most = 0, 0
  for _, argument in ipairs(command.arguments or {}) do
    least = least + (argument.optional and 0 or 1)
    most = argument.many and math.huge or most + 1
  end
  if #words < least or #words > most then
    local found = {}
    for i, word in ipairs(words) do
      found[i] = ending.quoted(word)
    end
    local usage = options.usage(command)
    ending.misuse(command.name, usage == "" and "no arguments" or usage,
      #words == 0 and "nothing" or table.concat(found, " "))
  end
end

-- A text in lines of at most `most` characters, each after the first begun with
-- `indent`. A line of its own stays one.
function options.wrapped(text, indent, most)
  local lines = {}
  for paragraph in (text .. "\n"):gmatch("(.-)\n") do
    local line = ""
    for word in paragraph:gmatch("%S+") do
      if line ~= "" and #line + 1 + #word > most - #indent then
        lines[#lines + 1] = line
        line = word
      else
        line = line == "" and word or line .. " " .. word
      end
    end
    lines[#lines + 1] = line
  end
  return (table.concat(lines, "\n" .. indent):gsub(" +\n", "\n"))
end

return options

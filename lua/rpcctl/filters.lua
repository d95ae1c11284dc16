-- FIELD=VALUE and its like: which rows are meant. The operators are a table below; a
-- new one is a row of it.
local ending = require "rpcctl.ending"
local output = require "rpcctl.output"
local problems = require "librpc.record.problems"
local values = require "librpc.record.values"

local filters = {}

local numeric = { int = true, unsigned = true, real = true }

-- Below 0, 0 or above 0: how two counters' digits compare.
local function compare_digits(a, b)
  local minus_a, minus_b = a:sub(1, 1) == "-", b:sub(1, 1) == "-"
  if minus_a ~= minus_b then
    return minus_a and -1 or 1
  end
  a, b = a:match("^-?0*(%d+)$"), b:match("^-?0*(%d+)$")
  local sign = minus_a and -1 or 1
  if #a ~= #b then
    return #a < #b and -sign or sign
  end
  return a == b and 0 or a < b and -sign or sign
end

local function compare(a, b)
  return a == b and 0 or a < b and -1 or 1
end

-- A pattern of a shell, found anywhere in a text, as a pattern of Lua.
function filters.pattern(text)
  return (text:lower():gsub("[%^%$%(%)%%%.%[%]%+%-]", "%%%0"):gsub("%*", ".*"):gsub("%?", "."))
end

-- By operator: whether it takes the order of the two values, or whether one is found in the other.
local operators = {
  ["="] = function(order) return order == 0 end,
  ["!="] = function(order) return order ~= 0 end,
  ["<"] = function(order) return order < 0 end,
  ["<="] = function(order) return order <= 0 end,
  [">"] = function(order) return order > 0 end,
  [">="] = function(order) return order >= 0 end,
  ["~"] = "found", ["!~"] = "not found",
}

-- The name, the operator and the value of a word; nil where it is no filter.
function filters.split(word)
  local name, rest = word:match("^([^=!<>~]+)(.+)$")
  if not name then
    return nil
  end
  local operator = rest:match("^[<>!]=") or rest:match("^!~") or rest:match("^[=<>~]")
  return operator and name, operator, operator and rest:sub(#operator + 1)
end

local function wrong(subject, field, expected, value, code)
  local words = {}
  for number, text in pairs(field.values or {}) do
    words[#words + 1] = { number, text }
  end
  table.sort(words, function(a, b) return a[1] < b[1] end)
  for i, word in ipairs(words) do
    words[i] = '"' .. word[2] .. '"'
  end
  if #words > 0 then
    expected = expected .. ", or one of " .. table.concat(words, ", ")
  end
  ending.give_up(("%s: %s: %s: expected %s, found %s"):format(subject.command, subject.name, field.name, expected,
    field.secret and "a secret" or problems.shown(value)), code)
end

-- Something that tells how a row's field and the value compare.
local function comparer(subject, field, value)
  local kind = field.reply.kind
  local numbers = subject.view.numbers[field.field]
  if numbers and numbers[value] then
    value = numbers[value]
  end
  if numeric[kind] then
    local wanted = tonumber(value)
    if not wanted or tostring(value):find("[xXnN]") then
      wrong(subject, field, "a number", value, "bad_number")
    end
    return function(has) return compare(has, wanted) end
  elseif kind == "counter" then
    if not tostring(value):match("^-?%d+$") then
      wrong(subject, field, "a whole number", value, "bad_number")
    end
    return function(has) return compare_digits(has, value) end
  elseif kind == "mac" or kind == "hex" or kind == "list" then
    local as_text = values.to_text[kind]
    local wanted, code, expected = as_text(value, field.reply, subject.reader)
    if not wanted then
      wrong(subject, field, expected, value, code)
    end
    return function(has)
      return compare(as_text(has, field.reply, subject.reader), wanted)
    end
  end
  return function(has) return compare(tostring(has), value) end
end

-- One word as a filter of a subject's rows: { field, operator, value, matches(row) }.
function filters.of(subject, word)
  local name, operator, value = filters.split(word)
  if not name then
    ending.misuse(subject.command, "FIELD=VALUE (or != < <= > >= ~ !~)", ending.quoted(word))
  end
  local field = subject:field(name)
  if not field.reply then
    ending.misuse(subject.command, "a field of a row of " .. subject.name, ending.quoted(name))
  end
  local filter = { field = field, operator = operator, value = value }
  local test = operators[operator]
  if type(test) == "string" then
    local pattern, wanted = filters.pattern(value), test == "found"
    function filter.matches(row)
      return (output.cell(row[field.name]):lower():find(pattern) ~= nil) == wanted
    end
  else
    local order = comparer(subject, field, value)
    function filter.matches(row)
      return test(order(row[field.field]))
    end
  end
  return filter
end

-- The filters of words, from the one at `first` on.
function filters.all(subject, words, first)
  local list = {}
  for i = first or 1, #words do
    list[#list + 1] = filters.of(subject, words[i])
  end
  return list
end

return filters

-- What is wrong with the fields that a caller gave: the first for a message, all
-- of them for a form. Loaded when something is.
local calling = require "librpc.record.calling"
local limits = require "librpc.record.limits"
local problems = require "librpc.record.problems"
local tables = require "librpc.record.tables"
local values = require "librpc.record.values"

local wrong = {}
local to_text = values.to_text

local function wrong_field(api, view, name, value)
  local field = view.field[name] or name
  if type(field) == "string" and tables.has_output(api, field) then
    local _, code, expected = to_text.skip()
    return { code = code, expected = expected, value = value }
  end
  local known, either = {}, {}
  for i, position in ipairs(api.input) do
    known[i] = view.name[position.name] or position.name
    either[i], either[#api.input + i] = known[i], position.name
  end
  local meant = problems.meant("one of its fields", name, either)
  return { code = "unknown_field", value = name, unnamed = true,
    expected = #known == 0 and "no field, because it takes none"
      or meant == "one of its fields" and "one of " .. table.concat(known, ", ") or meant }
end

-- The words of a field in the order of their numbers.
local function words_of(view, field)
  local order, words = {}, {}
  for number in pairs(view.words[field]) do
    order[#order + 1] = number
  end
  table.sort(order)
  for i, number in ipairs(order) do
    words[i] = view.words[field][number]
  end
  return words
end

local function wrong_value(view, field, value, code, expected, found)
  if view.words[field] then
    expected = ('%s, or one of "%s"'):format(expected, table.concat(words_of(view, field), '", "'))
  end
  return { code = code, expected = expected, value = value, field = field,
    found = view.secret[field] and "a secret" or found }
end

-- The problems by the names that the caller used.
local function problems_of(api, view, fields)
  local inputs, texts, called, found = tables.inputs_of(api), {}, {}, {}
  for name, value in pairs(fields) do
    local field = view.field[name] or name
    local position = inputs[field]
    if not position then
      found[name] = wrong_field(api, view, name, value)
    elseif called[field] then
      found[name] = { code = "same_field", expected = "one name of the field", field = field,
        found = field .. " and " .. view.name[field] }
    else
      local plain = calling.plain_value(view, field, value)
      local text, code, expected, instead = to_text[position.kind](plain, position, api)
      called[field], texts[field] = name, text
      found[name] = not text and wrong_value(view, field, value, code, expected, instead) or nil
    end
  end
  if next(found) == nil then
    local text, gap = calling.join(api, texts)
    if not text then
      found[called[gap] or view.name[gap] or gap] = { code = "empty_text", value = "", field = gap,
        expected = "a text that is not empty, because the fields behind it would move up" }
    end
  end
  return found
end

-- nil, a message and a code for one problem.
local function tell(api, name, problem)
  return tables.fail(problem.code, problem.unnamed and api.name or api.name .. ": " .. name, problem.expected,
    problem.value, problem.found)
end

-- nil, the message and the code of the first problem: names that are no field's,
-- then in the record's order.
function wrong.first(api, view, fields)
  local places, first = {}, nil
  for place, position in ipairs(api.input) do
    places[position.name] = place
  end
  local function place_of(problem)
    return problem.field and places[problem.field] or 0
  end
  local found = problems_of(api, view, fields)
  for name, problem in pairs(found) do
    local place, before = place_of(problem), first and place_of(found[first])
    if not first or place < before or place == before and tostring(name) < tostring(first) then
      first = name
    end
  end
  return tell(api, first, found[first])
end

-- Every wrong field at once, each { code, message, limits }; empty where all is
-- right. limits.lua says what `limits` has; `words` are those of the names.
function wrong.check(name, fields)
  local api, view, code = tables.open(name)
  if not api then
    return nil, view, code
  elseif type(fields) ~= "table" then
    return tables.fail("bad_type", api.name, "a table of fields", fields)
  end
  local told = {}
  for field_name, problem in pairs(problems_of(api, view, fields)) do
    local position = tables.inputs_of(api)[problem.field or field_name]
    local most = position and limits.of(position, api) or {}
    most.words = view.words[problem.field] and words_of(view, problem.field)
    local _, message = tell(api, field_name, problem)
    told[field_name] = { code = problem.code, message = message, limits = most }
  end
  return told
end

return wrong

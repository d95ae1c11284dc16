-- What a request's body can be: each part is checked before anything looks at it.
local json = require "librpc.web.json"
local refusals = require "librpc.web.refusals"

local bodies = {}

local function shown(value)
  if value == json.null then
    return "null"
  elseif type(value) == "table" then
    return json.is_array(value) and "an array" or "an object"
  end
  return require("librpc.record.problems").shown(value)
end

-- nil and a refusal: "WHERE: expected X, found Y".
function bodies.fail(where, expected, value)
  return refusals.make("bad_body", ("%s: expected %s, found %s"):format(where, expected,
    value == nil and "none" or shown(value)))
end

local checks = {}

function checks.object(value)
  return json.is_object(value), "an object"
end

function checks.list(value)
  return json.is_array(value), "an array"
end

function checks.text(value)
  return type(value) == "string", "a text"
end

function checks.seconds(value)
  return type(value) == "number" and value > 0 and value < math.huge, "a number above 0"
end

function checks.count(value)
  return type(value) == "number" and value >= 1 and value < math.huge and value % 1 == 0, "a whole number from 1"
end

function checks.truth(value)
  return type(value) == "boolean", "true or false"
end

-- Values by a field's name: texts, numbers and lists of them.
function checks.fields(value)
  if not json.is_object(value) then
    return false, "an object of fields"
  end
  for name, item in pairs(value) do
    local items = type(item) == "table" and json.is_array(item) and item or { item }
    for _, one in ipairs(items) do
      if type(one) ~= "string" and type(one) ~= "number" then
        return false, "a text, a number or an array of them as field " .. require("librpc.record.problems").shown(name),
          one
      end
    end
  end
  return true
end

-- A row as an answer has it: a secret is null there.
function checks.row(value)
  if not json.is_object(value) then
    return false, "an object of fields"
  end
  local told = {}
  for name, item in pairs(value) do
    if item ~= json.null then
      told[name] = item
    end
  end
  local right, expected, found = checks.fields(told)
  return right, expected, found, told
end

-- The members of an object, checked: `members` has their checks by name. nil and a
-- refusal where one is wrong or unknown. null stands for none.
function bodies.take(where, object, members)
  if not json.is_object(object) then
    return bodies.fail(where, "an object", object)
  end
  local taken = {}
  for name, value in pairs(object) do
    local check = checks[members[name] or ""]
    if not check then
      return bodies.fail(where, require("librpc.record.problems").one_of(members, name), name)
    elseif value ~= json.null then
      local right, expected, found, told = check(value)
      if not right then
        if found == nil then
          found = value
        end
        return bodies.fail(where .. ": " .. name, expected, found)
      end
      taken[name] = told or value
    end
  end
  return taken
end

return bodies

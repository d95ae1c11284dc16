-- What the commands that read rows share: their options, and reading by them.
local ending = require "rpcctl.ending"
local filters = require "rpcctl.filters"
local formats = require "rpcctl.formats"

local reading = {}

-- Options of walks.
reading.options = {
  { "after", "FIELD=VALUE", "begin behind the row of that key; a key of several fields: once for each", many = true,
    what = "field" },
  { "end", "FIELD=VALUE", "the row that has it stands behind the last; for tables that do not say where they end",
    what = "field" },
}

-- The options of a command that prints rows: some of its own, then the shared.
function reading.all_options(own)
  local list = {}
  for _, group in ipairs { own, reading.options, formats.options } do
    for _, option in ipairs(group) do
      list[#list + 1] = option
    end
  end
  return list
end

-- The settings for Subject:each of a command's options.
function reading.settings(subject, options)
  return {
    after = options.after and subject:assigned(options.after),
    ending = options["end"] and filters.of(subject, options["end"]),
    call_seconds = options.call_seconds,
  }
end

-- What compares two rows by a field; `-FIELD` the other way round.
function reading.order(subject, name)
  local minus, field_name = name:match("^(%-?)(.*)$")
  local field = subject:field(field_name)
  if not field.reply then
    ending.misuse(subject.command, "a field of a row of " .. subject.name, ending.quoted(field_name))
  end
  local function value_of(row)
    local value = row[field.field]
    if field.reply.kind == "counter" then
      local sign, digits = value:match("^(%-?)0*(%d+)$")
      return sign == "-" and -tonumber(digits) or #digits, sign == "-" and "" or digits
    elseif type(value) == "number" then
      return value, ""
    end
    return 0, type(value) == "table" and table.concat(value, ",") or value
  end
  return function(a, b)
    if minus == "-" then
      a, b = b, a
    end
    local first_a, then_a = value_of(a)
    local first_b, then_b = value_of(b)
    if first_a ~= first_b then
      return first_a < first_b
    end
    return then_a < then_b
  end
end

-- Sorts rows, equal ones staying in their order.
function reading.sort(rows, before)
  local places = {}
  for i, row in ipairs(rows) do
    places[row] = i
  end
  table.sort(rows, function(a, b)
    if before(a, b) then
      return true
    end
    return not before(b, a) and places[a] < places[b]
  end)
end

return reading

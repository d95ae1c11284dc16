-- The status that a set's reply is.
local tables = require "librpc.record.tables"
local values = require "librpc.record.values"

-- The number whose bytes begin with the text's and go on with zeros.
local function number_of_bytes(text, low_first)
  local number = 0
  for i = 1, 4 do
    local byte = text:byte(low_first and 5 - i or i) or 0
    number = number * 256 + byte
  end
  return number > values.int_most and number - values.unsigned_values or number
end

-- The status of a set. Three sets print theirs as if it began a record; what
-- stands there as a text (the bytes of the number) has lost all behind a zero.
return function(api, text)
  local form = api.status
  local body = text
  if form then
    local rest = #text - #form.rest
    body = rest >= 0 and text:sub(rest + 1) == form.rest and text:sub(1, rest) or nil
    if body and form.kind ~= "int" and #body <= 4 then
      return number_of_bytes(body, form.kind == "little")
    end
  end
  local number = body and values.to_value.int(body)
  if not number then
    return tables.fail("bad_text", api.name, "a status", text)
  end
  return number
end

-- What a field can be given, as data: for a form, which says it in its reader's
-- language. A new kind of values.lua is a function here.
local values = require "librpc.record.values"

local limits = {}

-- What a value of the position can be, as data: `least` and `most` of a number,
-- `longest` of a text or of bytes, `characters` that a text cannot hold, `items`
-- of a list.
local of_kind = {}

function of_kind.int()
  return { least = values.int_least, most = values.int_most }
end

function of_kind.unsigned()
  return { least = 0, most = values.unsigned_most }
end

function of_kind.text(position, api)
  return { longest = position.size - 1, characters = api.delimiters }
end
of_kind.bytes = of_kind.text

function of_kind.hex(position)
  return { longest = position.size }
end

function of_kind.list(position)
  return { items = position.size, least = position.least, most = position.most, longest = position.longest }
end

-- Of a position of the API's argument.
function limits.of(position, api)
  local found = of_kind[position.kind]
  return found and found(position, api) or {}
end

return limits

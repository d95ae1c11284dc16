-- Arithmetic with 64-bit counters, which are texts of digits.
local counters = {}

-- A Lua number without ".0" where the Lua at hand tells integers from others.
local as_integer = math.tointeger or function(number) -- luacheck: ignore 143
  return number
end

-- How far a counter went from `earlier` to `later`, over the end of its 64 bits
-- if need be: the shorter way, so below 0 where it went back; exact up to 2^53.
function counters.difference(later, earlier)
  local high, low = 0, 0
  for sign, counter in pairs { [1] = later, [-1] = earlier } do
    local minus, digits = tostring(counter):match("^(-?)(%d+)$")
    if not digits then
      local problems = require "librpc.record.problems"
      return problems.fail("bad_number", "record.difference", "a counter's digits", problems.shown(counter))
    end
    local to = minus == "-" and -sign or sign
    high = high + to * (tonumber(digits:sub(1, -11)) or 0)
    low = low + to * tonumber(digits:sub(-10))
  end
  high, low = high + math.floor(low / 1e10), low % 1e10
  if high * 1e10 + low >= 2 ^ 63 then -- 2^64 is 1844674407 3709551616
    high, low = high - 1844674407, low - 3709551616
  elseif high * 1e10 + low < -2 ^ 63 then
    high, low = high + 1844674407, low + 3709551616
  end
  return as_integer(high * 1e10 + low)
end

return counters

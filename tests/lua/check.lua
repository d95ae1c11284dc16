-- What the Lua tests are written with: rows of input and exact result.
--
--   local check = require "check"
--   check.equal("what is tested", got, expected)   tables are compared by content
--   check.row(record.encode, { arguments }, { results })
--   check.finish()                                 the process's exit status
local check = {}
local unpack = unpack or table.unpack -- luacheck: ignore 143

local passed, failed = 0, 0

-- A value as Lua would be given it, tables by sorted keys.
function check.show(value)
  if type(value) == "string" then
    return '"' .. value:gsub('[%c"\\]', function(byte)
      return ("\\%03d"):format(byte:byte())
    end) .. '"'
  elseif type(value) == "number" then
    return ("%.17g"):format(value)
  elseif type(value) ~= "table" then
    return tostring(value)
  end
  local keys, items = {}, {}
  for key in pairs(value) do
    keys[#keys + 1] = key
  end
  table.sort(keys, function(a, b)
    return tostring(a) < tostring(b)
  end)
  for i, key in ipairs(keys) do
    items[i] = (type(key) == "string" and key or "[" .. tostring(key) .. "]") .. " = " .. check.show(value[key])
  end
  return "{ " .. table.concat(items, ", ") .. " }"
end

function check.equal(what, got, expected)
  local found, wanted = check.show(got), check.show(expected)
  if found == wanted then
    passed = passed + 1
  else
    failed = failed + 1
    io.stderr:write(("%s:\n  expected %s\n  found    %s\n"):format(what, wanted, found))
  end
end

function check.matches(what, got, pattern)
  check.equal(what, type(got) == "string" and got:find(pattern) and pattern or got, pattern)
end

local function list(...)
  local values = { ... }
  for i = 1, select("#", ...) do
    values[i] = values[i] == nil and "nil" or values[i]
  end
  return values
end

-- Calls a function with a row's arguments and compares all that it returns; nil
-- is written "nil" in the expected results.
function check.row(called, arguments, expected, what)
  check.equal(what or check.show(arguments), list(called(unpack(arguments, 1, 5))), expected)
end

function check.finish()
  io.stdout:write(("%d passed, %d failed\n"):format(passed, failed))
  os.exit(failed == 0 and passed > 0 and 0 or 1)
end

return check

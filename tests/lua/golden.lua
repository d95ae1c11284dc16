-- Reads the lists of tests/golden: what others rely on, written by hand. A test
-- that wants to know how many services or APIs there are, or in which order, asks
-- them (tests in C++: tests/golden/golden_list.h).
--
--   local golden = require "golden"
--   golden.list "apis.txt"         the entries, each an array of its words
--   golden.column("apis.txt", 2)   one word of each entry
--   golden.calls()                 every call of vectors/ (tests/golden/golden_file.h)
local golden = {}

function golden.list(name)
  local entries = {}
  local path = os.getenv("LIBRPC_TEST_SOURCE") .. "/tests/golden/" .. name
  for line in assert(io.open(path)):lines() do
    if not line:match("^#") and line ~= "" then
      local words = {}
      for word in line:gmatch("%S+") do
        words[#words + 1] = word
      end
      entries[#entries + 1] = words
    end
  end
  return assert(#entries > 0 and entries, path .. ": expected entries, found none")
end

function golden.column(name, number)
  local words = {}
  for i, entry in ipairs(golden.list(name)) do
    words[i] = entry[number]
  end
  return words
end

local function unescaped(text)
  return (text:gsub("\\x(%x%x)", function(digits) return string.char(tonumber(digits, 16)) end))
end

-- The units of a req or rep line, as numbers from 0 to 2^32 - 1.
local function units(text)
  local list, at = {}, 1
  while at <= #text do
    local quoted, zeroes, number = text:match('^"([^"]*)" ?', at), text:match("^0%*(%d+) ?", at), text:match("^%S+", at)
    if quoted then
      for c in unescaped(quoted):gmatch(".") do
        list[#list + 1] = c:byte()
      end
      at = at + #quoted + 3
    elseif zeroes then
      for _ = 1, tonumber(zeroes) do
        list[#list + 1] = 0
      end
      at = at + #zeroes + 3
    else
      list[#list + 1] = assert(tonumber(number), text) % 2 ^ 32
      at = at + #number + 1
    end
  end
  return list
end

-- Each call is { place, api, argument, request, reply, text }: the argument's text,
-- two lists of units and the reply's text, which is none where it is not fixed.
function golden.calls()
  local calls, folder = {}, os.getenv("LIBRPC_TEST_SOURCE") .. "/tests/golden/vectors/"
  local keys = { api = "api", arg = "argument", req = "request", rep = "reply", txt = "text" }
  local files = {}
  for _, program in ipairs(golden.column("services.txt", 1)) do
    files[#files + 1] = program .. ".txt"
  end
  for _, name in ipairs(files) do
    local number = 0
    for line in assert(io.open(folder .. name)):lines() do
      number = number + 1
      local word, value = line:match("^(%l%l%l) ?(.*)$")
      if word == "api" then
        calls[#calls + 1] = { place = ("%s:%d"):format(name, number) }
      end
      local key = keys[word]
      if key then
        local units_follow = word == "req" or word == "rep"
        calls[#calls][key] = units_follow and units(value) or not units_follow and unescaped(value)
      end
    end
  end
  return assert(#calls > 0 and calls, folder .. ": expected calls, found none")
end

return golden

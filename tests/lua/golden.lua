-- Reads the lists of tests/golden: what others rely on, written by hand. A test
-- that wants to know how many services or APIs there are, or in which order, asks
-- them (tests in C++: tests/golden/golden_list.h).
--
--   local golden = require "golden"
--   golden.list "apis.txt"         the entries, each an array of its words
--   golden.column("apis.txt", 2)   one word of each entry
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

return golden

-- Runs the example lines of the reference beside the simulated device, and
-- compares each reply with what the page says of it: a set returns 0, a row has
-- as many positions as the page lists, and a get returns the row that the
-- page's set has stored. Run beside a device:
--     lua reference_test.lua PAGE...
require "librpc"

local failures = 0
local function fail(where, expected, found)
  failures = failures + 1
  io.stderr:write(("reference: %s: expected %s, found %s\n"):format(where, expected, tostring(found)))
end

local function cut(text, separator)
  local parts, from = {}, 1
  while true do
    local first, last = text:find(separator, from, true)
    parts[#parts + 1] = text:sub(from, (first or 0) - 1)
    if not first then
      return parts
    end
    from = last + 1
  end
end

-- One "## table" of a page: its APIs' replies, its positions, its examples.
local function read_tables(page)
  local tables = {}
  for line in io.lines(page) do
    local one = tables[#tables]
    if line:match("^## ") then
      tables[#tables + 1] = { page = page, replies = {}, positions = {}, examples = {}, separator = "&" }
    elseif one then
      local api, reply = line:match("^| `(oltmib_[%w_]+)` | %d+ | %w+ | ([%w, ]-) |$")
      if api then
        one.replies[api] = reply
      end
      local into, out, field, kind, notes = line:match("^| (%d*) | (%d*) | `(%w+)` | ([%w, ]-) | %d* | (.-) |$")
      if into then
        table.insert(one.positions, { into = tonumber(into), out = tonumber(out), field = field, kind = kind,
          notes = notes })
      end
      one.separator = line:match("^The reply's positions stand between `(.-)`%.$") or one.separator
      local name, argument = line:match('^librpc%.callapi%("([^"]*)", "([^"]*)"%)$')
      if name then
        table.insert(one.examples, { api = name, argument = argument })
      end
    end
  end
  return tables
end

local function as_replied(value, kind)
  return kind == "mac" and value:gsub(":", "-") or value
end

local compared = 0
local function compare_rows(where, one, stored, found)
  for _, position in ipairs(one.positions) do
    local read = position.into and position.out and not position.notes:find("not read", 1, true)
    local daemons_own = position.field == "oper" or position.field == "res"
    if read and not daemons_own and not position.kind:find("back", 1, true) then
      local expected = as_replied(stored[position.into], position.kind)
      compared = compared + 1
      if found[position.out] ~= expected then
        fail(where .. ": " .. position.field, expected, found[position.out])
      end
    end
  end
end

local ran = 0
for _, page in ipairs(arg) do
  for _, one in ipairs(read_tables(page)) do
    local positions, stored = 0, {}
    for _, position in ipairs(one.positions) do
      positions = math.max(positions, position.out or 0)
    end
    for _, example in ipairs(one.examples) do
      local where, reply = example.api, one.replies[example.api]
      local result = librpc.callapi(example.api, example.argument)
      ran = ran + 1
      if not result then
        fail(where, "a reply", "none")
      elseif reply == "the status" then
        if result ~= "0" then
          fail(where, "0", result)
        end
      else
        local parts = cut(result, one.separator)
        if #parts ~= positions then
          fail(where, positions .. " positions", result)
        end
        if reply == "the status, then empty positions" and parts[1] ~= "0" and parts[1] ~= "" then
          fail(where, "a status of 0 or an empty text of it", result)
        end
      end
      local table_name, verb = example.api:match("^oltmib_(.+)_(%w+)_1$")
      if verb == "set" then
        stored[table_name] = cut(example.argument, "&")
      elseif verb == "get" and stored[table_name] and result then
        compare_rows(where, one, stored[table_name], cut(result, one.separator))
      end
    end
  end
end
local apis = #require("golden").list "apis.txt"
if ran ~= apis then
  fail("pages", ("an example for each of the %d APIs"):format(apis), ran)
end
if compared == 0 then
  fail("pages", "rows that were set and read again", "none")
end
print(("%d examples ran, %d fields read back"):format(ran, compared))
os.exit(failures == 0 and 0 or 1)

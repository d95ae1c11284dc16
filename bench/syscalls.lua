-- System calls of a call, as strace counts them: the difference of two runs.
local output = require("output")

local syscalls = {}

local most_names = 5 -- that are shown

local function count(way, calls, api, scratch)
  local path = scratch .. "/strace.txt"
  output.of(("strace -f -c -o %s lua5.1 bench/fresh.lua calls %s %d %s"):format(path, way, calls, api))
  local counts = {}
  for line in io.lines(path) do
    local number, rest = line:match("^%s*[%d.]+%s+[%d.]+%s+%d+%s+(%d+)%s+(.*)$")
    local name = rest and rest:match("([%w_]+)$")
    if name and name ~= "total" then
      counts[name] = tonumber(number)
    end
  end
  return counts
end

-- {total = calls, list = "sendto 1, recvfrom 1"} of what `more` has over `less`.
local function difference(more, less, calls)
  local result, names = { total = 0 }, {}
  for name, number in pairs(more) do
    local each = (number - (less[name] or 0)) / calls
    if math.abs(each) >= 0.01 then
      result.total = result.total + each
      names[#names + 1] = { name = name, each = each }
    end
  end
  table.sort(names, function(a, b)
    return a.each > b.each or a.each == b.each and a.name < b.name
  end)
  local shown = {}
  for i = 1, math.min(#names, most_names) do
    shown[i] = ("%s %g"):format(names[i].name, names[i].each)
  end
  if #names > #shown then
    shown[#shown + 1] = ("%d others"):format(#names - #shown)
  end
  result.list = table.concat(shown, ", ")
  return result
end

-- What one call of the API costs on a kept client, and the first one.
function syscalls.measure(way, api, scratch)
  local none, one = count(way, 0, api, scratch), count(way, 1, api, scratch)
  local few, many = count(way, 100, api, scratch), count(way, 1100, api, scratch)
  return difference(many, few, 1000), difference(one, none, 1)
end

return syscalls

-- What a fresh process is for: fresh.lua WHAT [ARGUMENT]... prints what only that can tell,
-- or makes calls for the tools that watch a whole process.
--
--     calls WAY COUNT [API]  so many calls of the API, where WAY is librpc, plain or none
--     first API...         the microseconds that the first calls of all services take
--     opening LIBRARY      the processor's microseconds that luaopen_librpc takes
--     residence LIBRARY    once every API was called, what the kernel says of the library's
--                          pages in KiB: resident, of that its own copies (written to),
--                          both with the zeroed data right behind the file's mappings
local bench = require("bench")

local function call(librpc, api, argument)
  if not librpc.callapi(api, argument) then
    error(("fresh: %s: expected a reply, found none"):format(api), 0)
  end
end

local what = {}

function what.calls(way, count, api)
  if way == "none" then
    return
  end
  local library = require(way)
  local make = way == "plain" and library[api] or function(argument)
    return library.callapi(api, argument)
  end
  local argument
  for _, row in ipairs(require("calls")) do
    argument = row.api == api and row.argument or argument
  end
  for _ = 1, tonumber(count) do
    if not make(argument) then
      error(("fresh: %s: expected a reply, found none"):format(api), 0)
    end
  end
end

function what.first(...)
  local librpc = require("librpc")
  local start = bench.now()
  for _, api in ipairs { ... } do
    call(librpc, api, "1")
  end
  return bench.now() - start
end

function what.opening(library)
  local open = assert(package.loadlib(library, "luaopen_librpc"))
  local start = bench.used()
  open()
  return bench.used() - start
end

function what.residence(library)
  local librpc = require("librpc")
  for _, api in ipairs(bench.apis()) do
    call(librpc, api.name, bench.argument(api.name))
  end
  local last, counts
  local resident, private = 0, 0
  for line in io.lines("/proc/self/smaps") do
    local from, to, name = line:match("^(%x+)%-(%x+) %S+ %S+ %S+ %d+%s*(.*)$")
    if from then
      counts = name == library or name == "" and from == last
      last = counts and to or nil
    elseif counts then
      resident = resident + tonumber(line:match("^Rss:%s+(%d+)") or 0)
      private = private + tonumber(line:match("^Private_Dirty:%s+(%d+)") or 0)
    end
  end
  return resident, private
end

local found = { what[arg[1]](unpack(arg, 2)) }
if found[1] then
  print(unpack(found))
end

-- The benchmark: measures, shows its tables, and writes performance.md and
-- performance.svg. run.lua BUILD PORT PID OUTPUT SPEED,
-- the daemon's port and process; see tools/dev_bench.sh.
local at_once = require("at_once")
local output = require("output")
local pages = require("pages")
local plot = require("plot")
local profile = require("profile")
local report = require("report")
local size = require("size")
local startup = require("startup")
local syscalls = require("syscalls")
local timing = require("timing")

local build, folder, quick = arg[1], arg[4], arg[5] == "quick"
local library = build .. "/librpc.so"
local scratch = build .. "/bench/scratch"
os.execute("mkdir -p " .. scratch)

local function rounds(full)
  return quick and math.ceil(full / 10) or full
end

local function progress(what)
  io.stderr:write("bench: ", what, "\n")
end

local results = {}

progress("start")
results.startup = startup.measure(library, rounds(201))

progress("pages")
results.pages = pages.measure(build, rounds(201))

progress("calls")
timing.use(tonumber(arg[2]), tonumber(arg[3]))
results.calls = timing.calls(rounds(601), 50)
progress("growth")
results.by_size = timing.by_size(rounds(201), 50, 12)
results.by_registry = timing.by_registry(library, { 304, 3000, 30000 }, rounds(201), 50)

progress("instructions")
results.instructions = {}
for _, row in ipairs(results.calls) do
  local of_api = {}
  for _, way in ipairs({ "librpc", "plain" }) do
    local split, functions = profile.measure(way, row.api.name, scratch)
    of_api[way] = { split = split, functions = functions }
  end
  results.instructions[row.api.name] = of_api
end

progress("system calls")
results.syscalls = {}
for _, row in ipairs({ results.calls[1], results.calls[#results.calls] }) do
  for _, way in ipairs({ "librpc", "plain" }) do
    local kept, first = syscalls.measure(way, row.api.name, scratch)
    table.insert(results.syscalls, { api = row.api.name, way = way, kept = kept, first = first })
  end
end

progress("size")
results.size = size.measure(library, scratch)

progress("many calls at once")
results.at_once = at_once.measure(build, rounds(601))

-- What the figures were taken on.
local function machine()
  local function first(command)
    return (output.of(command):match("^%s*(.-)%s*\n"))
  end
  return table.concat({
    "- processor: " .. first("lscpu | sed -n 's/^Model name: *//p' | head -n 1") .. ", "
      .. first("lscpu | sed -n 's/^Architecture: *//p'"),
    "- kernel: " .. first("uname -sr"),
    "- compiler: " .. first("$(sed -n 's/^CMAKE_CXX_COMPILER:[^=]*=//p' " .. build .. "/CMakeCache.txt) --version"),
    "- C library: " .. first("getconf GNU_LIBC_VERSION 2>/dev/null || echo unknown"),
    "- Lua: " .. first("lua5.1 -v 2>&1"),
    "- libtirpc: " .. first("dpkg-query -Wf '${Version}\\n' libtirpc3 2>/dev/null || pkg-config --modversion libtirpc"),
  }, "\n")
end

local tables = report.tables(results)
tables[#tables + 1] = at_once.table(results)
tables.atonce = tables[#tables]
for _, one in ipairs(tables) do
  print(report.as_text(one))
end
local words = { machine = machine(), date = os.date("%Y-%m-%d") }
output.write(folder .. "/performance.md", report.fill(output.read("bench/performance.md.in"), tables, words))
output.write(folder .. "/performance.svg", plot.svg(results))

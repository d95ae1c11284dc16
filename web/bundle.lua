-- Compiles what the requests of a page need into one file, which librpc.cgi loads in a
-- fourth of the time that the sources take:
--
--     lua5.1 bundle.lua OUTPUT FOLDER...
--
-- The folders have the modules' sources, the first that has one counts. Compiled Lua is
-- of one version of Lua and one kind of processor; librpc.cgi takes the sources where
-- the file is another's or not there. What is edited has to be compiled again.
local output = arg[1]

-- The other modules are for changes, schemas, metrics and mistakes; they stay sources.
local modules = {
  "librpc.names", "librpc.names.columns", "librpc.names.files", "librpc.names.views", "librpc.names.words",
  "librpc.record", "librpc.record.at_once", "librpc.record.calling", "librpc.record.clock", "librpc.record.kinds",
  "librpc.record.reading", "librpc.record.statuses", "librpc.record.tables", "librpc.record.values",
  "librpc.record.walking",
  "librpc.web.bodies", "librpc.web.cells", "librpc.web.cgi", "librpc.web.handler", "librpc.web.health",
  "librpc.web.json", "librpc.web.reads", "librpc.web.refusals", "librpc.web.rights", "librpc.web.session",
  "librpc.web.site", "librpc.web.tokens",
}

local function fail(where, expected, found)
  io.stderr:write(("bundle: %s: expected %s, found %s\n"):format(where, expected, found))
  os.exit(1)
end

local function source_of(module)
  for i = 2, #arg do
    local file = io.open(("%s/%s.lua"):format(arg[i], (module:gsub("%.", "/"))))
    if file then
      local source = file:read("*a")
      file:close()
      return source
    end
  end
  return fail(module, "its source in " .. table.concat(arg, ", ", 2), "none")
end

if #arg < 2 then
  fail("arguments", "OUTPUT FOLDER...", #arg)
end
local parts = {}
for i, module in ipairs(modules) do
  parts[i] = ("package.preload[%q] = function(...)\n%s\nend\n"):format(module, source_of(module))
end
local chunk, problem = loadstring(table.concat(parts), "=librpc.luac") -- luacheck: ignore 113
if not chunk then
  fail("modules", "Lua", problem)
end

local file, is_written
file, problem = io.open(output, "wb")
if file then
  is_written, problem = file:write(string.dump(chunk))
end
if is_written then
  is_written, problem = file:close()
end
if not is_written then
  fail(output, "a file that can be written", problem)
end

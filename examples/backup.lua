-- Saves a service's settings in a Lua file, and brings them back:
--
--     lua5.1 examples/backup.lua save vrrpinfo vrrp.lua
--     lua5.1 examples/backup.lua restore vrrp.lua
--
-- Settings are the rows of every table that can be both read and set. What
-- cannot be kept is said, and makes the exit status 1.
local record = require "librpc.record"
local schema = require "librpc.schema"

local failures = 0

local function complain(...)
  failures = failures + 1
  io.stderr:write("backup: ", table.concat({ ... }, " "), "\n")
end

-- The rows of a table: by its getn, or the one that its get gives.
local function rows_of(set)
  local getn, get = record.find(set.table, "getn"), record.find(set.table, "get")
  if getn then
    return record.rows(getn.name)
  elseif not get then
    return nil, set.table .. ": cannot be read"
  end
  local row, message = record.get(set.table)
  return row and { row }, message
end

-- A value as Lua source.
local function source(value)
  if type(value) == "table" then
    return "{ " .. table.concat(value, ", ") .. " }"
  end
  return type(value) == "string" and ("%q"):format(value):gsub("\\\n", "\\n") or tostring(value)
end

local function save(service, path)
  local file = assert(io.open(path .. ".new", "w"))
  local known = false
  file:write("return {\n")
  for _, set in ipairs(schema.apis) do
    if set.service == service and set.operation == "set" then
      known = true
      local rows, message = rows_of(set)
      if not rows then
        complain("not kept:", message)
      end
      for _, row in ipairs(rows or {}) do
        local kept = record.carried(set.name, row)
        file:write(("  { %q, {"):format(set.name))
        for _, position in ipairs(set.input) do -- in the record's order
          local name = position.name
          if kept[name] ~= nil then
            file:write((" [%q] = %s,"):format(name, source(kept[name])))
          end
          if position.kind == "bytes" then
            complain("not kept:", set.table .. ": " .. name)
          elseif position.kind == "real" then
            complain("kept with two decimals:", set.table .. ": " .. name)
          end
        end
        file:write(" } },\n")
      end
    end
  end
  if not known then
    complain("no such service, or none with settings:", service)
  end
  assert(file:write("}\n"))
  assert(file:close())
  assert(os.rename(path .. ".new", path)) -- a whole file, or the old one
end

-- The table that a file returns, which sees nothing of this program.
local function load_table(path)
  local chunk
  if setfenv then
    chunk = setfenv(assert(loadfile(path)), {}) -- luacheck: ignore 113
  else
    chunk = assert(loadfile(path, "t", {})) -- luacheck: ignore
  end
  return chunk()
end

local function restore(path)
  for _, entry in ipairs(load_table(path)) do
    local status, message = record.call(entry[1], entry[2])
    if not status then
      complain(message)
    elseif status ~= 0 then
      complain(entry[1] .. ":", "the daemon's status is", tostring(status))
    end
  end
end

if arg[1] == "save" and arg[3] then
  save(arg[2], arg[3])
elseif arg[1] == "restore" and arg[2] then
  restore(arg[2])
else
  io.stderr:write("usage: backup.lua save SERVICE FILE | restore FILE\n")
  os.exit(2)
end
os.exit(failures == 0 and 0 or 1)

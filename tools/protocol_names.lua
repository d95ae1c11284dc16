-- Prints a protocol file with what a file of names says of its fields: the name
-- for people, the unit, which are the key. For daemons' makers, who then have both
-- before them; rpcgen makes the same of it.
--
--     LIBRPC_NAMES=names.lua lua protocol_names.lua protocol/nsminfo.x
local names = require "librpc.names"
local schema = require "librpc.schema"

local path = arg[1]
local file, problem = io.open(path or "")
if not file then
  io.stderr:write(("protocol_names: %s: expected a protocol file, found %s\n"):format(path or "argument", problem))
  os.exit(1)
end

-- What is said of a record's fields, by the table that comes first.
local said = {}
for _, api in ipairs(schema.apis) do
  for _, record in ipairs { api.request, api.reply } do
    if not said[record] then
      said[record] = {}
      for _, field in ipairs(names.fields(api.table) or {}) do
        local words = { field.key and "key" or nil }
        if field.name ~= field.field then
          words[#words + 1] = field.name
        end
        if field.unit then
          words[#words + 1] = "in " .. field.unit
        end
        said[record][field.field] = words[1] and table.concat(words, ", ")
      end
    end
  end
end

local record
for line in file:lines() do
  record = line:match("^struct ([%w_]+) {") or record
  local field = line:match("^    [%w_ ]- ?([%w_]+)%[?%d*%]?;")
  local words = field and said[record] and said[record][field]
  if words then
    line = line:match("%*/$") and line:gsub(" %*/$", "; " .. words:gsub("%%", "%%%%") .. " */")
      or line .. " /* " .. words .. " */"
  end
  print((line))
end

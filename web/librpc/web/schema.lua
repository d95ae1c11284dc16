-- GET /api/schema: every table and field with all that the names tell, the same for
-- every user. A page keeps it; its tag changes with its content.
local columns = require "librpc.names.columns"
local json = require "librpc.web.json"
local limits = require "librpc.record.limits"
local names = require "librpc.names"
local record_codes = require("librpc.record").codes
local refusals = require "librpc.web.refusals"
local schema = require "librpc.schema"
local status_codes = require("librpc.status").codes
local tables = require "librpc.record.tables"

local seconds_kept = 60 -- in a browser, before it asks whether it changed

local operations = { "get", "getn", "set", "other" }

-- The words of a field's numbers, by their digits.
local function words_of(values)
  local words = {}
  for number, word in pairs(values) do
    words[("%d"):format(number)] = word
  end
  return words
end

local function field_of(field, set)
  local position = set and tables.inputs_of(set)[field.field]
  return {
    field = field.field, name = field.name, title = field.title, kind = field.kind, size = field.size,
    key = field.key and true or false, argument = field.argument and true or false, unit = field.unit,
    description = field.description, values = field.values and words_of(field.values),
    secret = field.secret and true or nil, role = field.role,
    limits = position and position.kind ~= "skip" and limits.of(position, set) or nil,
  }
end

local function table_of(name, apis, view)
  local entry = names.tables[name] or {}
  local there, any = {}, nil
  for _, operation in ipairs(operations) do
    there[#there + 1] = apis[operation] and operation
    any = any or apis[operation]
  end
  local key, fields = {}, {}
  for i, field in ipairs(view.key or {}) do
    key[i] = view.name[field] or field
  end
  for i, field in ipairs(columns.fields(name)) do
    fields[i] = field_of(field, apis.set)
  end
  return {
    table = name, title = entry.title or name, description = entry.description, role = entry.table_role,
    service = any.service, operations = json.array(there), key = view.key and json.array(key) or json.null,
    fields = json.array(fields),
  }
end

local function all()
  local services, listed, apis, seen = {}, {}, {}, {}
  for i, service in ipairs(schema.services) do
    services[i] = { name = service.name, title = service.title, program = service.program }
  end
  for i, api in ipairs(schema.apis) do
    apis[i] = { name = api.name, table = api.table, operation = api.operation, service = api.service }
    if not seen[api.table] then
      seen[api.table] = true
      listed[#listed + 1] = table_of(api.table, tables.operations(api.table), names.view(api.table))
    end
  end
  local codes = {}
  for code, own in pairs(refusals.own) do
    codes[code] = own[2]
  end
  for _, meanings in ipairs { record_codes, status_codes } do
    for code, meaning in pairs(meanings) do
      codes[code] = meaning
    end
  end
  return json.encode { services = json.array(services), tables = json.array(listed), apis = json.array(apis),
    codes = codes }
end

-- A number that another text hardly has; nothing rests on that but a browser's cache.
local function tag_of(text)
  local sum, other = 1, 0
  for from = 1, #text, 4 do
    local a, b, c, d = text:byte(from, from + 3)
    sum = (sum * 31 + a + (b or 0) * 256 + (c or 0) * 65536 + (d or 0) * 16777216) % 2147483647
    other = (other + sum) % 2147483647
  end
  return ('"%x-%x-%x"'):format(#text, sum, other)
end

local kept -- of this process

return function(request)
  if not kept then
    local text = all()
    kept = { text = text, tag = tag_of(text) }
  end
  local headers = { ["Content-Type"] = "application/json", ETag = kept.tag,
    ["Cache-Control"] = ("private, max-age=%d"):format(seconds_kept) }
  if request.header "if-none-match" == kept.tag then
    return { status = 304, headers = headers, text = "" }
  end
  return { status = 200, headers = headers, text = kept.text }
end

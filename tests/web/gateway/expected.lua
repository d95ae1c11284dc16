-- What librpc.record gives, as JSON, for the tests of subjects/ to compare with:
--
--     lua5.1 expected.lua reads      a list of { api, fields, row | code } of every get and getn
--     lua5.1 expected.lua sets       a list of { api, fields, status | code } of every other API
--     lua5.1 expected.lua changes    a list of { table, key, changes, back, status, changed | code }: each change
--                                    is made, and taken back
--     lua5.1 expected.lua secrets    the fields that are secret, as TABLE.FIELD
--     lua5.1 expected.lua gateway    the gateway's addresses, its own codes, the statuses of all
--     lua5.1 expected.lua get TABLE KEY FIELD    one field of one row; KEY as JSON
local cjson = require "cjson"
local names = require "librpc.names"
local record = require "librpc.record"
local schema = require "librpc.schema"

local function object(fields)
  local plain = setmetatable({}, nil)
  for name, value in pairs(fields) do
    plain[name] = value
  end
  return plain
end

-- The first row of a table, by the given names; nil where it has none.
local function first_row(table_name)
  local apis = schema.table(table_name)
  local reader = apis.getn or apis.get
  local row = reader and record.call(reader.name, {})
  return row, reader
end

-- What of the first row an API's argument carries, without what is secret: a caller
-- of the gateway has no secrets.
local function fields_for(api)
  local row, reader = first_row(api.table)
  local carried = row and reader and record.carried(api.name, row) or {}
  for _, field in ipairs(names.fields(api.table)) do
    if field.secret then
      carried[field.field] = nil
    end
  end
  return carried
end

local function reads()
  local list = {}
  for _, api in ipairs(schema.apis) do
    if api.operation == "get" or api.operation == "getn" then
      local fields = api.operation == "get" and fields_for(api) or {}
      local row, _, code = record.call(api.name, fields)
      list[#list + 1] = { api = api.name, fields = object(fields), row = row and object(row), code = code }
    end
  end
  return list
end

local function sets()
  local list = {}
  for _, api in ipairs(schema.apis) do
    if api.operation == "set" or api.operation == "other" then
      local fields = fields_for(api)
      local result, _, code = record.call(api.name, fields)
      list[#list + 1] = { api = api.name, fields = object(fields), code = code,
        status = type(result) == "number" and result or nil, row = type(result) == "table" and object(result) or nil }
    end
  end
  return list
end

-- Another value for a field, as its reader has it.
local function other_value(field, value)
  if field.kind == "text" then
    return value == "changed" and "other" or "changed"
  elseif field.kind == "int" then
    for _, word in pairs(field.values or {}) do
      if word ~= value then
        return word
      end
    end
    return type(value) == "number" and value + 1 or 1
  end
end

-- A text and a number of each table's first row.
local function changes()
  local list, seen = {}, {}
  for _, api in ipairs(schema.apis) do
    local row = api.operation == "set" and not seen[api.table] and first_row(api.table)
    if row then
      seen[api.table] = true
      local key, done = {}, {}
      for _, field in ipairs(names.fields(api.table)) do
        key[field.name] = field.key and row[field.name] or nil
      end
      for _, field in ipairs(names.fields(api.table)) do
        local is_own = field.name ~= "res" and field.name ~= "oper"
        local value = is_own and field.argument and not field.key and not done[field.kind]
          and other_value(field, row[field.name])
        if value then
          done[field.kind] = true
          local one = { table = api.table, key = object(key), changes = { [field.name] = value },
            back = { [field.name] = row[field.name] } }
          local status, changed, code = record.change(api.table, key, one.changes)
          one.status, one.changed, one.code = status, status and changed or nil, not status and code or nil
          list[#list + 1] = one
          if status then
            assert(record.change(api.table, key, one.back))
          end
        end
      end
    end
  end
  return list
end

local function secrets()
  local list = {}
  for table_name in pairs(names.tables) do
    for _, field in ipairs(table_name ~= "*" and names.fields(table_name) or {}) do
      if field.secret then
        list[#list + 1] = table_name .. "." .. field.name
      end
    end
  end
  return list
end

-- Of the gateway itself, for what documents say of it.
local function gateway()
  local addresses, codes, statuses = {}, {}, {}
  local refusals = require "librpc.web.refusals"
  for path, methods in pairs(require("librpc.web.handler").addresses) do
    addresses[#addresses + 1] = (methods.GET and "GET " or "POST ") .. path
  end
  for _, meanings in ipairs { refusals.own, record.codes, require("librpc.status").codes } do
    for code, own in pairs(meanings) do
      codes[code] = refusals.own[code]
      statuses[code] = select(2, refusals.make(code, own)).status
    end
  end
  return { addresses = addresses, codes = codes, statuses = statuses }
end

local function get(table_name, key, field)
  local row, message = record.get(table_name, cjson.decode(key))
  return { row and row[field] or message }
end

cjson.encode_sparse_array(true)
local ways = { reads = reads, sets = sets, changes = changes, secrets = secrets, get = get, gateway = gateway }
print(cjson.encode(ways[arg[1]](arg[2], arg[3], arg[4])))

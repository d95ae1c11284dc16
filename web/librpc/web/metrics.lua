-- GET /metrics: counters of the tables that the configuration lists, and how the daemons
-- are, as Prometheus reads it. The names are
--     librpc_TABLE_FIELD_total{key fields, names of ports}   a counter
--     librpc_table_up{table}, librpc_table_seconds{table}    whether it was read, and the calls' time
--     librpc_service_up{service}, librpc_service_seconds{service}
local columns = require "librpc.names.columns"
local health = require "librpc.web.health"
local json = require "librpc.web.json"
local names = require "librpc.names"
local record = require "librpc.record"
local tables = require "librpc.record.tables"

local counts = { octets_in = true, octets_out = true, packets_in = true, packets_out = true, errors_in = true,
  errors_out = true } -- roles

local escapes = { ["\\"] = "\\\\", ['"'] = '\\"', ["\n"] = "\\n" }

local function label(name, value)
  return ('%s="%s"'):format(name, (json.utf8(tostring(value)):gsub('[\\"\n]', escapes)))
end

local Page = {}
Page.__index = Page

-- A family of samples: a name, what it means, its type.
function Page:family(name, help, kind)
  self.seen[name] = true
  self[#self + 1] = ("# HELP %s %s"):format(name, (json.utf8(help):gsub("[\\\n]", escapes)))
  self[#self + 1] = ("# TYPE %s %s"):format(name, kind)
end

function Page:sample(name, labels, value)
  self[#self + 1] = ("%s{%s} %s"):format(name, table.concat(labels, ","), value)
end

-- What was counted, as digits: those that the device tells with a sign have none, either. A
-- counter has 64 bits, a whole number that counts 32.
local function count_of(field, value)
  local digits = tostring(value)
  if digits:sub(1, 1) == "-" then
    return ("%.0f"):format(tonumber(digits) + 2 ^ (field.kind == "counter" and 64 or 32))
  end
  return digits
end

-- The fields of a table that tell rows apart, and those that count. A secret is neither.
local function fields_of(table_name)
  local apis = tables.operations(table_name)
  local view = names.view(table_name)
  local is_key, labels, counters, secret_key = {}, {}, {}, false
  for _, field in ipairs((tables.key_of(apis, view))) do
    is_key[field] = true
    secret_key = secret_key or view.secret[field]
  end
  for _, field in ipairs(columns.fields(table_name)) do
    if not field.secret and (field.kind == "counter" or field.role and counts[field.role]) then
      counters[#counters + 1] = field
    elseif not field.secret and (is_key[field.field] or field.role == "port_name") then
      labels[#labels + 1] = field
    end
  end
  return labels, counters, secret_key
end

-- The labels of each row. Where a key is not told the row's place stands for it.
local function labels_of(rows, fields, secret_key)
  local all = {}
  for i, row in ipairs(rows) do
    local labels = {}
    for k, field in ipairs(fields) do
      labels[k] = label(field.name, row[field.name])
    end
    if secret_key or #labels == 0 and #rows > 1 then
      labels[#labels + 1] = label("row", i)
    end
    all[i] = labels
  end
  return all
end

local function put_table(page, table_name, rows)
  local label_fields, counters, secret_key = fields_of(table_name)
  local entry = names.tables[table_name]
  local labels = labels_of(rows, label_fields, secret_key)
  for _, field in ipairs(counters) do
    local name = ("librpc_%s_%s_total"):format(table_name, field.name)
    if not page.seen[name] then
      page:family(name, ("%s: %s%s"):format(entry and entry.title or table_name, field.title,
        field.unit and " (" .. field.unit .. ")" or ""), "counter")
      for i, row in ipairs(rows) do
        page:sample(name, labels[i], count_of(field, row[field.name]))
      end
    end
  end
end

-- Whether the API reads a table without a key: row by row, or its only one.
local function is_read_whole(api)
  return api.operation == "getn"
    or api.operation == "get" and #tables.key_of(tables.operations(api.table), names.view(api.table)) == 0
end

-- The tables that are asked for: those of the configuration that the user may read, each once.
local function wanted_tables(request)
  local wanted, list, seen = request.site.metrics, {}, {}
  if wanted == "*" then
    wanted = {}
    for _, api in ipairs(require("librpc.schema").apis) do
      wanted[#wanted + 1] = is_read_whole(api) and api.table or nil
    end
  end
  for _, name in ipairs(wanted) do
    if not seen[name] and request.rights.may_read(name) then
      seen[name], list[#list + 1] = true, name
    end
  end
  return list
end

return function(request)
  local site = request.site
  local page = setmetatable({ seen = {} }, Page)
  local services = health.services(site.limits.deadline)
  page:family("librpc_service_up", "Whether the service's daemon answers.", "gauge")
  for _, one in ipairs(services) do
    page:sample("librpc_service_up", { label("service", one.name) }, one.state == "up" and 1 or 0)
  end
  page:family("librpc_service_seconds", "The time of a call that does nothing.", "gauge")
  for _, one in ipairs(services) do
    if one.ms then
      page:sample("librpc_service_seconds", { label("service", one.name) }, ("%.6f"):format(one.ms / 1000))
    end
  end
  local wanted, walks = wanted_tables(request), {}
  for i, name in ipairs(wanted) do
    walks[i] = { name, nil, { limit = math.max(math.floor(site.limits.rows / #wanted), 1) } }
  end
  local rows, failures, _, taken = record.walks(walks, site.limits.deadline)
  for i, name in ipairs(wanted) do
    put_table(page, name, rows[i])
  end
  page:family("librpc_table_up", "Whether the table was read to its end.", "gauge")
  for i, name in ipairs(wanted) do
    page:sample("librpc_table_up", { label("table", name) }, failures[i] and 0 or 1)
  end
  page:family("librpc_table_seconds", "The time of the calls that read the table.", "gauge")
  for i, name in ipairs(wanted) do
    page:sample("librpc_table_seconds", { label("table", name) }, ("%.6f"):format(taken[i]))
  end
  return { status = 200, text = table.concat(page, "\n") .. "\n",
    headers = { ["Content-Type"] = "text/plain; version=0.0.4; charset=utf-8" } }
end

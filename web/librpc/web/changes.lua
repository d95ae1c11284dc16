-- POST /api/change and /api/check: a row's fields, a new row, or one set API. The
-- device's own rules are librpc.record's; here is who may, whether the row is still
-- the one that the user saw, and the log.
local bodies = require "librpc.web.bodies"
local calling = require "librpc.record.calling"
local cells = require "librpc.web.cells"
local journal = require "librpc.web.journal"
local json = require "librpc.web.json"
local names = require "librpc.names"
local reading = require "librpc.record.reading"
local reads = require "librpc.web.reads"
local record = require "librpc.record"
local refusals = require "librpc.web.refusals"
local tables = require "librpc.record.tables"

local changes = {}

local function failed(code, message, more)
  return refusals.make(code, message, cells.field_of(message), more)
end

-- What is wrong with the fields of an API that is there, as POST /api/check tells it.
local function wrong_fields(api_name, fields)
  local told = {}
  for name, problem in pairs(assert(record.check(api_name, fields))) do
    local limits = problem.limits
    limits.words = limits.words and json.array(limits.words)
    told[name] = { code = problem.code, message = problem.message, limits = limits }
  end
  return told
end

-- A refusal of wrong fields: the first by name, and all of them.
local function refuse_wrong(wrong)
  local first
  for name in pairs(wrong) do
    first = first and first < name and first or name
  end
  return refusals.make(wrong[first].code, wrong[first].message, first, { wrong = wrong })
end

-- The API that a check or a change is about: that of its name, or the table's set.
local function api_of(body)
  if body.api and body.table then
    return refusals.make("bad_body", "body: expected api, or table, found both")
  end
  local api, message, code
  if body.api then
    api, message, code = tables.api_of(body.api)
  else
    api, message, code = tables.find(body.table, "set")
  end
  if not api then
    return failed(code, message)
  end
  return api
end

function changes.check(request)
  local body, refusal = bodies.take("body", request.body, { table = "text", api = "text", fields = "fields" })
  if not body then
    return nil, refusal
  end
  local api
  api, refusal = api_of(body)
  if not api then
    return nil, refusal
  end
  return { wrong = wrong_fields(api.name, body.fields or {}) }
end

-- The first field in which a row differs from what the page showed, as both are told.
local function changed_field(set, view, row, read)
  local plain, seen = calling.by_schema(view, row), calling.by_schema(view, read)
  for _, position in ipairs(set.input) do
    local field = position.name
    if position.kind ~= "skip" and seen[field] ~= nil and not view.secret[field] and field ~= view.oper
      and field ~= view.res and json.encode(cells.value(plain[field])) ~= json.encode(cells.value(seen[field])) then
      return view.name[field] or field
    end
  end
end

-- Each value as `shown(name, value)` gives it.
local function each_shown(values, shown)
  local all = {}
  for name, value in pairs(values) do
    all[name] = shown(name, value)
  end
  return all
end

local function shown_key(view, key)
  return each_shown(key, function(name, value) return cells.shown(view, name, value) end)
end

-- The same of fields of which a secret is only told to be one.
local function shown_fields(view, values, shown)
  return each_shown(values, function(name, value)
    return view.secret[view.field[name] or name] and { secret = true } or shown(value)
  end)
end

-- What was to be set, where nobody looked what it was before.
local function shown_given(view, fields)
  return shown_fields(view, fields, function(value) return { after = cells.value(value) } end)
end

-- What a change gives back and the log keeps: before and after by name, secrets hidden.
local function shown_changes(view, changed)
  return shown_fields(view, changed, function(change)
    return { before = cells.value(change.before), after = cells.value(change.after) }
  end)
end

-- Makes a change and logs it: `make` gives the status and what differs, or nil, a
-- message and a code.
local function logged(request, entry, make)
  local file, refusal = journal.open(request.site)
  if not file then
    return nil, refusal
  end
  local result, changed, code = make()
  entry.user = request.user or json.null
  entry.from = request.address
  entry.result = result and (type(result) == "number" and result or 0) or code
  if result then
    entry.fields = changed
  end
  local is_written = journal.write(file, request.site, entry)
  if not is_written then
    request.complain("log: expected the line of a change to be written, found that it was not: " .. json.encode(entry))
  end
  if not result then
    return failed(code, changed)
  end
  return { status = type(result) == "number" and result or json.null, changed = changed,
    row = type(result) == "table" and result or nil, logged = is_written }
end

-- One API as it is: a set, or one of those that are neither get nor set.
local function by_api(request, api, view, fields)
  return logged(request, { table = api.table, api = api.name, fields = shown_given(view, fields) }, function()
    local result, message, code = record.call(api.name, fields)
    if not result then
      return nil, message, code
    end
    return api.output and cells.row(api, view, result) or result, shown_given(view, fields)
  end)
end

-- A new row: a plain set, where no row of that key is there.
local function add(request, apis, view, table_name, key, given)
  local fields = {}
  for name, value in pairs(key) do
    fields[view.field[name] or name] = value
  end
  for name, value in pairs(given) do
    fields[view.field[name] or name] = value
  end
  local wrong = wrong_fields(apis.set.name, fields)
  if next(wrong) then
    return refuse_wrong(wrong)
  end
  local there, message, code = reads.one(request.site, table_name, key, request.site.limits.deadline)
  if there then
    return refusals.make("row_exists", nil, nil, { row = cells.row(apis.get or apis.getn, view, there) })
  elseif code ~= "no_row" then
    return failed(code, message)
  end
  return logged(request, { table = table_name, key = shown_key(view, key), add = true,
    fields = shown_given(view, given) }, function()
    local status, problem, problem_code = record.call(apis.set.name, fields)
    if not status then
      return nil, problem, problem_code
    end
    return status, shown_given(view, given)
  end)
end

local function by_table(request, apis, view, table_name, body)
  local key, given = body.key or {}, body.changes or {}
  local wrong = wrong_fields(apis.set.name, given)
  if next(wrong) then
    return refuse_wrong(wrong)
  end
  local message, code
  key, message, code = reading.checked_key(apis, view, table_name, key)
  if not key then
    return failed(code, message)
  end
  if body.add then
    return add(request, apis, view, table_name, key, given)
  end
  local row
  row, message, code = reads.one(request.site, table_name, key, request.site.limits.deadline)
  if not row then
    return failed(code, message)
  end
  local field = body.read and changed_field(apis.set, view, row, body.read)
  if field then
    return refusals.make("changed_meanwhile", nil, field, { row = cells.row(apis.get or apis.getn, view, row) })
  end
  return logged(request, { table = table_name, key = shown_key(view, key), fields = shown_given(view, given) },
    function()
      local status, changed, problem_code = record.change(table_name, key, given)
      if not status then
        return nil, changed, problem_code
      end
      return status, shown_changes(view, changed)
    end)
end

function changes.change(request)
  local body, refusal = bodies.take("body", request.body, { table = "text", key = "fields", changes = "fields",
    read = "row", add = "truth", api = "text", fields = "fields" })
  if not body then
    return nil, refusal
  end
  local api
  api, refusal = api_of(body)
  if not api then
    return nil, refusal
  elseif not request.rights.may_change(api.table) then
    return refusals.make("not_allowed", api.table .. ": expected a table that the user may change, found another")
  elseif api.operation == "get" or api.operation == "getn" then
    return refusals.make("no_operation", api.name .. ": expected an API that changes something, found one that reads")
  end
  if body.api then
    local fields = body.fields or {}
    local wrong = wrong_fields(api.name, fields)
    if next(wrong) then
      return refuse_wrong(wrong)
    end
    return by_api(request, api, names.view(api.table), fields)
  end
  local apis, view, table_name = reading.open(body.table)
  if not apis then
    return failed(table_name, view)
  end
  return by_table(request, apis, view, table_name, body)
end

return changes

-- POST /api/all and /api/rows: many reads and many walks, at once, with one deadline.
-- What fails is told in its place.
local bodies = require "librpc.web.bodies"
local calling = require "librpc.record.calling"
local cells = require "librpc.web.cells"
local clock = require "librpc.record.clock"
local json = require "librpc.web.json"
local reading = require "librpc.record.reading"
local record = require "librpc.record"
local refusals = require "librpc.web.refusals"
local tables = require "librpc.record.tables"

local reads = {}

local not_allowed = "not_allowed"

-- The items of a request, and its seconds; nil and a refusal.
local function items_of(request, list_name, item_members)
  local body, refusal = bodies.take("body", request.body, { [list_name] = "list", seconds = "seconds" })
  if not body then
    return nil, refusal
  end
  local limits, list = request.site.limits, body[list_name]
  if not list then
    return bodies.fail("body: " .. list_name, "an array", nil)
  elseif #list > limits.calls then
    return refusals.make("too_many", ("body: %s: expected at most %d, found %d"):format(list_name, limits.calls, #list))
  end
  local items = {}
  for i, one in ipairs(list) do
    items[i], refusal = bodies.take(("body: %s: item %d"):format(list_name, i), one, item_members)
    if not items[i] then
      return nil, refusal
    end
  end
  return items, math.min(body.seconds or limits.deadline, limits.seconds)
end

local function forbidden(table_name)
  return cells.failure(not_allowed, table_name .. ": expected a table that the user may read, found another")
end

-- A read is an API with its view and fields, and perhaps `accept`, which is what
-- librpc.record's reading.accept says of the row. nil and a failure: none can be made.
local function of_api(request, item)
  local api, view, code = tables.open(item.api)
  if not api then
    return nil, cells.failure(code, view)
  elseif item.table or item.key then
    return nil, cells.failure("bad_type", "item: expected api and fields, or table and key, found both")
  elseif not request.rights.may_read(api.table) then
    return nil, forbidden(api.table)
  elseif api.operation ~= "get" and api.operation ~= "getn" then
    return nil, cells.failure(not_allowed, api.name .. ": expected an API that reads, found one that may change")
  end
  return { api = api, view = view, fields = item.fields or {} }
end

-- The read of a table's row by its key. A table that has no get is walked.
local function of_key(table_name, key)
  local apis, view, code = reading.open(table_name)
  if not apis then
    return nil, cells.failure(code, view)
  end
  local checked, message
  checked, message, code = reading.checked_key(apis, view, code, key)
  if not checked then
    return nil, cells.failure(code, message)
  end
  local read = { api = apis.get or apis.getn, view = view, fields = checked, is_walked = not apis.get }
  message, code = select(2, calling.argument_of(read.api, view, checked))
  if code then
    return nil, cells.failure(code, message)
  end
  local plain_key = calling.by_schema(view, checked)
  function read.accept(row)
    return reading.accept(read.api, view, plain_key, calling.by_schema(view, row))
  end
  return read
end

local function of_table(request, item)
  local api = tables.api_named(item.table)
  local table_name = api and api.table or item.table
  if item.fields then
    return nil, cells.failure("bad_type", "item: expected api and fields, or table and key, found table and fields")
  elseif tables.operations(table_name) and not request.rights.may_read(table_name) then
    return nil, forbidden(table_name)
  end
  return of_key(table_name, item.key)
end

-- The row among those of a walk; nil, a message and a code.
local function among(read, rows, failure)
  for _, row in ipairs(rows) do
    if read.accept(row) then
      return row
    end
  end
  if failure then
    return nil, failure.message, failure.code
  end
  return tables.fail("no_row", read.api.name, "the row of that key", nil, "none among " .. #rows)
end

-- Whether a read is worth a second try: a daemon that was started anew has another port,
-- which the first call to the old one finds out. Nothing was read then.
local function was_refused(failure)
  return failure and failure.code == "refused"
end

-- record.all or record.walks, with a second try.
local function twice(read, list, seconds)
  local began = clock()
  local rows, failures, ends = read(list, seconds)
  local again, places = {}, {}
  for k = 1, #list do
    if was_refused(failures[k]) then
      again[#again + 1], places[#places + 1] = list[k], k
    end
  end
  if #again > 0 then
    local more_rows, more_failures, more_ends = read(again, math.max(seconds - (clock() - began), 0))
    for i, k in ipairs(places) do
      rows[k], failures[k] = more_rows[i], more_failures[i]
      if ends then
        ends[k] = more_ends[i]
      end
    end
  end
  return rows, failures, ends
end

-- Makes reads at once: put(i, row), or put(i, nil, message, code), of each.
local function make(list, seconds, most_rows, put)
  local began, sent, sent_of, walks, walks_of = clock(), {}, {}, {}, {}
  for i, read in pairs(list) do
    if read.is_walked then
      walks[#walks + 1], walks_of[#walks + 1] = { read.api.name, nil, { limit = most_rows } }, i
    else
      sent[#sent + 1], sent_of[#sent + 1] = { read.api.name, read.fields }, i
    end
  end
  local rows, failures = twice(record.all, sent, seconds)
  for k, i in ipairs(sent_of) do
    local read, row, failure = list[i], rows[k], failures[k]
    if failure then
      put(i, nil, failure.message, failure.code)
    else
      local right, message, code = true, nil, nil
      if read.accept then
        right, message, code = read.accept(row)
      end
      put(i, right and row or nil, message, code)
    end
  end
  if #walks > 0 then
    rows, failures = twice(record.walks, walks, math.max(seconds - (clock() - began), 0))
    for k, i in ipairs(walks_of) do
      put(i, among(list[i], rows[k], failures[k]))
    end
  end
end

-- The row of a table's key, in so many seconds; nil, a message and a code.
function reads.one(site, table_name, key, seconds)
  local read, failure = of_key(table_name, key)
  if not read then
    return nil, failure.failure.message, failure.failure.code
  end
  local found = {}
  make({ read }, seconds, site.limits.rows, function(_, row, message, code)
    found = { row, message, code }
  end)
  return found[1], found[2], found[3]
end

function reads.all(request)
  local items, seconds = items_of(request, "calls",
    { table = "text", key = "fields", api = "text", fields = "fields" })
  if not items then
    return nil, seconds
  end
  local results, list = {}, {}
  for i, item in ipairs(items) do
    local failure
    if item.api then
      list[i], failure = of_api(request, item)
    else
      list[i], failure = of_table(request, item)
    end
    results[i] = failure or false
  end
  make(list, seconds, request.site.limits.rows, function(i, row, message, code)
    local read = list[i]
    results[i] = row and { row = cells.row(read.api, read.view, row) } or cells.failure(code, message)
  end)
  return { results = json.array(results) }
end

-- What of the row that a page saw last goes into the request for the rows behind it.
local function after_of(getn, view, after)
  local carried, inputs = {}, tables.inputs_of(getn)
  for name, value in pairs(after) do
    local position = inputs[view.field[name] or name]
    if not (position and position.kind == "skip" or not position and tables.has_output(getn, view.field[name] or name))
    then
      carried[name] = value
    end
  end
  return carried
end

function reads.rows(request)
  local items, seconds = items_of(request, "walks", { table = "text", after = "row", limit = "count" })
  if not items then
    return nil, seconds
  end
  local results, walks, places, as = {}, {}, {}, {}
  for i, item in ipairs(items) do
    local apis, view, table_name = reading.open(item.table)
    if not apis then
      results[i] = cells.failure(table_name, view)
    elseif not request.rights.may_read(table_name) then
      results[i] = forbidden(table_name)
    else
      local api = apis.getn or apis.get
      local k = #walks + 1
      local limit = math.floor(request.site.limits.rows / #items)
      walks[k] = { table_name, item.after and after_of(api, view, item.after),
        { limit = math.max(math.min(item.limit or limit, limit), 1) } }
      places[k], as[k] = i, { api, view }
    end
  end
  if #walks > 0 then
    local rows, failures, ends = twice(record.walks, walks, seconds)
    for k, place in ipairs(places) do
      local failure = failures[k]
      local result = failure and cells.failure(failure.code, failure.message) or { ended = ends[k].why }
      result.rows = cells.rows(as[k][1], as[k][2], rows[k])
      results[place] = result
    end
  end
  for i = 1, #items do
    results[i].rows = results[i].rows or json.array {}
  end
  return { results = json.array(results) }
end

return reads

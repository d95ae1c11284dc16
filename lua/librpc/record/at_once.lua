-- Many calls, and many walks, at once by librpc.calls: a page costs its slowest
-- daemon and not the sum, and what fails takes nothing else with it.
local calling = require "librpc.record.calling"
local calls = require "librpc.calls"
local names = require "librpc.names"
local reading = require "librpc.record.reading"
local tables = require "librpc.record.tables"
local walking = require "librpc.record.walking"

local at_once = {}
local fail = tables.fail

local function failure_of(_, message, code, details)
  return { code = code, message = message, details = details }
end

-- True, or what fail gives, where a list is not one of tables that begin with a name.
local function check_list(where, list, item, seconds)
  if type(list) ~= "table" then
    return fail("bad_type", where, "a list of " .. item, list)
  elseif seconds ~= nil and (type(seconds) ~= "number" or seconds ~= seconds or seconds < 0) then
    return fail("bad_type", where .. ": seconds", "a number from 0", seconds)
  end
  for i, one in ipairs(list) do
    if type(one) ~= "table" then
      return fail("bad_type", ("%s: item %d"):format(where, i), item, one)
    end
  end
  return true
end

-- The API, its view and the argument's text of one item; nil, a message, a code.
local function argument_of(item)
  local api, view, code = tables.open(item[1])
  if not api then
    return nil, view, code
  end
  local text, message
  text, message, code = calling.argument_of(api, view, item[2] == nil and {} or item[2])
  if not text then
    return nil, message, code
  end
  return api, view, text
end

-- Calls with named fields, each { api, fields }, all at once: their rows, or the
-- daemon's status of a set, in the order of the list, false where there is none;
-- and why, by the same place: { code =, message =, details = }. All have the same
-- deadline, 25 seconds from now where none is given. What cannot be sent does not
-- keep the others back.
function at_once.all(list, seconds)
  local right, message, code = check_list("record.all", list, "{ api, fields }", seconds)
  if not right then
    return nil, message, code
  end
  local rows, failures, sent, places, set = {}, {}, {}, {}, {}
  for i, item in ipairs(list) do
    local api, view, text = argument_of(item)
    rows[i] = false
    if not api then
      failures[i] = failure_of(nil, view, text)
    elseif api.operation == "set" and set[api.table] then
      return fail("two_sets", ("record.all: item %d"):format(i), "one set of a table", nil,
        "a second of " .. api.table)
    else
      set[api.table] = set[api.table] or api.operation == "set"
      sent[#sent + 1] = { api.name, text }
      places[#sent] = { i, api, view }
    end
  end
  local texts, ends = calls.all(sent, seconds)
  for k, place in ipairs(places) do
    local i, api, view = place[1], place[2], place[3]
    if not texts[k] then
      failures[i] = ends[k]
    else
      local row
      row, message, code = calling.row_of(api, view, texts[k])
      if row then
        rows[i] = api.output and names.present(view, row) or row
      else
        failures[i] = failure_of(nil, message, code)
      end
    end
  end
  return rows, failures
end

-- The one row of a table that is not walked, read in the manner of a walk.
local Row = setmetatable({}, { __index = walking.Walk })
Row.__index = Row

function Row:take(reply, message, code, details)
  if not reply then
    return self:fail_call(message, code, details)
  end
  local row
  row, message, code = calling.row_of(self.api, self.view, reply)
  if row then
    row, message, code, self.last = reading.accept(self.api, self.view, self.key, row)
  end
  if not row then
    return self:fail(nil, message, code)
  end
  local stopped = self:keep(names.present(self.view, row))
  self:finish(stopped and "stopped" or "end")
end

-- What walks an item of a list: a walk, or the one row of a table that has no getn.
local function start(name, key, options)
  local apis, view, table_name = reading.open(name)
  if not apis or apis.getn then
    return walking.start(name, key, options)
  end
  local right, message, code = walking.check_options(options)
  if not right then
    return nil, message, code
  end
  local checked, text
  checked, text, code = reading.checked_argument(apis.get, apis, view, table_name, key)
  if not checked then
    return nil, text, code
  end
  local row = setmetatable({ api = apis.get, view = view, text = text, rows = {}, count = 0,
    key = calling.by_schema(view, checked), each = options and options.each,
    call_seconds = options and options.call_seconds }, Row)
  if options and options.seconds then
    row:limit_time(options.seconds)
  end
  return row
end

local kept -- a group that no walk uses; its sockets know the daemons' ports

-- Sends what the walk asks next; one that cannot be sent has ended.
local function ask(group, walk, by_id)
  local id, message, code = group:call(walk.api.name, walk.text, walk:call_left())
  if id then
    by_id[id] = walk
  else
    walk:take(nil, message, code)
  end
  return id
end

-- What walks gives, of walks that have ended.
local function results_of(walks, failures)
  local rows, ends, taken = {}, {}, {}
  for i, walk in ipairs(walks) do
    rows[i], taken[i] = walk.rows, walk.taken or 0
    if walk.code then
      failures[i] = failure_of(nil, walk.message, walk.code, walk.details)
    elseif not failures[i] then
      ends[i] = { why = walk.why, last = walk.last }
    end
  end
  return rows, failures, ends, taken
end

-- Walks, each { table, key, options } as of record.rows, beside one another: each
-- asks for its next row as soon as the one before is there. The rows of each, which
-- are all that it had where it failed; why it failed, by the same place; and how it
-- ended where it did not: { why =, last = }; and the seconds that the calls of each
-- took. `seconds` is a deadline for all; a walk's own may be sooner. A table that has
-- no getn gives its one row.
function at_once.walks(list, seconds)
  local right, message, code = check_list("record.walks", list, "{ table, key, options }", seconds)
  if not right then
    return nil, message, code
  end
  local group, by_id, walks, failures, open = kept, {}, {}, {}, 0
  kept = nil -- an error in a caller's function leaves calls open: the group goes with them
  if not group or group:wait(0) == nil then -- none yet, or the parent's of this process
    group = calls.group()
  end
  for i, item in ipairs(list) do
    local walk, problem, problem_code = start(item[1], item[2], item[3])
    walks[i] = walk or { rows = {} }
    if walk then
      if seconds then
        walk:limit_time(seconds)
      end
      open = open + (ask(group, walk, by_id) and 1 or 0)
    else
      failures[i] = failure_of(nil, problem, problem_code)
    end
  end
  while open > 0 do
    group:wait()
    for id, text, failure, took in group:finished() do
      local walk = by_id[id]
      by_id[id] = nil
      walk.taken = (walk.taken or 0) + took
      failure = failure or {}
      walk:take(text or nil, failure.message, failure.code, failure.details)
      if not walk.text or not ask(group, walk, by_id) then
        open = open - 1
      end
    end
  end
  kept = group
  return results_of(walks, failures)
end

return at_once

-- Walking a table by its getn, a step at a time: a walk holds the text that is to
-- be asked next, and takes the reply to it. walking.rows asks one after another;
-- whoever has many calls under way drives many walks in the same way:
--
--     local walk = walking.start("portinfo", key, options)
--     while walk.text do
--       walk:take(calling.exchange(walk.api, walk.text, walk:call_left()))
--     end
--     return walk:result()
local calling = require "librpc.record.calling"
local names = require "librpc.names"
local tables = require "librpc.record.tables"
local values = require "librpc.record.values"

local walking = {}
local fail = tables.fail

local default_limit = 100000 -- rows of one walk

local option_types = { done = "function", each = "function", next = "function", limit = "number", seconds = "number",
  call_seconds = "number", ends = "table" }

-- What of a row an argument of the API carries back: no counters, no raw bytes,
-- not the operation and the result. Where runs of delimiters count as one, only
-- the fields before the first text that would not stay where it is.
function walking.carried_of(api, view, row)
  local fields = {}
  for _, position in ipairs(api.input) do
    local name, kind = position.name, position.kind
    local value = row[name]
    if #api.delimiters > 1 and kind == "text" and (value == "" or not values.to_text.text(value, position, api)) then
      break
    end
    if kind ~= "skip" and kind ~= "bytes" and name ~= view.res and name ~= view.oper then
      fields[name] = value
    end
  end
  return fields
end

-- The same of a row as its reader has it; by the schema's names, with numbers.
function walking.carried(name, row)
  local api, view, code = tables.open(name)
  if not api then
    return nil, view, code
  elseif type(row) ~= "table" then
    return fail("bad_type", api.name, "a row", row)
  end
  return walking.carried_of(api, view, calling.by_schema(view, row))
end

local Walk = {}
Walk.__index = Walk
walking.Walk = Walk

-- Ends the walk as a failure.
function Walk:fail(_, message, code, details)
  self.text, self.message, self.code, self.details = nil, message, code, details
end

-- Ends it because its time is over.
function Walk:fail_late()
  self:fail(fail("deadline", self.api.name, ("the end within %.14g seconds"):format(self.seconds), nil,
    ("%d rows and no end"):format(self.count)))
end

-- Gives the walk so many seconds from now on, where it has not fewer.
function Walk:limit_time(seconds)
  self.clock = require "librpc.record.clock"
  local deadline = self.clock() + seconds
  if not self.deadline or deadline < self.deadline then
    self.deadline, self.seconds = deadline, seconds
  end
end

-- The seconds that it still has; nil where there is no deadline.
function Walk:left()
  return self.deadline and math.max(self.deadline - self.clock(), 0)
end

-- The seconds that its next call has; nil where nobody said.
function Walk:call_left()
  local left = self:left()
  return left and self.call_seconds and math.min(left, self.call_seconds) or left or self.call_seconds
end

-- Ends it as it should.
function Walk:finish(why)
  self.text, self.why = nil, why
end

-- What is asked next: the row behind that of these fields.
function Walk:ask(fields)
  local text, message, code = calling.argument_of(self.api, self.view, fields)
  if not text then
    self:fail(nil, message, code)
  elseif self.asked[text] then
    self:fail(fail("repeated_row", self.api.name, "another row", nil,
      "row " .. require("librpc.record.problems").shown(text) .. " again"))
  else
    self.text, self.asked[text] = text, true
  end
end

-- Why a row is no row but the end; nil where it is one.
function Walk:end_of(row, presented)
  local result = row[self.view.res]
  if self.done then
    return self.done(presented) and "end"
  elseif result == nil or result == 0 then
    return nil
  elseif not self.ends then
    return "res"
  end
  return self.ends[result] and "end" or "daemon_status"
end

-- The codes of calls whose time is over: a walk's calls have what is left of its own.
local is_late = { timed_out = true, not_sent = true }

-- Ends it because a call had no reply.
function Walk:fail_call(message, code, details)
  if self.deadline and is_late[code] and not (self.call_seconds and self:left() > 0) then
    return self:fail_late()
  end
  return self:fail(nil, message, code, details)
end

-- Keeps a row, or hands it to who asked for each as it comes: true where that one
-- wants no more.
function Walk:keep(presented)
  self.count = self.count + 1
  if self.each then
    return self.each(presented) == false
  end
  self.rows[self.count] = presented
end

-- Takes the reply to `text`, or nil, a message, a code and perhaps details, and says
-- in `text` what to ask next: nil at the end.
function Walk:take(reply, message, code, details)
  if not reply then
    return self:fail_call(message, code, details)
  end
  local row
  row, message, code = calling.row_of(self.api, self.view, reply)
  if not row then
    return self:fail(nil, message, code)
  end
  local presented = names.present(self.view, row)
  local why = self:end_of(row, presented)
  if why then
    self.last = presented
  end
  if why == "daemon_status" then
    return self:fail(fail(why, self.api.name .. ": res", "0, or what stands for the end", row[self.view.res]))
  elseif why then
    return self:finish(why)
  elseif self.count >= self.limit then
    self.last = presented
    return self:fail(fail("too_many_rows", self.api.name, ("at most %d rows"):format(self.limit), nil, "more"))
  end
  if self:keep(presented) then
    return self:finish("stopped")
  elseif self:left() == 0 then
    return self:fail_late()
  end
  local fields
  if self.next then
    fields = self.next(presented)
    if type(fields) ~= "table" then
      return self:fail(fail("bad_type", "record.rows: options.next", "a table of fields for the next request", fields))
    end
  else
    fields = walking.carried_of(self.api, self.view, row)
    fields[self.view.oper] = self.oper
  end
  self:ask(fields)
end

-- The rows, why they ended ("end", "res" where nobody said what the result that
-- ended them means, "stopped" by `each`) and the row that ended them; of a failure nil, a message, a
-- code, the rows so far and the row that ended them.
function Walk:result()
  if self.code then
    return nil, self.message, self.code, self.rows, self.last
  end
  return self.rows, self.why, self.last
end

-- The table's getn; an API that is none is the caller's mistake.
local function getn_of(name)
  local api = tables.api_named(name)
  if not api then
    return tables.find(name, "getn")
  elseif api.operation ~= "getn" then
    return fail("no_operation", api.name, "a getn API", api.operation)
  end
  return api
end

-- True, or what fail gives.
function walking.check_options(options)
  if options == nil then
    return true
  end
  return require("librpc.record.problems").check_options("record.rows", options, option_types)
end

-- A walk of a table, or of its getn, from the row behind `key` (a table of fields;
-- nil: the first row). Each row is the key of the next. Options:
--   done(row)  true at the end, which is not a row
--   next(row)  the fields of the request for the row behind this one
--   ends       a list of the results with which a walk ends; any other that is not
--              0 is then a failure
--   each(row)  takes each row as it comes, and none is kept; false ends the walk ("stopped")
--   limit      rows at most, 100000 if not given
--   seconds    that the walk may take: its calls get what is left of them
--   call_seconds  that each of its calls may take
function walking.start(name, key, options)
  local api, message, code = getn_of(name)
  if not api then
    return nil, message, code
  end
  local view
  view, message, code = names.view(api.table)
  if not view then
    return nil, message, code
  end
  local right
  right, message, code = walking.check_options(options)
  if not right then
    return nil, message, code
  end
  options = options or {}
  local walk = setmetatable({ api = api, view = view, rows = {}, count = 0, asked = {}, done = options.done,
    each = options.each, next = options.next, limit = options.limit or default_limit,
    call_seconds = options.call_seconds, ends = view.ends }, Walk)
  if options.ends then
    walk.ends = {}
    for _, result in ipairs(options.ends) do
      walk.ends[result] = true
    end
  end
  if not walk.done and not tables.has_output(api, view.res) then
    return fail("no_end", api.name, "a `done` option, because its rows have no `res`", nil, "none")
  end
  if options.seconds then
    walk:limit_time(options.seconds)
  end
  if type(key) == "table" then
    walk.oper = calling.by_schema(view, key)[view.oper]
  end
  walk:ask(key == nil and {} or key)
  if walk.code then
    return nil, walk.message, walk.code
  end
  return walk
end

-- The rows of a table, see start and result.
function walking.rows(name, key, options)
  local walk, message, code = walking.start(name, key, options)
  if not walk then
    return nil, message, code, {}
  end
  while walk.text do
    walk:take(calling.exchange(walk.api, walk.text, walk:call_left()))
  end
  return walk:result()
end

return walking

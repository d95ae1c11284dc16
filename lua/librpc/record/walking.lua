-- Walking a table by its getn.
local calling = require "librpc.record.calling"
local walking = {}
local fail = calling.fail

local function shown(value)
  return require("librpc.record.problems").shown(value)
end

local default_limit = 100000 -- rows of one walk

function walking.result_is_not_0(row)
  return row.res ~= nil and row.res ~= 0
end

-- Walks a table by its getn API from the row behind `key` (a table of fields;
-- nil: the first row) and returns an array of rows. Each row is the key of the
-- next. The walk ends at a row whose `res` is not 0; options may change that:
--   done(row)  true at the end, which is not a row
--   next(row)  the fields of the request for the row behind this one
--   limit      rows at most, 100000 if not given
-- On an error the rows so far are the fourth value.
function walking.rows(name, key, options)
  local rows, asked, fields = {}, {}, key or {}
  local function stop(_, message, code)
    return nil, message, code, rows
  end
  local api, problem, code = calling.api_of(name)
  if not api then
    return stop(nil, problem, code)
  elseif api.operation ~= "getn" then
    return stop(fail("unknown_api", api.name, "a getn API", shown(api.operation)))
  end
  options = options or {}
  local done, limit = options.done or walking.result_is_not_0, options.limit or default_limit
  if not options.done and not calling.has_output(api, "res") then
    return stop(fail("no_end", api.name, "a `done` option, because its rows have no `res`", "none"))
  end
  while true do
    local text, row
    text, problem, code = calling.encode(name, fields)
    if not text then
      return stop(nil, problem, code)
    elseif asked[text] then
      return stop(fail("repeated_row", api.name, "another row", "row " .. shown(text) .. " again"))
    end
    asked[text] = true
    row, problem, code = calling.call(name, fields)
    if not row then
      return stop(nil, problem, code)
    elseif done(row) then
      return rows
    elseif #rows >= limit then
      return stop(fail("too_many_rows", api.name, ("at most %d rows"):format(limit), "more"))
    end
    rows[#rows + 1] = row
    if options.next then
      fields = options.next(row)
    else
      fields = calling.carried_of(api, row)
      fields.oper = key and key.oper
    end
  end
end

return walking

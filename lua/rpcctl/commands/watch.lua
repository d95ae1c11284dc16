-- rpcctl watch: a table again and again, what changed, and how fast counters grow.
local ending = require "rpcctl.ending"
local filters = require "rpcctl.filters"
local formats = require "rpcctl.formats"
local output = require "rpcctl.output"
local reading = require "rpcctl.reading"
local record = require "librpc.record"
local clock = require "librpc.record.clock"
local subject = require "rpcctl.subject"
local terminal = require "rpcctl.terminal"

-- One reading of the table: its rows, and the same by key; rows of one key are told
-- apart by their order. nil, a message and a code where it failed.
local function read(this, wanted, settings)
  local rows = {}
  local done, message, code = this:each(wanted, settings, function(row)
    rows[#rows + 1] = row
  end)
  if not done then
    return nil, message, code
  end
  local found, seen = { time = clock(), rows = rows, key_of = {}, by_key = {} }, {}
  for _, row in ipairs(rows) do
    local key = this:key_of(row)
    seen[key] = (seen[key] or 0) + 1
    key = key .. "\0" .. seen[key]
    found.key_of[row], found.by_key[key] = key, row
  end
  return found
end

-- How much a counter grew each second since the reading before; nil where nobody knows.
local function rate_of(name, row, now, before)
  local old = before and before.by_key[now.key_of[row] or ""]
  local time = before and now.time - before.time
  local grown = old and time > 0 and record.difference(row[name], old[name])
  return grown and tonumber(("%.1f"):format(grown / time)) or nil
end

-- True where a field of the row is not what it was.
local function is_changed(column, row, now, before)
  local old = before and before.by_key[now.key_of[row]]
  return before and (not old or output.cell(old[column.name]) ~= output.cell(row[column.name]))
end

-- The columns of the fields, behind each counter its rate. `state` has the two
-- readings that they look at.
local function columns_of(chosen, state, mark)
  local columns = {}
  for _, field in ipairs(chosen) do
    local column = setmetatable({}, { __index = field })
    function column.style(row)
      return mark and is_changed(field, row, state.now, state.before) and "changed"
    end
    columns[#columns + 1] = column
    if field.reply.kind == "counter" then
      columns[#columns + 1] = {
        name = field.name .. "/s",
        of = function(row)
          return rate_of(field.name, row, state.now, state.before)
        end,
      }
    end
  end
  return columns
end

-- On a terminal: the rows that there is room for, in place.
local function draw(this, state, columns, settings, note)
  local room, height = terminal.size()
  local lines, left_out = formats.screen(columns, state.now.rows, settings, room)
  local title = ("%s  %s  %s"):format(this.name, os.date("%Y-%m-%d %H:%M:%S"), note.title)
  table.insert(lines, 1, output.fitted(title, room) .. "\n")
  table.insert(lines, 2, "\n")
  local notes = {}
  if note.message then
    notes[#notes + 1] = output.printable(note.message)
  end
  if left_out[1] then
    notes[#notes + 1] = "not shown for want of room: " .. table.concat(left_out, " ")
  end
  local most = height - #notes - 1
  if #lines > most then
    notes[#notes + 1] = ("%d more rows"):format(#lines - most + 1)
    most = most - 1
  end
  local moves = terminal.can_move()
  ending.write(moves and "\27[H" or "")
  for i = 1, math.min(#lines, most) do
    ending.write((lines[i]:gsub("\n", moves and "\27[K\n" or "\n")))
  end
  for _, text in ipairs(notes) do
    ending.write(output.styled(output.fitted(text, room), "note", terminal.is_coloured()), moves and "\27[K\n" or "\n")
  end
  ending.write(moves and "\27[J" or "\n")
  ending.flush()
end

-- In a pipe: every row at first, then those that changed, came or went.
local function tell(state, writer)
  local now, before = state.now, state.before
  local function put(event, row)
    state.event = event
    writer:row(row)
  end
  for _, row in ipairs(now.rows) do
    local old = before and before.by_key[now.key_of[row]]
    local changed = not before or not old
    for _, column in ipairs(changed and {} or state.chosen) do
      changed = changed or is_changed(column, row, now, before)
    end
    if changed then
      put(not before and "row" or old and "changed" or "new", row)
    end
  end
  for _, row in ipairs(before and before.rows or {}) do
    if not now.by_key[before.key_of[row]] then
      put("gone", row)
    end
  end
end

local function run(this, wanted, options, listening)
  local settings = reading.settings(this, options)
  local interval = options.interval or 2
  local form, shown = formats.settings(options)
  local screen = shown.people and form == "table"
  local chosen = this:chosen(options.fields)
  local state = { chosen = chosen }
  local columns = columns_of(chosen, state, screen)
  local writer
  if screen and terminal.can_move() then
    ending.write("\27[2J")
  elseif not screen then
    table.insert(columns, 1, { name = "time", of = function() return os.date("%Y-%m-%d %H:%M:%S") end })
    table.insert(columns, 2, { name = "event", of = function() return state.event end })
    writer = formats.writer(form == "json" and "jsonl" or form, columns, shown)
  end
  local last_message
  for n = 1, options.count or math.huge do
    local now, message, code = read(this, wanted, settings)
    if not now and not state.now then
      ending.give_up(message, code)
    end
    if now then
      state.now, state.before = now, state.now
    end
    if screen then
      draw(this, state, columns, shown, { message = message,
        title = ("every %.14g s"):format(interval) .. (listening and ", q ends" or "") })
    elseif now then
      tell(state, writer)
    end
    if message and not screen and message ~= last_message then
      ending.complain(message, code) -- a daemon that starts again is found again
    end
    last_message = message
    if n ~= options.count and terminal.pause(interval, listening) then
      break
    end
  end
  if writer then
    writer:finish()
  end
end

return {
  name = "watch",
  summary = "show a table again and again, what changed, and how fast counters grow",
  details = "On a terminal the table is refreshed in place, and q or Ctrl-C ends it. In a pipe, a row a line: the "
    .. "time; "
    .. "row (as it is at the start), changed, new or gone; the fields, behind each counter its growth a second. A "
    .. "daemon that "
    .. "goes away is waited for.\nFilters are those of rows.",
  arguments = { { "TABLE", what = "rows" }, { "FILTER", many = true, optional = true, what = "filter" } },
  options = reading.all_options {
    { "interval", "SECONDS", "between two readings, 2 if not given", number = 0.1 },
    { "count", "N", "readings, then end", number = 1, whole = true },
  },
  examples = {
    { "rpcctl watch portstat port=3", "the counters of a port" },
    { "rpcctl watch portinfo --fields port,link --format jsonl",
      "a line whenever a link comes or goes, for a program" },
  },
  run = function(words, options)
    local this = subject.open("watch", words[1])
    local wanted = filters.all(this, words, 2)
    local interactive = terminal.is(1) and terminal.is(0)
    if not interactive then
      return run(this, wanted, options, false)
    end
    terminal.listen(function(listening)
      run(this, wanted, options, listening)
    end)
  end,
}

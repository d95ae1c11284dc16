-- The forms in which rows are printed, as they come. A form is a function of `forms`:
-- it takes the columns and the settings, and gives { row(row), finish() }. A column is
-- a field of names.fields, or has `name` and `of(row)`; settings are
--   chosen     the columns were asked for, so that none is left out
--   header     a line of names where the form has none of its own
--   secrets    show them
--   people     standard output is a terminal
local ending = require "rpcctl.ending"
local output = require "rpcctl.output"
local terminal = require "rpcctl.terminal"

local formats = {}
local forms = {}

formats.names = { "table", "vertical", "tsv", "csv", "json", "jsonl", "kv" }

-- A column's value in a row, secrets as "(set)".
local function value_of(column, row, settings)
  local value
  if column.of then
    value = column.of(row)
  else
    value = row[column.name]
  end
  if column.secret and not settings.secrets then
    return (value ~= nil and value ~= "") and "(set)" or ""
  end
  return value
end

local function cell_of(column, row, settings)
  local value = value_of(column, row, settings)
  local cell = output.cell(value)
  return column.style and { cell, column.style(row) or nil } or cell
end

local function text_of(cell)
  return type(cell) == "table" and cell[1] or cell
end

local function cells_of(columns, row, settings)
  local cells = {}
  for i, column in ipairs(columns) do
    cells[i] = cell_of(column, row, settings)
  end
  return cells
end

local function header_of(columns)
  local cells = {}
  for i, column in ipairs(columns) do
    cells[i] = { column.name, "header" }
  end
  return cells
end

-- Forms of a line a row.
local function by_line(line_of)
  return function(columns, settings)
    local writer = {}
    function writer.row(_, row)
      ending.write(line_of(columns, row, settings), "\n")
      ending.flush()
    end
    function writer.finish() end
    return writer
  end
end

local function joined(columns, row, settings, separator, quote)
  local cells = {}
  for i, cell in ipairs(cells_of(columns, row, settings)) do
    cells[i] = quote(text_of(cell), columns[i])
  end
  return table.concat(cells, separator)
end

local function as_is(text)
  return text
end

-- A form of lines with a line of names above them.
local function with_header(form, columns, settings, separator, quote)
  local inner, writer, named = form(columns, settings), {}, {}
  for i, column in ipairs(columns) do
    named[i] = quote(column.name)
  end
  local header = table.concat(named, separator) .. "\n"
  local function begin()
    if header then
      ending.write(header)
      header = nil
    end
  end
  function writer.row(_, row)
    begin()
    inner:row(row)
  end
  function writer.finish()
    begin()
  end
  return writer
end

local tab_lines = by_line(function(columns, row, settings)
  return joined(columns, row, settings, "\t", as_is)
end)

function forms.tsv(columns, settings)
  return settings.header and with_header(tab_lines, columns, settings, "\t", as_is) or tab_lines(columns, settings)
end

local function csv_quoted(text)
  return text:find('[",\r\n]') and '"' .. text:gsub('"', '""') .. '"' or text
end

local comma_lines = by_line(function(columns, row, settings)
  return joined(columns, row, settings, ",", csv_quoted)
end)

function forms.csv(columns, settings)
  return with_header(comma_lines, columns, settings, ",", csv_quoted)
end

-- A text as a word of a line of NAME=VALUE; output.cell has escaped it.
function formats.word(text)
  if text == "" or text:find('[%s"#\'$`;&|<>()*?~!]') then
    return '"' .. text:gsub('"', '\\"') .. '"'
  end
  return text
end

forms.kv = by_line(function(columns, row, settings)
  return joined(columns, row, settings, " ", function(text, column)
    return column.name .. "=" .. formats.word(text)
  end)
end)

-- A row in the shape that JSON has it, and the order of its keys.
local function object_of(columns, row, settings)
  local object, order = {}, {}
  for i, column in ipairs(columns) do
    order[i] = column.name
    object[column.name] = value_of(column, row, settings)
  end
  return output.json(object, order)
end
formats.object = object_of

forms.jsonl = by_line(object_of)

function forms.json(columns, settings)
  local writer, began = {}, false
  function writer.row(_, row)
    ending.write(began and ",\n" or "[", object_of(columns, row, settings))
    ending.flush()
    began = true
  end
  function writer.finish()
    ending.write(began and "]\n" or "[]\n")
  end
  return writer
end

function forms.vertical(columns, settings)
  local writer, count, widest = {}, 0, 0
  for _, column in ipairs(columns) do
    widest = math.max(widest, output.width(column.name))
  end
  local coloured = settings.people and terminal.is_coloured()
  function writer.row(_, row)
    local lines = { count > 0 and "\n" or "" }
    for _, column in ipairs(columns) do
      local cell = cell_of(column, row, settings)
      local empty = text_of(cell) == ""
      if not settings.people then
        lines[#lines + 1] = output.line({ column.name, cell })
      elseif settings.chosen or not (empty or column.minor) then
        local unit = column.unit and not empty and " " .. column.unit or ""
        lines[#lines + 1] = output.styled(column.name, "header", coloured)
          .. (" "):rep(widest - output.width(column.name) + 2)
          .. (type(cell) == "table" and output.styled(cell[1], cell[2], coloured) or cell) .. unit .. "\n"
      end
    end
    ending.write(table.concat(lines))
    ending.flush()
    count = count + 1
  end
  function writer.finish() end
  return writer
end

local least_width = 12 -- to which a column may shrink
local most_width = 40

-- The columns that are shown of those that hold something, and their widths; the names
-- of those that do not fit; nil where those asked for do not.
local function choose(columns, rows, settings, room)
  local kept, widths, left_out, total = {}, {}, {}, 0
  local natural = {}
  for _, column in ipairs(columns) do
    local wanted, empty = 0, true
    for _, cells in ipairs(rows) do
      local text = text_of(cells[column])
      wanted = math.max(wanted, output.width(text))
      empty = empty and text == ""
    end
    if settings.chosen or not (column.minor or empty and #rows > 0 and not column.key) then
      kept[#kept + 1] = column
      natural[column] = math.max(output.width(column.name), room and math.min(wanted, most_width) or wanted)
    end
  end
  if not room then
    for i, column in ipairs(kept) do
      widths[i] = natural[column]
    end
    return kept, widths, left_out
  end
  -- each shrunk as far as it may be, then as many as fit, then widened again
  local shown = {}
  for _, column in ipairs(kept) do
    local least = math.max(output.width(column.name), math.min(natural[column], least_width))
    local more = least + (#shown > 0 and 2 or 0)
    if total + more <= room then
      shown[#shown + 1], widths[#shown + 1] = column, least
      total = total + more
    elseif settings.chosen then
      return nil
    else
      left_out[#left_out + 1] = column.name
    end
  end
  for i, column in ipairs(shown) do
    local more = math.min(natural[column] - widths[i], room - total)
    widths[i], total = widths[i] + more, total + more
  end
  return shown, widths, left_out
end

local enough_rows, enough_seconds = 100, 0.5 -- after which the columns are chosen

-- Rows as lines of columns: the first rows wait until the columns are chosen.
local Lines = {}
Lines.__index = Lines

function Lines:put(cells)
  ending.write(output.line(cells, self.widths, self.coloured))
end

-- The cells of rows, each by its column.
local function by_column(columns, rows, settings)
  local all = {}
  for i, row in ipairs(rows) do
    all[i] = {}
    for _, column in ipairs(columns) do
      all[i][column] = cell_of(column, row, settings)
    end
  end
  return all
end

-- Chooses the columns and writes what waited; one row under another where no choice is
-- narrow enough.
function Lines:begin()
  local rows = by_column(self.columns, self.waiting, self.settings)
  self.shown, self.widths, self.left_out = choose(self.columns, rows, self.settings, self.room)
  if not self.shown then
    self.instead = forms.vertical(self.columns, self.settings)
    for _, row in ipairs(self.waiting) do
      self.instead:row(row)
    end
  else
    self:put(header_of(self.shown))
    for _, cells in ipairs(rows) do
      local line = {}
      for i, column in ipairs(self.shown) do
        line[i] = cells[column]
      end
      self:put(line)
    end
  end
  self.waiting = nil
  ending.flush()
end

function Lines:row(row)
  if self.instead then
    return self.instead:row(row)
  elseif self.waiting then
    self.waiting[#self.waiting + 1] = row
    if #self.waiting >= enough_rows or self.clock() - self.began >= enough_seconds then
      self:begin()
    end
    return
  end
  self:put(cells_of(self.shown, row, self.settings))
  ending.flush()
end

function Lines:finish()
  if self.waiting and (#self.waiting > 0 or self.settings.people) then
    self:begin()
  end
  if self.settings.people and not self.instead and self.left_out and #self.left_out > 0 then
    local note = "not shown for want of room: " .. table.concat(self.left_out, " ")
    ending.write(output.styled(output.fitted(note, self.room), "note", self.coloured), "\n")
  end
end

function forms.table(columns, settings)
  local clock = require "librpc.record.clock"
  return setmetatable({ columns = columns, settings = settings, waiting = {}, clock = clock, began = clock(),
    room = settings.people and terminal.size() or nil,
    coloured = settings.people and terminal.is_coloured() }, Lines)
end

-- What writes rows in a form.
function formats.writer(form, columns, settings)
  return forms[form](columns, settings)
end

-- One table of rows at once, cut to what the terminal has room for: for watch.
function formats.screen(columns, list, settings, room)
  local rows = by_column(columns, list, settings)
  local chosen = settings.chosen
  local shown, widths, left_out = choose(columns, rows, settings, room)
  if not shown then -- asked for and too wide: as many as there is room for
    settings.chosen = false
    shown, widths, left_out = choose(columns, rows, settings, room)
    settings.chosen = chosen
  end
  local coloured = settings.people and terminal.is_coloured()
  local lines = { output.line(header_of(shown), widths, coloured) }
  for i, cells in ipairs(rows) do
    local line = {}
    for n, column in ipairs(shown) do
      line[n] = cells[column]
    end
    lines[i + 1] = output.line(line, widths, coloured)
  end
  return lines, left_out
end

-- The options that choose a form; commands that print rows have them.
formats.options = {
  { "format", "FORM", "one of " .. table.concat(formats.names, ", "), one_of = formats.names },
  { "json", nil, "the same as --format json" },
  { "header", nil, "a line of names with tsv, too" },
  { "fields", "NAME,...", "only these fields, in this order; all: every one", what = "fields" },
  { "show-secrets", nil, "print secrets, not (set)" },
}

-- The form and the settings that a command's options say. In a pipe a row is a line
-- with tabs, on a terminal what `default` says, or a table.
function formats.settings(options, default)
  local people = terminal.is(1)
  local form = options.format or options.json and "json" or people and (default or "table")
    or default == "vertical" and "vertical" or "tsv"
  return form, { chosen = options.fields ~= nil, header = options.header, secrets = options["show-secrets"],
    people = people }
end

return formats

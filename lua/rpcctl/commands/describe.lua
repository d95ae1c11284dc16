-- rpcctl describe: a table's fields, what they take and where they stand.
local ending = require "rpcctl.ending"
local names = require "librpc.names"
local options = require "rpcctl.options"
local output = require "rpcctl.output"
local schema = require "librpc.schema"
local tables = require "librpc.record.tables"
local terminal = require "rpcctl.terminal"

-- What an argument's field of that kind takes.
local kind_notes = {
  int = "whole number", unsigned = "whole number from 0", text = "text", mac = "MAC address",
  hex = "bytes in hex digits", list = "numbers between commas", real = "number", counter = "64-bit counter",
  bytes = "text copied as raw bytes", skip = "not read",
}

local function places_of(positions)
  local places = {}
  for place, position in ipairs(positions or {}) do
    places[position.name] = place
  end
  return places
end

-- "off=0, on=1": a field's words.
local function words_of(field)
  local numbers, words = {}, {}
  for number in pairs(field.values or {}) do
    numbers[#numbers + 1] = number
  end
  table.sort(numbers)
  for i, number in ipairs(numbers) do
    words[i] = field.values[number] .. "=" .. number
  end
  return table.concat(words, " ")
end

local function notes_of(field, position)
  local notes = { kind_notes[field.kind] }
  if position and (position.kind == "skip" or position.kind == "bytes") then
    notes[#notes + 1] = "argument: " .. kind_notes[position.kind]
  end
  notes[#notes + 1] = field.values and words_of(field)
  notes[#notes + 1] = field.unit
  notes[#notes + 1] = field.key and "key" or nil
  notes[#notes + 1] = field.secret and "secret" or nil
  notes[#notes + 1] = field.title ~= field.name:gsub("_", " ") and field.title or nil
  return table.concat(notes, "; ")
end

local function print_lines(rows)
  local people = terminal.is(1)
  ending.write(output.lines(rows, { aligned = people, coloured = people and terminal.is_coloured() }))
end

-- The lines of fields, the last cells in as many lines as they need on a terminal.
local function folded(rows)
  if not terminal.is(1) then
    return rows
  end
  local left, list, cells = terminal.size(), {}, #rows[1]
  for i = 1, cells - 1 do
    local widest = 0
    for _, row in ipairs(rows) do
      widest = math.max(widest, output.width(type(row[i]) == "table" and row[i][1] or row[i]))
    end
    left = left - widest - 2
  end
  for _, row in ipairs(rows) do
    list[#list + 1] = row
    local last = row[cells]
    local lines = type(last) == "string" and options.wrapped(last, "", math.max(left, 20)) or ""
    for line in lines:gmatch("[^\n]+") do
      if row[cells] ~= last then
        row = {}
        for i = 1, cells - 1 do
          row[i] = ""
        end
        list[#list + 1] = row
      end
      row[cells], last = line, nil
    end
  end
  return list
end

-- The lines of APIs without their records' names where a terminal is too narrow.
local function without_records(rows)
  if terminal.is(1) then
    local columns = terminal.size()
    for line in output.lines(rows, { aligned = true }):gmatch("[^\n]+") do
      if output.width(line) > columns then
        for _, row in ipairs(rows) do
          table.remove(row)
          table.remove(row)
        end
        break
      end
    end
  end
  return rows
end

local function header(...)
  local cells = {}
  for i, name in ipairs { ... } do
    cells[i] = { name, "header" }
  end
  return cells
end

return {
  name = "describe",
  summary = "show a table's or an API's fields: what they take, where they stand",
  details = "A table is what an API's name says between oltmib_ and _get_1, _getn_1 or _set_1.",
  arguments = { { "TABLE", what = "table or API" } },
  options = { { "json", nil, "print the schema of the APIs as JSON" } },
  examples = { { "rpcctl describe portinfo", "which fields a port has, and how each is written" } },
  run = function(words, given)
    local api = schema.api(words[1])
    local apis, list = ending.need(tables.apis_of(words[1])), {}
    for _, operation in ipairs { "get", "getn", "set", "other" } do
      list[#list + 1] = (not api or apis[operation] == api) and apis[operation] or nil
    end
    if given.json then
      return ending.write(output.json(list, { "name", "service", "program", "procedure", "operation", "table",
        "request", "reply", "delimiters", "separator", "longest", "input", "output", "status" }), "\n")
    end
    local rows = { header("api", "operation", "service", "program", "procedure", "request", "reply") }
    for _, one in ipairs(list) do
      rows[#rows + 1] = { one.name, one.operation, one.service, tostring(one.program), tostring(one.procedure),
        one.request, one.reply }
    end
    print_lines(without_records(rows))
    local input, reply = {}, nil
    for _, one in ipairs(list) do
      input = #one.input > #input and one.input or input
      reply = reply or one.output
    end
    local in_argument, in_reply, any = places_of(input), places_of(reply), false
    local fields = ending.need(names.fields(list[1].table))
    for _, field in ipairs(fields) do
      any = any or field.name ~= field.field
    end
    rows = { any and header("name", "field", "kind", "size", "argument", "reply", "value")
      or header("field", "kind", "size", "argument", "reply", "value") }
    for _, field in ipairs(fields) do
      local argument, place = in_argument[field.field], in_reply[field.field]
      if argument or place then
        local row = { field.field, field.kind, tostring(field.size or ""), tostring(argument or ""),
          tostring(place or ""), output.printable(notes_of(field, input[argument])) }
        if any then
          table.insert(row, 1, field.name)
        end
        rows[#rows + 1] = row
      end
    end
    ending.write("\n")
    print_lines(folded(rows))
  end,
}

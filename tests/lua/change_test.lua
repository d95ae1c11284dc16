-- librpc.record.change beside the simulated device: every field that can be changed
-- of every table that can be read and set, one at a time. What changed is read from
-- the replies' texts, by position, without librpc.record.
local check = require "check"
local librpc = require "librpc"
local names = require "librpc.names"
local record = require "librpc.record"
local schema = require "librpc.schema"

local tables, order = {}, {}
for _, api in ipairs(schema.apis) do
  if not tables[api.table] then
    tables[api.table] = {}
    order[#order + 1] = api.table
  end
  tables[api.table][api.operation] = api
end

-- A reply's text as its positions, by the fields' names.
local function positions_of(api, text)
  local found, number = {}, 0
  for part in (text .. api.separator):gmatch("(.-)" .. api.separator:gsub("%p", "%%%0")) do
    number = number + 1
    found[api.output[number].name] = part
  end
  check.equal(api.name .. ": positions", number, #api.output)
  return found
end

local function differences(before, after)
  local list = {}
  for field, text in pairs(after) do
    list[#list + 1] = before[field] ~= text and field or nil
  end
  table.sort(list)
  return list
end

-- Another value of a field, from the text of the one it has.
local function other_value(position, text)
  if position.kind == "int" or position.kind == "unsigned" then
    return (tonumber(text) + 1) % 100
  elseif position.kind == "mac" then
    return text == "00-1E-80-00-00-99" and "00-1E-80-00-00-98" or "00-1E-80-00-00-99"
  elseif position.kind == "hex" then
    return "0123456789abcdef"
  elseif position.kind == "list" then
    return text:sub(1, -2) .. (text:sub(-1) == "1" and "2" or "1")
  elseif position.kind == "real" then
    return tonumber(text) + 1
  end
  return text == "other" and "another" or "other"
end

-- Tables without a getn whose rows have a key.
local first_key = { syslogremote = { int1 = 1 }, igmpsnp_fastleave = { int1 = 20 } }

-- The changes of one field, with the values that have to be given because a set
-- cannot send the row's own: a raw MAC, reals.
local function changes_of(set, row, field, value)
  local changes = {}
  for _, position in ipairs(set.input) do
    if position.kind == "bytes" then
      changes[position.name] = ""
    elseif position.kind == "real" then
      changes[position.name] = row[position.name]
    end
  end
  changes[field] = value
  return changes
end

-- Differences of counters, which go on by themselves, are none.
local function unmoving(api, fields)
  local moving, list = {}, {}
  for _, position in ipairs(api.output) do
    moving[position.name] = position.kind == "counter" or nil
  end
  for _, field in ipairs(fields) do
    list[#list + 1] = not moving[field] and field or nil
  end
  return list
end

-- The first fields of tables of one row, by rule, without any names.
local one_row, changed_first = 0, 0
for _, name in ipairs(order) do
  local apis = tables[name]
  if apis.get and apis.set and not apis.getn and not first_key[name] then
    one_row = one_row + 1
    local before = positions_of(apis.get, librpc.callapi(apis.get.name, ""))
    local first = apis.set.input[1]
    local other = other_value(first, before[first.name])
    local fields = changes_of(apis.set, before, first.name, other)
    local status, message = record.change(name, fields)
    check.equal(name .. ": " .. first.name .. ": " .. tostring(message), status, 0)
    local after = positions_of(apis.get, librpc.callapi(apis.get.name, ""))
    check.equal(name .. ": its first field changed alone", unmoving(apis.get, differences(before, after)),
      { first.name })
    changed_first = changed_first + 1
  end
end
check.equal("tables of one row", { one_row, changed_first }, { 33, 33 })

check.equal("the device's names", { names.load(os.getenv("LIBRPC_TEST_SOURCE") .. "/sim/names.lua") }, { true })

-- The first row's text, and its key as the names tell it.
local function first_row(name, apis)
  local reader, argument = apis.getn or apis.get, ""
  local key = first_key[name]
  if key then
    argument = key.int1 .. ""
  end
  local text = librpc.callapi(reader.name, argument)
  local row = positions_of(reader, text)
  if not key then
    key = {}
    for _, field in ipairs(names.fields(name)) do
      if field.key then
        key[field.field] = row[field.field]
      end
    end
  end
  return key, function()
    return positions_of(reader, librpc.callapi(reader.name, argument))
  end
end

-- Counters go on by themselves; the simulated device keeps a MAC that is read raw;
-- another key would be another row.
local function can_be_changed(view, position, key, row)
  return position.kind ~= "skip" and position.kind ~= "bytes" and key[position.name] == nil
    and row[position.name] ~= nil and position.name ~= view.oper and position.name ~= view.res
end

local changed_tables, changed_fields = 0, 0
for _, name in ipairs(order) do
  local apis = tables[name]
  if apis.set and (apis.get or apis.getn) then
    changed_tables = changed_tables + 1
    local key, read = first_row(name, apis)
    local function change(field, value)
      local before = read()
      local status, changed = record.change(name, key, changes_of(apis.set, before, field, value))
      check.equal(name .. ": " .. field .. ": " .. tostring(status == nil and changed), status, 0)
      check.equal(name .. ": " .. field .. " changed alone",
        unmoving(apis.getn or apis.get, differences(before, read())), { field })
      changed_fields = changed_fields + 1
    end
    local row = read()
    for _, position in ipairs(apis.set.input) do
      if can_be_changed(names.view(name), position, key, row) then
        change(position.name, other_value(position, row[position.name]))
      end
    end
    local oper = names.view(name).oper
    if apis.get and row[oper] then -- which a change does not carry over
      change(oper, 3)
      change(oper, 0)
    end
  end
end
check.equal("every table that can be read and set", changed_tables, 104)
check.equal("so many fields, so that none is passed over unseen", changed_fields, 840)

-- Words go there and back, a secret is not told.
local port = assert(record.get("portinfo", { port = 2 }))
check.equal("words", { port.enabled, port.field4 }, { "on", 1 })
check.row(record.change, { "portinfo", { port = 2 }, { enabled = "off" } },
  { 0, { enabled = { before = "on", after = "off" } } })
check.equal("as numbers", librpc.callapi("oltmib_portinfo_get_1", "2"):match("^2&[^&]*&[^&]*&(%d+)&"), "0")

-- A daemon's result is no end: the row says 5 where the end is 1.
check.equal("a row with a result", record.call("oltmib_svi_set_1", { vlan = 10, name = "broken", res = 5 }), 0)
local rows, message, code, kept, last = record.rows "svi"
check.equal("a failed walk", { tostring(rows), message, code, #kept, last.name },
  { "nil", "oltmib_svi_getn_1: res: expected 0, or what stands for the end, found 5", "daemon_status", 1, "broken" })
check.equal("set back", record.call("oltmib_svi_set_1", { vlan = 10, name = "broken" }), 0)
check.equal("a walk to the end", { #record.rows "svi", (select(2, record.rows "svi")) }, { 3, "end" })

-- What is not sent is not changed; `only` sends the others as 0 or empty.
local function text_of(api, argument)
  return (librpc.callapi(api, argument))
end
local was = text_of("oltmib_vlaninfo_get_1", "10")
check.row(record.change, { "vlaninfo", { vlan = 10 }, { name = "phones" }, { dry_run = true } },
  { false, { name = { before = "voice", after = "phones" } } })
check.equal("a dry run", text_of("oltmib_vlaninfo_get_1", "10"), was)
check.row(record.change, { "vlaninfo", { vlan = 10 }, { vlan = 10, name = "phones" }, { only = true, dry_run = true } },
  { false, { name = { before = "voice", after = "phones" }, active = { before = "on", after = "off" },
    field4 = { before = 1, after = 0 }, untagged = { before = "ge1,ge2", after = "" },
    tagged = { before = "ge3,ge4", after = "" } } })
check.row(record.change, { "vlaninfo", { vlan = 10 }, { vlan = 10, name = "phones" }, { only = true } },
  { 0, { name = { before = "voice", after = "phones" }, active = { before = "on", after = "off" },
    field4 = { before = 1, after = 0 }, untagged = { before = "ge1,ge2", after = "" },
    tagged = { before = "ge3,ge4", after = "" } } })
check.equal("only", text_of("oltmib_vlaninfo_get_1", "10"), "10&0&phones&0&&&&0&0")
check.row(record.change, { "vlaninfo", { vlan = 10 }, {}, { dry = true } },
  { "nil", "record.change: options: expected one of call_seconds, dry_run, only, found \"dry\"",
    "unknown_option" })

-- A new row; one that is there stays.
check.row(record.add, { "svi", { vlan = 60, name = "new" }, { dry_run = true } },
  { false, { vlan = { after = 60 }, name = { after = "new" } } })
check.equal("a dry run adds nothing", text_of("oltmib_svi_get_1", "60"), "60&&&&0&1")
check.row(record.add, { "svi", { vlan = 60, name = "new" } }, { 0, { vlan = { after = 60 },
  name = { after = "new" } } })
check.equal("a new row", text_of("oltmib_svi_get_1", "60"), "60&new&&&0&0")
check.row(record.add, { "svi", { vlan = 60, name = "other" } },
  { "nil", "oltmib_svi_set_1: expected a key of which there is no row, found a row", "row_exists" })
check.row(record.add, { "telnet", { tcp_port = 24 } },
  { "nil", "oltmib_telnet_set_1: expected a key of which there is no row, found a table of one row", "row_exists" })
check.row(record.add, { "portrate", { port = 24 } }, { "nil", 'portrate: expected get or getn, found "set"',
  "no_operation" })
check.row(record.add, { "svi", { vlan = "x" } },
  { "nil", 'oltmib_svi_set_1: vlan: expected a whole number, found "x"', "bad_number" })
check.equal("what was there stays", text_of("oltmib_svi_get_1", "60"), "60&new&&&0&0")

-- Rows as they come, as many as are wanted.
local seen = {}
check.row(record.rows, { "portinfo", nil, { each = function(row)
  seen[#seen + 1] = row.port
  return row.port < 3
end } }, { {}, "stopped", "nil" })
check.equal("each row", seen, { 1, 2, 3 })
check.equal("calls of that walk", select(2, record.rows("portinfo", nil, { each = function() end })), "end")
local given
rows = require("librpc.record").walks { { "telnet", nil, { each = function(row) given = row.tcp_port end } } }
check.equal("of a table of one row", { rows[1], given }, { {}, record.get("telnet").tcp_port })

-- Each call has its time, whatever the whole may take.
local shell = require "shell"
shell.tell "fault nsminfo drop"
for _, called in ipairs { "get", "add", "change", "call", "rows" } do
  local arguments = { get = { "svi", { vlan = 1 }, { call_seconds = 0.1 } },
    add = { "svi", { vlan = 61 }, { call_seconds = 0.1 } },
    change = { "svi", { vlan = 1 }, { name = "x" }, { call_seconds = 0.1 } },
    call = { "oltmib_svi_get_1", { vlan = 1 }, { call_seconds = 0.1 } },
    rows = { "svi", nil, { call_seconds = 0.1, seconds = 60 } } }
  local unpack = unpack or table.unpack -- luacheck: ignore 143
  check.equal(called .. ": call_seconds", select(3, record[called](unpack(arguments[called], 1, 4))), "timed_out")
end
shell.tell "clear"

check.finish()

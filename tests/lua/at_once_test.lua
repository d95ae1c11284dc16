-- librpc.record's calls and walks at once, beside the device.
local check = require "check"
local clock = require "clock"
local shell = require "shell"
local record = require "librpc.record"
local schema = require "librpc.schema"

-- record.all gives what record.call gives.
local list = { { "oltmib_devinfo_get_1" }, { "oltmib_portinfo_get_1", { ifx = 3 } },
  { "oltmib_vlaninfo_get_1", { field1 = 10 } }, { "oltmib_sysloginfo_set_1", { } } }
local rows, failures = record.all(list, 60)
check.equal("no failure", failures, {})
for i, item in ipairs(list) do
  check.equal(item[1], rows[i], (record.call(item[1], item[2])))
end
check.equal("a row", { rows[2].ifx, rows[2].name }, { 3, "ge3" })

-- A set beside other calls of its table, and beside another table's set.
rows, failures = record.all({ { "oltmib_sysloginfo_set_1", {} }, { "oltmib_sysloginfo_get_1" },
  { "oltmib_sysloginfo_get_1" }, { "oltmib_telnet_set_1", { int1 = 1 } } }, 60)
check.equal("one set of each table", { rows[1], type(rows[2]), type(rows[3]), rows[4], failures },
  { 0, "table", "table", 0, {} })

-- What fails takes nothing else with it.
shell.tell "stop lpdet"
shell.tell "fault ribinfo raw XID000000010000000000000000000000000000000000000001"
rows, failures = record.all({ { "oltmib_vlaninfo_get_1", { field1 = "ten" } },
  { "oltmib_vlaninfo_get_1", { field1 = 10 } }, { "oltmib_nothing_get_1" }, { "oltmib_lpdet_global_get_1" },
  { "oltmib_route_get_1" } }, 60)
check.equal("rows", { rows[1], rows[2].field3, rows[3], rows[4], rows[5] }, { false, "voice", false, false, false })
check.equal("a wrong field", failures[1], { code = "bad_number",
  message = 'oltmib_vlaninfo_get_1: field1: expected a whole number, found "ten"' })
check.equal("no failure of the one between", failures[2], nil)
check.equal("an unknown API", failures[3].code, "unknown_api")
check.equal("no daemon", { failures[4].code, failures[4].details.service }, { "no_daemon", "lpdet" })
check.equal("a bad reply", failures[5].code, "bad_reply")
shell.tell "clear"
shell.tell "start lpdet"

-- A list that is none.
for _, row in ipairs {
  { { 5 }, { "nil", "record.all: expected a list of { api, fields }, found 5", "bad_type" } },
  { { { { "oltmib_devinfo_get_1" }, "x" } },
    { "nil", 'record.all: item 2: expected { api, fields }, found "x"', "bad_type" } },
  { { {}, "soon" }, { "nil", 'record.all: seconds: expected a number from 0, found "soon"', "bad_type" } },
  { { {}, -1 }, { "nil", "record.all: seconds: expected a number from 0, found -1", "bad_type" } },
  { { {}, 0 / 0 }, { "nil", "record.all: seconds: expected a number from 0, found " .. tostring(0 / 0), "bad_type" } },
  { { { { "oltmib_svi_set_1" }, { "oltmib_devinfo_get_1" }, { "oltmib_svi_set_1" } } },
    { "nil", "record.all: item 3: expected one set of a table, found a second of svi", "two_sets" } },
} do
  check.row(record.all, row[1], row[2])
end
check.row(record.all, { {} }, { {}, {} })
check.row(record.all, { {}, 0 }, { {}, {} })
check.row(record.walks, { 5 },
  { "nil", "record.walks: expected a list of { table, key, options }, found 5", "bad_type" })
check.row(record.walks, { { 5 } },
  { "nil", "record.walks: item 1: expected { table, key, options }, found 5", "bad_type" })
check.row(record.walks, { {} }, { {}, {}, {}, {} })

-- Every table that is walked, beside the others: as one after another. Counters
-- move at each read.
local walks, alone = {}, {}
for _, api in ipairs(schema.apis) do
  local counts = false
  for _, position in ipairs(api.output or {}) do
    counts = counts or position.kind == "counter"
  end
  if api.operation == "getn" and not counts then
    local options = { done = function(row)
      return row.res ~= nil and row.res ~= 0
    end, limit = 50 }
    walks[#walks + 1] = { api.table, nil, options }
    local result = { record.rows(api.table, nil, options) }
    alone[#walks] = { result[1] or result[4], result[1] and result[2] or nil, result[3] }
  end
end
check.equal("walked tables", #walks > 60, true)
local all_rows, all_failures, ends = record.walks(walks, 60)
for i, walk in ipairs(walks) do
  check.equal(walk[1] .. ": rows", all_rows[i], alone[i][1])
  if ends[i] then
    check.equal(walk[1] .. ": its end", { ends[i].why, ends[i].last, all_failures[i] }, { alone[i][2], alone[i][3] })
  else
    check.equal(walk[1] .. ": its failure", all_failures[i].code, alone[i][3])
  end
end
local kept = record.walks({ { "portinfo" }, { "portinfo", { ifx = 4 } } }, 60)
check.equal("two walks of one table", { #kept[1], #kept[2], kept[2][1].ifx }, { 8, 4, 5 })

-- A table that is not walked gives its one row.
rows, failures, ends = record.walks({ { "telnet" }, { "agsys" }, { "vlanbitmapinfo" }, { "nothing" },
  { "mstp_bri", "key" }, { "telnet", nil, { limt = 1 } } }, 60)
check.equal("one row each", { rows[1], rows[2], #rows[3], #rows[4], #rows[5], #rows[6] },
  { { (record.get "telnet") }, { (record.get "agsys") }, 0, 0, 0, 0 })
check.equal("its end", { ends[1], ends[2] }, { { why = "end" }, { why = "end" } })
check.equal("failures", { failures[1], failures[2], failures[3].code, failures[4].code, failures[6].code },
  { [3] = "no_operation", [4] = "unknown_api", [5] = "unknown_option" })
local remote = schema.table("syslogremote").get.input[1].name
rows, failures = record.walks({ { "agsys", { field1 = 99 } }, { "syslogremote", { [remote] = 99 } } }, 60)
check.equal("which is the one that was asked for", { #rows[1], failures[1].code, #rows[2], failures[2].code },
  { 0, "other_row", 0, "no_row" })
shell.tell "fault oltmib_telnet_get_1 drop"
shell.tell "fault oltmib_agsys_get_1 count=1 truncate 8"
local _, took
rows, failures, _, took = record.walks({ { "telnet" }, { "agsys" } }, 0.3)
check.equal("one that is silent", { #rows[1], failures[1] }, { 0, { code = "deadline",
  message = "oltmib_telnet_get_1: expected the end within 0.3 seconds, found 0 rows and no end" } })
check.equal("one that is cut", failures[2].code, "bad_reply")
check.equal("the time of its calls", { took[1] > 0.2, took[2] < took[1] }, { true, true })
shell.tell "clear"

-- A walk that fails hands back what it has, with the reason; others go on.
shell.tell "fault oltmib_vlaninfo_getn_1 after=2 error system_err"
rows, failures, ends = record.walks({ { "vlaninfo" }, { "portinfo" }, { "nothing" }, { "vlaninfo", nil, { limt = 1 } },
  { "portinfo", nil, { limit = 3 } } }, 60)
check.equal("rows", { #rows[1], #rows[2], #rows[3], #rows[4], #rows[5] }, { 2, 8, 0, 0, 3 })
check.equal("failures", { failures[1].code, failures[2], failures[3].code, failures[4].code, failures[5].code },
  { "rejected", [3] = "unknown_api", [4] = "unknown_option", [5] = "too_many_rows" })
check.equal("details", failures[1].details.service, "nsminfo")
check.equal("ends", { ends[1], ends[2].why, ends[2].last.res, ends[3] }, { [2] = "res", [3] = 1 })
shell.tell "clear"

-- A deadline for all, one of a walk's own, and one of a walk alone.
shell.tell "fault oltmib_vlaninfo_getn_1 after=1 drop"
check.equal("the deadline", clock.takes(3, function() -- in which the other walk comes to its end
  rows, failures = record.walks({ { "vlaninfo" }, { "portinfo" } }, 3)
end), true)
check.equal("what there was in time", { #rows[1], #rows[2], failures[2] }, { 1, 8 })
check.equal("the reason", failures[1], { code = "deadline",
  message = "oltmib_vlaninfo_getn_1: expected the end within 3 seconds, found 1 rows and no end" })
shell.tell "clear"
shell.tell "fault oltmib_vlaninfo_getn_1 drop"
rows, failures = record.walks({ { "vlaninfo", nil, { seconds = 0.3 } }, { "portinfo" } }, 60)
check.equal("a walk's own deadline", { #rows[1], #rows[2], failures[1].code, failures[1].message:match("%S+ seconds") },
  { 0, 8, "deadline", "0.3 seconds" })
shell.tell "clear"
shell.tell "fault oltmib_vlaninfo_getn_1 after=1 drop"
local nothing, message, code, had
check.equal("its deadline", clock.takes(0.5, function()
  nothing, message, code, had = record.rows("vlaninfo", nil, { seconds = 0.5 })
end), true)
check.equal("a walk alone", { nothing, message, code, #had }, { nil,
  "oltmib_vlaninfo_getn_1: expected the end within 0.5 seconds, found 1 rows and no end", "deadline", 1 })
shell.tell "clear"
check.equal("afterwards", #record.rows("vlaninfo", nil, { seconds = 60 }), 3)

-- An error of the caller's own leaves nothing behind.
check.equal("an error in done", pcall(record.walks, { { "portinfo" }, { "vlaninfo", nil, { done = function()
  error "mine"
end } } }), false)
rows = record.walks({ { "portinfo" }, { "vlaninfo", nil, { done = function(row)
  return row.res ~= 0 or #record.walks({ { "portinfo" } }, 60)[1] ~= 8 -- a walk within a walk
end } } }, 60)
check.equal("the next walks", { #rows[1], #rows[2] }, { 8, 3 })

-- A daemon that was restarted between two pages: once refused, then found.
shell.tell "restart nsminfo"
rows, failures = record.walks({ { "portinfo" } }, 60)
check.equal("after a restart", { #rows[1], failures[1] and failures[1].code }, { 0, "refused" })
check.equal("and again", #record.walks({ { "portinfo" } }, 60)[1], 8)

-- Deadlines are told to parts of a second, and where there is no such clock to seconds.
local seconds, part = require "librpc.record.clock", 0
for _ = 1, 100 do
  part = math.max(part, seconds() % 1)
  os.execute(part == 0 and "sleep 0.02" or ":")
end
check.equal("the clock tells parts of a second", part ~= 0, true)
local open = io.open
io.open = function() end -- luacheck: ignore 122
local told = seconds()
io.open = open -- luacheck: ignore 122
check.equal("where there is no /proc it tells seconds", math.abs(told - os.time()) <= 60, true)

check.finish()

-- librpc.record: keys, single rows, changes, the ends of walks, and forms, without
-- daemons: the library's callapi answers from a list.
local check = require "check"

local calls, answers, failure = {}, {}, nil
package.loaded["librpc"] = {
  callapi = function(name, argument)
    calls[#calls + 1] = name .. " " .. argument
    return table.remove(answers, 1)
  end,
}
package.loaded["librpc.calls"] = { -- for walks that have a deadline
  all = function(list)
    local one = list[1]
    local text = package.loaded["librpc"].callapi(one[1], one[2])
    return { text or false }, { not text and failure or nil }
  end,
}
package.loaded["librpc.status"] = {
  last = function()
    return failure or "failed", "a sentence about it"
  end,
}
local names = require "librpc.names"
local record = require "librpc.record"

-- Calls a function after the daemon's answers are set; what was called is in `calls`.
local function given(list, called, arguments, expected, what)
  calls, answers = {}, list
  check.row(called, arguments, expected, what)
end

local function with_names(text)
  local path = os.tmpname()
  local file = assert(io.open(path, "w"))
  file:write("return {" .. text .. "}")
  file:close()
  check.equal("names: " .. text, { names.load(path) }, { true })
  os.remove(path)
end

local telnet = "0&telnet&23&&&&&0&0"
local function telnet_row(enabled)
  return { int1 = enabled, text40 = "telnet", int2 = 23, text64 = "", text80a = "", text80b = "", text32 = "", oper = 0,
    res = 0 }
end
local function svi(number, result)
  return ("%d&vlan%d&192.0.2.%d&&0&%d"):format(number, number, number, result or 0)
end
local function svi_row(number, result)
  return { field1 = number, name = "vlan" .. number, field3 = "192.0.2." .. number, text = "", oper = 0,
    res = result or 0 }
end

-- record.get: a table of one row has no key, a walked one its first field.
given({ telnet }, record.get, { "telnet" }, { telnet_row(0) })
check.equal("one row is asked for without a key", calls, { "oltmib_telnet_get_1 " })
given({ svi(20) }, record.get, { "svi", { field1 = 20 } }, { svi_row(20) })
check.equal("the key is sent", calls, { "oltmib_svi_get_1 20" })
given({ svi(20) }, record.get, { "oltmib_svi_set_1", { field1 = 20 } }, { svi_row(20) }, "an API stands for its table")
given({}, record.get, { "svi" }, { "nil", "svi: key: expected field1, found none", "no_key" })
given({}, record.get, { "svi", 20 }, { "nil", "svi: key: expected a table of fields, found 20", "bad_type" })
given({}, record.get, { "svi", { field1 = "x" } },
  { "nil", 'oltmib_svi_get_1: field1: expected a whole number, found "x"', "bad_number" })
check.equal("a wrong key is not sent", calls, {})
given({}, record.get, { "sv", {} },
  { "nil", 'librpc: expected the name of a table (did you mean svi?), found "sv"', "unknown_api" })
given({}, record.get, { 5 }, { "nil", "librpc: expected the name of a table, found 5", "unknown_api" })
given({}, record.get, { "accesslog" }, { "nil", 'accesslog: expected set, found "get"', "no_operation" })
given({ svi(21, 1) }, record.get, { "svi", { field1 = 21 } },
  { "nil", "oltmib_svi_get_1: res: expected 0, of a row that is there, found 1", "no_row", svi_row(21, 1) })
given({ svi(21) }, record.get, { "svi", { field1 = 21, oper = 3, res = 7 } }, { svi_row(21) },
  "the operation and the result are no key")
given({ svi(22) }, record.get, { "svi", { field1 = 21 } },
  { "nil", "oltmib_svi_get_1: field1: expected the row 21, found 22", "other_row", svi_row(22) })
failure = "timed_out"
given({}, record.get, { "telnet" }, { "nil", "a sentence about it", "timed_out", "nil" })
failure = nil

-- A key of more fields than the first is the caller's: all of it is compared.
local instance = "0&3&ge3&20000&128&1&0&0&0&0&0&0&0&0&&0&0"
given({ instance }, function(...)
  return record.get(...).text1
end, { "mstp_if", { value1 = 0, value2 = 3 } }, { "ge3" })
check.equal("both fields are sent", calls, { "oltmib_mstp_if_get_1 0&3" })
given({ instance }, function(...)
  return (select(2, record.get(...)))
end, { "mstp_if", { value1 = 0, value2 = 4 } },
  { "oltmib_mstp_if_get_1: value2: expected the row 4, found 3" })

-- A table without a get is walked to the row.
local function mirror(session, result)
  return ("%d&1&a mirror&ge6&0&0&ge1&&3&1&&0&%d"):format(session, result or 0)
end
given({ mirror(1), mirror(2) }, function(...)
  return record.get(...).sid
end, { "pminfo", { sid = 2 } }, { 2 })
check.equal("the walk to the row", calls,
  { "oltmib_pminfo_getn_1 ", "oltmib_pminfo_getn_1 1&1&a mirror&ge6&0&0&ge1&&3&1" })
given({ mirror(1), mirror(2, 1) }, function(...)
  local row, message, code, last = record.get(...)
  return row, message, code, last.res
end, { "pminfo", { sid = 3 } },
  { "nil", "oltmib_pminfo_getn_1: expected the row of that key, found none among 1", "no_row", 1 })
failure = "refused"
given({ mirror(1) }, record.get, { "pminfo", { sid = 3 } }, { "nil", "a sentence about it", "refused", "nil" })
failure = nil

-- record.change: the key reads, the changes are what is sent differently.
given({ telnet, "0" }, record.change, { "telnet", {}, { int1 = 1 } }, { 0, { int1 = { before = 0, after = 1 } } })
check.equal("the first field of one row is no key", calls,
  { "oltmib_telnet_get_1 ", "oltmib_telnet_set_1 1&telnet&23" })
given({ telnet, "0" }, record.change, { "telnet", { int1 = 1 } }, { 0, { int1 = { before = 0, after = 1 } } })
check.equal("nor is it with two arguments", calls, { "oltmib_telnet_get_1 ", "oltmib_telnet_set_1 1&telnet&23" })
given({ svi(20), "0" }, record.change, { "svi", { field1 = 20 }, { field1 = 21 } },
  { 0, { field1 = { before = 20, after = 21 } } })
check.equal("a changed key is sent as it is changed", calls,
  { "oltmib_svi_get_1 20", "oltmib_svi_set_1 21&vlan20&192.0.2.20" })
given({ svi(20), "0" }, record.change, { "svi", { field1 = "20", name = "vlan20" } }, { 0, {} },
  "what is as it was is no change")
given({ svi(20), "7" }, record.change, { "svi", { field1 = 20 }, { name = "a" } },
  { 7, { name = { before = "vlan20", after = "a" } } }, "the daemon refuses")
given({}, record.change, { "svi", nil, { name = "a" } }, { "nil", "svi: key: expected field1, found none", "no_key" })
given({}, record.change, { "svi", { field1 = 20 }, { nam = "a" } }, { "nil",
  'oltmib_svi_set_1: expected one of its fields (did you mean name?), found "nam"', "unknown_field" })
given({}, record.change, { "svi", 20 }, { "nil", "oltmib_svi_set_1: expected a table of fields, found 20", "bad_type" })
given({}, record.change, { "svi", 20, {} }, { "nil", "svi: key: expected a table of fields, found 20", "bad_type" })
given({}, record.change, { "svi" }, { "nil", "oltmib_svi_set_1: expected a table of fields, found nil", "bad_type" })
given({}, record.change, { "fdb_dynamic", {}, {} },
  { "nil", 'fdb_dynamic: expected getn, found "set"', "no_operation" })
failure = "timed_out"
given({ svi(20) }, record.change, { "svi", { field1 = 20 }, { name = "a" } },
  { "nil", "a sentence about it", "timed_out" })
failure = nil
given({ svi(20), "x" }, record.change, { "svi", { field1 = 20 }, { name = "a" } },
  { "nil", 'oltmib_svi_set_1: expected a status, found "x"', "bad_text" })
given({ "1,2,3,4,5,6,7,8&&0&0", "0" }, record.change, { "queueweight", {}, { map = { 1, 2, 3, 4, 5, 6, 7, 9 } } },
  { 0, { map = { before = { 1, 2, 3, 4, 5, 6, 7, 8 }, after = { 1, 2, 3, 4, 5, 6, 7, 9 } } } })
check.equal("a list goes back", calls[2], "oltmib_queueweight_set_1 1,2,3,4,5,6,7,9")
given({ "00-1E-80-AA-00-01&1&ge1&0&&0&0", "0" }, record.change,
  { "fdb", { mac = "001e80aa0001" }, { field2 = 2 } }, { 0, { field2 = { before = 1, after = 2 } } })
check.equal("a MAC goes back", calls[2], "oltmib_fdb_set_1 00-1E-80-AA-00-01&2&ge1&0")

-- What cannot be sent as the daemon holds it has to be given.
local time = "ntp&a&b&UTC&1&64&2&a&now&3&%s&%s&&0&0"
given({ time:format("0.13", "12.50") }, record.change, { "ntp", {}, { text64a = "c" } }, { "nil",
  "oltmib_ntp_set_1: real1: expected a value, because the argument cannot carry the row's own, found 0.13",
  "not_carried" })
check.equal("and is not sent", #calls, 1)
given({ time:format("0.13", "12.50"), "0" }, record.change,
  { "ntp", {}, { text64a = "c", real1 = 0.12645, real2 = 12.5 } },
  { 0, { text64a = { before = "a", after = "c" }, real1 = { before = 0.13, after = 0.12645 } } })
given({ time:format("70368744177664.00", "1234567890123456768.00"), "0" }, record.change,
  { "ntp", {}, { text64a = "c" } }, { 0, { text64a = { before = "a", after = "c" } } }, "a real that its text tells")
check.equal("is sent back", calls[2],
  "oltmib_ntp_set_1 ntp&c&b&UTC&1&64&2&a&now&3&70368744177664&1.2345678901234568e+18")
given({ time:format("70368744177663.98", "0.00") }, function(...)
  return select(3, record.change(...))
end, { "ntp", {}, { text64a = "c" } }, { "not_carried" }, "the largest that its text does not tell")
local device = "OLT&SN&%s&1&2&3&0&0&olt&0"
given({ device:format("00-1E-80-4C-00-01") }, function(...)
  return (record.get(...) or {}).hostname
end, { "devinfo", { mac = "ABC" } }, { "olt" }, "raw bytes, which read otherwise than they are sent, are no key")
given({ device:format("00-1E-80-4C-00-01") }, function(...)
  return select(3, record.change(...))
end, { "devinfo", {}, { hostname = "a" } }, { "not_carried" })
for mac, bytes in pairs { ["00-00-00-00-00-00"] = "", ["41-42-43-00-00-00"] = "ABC" } do
  given({ device:format(mac), "0" }, record.change, { "devinfo", {}, { hostname = "a" } },
    { 0, { hostname = { before = "olt", after = "a" } } }, "a raw MAC that a text can send")
  check.equal("as its bytes", calls[2], "oltmib_devinfo_set_1 OLT&SN&" .. bytes .. "&1&2&3&0&0&a")
end
for _, mac in ipairs { "41-00-43-00-00-00", "41-26-43-00-00-00", "41-42-43-44-45-46" } do
  given({ device:format(mac) }, function(...)
    return select(3, record.change(...))
  end, { "devinfo", {}, { hostname = "a" } }, { "not_carried" }, "a raw MAC that no text can send: " .. mac)
end
given({ ("x"):rep(32) .. "&SN&00-00-00-00-00-00&1&2&3&0&0&olt&0" }, record.change,
  { "devinfo", {}, { hostname = "a" } }, { "nil", "oltmib_devinfo_set_1: text32a: expected a value, because the "
    .. 'argument cannot carry the row\'s own, found "' .. ("x"):rep(32) .. '"', "not_carried" },
  "a text that fills its array")

-- record.rows: why it ended, and the row that ended it.
given({ svi(1), svi(20, 5) }, record.rows, { "svi" }, { { svi_row(1) }, "res", svi_row(20, 5) })
given({ svi(1), svi(20, 5) }, record.rows, { "svi", nil, { ends = { 1, 5 } } },
  { { svi_row(1) }, "end", svi_row(20, 5) })
given({ svi(20, 5) }, record.rows, { "svi", nil, { ends = { 1 } } }, { "nil",
  "oltmib_svi_getn_1: res: expected 0, or what stands for the end, found 5", "daemon_status", {}, svi_row(20, 5) },
  "a failure is no empty table")
given({ svi(1) }, record.rows, { "svi", nil, { seconds = 0 } }, { "nil",
  "oltmib_svi_getn_1: expected the end within 0 seconds, found 1 rows and no end", "deadline", { svi_row(1) }, "nil" })
failure = { code = "timed_out", message = "a sentence about it" }
given({ svi(1), svi(2) }, record.rows, { "svi", nil, { seconds = 60 } }, { "nil",
  "oltmib_svi_getn_1: expected the end within 60 seconds, found 2 rows and no end", "deadline",
  { svi_row(1), svi_row(2) }, "nil" }, "a call that is not answered in time")
failure = { code = "not_sent", message = "a sentence about it" }
given({ svi(1) }, record.rows, { "svi", nil, { seconds = 60 } }, { "nil",
  "oltmib_svi_getn_1: expected the end within 60 seconds, found 1 rows and no end", "deadline", { svi_row(1) }, "nil" },
  "a call whose turn did not come in time")
failure = { code = "refused", message = "a sentence about it" }
given({ svi(1) }, record.rows, { "svi", nil, { seconds = 60 } }, { "nil", "a sentence about it", "refused",
  { svi_row(1) }, "nil" }, "another end of a call stays what it is")
failure = nil
given({ svi(1), svi(2, 1) }, record.rows, { "svi", nil, { seconds = 60 } },
  { { svi_row(1) }, "res", svi_row(2, 1) })
given({ svi(1) }, record.rows, { "svi", nil, { next = function()
  return 7
end } }, { "nil", "record.rows: options.next: expected a table of fields for the next request, found 7", "bad_type",
  { svi_row(1) }, "nil" })
given({}, record.rows, { "telnet" }, { "nil", 'telnet: expected get or set, found "getn"', "no_operation", {} })
given({}, record.rows, { "sv" },
  { "nil", 'librpc: expected the name of a table (did you mean svi?), found "sv"', "unknown_api", {} })
given({}, record.rows, { "svi", 5 },
  { "nil", "oltmib_svi_getn_1: expected a table of fields, found 5", "bad_type", {} })
for _, row in ipairs {
  { 5, "record.rows: options: expected a table, found 5", "bad_type" },
  { { limt = 5 }, "record.rows: options: expected one of call_seconds, done, each, ends, limit, next, seconds (did "
    .. "you mean limit?), "
    .. 'found "limt"', "unknown_option" },
  { { limit = "5" }, 'record.rows: options.limit: expected a number from 0, found "5"', "bad_type" },
  { { limit = -1 }, "record.rows: options.limit: expected a number from 0, found -1", "bad_type" },
  { { limit = 0 / 0 }, "record.rows: options.limit: expected a number from 0, found " .. tostring(0 / 0), "bad_type" },
  { { done = true }, "record.rows: options.done: expected a function, found true", "bad_type" },
  { { ends = 1 }, "record.rows: options.ends: expected a table, found 1", "bad_type" },
} do
  given({}, record.rows, { "svi", nil, row[1] }, { "nil", row[2], row[3], {} })
end

-- 100,000 rows, and not one more. Not under valgrind, which takes minutes to find that
-- nothing of the library runs here.
if not os.getenv "LIBRPC_TEST_UNDER" then
  local asked = 0
  package.loaded["librpc"].callapi = function()
    asked = asked + 1
    return svi(asked)
  end
  local rows, message, code, kept, last = record.rows "svi"
  check.equal("more rows than the limit", { tostring(rows), message, code, #kept, last.field1 },
    { "nil", "oltmib_svi_getn_1: expected at most 100000 rows, found more", "too_many_rows", 100000, 100001 })
end
package.loaded["librpc"].callapi = function(name, argument)
  calls[#calls + 1] = name .. " " .. argument
  return table.remove(answers, 1)
end

-- record.check: every wrong field at once, with the limits as data.
check.row(record.check, { "oltmib_svi_set_1", { field1 = 5, name = "a" } }, { {} })
check.row(record.check, { "oltmib_svi_set_1", { field1 = "x", name = ("y"):rep(32), field3 = "a&b", nam = 1 } }, { {
  field1 = { code = "bad_number", message = 'oltmib_svi_set_1: field1: expected a whole number, found "x"',
    limits = { least = -2147483648, most = 2147483647 } },
  name = { code = "too_long", message = "oltmib_svi_set_1: name: expected at most 31 characters, found 32: \""
    .. ("y"):rep(32) .. '"', limits = { longest = 31, characters = "&" } },
  field3 = { code = "separator", message = "oltmib_svi_set_1: field3: expected a text without '&', which separates "
    .. 'fields, found "a&b"', limits = { longest = 19, characters = "&" } },
  nam = { code = "unknown_field", message = "oltmib_svi_set_1: expected one of its fields (did you mean name?), found "
    .. '"nam"', limits = {} },
} })
local function limits_of(api, field)
  return record.check(api, { [field] = {} })[field].limits
end
check.equal("limits of an unsigned", limits_of("oltmib_mbainststatis_set_1", "count2"),
  { least = 0, most = 4294967295 })
check.equal("limits of a list", limits_of("oltmib_qosifcfg_set_1", "list1"),
  { items = 8, least = -2147483648, most = 2147483647, longest = 255 })
check.equal("limits of a MAC", limits_of("oltmib_fdb_set_1", "mac"), {})
check.equal("limits of a text between other separators", limits_of("oltmib_lldpifnei_get_1", "text1"),
  { longest = 63, characters = "&$" })
check.equal("limits of bytes in digits",
  record.check("oltmib_mstp_ifstate_getn_1", { bytes1 = "x" }).bytes1.limits, { longest = 8 })
check.equal("a form with an empty text",
  record.check("oltmib_lldpifnei_get_1", { value1 = 1, oper = 5 }).text1.code, "empty_text")
check.equal("a field that is not carried",
  record.check("oltmib_portstat_get_1", { counter9 = 5 }).counter9.code, "read_only")
check.row(record.check, { "oltmib_nothing", {} },
  { "nil", 'librpc: expected the name of an API, found "oltmib_nothing"', "unknown_api" })
check.row(record.check, { "oltmib_svi_set_1", 5 },
  { "nil", "oltmib_svi_set_1: expected a table of fields, found 5", "bad_type" })
check.row(record.carried, { "oltmib_svi_set_1", 5 }, { "nil", "oltmib_svi_set_1: expected a row, found 5", "bad_type" })

-- Of several wrong fields encode tells the first of the record.
check.row(record.encode, { "oltmib_svi_set_1", { field3 = "a&b", field1 = "x" } },
  { "nil", 'oltmib_svi_set_1: field1: expected a whole number, found "x"', "bad_number" })
check.row(record.encode, { "oltmib_svi_set_1", { field1 = "x", zzzzzz = 1 } }, { "nil",
  'oltmib_svi_set_1: expected one of field1, name, field3, text, oper, res, found "zzzzzz"', "unknown_field" })

-- Messages count characters, escape once and stay short.
check.row(record.encode, { "oltmib_svi_set_1", { field3 = ("ä"):rep(12) } }, { "nil",
  'oltmib_svi_set_1: field3: expected at most 19 bytes, found 24 bytes in 12 characters: "ääääääääääää"', "too_long" })
check.row(record.encode, { "oltmib_svi_set_1", { field1 = '"\\\n\195ä' } },
  { "nil", [[oltmib_svi_set_1: field1: expected a whole number, found "\"\\\n\xc3ä"]], "bad_number" })
check.row(record.encode, { "oltmib_svi_set_1", { field1 = ("ä"):rep(41) } }, { "nil",
  'oltmib_svi_set_1: field1: expected a whole number, found "' .. ("ä"):rep(40) .. '"... (41 characters)',
  "bad_number" })
local long = ("x"):rep(8000)
check.row(record.encode, { long }, { "nil", 'librpc: expected the name of an API, found "' .. ("x"):rep(40)
  .. '"... (8000 characters)', "unknown_api" })
check.equal("a long name resembles none", record.nearest(("portinfo"):rep(3), { "portinfo" }), nil)
local steps = 0
debug.sethook(function()
  steps = steps + 1
end, "", 1000)
record.find(long, "get")
record.encode("oltmib_svi_set_1", { [long] = 1 })
debug.sethook()
check.equal("and no time is spent on it", steps < 200, true)

-- What record promises to refuse.
for _, row in ipairs {
  { "oltmib_fdb_set_1", "mac", { 0, 30, 128, 170, 0 }, "bad_mac" },
  { "oltmib_fdb_set_1", "mac", { 0, 30, 128, 170, 0, 255, 1 }, "bad_mac" },
  { "oltmib_fdb_set_1", "mac", { 0, 30, 128, 170, 0, -1 }, "bad_mac" },
  { "oltmib_fdb_set_1", "mac", { 0, 30, 128, 170, 0, 1.5 }, "bad_mac" },
  { "oltmib_devinfo_set_1", "mac", { 65, 66, 67, 68, 69, 70, 71 }, "bad_type" },
  { "oltmib_mstp_ifstate_getn_1", "bytes1", "0g", "bad_hex" },
  { "oltmib_mstp_ifstate_getn_1", "bytes1", { 1, 256 }, "bad_hex" },
  { "oltmib_qosifcfg_set_1", "list1", { 1, 2, 3, 4, 5, 6, 7, 2147483648 }, "out_of_range" },
  { "oltmib_qosifcfg_set_1", "list1", { 1, 2, 3, 4, 5, 6, 7, -2147483649 }, "out_of_range" },
  { "oltmib_qosifcfg_set_1", "list1", { 1, 2, 3, 4, 5, 6, 7, 8, 9 }, "bad_list" },
  { "oltmib_dscp2queue_set_1", "map", ("1,"):rep(63) .. "300", "out_of_range" },
  { "oltmib_svi_set_1", "field1", "1e5", "bad_number" },
  { "oltmib_svi_set_1", "field1", "0x10", "bad_number" },
  { "oltmib_svi_set_1", "field1", math.huge, "out_of_range" },
  { "oltmib_ntp_set_1", "real1", math.huge, "bad_number" },
  { "oltmib_ntp_set_1", "real1", -math.huge, "bad_number" },
  { "oltmib_ntp_set_1", "real1", 0 / 0, "bad_number" },
  { "oltmib_ntp_set_1", "real1", "infinity", "bad_number" },
  { "oltmib_ntp_set_1", "real1", "nan", "bad_number" },
  { "oltmib_ntp_set_1", "real1", "1e999", "bad_number" },
  { "oltmib_ntp_set_1", "real1", "0x10", "bad_number" },
  { "oltmib_ntp_set_1", "real1", " 1.5", "bad_number" },
} do
  check.equal(row[1] .. " refuses " .. check.show(row[3]),
    (select(3, record.encode(row[1], { [row[2]] = row[3] }))), row[4])
end
for _, row in ipairs {
  { "oltmib_svi_get_1", "2147483648&a&b&&0&0", "an int beyond 32 bits" },
  { "oltmib_svi_get_1", "-2147483649&a&b&&0&0", "an int beyond 32 bits" },
  { "oltmib_svi_get_1", "1e5&a&b&&0&0", "an int with an exponent" },
  { "oltmib_mbaserialstatis_get_1", "1&4294967296&0&0&&0&0", "an unsigned beyond 32 bits" },
  { "oltmib_mbaserialstatis_get_1", "1&-2147483649&0&0&&0&0", "an unsigned printed signed beyond 32 bits" },
  { "oltmib_mbaserialstatis_get_1", "1&1e5&0&0&&0&0", "an unsigned with an exponent" },
  { "oltmib_portrate_get_1", "1&2&ge1&1e5&0&0&0&0&0&&0&0", "a counter with an exponent" },
  { "oltmib_portrate_get_1", "1&2&ge1&&0&0&0&0&0&&0&0", "a counter without digits" },
  { "oltmib_mstp_ifstate_get_1", "0&3&a&0&0&0&0g&&&&0&0", "a letter that is no hexadecimal digit" },
  { "oltmib_mstp_ifstate_get_1", "0&3&a&0&0&0&" .. ("00"):rep(9) .. "&&&&0&0", "bytes beyond their array" },
  { "oltmib_fdb_get_1", "00-1E-80-AA-00-0G&1&a&0&&0&0", "a letter in a MAC address" },
  { "oltmib_svi_get_1", "1&" .. ("x"):rep(33) .. "&b&&0&0", "a text longer than its array" },
  { "oltmib_queueweight_get_1", "1,2,3,4,5,6,7&&0&0", "a list too short" },
  { "oltmib_queueweight_get_1", "1,2,3,4,5,6,7,8,9&&0&0", "a list too long" },
  { "oltmib_dscp2queue_get_1", ("1,"):rep(63) .. "300&&0&0", "a list's number out of range" },
  { "oltmib_ntp_get_1", time:format("inf", "0.00"), "an infinity" },
  { "oltmib_ntp_get_1", time:format("0.00", "-nan"), "a nan" },
  { "oltmib_ntp_get_1", time:format("1e999", "0.00"), "a real beyond all" },
  { "oltmib_ntp_get_1", time:format("0x1p4", "0.00"), "a real in hexadecimal digits" },
  { "oltmib_mgmtvlan_set_1", "0&1&&&0&&&&0&0", "a set's tail that is not blank" },
} do
  check.equal(row[3] .. " in a reply", (select(3, record.decode(row[1], row[2]))), "bad_text")
end
check.equal("a text that fills its array", record.decode("oltmib_svi_get_1", "1&" .. ("x"):rep(32) .. "&b&&0&0").name,
  ("x"):rep(32))

-- A real's argument reads with either point, and loses nothing.
for given_text, sent in pairs { ["2,75"] = "2.75", ["-2.75"] = "-2.75", ["1e-3"] = "0.001" } do
  check.equal("a real as " .. given_text,
    tonumber(((record.encode("oltmib_ntp_set_1", { real1 = given_text }):gsub("&", "")))), tonumber(sent))
end
for _, number in ipairs { 0.1, 1 / 3, 4503599627370497.5, 1.7976931348623157e308, 5e-324 } do
  check.equal("a real of all its digits",
    tonumber(((record.encode("oltmib_ntp_set_1", { real1 = number }):gsub("&", "")))) == number, true)
end

-- A daemon's result below 0 is no row either.
given({ svi(20, -1) }, record.get, { "svi", { field1 = 20 } },
  { "nil", "oltmib_svi_get_1: res: expected 0, of a row that is there, found -1", "no_row", svi_row(20, -1) })
given({ svi(20, -1) }, record.change, { "svi", { field1 = 20 }, { name = "a" } },
  { "nil", "oltmib_svi_get_1: res: expected 0, of a row that is there, found -1", "no_row", svi_row(20, -1) })
given({ svi(1), svi(20, -1) }, record.rows, { "svi" }, { { svi_row(1) }, "res", svi_row(20, -1) })
given({ svi(1), svi(20, -1) }, record.rows, { "svi", nil, { ends = { 1 } } }, { "nil",
  "oltmib_svi_getn_1: res: expected 0, or what stands for the end, found -1", "daemon_status", { svi_row(1) },
  svi_row(20, -1) })

-- Keys, ends and what is exact, as the names tell.
with_names [[ mstp_if = { key = { "value1", "value2" }, value2 = { name = "port" } }, devinfo = { key = {} },
  ["*"] = { ends = { 1 } }, ntp = { real1 = { exact = true }, real2 = { exact = true } },
  account = { key = { "text40" }, text40 = { name = "user" }, text64 = { name = "password", secret = true } },
  ioctlinfo = { int6 = { name = "res" }, int5 = { name = "oper" } } ]]
given({}, record.get, { "mstp_if", { value1 = 0 } },
  { "nil", "mstp_if: key: expected value1, port, found no port", "no_key" })
given({}, record.change, { "mstp_if", { value1 = 0, value3 = 5 } },
  { "nil", "mstp_if: key: expected value1, port, found no port", "no_key" })
given({ instance, "0" }, record.change, { "mstp_if", { value1 = 0, port = 3, value3 = 5 } },
  { 0, { value3 = { before = 20000, after = 5 } } })
check.equal("the key among the fields", calls[1], "oltmib_mstp_if_get_1 0&3")
given({ device:format("00-00-00-00-00-00") }, function(...)
  return record.get(...).hostname
end, { "devinfo" }, { "olt" }, "a walked table of one row")
given({ svi(20, 5) }, record.rows, { "svi" }, { "nil",
  "oltmib_svi_getn_1: res: expected 0, or what stands for the end, found 5", "daemon_status", {}, svi_row(20, 5) })
given({ svi(20, 1) }, record.rows, { "svi" }, { {}, "end", svi_row(20, 1) })
given({ time:format("0.13", "12.50"), "0" }, record.change, { "ntp", {}, { text64a = "c" } },
  { 0, { text64a = { before = "a", after = "c" } } }, "a real of which the daemon holds no more")
given({ "1&admin&15&hidden&&&1&&0&0", "0" }, record.change,
  { "account", { user = "admin" }, { password = "new" } },
  { 0, { password = { before = "hidden", after = "new" } } })
check.equal("key and change by names", calls,
  { "oltmib_account_get_1 &admin", "oltmib_account_set_1 1&admin&15&new&&&1" })
given({ "1&admin&15&hidden&&&1&&0&0", "0" }, record.change, { "account", { user = "admin", int1 = 2 } },
  { 0, { int1 = { before = 1, after = 2 } } })
check.equal("the first field is no key where the names say so", calls[2],
  "oltmib_account_set_1 2&admin&15&hidden&&&1")
check.row(record.encode, { "oltmib_account_set_1", { password = "a&b" } }, { "nil", "oltmib_account_set_1: password: "
  .. "expected a text without '&', which separates fields, found a secret", "separator" })
check.row(record.encode, { "oltmib_account_set_1", { text64 = "a&b" } }, { "nil", "oltmib_account_set_1: text64: "
  .. "expected a text without '&', which separates fields, found a secret", "separator" })
given({ "1&0&0&0&a&&0&0", "2&0&0&0&&&0&1" }, function(...)
  local found, why, ending = record.rows(...)
  return #found, why, ending.res
end, { "ioctlinfo" }, { 1, "end", 1 }, "a result that only the names tell")
check.equal("which is not sent back, nor is the operation", calls[2], "oltmib_ioctlinfo_getn_1 1&0&0&0&a")

with_names 'pminfo = { sid = { values = { [2] = "second" } } }'
given({ mirror(1), mirror(2) }, function(...)
  return record.get(...).sid
end, { "pminfo", { sid = "second" } }, { "second" }, "a row that is walked to, by the word of its key")

-- Every code that a function gave is one that the module explains.
for _, each in ipairs { "unknown_api", "no_operation", "unknown_field", "unknown_option", "same_field", "read_only",
  "no_key", "no_row", "deadline", "daemon_status", "bad_names" } do
  check.equal(each, type(record.codes[each]), "string")
end

check.finish()

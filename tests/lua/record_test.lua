-- librpc.record without daemons: arguments, replies, rows, and every error. The
-- library's callapi is replaced by one that answers from a list.
local check = require "check"

local calls, answers, failure = {}, {}, nil
package.loaded["librpc"] = {
  callapi = function(name, argument)
    calls[#calls + 1] = name .. " " .. argument
    return table.remove(answers, 1)
  end,
}
package.loaded["librpc.status"] = {
  last = function()
    if failure then
      return failure, "a sentence about it"
    end
  end,
}
local record = require "librpc.record"

local vlan, fdb, ifstate = "oltmib_vlaninfo_set_1", "oltmib_fdb_set_1", "oltmib_mstp_ifstate_getn_1"
local lists, neighbour, devinfo = "oltmib_qosifcfg_set_1", "oltmib_lldpifnei_get_1", "oltmib_devinfo_set_1"
local traffic, ntp, statis = "oltmib_portstat_get_1", "oltmib_ntp_set_1", "oltmib_mbainststatis_set_1"
local optical, queue = "oltmib_opticaldetail_set_1", "oltmib_dscp2queue_set_1"

-- { API, fields }, the argument
for _, row in ipairs {
  { { vlan, nil }, "" },
  { { vlan, {} }, "" },
  { { vlan, { field1 = 7, field3 = "voice", res = 0 } }, "7&&voice&&&&&&0" },
  { { vlan, { field1 = "7", field2 = "-2147483648", field4 = "+2147483647" } }, "7&-2147483648&&2147483647" },
  { { vlan, { field3 = 12 } }, "&&12" },
  { { vlan, { field3 = ("x"):rep(32) } }, "&&" .. ("x"):rep(32) },
  { { vlan, { field3 = "per%cent, \255 and $" } }, "&&per%cent, \255 and $" },
  { { fdb, { mac = "00:1e:80:aa:00:ff" } }, "00-1E-80-AA-00-FF" },
  { { fdb, { mac = "001e.80aa.00ff" } }, "00-1E-80-AA-00-FF" },
  { { fdb, { mac = "001E80aa00ff" } }, "00-1E-80-AA-00-FF" },
  { { fdb, { mac = "00-1E-80-aa-00-ff" } }, "00-1E-80-AA-00-FF" },
  { { fdb, { mac = { 0, 30, 128, 170, 0, 255 } } }, "00-1E-80-AA-00-FF" },
  { { ifstate, { bytes1 = "00:11:FF", bytes2 = { 1, 2, 255 }, bytes3 = "0123456789abcdef" } },
    "&&&&&&0011ff&0102ff&0123456789abcdef" },
  { { ifstate, { bytes1 = "" } }, "" },
  { { optical, { alarm = ("ab"):rep(32) } }, ("&"):rep(16) .. ("ab"):rep(32) },
  { { lists, { list1 = { 1, 2, 3, 4, 5, 6, 7, -8 }, list2 = "8, 7,6,5,4,3,2,1" } },
    "&&1,2,3,4,5,6,7,-8&8,7,6,5,4,3,2,1" },
  { { ntp, { real1 = 2.5, real2 = "-0.125" } }, ("&"):rep(10) .. "2.5&-0.125" },
  { { ntp, { real1 = 1 / 3 } }, ("&"):rep(10) .. "0.33333333333333331" }, -- the double itself, no shorter one
  { { statis, { rx_bytes = 2147483647, count2 = 2147483648, count3 = "4294967295" } }, "&2147483647&-2147483648&-1" },
  { { devinfo, { mac = "ABCDE", int1 = 4294967295 } }, "&&ABCDE&&&&&-1" },
  { { devinfo, { mac = { 65, 66, 67, 0, 0, 0 } } }, "&&ABC" },
  { { neighbour, { value1 = 1 } }, "1" },
  { { neighbour, { text1 = "a", oper = "0", text2 = "b", text3 = "c" } }, "0&00-00-00-00-00-00&a&b&c&0" },
  { { "oltmib_cvlan_table_get_1", {} }, "" },
} do
  check.row(record.encode, row[1], { row[2] })
end

-- { API, fields }, the message, its code
local no_letters = "expected a whole number, found "
for _, row in ipairs {
  { { "oltmib_vlaninf_set_1" }, "librpc: expected the name of an API (did you mean oltmib_vlaninfo_set_1?), "
    .. 'found "oltmib_vlaninf_set_1"', "unknown_api" },
  { { "nothing like it" }, 'librpc: expected the name of an API, found "nothing like it"', "unknown_api" },
  { { 7 }, "librpc: expected the name of an API, found 7", "unknown_api" },
  { { vlan, "7" }, 'oltmib_vlaninfo_set_1: expected a table of fields, found "7"', "bad_type" },
  { { vlan, { feild3 = 1 } }, "oltmib_vlaninfo_set_1: expected one of its fields (did you mean field3?), "
    .. 'found "feild3"', "unknown_field" },
  { { fdb, { something = 1 } }, "oltmib_fdb_set_1: expected one of mac, field2, field3, field4, text, oper, res, "
    .. 'found "something"', "unknown_field" },
  { { fdb, { "x" } }, "oltmib_fdb_set_1: expected one of mac, field2, field3, field4, text, oper, res, found 1",
    "unknown_field" },
  { { "oltmib_cvlan_table_get_1", { zzzzzz = 1 } },
    "oltmib_cvlan_table_get_1: expected no field, because it takes none, "
    .. 'found "zzzzzz"', "unknown_field" },
  { { vlan, { field1 = "7a" } }, "oltmib_vlaninfo_set_1: field1: " .. no_letters .. '"7a"', "bad_number" },
  { { vlan, { field1 = "1e5" } }, "oltmib_vlaninfo_set_1: field1: " .. no_letters .. '"1e5"', "bad_number" },
  { { vlan, { field1 = "0x10" } }, "oltmib_vlaninfo_set_1: field1: " .. no_letters .. '"0x10"', "bad_number" },
  { { vlan, { field1 = "" } }, "oltmib_vlaninfo_set_1: field1: " .. no_letters .. '""', "bad_number" },
  { { vlan, { field1 = 7.5 } }, "oltmib_vlaninfo_set_1: field1: " .. no_letters .. "7.5", "bad_number" },
  { { vlan, { field1 = true } }, "oltmib_vlaninfo_set_1: field1: " .. no_letters .. "true", "bad_number" },
  { { vlan, { field1 = "2147483648" } }, "oltmib_vlaninfo_set_1: field1: expected a number from -2147483648 to "
    .. '2147483647, found "2147483648"', "out_of_range" },
  { { vlan, { field1 = "99999999999999999999999" } }, "oltmib_vlaninfo_set_1: field1: expected a number from "
    .. '-2147483648 to 2147483647, found "99999999999999999999999"', "out_of_range" },
  { { statis, { count2 = -1 } }, "oltmib_mbainststatis_set_1: count2: expected a number from 0 to 4294967295, found -1",
    "out_of_range" },
  { { vlan, { field3 = "a&b" } }, "oltmib_vlaninfo_set_1: field3: expected a text without '&', which separates fields, "
    .. 'found "a&b"', "separator" },
  { { neighbour, { text1 = "a$b" } }, "oltmib_lldpifnei_get_1: text1: expected a text without '$', which separates "
    .. 'fields, found "a$b"', "separator" },
  { { vlan, { field3 = "a\0b" } }, 'oltmib_vlaninfo_set_1: field3: expected a text without zero bytes, found "a\\x00b"',
    "zero_byte" },
  { { vlan, { field3 = ("x"):rep(33) } }, 'oltmib_vlaninfo_set_1: field3: expected at most 32 characters, found 33: "'
    .. ("x"):rep(33) .. '"', "too_long" },
  { { vlan, { field3 = ("aü"):rep(20) } }, "oltmib_vlaninfo_set_1: field3: expected at most 32 bytes, found 60 bytes "
    .. 'in 40 characters: "' .. ("aü"):rep(20) .. '"', "too_long" },
  { { vlan, { field3 = ("aü"):rep(21) } }, "oltmib_vlaninfo_set_1: field3: expected at most 32 bytes, found 63 bytes "
    .. 'in 42 characters: "' .. ("aü"):rep(20) .. '"...', "too_long" },
  { { vlan, { field3 = {} } }, "oltmib_vlaninfo_set_1: field3: expected a text, found a table", "bad_type" },
  { { fdb, { mac = "00:1e:80:aa:00" } }, "oltmib_fdb_set_1: mac: expected a MAC address such as 00-11-22-AA-BB-CC, "
    .. 'found "00:1e:80:aa:00"', "bad_mac" },
  { { fdb, { mac = "00:1e-80:aa:00:ff" } }, "oltmib_fdb_set_1: mac: expected a MAC address such as "
    .. '00-11-22-AA-BB-CC, found "00:1e-80:aa:00:ff"', "bad_mac" },
  { { fdb, { mac = { 1, 2, 3, 4, 5, 256 } } }, "oltmib_fdb_set_1: mac: expected a MAC address such as "
    .. "00-11-22-AA-BB-CC, found a table", "bad_mac" },
  { { fdb, { mac = { 0, 30, 128, 170, 0 } } }, "oltmib_fdb_set_1: mac: expected a MAC address such as "
    .. "00-11-22-AA-BB-CC, found a table", "bad_mac" },
  { { ifstate, { bytes1 = "123" } },
    "oltmib_mstp_ifstate_getn_1: bytes1: expected bytes in hexadecimal digits, such as "
    .. '00ff10, found "123"', "bad_hex" },
  { { ifstate, { bytes1 = ("00"):rep(9) } }, "oltmib_mstp_ifstate_getn_1: bytes1: expected at most 8 bytes, "
    .. "found 9 bytes", "too_long" },
  { { lists, { list1 = "1,2,3" } }, "oltmib_qosifcfg_set_1: list1: expected a list of 8 numbers, found 3 items",
    "bad_list" },
  { { lists, { list1 = 5 } }, "oltmib_qosifcfg_set_1: list1: expected a list of 8 numbers, found 5", "bad_list" },
  { { lists, { list1 = "1,2,3,x,5,6,7,8" } },
    'oltmib_qosifcfg_set_1: list1: expected a whole number as item 4, found "x"',
    "bad_number" },
  { { lists, { list1 = { 1, 2, 3, 4, 5, 6, 7, 2147483648 } } }, "oltmib_qosifcfg_set_1: list1: expected a number from "
    .. "-2147483648 to 2147483647 as item 8, found 2147483648", "out_of_range" },
  { { ntp, { real1 = 1 / 0 } }, "oltmib_ntp_set_1: real1: expected a number, found " .. tostring(1 / 0), "bad_number" },
  { { ntp, { real1 = "1e999" } }, 'oltmib_ntp_set_1: real1: expected a number, found "1e999"', "bad_number" },
  { { ntp, { real1 = "1.2.3" } }, 'oltmib_ntp_set_1: real1: expected a number, found "1.2.3"', "bad_number" },
  { { ntp, { real1 = 0 / 0 } }, "oltmib_ntp_set_1: real1: expected a number, found " .. tostring(0 / 0), "bad_number" },
  { { ntp, { real1 = "inf" } }, 'oltmib_ntp_set_1: real1: expected a number, found "inf"', "bad_number" },
  { { traffic, { counter9 = 5 } }, "oltmib_portstat_get_1: counter9: expected no value, because the argument does not "
    .. "carry this field, found 5", "read_only" },
  { { "oltmib_acl_get_1", { count = 5 } }, "oltmib_acl_get_1: count: expected no value, because the argument does not "
    .. "carry this field, found 5", "read_only" },
  { { devinfo, { mac = "00-1E-80-4C-00-01" } }, 'oltmib_devinfo_set_1: mac: expected at most 5 characters, found 17: '
    .. '"00-1E-80-4C-00-01"', "too_long" },
  { { devinfo, { mac = { 65, 0, 66 } } },
    'oltmib_devinfo_set_1: mac: expected a text without zero bytes, found a table',
    "zero_byte" },
  { { neighbour, { value1 = 1, oper = 5 } },
    "oltmib_lldpifnei_get_1: text1: expected a text that is not empty, because "
    .. 'the fields behind it would move up, found ""', "empty_text" },
} do
  check.row(record.encode, row[1], { "nil", row[2], row[3] })
end

-- 64 numbers of a byte each: 255 characters fit, one more does not.
local most, longest = {}, {}
for i = 1, 64 do
  most[i] = 100
  longest[i] = -100
end
check.equal("a list of 255 characters", #(record.encode(queue, { map = most })), 255)
if require("librpc.schema").api(queue).input[1].least < 0 then
  check.row(record.encode, { queue, { map = longest } }, { "nil", "oltmib_dscp2queue_set_1: map: expected a list of at "
    .. "most 255 characters, found 319 characters", "too_long" })
  most[64] = -100
  check.row(record.encode, { queue, { map = most } }, { "nil", "oltmib_dscp2queue_set_1: map: expected a list of at "
    .. "most 255 characters, found 256 characters", "too_long" })
end

local function blank(name)
  return ("&"):rep(#require("librpc.schema").api(name).output - 1)
end

-- { API, reply's text }, the row or status
for _, row in ipairs {
  { { "oltmib_vlaninfo_get_1", "7&-1&voice&0&ge1,ge2&&text&0&1" },
    { field1 = 7, field2 = -1, field3 = "voice", field4 = 0, field5 = "ge1,ge2", field6 = "", text = "text", oper = 0,
      res = 1 } },
  { { "oltmib_portrate_get_1", "1&2&ge1&-1&9223372036854775807&0&0&0&-9223372036854775808&&0&0" },
    { ifx = 1, field2 = 2, name = "ge1", rate0 = "-1", rate1 = "9223372036854775807", rate2 = "0", rate3 = "0",
      rate4 = "0", rate5 = "-9223372036854775808", text = "", oper = 0, res = 0 } },
  { { "oltmib_mbainststatis_get_1", "a&-1&2147483647&-2147483648&0&0&0&0&0&&0&0" },
    { name = "a", rx_bytes = 4294967295, count2 = 2147483647, count3 = 2147483648, count4 = 0, count5 = 0, count6 = 0,
      count7 = 0, count8 = 0, text32 = "", oper = 0, res = 0 } },
  { { "oltmib_qosifcfg_get_1", "1&ge1&1,2,3,4,5,6,7,8&0,0,0,0,0,0,0,-1&&0&0" },
    { ifx = 1, name = "ge1", list1 = { 1, 2, 3, 4, 5, 6, 7, 8 }, list2 = { 0, 0, 0, 0, 0, 0, 0, -1 }, text = "",
      oper = 0, res = 0 } },
  { { "oltmib_lldpifnei_get_1", "1&$00-1E-80-CC-00-01&$a & b&$c$d&$&$0&$0" },
    { value1 = 1, mac1 = "00-1E-80-CC-00-01", text1 = "a & b", text2 = "c$d", text3 = "", oper = 0, res = 0 } },
  { { "oltmib_ntp_get_1", "a&b&c&d&1&2&3&e&f&4&2.50&-0.25&g&5&6" },
    { text40 = "a", text64a = "b", text64b = "c", text65 = "d", int1 = 1, int2 = 2, int3 = 3, text64c = "e",
      text64d = "f", int4 = 4, real1 = 2.5, real2 = -0.25, text32 = "g", oper = 5, res = 6 } },
  { { vlan, "0" }, 0 },
  { { vlan, "-1" }, -1 },
  { { "oltmib_mgmtvlan_set_1", "-3&0&&&0&&&&0&0" }, -3 },
  { { "oltmib_dyinggasp_set_1", "0&0&&0&0" }, 0 },
  { { "oltmib_mstp_reset_if_detect_1", "4" }, 4 },
  { { "oltmib_erpsstate_set_1", "&0&0&0&0&0&00-00-00-00-00-00&0&0&0&00-00-00-00-00-00&0&0&0&&0&0" }, 0 },
  { { "oltmib_erpsstate_set_1",
    "\255\255\255\255&0&0&0&0&0&00-00-00-00-00-00&0&0&0&00-00-00-00-00-00&0&0&0&&0&0" }, -1 },
  { { "oltmib_erpsstate_set_1", "&&&&&0&0&0&0&0&00-00-00-00-00-00&0&0&0&00-00-00-00-00-00&0&0&0&&0&0" }, 640034342 },
} do
  check.row(record.decode, row[1], { row[2] })
end
-- The largest status and the least, as the host's bytes.
local little = require("librpc.schema").api("oltmib_erpsstate_set_1").status.kind == "little"
for bytes, number in pairs { ["\127\255\255\255"] = 2147483647, ["\128\1\1\1"] = -2147417855 } do
  check.row(record.decode, { "oltmib_erpsstate_set_1", (little and bytes:reverse() or bytes)
    .. "&0&0&0&0&0&00-00-00-00-00-00&0&0&0&00-00-00-00-00-00&0&0&0&&0&0" }, { number })
end
check.row(record.decode, { "oltmib_erpsstate_set_1",
  "12345&0&0&0&0&0&00-00-00-00-00-00&0&0&0&00-00-00-00-00-00&0&0&0&&0&0" }, { 12345 }, "no four bytes but digits")
if little then
  check.row(record.decode,
    { "oltmib_erpsstate_set_1", "1&0&0&0&0&0&00-00-00-00-00-00&0&0&0&00-00-00-00-00-00&0&0&0&&0&0" }, { 49 })
end

-- { API, reply's text }, the message, its code
for _, row in ipairs {
  { { "oltmib_nothing", "" }, 'librpc: expected the name of an API, found "oltmib_nothing"', "unknown_api" },
  { { vlan, nil }, "oltmib_vlaninfo_set_1: expected a reply's text, found nil", "bad_type" },
  { { "oltmib_vlaninfo_get_1", ("x"):rep(1023) },
    "oltmib_vlaninfo_get_1: expected a reply of less than 1023 characters, "
    .. "found 1023, so that its end may be missing", "cut_reply" },
  { { "oltmib_lldpifnei_get_1", ("x"):rep(3999) }, "oltmib_lldpifnei_get_1: expected a reply of less than 3999 "
    .. "characters, found 3999, so that its end may be missing", "cut_reply" },
  { { "oltmib_vlaninfo_get_1", "7&1&a&b&0&&&&0&0" }, "oltmib_vlaninfo_get_1: expected a reply of 9 fields, "
    .. "found 10 (a text of the daemon's may hold '&')", "bad_text" },
  { { "oltmib_vlaninfo_get_1", "" }, "oltmib_vlaninfo_get_1: expected a reply of 9 fields, "
    .. "found 1 (a text of the daemon's may hold '&')", "bad_text" },
  { { "oltmib_vlaninfo_get_1", "x&1&a&0&&&&0&0" }, 'oltmib_vlaninfo_get_1: field1: expected a whole number, found "x"',
    "bad_text" },
  { { "oltmib_vlaninfo_get_1", "7&1&" .. ("x"):rep(34) .. "&0&&&&0&0" },
    "oltmib_vlaninfo_get_1: field3: expected at most 33 characters, "
    .. 'found "' .. ("x"):rep(34) .. '"', "bad_text" },
  { { "oltmib_ntp_get_1", "a&b&c&d&1&2&3&e&f&4&1e999&-0.25&g&5&6" },
    'oltmib_ntp_get_1: real1: expected a number, found "1e999"', "bad_text" },
  { { "oltmib_fdb_get_1", "00-1E&1&a&0&&0&0" }, 'oltmib_fdb_get_1: mac: expected a MAC address, found "00-1E"',
    "bad_text" },
  { { "oltmib_opticaldetail_get_1", ("0&"):rep(16):gsub("0", "1", 1) .. "123" .. ("&"):rep(9) .. "0" },
    'oltmib_opticaldetail_get_1: alarm: expected at most 32 bytes in hexadecimal digits, found "123"', "bad_text" },
  { { vlan, "done" }, 'oltmib_vlaninfo_set_1: expected a status, found "done"', "bad_text" },
  { { "oltmib_mgmtvlan_set_1", "0&0" }, 'oltmib_mgmtvlan_set_1: expected a status, found "0&0"', "bad_text" },
} do
  check.row(record.decode, row[1], { "nil", row[2], row[3] })
end
check.equal("a reply of 1022 characters is whole",
  type(record.decode("oltmib_vlaninfo_get_1", "7&1&a&0&" .. ("x"):rep(512) .. "&" .. ("y"):rep(493)
    .. "&&0&0")), "table")
check.equal("as many bytes as there is room for",
  record.decode("oltmib_opticaldetail_get_1", "0&&0&&&&" .. ("0&"):rep(8) .. "&0&"
  .. ("f0"):rep(32) .. "&&&&&&&&0&0").alarm, ("f0"):rep(32))
check.equal("blank", #blank("oltmib_vlaninfo_get_1"), 8)

-- record.call
answers = { "0" }
check.row(record.call, { vlan, { field1 = 7 } }, { 0 })
check.equal("what was called", calls, { "oltmib_vlaninfo_set_1 7" })
failure = "timed_out"
check.row(record.call, { vlan, { field1 = 7 } }, { "nil", "a sentence about it", "timed_out" })
failure, calls = nil, {}
check.row(record.call, { vlan, { field1 = "x" } },
  { "nil", 'oltmib_vlaninfo_set_1: field1: expected a whole number, found "x"', "bad_number" })
check.equal("a wrong field is not sent", calls, {})
check.row(record.call, { vlan, { field1 = 7 }, { call_second = 1 } }, { "nil",
  'record.call: options: expected one of call_seconds (did you mean call_seconds?), found "call_second"',
  "unknown_option" })
check.equal("nor is what an option misspells", calls, {})

-- record.find
check.equal("find", record.find("portinfo", "getn").name, "oltmib_portinfo_getn_1")
check.equal("find another verb", record.find("dyinggasp_support", "other").name, "oltmib_dyinggasp_support_1")
check.row(record.find, { "portrate", "set" }, { "nil", 'portrate: expected get or getn, found "set"', "no_operation" })
check.row(record.find, { "portinf", "get" },
  { "nil", 'librpc: expected the name of a table (did you mean portinfo?), found "portinf"', "unknown_api" })

-- record.rows
local walk = "oltmib_svi_getn_1"
local function svi(number, result)
  return ("%d&vlan%d&192.0.2.%d&&0&%d"):format(number, number, number, result or 0)
end
local function row_of(number)
  return { field1 = number, name = "vlan" .. number, field3 = "192.0.2." .. number, text = "", oper = 0, res = 0 }
end
calls, answers = {}, { svi(1), svi(20), svi(20, 1) }
local function last_of(number)
  local row = row_of(number)
  row.res = 1
  return row
end
check.row(record.rows, { walk }, { { row_of(1), row_of(20) }, "res", last_of(20) })
check.equal("each row is the key of the next", calls,
  { walk .. " ", walk .. " 1&vlan1&192.0.2.1", walk .. " 20&vlan20&192.0.2.20" })
calls, answers = {}, { svi(20), svi(0, 1) }
check.row(record.rows, { walk, { field1 = 1, oper = 3 } }, { { row_of(20) }, "res", last_of(0) })
check.equal("the operation code goes along", calls, { walk .. " 1&&&&3", walk .. " 20&vlan20&192.0.2.20&&3" })
answers = { svi(1), svi(20, -1) }
check.equal("a result below 0 ends the rows", { select(2, record.rows(walk)) },
  { "res", { field1 = 20, name = "vlan20", field3 = "192.0.2.20", text = "", oper = 0, res = -1 } })
answers = { svi(1), svi(2), svi(1) }
check.row(record.rows, { walk }, { "nil",
  'oltmib_svi_getn_1: expected another row, found row "1&vlan1&192.0.2.1" again', "repeated_row",
  { row_of(1), row_of(2), row_of(1) }, "nil" }, "a daemon that begins again")
answers = { svi(1), svi(1) }
check.row(record.rows, { walk }, { "nil",
  'oltmib_svi_getn_1: expected another row, found row "1&vlan1&192.0.2.1" again', "repeated_row",
  { row_of(1), row_of(1) }, "nil" }, "a daemon that repeats a row")
answers = { svi(1), svi(2), svi(3) }
check.row(record.rows, { walk, nil, { limit = 2 } },
  { "nil", "oltmib_svi_getn_1: expected at most 2 rows, found more", "too_many_rows", { row_of(1), row_of(2) },
    row_of(3) })
answers = { svi(1) }
failure = "timed_out"
check.row(record.rows, { walk }, { "nil", "a sentence about it", "timed_out", { row_of(1) }, "nil" })
failure = nil
answers = { svi(1), svi(2), svi(3) }
check.row(record.rows, { walk, nil, { done = function(row)
  return row.field1 == 3
end } }, { { row_of(1), row_of(2) }, "end", row_of(3) })
calls, answers = {}, { svi(1), svi(2, 1) }
check.row(record.rows, { walk, nil, { next = function(row)
  return { field1 = row.field1 + 100 }
end } }, { { row_of(1) }, "res", last_of(2) })
check.equal("the next key is the caller's", calls, { walk .. " ", walk .. " 101" })
check.row(record.rows, { "oltmib_svi_get_1" },
  { "nil", 'oltmib_svi_get_1: expected a getn API, found "get"', "no_operation", {} })
check.row(record.rows, { "oltmib_ioctlinfo_getn_1" },
  { "nil", "oltmib_ioctlinfo_getn_1: expected a `done` option, because its rows have no `res`, found none",
    "no_end", {} })
-- Counters do not go back, and a neighbour's texts only as far as they can.
calls, answers = {}, { "1&1&ge1&1&2&3&4&5&6&7&8&9&10&&0&0", ("0&"):rep(15) .. "1" }
record.rows("oltmib_portstat_getn_1")
check.equal("counters do not go back", calls[2], "oltmib_portstat_getn_1 1&1&ge1")
calls, answers = {}, { "1&$00-1E-80-CC-00-01&$a&b&$c&$&$0&$0", "1&$00-00-00-00-00-00&$&$&$&$0&$1" }
record.rows("oltmib_lldpifnei_getn_1")
check.equal("a text that cannot go back ends the key", calls[2], "oltmib_lldpifnei_getn_1 1&00-1E-80-CC-00-01")

-- record.change
calls, answers = {}, { svi(20), "0" }
check.row(record.change, { "svi", { field1 = 20, field3 = "192.0.2.99", oper = 2 } }, { 0,
  { field3 = { before = "192.0.2.20", after = "192.0.2.99" }, oper = { before = 0, after = 2 } } })
check.equal("a change reads, then sends all", calls,
  { "oltmib_svi_get_1 20", "oltmib_svi_set_1 20&vlan20&192.0.2.99&&2" })
answers = { svi(20, 1) }
check.row(record.change, { "svi", { field1 = 20 } },
  { "nil", "oltmib_svi_get_1: res: expected 0, of a row that is there, found 1", "no_row", last_of(20) })
answers = { svi(20, -1) }
check.equal("a result below 0 is no row", select(2, record.get("svi", { field1 = 20 })),
  "oltmib_svi_get_1: res: expected 0, of a row that is there, found -1")
answers = { svi(21) }
check.row(record.change, { "svi", { field1 = 20 } },
  { "nil", "oltmib_svi_get_1: field1: expected the row 20, found 21", "other_row", row_of(21) })
answers = { "OLT&SN&00-1E-80-4C-00-01&1&2&3&0&0&olt&0" }
check.row(record.change, { "devinfo", { hostname = "olt-2" } }, { "nil", "oltmib_devinfo_set_1: mac: expected a value, "
  .. 'because the argument cannot carry the row\'s own, found "00-1E-80-4C-00-01"', "not_carried" })
calls, answers = {}, { "OLT&SN&00-1E-80-4C-00-01&1&2&3&0&4294967295&olt&0", "0" }
check.row(record.change, { "devinfo", { hostname = "olt-2", mac = "" } }, { 0, {
  hostname = { before = "olt", after = "olt-2" },
  mac = { before = "00-1E-80-4C-00-01", after = "00-00-00-00-00-00" },
} })
check.equal("a MAC that is left out on purpose", calls[2], "oltmib_devinfo_set_1 OLT&SN&&1&2&3&0&-1&olt-2")
answers = { "OLT&SN&00-1E-80-4C-00-01&1&2&3&0&0&olt&0", "0" }
check.row(record.change, { "devinfo", { mac = "ABC" } }, { 0, {
  mac = { before = "00-1E-80-4C-00-01", after = "41-42-43-00-00-00" },
} }, "a short text of a MAC's bytes ends in zeros")
check.row(record.change, { "vlanbitmapinfo", {} }, { "nil", 'vlanbitmapinfo: expected set, found "get"',
  "no_operation" })

-- record.difference
for _, row in ipairs {
  { { "5", "3" }, 2 },
  { { "3", "5" }, -2 },
  { { "18446744073709551615", "18446744073709551600" }, 15 },
  { { "4", "18446744073709551600" }, 20 },
  { { "18446744073709551600", "4" }, -20 },
  { { "9007199254740993", "1" }, 9007199254740992 },
  { { "10000000000", "9999999999" }, 1 },
  { { "-5", "5" }, -10 },
  { { "0", "9223372036854775808" }, -9223372036854775808 }, -- either way is as far
  { { "9223372036854775808", "0" }, -9223372036854775808 },
  { { "9223372036854775807", "-1" }, -9223372036854775808 },
  { { 7, 5 }, 2 },
} do
  check.row(record.difference, row[1], { row[2] })
end
check.row(record.difference, { "x", "1" },
  { "nil", 'record.difference: expected a counter\'s digits, found "x"', "bad_number" })

check.equal("nearest", record.nearest("prtinfo", { "portinfo", "portstat" }), "portinfo")
check.equal("two letters that changed places", { record.nearest("lits", { "list" }), record.nearest("gte", { "get" }),
  record.nearest("egt", { "get" }), record.nearest("tge", { "get" }) }, { "list", "get", "get" })
check.equal("twice as long is no misspelling", record.nearest("ab", { "a" }), nil)
check.equal("nothing near", record.nearest("zzz", { "portinfo" }), nil)

-- Every code that a function returned above is one that the module explains.
for _, code in ipairs { "unknown_api", "bad_text", "repeated_row", "not_carried", "no_end" } do
  check.equal(code, type(record.codes[code]), "string")
end

check.finish()

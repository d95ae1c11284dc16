-- librpc.schema: the shape of its tables, and APIs of every kind.
local check = require "check"
local golden = require "golden"
local schema = require "librpc.schema"

check.equal("modules are opened once", require "librpc.schema" == schema, true)

-- Services and APIs in the order of registration.
local services, name_of = {}, {}
for i, service in ipairs(schema.services) do
  services[i] = service.program .. " " .. service.name
end
local expected_services = {}
for i, row in ipairs(golden.list "services.txt") do
  expected_services[i] = row[1] .. " " .. row[2]
  name_of[row[1]] = row[2]
end
check.equal("services", services, expected_services)

local apis = golden.list "apis.txt"
check.equal("number of APIs", #schema.apis, #apis)
for i, row in ipairs(apis) do
  local api = schema.apis[i] or {}
  local program, name, procedure, request, reply = row[1], row[2], row[3], row[4], row[5]
  check.equal("API " .. i, { api.name, api.service, api.program, api.procedure, api.request, api.reply, api.operation },
    { name, name_of[program], tonumber(program), tonumber(procedure), request, reply,
      name:match("_(getn?)_1$") or name:match("_(set)_1$") or "other" })
end

local kinds = {}
for _, api in ipairs(schema.apis) do
  check.equal(api.name .. " is found by name", schema.api(api.name) == api, true)
  check.equal(api.name .. ": a set has no output", api.output == nil, api.reply == "int")
  for _, positions in ipairs { api.input, api.output or {} } do
    local seen = {}
    for _, position in ipairs(positions) do
      kinds[position.kind] = true
      check.equal(api.name .. ": one position of the name " .. position.name, seen[position.name], nil)
      seen[position.name] = true
    end
  end
end
check.equal("kinds", kinds, {
  int = true, unsigned = true, text = true, mac = true, hex = true, list = true, real = true, counter = true,
  bytes = true, skip = true,
})
local explained = {}
for kind, meaning in pairs(schema.kinds) do
  explained[kind] = type(meaning) == "string" and meaning ~= ""
end
check.equal("every kind is explained", explained, kinds)
check.equal("a list that there is not", { schema.fields, schema[1], schema[schema] }, {})
check.equal("an unknown API", schema.api("oltmib_nothing_get_1"), nil)
check.equal("a stub that is not registered", schema.api("oltmib_pminfo_get_1"), nil)
check.equal("a name that is no text", pcall(schema.api, {}), false)

-- "name:kind" or "name:kind[size]" of each position.
local function shown(positions)
  local items = {}
  for i, position in ipairs(positions or {}) do
    items[i] = position.name .. ":" .. position.kind .. (position.size and "[" .. position.size .. "]" or "")
  end
  return table.concat(items, " ")
end

local counted = "field4:text[32] field5:text[32] field6:text[32] field7:int field8:int field9:int field10:int "
  .. "field11:int field12:int field13:int field14:int field15:text[32] field16:int alarm:hex[32] field19:text[32] "
  .. "field20:text[32] field21:text[32] field22:text[32] field23:text[32] field24:text[32] field25:text[32] "
local counters = { 9, 6, 13, 27, 26, 29, 35, 37, 40, 42 }
local function counters_as(kind)
  local items = {}
  for i, number in ipairs(counters) do
    items[i] = "counter" .. number .. ":" .. kind
  end
  return table.concat(items, " ")
end
local mstp_ifstate = "value1:int value2:int text1:text[32] value3:int value4:int value5:int bytes1:hex[8] "
  .. "bytes2:hex[8] bytes3:hex[8] text2:text[32] oper:int res:int"

-- API, { service, program, procedure, operation, table, request, reply }, input, output
local rows = {
  { "oltmib_portstat_getn_1",
    { "nsminfo", 50004, 11, "getn", "portstat", "oltmib_PortStatEntry", "oltmib_PortStatEntry" },
    "ifx:int field2:int name:text[32] " .. counters_as("skip") .. " text:text[32] oper:int res:int",
    "ifx:int field2:int name:text[32] " .. counters_as("counter") .. " text:text[32] oper:int res:int" },
  { "oltmib_portrate_get_1",
    { "nsminfo", 50004, 20, "get", "portrate", "oltmib_PortRateEntry", "oltmib_PortRateEntry" },
    "ifx:int field2:int name:text[32] rate0:skip rate1:skip rate2:skip rate3:skip rate4:skip rate5:skip "
      .. "text:text[32] oper:int res:int",
    "ifx:int field2:int name:text[32] rate0:counter rate1:counter rate2:counter rate3:counter rate4:counter "
      .. "rate5:counter text:text[32] oper:int res:int" },
  { "oltmib_devinfo_get_1",
    { "devinfo", 50002, 1, "get", "devinfo", "oltmib_DevInfoEntry", "oltmib_DevInfoEntry" },
    "text32a:text[32] text32b:text[32] mac:bytes[6] text32c:text[32] text32d:text[32] text32e:text[32] "
      .. "saveconfig:int int1:unsigned hostname:text[64] oper:int res:int",
    "text32a:text[32] text32b:text[32] mac:mac[6] text32c:text[32] text32d:text[32] text32e:text[32] "
      .. "saveconfig:int int1:unsigned hostname:text[64] res:int" },
  { "oltmib_dosif_set_1",
    { "nsminfo", 50004, 145, "set", "dosif", "oltmib_dosEntry", "int" },
    "ifx:int name:text[32] field3:int field4:int field5:int field6:int count1:skip count2:skip text:text[32] "
      .. "oper:int res:int", "" },
  { "oltmib_opticaldetail_get_1",
    { "nsminfo", 50004, 103, "get", "opticaldetail", "oltmib_opticaldetailEntry", "oltmib_opticaldetailEntry" },
    "ifx:int name:text[32] field3:int " .. counted .. "oper:int res:int",
    "ifx:int name:text[32] field3:int " .. counted .. "oper:int res:int" },
  { "oltmib_cvlan_table_get_1",
    { "nsminfo", 50004, 18, "get", "cvlan_table", "void", "oltmib_vlanbitmapEntry" },
    "", "bit:text[684] text:text[32] oper:int res:int" },
  { "oltmib_policy_get_1",
    { "nsminfo", 50004, 57, "get", "policy", "oltmib_policyEntry", "oltmib_policyEntry" },
    "name:text[70] class:text[70] field3:int field4:text[120] field5:int field6:int field7:int field8:int "
      .. "field9:int text:text[32] oper:int res:int",
    "name:text[70] class:text[70] field3:int field4:text[120] field5:int field6:int field7:int field8:int "
      .. "field9:int text:text[32] oper:int res:int" },
  { "oltmib_mstp_reset_if_detect_1",
    { "mstpinfo", 50007, 13, "other", "mstp_reset_if_detect", "oltmib_mstpifstateEntry", "int" },
    mstp_ifstate, "" },
  { "oltmib_dyinggasp_support_1",
    { "hslinfo", 50003, 81, "other", "dyinggasp_support", "oltmib_dyinggaspEntry", "oltmib_dyinggaspEntry" },
    "int1:int int2:int text32:text[32] oper:int res:int", "int1:int int2:int text32:text[32] oper:int res:int" },
  { "oltmib_lldpifnei_get_1",
    { "erpsinfo", 50005, 26, "get", "lldpifnei", "oltmib_lldpifneiEntry", "oltmib_lldpifneiEntry" },
    "value1:int mac1:mac[6] text1:text[64] text2:text[2000] text3:text[32] oper:int res:int",
    "value1:int mac1:mac[6] text1:text[64] text2:text[2000] text3:text[32] oper:int res:int" },
  { "oltmib_mbainststatis_get_1",
    { "hslinfo", 50003, 102, "get", "mbainststatis", "oltmib_mbainststatisEntry", "oltmib_mbainststatisEntry" },
    "name:text[32] rx_bytes:unsigned count2:unsigned count3:unsigned count4:unsigned count5:unsigned "
      .. "count6:unsigned count7:unsigned count8:unsigned text32:text[32] oper:int res:int",
    "name:text[32] rx_bytes:unsigned count2:unsigned count3:unsigned count4:unsigned count5:unsigned "
      .. "count6:unsigned count7:unsigned count8:unsigned text32:text[32] oper:int res:int" },
}

for _, row in ipairs(rows) do
  local name, facts, input, output = row[1], row[2], row[3], row[4]
  local api = schema.api(name)
  check.equal(name, api and { api.service, api.program, api.procedure, api.operation, api.table, api.request,
    api.reply }, facts)
  check.equal(name .. ": input", shown(api.input), input)
  check.equal(name .. ": output", shown(api.output), output)
end

-- ACL: the counter is the reply's alone.
check.equal("acl: positions in and out",
  { #schema.api("oltmib_acl_get_1").input, #schema.api("oltmib_acl_get_1").output }, { 21, 22 })

-- How texts are cut and joined, and how long a reply can be.
check.equal("portstat", { schema.api("oltmib_portstat_get_1").delimiters,
  schema.api("oltmib_portstat_get_1").separator, schema.api("oltmib_portstat_get_1").longest }, { "&", "&", 1023 })
check.equal("lldpifnei", { schema.api("oltmib_lldpifnei_get_1").delimiters,
  schema.api("oltmib_lldpifnei_get_1").separator, schema.api("oltmib_lldpifnei_get_1").longest },
  { "&$", "&$", 3999 })

-- Lists say how long their text and how large their numbers can be.
local list = schema.api("oltmib_qosifcfg_set_1").input[3]
check.equal("a list of ints", list,
  { name = "list1", kind = "list", size = 8, longest = 255, least = -2147483648, most = 2147483647 })
list = schema.api("oltmib_dscp2queue_get_1").input[1]
check.equal("a list of characters", { list.name, list.size, list.longest, list.most - list.least },
  { "map", 64, 255, 255 })

-- The three sets whose status stands where a record begins.
local low_first = string.dump(function() end):byte(7) == 1 or jit ~= nil
check.equal("mgmtvlan's status", schema.api("oltmib_mgmtvlan_set_1").status,
  { kind = "int", rest = "&0&&&0&&&&0&0" })
check.equal("dyinggasp's status", schema.api("oltmib_dyinggasp_set_1").status, { kind = "int", rest = "&0&&0&0" })
check.equal("erpsstate's status", schema.api("oltmib_erpsstate_set_1").status.rest,
  "&0&0&0&0&0&00-00-00-00-00-00&0&0&0&00-00-00-00-00-00&0&0&0&&0&0")
if _VERSION == "Lua 5.1" and not jit then
  check.equal("erpsstate's status's bytes", schema.api("oltmib_erpsstate_set_1").status.kind,
    low_first and "little" or "big")
end
check.equal("other sets have none", schema.api("oltmib_portinfo_set_1").status, nil)

check.finish()

-- Captures calls to the simulated device, one API of each service, and compares
-- what tshark prints with the Wireshark plug-in: the call's fields with the
-- argument, the reply's with what callapi returned. Run beside a device:
--     lua dissector_test.lua PLUGIN SCRATCH
local plugin, scratch = arg[1], arg[2]
require "librpc"

-- Fields in wire order, which is also the text's in these tables; ':mac',
-- ':real' where tshark writes a value otherwise than the library.
local calls = {
  { service = "devinfo", program = 50002, procedure = 1, api = "oltmib_devinfo_get_1", record = "DevInfoEntry",
   fields = "text32a text32b mac:raw text32c text32d text32e saveconfig int1 hostname oper res:reply",
   argument = "A1&B2&ABCDE&C3&D4&E5&6&7&olt-8&9" },
  { service = "hslinfo", program = 50003, procedure = 99, api = "oltmib_mbaserialstatis_get_1",
   record = "mbaserialstatisEntry", fields = "ifx err:unsigned count2:unsigned count3:unsigned text32 oper res",
   argument = "3&-1&2147483647&7&eight&9&-10" },
  { service = "nsminfo", program = 50004, procedure = 20, api = "oltmib_portrate_get_1", record = "PortRateEntry",
   fields = "ifx field2 name rate0 rate1 rate2 rate3 rate4 rate5 text oper res",
   argument = "2&-3&ge2&0&0&0&0&0&0&some text&5&6" },
  { service = "erpsinfo", program = 50005, procedure = 12, api = "oltmib_erpsstate_getn_1", record = "ErpsStateEntry",
   fields = "text1 value1 value2 value3 value4 value5 mac1:mac value6 value7 value8 mac2:mac value9 value10 value11 "
     .. "text2 oper res",
   argument = "ring&1&2&3&4&5&00-11-22-33-44-AA&6&7&8&FF-EE-DD-CC-BB-AA&9&10&11&t&12&13" },
  { service = "hostpdinfo", program = 50006, procedure = 16, api = "oltmib_ntp_get_1", record = "tmEntry",
   fields = "text40 text64a text64b text65 int1 int2 int3 text64c text64d int4 real1:real real2:real text32 "
     .. "oper res",
   argument = "a&b&c&d&1&2&3&e&f&4&1.25&-1000000.5&g&5&6" },
  { service = "mstpinfo", program = 50007, procedure = 13, api = "oltmib_mstp_reset_if_detect_1",
   record = "mstpifstateEntry",
   fields = "value1 value2 text1 value3 value4 value5 bytes1 bytes2 bytes3 text2 oper res",
   argument = "1&2&ge1&3&4&5&0001020304050607&8000f0ff10abcdef&ffffffffffffffff&t&6&7", set = true },
  { service = "igmpsnpinfo", program = 50008, procedure = 1, api = "oltmib_igmpsnp_get_1",
   record = "igspGlobalEntry", fields = "int1 int2 int3 text32 oper res", argument = "1&2&3&t&4&5" },
  { service = "nsmextinfo", program = 50009, procedure = 20, api = "oltmib_nsmauthmac_get_1",
   record = "nsmauthmacEntry", fields = "value1 mac1:mac value2 value3 value4 value5 text1 text2 oper res",
   argument = "4&0A-1B-2C-3D-4E-5F&5&6&7&8&nine&ten&11&12" },
  { service = "auth", program = 50010, procedure = 2, api = "oltmib_auth_global_set_1", record = "authGlobalEntry",
   fields = "config text32 oper res", argument = "-2147483648&with blanks, and \"signs\"&2&3", set = true },
  { service = "ribinfo", program = 50011, procedure = 1, api = "oltmib_route_get_1", record = "routeEntry",
   fields = "text64a text64b text32a int1 int2 text32b text32c oper res",
   argument = "192.0.2.0&255.255.255.0&198.51.100.1&1&2&ge1&t&3&4" },
  { service = "vrrpinfo", program = 50013, procedure = 5, api = "oltmib_vrrp_ssstate_getn_1",
   record = "vrrp_ssstateEntry", fields = "vrid value1 value2 role value3 value4 text1 oper res",
   argument = "1&2&3&4&5&6&seven&8&9" },
  { service = "sdsminfo", program = 50015, procedure = 3, api = "oltmib_sdsminfo_set_1", record = "sdsminfoEntry",
   fields = "text80 text512 int1 int2", argument = "key&" .. ("x"):rep(200) .. "&1&2", set = true },
  { service = "ipcminfo", program = 50016, procedure = 1, api = "oltmib_ioctlinfo_get_1", record = "ioctlEntry",
   fields = "int1 int2 int3 int4 text32a text32b int5 int6", argument = "1&2&3&4&five&six&7&8" },
  { service = "dhcpsnp", program = 50017, procedure = 1, api = "oltmib_dhcpsnp_get_1", record = "dhcpsnpEntry",
   fields = "text80 text512 int1 int2", argument = "key&value&1&2" },
  { service = "lpdet", program = 50018, procedure = 5, api = "oltmib_lpdet_portinfo_getn_1",
   record = "lpdetportinfoEntry",
   fields = "value1 text1 value2 text2 text3 text4 text5 value3 text6 oper res",
   argument = "0&a&1&b&c&d&e&2&f&3&4" },
}

local function fail(where, expected, found)
  io.stderr:write(("dissector: %s: expected %s, found %s\n"):format(where, expected, found))
  os.exit(1)
end

local function read_file(path)
  local file = io.open(path, "rb") or fail(path, "a file", "none")
  local text = file:read("*a")
  file:close()
  return text
end

local function split(text, separator)
  local parts = {}
  for part in (text .. separator):gmatch("(.-)%" .. separator) do
    parts[#parts + 1] = part
  end
  return parts
end

-- dumpcap ends by itself after a call and a reply for each API.
local function capture(run)
  local file, log = scratch .. "/capture.pcapng", scratch .. "/dumpcap.log"
  os.remove(file)
  os.remove(log)
  local dumpcap = io.popen(("exec timeout 30 dumpcap -q -i lo -f 'udp and not port 111' -c %d -w '%s' 2>'%s'"):format(
    2 * #calls, file, log))
  local waited = 0
  repeat
    os.execute("sleep 0.05")
    local said = io.open(log, "rb") and read_file(log) or ""
    waited = waited + 1
    if waited == 200 then
      fail("dumpcap", "a capture on lo (Debian: apt-get install tshark)", said)
    end
  until said:find("File: ", 1, true)
  run()
  dumpcap:read("*a")
  dumpcap:close()
  return file
end

-- The value that tshark prints for a position's text.
local function as_printed(text, how)
  if how == "mac" then
    return text:gsub("-", ":"):lower()
  elseif how == "raw" then -- characters copied into the bytes
    local bytes = text:gsub(".", function(c) return (":%02x"):format(c:byte()) end):sub(2)
    return bytes .. (":00"):rep(6 - #text)
  elseif how == "unsigned" then
    return ("%.0f"):format(tonumber(text) % 2 ^ 32)
  end
  return text
end

local function check_field(where, fields, name, how, text)
  local found = fields[name]
  local expected = as_printed(text, how)
  if found and (how == "mac" or how == "raw") then -- the maker's name stands before the address
    found = found:match("%((.-)%)$")
  end
  local same = found == expected
  if how == "real" then -- the library prints two decimals
    same = found and math.abs(tonumber(found) - tonumber(text)) < 0.006
  end
  if not same then
    fail(("%s: %s"):format(where, name), ("'%s'"):format(expected), ("'%s'"):format(tostring(found)))
  end
end

local function check_record(where, call, packet, text, is_reply)
  local values, at, count = split(text, "&"), 0, 0
  for _, item in ipairs(split(call.fields, " ")) do
    local name, how = item:match("^(%w+):?(%w*)$")
    count = count + 1
    local skipped = call.service == "devinfo" and name == (is_reply and "oper" or "res")
    if not skipped then
      at = at + 1
      -- a reply prints raw bytes as any other MAC address
      check_field(where, packet.fields, name, is_reply and how == "raw" and "mac" or how, values[at])
    end
  end
  if at ~= #values then
    fail(where, #values .. " values compared", at)
  end
  local printed = 0
  for _ in pairs(packet.fields) do
    printed = printed + 1
  end
  if printed ~= count then
    fail(where, count .. " fields", printed)
  end
end

local function check_header(where, packet, expected)
  for name, value in pairs(expected) do
    if packet.header[name] ~= value then
      fail(("%s: %s"):format(where, name), value, tostring(packet.header[name]))
    end
  end
end

-- tshark's text of our protocol as a list of { title, header, fields }.
local function read_packets(text)
  local packets = {}
  for line in text:gmatch("[^\n]+") do
    local title = line:match("^Device table call, (.*)$")
    local packet = packets[#packets]
    if title then
      packets[#packets + 1] = { title = title, header = {}, fields = {} }
    elseif packet and line:match("^        ") then
      local name, value = line:match("^        (%w+): (.*)$")
      if not name then
        fail(packet.title, "a field", line)
      end
      packet.fields[name] = value
    elseif packet and line:match("^    ") then
      local name, value = line:match("^    %[?([%w ]+): (.-)%]?$")
      packet.header[name or line] = value
    end
  end
  return packets
end

local replies = {}
local file = capture(function()
  for i, call in ipairs(calls) do
    replies[i] = librpc.callapi(call.api, call.argument) or fail(call.api, "a reply", "none")
  end
end)
local output = scratch .. "/tshark.txt"
os.execute(("tshark -2 -X lua_script:'%s' -r '%s' -Y librpc -O librpc >'%s' 2>'%s.errors'"):format(
  plugin, file, output, output))
local packets = read_packets(read_file(output))
if #packets ~= 2 * #calls then
  fail(output, 2 * #calls .. " calls and replies", #packets .. "\n" .. read_file(output .. ".errors"))
end

for i, call in ipairs(calls) do
  local asked, answered = packets[2 * i - 1], packets[2 * i]
  local where = call.api .. ", call"
  if asked.title ~= call.api .. " Call" or answered.title ~= call.api .. " Reply" then
    fail(where, call.api .. " Call and Reply", asked.title .. ", " .. answered.title)
  end
  check_header(where, asked, { Message = "Call (0)", Program = tostring(call.program), Service = call.service,
    Version = "1", Procedure = tostring(call.procedure), API = call.api, Record = "oltmib_" .. call.record,
    ["Reply in frame"] = tostring(2 * i) })
  check_record(where, call, asked, call.argument, false)

  where = call.api .. ", reply"
  check_header(where, answered, { Message = "Reply (1)", Program = tostring(call.program), Service = call.service,
    Procedure = tostring(call.procedure), API = call.api, ["Accept state"] = "Success (0)",
    ["Call in frame"] = tostring(2 * i - 1), XID = asked.header.XID })
  if call.set then
    check_header(where, answered, { Status = replies[i] })
  else
    check_header(where, answered, { Record = "oltmib_" .. call.record })
    check_record(where, call, answered, replies[i], true)
  end
end
-- The filters of the plug-in's README find something in what was captured, or are at least right.
local readme, filters = read_file(plugin:match("^(.*/)") .. "README.md"), 0
for filter in readme:gmatch("\n| `([^`]+)` |") do
  local found = os.execute(("tshark -X lua_script:'%s' -r '%s' -Y '%s' >'%s' 2>'%s.errors'"):format(
    plugin, file, filter, output, output))
  if found ~= 0 and found ~= true then
    fail(filter, "a filter", read_file(output .. ".errors"))
  end
  filters = filters + 1
end
if filters ~= 3 then
  fail("README.md", "three filters", filters)
end
print(("%d calls of %d services compared"):format(#calls, #calls))

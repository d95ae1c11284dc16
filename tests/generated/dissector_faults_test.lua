-- Gives the Wireshark plug-in datagrams that a healthy device does not send,
-- from a capture file that is written here byte by byte (RFC 5531), and compares
-- what tshark says of each. Needs no network:
--     lua dissector_faults_test.lua PLUGIN SCRATCH
local plugin, scratch = arg[1], arg[2]

local function fail(where, expected, found)
  io.stderr:write(("dissector: %s: expected %s, found %s\n"):format(where, expected, found))
  os.exit(1)
end

local function number(value, bytes)
  local text = ""
  for _ = 1, bytes do
    text = string.char(value % 256) .. text
    value = math.floor(value / 256)
  end
  return text
end

local function units(...)
  local text = ""
  for _, value in ipairs({ ... }) do
    text = text .. number(value, 4)
  end
  return text
end

-- One UDP datagram between two ports of the loopback address, as Ethernet has it.
local function frame(from, to, payload)
  local udp = number(from, 2) .. number(to, 2) .. number(8 + #payload, 2) .. number(0, 2) .. payload
  local ip = "\69\0" .. number(20 + #udp, 2) .. "\0\0\0\0\64\17\0\0\127\0\0\1\127\0\0\1"
  return ("\0"):rep(12) .. "\8\0" .. ip .. udp
end

local function call(xid, program, version, procedure, body)
  return units(xid, 0, 2, program, version, procedure, 0, 0, 0, 0) .. (body or "")
end

local function reply(xid, state, body)
  return units(xid, 1, 0, 0, 0, state) .. (body or "")
end

local client, daemon, dns = 700, 40001, 53
local row = units(7) .. units(0):rep(39) -- 40 units: vrid, five ints, 32 characters, two ints
local quoted = units(9) .. units(0):rep(5) .. units(0xFFFFFF80, 34, 9) .. units(0):rep(31)

-- Every datagram, and what tshark says of it: its Info column and its warnings.
-- Not one of ours: false.
local cases = {
  { "a set", client, daemon, call(1, 50013, 1, 6, row), "oltmib_vrrp_ssstate_set_1 Call, vrid 7" },
  { "its status", daemon, client, reply(1, 0, units(0xFFFFFFFB)), "oltmib_vrrp_ssstate_set_1 Reply, status -5" },
  { "its status again", daemon, client, reply(1, 0, units(0xFFFFFFFB)),
   "oltmib_vrrp_ssstate_set_1 Reply, status -5", "Another reply to the same call" },
  { "a call that ends early", client, daemon, call(2, 50013, 1, 4, row:sub(1, 100)),
   "oltmib_vrrp_ssstate_get_1 Call", "Body ends 60 bytes before its record" },
  { "a reply that ends early", daemon, client, reply(2, 0, row:sub(1, 156)),
   "oltmib_vrrp_ssstate_get_1 Reply", "Body ends 4 bytes before its record" },
  { "a call without a body", client, daemon, call(3, 50013, 1, 4), "oltmib_vrrp_ssstate_get_1 Call",
   "Body ends 160 bytes before its record" },
  { "a reply without a body", daemon, client, reply(3, 0), "oltmib_vrrp_ssstate_get_1 Reply",
   "Body ends 160 bytes before its record" },
  { "a call with more than its record", client, daemon, call(4, 50013, 1, 4, row .. units(1, 2)),
   "oltmib_vrrp_ssstate_get_1 Call, vrid 7", "8 bytes behind the record" },
  { "no such program", daemon, client, reply(4, 1), "oltmib_vrrp_ssstate_get_1 Reply, Program not available" },
  { "a call whose texts need quoting", client, daemon, call(5, 50013, 1, 4, quoted),
   "oltmib_vrrp_ssstate_get_1 Call, vrid 9", text = "\\x80\"\\x09" },
  { "a denied call", daemon, client, units(5, 1, 1, 1, 5),
   "oltmib_vrrp_ssstate_get_1 Reply, Authentication error", refusal = "||5" },
  { "a call to a daemon of other versions", client, daemon, call(17, 50013, 1, 4, row),
   "oltmib_vrrp_ssstate_get_1 Call, vrid 7" },
  { "its reply", daemon, client, reply(17, 2, units(2, 3)),
   "oltmib_vrrp_ssstate_get_1 Reply, Program version mismatch", refusal = "2|3|" },
  { "the same cut off", daemon, client, reply(17, 2, units(2)),
   "oltmib_vrrp_ssstate_get_1 Reply, Program version mismatch", "Another reply to the same call", refusal = "||" },
  { "a call to a daemon of another RPC", client, daemon, call(18, 50013, 1, 4, row),
   "oltmib_vrrp_ssstate_get_1 Call, vrid 7" },
  { "its reply", daemon, client, units(18, 1, 1, 0, 4, 6),
   "oltmib_vrrp_ssstate_get_1 Reply, RPC version mismatch", refusal = "4|6|" },
  { "a verifier with a body", client, daemon, units(6, 0, 2, 50013, 1, 4, 1, 6, 0, 0, 0, 0) .. row,
   "oltmib_vrrp_ssstate_get_1 Call, vrid 7" },
  { "a reply's verifier with a body", daemon, client, units(6, 1, 0, 0, 3, 0, 0) .. row,
   "oltmib_vrrp_ssstate_get_1 Reply, vrid 7" },
  { "a reply that ends in its header", daemon, client, units(6, 1, 0, 0), "oltmib_vrrp_ssstate_get_1 Reply",
   "Another reply to the same call,Reply ends in its header" },
  { "an unknown procedure", client, daemon, call(7, 50013, 1, 999, units(1)), "procedure 999 Call",
   "Unknown procedure or version" },
  { "another version", client, daemon, call(8, 50013, 2, 4, row), "procedure 4 Call",
   "Unknown procedure or version" },
  { "procedure 0", client, daemon, call(9, 50013, 1, 0), "null Call" },
  { "its reply", daemon, client, reply(9, 0), "null Reply" },
  { "a call without a request", client, daemon, call(10, 50004, 1, 18), "oltmib_cvlan_table_get_1 Call" },
  -- the other protocol has its say first, and warns
  { "a port of another protocol", dns, daemon, call(11, 50013, 1, 4, row), "oltmib_vrrp_ssstate_get_1 Call, vrid 7",
   others = true },
  { "a reply to it", daemon, dns, reply(11, 0, row), "oltmib_vrrp_ssstate_get_1 Reply, vrid 7", others = true },
  { "a reply to nobody", daemon, client, reply(12, 0, row), false },
  { "a reply from another port", daemon + 1, client, reply(1, 0, units(0)), false },
  { "another program", client, daemon, call(13, 50014, 1, 4, row), false },
  { "another program's neighbour", client, daemon, call(13, 49999, 1, 4, row), false },
  { "a header that ends early", client, daemon, call(14, 50013, 1, 4):sub(1, 39), false },
  { "a verifier beyond the datagram", client, daemon, units(15, 0, 2, 50013, 1, 4, 0, 4000, 0, 0), false },
  { "a verifier of four thousand million bytes", client, daemon,
   units(16, 0, 2, 50013, 1, 4, 0, 0xFFFFFFFF, 0, 0), false },
  { "an empty datagram", client, daemon, "", false },
  { "one byte", client, daemon, "\1", false },
}

local path = scratch .. "/faults.pcap"
local file = assert(io.open(path, "wb"))
file:write(units(0xA1B2C3D4), number(2, 2), number(4, 2), units(0, 0, 65535, 1))
for i, case in ipairs(cases) do
  local bytes = frame(case[2], case[3], case[4])
  file:write(units(i, 0, #bytes, #bytes), bytes)
end
file:close()

local output = scratch .. "/faults.txt"
local options = "-T fields -E separator='|' -E aggregator=, -e frame.number -e librpc.xid -e _ws.col.Info "
  .. "-e _ws.expert.message -e librpc.low -e librpc.high -e librpc.auth -e librpc.vrrp_ssstate.text1 "
  .. "-e librpc.vrrp_ssstateEntry.text1"
os.execute(("tshark -X lua_script:'%s' -r '%s' %s >'%s' 2>'%s.errors'"):format(plugin, path, options, output, output))

local seen = 0
for line in io.lines(output) do
  local at, xid, info, warnings, refusal, text, by_record =
    line:match("^(%d+)|(.-)|(.-)|(.-)|(.-|.-|.-)|(.-)|(.*)$")
  local case = cases[tonumber(at)]
  seen = seen + 1
  local where, expected = case[1], case[5]
  if (xid ~= "") ~= (expected ~= false) then
    fail(where, expected and "one of ours" or "none of ours", line)
  end
  if expected then
    if info ~= expected then
      fail(where, expected, info)
    end
    if not case.others and warnings ~= (case[6] or "") then
      fail(where, case[6] or "no warning", warnings)
    end
    if refusal ~= (case.refusal or "||") then
      fail(where, case.refusal or "no refusal", refusal)
    end
    if case.text and text ~= case.text then
      fail(where, case.text, text)
    end
    if text ~= by_record then
      fail(where, "the same by table and by record", text .. " and " .. by_record)
    end
  elseif warnings:find("Lua") then
    fail(where, "no error in the plug-in", warnings)
  end
end
if seen ~= #cases then
  fail(output, #cases .. " datagrams", seen .. ": " .. assert(io.open(output .. ".errors")):read("*a"))
end
print(("%d datagrams compared"):format(seen))

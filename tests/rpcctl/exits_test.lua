-- Exit statuses: every code has one, and each is seen.
local check = require "check"
local exits = require "rpcctl.exits"
local shell = require "shell"
local tool = require "tool"

-- What each code of the library ends with, as the manual's table says it
local expected = {
  [1] = "unknown_option two_sets bad_names out_of_memory no_client failed host_api closed",
  [2] = "unknown_field same_field read_only bad_type bad_number out_of_range bad_mac bad_hex bad_list too_long "
    .. "separator "
    .. "zero_byte empty_text no_key not_carried no_end",
  [3] = "unknown_api no_operation",
  [4] = "no_portmapper no_daemon refused",
  [5] = "deadline timed_out not_sent",
  [6] = "no_row row_exists other_row daemon_status",
  [7] = "cut_reply bad_text repeated_row too_many_rows rejected bad_reply",
  [130] = "interrupted",
}
local status_of = {}
for status, codes in pairs(expected) do
  for code in codes:gmatch("%S+") do
    status_of[code] = status
  end
end
for _, codes in ipairs { require("librpc.record").codes, require("librpc.status").codes } do
  for code in pairs(codes) do
    check.equal(code, exits.of(code), status_of[code])
    check.equal(code .. " is in the table", exits.codes[code] ~= nil, true)
    status_of[code] = status_of[code] or false
  end
end
local known = {}
for _, codes in ipairs { require("librpc.record").codes, require("librpc.status").codes } do
  for code in pairs(codes) do
    known[code] = true
  end
end
for code in pairs(status_of) do
  check.equal(code .. " is a code of the library", known[code], true)
end
for _, code in ipairs { "rejected", "bad_reply", "timed_out", "no_daemon", "no_portmapper", "no_row", "no_key",
  "not_carried" } do
  check.equal(code .. " says what to do", type(exits.advice(code, "")), "string")
end

-- The table of the statuses stands once: help, the manual page and the document have it
local help = tool.run "rpcctl help"
local function read(path)
  return assert(io.open(tool.source .. "/" .. path)):read("*a")
end
local page, document = read "docs/man/rpcctl.1", read "docs/rpcctl.md"
for _, status in ipairs(exits.statuses) do
  local words = help:gsub("\n +", " ")
  check.equal("help: " .. status.number, words:find((" %d +%s"):format(status.number, (status.meaning:gsub("%p",
    "%%%0")))) ~= nil, true)
  check.equal("manual: " .. status.number, page:find(("\n.B %d\n%s\n"):format(status.number, status.meaning), 1,
    true) ~= nil,
    true)
  check.equal("document: " .. status.number, document:find(("\n| %d | %s |\n"):format(status.number, status.meaning),
    1, true) ~= nil,
    true)
end

-- Each as it happens
local function ends(line, status)
  check.equal(line, select(3, tool.run(line .. " >/dev/null 2>&1")), status)
end
ends("rpcctl get devinfo", 0)
ends("rpcctl backup /run/none/a.txt svi", 1)
ends("LIBRPC_NAMES=/none rpcctl get devinfo", 1)
ends("rpcctl rows", 2)
ends("rpcctl rows svi x=1", 2)
ends("rpcctl set svi vlan=20 'name=a&b'", 2)
ends("rpcctl rows svj", 3)
ends("rpcctl set portrate port=1 x=1", 3)
ends("rpcctl get svi vlan=99", 6)
ends("rpcctl add svi vlan=20", 6)
ends("rpcctl backup /run/a.txt svi; rpcctl set svi vlan=20 name=q; rpcctl diff /run/a.txt", 8)
shell.tell "fault oltmib_svi_getn_1 drop"
ends("rpcctl rows svi --timeout 0.2", 5)
shell.tell "clear"
shell.tell "fault oltmib_svi_getn_1 error system_err"
ends("rpcctl rows svi", 7)
shell.tell "clear"
shell.tell "fault oltmib_svi_getn_1 truncate 4"
ends("rpcctl rows svi", 7)
shell.tell "clear"
shell.tell "fault oltmib_svi_set_1 raw XID000000010000000000000000000000000000000000000003"
ends("rpcctl set svi vlan=20 name=x", 6) -- the daemon's own status is 3
shell.tell "clear"
shell.tell "fault oltmib_svi_set_1 raw XID0000000100000000000000000000000000000000ffffffff"
ends("rpcctl set svi vlan=20 name=x", 6) -- and here -1
shell.tell "clear"
shell.tell "stop nsminfo"
ends("rpcctl rows svi", 4)
shell.tell "start nsminfo"
ends("rpcctl rows svi", 0)

-- A program that fails itself, and a write that fails where later ones do not
ends("LUA_INIT='package.preload[\"rpcctl.commands.get\"] = function() error(5) end' rpcctl get devinfo", 1)
ends([[LUA_INIT='local write, n = io.write, 0; io.write = function(...) n = n + 1
  if n == 1 then return nil, "No space left on device" end return write(...) end' rpcctl rows svi --fields vlan]], 1)

check.finish()

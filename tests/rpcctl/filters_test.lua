-- Which rows: FIELD=VALUE and its like mean the same with every command that reads.
local check = require "check"
local shell = require "shell"
local tool = require "tool"
local prints, fails = tool.prints, tool.fails

-- Either name, words and numbers, each operator
for _, row in ipairs {
  { "link=down", "5\n6\n" }, { "field5=0", "5\n6\n" }, { "link=0", "5\n6\n" }, { "link!=up", "5\n6\n" },
  { "'port>=7'", "7\n8\n" }, { "'port>7'", "8\n" }, { "'port<2'", "1\n" }, { "'port<=2'", "1\n2\n" },
  { "'speed>=1000' 'port<3'", "1\n2\n" }, { "name~E7", "7\n" }, { "'description~line ?'", "7\n8\n" },
  { "'name!~ge[1-8]' port=1", "1\n" }, { "description= port=5", "5\n" }, { "port=9", "" }, { "name=ge", "" },
} do
  prints("rows portinfo --fields port " .. row[1], row[2])
end
prints("rows fdb --fields mac mac=001e80bb0007", "00-1E-80-BB-00-07\n")
prints("rows portstat --fields port 'counter9>00000000000000000000' 'port<3'", "1\n2\n")
prints("rows portstat --fields port 'counter9>99999999999999999999'", "")
prints("rows portstat --fields port 'counter9>9' 'counter9!=9' 'port<3'", "1\n2\n") -- as numbers, not as texts
prints("get portinfo name=ge3 --fields port", "port\t3\n")
prints("rows telnet --fields tcp_port", "23\n") -- a table of one row has one
prints("rows telnet tcp_port=24", "")
prints("rows svi vlan=20 'name~none'", "") -- one row, and not this one
local output = tool.run "rpcctl watch portinfo link=down --count 1 --fields port | cut -f 3"
check.equal("watch takes the same filters", output, "5\n6\n")

-- A field that there is not, a value that none can have
fails("rows portinfo bogus=4 --fields port", 2, "rpcctl: rows: portinfo: expected one of port, name, description, "
  .. "enabled, "
  .. "link, speed, duplex, mode, wanted_mode, field13, medium, mtu, field16, field17, field18, field19, field20, "
  .. "field21, "
  .. 'field23, field24, field25, field26, oper, res, found "bogus"; rpcctl describe TABLE shows the fields\n')
fails("rows portinfo link=upp", 2, "rpcctl: rows: portinfo: link: expected a number, or one of \"down\", \"up\", found "
  .. '"upp"; rpcctl describe TABLE shows the fields\n')
check.equal("the only word that a field has", select(2, tool.run [[
  echo 'return { svi = { field1 = { name = "vlan", values = { [1] = "one" } } } }' >/run/one.lua
  LIBRPC_NAMES=/run/one.lua rpcctl rows svi vlan=two]]), 'rpcctl: rows: svi: vlan: expected a number, or one of "one", '
  .. 'found "two"; rpcctl describe TABLE shows the fields\n')
fails("rows fdb mac=zz", 2, 'rpcctl: rows: fdb: mac: expected a MAC address such as 00-11-22-AA-BB-CC, found "zz"; '
  .. "write it as 00-1e-80-aa-00-01\n")
fails("rows portinfo 3", 2, "rpcctl: rows: expected FIELD=VALUE (or != < <= > >= ~ !~), found '3'; see rpcctl rows "
  .. "--help\n")

-- Where a walk begins and ends
prints("rows portinfo --after port=6 --fields port", "7\n8\n")
prints("rows portinfo --after ifx=6 --fields port", "7\n8\n")
prints("rows mstp_if --after instance=0 --after port=6 --fields port", "7\n8\n")
prints("rows portinfo --end port=3 --fields port", "1\n2\n")
prints("rows portinfo --end 'port>=3' --fields port", "1\n2\n")
prints("rows portinfo --limit 2 --fields port", "1\n2\n")
prints("rows portinfo --limit 1 --fields port link=down", "5\n")
fails("rows portinfo --end ifx", 2,
  "rpcctl: rows: expected FIELD=VALUE (or != < <= > >= ~ !~), found 'ifx'; see rpcctl rows --help\n")
fails("rows portinfo --end bogs=4", 2, "rpcctl: rows: portinfo: expected one of port, name, description, enabled, "
  .. "link, "
  .. "speed, duplex, mode, wanted_mode, field13, medium, mtu, field16, field17, field18, field19, field20, field21, "
  .. 'field23, field24, field25, field26, oper, res, found "bogs"; rpcctl describe TABLE shows the fields\n')
fails("rows telnet --after tcp_port=1", 2,
  "rpcctl: rows: telnet: expected a table that is walked, for --after, found no getn\n")
-- How many rows a command walks
local function walked(arguments, api)
  local function count()
    return tonumber((tool.run("$SIM_DEVICE --tell $SIM_CONTROL count " .. (api or "oltmib_portinfo_getn_1"))))
  end
  local before = count()
  tool.run("rpcctl " .. arguments)
  return count() - before
end
check.equal("--limit asks for no more rows than it shows", walked "rows portinfo --limit 2 --fields port", 2)
check.equal("get asks for no more than two rows", walked "get portinfo link=up", 2)
check.equal("a key asks for no walk", walked "get portinfo port=3; rpcctl rows portinfo port=8 link=up", 0)
check.equal("nor a key of no row, where somebody told the key",
  walked("rows igmpsnp_static_grp vlan=1 port_name=ge1 group=239.0.0.1", "oltmib_igmpsnp_static_grp_getn_1"), 0)
prints("rows portinfo --after port=6 port=8 --fields port", "8\n")
prints("rows portinfo --after port=6 port=3 --fields port", "")
prints("get portinfo --after port=7 --fields port", "port\t8\n")
prints("rows pminfo --fields session", "1\n") -- it is walked, and has no get
fails("rows vlanbitmapinfo", 3, 'rpcctl: vlanbitmapinfo: expected set, found "get"; '
  .. "rpcctl list shows every API, rpcctl list --tables every table\n")
fails("rows syslogremote", 2, "rpcctl: rows: syslogremote: expected number=..., which says which row, found no such "
  .. "word; rpcctl rows TABLE shows every row\n")

-- A daemon that answers with another row: all zeros. Where somebody told the key, that is wrong; else a walk tells more
shell.tell("fault oltmib_igmpsnp_static_grp_get_1 raw XID00000001" .. ("00000000"):rep(4 + 140))
fails("get igmpsnp_static_grp vlan=20 port_name=ge7 group=239.1.2.1", 6, "rpcctl: oltmib_igmpsnp_static_grp_get_1: "
  .. 'group: expected the row "239.1.2.1", found ""; rpcctl rows TABLE shows every row\n')
shell.tell "clear"
shell.tell("fault oltmib_svi_get_1 raw XID00000001" .. ("00000000"):rep(4 + 87))
prints("get svi vlan=20 --fields name", "name\tvlan20\n")
shell.tell "clear"

-- What is sent to read a row: its key where somebody told it, else every field that is given, but for oper and res
local function sent()
  return (tool.run "tail -n 1 $SIM_LOG | cut -d ' ' -f 4-")
end
prints("rows igmpsnp_static_grp vlan=20 port_name=ge7 group=239.1.2.1 source=0.0.0.0 --fields vlan", "20\n")
check.equal("the key", sent(), "oltmib_igmpsnp_static_grp_get_1 20&ge7&239.1.2.1&&0&&0&0\n")
prints("rows svi vlan=20 name=vlan20 res=0 oper=1", "")
check.equal("the fields", sent(), "oltmib_svi_get_1 20&vlan20&&&0&0\n")

-- Which fields
fails("get devinfo --fields oper", 2, "rpcctl: get: expected fields of a row of devinfo (model, serial, mac, software, "
  .. "firmware, hardware, saveconfig, uptime, hostname, res), found 'oper'; see rpcctl get --help\n")
fails("rows svi --fields ,", 2,
  "rpcctl: rows: expected --fields and names between commas, found ','; see rpcctl rows --help\n")
prints("rows svi vlan=20 --fields all", "20\tvlan20\t198.51.100.1/24\t\t0\t0\n")
prints("rows svi vlan=20 --fields vlan,oper,field1", "20\t0\t20\n")
fails("rows svi feild1=20", 2, "rpcctl: rows: svi: expected one of its fields (did you mean field1?), "
  .. 'found "feild1"; rpcctl describe TABLE shows the fields\n') -- of either name
prints("get svi vlan=20 --format table --fields vlan,name", "vlan  name\n20    vlan20\n")

-- The order
prints("rows portinfo --sort -port --limit 3 --fields port", "8\n7\n6\n")
prints("rows vlaninfo --sort name --fields name", "default\nvideo\nvoice\n")
prints("rows vlaninfo --sort -field3 --fields name", "voice\nvideo\ndefault\n")
local _, _, sorted = tool.run "rpcctl rows portstat --sort counter26 --fields counter26 | sort -c -n"
check.equal("counters sort as numbers", sorted, 0)
_, _, sorted = tool.run "rpcctl rows portstat --sort -counter26 --fields counter26 | sort -c -n -r"
check.equal("counters sort as numbers, from high to low", sorted, 0)

-- One row by what it has
fails("get portinfo link=up", 2, "rpcctl: get: portinfo: expected one row with link=up, found port=1 and port=2\n")
fails("get portinfo", 2, "rpcctl: get: portinfo: expected port=..., which says which row, found no such word; "
  .. "rpcctl rows TABLE shows every row\n")
fails("get portinfo port=99", 6, "rpcctl: get: portinfo: expected a row with port=99, found none; "
  .. "rpcctl rows TABLE shows every row, rpcctl add makes one\n")
fails("get mstp_if instance=0 port=99", 6, "rpcctl: get: mstp_if: expected a row with instance=0 port=99, found none; "
  .. "rpcctl rows TABLE shows every row, rpcctl add makes one\n")
prints("get mstp_if instance=0 port=3 --fields port_name", "port_name\tge3\n")

check.finish()

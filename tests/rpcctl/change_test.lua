-- set and add: what they send, print and ask.
local check = require "check"
local shell = require "shell"
local tool = require "tool"
local prints, fails, run = tool.prints, tool.fails, tool.run

local function row(table_and_key)
  return (run("rpcctl get " .. table_and_key .. " --format kv"))
end

prints("set svi vlan=20 name=lan", "name: vlan20 -> lan\n")
prints("set svi vlan=20 name=lan", "nothing changed\n")
prints("set svi vlan=20 'name=two words' address=", 'name: lan -> "two words"\naddress: 198.51.100.1/24 -> ""\n')
prints("set portinfo port=5 enabled=off", "enabled: on -> off\n")
prints("set portinfo ifx=5 field4=1 --json", '{"status":0,"changed":{"enabled":{"before":"off","after":"on"}}}\n')
prints("set portinfo port=5 mtu=1600 --json", '{"status":0,"changed":{"mtu":{"before":1500,"after":1600}}}\n')

-- A dry run changes nothing
local before = row "svi vlan=20"
prints("set svi vlan=20 name=q --dry-run", 'name: "two words" -> q\n')
prints("set svi vlan=20 name=q --dry-run --json",
  '{"status":null,"changed":{"name":{"before":"two words","after":"q"}}}\n')
prints("set svi vlan=20 name=q --only --dry-run", 'name: "two words" -> q\n')
prints("add svi vlan=77 name=q --dry-run", "vlan: -> 77\nname: -> q\n")
check.equal("a dry run sends nothing", row "svi vlan=20", before)
fails("get svi vlan=77", 6, "rpcctl: get: svi: expected a row with vlan=77, found none; "
  .. "rpcctl rows TABLE shows every row, rpcctl add makes one\n")

-- The key
fails("set svi name=q", 2, "rpcctl: set: svi: expected vlan=..., which says which row, found no such word; "
  .. "rpcctl rows TABLE shows every row\n")
fails("set svi vlan=77 name=q", 6, "rpcctl: set: svi: expected a row with vlan=77, found none; "
  .. "rpcctl rows TABLE shows every row, rpcctl add makes one\n")
fails("set svi", 2, "rpcctl: set: expected TABLE FIELD=VALUE..., found 'svi'; see rpcctl set --help\n")
fails("set portinfo --where link=down", 2,
  "rpcctl: set: expected TABLE FIELD=VALUE..., found 'portinfo'; see rpcctl set --help\n")
fails("set portinfo 'port>3'", 2, "rpcctl: set: expected FIELD=VALUE, what the row is to have, found none; "
  .. "see rpcctl set --help\n")
fails("set devinfo hostname=x", 2, "rpcctl: oltmib_devinfo_set_1: mac: expected a value, because the argument cannot "
  .. 'carry the row\'s own, found "00-1E-80-4C-00-01"; give it one (FIELD=VALUE, or FIELD= to send it empty), or use '
  .. "--only\n")
prints("set devinfo hostname=x mac=", "mac: 00-1E-80-4C-00-01 -> 00-00-00-00-00-00\nhostname: olt-lab-1 -> x\n")
prints("get devinfo --fields hostname,model", "hostname\tx\nmodel\tOLT-8G\n")

-- Several rows
fails("set portinfo --where link=down enabled=off </dev/null", 1,
  "rpcctl: set: portinfo: expected a yes, or --yes, for 2 rows, found none; nothing was changed\n")
prints("rows portinfo enabled=off --fields port", "")
prints("set portinfo --where link=down enabled=off --yes", "port=5 enabled: on -> off\nport=6 enabled: on -> off\n")
prints("set portinfo 'port>5' link=down enabled=on --dry-run",
  "port=6 enabled: off -> on\nport=7 link: up -> down\nport=8 link: up -> down\n")
prints("set portinfo --where link=down --where port=6 enabled=on", "port=6 enabled: off -> on\n")
prints("set portinfo --where enabled=off enabled=on --json",
  '[{"row":"port=5","status":0,"changed":{"enabled":{"before":"off","after":"on"}}}]\n')
fails("set portinfo --where port=99 enabled=on --yes", 6, "rpcctl: set: portinfo: expected rows that pass the filter, "
  .. "found none; rpcctl rows TABLE shows every row, rpcctl add makes one\n")

prints("set portinfo --where enabled=on port=6 mtu=1600", "port=6 mtu: 1500 -> 1600\n") -- the key narrows what passes
prints("set portinfo 'port>5' link=up port=7 mtu=1600 --json",
  '[{"row":"port=7","status":0,"changed":{"mtu":{"before":1500,"after":1600}}}]\n')
check.equal("the others are as they were", (run "rpcctl rows portinfo mtu=1600 --fields port"), "5\n6\n7\n")
prints("set portinfo --where port=6 mtu=1600", "") -- which lists what changes, and that is nothing
prints("set account --where user=admin password=q", "user=admin password: (set) -> (set)\n")
prints("set account --where user=admin password=secret --json --show-secrets",
  '[{"row":"user=admin","status":0,"changed":{"password":{"before":"q","after":"secret"}}}]\n')
run [[echo 'return { svi = { field1 = { name = "vlan", values = { [1] = "one" } } } }' >/run/one.lua]]
check.equal("rows are called by the words of their keys", {
  run "LIBRPC_NAMES=/run/one.lua rpcctl set svi 'vlan>=0' name=q --dry-run"
}, { 'vlan=one name: vlan1 -> q\nvlan=20 name: "two words" -> q\n', "", 0 })
fails("set pminfo description=q", 2, "rpcctl: set: pminfo: expected session=..., which says which row, found no such "
  .. "word; rpcctl rows TABLE shows every row\n") -- it is walked, and has no get
prints("set pminfo session=1 description=q", 'description: "capture at port 6" -> q\n')
fails("set syslogremote address=q", 2, "rpcctl: set: syslogremote: expected number=..., which says which row, found no "
  .. "such word; rpcctl rows TABLE shows every row\n") -- it has a get, and is not walked

-- What nobody can read back is sent alone
local function last_sent()
  return (run "tail -n 1 $SIM_LOG | cut -d ' ' -f 4-")
end
prints("set vlanbitmapinfo --only vlan=7 bitmap=f", "")
check.equal("the fields given", last_sent(), "oltmib_vlanbitmapinfo_set_1 7&f&&&&0&0\n")
prints("set vlanbitmapinfo --only vlan=8 --json", '{"status":0,"changed":{}}\n')
prints("set vlanbitmapinfo --only vlan=9 --dry-run", "")
prints("set vlanbitmapinfo --only vlan=9 --dry-run --json", '{"status":null,"changed":{}}\n')
check.equal("a dry run of it", last_sent(), "oltmib_vlanbitmapinfo_set_1 8&&&&&0&0\n")
fails("set vlanbitmapinfo --only vlan=x", 2, "rpcctl: oltmib_vlanbitmapinfo_set_1: vlan: expected a whole number, "
  .. 'found "x"; rpcctl describe TABLE shows the fields\n')

-- The daemon's own status
shell.tell "fault nsminfo after=1 raw XID0000000100000000000000000000000000000000ffffffff"
fails("set svi vlan=20 name=x", 6, "rpcctl: oltmib_svi_set_1: expected status 0, found -1, the daemon's own\n")
shell.tell "clear"
shell.tell "fault oltmib_svi_set_1 raw XID000000010000000000000000000000000000000000000001"
fails("add svi vlan=66 name=x", 6, "rpcctl: oltmib_svi_set_1: expected status 0, found 1, the daemon's own\n")
shell.tell "clear"

-- On a terminal it asks; only a yes is one
local question = "Change 2 rows of portinfo? [y/N]"
for answer, shows in pairs { y = "port=6 enabled: on -> off", n = "nothing was changed",
  [""] = "nothing was changed" } do
  local screen = tool.terminal { "rpcctl set portinfo --where link=down enabled=off", ready = question, columns = 200,
    keys = "'" .. answer .. "' Enter", shows = "[exit " }
  check.equal("answered '" .. answer .. "'", screen:find(shows, 1, true) ~= nil, true)
  run "rpcctl set portinfo --where enabled=off enabled=on --yes"
end

-- Each row is told as it is changed, in a pipe too: here the second one's daemon is silent
shell.tell "fault oltmib_portinfo_set_1 after=1 drop"
check.equal("the first of two rows", (run("rm -f /run/out; " .. tool.command
  .. " set portinfo --where link=down enabled=off --yes --timeout 300 >/run/out & child=$!; "
  .. "await 'grep -q port=5 /run/out' && echo told; kill -INT $child; wait $child")), "told\n")
shell.tell "clear"
run "rpcctl set portinfo --where enabled=off enabled=on --yes"

-- Secrets
prints("set account user=admin password=other", "password: (set) -> (set)\n")
prints("set account user=admin password=secret --show-secrets", "password: other -> secret\n")
prints("set account user=admin password=other --json",
  '{"status":0,"changed":{"password":{"before":"(set)","after":"(set)"}}}\n')

-- add
prints("add svi vlan=30 'name=guests net'", 'vlan: -> 30\nname: -> "guests net"\n')
prints("get svi vlan=30 --fields name", "name\tguests net\n")
prints("add svi vlan=31 name=x --json", '{"status":0,"changed":{"vlan":{"after":31},"name":{"after":"x"}}}\n')
prints("add svi vlan=32 --dry-run --json", '{"status":null,"changed":{"vlan":{"after":32}}}\n')
prints("add account user=bob password=pw", "user: -> bob\npassword: -> (set)\n")
prints("add account user=eve password=pw --show-secrets --json",
  '{"status":0,"changed":{"user":{"after":"eve"},"password":{"after":"pw"}}}\n')
prints("add account user=joe password=pw --show-secrets", "user: -> joe\npassword: -> pw\n")
fails("add svi vlan=30 name=x", 6, "rpcctl: oltmib_svi_set_1: expected a key of which there is no row, found a row; "
  .. "rpcctl set changes it\n")
fails("add telnet tcp_port=24", 6, "rpcctl: oltmib_telnet_set_1: expected a key of which there is no row, found a "
  .. "table "
  .. "of one row; rpcctl set changes it\n")
fails("add svi name=x", 2, "rpcctl: add: svi: expected vlan=..., which says which row, found no such word; "
  .. "rpcctl rows TABLE shows every row\n")

-- Every table that can be set and read: a dry run of its own values is no change
local tables = run [[rpcctl list --tables | awk -F '\t' '$3 ~ /get .*set/ { print $1 }']]
local tried = 0
for name in tables:gmatch("%S+") do
  local keys = run("rpcctl describe " .. name .. " | awk -F '\\t' '/; key|^key/ { print $1 }'")
  local fields = keys:gsub("\n", ",")
  local rows = fields ~= "" and run("rpcctl rows " .. name .. " --limit 1 --format kv --fields " .. fields) or ""
  local _, errors, status = run(("rpcctl set %s %s res=0 --dry-run"):format(name, rows:gsub("\n", " ")))
  tried = tried + 1
  if status ~= 0 then -- or it says which field, or which row, has to be given
    check.matches(name, (errors:gsub("which says which row", "give it one (FIELD=VALUE")), "give it one %(FIELD=VALUE")
  end
end
check.equal("tables that were tried", tried > 50, true)

check.finish()

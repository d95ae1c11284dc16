-- rpcctl beside the simulated device: what it prints and its exit statuses.
local check = require "check"
local golden = require "golden"
local shell = require "shell"

local function rpcctl(arguments)
  return shell.run(shell.interpreter .. " " .. os.getenv("LIBRPC_TEST_SOURCE") .. "/bin/rpcctl " .. arguments)
end

-- As on a terminal: script gives the command one, and its lines end in "\r\n".
local function on_terminal(arguments, environment)
  local command = shell.interpreter .. " " .. os.getenv("LIBRPC_TEST_SOURCE") .. "/bin/rpcctl " .. arguments
  local output = shell.run(("TERM=xterm %s script -qec '%s' /dev/null"):format(environment or "", command))
  return (output:gsub("\r\n", "\n"))
end

local function succeeds(arguments, expected)
  local output, errors, status = rpcctl(arguments)
  check.equal("rpcctl " .. arguments, { output, errors, status }, { expected, "", 0 })
end

local function fails(arguments, expected_status, expected, expected_output)
  local output, errors, status = rpcctl(arguments)
  check.equal("rpcctl " .. arguments, { output, errors, status }, { expected_output or "", expected, expected_status })
end

-- list
check.equal("every API", rpcctl "list | cut -f 1", table.concat(golden.column("apis.txt", 2), "\n") .. "\n")
succeeds("list vrrp_ssconf", "oltmib_vrrp_ssconf_get_1\tvrrpinfo\t50013\t1\tget\tvrrp_ssconf\n"
  .. "oltmib_vrrp_ssconf_getn_1\tvrrpinfo\t50013\t2\tgetn\tvrrp_ssconf\n"
  .. "oltmib_vrrp_ssconf_set_1\tvrrpinfo\t50013\t3\tset\tvrrp_ssconf\n")
succeeds("list --tables lpdet_portinfo", "lpdet_portinfo\tlpdet\tget getn set\t\n")
check.equal("tables of a service", rpcctl "list --tables vrrpinfo | cut -f 2 | uniq", "vrrpinfo\n")
succeeds("list 'vrrp*set'", "oltmib_vrrp_ssconf_set_1\tvrrpinfo\t50013\t3\tset\tvrrp_ssconf\n"
  .. "oltmib_vrrp_ssstate_set_1\tvrrpinfo\t50013\t6\tset\tvrrp_ssstate\n")
succeeds("list --json 'oltmib_route_*'",
  '[{"name":"oltmib_route_get_1","service":"ribinfo","program":50011,"procedure":1,'
  .. '"operation":"get","table":"route"},\n{"name":"oltmib_route_getn_1","service":"ribinfo","program":50011,'
  .. '"procedure":2,'
  .. '"operation":"getn","table":"route"},\n{"name":"oltmib_route_set_1","service":"ribinfo","program":50011,'
  .. '"procedure":3,'
  .. '"operation":"set","table":"route"}]\n')
fails("list nothing-like-it", 3, "rpcctl: list: expected a part of an API's name, a service's or a "
  .. "table's title, found "
  .. "'nothing-like-it'; rpcctl list shows every API, rpcctl list --tables every table\n")

-- describe
succeeds("describe svi", "api\toperation\tservice\tprogram\tprocedure\trequest\treply\n"
  .. "oltmib_svi_get_1\tget\tnsminfo\t50004\t87\toltmib_sviEntry\toltmib_sviEntry\n"
  .. "oltmib_svi_getn_1\tgetn\tnsminfo\t50004\t88\toltmib_sviEntry\toltmib_sviEntry\n"
  .. "oltmib_svi_set_1\tset\tnsminfo\t50004\t89\toltmib_sviEntry\tint\n\n"
  .. "field\tkind\tsize\targument\treply\tvalue\n"
  .. "field1\tint\t\t1\t1\twhole number; key\nname\ttext\t32\t2\t2\ttext\nfield3\ttext\t20\t3\t3\ttext\n"
  .. "text\ttext\t32\t4\t4\ttext\noper\tint\t\t5\t5\twhole number\nres\tint\t\t6\t6\twhole number\n")
succeeds("describe --json oltmib_nsm_set_1", '[{"name":"oltmib_nsm_set_1","service":"nsminfo","program":50004,'
  .. '"procedure":121,"operation":"set","table":"nsm","request":"oltmib_nsmEntry","reply":"int","delimiters":"&",'
  .. '"input":[{"kind":"text","name":"field1","size":80},{"kind":"text","name":"field2","size":800},'
  .. '{"kind":"int","name":"oper"},{"kind":"int","name":"res"}]}]\n')
fails("describe svo", 3, 'rpcctl: librpc: expected the name of a table (did you mean svi?), found "svo"; '
  .. "rpcctl list shows every API, rpcctl list --tables every table\n")

-- get
succeeds("get svi field1=20", "field1\t20\nname\tvlan20\nfield3\t198.51.100.1/24\ntext\t\noper\t0\nres\t0\n")
succeeds("get oltmib_svi_get_1 field1=20 --fields name,field3", "name\tvlan20\nfield3\t198.51.100.1/24\n")
succeeds("get svi field1=20 --json --fields=field1,name", '{"field1":20,"name":"vlan20"}\n')
succeeds("get cvlan_table --fields bit", "bit\t400800000000000000000000\n")
fails("get svi field1=21", 6, "rpcctl: get: svi: expected a row with field1=21, found none; "
  .. "rpcctl rows TABLE shows every row, rpcctl add makes one\n")
fails("get svi", 2, "rpcctl: get: svi: expected field1=..., which says which row, found no such word; "
  .. "rpcctl rows TABLE shows every row\n")
fails("get sv field1=1", 3, 'rpcctl: librpc: expected the name of a table (did you mean svi?), found "sv"; '
  .. "rpcctl list shows every API, rpcctl list --tables every table\n")
fails("get svi feild1=1", 2, "rpcctl: get: svi: expected one of its fields (did you mean field1?), "
  .. 'found "feild1"; rpcctl describe TABLE shows the fields\n')
fails("get svi 20", 2, "rpcctl: get: expected FIELD=VALUE (or != < <= > >= ~ !~), found '20'; see rpcctl get --help\n")
fails("get svi --fields nam", 2, "rpcctl: get: svi: expected one of its fields (did you mean name?), "
  .. 'found "nam"; rpcctl describe TABLE shows the fields\n')
fails("get svi --fields", 2, "rpcctl: get: expected NAME,... behind --fields, found nothing; see rpcctl get --help\n")

-- set
succeeds("set svi field1=20 field3=198.51.100.2/24", "field3: 198.51.100.1/24 -> 198.51.100.2/24\n")
succeeds("set svi field1=20 field3=198.51.100.2/24", "nothing changed\n")
succeeds("get svi field1=20 --fields name,field3", "name\tvlan20\nfield3\t198.51.100.2/24\n")
succeeds("set svi --only field1=20 name=v20 --json", '{"status":0,"changed":{"name":{"before":"vlan20","after":"v20"},'
  .. '"field3":{"before":"198.51.100.2/24","after":""}}}\n')
succeeds("get svi field1=20 --fields name,field3", "name\tv20\nfield3\t\n")
succeeds("set svi field1=20 name=a=b", "name: v20 -> a=b\n")
fails("set svi field1=20 name=a name=b", 2, "rpcctl: set: expected each field once, found 'name' again; "
  .. "see rpcctl set --help\n")
succeeds("get svi field1=20 --fields name", "name\ta=b\n")
fails("set svi field1=20 name=" .. ("x"):rep(40), 2, 'rpcctl: oltmib_svi_set_1: name: expected at most 31 characters, '
  .. 'found 40: "' .. ("x"):rep(40) .. '"; rpcctl describe shows how long a text may be: '
  .. "one character less than its size\n")
fails("set svi field1=20 'name=a&b'", 2, "rpcctl: oltmib_svi_set_1: name: expected a text without '&', which separates "
  .. 'fields, found "a&b"; texts cannot hold it, there is no escaping\n')
fails("set svi field1=21 name=x", 6,
  "rpcctl: set: svi: expected a row with field1=21, found none; rpcctl rows TABLE shows every row, rpcctl add makes "
    .. "one\n")
fails([[set svi 'field1=x"\y']], 2,
  [[rpcctl: oltmib_svi_set_1: field1: expected a whole number, found "x\"\\y"]]
  .. "; rpcctl describe TABLE shows the fields\n") -- escaped once
fails("set vlanbitmapinfo field1=1", 2, "rpcctl: set: expected --only, because vlanbitmapinfo has no get to read the "
  .. "row with, found none; see rpcctl set --help\n")
fails("set portrate ifx=1", 3, 'rpcctl: portrate: expected get or getn, found "set"; '
  .. "rpcctl list shows every API, rpcctl list --tables every table\n")
fails("set svi", 2, "rpcctl: set: expected TABLE FIELD=VALUE..., found 'svi'; see rpcctl set --help\n")

-- rows
succeeds("rows vlaninfo --fields field1,field3", "1\tdefault\n10\tvoice\n20\tvideo\n")
succeeds("rows vlaninfo --after field1=1 --fields field1,field3 --header", "field1\tfield3\n10\tvoice\n20\tvideo\n")
succeeds("rows vlaninfo --limit 2 --fields field1", "1\n10\n")
succeeds("rows vlaninfo --end field1=10 --fields field1", "1\n")
succeeds("rows vlaninfo --after field1=20 --json", "[]\n")
succeeds("rows fdb --json --fields mac,field2 --after field2=0 --after mac=00-1E-80-AA-00-04",
  '[{"mac":"00-1E-80-BB-00-07","field2":20},\n{"mac":"00-1E-80-BB-00-08","field2":20}]\n')
fails("rows ioctlinfo", 2, "rpcctl: rows: oltmib_ioctlinfo_getn_1: expected --end FIELD=VALUE, because its rows do not "
  .. "say which is the last, found none\n")
fails("rows vlaninfo --limit x", 2, "rpcctl: rows: expected --limit and a whole number from 1, found 'x'; "
  .. "see rpcctl rows --help\n")

-- call
succeeds("call oltmib_vlaninfo_get_1 10", "10&1&voice&1&ge1,ge2&ge3,ge4&&0&0\n")
succeeds("call --json oltmib_vlaninfo_get_1 10", '"10&1&voice&1&ge1,ge2&ge3,ge4&&0&0"\n')
fails("call oltmib_vlaninf_get_1 10", 3, "rpcctl: librpc: expected the name of an API (did you mean "
  .. "oltmib_vlaninfo_get_1?), "
  .. 'found "oltmib_vlaninf_get_1"; rpcctl list shows every API, rpcctl list --tables every table\n')
fails("call", 2, "rpcctl: call: expected API [ARGUMENT], found nothing; see rpcctl call --help\n")

-- Texts of a daemon do not reach a terminal as they are.
rpcctl [[set svi field1=20 "name=$(printf 'a\033[31m\tb\\\377')"]]
succeeds("get svi field1=20 --fields name", "name\ta\\x1b[31m\\tb\\\\\\xff\n")
succeeds("get svi field1=20 --fields name --json", '{"name":"a\\u001b[31m\\tb\\\\\\u00ff"}\n')

-- Aligned columns on a terminal, with bold headers.
check.equal("rows on a terminal", on_terminal("rows vlaninfo --fields field1,field3,field5", "NO_COLOR=1"),
  "field1  field3   field5\n1       default  ge1,ge2,ge3,ge4,ge5,ge6,ge7,ge8\n10      voice    ge1,ge2\n"
    .. "20      video    ge1,ge7,ge8\n")
check.equal("colours", on_terminal("rows vlaninfo --fields field1 --limit 1"), "\27[1mfield1\27[0m\n1\n")
check.equal("long cells are cut, and say so", on_terminal("rows acl --fields field7,src --limit 1", "NO_COLOR=1"),
  "field7                  src\nno mail from customers  any\n")

-- Help and bad usage.
for _, name in ipairs { "list", "describe", "get", "rows", "watch", "set", "add", "call", "health", "backup",
  "restore", "diff", "help" } do
  local output, errors, status = rpcctl(name .. " --help")
  check.equal(name .. " --help", { output:match("^rpcctl " .. name .. " ") ~= nil, errors, status }, { true, "", 0 })
  check.equal("--help names " .. name, rpcctl("--help"):find("\n  " .. name .. " ", 1, true) ~= nil, true)
end
fails("", 2, "rpcctl: arguments: expected a command (list, describe, get, rows, watch, set, add, "
  .. "call, health, backup, restore, diff, help), found none; "
  .. "see rpcctl --help\n")
fails("lst", 2, "rpcctl: arguments: expected a command (did you mean list?), found 'lst'; see rpcctl --help\n")
fails("rows vlaninfo --fast", 2, "rpcctl: rows: expected an option of --help, found '--fast'; see rpcctl rows --help\n")
fails("list >/dev/full", 1, "rpcctl: standard output: expected room for all of it, found a write error; "
  .. "is there room, and may you write there?\n")

-- Failures of calls, each with its exit status.
local function where(name, service, program)
  return ("rpcctl: %s (service %s, program %d): "):format(name, service, program)
end
shell.tell "fault nsminfo count=1 error system_err"
fails("get svi field1=1", 7, where("oltmib_svi_get_1", "nsminfo", 50004) .. "the daemon answered that it will not or "
  .. "cannot carry the call out [RPC: Remote system error]; the daemon may be of another version, or in trouble: "
  .. "its log should tell\n")
shell.tell "fault nsminfo count=1 truncate 4"
fails("call oltmib_svi_get_1 1", 7, where("oltmib_svi_get_1", "nsminfo", 50004) .. "the daemon's answer is not this "
  .. "call's reply [RPC: Can't decode result]; the daemon may be of another version: rpcctl describe shows what is "
  .. "expected\n")
shell.tell "stop vrrpinfo"
fails("get vrrp_ssstate vrid=1", 4, where("oltmib_vrrp_ssstate_get_1",
  "vrrpinfo",
  50013) .. "the daemon has not registered with the port mapper [RPC: Program not registered]; "
  .. "start the service's daemon; rpcctl health tells which daemons answer\n")
shell.run("kill $RPCBIND_PID; while kill -0 $RPCBIND_PID; do sleep 0.02; done")
fails("rows svi", 4, where("oltmib_svi_getn_1", "nsminfo", 50004)
  .. "the port mapper does not answer, so no daemon can be found [RPC: Unable to receive - Connection refused]; "
  .. "start rpcbind\n")
fails("watch svi --count 2", 4, where("oltmib_svi_getn_1", "nsminfo", 50004)
  .. "the port mapper does not answer, so no daemon can be found [RPC: Unable to receive - Connection refused]; "
  .. "start rpcbind\n")

check.finish()

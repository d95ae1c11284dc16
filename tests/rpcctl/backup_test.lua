-- backup, restore, diff: a whole device comes back as it was.
local check = require "check"
local shell = require "shell"
local tool = require "tool"
local run, fails, prints = tool.run, tool.fails, tool.prints
local record = require "librpc.record"
local names = require "librpc.names"

local function read(path)
  local file = assert(io.open(path))
  local text = file:read("*a")
  file:close()
  return text
end

prints("backup /run/first.txt", "")
prints("backup /run/second.txt", "")
check.equal("a backup is the same each time", read "/run/first.txt", read "/run/second.txt")
local text = read "/run/first.txt"
check.equal("a row a line, the key first, names and words", {
  text:find("\nportinfo port=3 name=ge3 description=\"customer 3\" enabled=on ", 1, true) ~= nil,
  text:find("\nvlaninfo vlan=10 active=on name=voice field4=1 untagged=ge1,ge2 tagged=ge3,ge4 text=\"\"\n", 1,
    true) ~= nil,
}, { true, true })
check.equal("what cannot be kept is listed", {
  text:find("\n# not kept: vlanbitmapinfo: its rows cannot be read\n", 1, true) ~= nil,
  text:find("\n# not kept: account password: secret; --show-secrets keeps it\n", 1, true) ~= nil,
}, { true, true })
check.equal("no secret is in it", text:find("secret=", 1, true) or text:find("password=", 1, true)
  or text:find("community=", 1, true) or text:find("private", 1, true), nil)
check.equal("nor a row whose key is one",
  text:find("\n# not kept: snmp_community: its key (community) is a secret; --show-secrets keeps it\n", 1, true) ~= nil,
  true)
check.equal("which is kept when asked for",
  tool.count(run "rpcctl backup - snmp_community --show-secrets", "\nsnmp_community community=p"), 2)
local ports = {}
for port in text:gmatch("\nportinfo port=(%d+)") do
  ports[#ports + 1] = port
end
check.equal("rows are sorted", table.concat(ports, " "), "1 2 3 4 5 6 7 8")
-- whatever the order in which the daemon has them
local settings = require "rpcctl.settings"
local walks = record.walks
local places = { vlaninfo = { 3, 2, 1 }, portinfo = { 1, 3, 2, 4 } }
rawset(record, "walks", function(list)
  local rows = walks(list)
  for i, all in ipairs(rows) do
    local turned = {}
    for n, place in ipairs(places[list[i][1]]) do
      turned[n] = all[place]
    end
    rows[i] = turned
  end
  return rows, {}
end)
local order = {}
for _, one in ipairs(settings.read(settings.tables("backup", { "vlaninfo", "portinfo" }), {})) do
  for _, entry in ipairs(one.entries) do
    order[#order + 1] = entry.values.field1 or entry.values.ifx
  end
end
rawset(record, "walks", walks)
check.equal("rows of daemons that have them in no order", table.concat(order, " "), "1 2 3 4 1 10 20")
check.equal("rows of keys of two fields are sorted",
  run "rpcctl backup - mstp_if | grep -o '^mstp_if instance=. port=.' | sort -c -t= -k2,2 && echo sorted", "sorted\n")
check.equal("modes", run("umask 022; rpcctl backup /run/open.txt svi; rpcctl backup /run/shut.txt svi --show-secrets; "
  .. "stat -c %a /run/open.txt /run/shut.txt"), "644\n600\n")
check.matches("secrets when asked for", run "rpcctl backup - account --show-secrets",
  "account user=admin .* password=secret ")
check.equal("services and tables", run "rpcctl backup - vrrpinfo svi | grep -o '^[a-z_]*' | uniq",
  "svi\nvrrp_ssconf\nvrrp_ssstate\n")
fails("backup - portstats", 3, 'rpcctl: librpc: expected the name of a table (did you mean portstat?), found '
  .. '"portstats"; '
  .. "rpcctl list shows every API, rpcctl list --tables every table\n")
fails("backup - portrate", 2, "rpcctl: backup: expected a table that can be set, found 'portrate'\n")

-- Nothing differs: nothing is sent
prints("diff /run/first.txt", "")
local sets = run "grep -c _set_1 $SIM_LOG"
check.matches("restore of what is there", run "rpcctl restore /run/first.txt",
  "^0 changed, 0 added, %d+ as they were\n$")
check.equal("sends nothing", run "grep -c _set_1 $SIM_LOG", sets)

-- Changes everything: every field that an argument carries, of every row of every table
-- that is kept, then brings it back
local changed = 0
local function other(field, value)
  if type(value) == "number" then
    return value + 1
  elseif type(value) == "table" then
    local list = {}
    for i, item in ipairs(value) do
      list[i] = item == 0 and 1 or 0
    end
    return list
  elseif field.kind == "mac" then
    return "00-1E-80-00-00-EE"
  elseif field.kind == "hex" then
    return (value:gsub("%x", function(digit) return digit == "0" and "1" or "0" end))
  end
  return value == "" and "new" or value:sub(1, -2) .. (value:sub(-1) == "z" and "y" or "z")
end
for line in text:gmatch("[^\n]+") do
  local name = line:match("^([%w_]+) ")
  if name and record.find(name, "set") then
    local key, fields = {}, {}
    for _, field in ipairs(assert(names.fields(name))) do
      fields[field.field] = field
      if field.key then
        local value = line:match(" " .. field.name .. '="?([^%s"]*)')
        key[field.field] = value
      end
    end
    local row = record.get(name, key)
    if row then
      local changes = {}
      for field, value in pairs(assert(record.carried("oltmib_" .. name .. "_set_1", row))) do
        if not fields[field].key then
          changes[field] = other(fields[field], value)
        end
      end
      for _, position in ipairs(record.find(name, "set").input) do
        if position.kind == "bytes" then
          changes[position.name] = ""
        end
      end
      local all = {}
      for _, from in ipairs { key, changes } do
        for field, value in pairs(from) do
          all[field] = value
        end
      end
      changed = changed + (record.call("oltmib_" .. name .. "_set_1", all) == 0 and next(changes) and 1 or 0)
    end
  end
end
check.equal("rows that were changed", changed > 250, true)
run "rpcctl backup /run/changed.txt"
local same = 0
local after = read "/run/changed.txt"
for line in text:gmatch("[^\n]+") do
  same = same + (not line:match("^#") and ("\n" .. after):find("\n" .. line .. "\n", 1, true) and 1 or 0)
end
check.equal("almost every line is another", same < 20, true)
local differences = run "rpcctl diff /run/first.txt /run/changed.txt | wc -l"
check.equal("diff finds all of it", tonumber(differences) > 1000, true)
check.equal("diff's status", select(3, run "rpcctl diff /run/first.txt >/dev/null"), 8)
local dry, _, dry_status = run "rpcctl restore /run/first.txt --dry-run | tail -n 1"
check.matches("a dry run", dry, "^would be: %d+ changed, 0 added, %d+ as they were\n$")
run "rpcctl backup /run/still.txt"
check.equal("a dry run sends nothing", { read "/run/still.txt", dry_status }, { after, 0 })
local report, errors, status = run "rpcctl restore /run/first.txt"
check.equal("restore", { errors, status, report:match("%d+ changed, 0 added, %d+ as they were\n$") ~= nil }, { "", 0,
  true })
run "rpcctl backup /run/again.txt"
check.equal("the device is as it was", read "/run/again.txt", text)
check.matches("a second restore changes nothing", run "rpcctl restore /run/first.txt", "^0 changed, 0 added,")

-- What it says, rows of the file alone and of the device alone, both names
local file = assert(io.open("/run/some.txt", "w"))
file:write("# mine\r\n\nsvi vlan=20 name=\"a \\\"b\\\"\"\r\nsvi vlan=41 name=new address=10.0.0.1/8\nportinfo ifx=3 "
  .. "field4=off\n")
file:close()
tool.fails("diff /run/some.txt", 8, "", 'svi vlan=20 name: "a \\"b\\"" -> vlan20\n- svi vlan=41\n'
  .. "portinfo port=3 enabled: off -> on\n+ svi vlan=1\n+ portinfo port=1\n+ portinfo port=2\n+ portinfo port=4\n"
  .. "+ portinfo port=5\n+ portinfo port=6\n+ portinfo port=7\n+ portinfo port=8\n")
prints("restore /run/some.txt --dry-run | head -n 3", 'svi vlan=20 name: vlan20 -> "a \\"b\\""\nsvi vlan=41 added\n'
  .. "portinfo port=3 enabled: on -> off\n")
prints("restore /run/some.txt", 'svi vlan=20 name: vlan20 -> "a \\"b\\""\nsvi vlan=41 added\n'
  .. "portinfo port=3 enabled: on -> off\nsvi vlan=1 left alone: not in the file\n"
  .. "portinfo port=1 left alone: not in the file\nportinfo port=2 left alone: not in the file\n"
  .. "portinfo port=4 left alone: not in the file\nportinfo port=5 left alone: not in the file\n"
  .. "portinfo port=6 left alone: not in the file\nportinfo port=7 left alone: not in the file\n"
  .. "portinfo port=8 left alone: not in the file\n2 changed, 1 added, 0 as they were\n")
prints("get svi vlan=41 --fields name,address", "name\tnew\naddress\t10.0.0.1/8\n")
check.equal("from standard input", run "grep -v mine /run/some.txt | rpcctl restore - | tail -n 1",
  "0 changed, 0 added, 3 as they were\n")

-- A wrong line: nothing of the file is sent
for _, row in ipairs {
  { "svi vlan=1 name=x\nsvi vlan=20 nme=x", '2: svi: expected one of its fields (did you mean name?), found "nme"; '
    .. "rpcctl describe TABLE shows the fields" },
  { 'svi vlan=20 name="x', '1: expected a value of name that ends, with escapes that there are, found "svi vlan=20 '
    .. 'name=\\"x"' },
  { "svi vlan=20 name=\\q", '1: expected a value of name that ends, with escapes that there are, found '
    .. '"svi vlan=20 name=\\\\q"' },
  { "svi name=x", "1: svi: expected vlan=..., which says which row, found no such word" },
  { "svi vlan=20 name", '1: expected FIELD=VALUE, found "svi vlan=20 name"' },
  { "svi vlan=20 name=x\nsvi vlan=20 name=y", "2: expected each row once, found svi vlan=20 again" },
  { "svi vlan=x", '1: oltmib_svi_set_1: vlan: expected a whole number, found "x"' },
  { "portrate port=1", "1: expected a table that can be set, found portrate" },
} do
  file = assert(io.open("/run/wrong.txt", "w"))
  file:write(row[1], "\n")
  file:close()
  fails("restore /run/wrong.txt", 2, "rpcctl: restore: /run/wrong.txt:" .. row[2] .. "\n")
end
prints("get svi vlan=1 --fields name", "name\tvlan1\n")
fails("restore /run/none.txt", 2,
  "rpcctl: restore: /run/none.txt: expected a file that can be read, found /run/none.txt: No such file or directory\n")
fails("restore /run", 2, "rpcctl: restore: /run: expected a file that can be read, found a folder, or a device\n")

-- What a backup does not quite hold
check.equal("numbers of which replies have two decimals",
  (run "rpcctl backup /run/ntp.txt ntp; grep kept /run/ntp.txt"),
  "# kept with two decimals: ntp offset: the daemon may hold more\n"
  .. "# kept with two decimals: ntp delay: the daemon may hold more\n")

-- A backup that is cut short leaves the old file, and no other
run "mkdir /run/backups; rpcctl backup /run/backups/a.txt"
local function folder()
  return (run "ls /run/backups")
end
shell.tell "stop lpdet"
_, errors, status = run "rpcctl backup /run/backups/a.txt"
check.equal("a daemon that is not there", { errors:match("^rpcctl: backup: expected every table, found 2 that cannot "
  .. "be "
  .. "read; /run/backups/a.txt was not written: oltmib_lpdet_global_get_1 ") ~= nil, status, folder() }, { true, 4,
  "a.txt\n" })
_, _, status = run "rpcctl backup /run/backups/b.txt --keep-going"
check.equal("--keep-going", { status, folder(), tool.count(read "/run/backups/b.txt", "\n# not kept: lpdet_%w+: ") },
  { 4, "a.txt\nb.txt\n", 2 })
run "rm /run/backups/b.txt"
shell.tell "start lpdet"
shell.tell "fault oltmib_portinfo_getn_1 after=3 drop"
_, errors, status = run "rpcctl backup /run/backups/a.txt --timeout 0.3"
check.equal("a daemon that stops in the middle", { errors:match("a.txt was not written: oltmib_portinfo_getn_1 "
  .. "") ~= nil,
  status, folder() }, { true, 5, "a.txt\n" })
shell.tell "clear"
check.equal("the old file is whole", read("/run/backups/a.txt"):find("\nlpdet_global ", 1, true) ~= nil, true)
_, errors, status = run "mount -t tmpfs -o size=8k none /run/backups && rpcctl backup /run/backups/a.txt"
check.equal("a full disk", { errors, status, folder() }, { "rpcctl: backup: /run/backups/a.txt: expected to write it, "
  .. "found "
  .. "No space left on device; is there room, and may you write there?\n", 1, "" })
run "umount /run/backups"
fails("backup /run/nowhere/a.txt", 1, "rpcctl: backup: /run/nowhere/a.txt: expected to write it, found mktemp: failed "
  .. "to "
  .. "create file via template ‘/run/nowhere/a.txt.XXXXXX’: No such file or directory; is there room, and may you "
  .. "write there?\n")
fails("backup /run/backups", 1, "rpcctl: backup: /run/backups: expected to write it, found /run/backups: Is a "
  .. "directory; "
  .. "is there room, and may you write there?\n")
-- nothing takes the place of what is no file
run "mkfifo /run/fifo; cat /run/fifo >/run/read & rpcctl backup /run/fifo svi; wait"
check.equal("into a pipe", { (run "test -p /run/fifo && echo yes"), (run "grep -c ^svi /run/read") }, { "yes\n",
  "3\n" })
run "ln -s open.txt /run/link.txt; rpcctl backup /run/link.txt svi"
check.equal("through a link", run "test -L /run/link.txt && echo yes", "yes\n")

-- A restore stops at the first row that fails, goes on when told to, and can be run again
file = assert(io.open("/run/three.txt", "w"))
file:write("svi vlan=20 name=s1\nlpdet_portinfo port=1 enabled=off\nvlaninfo vlan=20 name=v1\n")
file:close()
shell.tell "fault oltmib_lpdet_portinfo_set_1 error system_err"
report, errors = run "rpcctl restore /run/three.txt | grep -v alone"
check.equal("stopped", { report, errors:match("^rpcctl: lpdet_portinfo port=1 not restored: ") ~= nil },
  { 'svi vlan=20 name: "a \\"b\\"" -> s1\n1 changed, 0 added, 0 as they were, 1 not restored, 1 not tried '
    .. "(--keep-going tries them)\n", true })
check.equal("its status", select(3, run "rpcctl restore /run/three.txt >/dev/null"), 7)
report = run "rpcctl restore /run/three.txt --keep-going 2>/dev/null | grep -v alone"
check.equal("kept going", report, "vlaninfo vlan=20 name: video -> v1\n1 changed, 0 added, 1 as they were, 1 not "
  .. "restored\n")
shell.tell "clear"
report = run "rpcctl restore /run/three.txt | grep -v alone"
check.equal("run again", report, "lpdet_portinfo port=1 enabled: on -> off\n1 changed, 0 added, 2 as they were\n")

-- A daemon that dies in the middle of a restore
run "rpcctl set svi vlan=20 name=q"
run "rpcctl set lpdet_portinfo port=1 enabled=on"
shell.tell "fault oltmib_lpdet_portinfo_set_1 drop"
_, errors, status = run "rpcctl restore /run/three.txt --timeout 0.3 >/dev/null"
check.equal("a daemon that dies in the middle", { status, errors:match("did not answer in time") }, { 5,
  "did not answer in time" })
shell.tell "clear"
-- the daemon had carried it out before it fell silent
prints("restore /run/three.txt | tail -n 1", "0 changed, 0 added, 3 as they were\n")

-- What is there to read again: secrets that were kept, reals that the daemon may know better
run "rpcctl set account user=admin password=old; rpcctl backup /run/accounts.txt account snmp_community --show-secrets"
run "rpcctl set account user=admin password=new"
fails("diff /run/accounts.txt", 8, "", "account user=admin password: (set) -> (set)\n")
fails("diff /run/accounts.txt --show-secrets", 8, "", "account user=admin password: old -> new\n")
prints("restore /run/accounts.txt --show-secrets", "account user=admin password: new -> old\n"
  .. "1 changed, 0 added, 3 as they were\n")
prints("get account user=admin --fields password --show-secrets", "password\told\n")
run "rpcctl backup /run/ntp.txt ntp; rpcctl set ntp stratum=5 offset=0.25 delay=12.5"
prints("restore /run/ntp.txt", "ntp stratum: 5 -> 2\n1 changed, 0 added, 0 as they were\n")
prints("get ntp --fields offset,delay", "offset\t0.25\ndelay\t12.5\n")

-- All of a file: what is not kept, a blank line where anything is, rows by number and by text
run "rpcctl add account user=10; rpcctl add account user=9; rpcctl add account user=1x"
local about = "# Settings of a device, written by rpcctl backup. A row a line: the table, its key, its other fields.\n"
  .. "# rpcctl restore sends what differs, from top to bottom; rpcctl diff shows it.\n\n"
prints("backup - account", about .. "# not kept: account password: secret; --show-secrets keeps it\n\n"
  .. 'account user=9 number=0 level=0 text80a="" text80b="" enabled=off text32=""\n'
  .. 'account user=10 number=0 level=0 text80a="" text80b="" enabled=off text32=""\n'
  .. 'account user=1x number=0 level=0 text80a="" text80b="" enabled=off text32=""\n'
  .. 'account user=admin number=1 level=15 text80a="" text80b="" enabled=on text32=""\n'
  .. 'account user=guest number=2 level=1 text80a="" text80b="" enabled=on text32=""\n')
run "rpcctl add vlaninfo vlan=2 active=on"
check.equal("numbers in the order of numbers", { run "rpcctl backup - vlaninfo | sed 's/ active.*//'" },
  { about .. "vlaninfo vlan=1\nvlaninfo vlan=2\nvlaninfo vlan=10\nvlaninfo vlan=20\n", "", 0 })
run [[echo 'return { ["*"] = { ends = { 1 } }, mstp_if = { key = { "value1" } } }' >/run/wrong_key.lua]]
check.equal("rows that cannot be told apart", (run "LIBRPC_NAMES=/run/wrong_key.lua rpcctl backup - mstp_if"),
  about .. "# not kept: mstp_if: several rows have the key mstp_if value1=0; a file of names can tell more of it\n\n")

-- A table of one row, or none, that has none: all zeros, and the last of its units says so
shell.tell("fault oltmib_fdbparam_get_1 raw XID00000001" .. ("00000000"):rep(4 + 34) .. "00000001")
fails("get fdbparam", 6, "rpcctl: get: fdbparam: expected a row, found none; rpcctl rows TABLE shows every row, rpcctl "
  .. "add makes one\n")
prints("backup - fdbparam", about)
shell.tell("fault oltmib_ntp_get_1 raw XID00000001" .. ("00000000"):rep(4 + 402) .. "00000001")
prints("backup - ntp", about) -- nor is there anything that is not kept
shell.tell "clear"

-- Rows that cannot be compared or brought back, each way
local function write(path, lines)
  file = assert(io.open(path, "w"))
  file:write(lines)
  file:close()
end
write("/run/lost.txt", "vlanbitmapinfo vlan=3 bitmap=ff\nvlaninfo vlan=20 name=v2\n")
fails("restore /run/lost.txt --keep-going >/run/out; code=$?; grep -v alone /run/out; (exit $code)", 1,
  "rpcctl: vlanbitmapinfo vlan=3 not restored: its rows cannot be read; rpcctl health tells which daemons answer\n",
  "vlaninfo vlan=20 name: v1 -> v2\n1 changed, 0 added, 0 as they were, 1 not restored\n")
fails("diff /run/lost.txt", 1, "rpcctl: diff: vlanbitmapinfo: expected a table that can be compared, found that its "
  .. "rows cannot be read; rpcctl health tells which daemons answer\n")
write("/run/absent.txt", "lpdet_portinfo port=1 enabled=off\nvlanbitmapinfo vlan=3\nvlaninfo vlan=20 name=v3\n")
shell.tell "stop lpdet"
local absent = "oltmib_lpdet_portinfo_getn_1 (service lpdet, program 50018): the daemon has not registered with the "
  .. "port mapper [RPC: Program not registered]; start the service's daemon; rpcctl health tells which daemons answer\n"
fails("restore /run/absent.txt >/run/out; code=$?; grep -v alone /run/out; (exit $code)", 4,
  "rpcctl: lpdet_portinfo port=1 not restored: " .. absent,
  "0 changed, 0 added, 0 as they were, 1 not restored, 2 not tried (--keep-going tries them)\n")
check.equal("the status of the first of two failures",
  select(3, run "rpcctl restore /run/absent.txt --keep-going >/dev/null 2>&1"), 4)
write("/run/absent.txt", "lpdet_portinfo port=1 enabled=off\n")
fails("diff /run/absent.txt", 4, "rpcctl: " .. absent)
shell.tell "start lpdet"
shell.tell "fault oltmib_vlaninfo_set_1 raw XID000000010000000000000000000000000000000000000003"
write("/run/refused.txt", "vlaninfo vlan=20 name=v4\n")
fails("restore /run/refused.txt 2>&1 >/dev/null", 6, "", "rpcctl: vlaninfo vlan=20 not restored: "
  .. "expected status 0, found 3, the daemon's own\n")
shell.tell "clear"

-- diff of two files: what only one of them has, in their orders
write("/run/monday.txt", "svi vlan=1 name=a address=10.0.0.1/8\nsvi vlan=9 name=b\nlpdet_portinfo port=1\n")
write("/run/friday.txt", "svi vlan=3 name=z\nsvi vlan=1 name=c\n")
fails("diff /run/monday.txt /run/friday.txt", 8, "",
  "svi vlan=1 name: a -> c\n- svi vlan=9\n- lpdet_portinfo port=1\n+ svi vlan=3\n")
write("/run/less.txt", "svi vlan=3 name=z\n")
fails("diff /run/friday.txt /run/less.txt", 8, "", "- svi vlan=1\n")
fails("diff /run/less.txt /run/friday.txt", 8, "", "+ svi vlan=1\n")
prints("diff /run/less.txt /run/less.txt", "")
fails("diff /run/less.txt /run/friday.txt >/dev/full", 1, "rpcctl: standard output: expected room for all of it, found "
  .. "a write error; is there room, and may you write there?\n")

-- What a line may look like
write("/run/one.txt", "   \n  # svi vlan=1 name=q\n  svi\tvlan=1   name=\\x61b\\\\\\tc  \n"
  .. "svi vlan=2 name=\"\\x22 \\\"\"\n")
write("/run/other.txt", "svi vlan=1 name=-\nsvi vlan=2 name=-")
fails("diff /run/one.txt /run/other.txt", 8, "", 'svi vlan=1 name: ab\\\\\\tc -> -\nsvi vlan=2 name: "\\" \\"" -> -\n')
for line, expected in pairs {
  ["=x"] = "a table's name", ["svi vlan=20 x"] = "FIELD=VALUE", ['svi vlan=20 name="a"b'] = "FIELD=VALUE",
  ['svi vlan=20 name=a"b'] = "a value of name that ends, with escapes that there are",
  ['svi vlan=20 name="a\\x6"'] = "a value of name that ends, with escapes that there are",
} do
  write("/run/wrong.txt", line .. "\n")
  fails("diff /run/wrong.txt", 2, ('rpcctl: diff: /run/wrong.txt:1: expected %s, found "%s"\n'):format(expected,
    (line:gsub('[\\"]', "\\%0"))))
end
write("/run/wrong.txt", "portinfo port=1 field13=x\n") -- a field that nobody gave a name
fails("diff /run/wrong.txt", 2,
  'rpcctl: diff: /run/wrong.txt:1: oltmib_portinfo_set_1: field13: expected a whole number, found "x"\n')

-- A restore that cannot tell what it did does no more
shell.tell "clear"
write("/run/two.txt", "vlaninfo vlan=2 name=n1\nvlaninfo vlan=10 name=n2\n")
check.equal("its status", select(3, run "rpcctl restore /run/two.txt >/dev/full 2>&1"), 1)
prints("rows vlaninfo --fields vlan,name name~n?", "2\tn1\n")

check.finish()

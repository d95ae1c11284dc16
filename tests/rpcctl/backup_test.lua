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
rawset(record, "walks", function(list)
  local rows = walks(list)
  for i, all in ipairs(rows) do
    local turned = {}
    for n = #all, 1, -1 do
      turned[#turned + 1] = all[n]
    end
    rows[i] = turned
  end
  return rows, {}
end)
local order = {}
for _, entry in ipairs(settings.read(settings.tables("backup", { "vlaninfo", "mstp_if" }), {})[1].entries) do
  order[#order + 1] = entry.values.field1
end
rawset(record, "walks", walks)
check.equal("rows of a daemon that has them in no order", table.concat(order, " "), "1 10 20")
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

check.finish()

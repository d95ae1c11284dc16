-- What rpcctl's commands tell and show without a device: describe, list and completion,
-- watch, call and health with readings that are given here, terminals, and the way from
-- arguments to an exit status.
local caught = require "caught"
local check = require "check"
local clock = require "librpc.record.clock"
local ending = require "rpcctl.ending"
local options = require "rpcctl.options"
local subject = require "rpcctl.subject"
local terminal = require "rpcctl.terminal"

local ends, written = caught.ends, caught.written
local bold, red, plain = caught.bold, caught.red, caught.plain

-- What describe and list tell, with names of the test's own
local path = os.tmpname()
local file = assert(io.open(path, "w"))
file:write [[return { svi = { title = "Interfaces of VLANs", key = { "field1" },
  field1 = { name = "vlan", unit = "id", values = { [18] = "last", [2] = "two", [9] = "nine", [17] = "next" } },
  name = { title = "what is on its sign, in full, and where people look for it", secret = true },
  field3 = { name = "ip_address", title = "ip address" } } }]]
file:close()
assert(require "librpc.names".load(path))
os.remove(path)
local function says(name, words, given, room, coloured)
  return written(function() require("rpcctl.commands." .. name).run(words, given or {}) end, room, coloured)
end
local apis = "api\toperation\tservice\tprogram\tprocedure\trequest\treply\n"
  .. "oltmib_svi_get_1\tget\tnsminfo\t50004\t87\toltmib_sviEntry\toltmib_sviEntry\n"
local fields = "\nname\tfield\tkind\tsize\targument\treply\tvalue\n"
  .. "vlan\tfield1\tint\t\t1\t1\twhole number; two=2 nine=9 next=17 last=18; id; key\n"
  .. "name\tname\ttext\t32\t2\t2\ttext; secret; what is on its sign, in full, and where people look for it\n"
  .. "ip_address\tfield3\ttext\t20\t3\t3\ttext\ntext\ttext\ttext\t32\t4\t4\ttext\n"
  .. "oper\toper\tint\t\t5\t5\twhole number\nres\tres\tint\t\t6\t6\twhole number\n"
check.equal("describe a table in a pipe", says("describe", { "svi" }), apis
  .. "oltmib_svi_getn_1\tgetn\tnsminfo\t50004\t88\toltmib_sviEntry\toltmib_sviEntry\n"
  .. "oltmib_svi_set_1\tset\tnsminfo\t50004\t89\toltmib_sviEntry\tint\n" .. fields)
check.equal("an API", says("describe", { "oltmib_svi_get_1" }), apis .. fields)
check.equal("on a terminal", says("describe", { "svi" }, {}, 100), [[
api                operation  service  program  procedure  request          reply
oltmib_svi_get_1   get        nsminfo  50004    87         oltmib_sviEntry  oltmib_sviEntry
oltmib_svi_getn_1  getn       nsminfo  50004    88         oltmib_sviEntry  oltmib_sviEntry
oltmib_svi_set_1   set        nsminfo  50004    89         oltmib_sviEntry  int

name        field   kind  size  argument  reply  value
vlan        field1  int         1         1      whole number; two=2 nine=9 next=17 last=18; id; key
name        name    text  32    2         2      text; secret; what is on its sign, in full, and
                                                 where people look for it
ip_address  field3  text  20    3         3      text
text        text    text  32    4         4      text
oper        oper    int         5         5      whole number
res         res     int         6         6      whole number
]])
check.equal("values where there is no room: twenty columns for them", says("describe", { "svi" }, {}, 40):match(
  "\n\n(.-\nip)"), [[
name        field   kind  size  argument  reply  value
vlan        field1  int         1         1      whole number; two=2
                                                 nine=9 next=17
                                                 last=18; id; key
name        name    text  32    2         2      text; secret; what
                                                 is on its sign, in
                                                 full, and where
                                                 people look for it
ip]])
check.equal("records' names where there is room for all of the line", {
  says("describe", { "svi" }, {}, 91):match("_getn_1[^\n]*"),
  says("describe", { "svi" }, {}, 90):match("_getn_1[^\n]*"),
  says("describe", { "svi" }, {}, 90):match("^[^\n]*") }, {
  "_getn_1  getn       nsminfo  50004    88         oltmib_sviEntry  oltmib_sviEntry",
  "_getn_1  getn       nsminfo  50004    88", "api                operation  service  program  procedure" })
check.equal("in colours", says("describe", { "svi" }, {}, 100, true):match("^[^ ]*"), bold .. "api" .. plain)
local function line_of(name, field)
  return says("describe", { name }):match("\n(" .. field .. "\t[^\n]*)")
end
check.equal("of fields that arguments carry in another way", {
  line_of("devinfo", "mac"), line_of("dosglobal", "count1"), line_of("acl", "count"), line_of("devinfo", "int1"),
  line_of("qosifcfg", "list1"), line_of("ntp", "real1"), line_of("opticaldetail", "alarm"),
  says("describe", { "devinfo" }):match("\nres\t.*"), says("describe", { "vlanbitmapinfo" }):match("\n\n.-\ntext"),
}, {
  "mac\tmac\t6\t3\t3\tMAC address; argument: text copied as raw bytes",
  "count1\tcounter\t\t7\t7\t64-bit counter; argument: not read", "count\tcounter\t\t\t19\t64-bit counter",
  "int1\tunsigned\t\t8\t8\twhole number from 0", "list1\tlist\t8\t3\t3\tnumbers between commas",
  "real1\treal\t\t11\t11\tnumber", "alarm\thex\t32\t17\t17\tbytes in hex digits",
  "\nres\tint\t\t11\t10\twhole number\noper\tint\t\t10\t\twhole number\n",
  "\n\nfield\tkind\tsize\targument\treply\tvalue\nfield1\tint\t\t1\t\twhole number\nbit\ttext\t684\t2\t\ttext\n"
    .. "field3\ttext\t512\t3\t\ttext\nfield4\ttext\t512\t4\t\ttext\ntext",
})
local svi = "svi\tnsminfo\tget getn set\tInterfaces of VLANs\n"
check.equal("list finds names and titles in either case", { says("list", { "SVI" }, { tables = true }),
  says("list", { "faces of" }, { tables = true }), says("list", { "Inter*VL??s" }, { tables = true }),
  says("list", { "faces of" }, { format = "csv" }):match("^[^\n]*\n[^\n]*\n") }, { svi, svi, svi,
  "name,service,program,procedure,operation,table\noltmib_svi_get_1,nsminfo,50004,87,get,svi\n" })
check.equal("a line of names", says("list", { "lpdet_global_s" }, { header = true }),
  "name\tservice\tprogram\tprocedure\toperation\ttable\n"
  .. "oltmib_lpdet_global_set_1\tlpdet\t50018\t3\tset\tlpdet_global\n")

-- What commands take
for usage, names in pairs { ["TABLE [FILTER]..."] = "get rows watch", ["TABLE FIELD=VALUE..."] = "set add",
  ["FILE [TABLE]..."] = "backup", ["FILE [FILE]"] = "diff", ["FILE"] = "restore", ["API [ARGUMENT]"] = "call",
  ["[PATTERN]"] = "list", ["[COMMAND]"] = "help", ["TABLE"] = "describe", [""] = "health" } do
  for name in names:gmatch("%a+") do
    check.equal(name .. " takes", options.usage(require("rpcctl.commands." .. name)), usage)
  end
end
for word, name in pairs { ["--limit"] = "rows", ["--count"] = "watch" } do
  local taker = require("rpcctl.commands." .. name)
  check.row(options.parse, { taker, { word, "1" }, 1 }, { {}, { [word:sub(3)] = 1 } })
  for _, number in ipairs { "0", "1.5" } do
    check.row(ends, { options.parse, taker, { word, number }, 1 }, { ("rpcctl: %s: expected %s and a whole number from "
      .. "1, found '%s'; see rpcctl %s --help\n"):format(name, word, number, name), 2 })
  end
end
for name, expected in pairs { list = "tables format json header timeout help",
  health = "format json header timeout help",
  get = "after end format json header fields show-secrets timeout help",
  rows = "limit sort after end format json header fields show-secrets timeout help",
  watch = "interval count after end format json header fields show-secrets timeout help" } do
  local found = {}
  for i, option in ipairs(options.of(require("rpcctl.commands." .. name))) do
    found[i] = option[1]
  end
  check.equal("options of " .. name, table.concat(found, " "), expected)
end

-- What may follow on a command line, and what it means
local sign = "\twhat is on its sign, in full, and where people look for it\n"
for line, expected in pairs {
  ["he"] = "health\task every daemon at once whether it is well\n"
    .. "help\ttell what rpcctl can do, or one of its commands\n",
  ["--"] = "--help\n--version\n", ["nonsense "] = "", ["health "] = "", ["diff a "] = "", ["help list "] = "",
  ["help li"] = "list\tlist the APIs, or those whose name, service or title matches\n",
  ["rows pmi"] = "pminfo\n", ["rows vlanbitm"] = "", ["rows sv"] = "svi\tInterfaces of VLANs\n",
  ["set portrat"] = "", ["set vlanbitm"] = "vlanbitmapinfo\n", ["set sv"] = "svi\tInterfaces of VLANs\n",
  ["describe vlanbitm"] = "vlanbitmapinfo\n", ["describe oltmib_vlanbitm"] = "oltmib_vlanbitmapinfo_set_1\n",
  ["describe svi "] = "", ["list lp"] = "lpdet\tloop detection\n", ["call oltmib_svi_s"] = "oltmib_svi_set_1\n",
  ["call svi"] = "", ["backup file lp"] = "lpdet_global\nlpdet_portinfo\nlpdet\tloop detection\n",
  ["backup file svi portrat"] = "", ["backup file svi sv"] = "svi\tInterfaces of VLANs\n", ["backup lp"] = "",
  ["rows svi n"] = "name=" .. sign, ["rows svi i"] = "ip_address=\tip address\n", ["rows svi v"] = "vlan=\n",
  ["get oltmib_svi_get_1 v"] = "vlan=\n", ["rows svi vlan=1 v"] = "vlan=\n", ["rows svi o"] = "oper=\n",
  ["rows pminfo si"] = "sid=\n", ["rows vlanbitmapinfo b"] = "", ["set vlanbitmapinfo b"] = "bit=\n",
  ["set svi o"] = "", ["set svi r"] = "", ["set devinfo ho"] = "hostname=\n", ["set portstat counter9"] = "",
  ["rows svi vlan="] = "vlan=two\nvlan=nine\nvlan=next\nvlan=last\n", ["rows svi vlan=n"] = "vlan=nine\nvlan=next\n",
  ["rows svi vlan<t"] = "vlan<two\n", ["rows svi vlan>=t"] = "vlan>=two\n", ["rows svi field1!=t"] = "field1!=two\n",
  ["rows svi vlan!~t"] = "vlan!~two\n", ["rows svi name="] = "", ["set svi vlan=l"] = "vlan=last\n",
  ["rows svi --sort n"] = "name" .. sign, ["rows svi --sort=i"] = "--sort=ip_address\tip address\n",
  ["rows svi --sort v"] = "vlan\n", ["rows svi --fields a"] = "all\n",
  ["rows svi --fields vlan,n"] = "vlan,name" .. sign,
  ["rows svi --fields=vlan,oper,v"] = "--fields=vlan,oper,vlan\n", ["rows svi --fields x,a"] = "x,all\n",
  ["rows svi --end r"] = "res=\n", ["set --where vlan=2 sv"] = "svi\tInterfaces of VLANs\n",
  ["set svi --where v"] = "vlan=\n", ["set --where v"] = "", ["rows svi --limit "] = "", ["rows svi --bogus="] = "",
  ["rows --limit 3 svi v"] = "vlan=\n", ["rows --limit 3 sv"] = "svi\tInterfaces of VLANs\n",
  ["rows --limit=3 svi v"] = "vlan=\n",
  ["rows --json svi v"] = "vlan=\n", ["rows --format "] = "table\nvertical\ntsv\ncsv\njson\njsonl\nkv\n",
  ["rows svi --format=js"] = "--format=json\n--format=jsonl\n", ["rows svi --li"] = "--limit=\tat most so many rows\n",
  ["rows svi --he"] = "--header\ta line of names with tsv, too\n--help\tprint this\n",
} do
  local words = { "--complete" }
  for word in (line .. " "):gmatch("([^ ]*) ") do
    words[#words + 1] = word
  end
  check.equal("--complete " .. line, written(function() require "rpcctl.complete".print(words) end), expected)
end
local every = written(function() require "rpcctl.complete".print { "--complete" } end)
check.equal("--complete", { every:match("^[^\t]*"), every:match("\n([^\t]*)\t[^\n]*\n%-%-help\n%-%-version\n$") },
  { "list", "help" })

-- What watch shows of readings that are given here: at a time, rows, or a failure
local subjects = subject.open
local pauses, can_move = {}, true
local function watched(given, readings, settings, room, coloured)
  local n, at = 0, 0
  package.loaded["rpcctl.commands.watch"] = nil
  package.loaded["librpc.record.clock"] = function() return at end
  rawset(subject, "open", function(...)
    local this = subjects(...)
    rawset(this, "each", function(_, _, _, take)
      n = n + 1
      at = readings[n].at or n
      if readings[n].message then
        return nil, readings[n].message, "timed_out"
      end
      for _, row in ipairs(readings[n]) do
        take(row)
      end
      return true
    end)
    return this
  end)
  local pause, moves, listen, date = terminal.pause, terminal.can_move, terminal.listen, os.date
  pauses = {}
  terminal.can_move = function() return can_move and room ~= nil end
  terminal.listen = function(run) return run(true) end
  rawset(os, "date", function() return "TIME" end)
  local text
  local complaints, status = ends(function()
    text = written(function(_, unsent)
      terminal.pause = function(seconds, listening)
        pauses[#pauses + 1] = seconds
        check.equal("what was read is on its way", unsent(), false)
        return listening and n == settings.pressed
      end
      if settings.pressed then -- standard input and errors are a terminal's, too
        terminal.is = function(descriptor) return descriptor ~= 1 or room ~= nil end
      end
      terminal.size = function() return room, settings.height or 24 end
      given.count = given.count or #readings
      local ok, problem = pcall(require("rpcctl.commands.watch").run, { settings.name }, given)
      settings.status = not ok and (getmetatable(problem) == ending.Exit and problem.status or problem) or nil
    end, room, coloured)
  end)
  terminal.pause, terminal.can_move, terminal.listen = pause, moves, listen
  rawset(os, "date", date)
  rawset(subject, "open", subjects)
  package.loaded["librpc.record.clock"] = clock
  check.equal("watch came to its end", { status, settings.status }, { nil, settings.ends })
  return text, complaints
end

local ports = { { ifx = 1, counter9 = "100" }, { ifx = 2, counter9 = "5" }, at = 10 }
check.equal("watch in a pipe", { watched({ fields = "ifx,counter9" }, { ports,
  { { ifx = 1, counter9 = "150" }, { ifx = 2, counter9 = "5" }, at = 10.5 },
  { { ifx = 2, counter9 = "5" }, { ifx = 3, counter9 = "1" }, at = 14 },
  { { ifx = 2, counter9 = "6" }, { ifx = 3, counter9 = "1" }, at = 14 },
  { { ifx = 2, counter9 = "1006" }, { ifx = 3, counter9 = "1" }, at = 17 } }, { name = "portstat" }) }, {
  "TIME\trow\t1\t100\t\nTIME\trow\t2\t5\t\nTIME\tchanged\t1\t150\t100\nTIME\tnew\t3\t1\t\nTIME\tgone\t1\t150\t\n"
  .. "TIME\tchanged\t2\t6\t\nTIME\tchanged\t2\t1006\t333.3\n", "" })
check.equal("it waits between the readings", pauses, { 2, 2, 2, 2 })
check.equal("rows of one key are told apart by their order", { watched({ fields = "name", interval = 0.5 }, {
  { { field1 = 1, vlan = 1, name = "a" }, { field1 = 1, vlan = 1, name = "b" } },
  { { field1 = 1, vlan = 1, name = "a" }, { field1 = 1, vlan = 1, name = "c" } },
  { { field1 = 1, vlan = 1, name = "a" } },
}, { name = "svi" }) }, { "TIME\trow\t(set)\nTIME\trow\t(set)\nTIME\tchanged\t(set)\nTIME\tgone\t(set)\n", "" })
check.equal("as long as was said", pauses, { 0.5, 0.5 })
check.equal("JSON, a line a row", watched({ fields = "vlan", json = true }, { { { field1 = 1, vlan = "two" } } },
  { name = "svi" }), '{"time":"TIME","event":"row","vlan":"two"}\n')
local one, down = { { field1 = 1, vlan = 1 } }, { message = "down" }
local down_text = "rpcctl: down; is the daemon stuck? rpcctl health tells which daemons answer; read the row before "
  .. "you repeat a change\n"
check.equal("a failure is told of once, until the daemon comes back", { watched({ fields = "vlan" }, { one, down, down,
  one, down, { message = "out" } }, { name = "svi" }) },
  { "TIME\trow\t1\n", down_text .. down_text .. (down_text:gsub("down", "out")) })
check.equal("where nothing was read, it ends", { watched({}, { down, one }, { name = "svi", ends = 5 }) },
  { "", down_text })
check.equal("a line of names where no row came", watched({ fields = "vlan", format = "csv" }, { {} }, { name = "svi" }),
  "time,event,vlan\n")
check.equal("no key is read where a pipe is written", { watched({ fields = "vlan" }, { one, one, one }, { name = "svi",
  pressed = 1 }), #pauses }, { "TIME\trow\t1\n", 2 })

-- In place on a terminal, changed cells in colours, as many rows as there is room for
local listed = {}
for i = 1, 8 do
  listed[i] = { ifx = i, counter9 = "7" }
end
local function lines_of(text, ending_of_line)
  return (text:gsub("\n", ending_of_line .. "\n"))
end
check.equal("on a terminal", watched({ fields = "ifx,counter9", interval = 1.5 }, { ports,
  { { ifx = 1, counter9 = "150" }, { ifx = 3, counter9 = "5" }, at = 12 } }, { name = "portstat" }, 80, true),
  "\27[2J\27[H" .. lines_of(("portstat  TIME  every 1.5 s\n\nH(ifx)  H(counter9)  H(counter9/s)\n1    100\n2    5\n"
    ):gsub("H%(([%w/]+)%)", bold .. "%1" .. plain):gsub("100", "100       "):gsub("2    5", "2    5         "), "\27[K")
  .. "\27[J\27[H" .. lines_of(("portstat  TIME  every 1.5 s\n\nH(ifx)  H(counter9)  H(counter9/s)\n"
    .. "1    C(150)       25\nC(3)    C(5)         \n"):gsub("H%(([%w/]+)%)", bold .. "%1" .. plain):gsub("C%((%d+)%)",
    "\27[1;33m%1" .. plain), "\27[K") .. "\27[J")
check.equal("rows there is no room for are counted", watched({ fields = "ifx" }, { listed }, { name = "portstat",
  height = 8 }, 40, true), "\27[2J\27[H" .. lines_of("portstat  TIME  every 2 s\n\n" .. bold .. "ifx" .. plain
  .. "\n1\n2\n3\n\27[2m5 more rows" .. plain .. "\n", "\27[K") .. "\27[J")
check.equal("all there is room for", watched({ fields = "ifx" }, { listed }, { name = "portstat", height = 12 }, 40),
  "\27[2J\27[H" .. lines_of("portstat  TIME  every 2 s\n\nifx\n1\n2\n3\n4\n5\n6\n7\n8\n", "\27[K") .. "\27[J")
check.equal("rows and notes in as many lines", watched({ fields = "ifx,counter9" }, { listed }, { name = "portstat",
  height = 8 }, 5), "\27[2J\27[H" .. lines_of("po...\n\nifx\n1\n2\nno...\n6 ...\n", "\27[K") .. "\27[J")
can_move = false
check.equal("one below the other, with what went wrong and what does not fit",
  watched({ fields = "ifx,counter9" }, { ports, down }, { name = "portstat" }, 5),
  "po...\n\nifx\n1\n2\nno...\n\npo...\n\nifx\n1\n2\ndown\nno...\n\n")
check.equal("q ends it", { watched({ fields = "vlan" }, { one, one, one }, { name = "svi", pressed = 2 }, 40) }, {
  (("svi  TIME  every 2 s, q ends\n\nvlan\n1\n\n"):rep(2)), "" })
check.equal("another form on a terminal", watched({ fields = "vlan", format = "vertical" }, { one }, { name = "svi" },
  40), "time   TIME\nevent  row\nvlan   1 id\n")

-- Values of secrets, fields by either name
local interfaces = subject.open("get", "svi")
check.equal("secrets", { interfaces:shown({ secret = true }, "x"), interfaces:shown({ secret = true }, ""),
  interfaces:shown({ secret = true }), interfaces:shown({ secret = true }, "x", true), interfaces:shown({}, "x") },
  { "(set)", "", "", "x", "x" })
check.row(ends, { interfaces.field, interfaces, "vlna" }, { "rpcctl: get: svi: expected one of its fields (did you "
  .. 'mean vlan?), found "vlna"; rpcctl describe TABLE shows the fields\n', 2 })

check.row(interfaces.assigned, { interfaces, { "vlan=1", "name=a=b", "text=" } },
  { { field1 = "1", name = "a=b", text = "" } })
for words, message in pairs { [{ "20" }] = "FIELD=VALUE, found '20'", [{ "vlan>20" }] = "FIELD=VALUE, found 'vlan>20'",
  [{ "vlan=1", "field1=2" }] = "each field once, found 'field1' again" } do
  check.row(ends, { interfaces.assigned, interfaces, words },
    { "rpcctl: get: expected " .. message .. "; see rpcctl get --help\n", 2 })
end

-- A terminal that is given here: what programs print and how they end, the environment,
-- keys at a time each; the commands that were run
local function on_terminal(settings, called)
  local execute, popen, getenv, standard_input = os.execute, io.popen, os.getenv, io.stdin
  local at, ran = 0, {}
  local function put(place, name, value)
    rawset(place, name, value)
  end
  put(os, "execute", function(line)
    ran[#ran + 1] = line
    return (settings.fails or ""):find(line, 1, true) and (settings.nothing or 256) or settings.success or 0
  end)
  put(io, "popen", function(line)
    ran[#ran + 1] = line
    local printed = (settings.prints or {})[line:match("^[^ ]+ ?[^ ]*")]
    return { read = function() return printed end, close = function() end }
  end)
  put(os, "getenv", function(name) return (settings.environment or {})[name] end)
  put(io, "stdin", { setvbuf = function(_, mode) ran[#ran + 1] = mode end, read = function(_, most)
    at = at + 0.25
    return settings.keys[at / 0.25]:sub(1, most)
  end })
  package.loaded["rpcctl.terminal"] = nil
  package.loaded["librpc.record.clock"] = function() return at end
  local results = { pcall(called, require "rpcctl.terminal") }
  package.loaded["rpcctl.terminal"], package.loaded["librpc.record.clock"] = terminal, clock
  put(os, "execute", execute)
  put(io, "popen", popen)
  put(os, "getenv", getenv)
  put(io, "stdin", standard_input)
  return results, ran
end

local function each_is(its) return { its.is(1), its.is(1), its.is(0), its.is(0) } end
for _, ends_as in ipairs { { success = 0, nothing = 256 }, { success = true, nothing = false } } do
  ends_as.fails = "test -t 0"
  check.equal("each descriptor is asked of once", { on_terminal(ends_as, each_is) },
    { { true, { true, true, false, false } }, { "test -t 1", "test -t 0" } })
end
local function moves_and_colours(its) return { its.can_move(), its.is_coloured() } end
for _, row in ipairs {
  { { TERM = "xterm" }, true, true }, { { TERM = "dumb" }, false, false }, { { TERM = "" }, false, false },
  { {}, false, false }, { { TERM = "xterm", NO_COLOR = "" }, true, true },
  { { TERM = "xterm", NO_COLOR = "1" }, true, false },
} do
  check.equal("moves and colours", on_terminal({ environment = row[1] }, moves_and_colours),
    { true, { row[2], row[3] } })
end
check.equal("neither in a pipe", on_terminal({ environment = { TERM = "xterm" }, fails = "test -t 1" },
  moves_and_colours), { true, { false, false } })
local function sizes(its) return { its.size() } end
for _, row in ipairs {
  { "40 100", {}, 100, 40 }, { "40 0", { COLUMNS = "70", LINES = "9" }, 70, 40 },
  { "0 100", { COLUMNS = "70", LINES = "9" }, 100, 9 }, { "0 0", {}, 80, 24 }, { nil, { COLUMNS = "70" }, 70, 24 },
  { "1 1", { COLUMNS = "70", LINES = "9" }, 1, 1 },
} do
  check.equal("its size", on_terminal({ prints = { ["stty size"] = row[1] }, environment = row[2] }, sizes),
    { true, { row[3], row[4] } })
end
check.equal("a pause", { on_terminal({ prints = {} }, function(its) return its.pause(0.25) end) },
  { { true, false }, { "sleep 0.250" } })
for keys, expected in pairs { ["--q-"] = true, ["-Q--"] = true, ["----q"] = false, ["xyz-q"] = false } do
  local list = {}
  for key in keys:gmatch(".") do
    list[#list + 1] = key == "-" and "" or key
  end
  check.equal("keys " .. keys, on_terminal({ keys = list }, function(its) return its.pause(1, true) end),
    { true, expected })
end
local unbuffered = "stty -icanon -echo min 0 time 2 2>/dev/null"
check.equal("a key of several that were pressed", on_terminal({ keys = { "qx" } }, function(its)
  return its.pause(1, true)
end), { true, true })
local function listens(its)
  local heard
  its.listen(function(listening) heard = listening end)
  return heard
end
check.equal("keys are heard, and the terminal is as before afterwards", {
  on_terminal({ prints = { ["stty -g"] = "4500:5:bf" } }, listens) },
  { { true, true }, { "test -t 0", "stty -g 2>/dev/null", unbuffered, "no", "stty 4500:5:bf" } })
check.equal("also where it ends by an error", { on_terminal({ prints = { ["stty -g"] = "speed=9" } }, function(its)
  its.listen(function() error({ "x" }, 0) end)
end) }, { { false, { "x" } }, { "test -t 0", "stty -g 2>/dev/null", unbuffered, "no", "stty speed=9" } })
for _, settings in ipairs { { fails = "test -t 0", prints = { ["stty -g"] = "4500:5:bf" } }, { prints = {} },
  { prints = { ["stty -g"] = "4500; reboot" } }, { prints = { ["stty -g"] = "4500" }, fails = unbuffered } } do
  local results, ran = on_terminal(settings, listens)
  check.equal("no keys are heard", { results, ran[#ran]:match("^stty 4") }, { { true, false } })
end

-- What changes print, and ask
local changes = require "rpcctl.changes"
local changed = { res = { before = 0, after = 1 }, name = { before = "x", after = "" },
  text = { before = "", after = 'a "b"' }, ip_address = { before = "a b", after = "a'b" }, vlan = { after = "two" } }
check.equal("changes", written(function() changes.print(interfaces, changed, "row ") end), "row vlan: -> two\n"
  .. "row name: (set) -> \"\"\nrow ip_address: \"a b\" -> a'b\nrow text: \"\" -> \"a \\\"b\\\"\"\nrow res: 0 -> 1\n")
check.equal("with secrets", written(function() changes.print(interfaces, { name = changed.name }, nil, true) end),
  "name: x -> \"\"\n")
check.equal("a quote", written(function()
  changes.print(interfaces, { text = { before = '"', after = '"b' } }, "")
end), 'text: "\\"" -> "\\"b"\n')
check.equal("as JSON", { changes.json(interfaces, changed), changes.json(interfaces, { name = changed.name }, true) }, {
  '{"vlan":{"after":"two"},"name":{"before":"(set)","after":""},"ip_address":{"before":"a b","after":"a\'b"},'
  .. '"text":{"before":"","after":"a \\"b\\""},"res":{"before":0,"after":1}}', '{"name":{"before":"x","after":""}}' })
for _, row in ipairs { { "y", true }, { "  Yes", true }, { "n", false }, { "", false }, { nil, false }, { "my", false },
  { "y", false, 0 }, { "y", false, 2 } } do
  local is, standard_input = terminal.is, io.stdin
  terminal.is = function(descriptor) return descriptor ~= row[3] and descriptor ~= 3 and descriptor ~= 1 end
  rawset(io, "stdin", { read = function() return row[1] end })
  check.row(ends, { changes.confirm, "Change 2 rows?" }, { row[3] and "" or "Change 2 rows? [y/N] ", row[2] })
  rawset(io, "stdin", standard_input)
  terminal.is = is
end
for status, expected in pairs { [0] = false, [1] = "1", [-1] = "-1" } do
  check.row(ends, { changes.check_status, { name = "api" }, status }, { expected and "rpcctl: api: expected status 0, "
    .. "found " .. expected .. ", the daemon's own\n" or "", expected and 6 or "nil" })
end
check.row(ends, { changes.check_status, { name = "api" }, false }, { "", "nil" })
written(function(_, unsent)
  local standard_error = io.stderr
  ending.write("a row\n")
  rawset(io, "stderr", { write = function()
    check.equal("what was printed comes before a complaint", unsent(), false)
  end })
  ending.complain("x")
  rawset(io, "stderr", standard_error)
end)

-- call: secrets of a reply's text, and its forms
local calls = require "librpc.calls"
local function called(text, given, name, argument)
  local all, got = calls.all, nil
  rawset(calls, "all", function(list, seconds)
    got = { list, seconds }
    return { text }, { { message = "down", code = "timed_out" } }
  end)
  given.call_seconds = 3
  local printed
  local complaints, status = ends(function()
    printed = written(function()
      local ok, problem = pcall(require "rpcctl.commands.call".run, { name or "oltmib_svi_get_1", argument }, given)
      given.status = not ok and (getmetatable(problem) == ending.Exit and problem.status or problem) or nil
    end)
  end)
  rawset(calls, "all", all)
  check.equal("call came to its end", status, nil)
  return { printed, complaints, given.status or 0, got and got[1][1] or {}, got and got[2] or 0 }
end
local plainly = { "oltmib_svi_get_1", "" }
check.equal("a secret", called("20&x&10.0.0.1/8&&0&0", {}), { "20&(set)&10.0.0.1/8&&0&0\n", "", 0, plainly, 3 })
check.equal("an empty one", called("20&&a&b&0&0", {}, nil, "20"), { "20&&a&b&0&0\n", "", 0,
  { "oltmib_svi_get_1", "20" }, 3 })
check.equal("one that is asked for", called("20&x&a&&0&0", { ["show-secrets"] = true }), { "20&x&a&&0&0\n", "", 0,
  plainly, 3 })
check.equal("as JSON", called('20&x&"&&0&0', { json = true }), { '"20&(set)&\\"&&0&0"\n', "", 0, plainly, 3 })
check.equal("escaped", called("20&x&a\27&&0&0", {}), { "20&(set)&a\\x1b&&0&0\n", "", 0, plainly, 3 })
check.equal("raw", called("20&x&a\27&&0&0", { raw = true }), { "20&(set)&a\27&&0&0\n", "", 0, plainly, 3 })
for _, text in ipairs { "20&x&a&b&&0&0", "20&x&a&0&0", "" } do
  check.equal("a reply of other fields", called(text, {}), { "", "rpcctl: oltmib_svi_get_1: expected a reply whose "
    .. "secrets can be told apart, found another; --show-secrets prints it; rpcctl health tells which daemons answer\n",
    1, plainly, 3 })
end
check.equal("a table without secrets", called("any&thing", {}, "oltmib_route_get_1"), { "any&thing\n", "", 0,
  { "oltmib_route_get_1", "" }, 3 })
check.equal("a status", called("0", {}, "oltmib_svi_set_1", "1&x"), { "0\n", "", 0, { "oltmib_svi_set_1", "1&x" }, 3 })
check.equal("a failure", called(nil, {}), { "", down_text, 5, plainly, 3 })
check.equal("no such API", called("", {}, "oltmib_svi_gte_1"), { "", "rpcctl: librpc: expected the name of an API (did "
  .. 'you mean oltmib_svi_get_1?), found "oltmib_svi_gte_1"; rpcctl list shows every API, rpcctl list --tables every '
  .. "table\n", 3, {}, 0 })

-- health: what each failure is called, in a pipe and on a terminal
local function health_of(list, given, room, coloured)
  local services = calls.services
  local waited, status
  rawset(calls, "services", function(seconds)
    waited = seconds
    return list
  end)
  local printed
  local complaints = ends(function()
    printed = written(function()
      local ok, problem = pcall(require "rpcctl.commands.health".run, {}, given)
      status = not ok and (getmetatable(problem) == ending.Exit and problem.status or problem) or 0
    end, room, coloured)
  end)
  rawset(calls, "services", services)
  return { printed, complaints, status, waited }
end
local function service(name, code, reason)
  return { service = name, program = 1, title = "t", port = not code and 7 or nil,
    seconds = not code and 0.0125 or nil, failure = code and { code = code, details = { reason = reason } } or nil }
end
check.equal("health of all", health_of({ service "a", service "b" }, {}),
  { "a\t1\twell\t7\t12.5\tt\t\nb\t1\twell\t7\t12.5\tt\t\n", "", 0, 2 })
check.equal("of some", health_of({ service "a", service("b", "rejected", "why"), service("c", "bad_reply"),
  service("d", "refused"), service("e", "not_sent"), service("f", "failed") }, { timeout = 5 }),
  { "a\t1\twell\t7\t12.5\tt\t\nb\t1\trejects\t\t\tt\twhy\nc\t1\tstrange\t\t\tt\tbad_reply\nd\t1\tgone\t\t\tt\trefused\n"
  .. "e\t1\tstuck\t\t\tt\tnot_sent\nf\t1\tfailed\t\t\tt\tfailed\n",
  "rpcctl: health: expected all services to be well, found b rejects, c strange, d gone, e stuck, f failed\n", 7, 5 })
check.equal("of none", health_of({ service("a", "no_portmapper", "why"), service("b", "no_portmapper", "so") }, {}),
  { "a\t1\tunknown\t\t\tt\twhy\nb\t1\tunknown\t\t\tt\tso\n", "rpcctl: health: expected all services to be well, found "
  .. "none (why); it hangs or is slow: restart rpcbind\n", 4, 2 })
check.equal("interrupted", health_of({ service "a", service("b", "interrupted") }, {}),
  { "a\t1\twell\t7\t12.5\tt\t\n", "", 130, 2 })
check.equal("on a terminal", health_of({ service "a", service("b", "no_daemon", "why") }, {}, 80),
  { "service  program  state   port  ms      title  reason\na        1        well    7     12.500  t      \n"
  .. "b        1        absent  -     -       t      why\n", "rpcctl: health: expected all services to be well, "
  .. "found b absent\n", 4, 2 })
local shown = health_of({ service "a", service("b", "no_daemon", "why") }, {}, 80, true)[1]
check.equal("in colours", { shown:match "(%S*)    7     12", shown:match "(%S*)  %-" },
  { "\27[32mwell" .. plain, red .. "absent" .. plain })
check.equal("below one another", health_of({ service("b", "timed_out", "why") }, { format = "vertical" }, 80)[1],
  "service  b\nprogram  1\nstate    stuck\ntitle    t\nreason   why\n")

-- From arguments to an exit status
local main = require "rpcctl.main"
local function ran(arguments, run)
  local commands = package.loaded["rpcctl.commands.list"]
  local given
  package.loaded["rpcctl.commands.list"] = { name = "list", summary = "s", run = function(_, options_given)
    given = options_given
    run()
  end }
  local printed, status
  local complaints = ends(function()
    printed = written(function() status = main(arguments, "/none") end)
  end)
  package.loaded["rpcctl.commands.list"] = commands
  return { status, printed, complaints:match("^[^\n]*"), given and given.call_seconds }
end
check.equal("done", ran({ "list" }, function() ending.write "x" end), { 0, "x", "", 25 })
check.equal("a time", ran({ "list", "--timeout", "3" }, function() end), { 0, "", "", 3 })
check.equal("given up", ran({ "list" }, function() ending.give_up("out", "no_daemon") end),
  { 4, "", "rpcctl: out; start the service's daemon; rpcctl health tells which daemons answer", 25 })
check.equal("needed and there", ran({ "list" }, function() ending.write(ending.need("x", "out", "no_row")) end)[1], 0)
check.equal("needed and not there", ran({ "list" }, function() ending.need(nil, "out", "daemon_status") end),
  { 6, "", "rpcctl: out", 25 })
check.equal("Ctrl-C", { ran({ "list" }, function() error("interrupted!", 0) end),
  ran({ "list" }, function() error("a: interrupted! b", 0) end) }, { { 130, "", "", 25 }, { 130, "", "", 25 } })
check.equal("a mistake of its own", ran({ "list" }, function() error("oh", 0) end), { 1, "", "rpcctl: oh", 25 })
check.equal("too many words", ran({ "list", "a" }, function() end), { 2, "", "rpcctl: list: expected no arguments, "
  .. "found 'a'; see rpcctl list --help" })
check.equal("a version that nobody wrote", ran({ "--version" }), { 0, "rpcctl of unknown version\n", "" })
package.loaded["rpcctl.version"] = "9.8.7"
check.equal("one that installing wrote", ran({ "--version" }), { 0, "rpcctl 9.8.7\n", "" })
package.loaded["rpcctl.version"] = nil
for _, words in ipairs { { "help", "health" }, { "health", "--help" }, { "health", "-h" } } do
  check.equal("help", ran(words), { 0, [[
rpcctl health [OPTION]...

Ask every daemon at once whether it is well.

Each is called by the null procedure, which does nothing. state is well; absent
(not registered with the port mapper); gone (registered, and nothing listens
there); stuck (registered, and silent); rejects, strange (a reply that is none)
or unknown (the port mapper does not answer). The exit status is 0 only if all
are well.

Options:
  --format FORM      one of table, vertical, tsv, csv, json, jsonl, kv
  --json             the same as --format json
  --header           a line of names with tsv, too
  --timeout SECONDS  how long to wait for each answer, 2 if not given
  --help             print this

Examples:
  rpcctl health --timeout 1
      give each a second
  rpcctl health --format jsonl
      for a program that watches the device
]], "" })
end
check.equal("no details, no examples", ran({ "help", "help" })[2], [[
rpcctl help [OPTION]... [COMMAND]

Tell what rpcctl can do, or one of its commands.

Options:
  --timeout SECONDS  how long to wait for each answer, 25 if not given
  --help             print this
]])

local overview = ran({ "help" })[2]
check.equal("the overview", { overview:match "^.-\n  list ", overview:match "\n  help [^\n]*\n(.-)\n  1 " }, {
  "rpcctl COMMAND [ARGUMENT]...: the tables of this device's daemons\n\nCommands:\n  list ",
  "\nrpcctl help COMMAND says more; rpcctl --version prints the version.\n\nExit statuses:\n  0    done" })
local list_command = package.loaded["rpcctl.commands.list"]
package.loaded["rpcctl.commands.list"] = { name = "list", summary = "do it", details = ("x "):rep(39) .. "yy z",
  options = { { "opt", nil, ("a "):rep(40) } } }
check.equal("lines of 79 characters", ran({ "help" })[1] == 0 and written(function()
  require "rpcctl.commands.help".run({ "list" }, {})
end), "rpcctl list [OPTION]...\n\nDo it.\n\n" .. ("x "):rep(38) .. "x\nyy z\n\nOptions:\n  --opt              "
  .. ("a "):rep(28) .. "a\n" .. (" "):rep(21) .. ("a "):rep(10) .. "a\n"
  .. "  --timeout SECONDS  how long to wait for each answer, 25 if not given\n  --help             print this\n")
package.loaded["rpcctl.commands.list"] = list_command

check.finish()

-- What stands on a terminal: columns that fit it, in colours or not.
local check = require "check"
local shell = require "shell"
local tool = require "tool"

local function shown(line, columns, settings)
  settings = settings or {}
  settings[1], settings.columns = line, columns
  return (tool.terminal(settings):gsub("%[exit 0%]\n$", ""))
end

local function widest(text)
  local most = 0
  for line in text:gmatch("[^\n]+") do
    most = math.max(most, #line)
  end
  return most
end

-- 80 columns: as many as fit, without the empty ones, oper and res; the rest is named
local screen = shown("rpcctl rows portinfo", 80, { lines = 40 })
check.equal("rows at 80", screen, [[
port  name  description     enabled  link  speed  duplex  mode       wanted_mode
1     ge1   uplink to t...  on       up    1000   full    1000,full  auto
2     ge2   customer 2      on       up    1000   full    1000,full  auto
3     ge3   customer 3      on       up    1000   full    1000,full  auto
4     ge4   customer 4      on       up    1000   full    1000,full  auto
5     ge5                   on       down  0      none               auto
6     ge6                   on       down  0      none               auto
7     ge7   optical line 7  on       up    1000   full    1000,full  1000,full
8     ge8   optical line 8  on       up    1000   full    1000,full  1000,full
not shown for want of room: field13 medium mtu field16 field17 field18 field1...
]])
screen = shown("rpcctl rows portinfo port=1", 200)
check.equal("rows at 200: oper and res are left out", { screen:match("field25"), screen:match("oper"),
  screen:match("not shown") },
  { "field25" })
check.equal("texts are whole where there is room", screen:match("uplink to the core"), "uplink to the core")
screen = shown("rpcctl rows vlaninfo --fields vlan,text,res", 80)
check.equal("what is asked for is shown", screen, "vlan  text  res\n1           0\n10          0\n20          0\n")
screen = shown("rpcctl rows portinfo port=7 "
  .. "--fields port,name,description,enabled,link,speed,duplex,mode,wanted_mode,medium", 80)
check.equal("what is asked for and too wide stands below one another", screen, [[
port         7
name         ge7
description  optical line 7
enabled      on
link         up
speed        1000 Mbit/s
duplex       full
mode         1000,full
wanted_mode  1000,full
medium       optical
]])
screen = shown("rpcctl get svi vlan=20", 80)
check.equal("one row", screen, "vlan     20\nname     vlan20\naddress  198.51.100.1/24\n")
check.equal("nothing to show", shown("rpcctl rows vlaninfo vlan=99 --fields vlan,name", 80), "vlan  name\n")
shell.run(tool.command .. [[ set svi vlan=20 "name=$(printf '\346\274\242\345\255\227 \360\237\231\202')"]])
check.equal("wide characters", shown("rpcctl rows svi --fields vlan,name,address", 80),
  "vlan  name     address\n1     vlan1    192.0.2.10/24\n20    漢字 🙂  198.51.100.1/24\n")

for length, expected in pairs { [40] = ("x"):rep(40), [41] = ("x"):rep(37) .. "..." } do
  shell.run(tool.command .. " set sdsminfo content=" .. ("x"):rep(length))
  check.equal(length .. " characters", shown("rpcctl rows sdsminfo --fields content", 80),
    "content\n" .. expected .. "\n")
end

-- describe: the records' names where there is room for all, long cells in several lines
local account = "oltmib_account_get_1   get        hostpdinfo  50006    12         "
  .. "oltmib_accountEntry  oltmib_accountEntry"
screen = shown("rpcctl describe account", #account)
check.equal("describe as wide as its lines", screen:find(account .. "\n", 1, true) ~= nil, true)
screen = shown("rpcctl describe account", #account - 1)
check.equal("describe where one character is missing", screen:find("oltmib_accountEntry"), nil)
check.equal("a long cell", shown("rpcctl describe portinfo", 72, { lines = 50 }):match("\nlink.-\nspeed"), [[

link         field5   int         5         5      whole number; down=0
                                                   up=1
speed]])

-- No line of any table's rows, of help or of describe is wider than the terminal
local list = shell.run(tool.command .. " list --tables | awk '$3 ~ /getn?/ { print $1 }'")
local script = "for name in " .. list:gsub("\n", " ") .. "; do for command in rows describe; do "
  .. "script -qec \"stty cols 80; " .. tool.command .. " $command $name\" /dev/null | tr -d '\\r' | "
  .. "awk -v name=\"$command $name\" 'length($0) > 80 && !/^rpcctl: / { print name, length($0) }'; done; done"
check.equal("no line is wider than 80", (tool.run("export NO_COLOR=1 TERM=xterm LC_ALL=C; " .. script)), "")
check.equal("nor of list and health", widest(shown("rpcctl list --tables vlan; rpcctl health | head -n 3", 80)) <= 80,
  true)

-- Colours
local bold = "\27[1m"
screen = shown("rpcctl rows svi --fields vlan", 80, { coloured = true })
check.equal("headers are bold", screen:find(bold .. "vlan", 1, true), 1)
for _, environment in ipairs { "NO_COLOR=1", "TERM=dumb", "TERM=" } do
  screen = shown("rpcctl rows svi --fields vlan", 80, { coloured = true, environment = environment })
  check.equal(environment .. ": none", screen:find("\27", 1, true), nil)
end
screen = shown("rpcctl rows svi --fields vlan", 80, { coloured = true, environment = "NO_COLOR=" })
check.equal("NO_COLOR empty: colours", screen:find(bold .. "vlan", 1, true), 1)
check.equal("none in a pipe", shown("rpcctl rows svi --fields vlan | cat", 80, { coloured = true }), "1\n20\n")

-- What came is shown, also where the next row does not come
shell.tell "fault oltmib_portinfo_getn_1 after=3 delay 60000"
screen = tool.terminal { "rpcctl rows portinfo --fields port --timeout 1" }
check.equal("rows before a failure", screen:match("^port\n1\n2\n3\nrpcctl: [^\n]*"),
  "port\n1\n2\n3\nrpcctl: oltmib_portinfo_getn_1 "
  .. "(service nsminfo, program 50004): the daemon did")
shell.tell "clear"

check.finish()

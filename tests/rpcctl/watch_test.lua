-- rpcctl watch: rates, rows that come and go, a daemon that goes and comes back, keys.
local check = require "check"
local shell = require "shell"
local tool = require "tool"
local run = tool.run

-- In a pipe: every row at first, then those that changed
local stamp = "%d%d%d%d%-%d%d%-%d%d %d%d:%d%d:%d%d"
local output, errors, status = run "rpcctl watch vlaninfo --count 1 --fields vlan,name"
check.equal("one reading prints every row", { (output:gsub(stamp, "TIME")), errors, status },
  { "TIME\trow\t1\tdefault\nTIME\trow\t10\tvoice\nTIME\trow\t20\tvideo\n", "", 0 })
check.equal("JSON lines", (run "rpcctl watch vlaninfo vlan=1 --count 1 --fields vlan --json":gsub(stamp, "TIME")),
  '{"time":"TIME","event":"row","vlan":1}\n')
check.equal("nothing changed", (run "rpcctl watch vlaninfo vlan=1 --count 3 --interval 0.1 --fields vlan":gsub(stamp,
  "TIME")),
  "TIME\trow\t1\n")
check.equal("a counter that is not asked for is no change",
  (run "rpcctl watch portstat port=3 --count 3 --interval 0.1 --fields port":gsub(stamp, "TIME")), "TIME\trow\t3\n")
check.equal("a table of one row", (run "rpcctl watch telnet --count 1 --fields tcp_port":gsub(stamp, "TIME")),
  "TIME\trow\t23\n")

-- Runs watch in the background, does each line once the output has its text, ends it by SIGINT
local function watched(arguments, steps)
  -- what an earlier one printed is none of this one's
  local lines = { "rm -f /run/watched /run/watched.err",
    tool.command .. " " .. arguments .. " >/run/watched 2>/run/watched.err & child=$!" }
  for _, step in ipairs(steps) do
    lines[#lines + 1] = ("await \"grep -q '%s' /run/watched /run/watched.err\"; %s"):format(step[1], step[2] or ":")
  end
  lines[#lines + 1] = "kill -INT $child; wait $child; echo \"[$?]\" >>/run/watched"
  shell.run(table.concat(lines, "\n"))
  local text = shell.run "cat /run/watched"
  return (text:gsub(stamp, "TIME")), (shell.run "cat /run/watched.err")
end

local rpcctl = tool.command
output, errors = watched("watch svi --interval 0.2 --fields vlan,name", {
  { "vlan20", rpcctl .. " set svi vlan=20 name=lan >/dev/null" },
  { "lan$", rpcctl .. " add svi vlan=30 name=new >/dev/null" },
  { "new" },
})
check.equal("a change and a new row, at once in a pipe", { output, errors },
  { "TIME\trow\t1\tvlan1\nTIME\trow\t20\tvlan20\nTIME\tchanged\t20\tlan\nTIME\tnew\t30\tnew\n[130]\n", "" })

-- A row that vanishes: the table ends sooner
output = watched("watch svi --interval 0.2 --fields vlan --end name=lan", {
  { "row.1", rpcctl .. " set svi vlan=20 name=other >/dev/null" },
  { "new.30", rpcctl .. " set svi vlan=20 name=lan >/dev/null" },
  { "gone.30" },
})
check.equal("rows that come and go", output,
  "TIME\trow\t1\nTIME\tnew\t20\nTIME\tnew\t30\nTIME\tgone\t20\nTIME\tgone\t30\n[130]\n")

-- A daemon that goes and comes back
output, errors = watched("watch svi --interval 0.2 --fields vlan,name vlan=1", {
  { "vlan1", "$SIM_DEVICE --tell $SIM_CONTROL stop nsminfo" },
  -- a second, in which nothing more may be said
  { "registered", "sleep 1; $SIM_DEVICE --tell $SIM_CONTROL start nsminfo; " .. rpcctl
    .. " set svi vlan=1 name=back >/dev/null" },
  { "back" },
})
check.equal("a daemon that goes and comes back", output, "TIME\trow\t1\tvlan1\nTIME\tchanged\t1\tback\n[130]\n")
check.equal("and is told of once", tool.count(errors, "has not registered"), 1)
tool.fails("watch lpdet_portinf", 3, 'rpcctl: librpc: expected the name of a table (did you mean lpdet_portinfo?), '
  .. 'found '
  .. '"lpdet_portinf"; rpcctl list shows every API, rpcctl list --tables every table\n')

-- Rates: what the counter grew by in the seconds between, which the readings themselves tell
output = run "rpcctl watch portstat port=3 --count 3 --interval 2 --fields octets_in --json"
local values, rates = {}, {}
for line in output:gmatch("[^\n]+") do
  values[#values + 1] = tonumber(line:match('"octets_in":"(%d+)"'))
  rates[#rates + 1] = tonumber(line:match('"octets_in/s":([%d.]+)'))
end
check.equal("readings and rates", { #values, #rates }, { 3, 2 })
for i, rate in ipairs(rates) do
  local seconds = (values[i + 1] - values[i]) / rate
  check.equal("the rate is of the time that went by", seconds > 1.8 and seconds < 60, true)
end

-- On a terminal: in place, with a title, changed cells coloured, and q ends it
local screen = tool.terminal { columns = 200, lines = 16,
  "rpcctl watch portstat --interval 0.3 --fields port,octets_in",
  keys = "q", ready = "port  octets_in  octets_in/s" }
check.equal("q ends it", screen:find("[exit 0]", 1, true) ~= nil, true)
check.matches("its title", screen, "portstat  " .. stamp .. "  every 0.3 s, q ends\n")
check.equal("a row a line", tool.count(screen, "\n[1-8] +%d+"), 8)
screen = tool.terminal { "rpcctl watch svi --fields vlan", keys = "q", ready = "every 2 s, q ends" }
check.equal("every two seconds if nobody says otherwise", screen:find("[exit 0]", 1, true) ~= nil, true)
screen = tool.terminal { columns = 60, lines = 8, "rpcctl watch portstat --interval 0.2", shows = "more rows" }
check.equal("the title stays where rows are many", screen:match("^portstat"), "portstat")
check.equal("and no line wraps", tool.count(screen, "\n") <= 8, true)
screen = tool.terminal { columns = 60, lines = 8, "rpcctl watch portstat --count 1" }
check.equal("rows that are shown, and those that are told of", tool.count(screen, "\n[1-8]  ")
  + (tonumber(screen:match("(%d+) more rows")) or 0), 8)
screen = tool.terminal { coloured = true, "rpcctl watch portstat --interval 0.2 --fields port,octets_in",
  shows = "\27[1m\27[33m" }
check.equal("changed cells are coloured", screen:find("\27[1m\27[33m", 1, true) ~= nil, true)
screen = tool.terminal { "rpcctl watch portstat --interval 0.2 --fields port,octets_in", keys = "C-c",
  ready = "octets_in/s" }
check.equal("Ctrl-C ends it", screen:find("[exit 130]", 1, true) ~= nil, true)
screen = tool.terminal { "rpcctl watch svi --interval 0.2 --fields vlan; stty -a | grep -o ' icanon'", keys = "q",
  ready = "vlan" }
check.equal("the terminal is as it was", screen:find(" icanon", 1, true) ~= nil, true)
screen = tool.terminal { "rpcctl watch svi vlan=1 --count 1 --fields vlan --format vertical" }
check.equal("in another form on a terminal", screen:match("\nvlan +1\n%[exit 0%]\n$") ~= nil, true)
screen = tool.terminal { "rpcctl watch svi --count 2 --interval 0.1 --fields vlan "
  .. "| (read line; stty -a </dev/tty | grep -o '.icanon'; cat >/dev/null)" }
check.equal("in a pipe the terminal stays as it is", screen, " icanon\n[exit 0]\n")
screen = tool.terminal { environment = "TERM=dumb", "rpcctl watch svi --count 2 --interval 0.2 --fields vlan" }
check.equal("TERM=dumb: one below the other", tool.count(screen, "svi  " .. stamp), 2)

check.finish()

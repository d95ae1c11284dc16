-- Every script of examples/ beside the simulated device, as its first lines say
-- to run it.
local check = require "check"
local shell = require "shell"

local function example(arguments, environment)
  return shell.run(("%s %s %s/examples/%s"):format(environment or "", shell.interpreter,
    os.getenv("LIBRPC_TEST_SOURCE"), arguments))
end

local function gives(arguments, output, errors, status, environment)
  check.equal(arguments, { example(arguments, environment) }, { output, errors or "", status or 0 })
end

gives("port_table.lua", [[
port name   description           speed    MTU
1    ge1    uplink to the core     1000   1500
2    ge2    customer 2             1000   1500
3    ge3    customer 3             1000   1500
4    ge4    customer 4             1000   1500
5    ge5                              0   1500
6    ge6                              0   1500
7    ge7    optical line 7         1000   1500
8    ge8    optical line 8         1000   1500
]])

gives("change_vlan.lua 10 phones", "VLAN 10 is now phones, ports ge1,ge2\n")
gives("change_vlan.lua 10 'phones&co'", "", "change_vlan: oltmib_vlaninfo_set_1: name: expected a text without '&', "
  .. 'which separates fields, found "phones&co"\n', 1)
gives("change_vlan.lua 11 phones", "", "change_vlan: oltmib_vlaninfo_get_1: res: expected 0, of a row that is there, "
  .. "found 1\n", 1)
gives("change_vlan.lua 10", "", "usage: change_vlan.lua VLAN NAME\n", 2)

local output, errors, status = example("watch_counters.lua 0.3 2")
check.equal("watch_counters: errors and status", { errors, status }, { "", 0 })
check.equal("watch_counters: rounds", select(2, output:gsub("round %d\n", "")), 2)
check.equal("watch_counters: lines", select(2, output:gsub("  ge%d    counter9 +%d+ +%d+%.%d a second\n", "")), 16)

-- The event loop, where its library is installed.
if pcall(require, "cqueues") then
  local ports = "ge1\nge2\nge3\nge4\nge5\nge6\nge7\nge8\n"
  shell.tell "fault nsminfo delay 200"
  output, errors, status = example("event_loop.lua")
  local taken, ticks = output:match("\n8 calls in (%d+) ms, (%d+) ticks\n$")
  check.equal("event_loop: ports", { output:sub(1, #ports), errors, status }, { ports, "", 0 })
  check.equal("event_loop: not one after another", taken and tonumber(taken) < 8 * 200, true)
  check.equal("event_loop: the ticker ticked meanwhile", ticks and tonumber(ticks) > 2, true)
  shell.tell "clear"
  shell.tell "fault nsminfo count=1 error system_err"
  output = example("event_loop.lua")
  check.equal("event_loop: a failure in its place", select(2, output:gsub("Remote system error", "")), 1)
  shell.tell "clear"
end

-- The page of fifteen tables: each daemon's, by the names of its fields. Its second is
-- short on a busy machine: the page is asked for again until no table is late, or only
-- the one whose message has the text `late`.
local function page(late)
  local text
  for _ = 1, 60 do
    text = example("dashboard.cgi")
    local count = select(2, text:gsub("within 1 seconds", ""))
    if late and count == 1 and text:find(late, 1, true) or not late and count == 0 then
      break
    end
  end
  return text
end
local dashboard = page()
check.equal("dashboard: tables", { select(2, dashboard:gsub("<h2>", "")), select(2, dashboard:gsub("<table>", "")) },
  { 15, 15 })
check.equal("dashboard: nothing failed", dashboard:match('<p role="alert">(.-)</p>'), nil)
for _, line in ipairs {
  '<h2>Device</h2>\n<table>\n<tr><th scope="col">host name</th><th scope="col">model</th><th scope="col">serial</th>'
    .. '<th scope="col">software</th><th scope="col">uptime (s)</th></tr>\n<tr><td>olt-lab-1</td><td>OLT-8G</td>'
    .. "<td>SN20260117-0042</td><td>1.4.2</td><td>86400</td></tr>\n</table>\n",
  "<tr><td>5</td><td>ge5</td><td></td><td>on</td><td>down</td><td>0</td><td>1500</td></tr>\n",
  "<tr><td>admin</td><td>15</td><td>on</td></tr>\n",
  "<tr><td>serial-1</td><td>192.0.2.41</td><td>yes</td></tr>\n",
} do
  check.equal("dashboard: " .. line, dashboard:find(line, 1, true) ~= nil, true)
end
check.equal("dashboard: a wrong name is told",
  example("dashboard.cgi", "LIBRPC_NAMES="):match('<p role="alert">(.-)</p>'),
  "devinfo: expected a name of its fields, found model")
shell.run(shell.interpreter .. [[ $LIBRPC_TEST_SOURCE/bin/rpcctl set portinfo port=5 'description=<b>"']])
check.equal("dashboard: markup in a text", page():match("<td>ge5</td><td>(.-)</td>"),
  "&lt;b&gt;&quot;")
shell.tell "stop lpdet"
dashboard = page()
check.equal("dashboard: one daemon's end", { select(2, dashboard:gsub("<table>", "")),
  dashboard:match('<h2>Loop detection by port</h2>\n<p role="alert">(.-) %[RPC') }, { 14,
  "oltmib_lpdet_portinfo_getn_1 (service lpdet, program 50018): the daemon has not registered with the port mapper" })
shell.tell "fault oltmib_portinfo_getn_1 after=3 drop"
dashboard = page "found 3 rows and no end"
check.equal("dashboard: one daemon's silence", { select(2, dashboard:gsub("<table>", "")),
  dashboard:match('<h2>Ports</h2>\n<p role="alert">(.-)</p>'), dashboard:match("<td>(ge3)</td>"),
  dashboard:match("<td>ge4</td>") }, { 14,
  "oltmib_portinfo_getn_1: expected the end within 1 seconds, found 3 rows and no end", "ge3" })
shell.tell "clear"

check.finish()

-- Ctrl-C ends each command at once, whatever it waits for, and leaves nothing behind.
local check = require "check"
local shell = require "shell"
local tool = require "tool"

-- Runs a command in the background, interrupts it once its daemon has so many calls (one
-- if not given), and gives its output, errors and status.
local function interrupted(arguments, api, calls)
  local before = tonumber((shell.run("$SIM_DEVICE --tell $SIM_CONTROL count " .. api)))
  local output, errors, status = shell.run(([[
    %s %s --timeout 300 >/run/out 2>/run/err & child=$! # none ends by itself while it is waited for
    await '[ $($SIM_DEVICE --tell $SIM_CONTROL count %s) -ge %d ]'
    kill -INT $child
    await "! kill -0 $child" || kill -KILL $child
    wait $child; status=$?
    cat /run/out; cat /run/err >&2; (exit $status)]]):format(tool.command, arguments, api, before + (calls or 1)))
  return output, errors, status
end

shell.tell "fault oltmib_portinfo_getn_1 after=3 drop"
local output, errors, status = interrupted("rows portinfo --fields port", "oltmib_portinfo_getn_1", 4)
check.equal("rows", { output, errors, status }, { "1\n2\n3\n", "", 130 })
shell.tell "clear"
shell.tell "fault oltmib_portinfo_getn_1 after=3 drop"
output, errors, status = interrupted("rows portinfo --fields port --json", "oltmib_portinfo_getn_1", 4)
check.equal("rows: JSON stays whole", { output, errors, status }, { '[{"port":1},\n{"port":2},\n{"port":3}]\n', "",
  130 })
shell.tell "clear"
for _, row in ipairs {
  { "get devinfo", "oltmib_devinfo_get_1" }, { "set svi vlan=20 name=x", "oltmib_svi_get_1" },
  { "add svi vlan=50 name=x", "oltmib_svi_get_1" }, { "call oltmib_route_get_1 1", "oltmib_route_get_1" },
  { "watch svi", "oltmib_svi_getn_1" }, { "get svi name=vlan1", "oltmib_svi_getn_1" },
} do
  shell.tell("fault " .. row[2] .. " drop")
  output, errors, status = interrupted(row[1], row[2])
  check.equal(row[1], { output, errors, status }, { "", "", 130 })
  shell.tell "clear"
end

-- backup: the old file stays, no other is left; restore: says how far it came
shell.run("mkdir /run/kept; " .. tool.command .. " backup /run/kept/a.txt; cp /run/kept/a.txt /run/copy.txt")
shell.tell "fault oltmib_portinfo_getn_1 after=3 drop"
output, errors, status = interrupted("backup /run/kept/a.txt", "oltmib_portinfo_getn_1", 4)
check.equal("backup", { output, errors, status, (shell.run "ls /run/kept; cmp /run/kept/a.txt /run/copy.txt") },
  { "", "", 130, "a.txt\n" })
shell.tell "clear"
shell.tell "fault oltmib_portinfo_getn_1 after=3 drop"
output, errors, status = interrupted("diff /run/kept/a.txt", "oltmib_portinfo_getn_1", 4)
check.equal("diff", { output, errors, status }, { "", "", 130 })
shell.tell "clear"
shell.run(tool.command .. " set svi vlan=20 name=q; " .. tool.command .. " set svi vlan=1 name=q")
shell.tell "fault oltmib_svi_set_1 after=1 drop"
output, errors, status = interrupted("restore /run/kept/a.txt", "oltmib_svi_set_1", 2)
check.equal("restore", { output:match("^svi vlan=1 name: q %-> vlan1\n"), errors, status },
  { "svi vlan=1 name: q -> vlan1\n", "", 130 })
shell.tell "clear"
check.equal("and can be run again", shell.run(tool.command .. " restore /run/kept/a.txt >/dev/null; " .. tool.command
  .. " diff /run/kept/a.txt"), "")

-- health waits for the port mapper
shell.run "kill -STOP $RPCBIND_PID"
output, errors, status = shell.run(tool.command .. " health --timeout 300 >/run/out 2>&1 & child=$!; "
  .. "await 'grep -q \" 0100007F:006F \" /proc/net/udp'; kill -INT $child; wait $child; status=$?; cat /run/out; "
  .. "(exit $status)")
shell.run "kill -CONT $RPCBIND_PID"
check.equal("health", { output, errors, status }, { "", "", 130 })

check.finish()

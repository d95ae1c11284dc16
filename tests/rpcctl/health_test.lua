-- rpcctl health: well, absent, stuck; the exit status; JSON.
local check = require "check"
local golden = require "golden"
local shell = require "shell"
local tool = require "tool"
local run = tool.run

local services = golden.column("services.txt", 2)
local output, errors, status = run "rpcctl health"
local expected = {}
for i, name in ipairs(services) do
  expected[i] = name .. "\twell\n"
end
table.sort(expected)
check.equal("all are well", { run("rpcctl health | cut -f 1,3 | LC_ALL=C sort") }, { table.concat(expected), "", 0 })
check.equal("its errors and status", { errors, status }, { "", 0 })
check.equal("ports and times", tool.count(output, "\t50%d+\twell\t%d+\t[%d.]+\t"), #services)
check.equal("JSON", {
  run [[rpcctl health --json | jq -r 'map(select(.state == "well" and .ms >= 0 and .port > 0)) | length']] },
  { #services .. "\n", "", 0 })

shell.tell "stop lpdet"
output, errors = run "rpcctl health | grep -v well"
check.equal("an absent one", { output, errors }, { "lpdet\t50018\tabsent\t\t\tloop detection\tRPC: Program not "
  .. "registered\n",
  "rpcctl: health: expected all services to be well, found lpdet absent\n" })
tool.fails("health >/dev/null", 4, "rpcctl: health: expected all services to be well, found lpdet absent\n")

-- A daemon that is registered and silent
local port = 45999
local _, _, started = shell.run(([[(
  python3 -c 'import socket, time
s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM); s.bind(("127.0.0.1",
  %d)); time.sleep(60)' >/dev/null 2>&1 & echo $! >/run/silent
  await 'grep -q ":%04X " /proc/net/udp'
  python3 - <<'END'
import socket, struct
s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM); s.settimeout(5)
s.sendto(struct.pack(">14I", 7, 0, 2, 100000, 2, 1, 0, 0, 0, 0, 50018, 1, 17, %d), ("127.0.0.1", 111))
raise SystemExit(struct.unpack(">7I", s.recv(100)[:28])[6] != 1)
END
)]]):format(port, port, port))
check.equal("a silent daemon is registered", started, 0)
output, errors = run "rpcctl health --timeout 0.3 | grep -v well"
check.equal("a stuck one", { output, errors }, { "lpdet\t50018\tstuck\t\t\tloop detection\tRPC: Timed out\n",
  "rpcctl: health: expected all services to be well, found lpdet stuck\n" })
tool.fails("health --timeout 0.3 >/dev/null", 5, "rpcctl: health: expected all services to be well, found lpdet "
  .. "stuck\n")
shell.run "kill $(cat /run/silent)"
shell.run(("await '! grep -q \":%04X \" /proc/net/udp'"):format(port))
output = run "rpcctl health --timeout 0.3 | grep -v well | cut -f 3"
check.equal("one that is gone", output, "gone\n")

-- The port mapper: dead, and hanging
shell.run "kill -STOP $RPCBIND_PID"
output, errors = run "rpcctl health --timeout 8 | cut -f 3 | sort -u"
check.equal("a port mapper that hangs", { output, errors:match("; ([^;]*)\n$") },
  { "unknown\n", "it hangs or is slow: restart rpcbind" })
output, errors, status = run "rpcctl get devinfo --timeout 8"
check.equal("a call then", { output, errors:match("; ([^;]*)\n$"), status }, { "",
  "it hangs or is slow: restart rpcbind", 4 })
shell.run "kill -CONT $RPCBIND_PID; kill $RPCBIND_PID; while kill -0 $RPCBIND_PID; do sleep 0.02; done"
output, errors = run "rpcctl health | cut -f 3 | sort -u"
check.equal("no port mapper", { output, errors:match("; ([^;]*)\n$") }, { "unknown\n", "start rpcbind" })

check.finish()

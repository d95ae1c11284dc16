-- Calls without a port mapper, or without the privilege to bind reserved ports.
--
--     with_device.sh BUILD -- lua5.1 refused.lua BUILD port_mapper|privileges
local build, what = arg[1], arg[2]
local api = "oltmib_devinfo_get_1"

local function fail(wanted, found)
  io.stderr:write(("refused.lua: %s: expected %s, found %s\n"):format(what, wanted, tostring(found)))
  os.exit(1)
end

local function run(command)
  local pipe = io.popen(command .. " 2>/dev/null")
  local printed = pipe:read("*a"):gsub("\n$", "")
  pipe:close()
  return printed
end

if what == "privileges" then
  -- nobody may not read the build folder: /run is ours to share
  assert(os.execute(("cp '%s/librpc.so' /run/ && chmod 755 /run /run/librpc.so"):format(build)) == 0)
  local script = ([[package.cpath = "/run/?.so" require "librpc" print(librpc.callapi("%s", "1"))]]):format(api)
  local as_root = run(("lua5.1 -e '%s'"):format(script))
  local as_nobody = run(("setpriv --reuid=65534 --regid=65534 --clear-groups lua5.1 -e '%s'"):format(script))
  if as_root == "" or as_root == "nil" then fail("a text for root", as_root) end
  if as_nobody ~= as_root then fail(as_root, as_nobody) end
  os.exit(0)
end

package.cpath = build .. "/?.so"
require "librpc"
local function tell_device(command)
  return os.execute(('"$SIM_DEVICE" --tell "$SIM_CONTROL" %s >/dev/null'):format(command)) == 0
end

assert(os.execute("kill $RPCBIND_PID; while kill -0 $RPCBIND_PID 2>/dev/null; do sleep 0.05; done") == 0)
for _ = 1, 2 do
  local value = librpc.callapi(api, "1")
  if value ~= nil then fail("no value without a port mapper", value) end
end
local mapper = run("rpcbind -f >/dev/null & echo $!")
for _ = 1, 100 do
  if os.execute("rpcinfo -T udp 127.0.0.1 100000 2 >/dev/null 2>&1") == 0 then break end
  os.execute("sleep 0.05")
end
if not tell_device("restart devinfo") then fail("the device to register again", "a refusal") end
local value = librpc.callapi(api, "1")
os.execute("kill " .. mapper)
if type(value) ~= "string" then fail("a text once there is a port mapper again", value) end

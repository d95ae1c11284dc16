-- Refuses each request for memory in turn, and then it and all that follow,
-- while Lua opens the library, calls it, and calls fail. What may come of it is
-- no value or Lua's own memory error; the next call works.
--
--     with_device.sh BUILD -- lua5.1 memory.lua BUILD memory|descriptors
local build, what = arg[1], arg[2]
local here = arg[0]:match("^(.*)/") or "."
local most = 5000

local cases = {"open", "first_call", "second_call", "long_argument", "failing_call", "first_call_fails",
  "call_after_failure", "no_daemon", "open_calls", "at_once", "second_at_once", "group", "message",
  "services"}

-- The others ask for none, on top of what Lua itself has left over.
local wants_memory = {open = true, long_argument = true, no_daemon = true, open_calls = true,
  at_once = true, second_at_once = true, group = true, message = true, services = true}

local function tell_device(command)
  assert(os.execute(('"$SIM_DEVICE" --tell "$SIM_CONTROL" %s >/dev/null'):format(command)) == 0)
end

-- The status of one case's process, and all that it printed.
local function run(case, kind, n, expected)
  local pipe = io.popen(("LD_PRELOAD='%s/tests/memory/refuse.so' lua5.1 '%s/case.lua' '%s' %s %s %d '%s' 2>&1; echo $?")
    :format(build, here, build, case, kind, n, expected))
  local printed = pipe:read("*a")
  pipe:close()
  local text, status = printed:match("^(.-)\n?(%d+)\n$")
  return tonumber(status), text
end

local failures, runs = 0, 0

local function report(case, kind, n, found)
  failures = failures + 1
  io.stderr:write(("memory.lua: %s, %s, %d: expected no value and a working next call, found %s\n"):format(case, kind,
    n, found))
end

local function refuse_in_turn(case, kind, first)
  local status, expected = run(case, "healthy", 0, "")
  if status ~= 0 then return report(case, "healthy", 0, expected) end
  for n = first, most do
    local printed
    status, printed = run(case, kind, n, expected)
    runs = runs + 1
    if status ~= 0 then
      report(case, kind, n, ("status %s: %s"):format(tostring(status), printed))
    elseif printed:find("enough%s*$") then
      return n > first or not wants_memory[case] or report(case, kind, n, "nothing refused at all")
    end
    if failures > 20 then return end
  end
  report(case, kind, most, "no end")
end

tell_device("fault oltmib_vrrp_ssconf_get_1 error system_err")
tell_device("stop lpdet")
if what == "descriptors" then
  for _, case in ipairs({"first_call", "call_after_failure", "at_once", "group", "message"}) do
    refuse_in_turn(case, "descriptors", 3)
  end
else
  for _, case in ipairs(cases) do
    for _, kind in ipairs({"once", "all"}) do refuse_in_turn(case, kind, 1) end
  end
end
io.stderr:write(("memory.lua: %d cases, %d failed\n"):format(runs, failures))
os.exit(failures == 0 and runs > 0 and 0 or 1)

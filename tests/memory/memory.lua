-- Refuses each request for memory in turn, and then it and all that follow,
-- while Lua opens the library, calls it, and calls fail. What may come of it is
-- no value or Lua's own memory error; the next call works.
--
--     with_device.sh BUILD -- lua5.1 memory.lua BUILD memory|descriptors
local build, what = arg[1], arg[2]
local here = arg[0]:match("^(.*)/") or "."
local most = 5000

-- Where the RPC library and the C library themselves do not survive a refusal:
-- the functions that asked for the memory, innermost first, and what happens.
-- All of it lies inside clnt_create; a crash anywhere else is a failure.
local exceptions = {
  {"getservbyname_r libc.so.6 getaddrinfo libtirpc.so",
    "glibc's name service switch aborts or reads a null pointer when it cannot load its databases"},
  {"authnone_create clnt_dg_create", "libtirpc's clnt_dg_create keeps the null that authnone_create returned"},
  {"__rpc_uaddr2taddr_af uaddr2taddr", "libtirpc's clnt_tp_create_timed frees an address that it was not given"},
  {"refused: clnt_dg_create clnt_tli_create", "libtirpc's look-up at the port mapper frees an address twice"},
}

local cases = {"open", "first_call", "second_call", "failing_call", "first_call_fails", "call_after_failure",
  "no_daemon"}

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

local failures, runs, excepted = 0, 0, {}

local function report(case, kind, n, found)
  failures = failures + 1
  io.stderr:write(("memory.lua: %s, %s, %d: expected no value and a working next call, found %s\n"):format(case, kind,
    n, found))
end

-- True when the process fell over in a way that is known.
local function known(status, printed)
  local crash = printed:match("crash: signal %d+ in ([^\n]*)")
  if status == 99 and not (crash and crash:find("clnt_tp_create_timed clnt_create_timed librpc.so", 1, true)) then
    return false
  end
  -- 139: libtirpc blocks all signals while it makes a client, so nothing tells where
  if status ~= 99 and status ~= 139 then return false end
  for _, exception in ipairs(exceptions) do
    if printed:find(exception[1], 1, true) then
      excepted[exception[2]] = (excepted[exception[2]] or 0) + 1
      return true
    end
  end
  return false
end

local function refuse_in_turn(case, kind, first)
  local status, expected = run(case, "healthy", 0, "")
  if status ~= 0 then return report(case, "healthy", 0, expected) end
  for n = first, most do
    local printed
    status, printed = run(case, kind, n, expected)
    runs = runs + 1
    if status ~= 0 and not known(status, printed) then
      report(case, kind, n, ("status %s: %s"):format(tostring(status), printed))
    elseif status == 0 and printed:find("enough%s*$") then
      return n > first or report(case, kind, n, "nothing refused at all")
    end
    if failures > 20 then return end
  end
  report(case, kind, most, "no end")
end

tell_device("fault oltmib_vrrp_ssconf_get_1 error system_err")
tell_device("stop lpdet")
if what == "descriptors" then
  for _, case in ipairs({"first_call", "call_after_failure"}) do refuse_in_turn(case, "descriptors", 3) end
else
  for _, case in ipairs(cases) do
    for _, kind in ipairs({"once", "all"}) do refuse_in_turn(case, kind, 1) end
  end
end
for why, count in pairs(excepted) do io.stderr:write(("memory.lua: known, %d cases: %s\n"):format(count, why)) end
io.stderr:write(("memory.lua: %d cases, %d failed\n"):format(runs, failures))
os.exit(failures == 0 and runs > 0 and 0 or 1)

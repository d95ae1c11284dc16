-- Ctrl-C of the stand-alone interpreter: ends a call at once, whatever the call
-- waits for, and leaves a library that works.
local check = require "check"
local shell = require "shell"

local source = os.getenv "LIBRPC_TEST_SOURCE"
local interpreter = shell.interpreter

-- Runs a script, sends SIGINT once the shell command `ready` succeeds, and
-- returns what it printed and whether it had to be stopped because it did not
-- end. A call that went on to its deadline shows in its status. Scripts find `call`, `status` and a
-- function `show` that prints how a function ended.
local function interrupt(script, ready)
  local name, output = os.tmpname(), os.tmpname()
  local file = assert(io.open(name, "w"))
  file:write([[
    io.stdout:setvbuf("no")
    require "librpc"
    local call, status = librpc.callapi, require "librpc.status"
    local function show(...)
      local ok, value = pcall(...)
      print(ok and "value" or "error", (tostring(value):gsub("^.*: ", "")))
    end
  ]], script)
  file:close()
  -- a background job of a shell ignores SIGINT until the interpreter has a handler
  local _, _, code = shell.run(([[(
    %s %s >%s 2>&1 & child=$!
    await '%s'
    kill -INT $child
    await "! kill -0 $child" && exit
    kill -KILL $child
    exit 1 )
  ]]):format(interpreter, name, output, ready))
  local text = assert(io.open(output)):read("*a")
  os.remove(name)
  os.remove(output)
  return text, code
end

local function called(api)
  return "[ $($SIM_DEVICE --tell $SIM_CONTROL count " .. api .. ") -gt 0 ]"
end

local vlan = "oltmib_vlaninfo_get_1"
local later = '\nprint((call("oltmib_devcapint_get_1", "ports")))\n'
local works = "ports&Number of ports&8&&&0&0\n"

shell.tell("fault " .. vlan .. " drop")

local text, code = interrupt('show(function() call("oltmib_vlaninfo_get_1", "10") return "went on" end)' ..
  '\nprint((status.last()))' .. later, called(vlan))
check.equal("a call: in time", code, 0)
check.equal("a call", text, "error\tinterrupted!\ninterrupted\n" .. works)

-- A hook of the main program's: the coroutine runs on until it returns, except
-- where all share one hook.
shell.tell "clear"
shell.tell "fault oltmib_route_get_1 drop"
text, code = interrupt([[
  show(function()
    local run = coroutine.create(function() return call("oltmib_route_get_1", "0.0.0.0/0") end)
    local _, value = coroutine.resume(run)
    if tostring(value):find("interrupted!") then error(value, 0) end
  end)
  print((status.last()))
]] .. later, called "oltmib_route_get_1")
check.equal("in a coroutine: in time", code, 0)
check.equal("in a coroutine", text, "error\tinterrupted!\ninterrupted\n" .. works)

-- Other datagrams keep coming from the daemon.
shell.tell "clear"
shell.tell "stop ribinfo"
local told = os.tmpname()
os.remove(told)
local _, problem, started = shell.run(([[(
  %s/tests/support/chattering_daemon.py 50011 %s >/dev/null 2>%s.log & echo $! >%s.pid
  await "rpcinfo -p 127.0.0.1 | grep -qw 50011" && exit
  cat %s.log >&2
  exit 1 )]]):format(source, told, told, told, told))
check.equal("chattering daemon: " .. problem, started, 0)
text, code = interrupt('show(function() call("oltmib_route_get_1", "0.0.0.0/0") return "went on" end)' ..
  "\nprint((status.last()))" .. later, "[ -s " .. told .. " ]")
shell.run("kill $(cat " .. told .. ".pid)")
check.equal("while other datagrams come: in time", code, 0)
check.equal("while other datagrams come", text, "error\tinterrupted!\ninterrupted\n" .. works)
for _, ending in ipairs { "", ".log", ".pid" } do os.remove(told .. ending) end

-- The call still looks for its daemon.
shell.run "kill -STOP $RPCBIND_PID"
text, code = interrupt('show(function() call("oltmib_account_get_1", "1&admin") return "went on" end)' ..
  '\nprint((status.last())) os.execute("kill -CONT $RPCBIND_PID")' .. later, 'grep -q " 0100007F:006F " /proc/net/udp')
shell.run "kill -CONT $RPCBIND_PID"
check.equal("while the port mapper is asked: in time", code, 0)
check.matches("while the port mapper is asked", text, "error\tinterrupted!\ninterrupted\n" .. works .. "$")

check.finish()

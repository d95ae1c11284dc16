-- What the tests of programs share: running them, and telling the device.
local shell = {}

-- A function of every shell here, for what has to come true first: tries a command (one
-- word) until it succeeds. It fails after half a minute, which only a broken program
-- needs, and once the program in $child has ended, after one more look.
local await = [[await() {
  tries=0 most=1500
  until eval "$1" >/dev/null 2>&1; do
    tries=$((tries + 1)); [ $tries -lt $most ] || return 1; sleep 0.02
    kill -0 ${child:-$$} 2>/dev/null || tries=$most
  done
}
]]

-- Runs a command: its standard output, its standard error, its exit status.
function shell.run(command)
  local errors = os.tmpname()
  local pipe = io.popen(await .. "{ " .. command .. "\n} 2>" .. errors .. "; echo \"[$?]\"")
  local output, status = pipe:read("*a"):match("^(.*)%[(%d+)%]\n$")
  pipe:close()
  local file = io.open(errors)
  local text = file:read("*a")
  file:close()
  os.remove(errors)
  return output, text, tonumber(status)
end

-- One command to the simulated device.
function shell.tell(command)
  local _, text, status = shell.run("$SIM_DEVICE --tell $SIM_CONTROL '" .. command .. "'")
  if status ~= 0 then
    error(text, 2)
  end
end

-- The interpreter that runs this test, as a word for the shell.
shell.interpreter = os.getenv "LIBRPC_TEST_INTERPRETER"

return shell

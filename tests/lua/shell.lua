-- What the tests of programs share: running them, and telling the device.
local shell = {}

-- Runs a command: its standard output, its standard error, its exit status.
function shell.run(command)
  local errors = os.tmpname()
  local pipe = io.popen("{ " .. command .. "\n} 2>" .. errors .. "; echo \"[$?]\"")
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

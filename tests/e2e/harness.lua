-- What the end-to-end tests share. A test is
--
--     case "name" (function() ... end)
--
-- and runs in a process, with a port mapper and a device, of its own; see run.sh. It
-- runs with lua5.1, and with the others too where its line ends in
-- "-- with every interpreter": where arguments are checked, values are handed over,
-- objects are collected or signals arrive.
require "librpc"

local harness = { call = librpc.callapi }

-- APIs that many cases call, and what the device answers a fresh one.
harness.devinfo, harness.vlan, harness.port = "oltmib_devinfo_get_1", "oltmib_vlaninfo_get_1", "oltmib_portinfo_get_1"
harness.identity = "OLT-8G&SN20260117-0042&00-1E-80-4C-00-01&1.4.2&2.0.1&V3&0&86400&olt-lab-1&0" -- of devinfo
harness.vlan10 = "10&1&voice&1&ge1,ge2&ge3,ge4&&0&0" -- of vlan, "10"

-- The only case that runs is the one the command line names.
function harness.case(name)
  return function(body)
    if name == arg[1] then
      body()
      print("passed " .. name)
    end
  end
end

local function shown(value)
  local text = type(value) == "string" and ("%q"):format(value) or tostring(value)
  return #text > 500 and text:sub(1, 500) .. "..." or text
end

function harness.equal(got, want, where)
  if got ~= want then
    error(("%s: expected %s, found %s"):format(where or "value", shown(want), shown(got)), 2)
  end
end

-- The output of a shell command, standard error included, and its exit status.
function harness.shell(command)
  local pipe = io.popen("{ " .. command .. "\n} 2>&1; echo \"[$?]\"")
  local output = pipe:read("*a")
  pipe:close()
  local text, status = output:match("^(.*)%[(%d+)%]\n$")
  return text, tonumber(status)
end

-- One command to the device, see `simulated_device --help`; its answer.
function harness.tell(command)
  local text, status = harness.shell("$SIM_DEVICE --tell $SIM_CONTROL '" .. command .. "'")
  if status ~= 0 then
    error(text, 2)
  end
  return (text:gsub("\n$", ""))
end

-- How many calls the device has taken on.
function harness.calls(target)
  return tonumber(harness.tell("count " .. (target or "*")))
end

-- Runs Lua code in an interpreter of its own: its output, its exit status.
function harness.run(code)
  local name = os.tmpname()
  local file = assert(io.open(name, "w"))
  file:write('require "librpc"\n', code)
  file:close()
  local text, status = harness.shell("$E2E_INTERPRETER " .. name)
  os.remove(name)
  return text, status
end

-- Addresses differ from run to run.
function harness.without_addresses(text)
  return (text:gsub("0x%x+", "ADDRESS"))
end

-- How many times the port mapper was asked for the program's port.
function harness.lookups(program)
  local text = harness.shell("rpcinfo -m 127.0.0.1")
  local found, missed = text:match("\n" .. program .. "%s+1%s+udp%s+(%d+)%s+(%d+)")
  return (tonumber(found) or 0) + (tonumber(missed) or 0)
end

-- The signals that a process holds back, as a number; valgrind does for its own ends.
function harness.held_back(process)
  if os.getenv "LIBRPC_TEST_UNDER" then
    return 0
  end
  for line in io.lines(("/proc/%d/status"):format(process)) do
    local mask = line:match("^SigBlk:%s*(%x+)")
    if mask then
      return tonumber(mask, 16)
    end
  end
end

-- Runs `body` in a child, which ends with 0 unless it fails: its number.
function harness.in_child(body)
  local process = require "e2e_process"
  local child = process.fork()
  if child > 0 then
    return child
  end
  local ok, message = pcall(body)
  if not ok then
    io.stderr:write(message, "\n")
  end
  process.exit(ok and 0 or 1)
end

-- How a child ended that got a signal while `body` waited there for a call of `vlan`,
-- which the daemon took and does not answer.
function harness.signalled(signal, body)
  local process = require "e2e_process"
  harness.tell("fault " .. harness.vlan .. " drop")
  local child = harness.in_child(body)
  while harness.calls(harness.vlan) == 0 do
    harness.shell "sleep 0.02"
  end
  harness.equal(harness.held_back(child), 0, "signals that are held back")
  process.kill(child, signal)
  return process.wait(child)
end

-- Waits until so many calls of a group have ended: their texts, or false, and failures by id.
function harness.ends_of(group, count)
  local texts, failures, ended = {}, {}, 0
  while ended < count do
    harness.equal(group:wait(20), true, "wait, with " .. ended .. " ended")
    for id, text, failure, seconds in group:finished() do
      harness.equal(texts[id], nil, "an id that ended twice")
      harness.equal(type(seconds), "number", "seconds")
      harness.equal(failure == nil, text ~= false, "a text or a failure")
      texts[id], failures[id] = text, failure
      ended = ended + 1
    end
  end
  harness.equal(group:timeout(), nil, "timeout with nothing open")
  harness.equal(group:wait(0), false, "wait with nothing open")
  return texts, failures
end

-- A shell command that sends its parent Ctrl-C once the parent waits and the device
-- has a call of the target.
function harness.interrupt_when_waiting(target)
  return ("until [ $($SIM_DEVICE --tell $SIM_CONTROL count %s) -gt 0 ] && grep -q '^State:.S' /proc/$PPID/status; "
    .. "do sleep 0.02; done; kill -INT $PPID"):format(target)
end

-- The hex digits of an int, of a text in an array of `size`, both as they travel.
function harness.int(value)
  return ("%08x"):format(value % 2 ^ 32)
end

function harness.chars(text, size)
  local units = {}
  for i = 1, size do
    units[i] = ("%08x"):format(text:byte(i) or 0)
  end
  return table.concat(units)
end

-- The header of an accepted reply to the call being served.
harness.accepted = "XID" .. ("00000001" .. "00000000" .. "00000000" .. "00000000" .. "00000000")

return harness

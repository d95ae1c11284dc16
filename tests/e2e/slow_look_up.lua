-- Look-ups at a real port mapper that is stopped for a while.
local clock = require "clock"
local harness = require "harness"
local process = require "e2e_process"
local case, call, equal = harness.case, harness.call, harness.equal
local status = require "librpc.status"

local SIGCONT, SIGSTOP = 18, 19

case "stopped_port_mapper_is_given_up_after_five_seconds_and_asked_again_later" (function()
  local mapper = tonumber(os.getenv("RPCBIND_PID"))
  process.kill(mapper, SIGSTOP)
  equal(clock.takes(5, function() equal(select("#", call("oltmib_devinfo_get_1", "")), 0, "values") end), true,
    "5 seconds")
  equal(status.last(), "no_portmapper", "code")
  process.kill(mapper, SIGCONT)
  equal(call("oltmib_devinfo_get_1", ""):match("^[^&]+"), "OLT-8G", "the next call")
  equal(status.last(), nil, "code")
end)

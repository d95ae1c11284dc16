-- librpc.status: each reason for a call that gave no value, beside the device.
local check = require "check"
local librpc = require "librpc"
local status = require "librpc.status"

local function tell(command)
  local result = os.execute(("%s --tell %s '%s' >/dev/null"):format(os.getenv("SIM_DEVICE"), os.getenv("SIM_CONTROL"),
    command))
  check.equal("the device carries out " .. command, result == 0 or result == true, true)
end

local vlan = "oltmib_vlaninfo_get_1"
local where = "oltmib_vlaninfo_get_1 (service nsminfo, program 50004): "

-- The code and the sentence of a call, or "success".
local function outcome(name, argument)
  local reply = librpc.callapi(name, argument or "1")
  local code, sentence = status.last()
  check.equal(name .. ": a code means no value", (code == nil) == (reply ~= nil), true)
  return code or "success", sentence
end

check.equal("nothing called yet", { status.last() }, {})

check.row(outcome, { "oltmib_nothing_get_1" },
  { "unknown_api", "oltmib_nothing_get_1: no API of that name is registered" })
check.equal("it stays until the next call", status.last(), "unknown_api")
check.row(outcome, { ("x"):rep(1000) }, { "unknown_api", ("x"):rep(63) .. ": no API of that name is registered" })
check.row(outcome, { vlan }, { "success", "nil" })
check.equal("cleared by a success", { status.last() }, {})

-- What a daemon can answer, and what becomes of it.
for _, row in ipairs {
  { "error prog_unavail", "rejected", "RPC: Program unavailable" },
  { "error proc_unavail", "rejected", "RPC: Procedure unavailable" },
  { "error prog_mismatch", "rejected", "RPC: Program/version mismatch" },
  { "error garbage_args", "rejected", "RPC: Server can't decode arguments" },
  { "error system_err", "rejected", "RPC: Remote system error" },
  { "error denied", "rejected", "RPC: Authentication error" },
  { "error rpc_mismatch", "rejected", "RPC: Incompatible versions of RPC" },
  { "truncate 8", "bad_reply", "RPC: Can't decode result" },
} do
  local meanings = {
    rejected = "the daemon answered that it will not or cannot carry the call out",
    bad_reply = "the daemon's answer is not this call's reply",
  }
  tell("fault nsminfo count=1 " .. row[1])
  check.row(outcome, { vlan }, { row[2], where .. meanings[row[2]] .. " [" .. row[3] .. "]" }, row[1])
  check.row(outcome, { vlan }, { "success", "nil" })
end

-- A daemon that comes back on another port: the first call finds the old one closed.
tell "restart nsminfo"
check.row(outcome, { vlan }, { "refused",
  where .. "nothing listens on the port that the daemon had [RPC: Unable to receive - Connection refused]" })
local _, _, details = status.last()
check.equal("details", details, { api = vlan, service = "nsminfo", program = 50004, errno = 111,
  reason = "RPC: Unable to receive - Connection refused" })
check.row(outcome, { vlan }, { "success", "nil" })

tell "stop vrrpinfo"
check.row(outcome, { "oltmib_vrrp_ssstate_get_1" }, { "no_daemon", "oltmib_vrrp_ssstate_get_1 (service vrrpinfo, "
  .. "program 50013): the daemon has not registered with the port mapper [RPC: Program not registered]" })
_, _, details = status.last()
check.equal("details of a missing daemon", details, { api = "oltmib_vrrp_ssstate_get_1", service = "vrrpinfo",
  program = 50013, reason = "RPC: Program not registered" })

os.execute("kill $RPCBIND_PID; while kill -0 $RPCBIND_PID 2>/dev/null; do sleep 0.02; done")
check.row(outcome, { "oltmib_sdsminfo_get_1" }, { "no_portmapper", "oltmib_sdsminfo_get_1 (service sdsminfo, "
  .. "program 50015): the port mapper does not answer, so no daemon can be found "
  .. "[RPC: Unable to receive - Connection refused]" })
check.row(outcome, { vlan }, { "success", "nil" }, "a client that is there needs no port mapper")

-- An argument error is Lua's, and no call.
check.equal("an argument error", pcall(librpc.callapi, vlan, {}), false)
check.equal("leaves the status", status.last(), nil)

for _, code in ipairs { "unknown_api", "out_of_memory", "no_portmapper", "no_daemon", "no_client", "timed_out",
  "refused", "interrupted", "rejected", "bad_reply", "failed" } do
  check.equal(code .. " has a meaning", type(status.codes[code]), "string")
end

check.finish()

-- Calls that nobody answers: timed out after 25 seconds, or interrupted.
local check = require "check"
local shell = require "shell"
local librpc = require "librpc"
local status = require "librpc.status"

shell.tell "fault nsminfo drop"
local rpcctl = io.popen(shell.interpreter
  .. " $LIBRPC_TEST_SOURCE/bin/rpcctl get svi field1=1 2>&1; echo $?") -- waits while we do

local code, sentence
if not jit then -- whose interpreter's handler ends the process as it likes
  io.popen("sleep 0.3; kill -INT $PPID")
  check.equal("an interrupted call raises the interpreter's error",
    tostring(select(2, pcall(librpc.callapi, "oltmib_svi_get_1", "1"))):match("interrupted!") or "none", "interrupted!")
  code, sentence = status.last()
  check.equal("interrupted", { code, sentence }, { "interrupted", "oltmib_svi_get_1 (service nsminfo, program 50004): "
    .. "a signal ended the wait for the daemon; it may still carry the call out [Interrupted system call]" })
end

check.equal("no value", librpc.callapi("oltmib_svi_get_1", "1"), nil)
code, sentence = status.last()
local expected = "oltmib_svi_get_1 (service nsminfo, program 50004): the daemon did not answer in time; "
  .. "it may still carry the call out [RPC: Timed out]"
check.equal("timed out", { code, sentence }, { "timed_out", expected })
check.equal("rpcctl", rpcctl:read("*a"), "rpcctl: " .. expected
  .. "; is the daemon stuck? rpcctl health tells which daemons answer; "
  .. "read the row before you repeat a change\n5\n")
rpcctl:close()

check.finish()

-- A handler of an ordinary signal, as Lua modules install them: it defers itself
-- with a hook.
local harness = require "harness"
local process = require "e2e_process"
local case, call, equal, tell = harness.case, harness.call, harness.equal, harness.tell

case "handler_of_sigchld_that_defers_itself_ends_no_set" (function() -- with every interpreter
  local has_posix, signals = pcall(require, "posix.signal")
  if not has_posix then
    print("skipped: expected the module posix (Debian: lua-posix), found none")
    return
  end
  local handled = 0
  signals.signal(signals.SIGCHLD, function() handled = handled + 1 end)
  local set = "oltmib_sysloginfo_set_1"
  tell("fault " .. set .. " delay 600 raw " .. harness.accepted .. harness.int(17))
  local before, replies = handled, 0
  for _ = 1, 4 do
    local child = process.fork()
    if child == 0 then
      process.sleep(200)
      process.exit(0)
    end
    if call(set, "1&6") == "17" then replies = replies + 1 end
    process.wait(child)
  end
  equal(replies, 4, "replies")
  equal(harness.calls(set), 4, "executions")
  equal(handled > before, true, "the handler ran")
end)

-- Calls that wait as long as they may.
local harness = require "harness"
local calls = require "librpc.calls"
local process = require "e2e_process"
local case, equal, tell = harness.case, harness.equal, harness.tell

case "without_a_deadline_all_and_groups_wait_25_seconds" (function()
  tell "fault nsminfo drop"
  local group = calls.group()
  local started = process.now()
  local id = group:call("oltmib_vlaninfo_get_1", "10")
  local texts, failures = calls.all { { "oltmib_vlaninfo_get_1", "10" }, { "oltmib_devinfo_get_1" } }
  local taken = process.now() - started
  equal(taken >= 25 and taken < 27, true, "25 seconds, in " .. taken)
  equal(failures[1].code, "timed_out", "code")
  equal(type(texts[2]), "string", "text of another service")
  equal(group:wait(1), true, "the group's call has ended, too")
  for ended, text, failure in group:finished() do
    equal(ended, id, "id")
    equal(text, false, "text")
    equal(failure.code, "timed_out", "code")
  end
  equal(harness.calls(), 3, "executions")
end)

-- Calls that wait as long as they may.
local clock = require "clock"
local harness = require "harness"
local calls = require "librpc.calls"
local case, equal, tell = harness.case, harness.equal, harness.tell

case "without_a_deadline_all_and_groups_wait_25_seconds" (function()
  tell "fault nsminfo drop"
  local group = calls.group()
  local id = group:call("oltmib_vlaninfo_get_1", "10")
  local texts, failures
  equal(clock.takes(25, function()
    texts, failures = calls.all { { "oltmib_vlaninfo_get_1", "10" }, { "oltmib_devinfo_get_1" } }
  end), true, "25 seconds")
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

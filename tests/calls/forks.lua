-- Groups, and librpc.record's walks at once, where what they keep is another process's.
local harness = require "harness"
local calls = require "librpc.calls"
local host = require "calls_host"
local process = require "e2e_process"
local record = require "librpc.record"
local case, equal, tell, shell = harness.case, harness.equal, harness.tell, harness.shell
local ends_of, executions = harness.ends_of, harness.calls
local devinfo, vlan, identity, vlan10 = harness.devinfo, harness.vlan, harness.identity, harness.vlan10

local function walk_both(where)
  local rows, failures = record.walks({ { "portinfo" }, { "svi" } }, 20)
  for i = 1, 2 do
    equal(failures[i] and failures[i].message, nil, where .. ": failure " .. i)
  end
  equal(#rows[1], 8, where .. ": ports")
  equal(#rows[2] > 0, true, where .. ": interfaces")
end

case "walks_of_a_forked_child_are_its_own" (function()
  walk_both "before the fork"
  local child = harness.in_child(function()
    walk_both "in the child"
    walk_both "in the child, again"
  end)
  for i = 1, 20 do
    walk_both("beside the child, time " .. i)
  end
  equal(process.wait(child), 0, "the child's status")
end)

case "an_inherited_group_is_dead_in_the_child_and_alive_in_the_parent" (function()
  tell "fault oltmib_vlaninfo_get_1 delay 500"
  local before, group = host.descriptors(), calls.group()
  group:pollfd()
  local fetched = group:call(devinfo, "", 10)
  equal(group:wait(10), true, "one has ended")
  local open = group:call(vlan, "10", 10)
  local child = harness.in_child(function()
    -- valgrind closes one of its own
    equal(host.descriptors() <= before, true, "no descriptor of the group in the child")
    for _ in group:finished() do
      error("the ends are the parent's")
    end
    equal(select(3, group:call(vlan, "10")), "closed", "call")
    equal(select(3, group:wait(5)), "closed", "wait")
    equal(select(3, group:pollfd()), "closed", "pollfd")
    equal(group:timeout(), nil, "timeout")
    equal(calls.all({ { vlan, "20" } }, 5)[1]:match("^%d+"), "20", "all in the child")
    local own = calls.group()
    local id = own:call(vlan, "20", 5)
    equal(ends_of(own, 1)[id]:match("^%d+"), "20", "a group of the child's own")
    group:close()
    own:close()
  end)
  equal(process.wait(child), 0, "the child's status")
  local texts = ends_of(group, 2)
  equal(texts[fetched], identity, "what had ended")
  equal(texts[open], vlan10, "what was open")
  equal(executions(), 4, "executions")
end)

case "a_program_that_is_started_inherits_nothing" (function()
  local function inherited()
    return (select(2, shell("ls -l /proc/self/fd"):gsub("[a-z_]+:[^\n]*", "")))
  end
  local before = inherited()
  tell "fault nsminfo delay 300"
  local group = calls.group()
  group:pollfd()
  local id = group:call(vlan, "10", 10)
  group:call(devinfo, "", 10)
  equal(group:wait(10), true, "one has ended")
  equal(inherited(), before, "sockets and the like of a program started with io.popen")
  equal(ends_of(group, 2)[id], vlan10, "text")
end)

-- librpc.record's walks at once, where what they keep is another process's.
local harness = require "harness"
local process = require "e2e_process"
local record = require "librpc.record"
local case, equal = harness.case, harness.equal

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
  local child = process.fork()
  if child == 0 then
    local ok, message = pcall(function()
      walk_both "in the child"
      walk_both "in the child, again"
    end)
    if not ok then
      io.stderr:write(message, "\n")
    end
    process.exit(ok and 0 or 1)
  end
  for i = 1, 20 do
    walk_both("beside the child, time " .. i)
  end
  equal(process.wait(child), 0, "the child's status")
end)

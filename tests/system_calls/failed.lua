-- Lets every system call that the library makes fail, the first of its kind, the
-- second and so on, with each of its errors, while one way to call is under way.
-- Whatever comes of it is a right text or a failure that is told; each request is
-- carried out once at most; the next call works; no descriptor is left over.
--
--     run.sh BUILD lua5.1 failed.lua WAY, with failing.so preloaded
--
-- Each failure has a process of its own, forked from this one.
require "librpc"
local calls = require "librpc.calls"
local failing = require "failing"
local process = require "e2e_process"
local rpoll = require "posix.poll".rpoll
local status = require "librpc.status"

local way = arg[1]

local wanted = { -- calls, and the device's rows
  { "oltmib_vlaninfo_get_1", "10", "10&1&voice&1&ge1,ge2&ge3,ge4&&0&0" },
  { "oltmib_vrrp_ssstate_get_1", "1", "1&1&100&2&3&1&192.0.2.254&0&0" },
}
local first = wanted[1]

-- Each way to call gives texts, or false, and the codes of those that failed.
local function call()
  local text = librpc.callapi(first[1], first[2])
  return { text or false }, { not text and status.last() or nil }
end

local function all()
  local texts, failures = calls.all(wanted, 5)
  return texts, { failures[1] and failures[1].code, failures[2] and failures[2].code }
end

-- As an event loop, that looks when the descriptor tells it to.
local patience_ms = 3000 -- a descriptor that tells nothing for so long tells nothing at all
local refused_is_open = false
local function group()
  local own = calls.group()
  local texts, codes, place = { false, false }, {}, {}
  local before = failing.descriptors()
  local descriptor = own:pollfd()
  refused_is_open = refused_is_open or not descriptor and failing.descriptors() ~= before
  for i, one in ipairs(wanted) do
    local id, _, code = own:call(one[1], one[2], 5)
    if id then
      place[id] = i
    else
      codes[i] = code
    end
  end
  while next(place) do
    if not descriptor then
      own:wait()
    elseif rpoll(descriptor, patience_ms) == 0 then
      error("expected the group's descriptor to tell of a reply, found that it told nothing")
    end
    for id, text, failure in own:finished() do
      texts[place[id]], codes[place[id]], place[id] = text, failure and failure.code, nil
    end
  end
  own:close()
  return texts, codes
end

local function message()
  local datagram, why, code, one = calls.message(first[1], first[2])
  if not datagram then
    return { false }, { code, why }
  end
  return { one:reply("no reply") == nil and first[3] or "a reply" }, {}
end

local function failed_call()
  failing.arm("recv", 1, "ECONNREFUSED")
  call()
  failing.disarm()
end

-- What is done in peace before, and whether descriptors 0 to 2 are closed.
local ways = {
  first_call = { run = call },
  second_call = { run = call, before = call },
  call_after_a_failed_one = { run = call, before = failed_call },
  call_without_standard_descriptors = { run = call, before = failing.close_standard },
  first_all = { run = all },
  second_all = { run = all, before = all },
  all_without_standard_descriptors = { run = all, before = failing.close_standard },
  first_group = { run = group },
  group_without_standard_descriptors = { run = group, before = failing.close_standard },
  group_beside_a_client = { run = group, before = call },
  message = { run = message },
}

local function problem_of(texts, codes, what)
  for i, one in ipairs(wanted) do
    local found = texts[i]
    if found and found ~= one[3] then
      return ("%s: expected %q, found %q"):format(what, one[3], found)
    elseif found == false and not status.codes[codes[i]] then
      return ("%s: expected a code of status.codes, found %s"):format(what, tostring(codes[i]))
    end
  end
end

-- In a process of its own: whether a call failed, how many descriptors there are
-- then, and what is wrong, if anything.
local function try(name, n, error_name, all_after)
  local this = ways[way]
  local function body()
    if this.before then
      this.before()
    end
    if name then
      failing.arm(name, n, error_name, all_after)
    end
    local texts, codes = this.run()
    local has_failed = failing.disarm()
    local wrong = problem_of(texts, codes, "texts")
    -- of what cannot be looked at nobody knows whose it is: it stays open
    if refused_is_open and name ~= "fstat" then
      wrong = "expected a refused pollfd() to leave nothing open, found a descriptor"
    end
    texts, codes = this.run()
    wrong = wrong or problem_of(texts, codes, "next texts")
    for i = 1, #texts do
      wrong = wrong or not texts[i] and ("next text %d: expected one, found %s"):format(i, tostring(codes[i])) or nil
    end
    return has_failed, failing.descriptors(), wrong
  end
  local ok, has_failed, descriptors, wrong = pcall(body)
  if not ok then
    return false, 0, has_failed
  end
  return has_failed, descriptors, wrong
end

local answer_file = os.tmpname()

local function tell(command)
  local pipe = io.popen(("$SIM_DEVICE --tell $SIM_CONTROL '%s'"):format(command))
  local answer = pipe:read("*a")
  pipe:close()
  return answer
end

local function carried_out()
  return tonumber(tell("count *"))
end

local before = carried_out()
local function in_a_child(...)
  local child = process.fork()
  if child == 0 then
    local has_failed, descriptors, wrong = try(...)
    local file = assert(io.open(answer_file, "w"))
    file:write(tostring(has_failed), " ", descriptors, " ", wrong or "")
    file:close()
    process.exit(0)
  end
  local ended = process.wait(child)
  local executions = carried_out() - before
  before = before + executions
  if ended ~= 0 then
    return false, 0, "expected an end with status 0, found " .. ended
  end
  local file = assert(io.open(answer_file))
  local has_failed, descriptors, wrong = file:read("*a"):match("^(%a+) (%d+) (.*)$")
  file:close()
  return has_failed == "true", tonumber(descriptors), wrong ~= "" and wrong or nil, executions
end

local healthy_failed, most_descriptors, healthy_wrong, most_executions = in_a_child()
assert(not healthy_wrong, healthy_wrong)
assert(not healthy_failed, "failed.lua: expected nothing to fail, found a failure")

local runs, failures = 0, 0

local function report(...)
  failures = failures + 1
  io.stderr:write(("failed.lua: %s, %s %d %s%s: %s\n"):format(way, ...))
end

-- False once there is no n-th call.
local function let_fail(name, n, error_name, all_after)
  local has_failed, descriptors, wrong, executions = in_a_child(name, n, error_name, all_after)
  runs = runs + 1
  if not wrong and descriptors > most_descriptors and name ~= "fstat" then
    wrong = ("expected %d descriptors, found %d"):format(most_descriptors, descriptors)
  elseif not wrong and executions > most_executions then
    wrong = ("expected %d requests, found %d"):format(most_executions, executions)
  end
  if wrong then
    report(name, n, error_name, all_after and " and all after" or "", wrong)
  end
  return has_failed
end

-- A call that waits for what fails for ever waits for ever.
local waits = { send = true, sendmsg = true, recv = true, recvmmsg = true, poll = true }
local most = 100 -- calls of one function

for name, errors in pairs(failing.functions) do
  for _, error_name in ipairs(errors) do
    for _, all_after in ipairs(waits[name] and { false } or { false, true }) do
      local n = 1
      while n < most and failures < 20 and let_fail(name, n, error_name, all_after) do
        n = n + 1
      end
    end
  end
end
os.remove(answer_file)
io.stderr:write(("failed.lua: %s: %d runs, %d failed\n"):format(way, runs, failures))
os.exit(failures == 0 and runs > 0 and 0 or 1)

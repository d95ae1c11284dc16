-- One case of the tests here: opens the library, calls, refuses something in
-- the middle, and then expects the same call to work.
--
--     case.lua BUILD CASE WHAT N EXPECTED
--
-- WHAT is "once" (the N-th request for memory fails), "all" (and every one after
-- it), "descriptors" (no more than N of them) or "healthy" (nothing is refused).
-- EXPECTED is the text that the healthy case printed. Prints "refused" when
-- something was, "enough" when not.
local build, case, what, n, expected = arg[1], arg[2], arg[3], tonumber(arg[4]), arg[5]
package.cpath = build .. "/?.so;" .. build .. "/tests/memory/?.so"
local refuse = require "refuse"

local function open()
  package.loaded.librpc = nil
  return require "librpc"
end

local function call(name)
  return function() return (librpc.callapi(name, "1")) end
end

-- before: what is done in peace; refused: in the middle of what something is
-- refused; fails: whether it fails anyway; after: what has to work then.
local good, failing, next_good, unserved = call "oltmib_devinfo_get_1", call "oltmib_vrrp_ssconf_get_1",
  call "oltmib_vrrp_ssstate_get_1", call "oltmib_lpdet_global_get_1"
-- longer than what a call has room for on its stack
local function good_at_length() return (librpc.callapi("oltmib_devinfo_get_1", "1" .. ("&"):rep(3000))) end
-- many calls: their texts, or nil where one of them has none
local function open_calls()
  package.loaded["librpc.calls"] = nil
  return require "librpc.calls"
end
local function at_once()
  local texts = require "librpc.calls".all({ { "oltmib_devinfo_get_1", "1" }, { "oltmib_vrrp_ssstate_get_1", "1" } })
  return texts[1] and texts[2] and texts[1] .. texts[2] or nil
end
local function group()
  local own, texts = require "librpc.calls".group(), {}
  own:pollfd()
  local first, second = own:call("oltmib_devinfo_get_1", "1"), own:call("oltmib_vrrp_ssstate_get_1", "1")
  while first and second and (texts[first] == nil or texts[second] == nil) do
    own:wait()
    for id, value in own:finished() do texts[id] = value end
  end
  own:close()
  return texts[first or 0] and texts[second or 0] and texts[first] .. texts[second] or nil
end
local function message()
  local datagram, address, _, one = require "librpc.calls".message("oltmib_devinfo_get_1", "1")
  return datagram and #datagram .. address .. tostring(one:reply "not its own") or nil
end
-- who answers, and with which code nobody does; nil where memory had something to do with it
local function services()
  local told, is_refused = {}, false
  for i, one in ipairs(require "librpc.calls".services(5)) do
    if type(one.service) ~= "string" or (one.seconds == nil) == (one.failure == nil) then
      error("expected seconds or a failure of each service, found both or neither")
    end
    told[i] = one.service .. " " .. (one.failure and one.failure.code or "")
    is_refused = is_refused or one.failure and one.failure.code == "out_of_memory"
  end
  return not is_refused and table.concat(told, "|") or nil
end
local cases = {
  open = {before = {}, refused = open, after = {open, good}},
  first_call = {before = {open}, refused = good, after = {good}},
  second_call = {before = {open, good}, refused = good, after = {good}},
  long_argument = {before = {open, good}, refused = good_at_length, after = {good_at_length}},
  failing_call = {before = {open, next_good}, refused = failing, fails = true, after = {next_good}},
  first_call_fails = {before = {open}, refused = failing, fails = true, after = {next_good}},
  call_after_failure = {before = {open, failing}, refused = next_good, after = {next_good}},
  open_calls = {before = {open}, refused = open_calls, after = {open_calls, at_once}},
  at_once = {before = {open, open_calls}, refused = at_once, after = {at_once}},
  second_at_once = {before = {open, at_once}, refused = at_once, after = {at_once}},
  group = {before = {open, open_calls}, refused = group, after = {group}},
  services = {before = {open, open_calls}, refused = services, after = {services}},
  message = {before = {open, open_calls}, refused = message, after = {message}},
  no_daemon = {before = {open}, refused = unserved, fails = true, after = {good}},
}

local function fail(wanted, found)
  io.stderr:write(("case.lua: %s %s %s: expected %s, found %s\n"):format(case, what, tostring(n), wanted,
    tostring(found)))
  os.exit(1)
end

local this = cases[case]
for _, step in ipairs(this.before) do step() end

local was_refused = false
local ok, value = true, nil
if what == "descriptors" then
  local before = refuse.descriptors(n)
  ok, value = pcall(this.refused)
  refuse.descriptors(before)
  was_refused = value == nil
elseif what ~= "healthy" then
  refuse.arm(n, what == "all")
  ok, value = pcall(this.refused)
  was_refused = refuse.disarm()
end
if not ok and not tostring(value):find("not enough memory") and not tostring(value):find("error loading module") and
  not tostring(value):find("module 'librpc[%.a-z]*' not found") then
  fail("no value or Lua's own memory error", value)
end
if ok and what ~= "healthy" and this.refused ~= open and this.refused ~= open_calls then
  if this.fails and value ~= nil then fail("no value", value) end
  if not this.fails and value ~= nil and value ~= expected then fail(expected, value) end
  if not this.fails and value == nil and not was_refused then fail("a value", value) end
end

local text
for _, step in ipairs(this.after) do text = step() end
if type(text) ~= "string" or text == "" then fail("a text once nothing is refused any more", text) end
if what == "healthy" then print(text) return end
if text ~= expected then fail(expected, text) end
print(was_refused and "refused" or "enough")

-- rpcctl health: which daemons are there, and how fast they answer.
local calls = require "librpc.calls"
local ending = require "rpcctl.ending"
local exits = require "rpcctl.exits"
local formats = require "rpcctl.formats"
local options = require "rpcctl.options"
local output = require "rpcctl.output"

-- What a service's answer to the null procedure says of it.
local states = {
  no_daemon = "absent", refused = "gone", timed_out = "stuck", not_sent = "stuck", rejected = "rejects",
  bad_reply = "strange", no_portmapper = "unknown", interrupted = "unknown",
}

local columns = {
  { name = "service" }, { name = "program" },
  { name = "state", style = function(one) return one.failure and "wrong" or "well" end },
  { name = "port" }, { name = "ms" }, { name = "title" }, { name = "reason" },
}

local patience = 2 -- seconds: a daemon that is well needs a thousandth of one

return {
  name = "health",
  summary = "ask every daemon at once whether it is well",
  details = "Each is called by the null procedure, which does nothing. state is well; absent (not registered with the "
    .. "port mapper); gone (registered, and nothing listens there); stuck (registered, and silent); rejects, strange "
    .. "(a reply that is none) or unknown (the port mapper does not answer). The exit status is 0 only if all are "
    .. "well.",
  options = { formats.options[1], formats.options[2], formats.options[3], options.timeout(patience) },
  examples = {
    { "rpcctl health --timeout 1", "give each a second" },
    { "rpcctl health --format jsonl", "for a program that watches the device" },
  },
  run = function(_, given)
    local form, settings = formats.settings(given)
    local list = calls.services(given.timeout or patience)
    local writer, first = formats.writer(form, columns, settings), nil
    for _, one in ipairs(list) do
      local failure = one.failure
      if failure and failure.code == "interrupted" then
        ending.leave(exits.interrupted)
      end
      one.state = failure and (states[failure.code] or failure.code) or "well"
      one.ms = one.seconds and tonumber(("%.3f"):format(one.seconds * 1000)) or nil
      one.reason = failure and (failure.details and failure.details.reason or failure.code) or nil
      if settings.people and form == "table" then
        one.port = one.port or "-"
        one.ms = one.ms and ("%.3f"):format(one.ms) or "-"
      end
      first = first or failure
      writer:row(one)
    end
    writer:finish()
    if first then
      local wrong = {}
      for _, one in ipairs(list) do
        if one.failure then
          wrong[#wrong + 1] = one.service .. " " .. one.state
        end
      end
      local message = ("health: expected all services to be well, found %s"):format(
        #wrong == #list and "none" or table.concat(wrong, ", "))
      if first.code == "no_portmapper" then
        ending.give_up(message .. " (" .. output.printable(first.details.reason or "") .. ")", first.code)
      end
      ending.complain(message)
      ending.leave(exits.of(first.code))
    end
  end,
}

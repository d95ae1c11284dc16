-- GET /api/health: which daemons answer, how fast, and why not.
local calls = require "librpc.calls"
local json = require "librpc.web.json"

local health = {}

-- What a daemon does, by why it did not answer.
local states = {
  no_daemon = "absent", refused = "absent",
  timed_out = "stuck", not_sent = "stuck",
  rejected = "wrong", bad_reply = "wrong",
}

-- What calls.services gives. A daemon that was started anew has another port, which the
-- first call to the old one finds out: then it is asked again.
local function asked(seconds)
  local list = calls.services(seconds)
  for _, one in ipairs(list) do
    if one.failure and one.failure.code == "refused" then
      return calls.services(seconds)
    end
  end
  return list
end

-- Each service { name, title, program, state, port, ms, failure }.
function health.services(seconds)
  local list, well = {}, true
  for i, one in ipairs(asked(seconds)) do
    local failure = one.failure
    list[i] = {
      name = one.service, title = one.title, program = one.program, port = one.port,
      state = not failure and "up" or states[failure.code] or "unknown",
      ms = one.seconds and math.floor(one.seconds * 1e5 + 0.5) / 100 or nil,
      failure = failure and { code = failure.code, message = failure.message } or nil,
    }
    well = well and not failure
  end
  return list, well
end

function health.answer(request)
  local list, well = health.services(request.site.limits.deadline)
  return { well = well, services = json.array(list) }
end

return health

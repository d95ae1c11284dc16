-- An nginx handler that reads a table while its worker goes on serving others: the
-- call is librpc.calls', the socket nginx' own (content_by_lua_file; nginx.conf
-- beside this file).
--
--     GET /call?api=oltmib_portinfo_get_1&argument=3
--
-- Of a datagram nginx hands over 8,192 bytes: the neighbour tables' replies
-- (lldpifnei), which are longer, end as bad_reply here.
-- luacheck: globals ngx
local calls = require "librpc.calls"

local seconds = 10 -- for a call

-- One call: its text, or false and why. The first of a service asks the port mapper
-- for the daemon's port, for which the worker waits; on 127.0.0.1 that takes a
-- fraction of a millisecond.
local function call(name, argument)
  local datagram, address, port, message = calls.message(name, argument)
  if not datagram then
    return false, { message = address, code = port }
  end
  local socket = ngx.socket.udp()
  local deadline = ngx.now() + seconds
  local text, failure
  local right, problem = socket:setpeername(address, port)
  right = right and socket:send(datagram)
  while right and text == nil do -- nil: a datagram that is not this call's
    ngx.update_time()
    socket:settimeout(math.max(deadline - ngx.now(), 0.001) * 1000)
    right, problem = socket:receive()
    if right then
      text, failure = message:reply(right)
    end
  end
  socket:close()
  if text == nil or failure then
    message:lost() -- the daemon may be another by now: the next call asks for its port
  end
  if text == nil then
    return false, { message = name .. ": expected a reply, found none: " .. tostring(problem),
      code = problem == "timeout" and "timed_out" or "refused" }
  end
  return text, failure
end

local arguments = ngx.req.get_uri_args()
local text, failure = call(tostring(arguments.api), tostring(arguments.argument or ""))
ngx.header.content_type = "text/plain; charset=utf-8"
if text then
  ngx.say(text)
else
  ngx.status = failure.code == "unknown_api" and 404 or failure.code == "timed_out" and 504 or 503
  ngx.say(failure.code, ": ", failure.message)
end

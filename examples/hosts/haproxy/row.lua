-- HAProxy's page: a service that "http-request use-service lua.row" of pages.cfg
-- names. It is loaded by shared.cfg once, by per_thread.cfg once a thread.
local page = require "page"

-- luacheck: read globals core
core.register_service("row", "http", function(applet)
  local status, text = page.numbered_row(applet.qs)
  applet:set_status(status)
  applet:add_header("content-type", "text/plain")
  applet:add_header("content-length", tostring(#text))
  applet:start_response()
  applet:send(text)
end)

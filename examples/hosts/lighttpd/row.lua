-- lighttpd's page, which mod_magnet runs for each request of an address that
-- magnet.conf gives it; one state serves them all.
local page = package.loaded.page
if not page then
  package.path = "/srv/librpc/?.lua;" .. package.path
  page = require "page"
end

-- luacheck: globals lighty
local request = lighty.r
local status, text = page.numbered_row(request.req_attr["uri.query"])
request.resp_header["Content-Type"] = "text/plain"
request.resp_body.set(text)
return status

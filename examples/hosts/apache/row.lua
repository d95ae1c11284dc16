-- Apache's page, which mod_lua calls for each request of an address that
-- LuaMapHandler in site.conf gives it.
local page = require "page"

-- luacheck: globals handle, read globals apache2
function handle(request)
  local text
  request.status, text = page.numbered_row(request.args)
  request.content_type = "text/plain"
  request:write(text)
  return apache2.OK
end

-- Apache's gateway: mod_lua calls this for each request of an address that LuaMapHandler
-- gives it.
local answer = require "librpc.web.apache"

-- luacheck: globals handle
function handle(request)
  return answer(request)
end

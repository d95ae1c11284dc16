-- GET /api/session: who asks, what the user may, and the token that a change carries.
local json = require "librpc.web.json"
local schema = require "librpc.schema"
local tokens = require "librpc.web.tokens"

return function(request)
  local token, refusal = tokens.of(request.site, request.user)
  if not token then
    return nil, refusal
  end
  local listed = {}
  for _, api in ipairs(schema.apis) do
    local entry = listed[api.table] or { read = request.rights.may_read(api.table), change = false }
    -- of what is no set, nobody says that it changes nothing
    entry.change = entry.change or (api.operation == "set" or api.operation == "other")
      and request.rights.may_change(api.table)
    listed[api.table] = entry
  end
  return { user = request.user or json.null, token = token, tables = listed, limits = request.site.limits }
end

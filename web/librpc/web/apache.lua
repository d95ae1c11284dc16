-- The gateway in Apache's mod_lua: web/apache.lua hands each request here.
local handler = require "librpc.web.handler"

-- luacheck: read globals apache2
return function(r)
  local function body(limit)
    local length = tonumber(r.headers_in["Content-Length"] or 0)
    if not length or length > limit then
      return nil
    end
    return r:requestbody() or ""
  end
  local status, headers, text = handler.answer {
    method = r.method,
    path = r.uri,
    query = r.args ~= "" and r.args or nil,
    scheme = r.is_https and "https" or "http",
    address = r.useragent_ip,
    user = r.user ~= "" and r.user or nil,
    header = function(name)
      return r.headers_in[name]
    end,
    body = body,
    complain = function(line)
      r:err("librpc.web: " .. line)
    end,
  }
  r.status = status
  r.content_type = headers["Content-Type"]
  for name, value in pairs(headers) do
    if name ~= "Content-Type" then
      r.headers_out[name] = value
    end
  end
  if status ~= 304 then
    r:write(text)
  end
  return apache2.OK
end

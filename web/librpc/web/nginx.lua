-- The gateway in nginx's Lua module: a location's content handler. The worker waits for
-- the device as long as a request's deadline; docs/web.md tells what that stops.
--
-- nginx takes $remote_user from the request, asked for a password or not: the location
-- that asks for one says so with `set $librpc_user $remote_user`.
local handler = require "librpc.web.handler"

-- luacheck: globals ngx

-- A header that came several times is one that nobody sent.
local function header(name)
  local value = ngx.req.get_headers()[name]
  return type(value) == "table" and table.concat(value, ", ") or value
end

local function body(limit)
  ngx.req.read_body()
  local text = ngx.req.get_body_data()
  local path = not text and ngx.req.get_body_file()
  if path then -- larger than client_body_buffer_size
    local file = io.open(path, "rb")
    text = file:read(limit + 1)
    file:close()
  end
  text = text or ""
  return #text <= limit and text or nil
end

return function()
  local status, headers, text = handler.answer {
    method = ngx.req.get_method(),
    path = ngx.var.uri,
    query = ngx.var.args,
    scheme = ngx.var.scheme,
    address = ngx.var.remote_addr,
    user = ngx.var.librpc_user ~= "" and ngx.var.librpc_user or nil,
    header = header,
    body = body,
    complain = function(line)
      ngx.log(ngx.ERR, "librpc.web: ", line)
    end,
  }
  ngx.status = status
  for name, value in pairs(headers) do
    ngx.header[name] = value
  end
  if status ~= 304 then
    ngx.header["Content-Length"] = #text
    ngx.print(text)
  end
end

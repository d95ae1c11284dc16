-- The console's files, for servers that start programs and do little else: busybox
-- httpd has no header for a page of its own, and its programs all lie below /cgi-bin.
local refusals = require "librpc.web.refusals"

local types = {
  html = "text/html; charset=utf-8", js = "text/javascript; charset=utf-8", mjs = "text/javascript; charset=utf-8",
  css = "text/css; charset=utf-8", svg = "image/svg+xml", json = "application/json", txt = "text/plain; charset=utf-8",
}

-- As the other servers' configurations say it.
local policy = "default-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'; object-src 'none'"

-- A file's path from the address; nil where it is no file of the console's.
local function path_of(address)
  if address == "/" then
    return "index.html"
  end
  local path = address:sub(2)
  for part in (path .. "/"):gmatch("([^/]*)/") do
    if not part:match("^[%w_-][%w_.-]*$") then
      return nil
    end
  end
  return path
end

-- The answer to a GET of a file in request.files, the console's folder.
return function(request)
  local path = path_of(request.path)
  local file = path and types[path:match("%.(%w+)$") or ""] and io.open(request.files .. "/" .. path, "rb")
  local text = file and file:read("*a")
  if file then
    file:close()
  end
  if not text then
    return refusals.make("bad_address")
  end
  return { status = 200, text = text, headers = { ["Content-Type"] = types[path:match("%.(%w+)$")],
    ["Content-Security-Policy"] = policy, ["Cache-Control"] = "no-cache" } }
end

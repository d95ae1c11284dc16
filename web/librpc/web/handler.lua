-- The gateway: a request in, a status, headers and a body out. The web server is an
-- adapter's affair (librpc.web.cgi, .nginx, .apache), and so is saying who asks. An
-- address is a row of `addresses`.
--
-- A request has
--     method, path ("/api/all"), query (or nil), scheme ("https" or nil), address (the client's)
--     user          whom the web server let in; nil where it names nobody
--     header(name)  a header's value, or nil; names in lower case
--     body(limit)   the body's text; nil where it is longer
--     complain(line) writes to the server's log
--     files         the console's folder, where the gateway is to serve it, too
-- and gets from here
--     site, rights  the configuration and what the user may
--     body          the decoded body
local json = require "librpc.web.json"
local names = require "librpc.names"
local refusals = require "librpc.web.refusals"
local rights = require "librpc.web.rights"
local sites = require "librpc.web.site"

local handler = {}

-- A room is loaded when it is first asked for: a process of CGI answers one request.
local function room(module, name)
  return function(request)
    local found = require("librpc.web." .. module)
    return (name and found[name] or found)(request)
  end
end

-- What is where: the answer's room; `POST` where the request has a body, `change` where it
-- takes what a change takes.
local addresses = {
  ["/api/session"] = { GET = room("session") },
  ["/api/schema"] = { GET = room("schema") },
  ["/api/health"] = { GET = room("health", "answer") },
  ["/api/log"] = { GET = room("journal", "last") },
  ["/api/all"] = { POST = room("reads", "all") },
  ["/api/rows"] = { POST = room("reads", "rows") },
  ["/api/check"] = { POST = room("changes", "check") },
  ["/api/change"] = { POST = room("changes", "change"), is_change = true },
  ["/metrics"] = { GET = room("metrics") },
}

handler.addresses = addresses

-- What every answer carries: it is data, it is for this user, and nothing in it runs.
local function headers_of(content_type)
  return {
    ["Content-Type"] = content_type,
    ["Cache-Control"] = "no-store",
    ["X-Content-Type-Options"] = "nosniff",
    ["X-Frame-Options"] = "DENY",
    ["Content-Security-Policy"] = "default-src 'none'; frame-ancestors 'none'",
    ["Cross-Origin-Resource-Policy"] = "same-origin",
    ["Referrer-Policy"] = "no-referrer",
  }
end

-- Whether an Origin is that of the gateway's own pages.
local function is_own_origin(request, origin)
  if #request.site.origins > 0 then
    for _, own in ipairs(request.site.origins) do
      if own == origin then
        return true
      end
    end
    return false
  end
  local scheme, host = origin:match("^(https?)://([^/]+)$")
  return host ~= nil and host:lower() == (request.header "host" or ""):lower()
    and (not request.scheme or scheme == request.scheme)
end

-- True, or nil and a refusal, where the request comes from no page but the gateway's own.
local function check_origin(request, is_change)
  local fetch_site, origin = request.header "sec-fetch-site", request.header "origin"
  local function refuse(expected, found)
    return refusals.make("not_same_origin", ("%s, found %s"):format(expected,
      require("librpc.record.problems").shown(found)))
  end
  -- "none": the address was typed
  if fetch_site and fetch_site ~= "same-origin" and (is_change or fetch_site ~= "none") then
    return refuse("sec-fetch-site: expected same-origin", fetch_site)
  elseif origin and not is_own_origin(request, origin) then
    return refuse("origin: expected the gateway's own", origin)
  elseif is_change and not origin and not fetch_site then
    return refusals.make("not_same_origin", "origin: expected the gateway's own, found none")
  end
  return true
end

local function read_body(request)
  local declared = (request.header "content-type" or ""):lower():match("^%s*([^;%s]*)")
  if declared ~= "application/json" then
    return refusals.make("bad_content_type", "content-type: expected application/json, found "
      .. require("librpc.record.problems").shown(declared))
  end
  local limit = request.site.limits.body
  local text = request.body(limit)
  if not text then
    return refusals.make("too_large", ("body: expected at most %d bytes, found more"):format(limit))
  end
  local body, problem = json.decode(text)
  if body == nil then
    return refusals.make("bad_body", "body: " .. problem)
  end
  request.body = body
  return true
end

-- True, or nil and a refusal, where the user may change something from this page.
local function check_token(request)
  local token = request.header "x-librpc-token" or ""
  if not require("librpc.web.tokens").are_right(request.site, request.user, token) then
    return refusals.make("bad_token")
  end
  return true
end

-- The answer of an address, { status, headers, text } or a table to be written as JSON;
-- nil and a refusal.
local function answer(request)
  local address = addresses[request.path]
    or request.files and not request.path:match("^/api") and { GET = room("files") }
  if not address then
    return refusals.make("bad_address", request.path:sub(1, 200) .. ": expected an address of the gateway, found none")
  end
  local room_of = address[request.method == "HEAD" and "GET" or request.method]
  if not room_of then
    local allowed = address.GET and "GET, HEAD" or "POST"
    return refusals.make("bad_method", ("%s: expected %s, found %s"):format(request.path, allowed,
      request.method:sub(1, 20)), nil, { headers = { Allow = allowed } })
  end
  local site, problem = sites.current()
  if not site then
    return refusals.make("bad_configuration", nil, nil, { log = problem })
  end
  request.site = site
  if request.user and (#request.user > 100 or request.user:find("%c")) then
    return refusals.make("bad_user", "user: expected at most 100 bytes and no control characters, found others")
  end
  request.rights = rights.of(site, request.user)
  if not request.rights then
    return refusals.make("no_user")
  end
  names.keep(site.state .. "/names.checked")
  local loaded
  loaded, problem = names.loaded()
  if not loaded then
    return refusals.make("bad_configuration", nil, nil, { log = problem })
  elseif next(loaded) == nil and not site.without_names then
    return refusals.make("no_names")
  end
  local right, refusal = check_origin(request, address.is_change)
  if right and address.POST then
    right, refusal = read_body(request)
  end
  if right and address.is_change then
    right, refusal = check_token(request)
  end
  if not right then
    return nil, refusal
  end
  return room_of(request)
end

-- The status, the headers by name, the body.
function handler.answer(request)
  local ran, result, refusal = pcall(answer, request)
  if not ran then
    request.complain("handler: expected an answer, found " .. tostring(result))
    result, refusal = refusals.make("internal")
  end
  if not result then
    if refusal.log then
      request.complain((refusal.log:gsub("\n", "; ")))
    end
    local headers = headers_of("application/json")
    for name, value in pairs(refusal.headers or {}) do
      headers[name] = value
    end
    refusal.log, refusal.headers = nil, nil
    refusal.field = refusal.field or json.null
    return refusal.status, headers, json.encode { error = refusal }
  elseif result.headers then
    local headers = headers_of(result.headers["Content-Type"])
    for name, value in pairs(result.headers) do
      headers[name] = value
    end
    return result.status, headers, result.text
  end
  return 200, headers_of("application/json"), json.encode(result)
end

return handler

-- The gateway as a CGI program: the request comes in the environment and on standard
-- input, the answer goes to standard output.
local handler = require "librpc.web.handler"

local reasons = {
  [200] = "OK", [304] = "Not Modified", [400] = "Bad Request", [403] = "Forbidden", [404] = "Not Found",
  [405] = "Method Not Allowed", [409] = "Conflict", [413] = "Content Too Large", [415] = "Unsupported Media Type",
  [500] = "Internal Server Error", [502] = "Bad Gateway", [503] = "Service Unavailable", [504] = "Gateway Timeout",
}

-- What the server says of the request; an empty text is nothing.
local function told(name)
  local value = os.getenv(name)
  return value ~= "" and value or nil
end

local function header(name)
  if name == "content-type" then
    return told "CONTENT_TYPE"
  end
  return told("HTTP_" .. name:upper():gsub("-", "_"))
end

-- The address, and whether the program has to serve the console: where it has an
-- address of its own, as /cgi-bin/librpc.cgi, all lies behind that; else it has those
-- that the server gives it, as /api.
local function path()
  local script, info = told "SCRIPT_NAME" or "", told "PATH_INFO" or ""
  if script:match("%.cgi$") then
    return info, true
  end
  return script .. info, false
end

local function body(limit)
  local length = tonumber(told "CONTENT_LENGTH" or 0)
  if not length or length > limit then
    return nil
  end
  local text = length > 0 and io.read(length) or ""
  return text or ""
end

return function(folder)
  local address, serves_console = path()
  local status, headers, text = handler.answer {
    method = told "REQUEST_METHOD" or "GET",
    path = address,
    files = serves_console and folder .. "/console" or nil,
    query = told "QUERY_STRING",
    scheme = told "REQUEST_SCHEME" or told "HTTPS" == "on" and "https" or nil,
    address = told "REMOTE_ADDR",
    user = told "REMOTE_USER",
    header = header,
    body = body,
    complain = function(line)
      io.stderr:write("librpc.web: ", line, "\n")
    end,
  }
  local out = { ("Status: %d %s\r\n"):format(status, reasons[status] or "Error") }
  for name, value in pairs(headers) do
    out[#out + 1] = name .. ": " .. value .. "\r\n"
  end
  out[#out + 1] = "\r\n"
  if os.getenv("REQUEST_METHOD") ~= "HEAD" then
    out[#out + 1] = text
  end
  io.write(table.concat(out))
end

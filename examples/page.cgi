#!/usr/bin/env lua5.1
-- A CGI page: the rows of the table that the address names,
-- /page.cgi?table=portinfo. Any web server that runs CGI programs will do.
local names = require "librpc.names"
local record = require "librpc.record"

-- Texts come from the network: nothing of them may become markup.
local function escaped(value)
  if type(value) == "table" then
    value = table.concat(value, ",")
  end
  return (tostring(value):gsub('[&<>"]', { ["&"] = "&amp;", ["<"] = "&lt;", [">"] = "&gt;", ['"'] = "&quot;" }))
end

local function page(status, title, body)
  io.write("Status: ", status, "\r\nContent-Type: text/html; charset=utf-8\r\n\r\n", "<!DOCTYPE html>\n<title>",
    escaped(title), "</title>\n<h1>", escaped(title), "</h1>\n", body)
end

-- What the page's reader can do about a failure, by its code.
local statuses = {
  unknown_api = "404 Not Found",
  no_operation = "404 Not Found",
  no_daemon = "503 Service Unavailable",
  no_portmapper = "503 Service Unavailable",
  refused = "503 Service Unavailable",
  timed_out = "504 Gateway Timeout",
}

local query = "&" .. (os.getenv("QUERY_STRING") or "")
local name = query:match("&table=([%w_]*)") or "portinfo"

local rows
local fields, message, code = names.fields(name)
if fields then
  rows, message, code = record.rows(name)
end
if not rows then
  page(statuses[code] or "500 Internal Server Error", name, "<p>" .. escaped(message) .. "</p>\n")
  return
end

local cells = {}
local function line(tag, value_of)
  cells[#cells + 1] = "<tr>"
  for _, field in ipairs(fields) do
    if not field.secret then
      cells[#cells + 1] = ("<%s>%s</%s>"):format(tag, escaped(value_of(field)), tag)
    end
  end
  cells[#cells + 1] = "</tr>\n"
end
line("th", function(field)
  return field.title .. (field.unit and " (" .. field.unit .. ")" or "")
end)
for _, row in ipairs(rows) do
  line("td", function(field)
    return row[field.name] == nil and "" or row[field.name]
  end)
end
page("200 OK", name, "<table>\n" .. table.concat(cells) .. "</table>\n")

#!/usr/bin/env lua5.1
-- A CGI page of the whole device: a table of each of the fifteen daemons, written by
-- the names of their fields, which a file of names gives them (docs/named_fields.md;
-- the simulated device's is sim/names.lua). All tables are read at once, so that the
-- page costs its slowest daemon, and no daemon more than the deadline. What fails
-- is said in its place, so that one daemon's end does not take the page away.
local names = require "librpc.names"
local record = require "librpc.record"

local deadline = 1 -- second, for all daemons

-- What the page shows: a table and its columns.
local sections = {
  { "devinfo", "hostname", "model", "serial", "software", "uptime" },
  { "portinfo", "port", "name", "description", "enabled", "link", "speed", "mtu" },
  { "route", "network", "gateway", "interface", "metric", "origin" },
  { "account", "user", "level", "enabled" },
  { "radsrv", "server", "authentication_port", "timeout", "enabled" },
  { "lldpifnei", "port", "neighbour", "chassis", "description" },
  { "mstp_inst", "instance", "vlans", "priority" },
  { "mbainststate", "name", "peer", "connected" },
  { "igmpsnp_grp", "vlan", "port_name", "group", "source" },
  { "poeifinfo", "port", "state", "power" },
  { "vrrp_ssconf", "router", "interface", "address", "priority" },
  { "sdsminfo", "item", "content" },
  { "ioctlinfo", "number", "name" },
  { "dhcpsnp", "trusted", "scope", "enabled" },
  { "lpdet_portinfo", "port_name", "enabled", "vlans", "state" },
}

-- Texts come from the network: nothing of them may become markup.
local function escaped(value)
  if type(value) == "table" then
    value = table.concat(value, ",")
  end
  return (tostring(value):gsub('[&<>"]', { ["&"] = "&amp;", ["<"] = "&lt;", [">"] = "&gt;", ['"'] = "&quot;" }))
end

local function paragraph(message)
  return "<p role=\"alert\">" .. escaped(message) .. "</p>\n"
end

-- The headings of a section's columns; an error where the names do not have one.
local function headings(section)
  local fields, message = names.fields(section[1])
  if not fields then
    return nil, message
  end
  local by_name, list = {}, {}
  for _, field in ipairs(fields) do
    by_name[field.name] = field
  end
  for i = 2, #section do
    local field = by_name[section[i]]
    if not field then
      return nil, ("%s: expected a name of its fields, found %s"):format(section[1], section[i])
    end
    list[#list + 1] = field.title .. (field.unit and " (" .. field.unit .. ")" or "")
  end
  return list
end

local function write_line(tag, cells)
  io.write("<tr>")
  for _, cell in ipairs(cells) do
    io.write("<", tag, ">", escaped(cell), "</", (tag:gsub(" .*", "")), ">")
  end
  io.write("</tr>\n")
end

-- A section: its rows, which are all that there were in time where it failed, why
-- it did, and how it ended where it did not.
local function write_section(section, rows, failure, ending)
  local entry = names.tables[section[1]]
  io.write("<h2>", escaped(entry and entry.title or section[1]), "</h2>\n")
  local head, message = headings(section)
  if not head then
    io.write(paragraph(message))
    return
  elseif failure then
    io.write(paragraph(failure.message))
    if #rows == 0 then
      return
    end
  elseif ending.why == "res" then -- nobody said which result is the end
    io.write(paragraph("The table ended with the daemon's result " .. ending.last.res))
  end
  io.write("<table>\n")
  write_line('th scope="col"', head)
  for _, row in ipairs(rows) do
    local cells = {}
    for i = 2, #section do
      cells[i - 1] = row[section[i]]
    end
    write_line("td", cells)
  end
  io.write("</table>\n")
end

io.write("Status: 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n\r\n",
  '<!DOCTYPE html>\n<html lang="en">\n<title>Device</title>\n<h1>Device</h1>\n')
local readable, mistakes = names.loaded()
if readable then
  local walks = {}
  for i, section in ipairs(sections) do
    walks[i] = { section[1] }
  end
  local rows, failures, endings = record.walks(walks, deadline)
  for i, section in ipairs(sections) do
    write_section(section, rows[i], failures[i], endings[i])
  end
else
  io.write(paragraph(mistakes))
end

-- Writes rpcctl's manual page from the data of its commands:
--
--     lua5.1 tools/man_page.lua SOURCE BUILD VERSION DATE >docs/man/rpcctl.1
--
-- SOURCE is the source tree, BUILD the folder of librpc.so.
local source, build, version, date = ...
if not date then
  io.stderr:write("man_page: arguments: expected SOURCE BUILD VERSION DATE, found ", tostring(source), "\n")
  os.exit(2)
end
package.path = source .. "/lua/?.lua;" .. package.path
package.cpath = build .. "/?.so;" .. package.cpath

local commands = require "rpcctl.commands"
local exits = require "rpcctl.exits"
local options = require "rpcctl.options"

local function escape(text)
  return (text:gsub("\\", "\\e"):gsub("%-", "\\-"):gsub("\n([.'])", "\n\\&%1"):gsub("^([.'])", "\\&%1"))
end

local function put(format, ...)
  print(format:format(...))
end

local function sentence(text)
  return (text:gsub("^%l", string.upper)) .. "."
end

put('.TH RPCCTL 1 %s "librpc %s" "User Commands"', date, version)
print [[
.SH NAME
rpcctl \- read, change, watch and back up the tables of a device's daemons
.SH SYNOPSIS
.B rpcctl
\fICOMMAND\fR [\fIOPTION\fR]... [\fIARGUMENT\fR]...
.SH DESCRIPTION
Each table of the device is owned by a local daemon, which serves it as an ONC RPC
program. rpcctl calls them through
.BR librpc (3)
and knows every table by its description, and its fields by the names that a site or
the device's maker gives them.
.PP
On a terminal rows are an aligned table of the columns that there is room for, without
those that are empty; a pipe gets a row a line, its cells between tabs. Secrets are
printed as (set). Control characters of a daemon's texts are printed as \ex1b, \en and
so on. Errors go to standard error.
.SH COMMANDS]]
for _, name in ipairs(commands.list) do
  local command = commands.find(name)
  local usage = options.usage(command)
  put(".SS %s", escape(name .. (usage ~= "" and " " .. usage or "")))
  print(escape(sentence(command.summary)))
  if command.details then
    print((escape(command.details):gsub("\n", "\n.br\n")))
  end
  for _, option in ipairs(command.options or {}) do
    put(".TP\n.B %s\n%s", escape("--" .. option[1] .. (option[2] and " " .. option[2] or "")), escape(option[3]))
  end
  for i, example in ipairs(command.examples or {}) do
    put("%s.IP\n.B %s\n.br\n%s", i == 1 and ".PP\nExamples:\n" or "", escape(example[1]), escape(example[2]))
  end
end
print(".SH OPTIONS OF EVERY COMMAND")
for _, option in ipairs(options.common) do
  put(".TP\n.B %s\n%s", escape("--" .. option[1] .. (option[2] and " " .. option[2] or "")), escape(option[3]))
end
print(".SH EXIT STATUS")
for _, status in ipairs(exits.statuses) do
  put(".TP\n.B %d\n%s", status.number, escape(status.meaning))
end
print [[
.SH ENVIRONMENT
.TP
.B NO_COLOR
when set and not empty, nothing is coloured; nor where TERM is dumb.
.TP
.B LIBRPC_NAMES
files of names for fields, with colons between; /etc/librpc/names/*.lua where it is not set.
.SH SEE ALSO
.BR librpc (3),
.BR librpc.record (3),
.BR rpcinfo (8)]]

-- Writes rpcctl's manual page from what rpcctl says of itself:
--
--     lua5.1 tools/man_page.lua RPCCTL VERSION DATE >docs/man/rpcctl.1
--
-- RPCCTL is a command that runs the program.
local program, version, date = ...
if not date then
  io.stderr:write("man_page: arguments: expected RPCCTL VERSION DATE, found ", tostring(program), "\n")
  os.exit(2)
end

local function help(arguments)
  local pipe = assert(io.popen(program .. " " .. arguments .. " --help"))
  local text = pipe:read("*a")
  if not pipe:close() or text == "" then
    io.stderr:write(("man_page: %s %s --help: expected a text, found none\n"):format(program, arguments))
    os.exit(1)
  end
  return text
end

local function escape(text)
  return (text:gsub("\\", "\\e"):gsub("%-", "\\-"):gsub("^([.'])", "\\&%1"))
end

local function put(format, ...)
  print(format:format(...))
end

local overview = help("")
put('.TH RPCCTL 1 %s "librpc %s" "User Commands"', date, version)
print(".SH NAME")
print("rpcctl \\- read, change and watch the tables of a device's daemons")
print(".SH SYNOPSIS")
print(".B rpcctl")
print("\\fICOMMAND\\fR [\\fIARGUMENT\\fR]...")
print(".SH DESCRIPTION")
print("Each table of the device is owned by a local daemon, which serves it as an ONC RPC")
print("program. rpcctl calls them through")
print(".BR librpc (3)")
print("and knows every table by its description.")
print("On a terminal tables are aligned and coloured (never with NO_COLOR set); in a pipe")
print("a line is plain and its cells stand between tabs. Errors go to standard error.")
print(".SH COMMANDS")
for name in overview:gmatch("\n  (%l+) +%u?") do
  local text = help(name)
  local first = true
  for line in text:gmatch("[^\n]+") do
    local option, meaning = line:match("^%s+(%-%-%l+[ %u.,=]*)%s+(.+)$")
    if first then
      put(".SS %s", escape(line:gsub("^rpcctl ", "")))
      first = false
    elseif option then
      put(".TP\n.B %s\n%s", escape(option:gsub("%s+$", "")), escape(meaning))
    else
      print(escape(line:gsub("^%s+", "")))
    end
  end
end
print(".SH EXIT STATUS")
for code, meaning in overview:gmatch("\n  (%d+) +([^\n]+)") do
  put(".TP\n.B %s\n%s", code, escape(meaning))
end
print(".SH ENVIRONMENT")
print(".TP\n.B NO_COLOR\nwhen set, nothing is coloured.")
print(".SH SEE ALSO")
print(".BR librpc (3),\n.BR rpcinfo (8)")

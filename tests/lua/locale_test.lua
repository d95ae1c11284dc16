-- librpc.record where numbers have a decimal comma, beside the device. The locale is
-- made here; an interpreter of its own uses it.
local check = require "check"
local shell = require "shell"

local folder = os.tmpname()
os.remove(folder)
local file = assert(io.open("/run/comma", "w"))
file:write('LC_NUMERIC\ndecimal_point "<U002C>"\nthousands_sep ""\ngrouping -1\nEND LC_NUMERIC\n')
file:close()
shell.run("mkdir " .. folder .. " && localedef -c -i /run/comma -f UTF-8 " .. folder .. "/comma")

local function printed(script)
  file = assert(io.open("/run/script.lua", "w"))
  file:write('local record = require "librpc.record"\nassert(os.setlocale("comma", "numeric"), "no such locale")\n',
    script)
  file:close()
  local output, errors = shell.run("LOCPATH=" .. folder .. " " .. shell.interpreter .. " /run/script.lua")
  return output .. errors
end

check.equal("the locale has a comma",
  printed 'print(require("librpc").callapi("oltmib_ntp_get_1", ""):match("%d,%d+"))', "0,25\n")
check.equal("a reply", printed 'local row = record.get "ntp" print(row.real1 == 0.25, row.real2 == 12.5)',
  "true\ttrue\n")
check.equal("a change", printed [[
  print((record.change("ntp", {}, { text64a = "a", real1 = 1.5, real2 = "2.75" })))
  print((record.change("ntp", {}, { text64a = "a", real1 = 1.5, real2 = "2,75" })))
  local row = record.get "ntp"
  print(row.real1 == 1.5, row.real2 == 2.75)
  print((record.change("ntp", {}, { real1 = -1.25e-7, real2 = 12345678901.25 })))
  print(record.get "ntp".real2 == 12345678901.25)
  print((record.change("ntp", {}, { real1 = 1.5, real2 = 2.75 })))]], "0\n0\ntrue\ttrue\n0\ntrue\n0\n")
check.equal("what is no number", printed 'print(select(3, record.encode("oltmib_ntp_set_1", { real1 = "1,2,3" })))',
  "bad_number\n")
check.equal("a counter", printed 'print(("%d"):format(record.difference("18446744073709551615", "1")))', "-2\n")
check.equal("and the daemon has it so", require("librpc").callapi("oltmib_ntp_get_1", ""):match("&1%.50&2%.75&") ~= nil,
  true)

check.equal("a number with an exponent",
  printed 'print(tonumber((record.encode("oltmib_ntp_set_1", { real1 = -1.25e-7 }):gsub("&", ""))) == -1.25e-7)',
  "true\n")

shell.run("rm -r " .. folder)
check.finish()

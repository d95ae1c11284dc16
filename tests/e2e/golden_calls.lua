-- Every call of tests/golden/vectors through the loaded library: what an argument
-- sends and what is made of a reply. tests/golden asks the same of its objects;
-- this asks the file that is installed, on any host.
local calls = require "librpc.calls"
local golden = require "golden"
local harness = require "harness"
local process = require "e2e_process"
local schema = require "librpc.schema"
local case, equal = harness.case, harness.equal

local header = 40 -- bytes of a call before its record
local char_is_signed, bits_of_long, low_byte_first = process.host()

-- Numbers beyond an int are read as a long and cut: the vectors show what comes of
-- it where a long is wide. Elsewhere the same int is asked for.
local function as_this_host_reads(argument)
  if bits_of_long > 32 then
    return argument
  end
  local text = (" " .. argument):gsub("([^-])4294967295", "%1-1"):gsub("([^-])2147483648", "%1-2147483648")
  return text:sub(2)
end

local function unit_at(text, at)
  local a, b, c, d = text:byte(at, at + 3)
  return ((a * 256 + b) * 256 + c) * 256 + d
end

-- A character travels as the host's char widens; the vectors' is signed.
local function same_unit(found, wanted)
  return found == wanted or not char_is_signed and wanted >= 2 ^ 32 - 128 and found == wanted % 256
end

local function check_request(call, datagram)
  local body = datagram:sub(header + 1)
  equal(#body, 4 * #call.request, call.place .. ": bytes")
  for i, wanted in ipairs(call.request) do
    local found = unit_at(body, 4 * i - 3)
    if not same_unit(found, wanted) then
      equal(found, wanted, ("%s: unit %d"):format(call.place, i))
    end
  end
end

local function datagram_of(units)
  local parts = {}
  for i, unit in ipairs(units) do
    parts[i] = string.char(math.floor(unit / 2 ^ 24), math.floor(unit / 2 ^ 16) % 256, math.floor(unit / 2 ^ 8) % 256,
      unit % 256)
  end
  return table.concat(parts)
end

-- The int, or its bytes as a text, at the head of a record of zeroes.
local function check_status(call, text)
  local status = call.reply[1]
  local first = ("%d"):format(status < 2 ^ 31 and status or status - 2 ^ 32)
  if schema.api(call.api).status.kind ~= "int" then
    local bytes = datagram_of { status }
    first = (low_byte_first and bytes:reverse() or bytes):match("^[^%z]*")
  end
  equal(text:sub(1, #first + 1), first .. "&", call.place .. ": status")
  for part in text:sub(#first + 2):gmatch("[^&]+") do
    equal(part == "0" or part == "00-00-00-00-00-00", true, call.place .. ": " .. part)
  end
end

case "every_golden_call_is_sent_and_its_reply_is_read" (function()
  local count = 0
  local accepted = ("\0\0\0\1" .. ("\0"):rep(16))
  for _, call in ipairs(golden.calls()) do
    local datagram, _, _, message = calls.message(call.api, as_this_host_reads(call.argument))
    check_request(call, datagram)
    local text = message:reply(datagram:sub(1, 4) .. accepted .. datagram_of(call.reply))
    if call.text then
      equal(text, call.text, call.place)
    else
      check_status(call, text)
    end
    count = count + 1
  end
  io.stderr:write(count, " golden calls\n")
end)

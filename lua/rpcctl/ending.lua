-- How a command speaks and ends: what it prints, what it complains of, and leaving
-- from any depth. rpcctl.main catches what leaves.
local exits = require "rpcctl.exits"
local printable = require "librpc.record.printable"

local ending = { Exit = {} }

-- Ends the program with an exit status.
function ending.leave(status)
  error(setmetatable({ status = status }, ending.Exit), 0)
end

-- Says on standard error what went wrong and what to do about it.
function ending.complain(message, code)
  io.stdout:flush()
  local advice = exits.advice(code, message)
  -- librpc.record has escaped what it shows: a backslash stays as it is
  local shown = printable.line(message):gsub("\\\\", "\\")
  io.stderr:write("rpcctl: ", shown, advice and "; " .. advice or "", "\n")
end

function ending.give_up(message, code)
  ending.complain(message, code)
  ending.leave(exits.of(code))
end

-- Ends because of how a command was called.
function ending.misuse(command, expected, found)
  ending.give_up(("%s: expected %s, found %s; see rpcctl %s--help"):format(command or "arguments", expected, found,
    command and command .. " " or ""), "usage")
end

-- A word as a message shows it.
function ending.quoted(word)
  return "'" .. tostring(word) .. "'"
end

-- The values, or the end with the message where the first is nil.
function ending.need(value, message, code)
  if value == nil then
    ending.give_up(message, code)
  end
  return value, message, code
end

-- Writes to standard output.
function ending.write(...)
  if not io.write(...) then
    ending.give_up("standard output: expected room for all of it, found a write error", "write_error")
  end
end

-- Sends what was written on its way.
function ending.flush()
  if not io.stdout:flush() then
    ending.give_up("standard output: expected room for all of it, found a write error", "write_error")
  end
end

return ending

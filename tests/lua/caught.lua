-- What rpcctl's own functions print and say, caught in the test's process.
local check = require "check"
local ending = require "rpcctl.ending"
local terminal = require "rpcctl.terminal"

local caught = {
  bold = "\27[1m", red = "\27[1;31m", plain = "\27[0m", -- a terminal's, as written has them
}

-- What a call says on standard error, and the status with which it ends
function caught.ends(called, ...)
  local said = {}
  local standard_error = io.stderr
  rawset(io, "stderr", { write = function(_, ...) said[#said + 1] = table.concat { ... } end })
  local ok, problem = pcall(called, ...)
  rawset(io, "stderr", standard_error)
  return table.concat(said), not ok and getmetatable(problem) == ending.Exit and problem.status or problem
end

-- What is written by a function, on a terminal of so many columns where `room` is given,
-- in colours where they are wanted; `unsent()` is whether some of it is not on its way yet.
function caught.written(called, room, coloured)
  local pieces, sent = {}, 0
  local write, standard_output = io.write, io.stdout
  local is, size, is_coloured = terminal.is, terminal.size, terminal.is_coloured
  rawset(io, "write", function(...)
    pieces[#pieces + 1] = table.concat { ... }
    return true
  end)
  rawset(io, "stdout", { flush = function()
    sent = #pieces
    return true
  end })
  terminal.is = function(descriptor) return descriptor == 1 and room ~= nil end
  terminal.size = function() return room, 24 end
  terminal.is_coloured = function() return coloured or false end
  local ok, problem = pcall(called, function() return table.concat(pieces) end, function() return #pieces > sent end)
  rawset(io, "write", write)
  rawset(io, "stdout", standard_output)
  terminal.is, terminal.size, terminal.is_coloured = is, size, is_coloured
  check.equal("no error", { ok, problem }, { true })
  return table.concat(pieces)
end

return caught

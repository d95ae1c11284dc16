-- The terminal that rpcctl may stand on: whether, how wide, in colours, its keys.
local terminal = {}

local function succeeds(command)
  local result = os.execute(command)
  return result == true or result == 0
end

local known = {}

-- True when that descriptor (0, 1) is a terminal.
function terminal.is(descriptor)
  if known[descriptor] == nil then
    known[descriptor] = succeeds("test -t " .. descriptor)
  end
  return known[descriptor]
end

-- True when the cursor can be moved there.
function terminal.can_move()
  local kind = os.getenv("TERM") or ""
  return terminal.is(1) and kind ~= "dumb" and kind ~= ""
end

-- True when colours are welcome there.
function terminal.is_coloured()
  local refusal = os.getenv("NO_COLOR")
  return terminal.can_move() and (refusal == nil or refusal == "")
end

local function first_line(command)
  local pipe = io.popen(command)
  local line = pipe and pipe:read("*l")
  if pipe then
    pipe:close()
  end
  return line
end

-- Its columns and lines.
function terminal.size()
  local lines, columns = (first_line("stty size 2>/dev/null </dev/tty") or ""):match("^(%d+) (%d+)$")
  lines, columns = tonumber(lines), tonumber(columns)
  if not columns or columns == 0 then
    columns = tonumber(os.getenv("COLUMNS")) or 80
  end
  if not lines or lines == 0 then
    lines = tonumber(os.getenv("LINES")) or 24
  end
  return columns, lines
end

-- Waits, and returns true where the key `q` was pressed meanwhile. `pressed` says
-- that terminal.listen is on.
function terminal.pause(seconds, listening)
  if not listening then
    -- not os.execute, during which this process hears no Ctrl-C
    first_line(("sleep %.3f"):format(seconds):gsub(",", ".") .. "")
    return false
  end
  local clock = require "librpc.record.clock"
  local over = clock() + seconds
  repeat
    local key = io.stdin:read(1) -- or nothing, after a fifth of a second
    if key == "q" or key == "Q" then
      return true
    end
  until clock() >= over
  return false
end

-- Runs a function with keys readable as they are pressed, where standard input is a
-- terminal; it gets whether they are.
function terminal.listen(run)
  local before = terminal.is(0) and first_line("stty -g 2>/dev/null")
  if not before or not before:match("^[%w:=]+$") or not succeeds("stty -icanon -echo min 0 time 2 2>/dev/null") then
    return run(false)
  end
  io.stdin:setvbuf("no")
  local ok, problem = pcall(run, true)
  succeeds("stty " .. before)
  if not ok then
    error(problem, 0)
  end
end

return terminal

-- What the tests of rpcctl share: running it in a pipe and on a terminal of tmux.
--
--     local tool = require "tool"
--     tool.prints("rows svi --fields vlan", "1\n20\n")
--     tool.fails("rows svj", 3, "rpcctl: ...\n")
--     local screen = tool.terminal { columns = 80, "rpcctl rows svi", shows = "vlan20" }
local check = require "check"
local clock = require "clock"
local shell = require "shell"

local tool = {}
local source = os.getenv "LIBRPC_TEST_SOURCE"
tool.source = source

-- The command that the shell runs for "rpcctl".
tool.command = shell.interpreter .. " " .. source .. "/bin/rpcctl"
local prefix = "rpcctl() { " .. tool.command .. ' "$@"; }; '

-- Runs a shell's line in which rpcctl stands: what it printed, its complaints, its status.
function tool.run(line)
  return shell.run(prefix .. line)
end

function tool.prints(arguments, expected)
  local output, errors, status = tool.run("rpcctl " .. arguments)
  check.equal("rpcctl " .. arguments, { output, errors, status }, { expected, "", 0 })
end

function tool.fails(arguments, status, errors, output)
  local printed, complaints, code = tool.run("rpcctl " .. arguments)
  check.equal("rpcctl " .. arguments, { printed, complaints, code }, { output or "", errors, status })
end

-- How often a text has a pattern.
function tool.count(text, pattern)
  return select(2, text:gsub(pattern, ""))
end

local servers = 0

-- Runs a line on a terminal of tmux and gives what it shows once that has `shows` (a
-- plain text; the line's own end, "[exit STATUS]", if not given). Where it never does,
-- the test fails after a minute. Further settings: columns, lines, environment
-- ("NO_COLOR=1"), coloured (with its escapes), keys (sent once `ready` is shown).
function tool.terminal(settings)
  servers = servers + 1
  -- in /run, which is this test's alone: names are the whole machine's
  local name = "/run/terminal" .. servers
  local script = os.tmpname()
  local file = assert(io.open(script, "w"))
  file:write("PS1= ; ", prefix, (settings.environment or "") ~= "" and "export " .. settings.environment .. "; " or "",
    settings[1], "; echo \"[exit $?]\"; sleep 300\n")
  file:close()
  local tmux = "tmux -S " .. name .. " -f /dev/null "
  local _, errors, status = shell.run(("TERM=xterm-256color %snew-session -d -x %d -y %d 'bash %s'"):format(tmux,
    settings.columns or 80, settings.lines or 24, script))
  check.equal("tmux: " .. errors, status, 0)
  local function shown_with(text)
    local screen
    local over = clock.now() + 60
    repeat
      screen = shell.run("sleep 0.02; " .. tmux .. "capture-pane -p " .. (settings.coloured and "-e" or ""))
      local is_shown = screen:find(text, 1, true)
      if not is_shown and clock.now() >= over then
        check.equal("a terminal that shows " .. text, screen, text)
        break
      end
    until is_shown
    return (screen:gsub("%s*\n%s*$", "\n"):gsub("[ ]+\n", "\n"))
  end
  if settings.keys then
    shown_with(settings.ready)
    shell.run(tmux .. "send-keys " .. settings.keys)
  end
  local screen = shown_with(settings.shows or "[exit ")
  shell.run(tmux .. "kill-server")
  os.remove(script)
  return screen
end

return tool

-- Completion: what may follow, in bash, zsh and fish.
local check = require "check"
local shell = require "shell"
local tool = require "tool"

local function words(typed)
  local found, complaints = tool.run("rpcctl --complete " .. typed .. " | cut -f 1")
  check.equal("--complete " .. typed .. ": complaints", complaints, "")
  return (found:gsub("\n", " "))
end
for _, row in ipairs {
  { "wa", "watch " }, { "h", "health help " }, { "--v", "--version " }, { "help ba", "backup " },
  { "rows portr", "portrate " }, { "set portr", "" }, { "set portinf", "portinfo " }, { "describe oltmib_svi",
    "oltmib_svi_get_1 oltmib_svi_getn_1 oltmib_svi_set_1 " }, { "call oltmib_svi_s", "oltmib_svi_set_1 " },
  { "list lp", "lpdet " }, { "backup file vrrp", "vrrp_ssconf vrrp_ssstate vrrpinfo " }, { "backup fi", "" },
  { "rows portinfo li", "link= " }, { "rows portinfo link=", "link=down link=up " }, { "rows portinfo 'link!='",
    "link!=down link!=up " }, { "set portinfo port=3 enabled=o", "enabled=off enabled=on " },
  { "set svi o", "" }, { "rows svi o", "oper= " }, { "rows svi --fo", "--format= " }, { "rows svi --format j",
    "json jsonl " },
  { "rows svi --format=k", "--format=kv " }, { "rows svi --fields vlan,na", "vlan,name " }, { "rows --limit 3 svi na",
    "name= " },
  { "rows svi --sort ad", "address " }, { "set --where link=down portinf", "portinfo " }, { "set svi --d",
    "--dry-run " },
  { "rows svi --d", "" }, { "rows --json portr", "portrate " }, { "health x", "" },
  { "call oltmib_svi_get_1 x", "" },
  { "nonsense a", "" }, { "set portstat counter", "" }, { "rows svi --after v", "vlan= " },
} do
  check.equal("--complete " .. row[1], words(row[1]), row[2])
end
check.equal("with what it means", tool.run "rpcctl --complete rows portr", "portrate\tPort rates\n")

local bash = shell.run([[bash -c 'source $LIBRPC_TEST_SOURCE/completion/rpcctl.bash
  rpcctl() { ]] .. tool.command .. [[ "$@"; }; compopt() { echo "$@"; }
  complete_line() { COMP_LINE=$1 COMP_POINT=${#1}; _rpcctl; echo "${COMPREPLY[@]}"; }
  complete_line "rpcctl get portin"; complete_line "rpcctl set svi na"; complete_line "rpcctl rows portinfo link="
  complete_line "rpcctl rows svi --fields vlan,n"']])
check.equal("bash", bash, "portinfo portintfmode portinbandan\n-o nospace\nname=\ndown up\nvlan,name\n")

-- A shell by its name, where it is installed
local function there(name)
  return select(3, shell.run("command -v " .. name .. " >/dev/null")) == 0
end
shell.run("mkdir -p /run/bin; printf '#!/bin/sh\\nexec " .. tool.command
  .. " \"$@\"\\n' >/run/bin/rpcctl; chmod +x /run/bin/rpcctl")
if there "fish" then
  check.equal("fish", (shell.run([[PATH=/run/bin:$PATH HOME=/run fish --no-config -c '
    source $LIBRPC_TEST_SOURCE/completion/rpcctl.fish
    complete -C "rpcctl rows portr"; complete -C "rpcctl set portinfo enabled=o"
    complete -C "rpcctl rows svi --format js"'
  ]])), "portrate\tPort rates\nenabled=off\nenabled=on\njson\njsonl\n")
end
if there "zsh" then
  -- zsh completes only where it has a line to edit
  shell.run("mkdir /run/zsh; printf '%s\\n' 'autoload -Uz compinit' 'compinit -u -d /run/zcompdump' 'source "
    .. tool.source .. "/completion/rpcctl.zsh' 'PS1=ok:' >/run/zsh/.zshrc")
  for _, row in ipairs {
    { "rows portr", "rows portrate " }, { "rows portinfo lin", "rows portinfo link=" },
    { "rows portinfo link=u", "rows portinfo link=up " }, { "rows svi --form", "rows svi --format=" },
  } do
    local screen = tool.terminal { "ZDOTDIR=/run/zsh PATH=/run/bin:$PATH zsh -i", ready = "ok:", columns = 100,
      keys = "'rpcctl " .. row[1] .. "' Tab x", shows = row[2] .. "x" }
    check.equal("zsh: " .. row[1], screen:find("ok:rpcctl " .. row[2] .. "x", 1, true), 1)
  end
end

check.finish()

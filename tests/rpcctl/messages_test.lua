-- What rpcctl says when something is wrong: where, what was expected and found, what to do.
local check = require "check"
local shell = require "shell"
local tool = require "tool"
local fails = tool.fails

-- Mistyped words, swapped letters too
for wrong, right in pairs { lits = "list", gte = "get", wacth = "watch", baclup = "backup", rwos = "rows",
  hlep = "help" } do
  fails(wrong, 2, ("rpcctl: arguments: expected a command (did you mean %s?), found '%s'; see rpcctl "
    .. "--help\n"):format(right,
    wrong))
end
fails("help nonsense", 2, "rpcctl: help: expected one of list, describe, get, rows, watch, set, add, call, health, "
  .. "backup, "
  .. "restore, diff, help, found 'nonsense'; see rpcctl help --help\n")
fails("help rwos", 2, "rpcctl: help: expected a command (did you mean rows?), found 'rwos'; see rpcctl help --help\n")
fails("rows svi --feilds x", 2,
  "rpcctl: rows: expected an option (did you mean --fields?), found '--feilds'; see rpcctl rows --help\n")
fails("rows svi --format jsno", 2, "rpcctl: rows: expected --format json, found 'jsno'; see rpcctl rows --help\n")
fails("rows svi -v", 2, "rpcctl: rows: expected an option of --help, found '-v'; see rpcctl rows --help\n")
fails("rows svi --json=1", 2, "rpcctl: rows: expected --json without a value, found '--json=1'; see rpcctl rows "
  .. "--help\n")
fails("rows svi --limit 1 --limit 2", 2, "rpcctl: rows: expected --limit once, found '--limit' again; see rpcctl rows "
  .. "--help\n")
fails("rows svi --timeout soon", 2,
  "rpcctl: rows: expected --timeout and a number from 0.001, found 'soon'; see rpcctl rows --help\n")
fails("health now", 2, "rpcctl: health: expected no arguments, found 'now'; see rpcctl health --help\n")
fails("rows ioctlinfo --end", 2, "rpcctl: rows: expected FIELD=VALUE behind --end, found nothing; see rpcctl rows "
  .. "--help\n")
fails("rows svo", 3, 'rpcctl: librpc: expected the name of a table (did you mean svi?), found "svo"; '
  .. "rpcctl list shows every API, rpcctl list --tables every table\n")
fails("rows svis", 3, 'rpcctl: librpc: expected the name of a table (did you mean svi?), found "svis"; '
  .. "rpcctl list shows every API, rpcctl list --tables every table\n")

-- A word with control characters does not reach the terminal
fails([["$(printf 'a\033[31mb')"]], 2,
  "rpcctl: arguments: expected a command (list, describe, get, rows, watch, set, add, "
  .. "call, health, backup, restore, diff, help), found 'a\\x1b[31mb'; see rpcctl --help\n")

-- Failures name the service, and nothing else is on standard error
local where = "rpcctl: oltmib_svi_getn_1 (service nsminfo, program 50004): "
shell.tell "fault nsminfo error system_err"
fails("rows svi", 7, where .. "the daemon answered that it will not or cannot carry the call out "
  .. "[RPC: Remote system error]; the daemon may be of another version, or in trouble: its log should tell\n")
shell.tell "clear"
shell.tell "fault nsminfo truncate 4"
fails("rows svi", 7, where .. "the daemon's answer is not this call's reply [RPC: Can't decode result]; the daemon "
  .. "may be "
  .. "of another version: rpcctl describe shows what is expected\n")
shell.tell "clear"
shell.tell "stop nsminfo"
fails("rows svi", 4, where .. "the daemon has not registered with the port mapper [RPC: Program not registered]; "
  .. "start the service's daemon; rpcctl health tells which daemons answer\n")
fails("call oltmib_svi_getn_1", 4, where .. "the daemon has not registered with the port mapper "
  .. "[RPC: Program not registered]; start the service's daemon; rpcctl health tells which daemons answer\n")
fails("set svi vlan=20 name=x", 4, "rpcctl: oltmib_svi_get_1 (service nsminfo, program 50004): the daemon has not "
  .. "registered with the port mapper [RPC: Program not registered]; start the service's daemon; rpcctl health tells "
  .. "which "
  .. "daemons answer\n")
shell.tell "start nsminfo"

-- The version
local version = assert(io.open(tool.source .. "/CMakeLists.txt")):read("*a"):match("project%(librpc VERSION ([%d.]+)")
tool.prints("--version", "rpcctl " .. version .. "\n")

check.finish()

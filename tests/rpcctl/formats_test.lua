-- The forms of rows, in pipes; what no text of a daemon gets through.
local check = require "check"
local shell = require "shell"
local tool = require "tool"
local prints, run = tool.prints, tool.run
local golden = require "golden"

local some = "rows vlaninfo --limit 2 --fields vlan,name,tagged --format "
prints(some .. "tsv", "1\tdefault\t\n10\tvoice\tge3,ge4\n")
prints(some .. "tsv --header", "vlan\tname\ttagged\n1\tdefault\t\n10\tvoice\tge3,ge4\n")
prints(some .. "csv", 'vlan,name,tagged\n1,default,\n10,voice,"ge3,ge4"\n')
prints(some .. "json", '[{"vlan":1,"name":"default","tagged":""},\n{"vlan":10,"name":"voice","tagged":"ge3,ge4"}]\n')
prints(some .. "jsonl", '{"vlan":1,"name":"default","tagged":""}\n{"vlan":10,"name":"voice","tagged":"ge3,ge4"}\n')
prints(some .. "kv", 'vlan=1 name=default tagged=""\nvlan=10 name=voice tagged=ge3,ge4\n')
prints(some .. "table", "vlan  name     tagged\n1     default  \n10    voice    ge3,ge4\n")
prints(some .. "vertical", "vlan\t1\nname\tdefault\ntagged\t\n\nvlan\t10\nname\tvoice\ntagged\tge3,ge4\n")
prints("rows vlaninfo vlan=99 --format json", "[]\n")
prints("rows vlaninfo vlan=99 --format csv --fields vlan,name", "vlan,name\n")
prints("rows vlaninfo vlan=99 --format table", "")
prints("rows vlaninfo vlan=10 --format table",
  "vlan  active  name   field4  untagged  tagged\n10    on      voice  1       ge1,ge2   ge3,ge4\n")
prints("get vlaninfo vlan=10 --json --fields vlan", '{"vlan":10}\n')
tool.fails("rows vlaninfo --format xml", 2, "rpcctl: rows: expected --format and one of table, vertical, tsv, csv, "
  .. "json, "
  .. "jsonl, kv, found 'xml'; see rpcctl rows --help\n")

-- Every API's rows as JSON that another program reads
local _, errors, status = run([[
  for api in ]] .. table.concat(golden.column("apis.txt", 2), " ") .. [[; do
    case $api in
      *_getn_1) command=rows ;;
      *_get_1) command=get ;;
      *)
        rpcctl describe --json $api | jq -e '.[0].name == "'$api'"' >/dev/null || echo "$api: describe" >&2
        continue ;;
    esac
    rpcctl $command $api --json >/run/json 2>/run/errors
    [ ! -s /run/json ] || jq -e . /run/json >/dev/null || echo "$api: rows" >&2
    [ -s /run/json ] || grep -q 'which says which row\|expected a row\|--end' /run/errors || cat /run/errors >&2
  done]])
check.equal("JSON of every API", { errors, status }, { "", 0 })

-- Secrets
prints("rows account --fields user,password", "admin\t(set)\nguest\t(set)\n")
prints("rows account user=admin --fields user,password --show-secrets", "admin\tsecret\n")
prints("rows account user=admin --fields password --json", '[{"password":"(set)"}]\n')
prints("call oltmib_account_get_1 '1&admin'", "1&admin&15&(set)&&&1&&0&0\n")
prints("call oltmib_account_get_1 '1&admin' --show-secrets", "1&admin&15&secret&&&1&&0&0\n")

-- Hostile texts: no control character, no mark of direction and no broken UTF-8 in any form
run [[rpcctl set svi vlan=20 name="$(printf '\033[31m\tred\302\233\377\360\237\230\200\342\200\256"x\\,\r')"]]
local shown = "\\x1b[31m\\tred\\xc2\\x9b\\xff\240\159\152\128\\xe2\\x80\\xae\"x\\\\,\\r"
prints("rows svi vlan=20 --fields name", shown .. "\n")
prints("rows svi vlan=20 --fields name --format csv", 'name\n"' .. shown:gsub('"', '""') .. '"\n')
prints("rows svi vlan=20 --fields name --format kv", 'name="' .. shown:gsub('"', '\\"') .. '"\n')
prints("rows svi vlan=20 --fields name --format table", "name\n" .. shown .. "\n")
prints("rows svi vlan=20 --fields name --format vertical", "name\t" .. shown .. "\n")
prints("rows svi vlan=20 --fields name --format jsonl",
  '{"name":"\\u001b[31m\\tred\\u009b\\u00ff\240\159\152\128\\u202e\\"x\\\\,\\r"}\n')
check.equal("jq reads it back", run("rpcctl rows svi vlan=20 --fields name --json | jq -r '.[0].name | length'"),
  "18\n")
prints("call oltmib_svi_get_1 20", "20&" .. shown .. "&198.51.100.1/24&&0&0\n")
check.equal("call --raw", run "rpcctl call oltmib_svi_get_1 20 --raw | od -An -c | head -n 1",
  "   2   0   & 033   [   3   1   m  \\t   r   e   d 302 233 377 360\n")
for _, form in ipairs { "table", "vertical", "tsv", "csv", "json", "jsonl", "kv" } do
  local text = run("rpcctl rows svi --format " .. form)
  check.equal(form .. ": no control characters", text:gsub("[\n\t]", ""):find("[%c\127]"), nil)
  check.equal(form .. ": no C1 controls, no marks of direction", text:find("\194[\128-\159]")
    or text:find("\226\128[\142\143\170-\174]"), nil)
end

-- A backup of a hostile text brings the same bytes back
run "rpcctl backup /run/hostile.txt svi"
local before = run "rpcctl call oltmib_svi_get_1 20 --raw | od -c"
run "rpcctl set svi vlan=20 name=tame; rpcctl restore /run/hostile.txt"
check.equal("hostile texts survive backup and restore", run "rpcctl call oltmib_svi_get_1 20 --raw | od -c", before)

-- Rows come as they are read: the first are there while the daemon is silent
shell.tell "fault oltmib_portinfo_getn_1 after=3 drop"
for _, form in ipairs { "tsv", "csv", "jsonl", "kv", "vertical" } do
  local text = run(tool.command .. " rows portinfo --fields port --timeout 30 --format " .. form
    .. " >/run/out & child=$!; "
    .. "await 'grep -q 3 /run/out'; kill -INT $child; cat /run/out")
  check.equal(form .. ": what came is printed", text:find("3") ~= nil, true)
  shell.tell "clear"
  shell.tell "fault oltmib_portinfo_getn_1 after=3 drop"
end
tool.fails("rows portinfo --fields port --json --timeout 0.2", 5,
  "rpcctl: oltmib_portinfo_getn_1 (service nsminfo, program 50004): the daemon did not answer in time; it may still "
    .. "carry "
  .. "the call out [RPC: Timed out]; is the daemon stuck? rpcctl health tells which daemons answer; read the row "
  .. "before "
  .. "you repeat a change\n", '[{"port":1},\n{"port":2},\n{"port":3}]\n')
shell.tell "clear"

-- No room
for _, form in ipairs { "table", "vertical", "tsv", "csv", "json", "jsonl", "kv" } do
  local _, complaint, code = run("rpcctl rows portinfo --format " .. form .. " >/dev/full")
  check.equal(form .. " >/dev/full", { complaint, code }, { "rpcctl: standard output: expected room for all of it, "
    .. "found a "
    .. "write error; is there room, and may you write there?\n", 1 })
end

check.finish()

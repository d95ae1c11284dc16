-- rpcctl add: a new row.
local changes = require "rpcctl.changes"
local ending = require "rpcctl.ending"
local record = require "librpc.record"
local subject = require "rpcctl.subject"

return {
  name = "add",
  summary = "add a row to a table",
  details = "Sends the fields given, all others as 0 or empty, where the daemon has no row of that key yet.",
  arguments = { { "TABLE", what = "settable" }, { "FIELD=VALUE", many = true, what = "assignment" } },
  options = {
    { "dry-run", nil, "print what the row would get, and send nothing" },
    { "json", nil, "print JSON" },
    { "show-secrets", nil, "print secrets, not (set)" },
  },
  examples = { { "rpcctl add svi vlan=30 name=guests address=203.0.113.1/24", "a new interface" } },
  run = function(words, options)
    local this = subject.open("add", words[1])
    local api = this:need("set")
    table.remove(words, 1)
    local fields = this:assigned(words)
    for _, field in ipairs(this.key) do
      if fields[field.field] == nil then
        ending.give_up(this:key_missing(), "no_key")
      end
    end
    local status, changed, code = record.add(this.name, this:called(fields), { call_seconds = options.call_seconds,
      dry_run = options["dry-run"] })
    if status == nil then
      ending.give_up(changed, code)
    end
    changes.check_status(api, status)
    if options.json then
      ending.write(('{"status":%s,"changed":%s}\n'):format(status and tostring(status) or "null",
        changes.json(this, changed, options["show-secrets"])))
    else
      changes.print(this, changed, "", options["show-secrets"])
    end
  end,
}

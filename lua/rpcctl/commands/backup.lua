-- rpcctl backup: the settings of the device in a file.
local backup_file = require "rpcctl.backup_file"
local ending = require "rpcctl.ending"
local settings = require "rpcctl.settings"

return {
  name = "backup",
  summary = "write the settings of the device, or of some tables, to a file",
  details = "Settings are the rows of every table that can be read and set. The file is for people and for version "
    .. "control: a row a line, sorted, the key first; what cannot be kept is listed at its top. Where a daemon does "
    .. "not "
    .. "answer, the old file stays (--keep-going writes what there is, and lists the rest). FILE may be -.",
  arguments = { { "FILE", what = "file" }, { "TABLE", many = true, optional = true, what = "table or service" } },
  options = {
    { "keep-going", nil, "write what could be read" },
    { "show-secrets", nil, "keep secrets, too; only you may read the file then" },
  },
  examples = {
    { "rpcctl backup device.txt", "the whole device" },
    { "rpcctl backup ports.txt portinfo vrrpinfo", "a table, and all tables of a service" },
  },
  run = function(words, options)
    local path = table.remove(words, 1)
    local found = settings.read(settings.tables("backup", words), options)
    local notes, entries, failure, failed = {}, {}, nil, 0
    for _, one in ipairs(found) do
      local name = one.this.name
      if one.lost then
        notes[#notes + 1] = "not kept: " .. name .. ": " .. one.lost
      elseif one.failure then
        failure, failed = failure or one.failure, failed + 1
        notes[#notes + 1] = "not kept: " .. name .. ": " .. one.failure.message
      else
        for _, note in ipairs(#one.entries > 0 and settings.limits(one.this, options["show-secrets"]) or {}) do
          notes[#notes + 1] = note
        end
        for _, entry in ipairs(one.entries) do
          entries[#entries + 1] = entry
        end
      end
    end
    if failure and not options["keep-going"] then
      ending.give_up(("backup: expected every table, found %d that cannot be read; %s was not written: "
        .. "%s"):format(failed,
        path, failure.message), failure.code)
    end
    local done, why = backup_file.write(path, backup_file.lines(notes, entries), options["show-secrets"])
    if not done then
      ending.give_up(("backup: %s: expected to write it, found %s"):format(path, why), "write_error")
    elseif failure then
      ending.give_up(("backup: expected every table, found %d that cannot be read; %s lists them: %s"):format(failed,
        path, failure.message), failure.code)
    end
  end,
}

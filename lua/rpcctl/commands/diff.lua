-- rpcctl diff: how the settings of a file differ from the device's, or another file's.
local backup_file = require "rpcctl.backup_file"
local changes = require "rpcctl.changes"
local ending = require "rpcctl.ending"
local exits = require "rpcctl.exits"
local settings = require "rpcctl.settings"

-- The device's entries of the tables that a file has, as backup_file.read gives them.
local function from_device(entries, options)
  local list, seen = {}, {}
  for _, entry in ipairs(entries) do
    if not seen[entry.this.name] then
      seen[entry.this.name], list[#list + 1] = true, entry.this
      entry.this.command = "diff"
    end
  end
  local all, by_key = {}, {}
  for _, one in ipairs(settings.read(list, { call_seconds = options.call_seconds, ["show-secrets"] = true })) do
    if one.failure then
      ending.give_up(one.failure.message, one.failure.code)
    elseif one.lost then
      ending.give_up("diff: " .. one.this.name .. ": expected a table that can be compared, found that " .. one.lost,
        "failed")
    end
    by_key[one.this.name] = {}
    for _, entry in ipairs(one.entries) do
      all[#all + 1], by_key[one.this.name][entry.key] = entry, entry
    end
  end
  return all, by_key
end

local function found_in(by_key, entry)
  return by_key[entry.this.name] and by_key[entry.this.name][entry.key]
end

return {
  name = "diff",
  summary = "compare the settings of a file with the device's, or with another file's",
  details = "Prints `- ROW` for a row that only the first has, `+ ROW` for one that only the second (or the device) "
    .. "has, "
    .. "and FIELD: OLD -> NEW for what differs between them. The exit status is " .. exits.different
    .. " where anything does.",
  arguments = { { "FILE", what = "file" }, { "FILE", what = "file", optional = true } },
  options = { { "show-secrets", nil, "print secrets, not (set)" } },
  examples = {
    { "rpcctl diff device.txt", "what was changed since the backup" },
    { "rpcctl diff monday.txt friday.txt", "what was changed between two" },
  },
  run = function(words, options)
    local first, first_by_key = backup_file.read("diff", words[1])
    local second, second_by_key
    if words[2] then
      second, second_by_key = backup_file.read("diff", words[2])
    else
      second, second_by_key = from_device(first, options)
    end
    local different = false
    for _, entry in ipairs(first) do
      local other = found_in(second_by_key, entry)
      local found = other and settings.differences(entry, other) or {}
      if not other then
        ending.write("- ", entry.named, "\n")
      end
      different = different or not other or next(found) ~= nil
      changes.print(entry.this, settings.by_name(entry.this, found), entry.named .. " ", options["show-secrets"])
    end
    for _, entry in ipairs(second) do
      if not found_in(first_by_key, entry) then
        different = true
        ending.write("+ ", entry.named, "\n")
      end
    end
    ending.flush()
    if different then
      ending.leave(exits.different)
    end
  end,
}

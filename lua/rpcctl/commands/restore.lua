-- rpcctl restore: sends what of a file differs from the device.
local backup_file = require "rpcctl.backup_file"
local changes = require "rpcctl.changes"
local ending = require "rpcctl.ending"
local output = require "rpcctl.output"
local record = require "librpc.record"
local settings = require "rpcctl.settings"
local tables = require "librpc.record.tables"

-- The tables of entries, each once.
local function subjects_of(entries)
  local list, seen = {}, {}
  for _, entry in ipairs(entries) do
    if not seen[entry.this.name] then
      seen[entry.this.name], list[#list + 1] = true, entry.this
    end
  end
  return list
end

-- Fields that no argument carries as replies have them, sent empty: the only way to
-- change a row that has one.
local function emptied(entry, fields)
  local all = {}
  for field, value in pairs(fields) do
    all[field] = value
  end
  for name, position in pairs(tables.inputs_of(entry.api)) do
    if position.kind == "bytes" then
      all[name] = all[name] or ""
    end
  end
  return all
end

-- What to send so that a row becomes the entry: what differs and the key; and reals that
-- were kept, which are what the row is to have.
local function fields_of(entry, found)
  local fields = {}
  for field, change in pairs(found) do
    fields[field] = change.after
  end
  for _, field in ipairs(entry.this.key) do
    fields[field.field] = entry.values[field.field]
  end
  for _, position in ipairs(entry.api.input) do
    if position.kind == "real" then
      fields[position.name] = entry.values[position.name]
    end
  end
  return fields
end

-- `told` where the daemon took what was sent; nil, a message, a code.
local function taken(told, status, message, code)
  if status == nil then
    return nil, message, code
  elseif status and status ~= 0 then
    return nil, ("expected status 0, found %s, the daemon's own"):format(output.cell(status)), "daemon_status"
  end
  return told
end

-- Brings one entry to the device: "same", "changed" or "added"; nil, a message, a code.
local function bring(entry, now, options)
  local this = entry.this
  local call = { call_seconds = options.call_seconds, dry_run = options["dry-run"] }
  if now.lost or now.failure then
    return nil, now.lost or now.failure.message, now.lost and "failed" or now.failure.code
  end
  local there = now.by_key[entry.key]
  if not there then
    local added, message, code = taken("added", record.add(this.name, this:called(entry.values), call))
    if added then
      ending.write(entry.named, " added\n")
    end
    return added, message, code
  end
  local found = settings.differences(there, entry)
  if next(found) == nil then
    return "same"
  end
  local fields = fields_of(entry, found)
  local status, message, code = record.change(this.name, this:called(fields), nil, call)
  if code == "not_carried" then
    status, message, code = record.change(this.name, this:called(emptied(entry, fields)), nil, call)
  end
  local changed
  changed, message, code = taken("changed", status, message, code)
  if changed then
    changes.print(this, settings.by_name(this, found), entry.named .. " ", options["show-secrets"])
  end
  return changed, message, code
end

return {
  name = "restore",
  summary = "bring the settings of a file back",
  details = "Sends the rows that differ from the device's, in the file's order, and prints what it did. Rows that the "
    .. "file does not have stay, and are named. It may be run again. FILE may be -.",
  arguments = { { "FILE", what = "file" } },
  options = {
    { "dry-run", nil, "print what would change, and send nothing" },
    { "keep-going", nil, "go on behind a row that could not be brought back" },
    { "show-secrets", nil, "print secrets, not (set)" },
  },
  examples = { { "rpcctl restore device.txt --dry-run", "what would change" } },
  run = function(words, options)
    local entries, by_key = backup_file.read("restore", words[1])
    local found = settings.read(subjects_of(entries), { call_seconds = options.call_seconds, ["show-secrets"] = true })
    for _, one in ipairs(found) do
      one.by_key = {}
      for _, entry in ipairs(one.entries or {}) do
        one.by_key[entry.key] = entry
      end
    end
    local counts, first = { same = 0, changed = 0, added = 0, failed = 0 }, nil
    local tried = 0
    for _, entry in ipairs(entries) do
      local result, message, code = bring(entry, found[entry.this.name], options)
      tried = tried + 1
      if result then
        counts[result] = counts[result] + 1
      else
        counts.failed = counts.failed + 1
        first = first or code
        ending.complain(entry.named .. " not restored: " .. message, code)
        if not options["keep-going"] then
          break
        end
      end
      ending.flush()
    end
    for _, one in ipairs(found) do
      for _, entry in ipairs(one.entries or {}) do
        if not by_key[one.this.name][entry.key] then
          ending.write(entry.named, " left alone: not in the file\n")
        end
      end
    end
    ending.write(("%s%d changed, %d added, %d as they were"):format(options["dry-run"] and "would be: " or "",
      counts.changed, counts.added, counts.same),
      counts.failed > 0 and (", %d not restored"):format(counts.failed) or "",
      tried < #entries and (", %d not tried (--keep-going tries them)"):format(#entries - tried) or "", "\n")
    if first then
      ending.leave(require("rpcctl.exits").of(first))
    end
  end,
}

-- rpcctl set: changes fields of one row, or of those that a filter finds.
local changes = require "rpcctl.changes"
local ending = require "rpcctl.ending"
local filters = require "rpcctl.filters"
local reading = require "rpcctl.reading"
local record = require "librpc.record"
local subject = require "rpcctl.subject"

-- The words that say which rows (by the key, or by an operator that assigns nothing)
-- and those that say what they are to have.
local function split(this, words, where)
  local chosen, fields = {}, {}
  for i = 2, #words do
    local _, operator = filters.split(words[i])
    if operator and operator ~= "=" then
      chosen[#chosen + 1] = filters.of(this, words[i])
    else
      fields[#fields + 1] = words[i]
    end
  end
  for _, word in ipairs(where or {}) do
    chosen[#chosen + 1] = filters.of(this, word)
  end
  return chosen, this:assigned(fields)
end

-- The keys of the rows that pass the filters.
local function keys_of(this, chosen, options)
  local keys = {}
  ending.need(this:each(chosen, reading.settings(this, options), function(row)
    local key = {}
    for _, field in ipairs(this.key) do
      key[field.field] = row[field.field]
    end
    keys[#keys + 1] = key
  end))
  return keys
end

-- Sends what nobody can read back: the fields alone.
local function send_alone(api, fields, options)
  if options["dry-run"] then
    return false, {}
  end
  local status, message, code = record.call(api.name, fields, { call_seconds = options.call_seconds })
  return status, status and {} or message, code
end

-- The keys of the rows that are meant, and true where a filter chose them; false for
-- the key that stands among the fields.
local function rows_meant(this, chosen, fields, options)
  if #chosen == 0 then
    for _, field in ipairs(this.key) do
      if fields[field.field] == nil and (this.apis.get or this.apis.getn) then
        ending.give_up(this:key_missing(), "no_key")
      end
    end
    return { false }, false
  end
  for _, field in ipairs(this.key) do
    if fields[field.field] ~= nil then
      chosen[#chosen + 1] = filters.of(this, field.name .. "=" .. fields[field.field])
      fields[field.field] = nil
    end
  end
  local keys = keys_of(this, chosen, options)
  if #keys == 0 then
    ending.give_up("set: " .. this.name .. ": expected rows that pass the filter, found none", "no_row")
  elseif #keys > 1 and not options.yes and not options["dry-run"]
    and not changes.confirm(("Change %d rows of %s?"):format(#keys, this.name)) then
    ending.give_up(("set: %s: expected a yes, or --yes, for %d rows, found none; nothing was changed"):format(
      this.name, #keys), "not_confirmed")
  end
  return keys, true
end

-- Changes one row: the daemon's status and what changed; nil, a message, a code.
local function send(this, api, key, fields, options)
  if not (this.apis.get or this.apis.getn) then
    if not options.only then
      ending.misuse("set", "--only, because " .. this.name .. " has no get to read the row with", "none")
    end
    return send_alone(api, this:called(fields), options)
  end
  local all = {}
  for _, from in ipairs { key or {}, fields } do
    for name, value in pairs(from) do
      all[name] = value
    end
  end
  return record.change(this.name, this:called(all), nil,
    { call_seconds = options.call_seconds, dry_run = options["dry-run"], only = options.only })
end

local function check_sent(this, api, key, status, changed, code)
  if code == "no_row" then
    local asked = {}
    for i, field in ipairs(this.key) do
      asked[i] = field.name .. "=" .. this:shown(field, key[field.field])
    end
    ending.give_up(("set: %s: expected a row with %s, found none"):format(this.name, table.concat(asked, " ")), code)
  elseif status == nil then
    ending.give_up(changed, code)
  end
  changes.check_status(api, status)
end

-- What one of several rows is called.
local function row_named(this, key)
  return this:key_of(setmetatable({}, { __index = function(_, name)
    local field = this.by_name[name].field
    local of_field = this.view.words[field]
    return of_field and of_field[key[field]] or key[field]
  end }))
end

return {
  name = "set",
  summary = "change fields of a row, or of all rows that a filter finds",
  details = "FIELD=VALUE of the key says which row; of the others, what it is to have. The row is read, the fields are "
    .. "changed and all of it is sent back. Prints what changed.\n"
    .. "--where, or a word with another operator than =, chooses any number of rows; more than one want a yes.",
  arguments = { { "TABLE", what = "settable" }, { "FIELD=VALUE", many = true, what = "assignment" } },
  options = {
    { "where", "FILTER", "every row that has it; may be given again", many = true, what = "filter" },
    { "yes", nil, "do not ask before several rows are changed" },
    { "dry-run", nil, "print what would change, and send nothing" },
    { "only", nil, "send the fields given and nothing else: all others as 0 or empty" },
    { "json", nil, "print JSON" },
    { "show-secrets", nil, "print secrets, not (set)" },
  },
  examples = {
    { "rpcctl set svi vlan=20 name=lan", "the name of a row" },
    { "rpcctl set portinfo port=3 enabled=off --dry-run", "what would change" },
    { "rpcctl set portinfo --where link=down enabled=off --yes", "several rows" },
  },
  run = function(words, options)
    local this = subject.open("set", words[1])
    local api = this:need("set")
    local chosen, fields = split(this, words, options.where)
    if next(fields) == nil then
      ending.misuse("set", "FIELD=VALUE, what the row is to have", "none")
    end
    local keys, several = rows_meant(this, chosen, fields, options)
    local objects = {}
    for _, key in ipairs(keys) do
      local status, changed, code = send(this, api, key, fields, options)
      check_sent(this, api, key or fields, status, changed, code)
      local named = several and row_named(this, key) or nil
      if options.json then
        objects[#objects + 1] = ('{%s"status":%s,"changed":%s}'):format(
          named and '"row":' .. require("rpcctl.output").json(named) .. "," or "",
          status and tostring(status) or "null", changes.json(this, changed, options["show-secrets"]))
      elseif next(changed) == nil and not several and this.reader then
        ending.write("nothing changed\n")
      else
        changes.print(this, changed, named and named .. " " or "", options["show-secrets"])
      end
      ending.flush()
    end
    if options.json then
      ending.write(several and "[" .. table.concat(objects, ",\n") .. "]" or objects[1], "\n")
    end
  end,
}

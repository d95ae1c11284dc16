-- A device's settings: the rows of every table that can be both read and set, as
-- entries that backup writes, restore sends and diff compares. An entry has
--   this, api      its subject and the table's set API
--   key            its key's text, which tells it apart within its table
--   values         what it holds, by the schema's names, as people read it
--   texts          the same as the argument carries it
local calling = require "librpc.record.calling"
local ending = require "rpcctl.ending"
local exits = require "rpcctl.exits"
local record = require "librpc.record"
local schema = require "librpc.schema"
local subject = require "rpcctl.subject"
local tables = require "librpc.record.tables"
local values = require "librpc.record.values"

local settings = {}

-- The tables with settings that some words name (tables, services; none: all), as
-- subjects in the schema's order.
function settings.tables(command, words)
  local wanted, services = {}, {}
  for _, service in ipairs(schema.services) do
    services[service.name] = true
  end
  for _, word in ipairs(words) do
    local apis = not services[word] and ending.need(tables.apis_of(word))
    wanted[apis and select(2, next(apis)).table or word] = true
    if apis and not apis.set then
      ending.give_up(("%s: expected a table that can be set, found %s"):format(command, ending.quoted(word)), "usage")
    end
  end
  local list = {}
  for _, api in ipairs(schema.apis) do
    if api.operation == "set" and (#words == 0 or wanted[api.table] or wanted[api.service]) then
      list[#list + 1] = subject.open(command, api.table)
    end
  end
  return list
end

-- The entry of values by the schema's names; nil, a message and a code where the API
-- does not take them.
function settings.entry(this, given)
  local api = this.apis.set
  local entry = { this = this, api = api, values = {}, texts = {} }
  for field, value in pairs(given) do
    local position = tables.inputs_of(api)[field]
    local plain = calling.plain_value(this.view, field, value)
    local text = position and values.to_text[position.kind](plain, position, api)
    if not text then
      local _, message = calling.argument_of(api, this.view, { [this.view.name[field] or field] = value })
      return nil, message, "bad_file"
    end
    local words = this.view.words[field]
    entry.texts[field] = text
    entry.values[field] = words and words[tonumber(text)] or value
  end
  local key, shown = {}, {}
  for i, field in ipairs(this.key) do
    if not entry.texts[field.field] then
      return nil, this:key_missing(), "no_key"
    end
    key[i] = entry.texts[field.field]
    shown[i] = " " .. field.name .. "=" .. this:shown(field, entry.values[field.field])
  end
  entry.key, entry.named = table.concat(key, "\0"), this.name .. table.concat(shown)
  return entry
end

-- The fields of an entry that may be written, the key first: { field, value }.
function settings.fields_of(entry)
  local list = {}
  for _, key in ipairs { true, false } do
    for _, field in ipairs(entry.this.fields) do
      if (field.key or false) == key and entry.texts[field.field] then
        list[#list + 1] = { field = field, value = entry.values[field.field] }
      end
    end
  end
  return list
end

-- What of a row is a setting, by the schema's names.
local function kept_of(this, row, secrets)
  local kept = ending.need(record.carried(this.apis.set.name, row))
  for _, field in ipairs(this.fields) do
    if field.secret and not secrets then
      kept[field.field] = nil
    end
  end
  return kept
end

-- Entries in the order of their keys: numbers as numbers, texts as texts.
local function in_order(a, b)
  for _, field in ipairs(a.this.key) do
    local one, other = a.texts[field.field], b.texts[field.field]
    if one ~= other then
      local number, number_of_other = tonumber(one), tonumber(other)
      if number and number_of_other and number ~= number_of_other then
        return number < number_of_other
      end
      return one < other
    end
  end
  return false
end

-- The entries of rows, sorted; nil and why where they cannot be told apart, or where
-- one could not be sent back.
local function entries_of(this, rows, secrets)
  local entries, seen = {}, {}
  for i, row in ipairs(rows) do
    local entry, message = settings.entry(this, kept_of(this, row, secrets))
    if not entry then
      return nil, message
    elseif seen[entry.key] then
      return nil, ("several rows have the key %s; a file of names can tell more of it"):format(entry.named)
    end
    entries[i], seen[entry.key] = entry, true
  end
  table.sort(entries, in_order)
  return entries
end

-- Why the rows of a table cannot be kept, or nil.
local function unreadable(this, secrets)
  for _, field in ipairs(this.key) do
    if field.secret and not secrets then
      return "its key (" .. field.name .. ") is a secret; --show-secrets keeps it"
    end
  end
  if not (this.apis.get or this.apis.getn) then
    return "its rows cannot be read"
  elseif not this.apis.getn and this.key[1] then
    return "its rows can only be read by their key (" .. subject.names_of(this.key) .. ")"
  elseif this.apis.getn and not tables.has_output(this.apis.getn, this.view.res) then
    return "its rows do not say which is the last"
  end
end

-- Reads the settings of subjects, all at once. Of each, in a list and by its name:
-- { this, entries }, { this, lost = why nothing can be kept } or { this, failure }.
function settings.read(list, options)
  local walks, places, found = {}, {}, {}
  for i, this in ipairs(list) do
    found[i] = { this = this, lost = unreadable(this, options["show-secrets"]) }
    found[this.name] = found[i]
    if not found[i].lost then
      walks[#walks + 1] = { this.name, nil, { call_seconds = options.call_seconds } }
      places[#walks] = found[i]
    end
  end
  local rows, failures = record.walks(walks)
  for i, place in ipairs(places) do
    local failure = failures[i]
    if failure and failure.code == "no_row" then -- of a table that has one row, or none
      failure = nil
    end
    if failure then
      if failure.code == "interrupted" then
        ending.leave(exits.interrupted)
      end
      place.failure = failure
    else
      place.entries, place.lost = entries_of(place.this, rows[i], options["show-secrets"])
    end
  end
  return found
end

-- What differs between two entries of one key: by the schema's names { before, after },
-- of the fields that both have.
function settings.differences(from, to)
  local found = {}
  for field, text in pairs(to.texts) do
    if from.texts[field] and from.texts[field] ~= text then
      found[field] = { before = from.values[field], after = to.values[field] }
    end
  end
  return found
end

-- The same by the fields' names, as changes.print takes it.
function settings.by_name(this, found)
  local named = {}
  for field, change in pairs(found) do
    named[this.view.name[field] or field] = change
  end
  return named
end

-- What of a table a backup does not hold, or not quite: a list of texts.
function settings.limits(this, secrets)
  local list = {}
  for _, position in ipairs(this.apis.set.input) do
    local field = this.by_name[position.name]
    local name = this.name .. " " .. field.name .. ": "
    if field.secret and not secrets then
      list[#list + 1] = "not kept: " .. name .. "secret; --show-secrets keeps it"
    elseif position.kind == "bytes" then
      list[#list + 1] = "not kept: " .. name .. "no argument carries it as replies have it; restore sends it empty "
        .. "where it must"
    elseif position.kind == "real" and not this.view.exact[position.name] then
      list[#list + 1] = "kept with two decimals: " .. name .. "the daemon may hold more"
    end
  end
  return list
end

return settings

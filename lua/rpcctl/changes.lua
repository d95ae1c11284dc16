-- What set, add, restore and diff tell of a change: "field: old -> new".
local ending = require "rpcctl.ending"
local output = require "rpcctl.output"
local printable = require "librpc.record.printable"

local changes = {}

-- A value as one word: a text that is empty, or has a blank, in quotes.
local function word(this, field, value, secrets)
  local text = this:shown(field, value, secrets)
  return (text == "" or text:find("%s") or text:find('"', 1, true)) and '"' .. text:gsub('"', '\\"') .. '"' or text
end

-- The fields of `changed` in the record's order, each { field, before, after }.
function changes.ordered(this, changed)
  local list = {}
  for _, field in ipairs(this.fields) do
    local change = changed[field.name]
    if change then
      list[#list + 1] = { field = field, before = change.before, after = change.after }
    end
  end
  return list
end

-- Prints what changed, a line a field, each with `prefix` before it.
function changes.print(this, changed, prefix, secrets)
  for _, change in ipairs(changes.ordered(this, changed)) do
    local field = change.field
    ending.write(prefix or "", field.name, ": ", change.before == nil and "" or word(this, field, change.before,
      secrets)
      .. " ", "-> ", word(this, field, change.after, secrets), "\n")
  end
end

-- The same as a JSON object's text.
function changes.json(this, changed, secrets)
  local items = {}
  local function shown(field, value)
    if value ~= nil and field.secret and not secrets then
      return output.json(this:shown(field, value))
    end
    return output.json(value)
  end
  for i, change in ipairs(changes.ordered(this, changed)) do
    local field = change.field
    items[i] = output.json(field.name) .. ":{" .. (change.before == nil and ""
      or '"before":' .. shown(field, change.before) .. ",") .. '"after":' .. shown(field, change.after) .. "}"
  end
  return "{" .. table.concat(items, ",") .. "}"
end

-- Asks a question on the terminal: true where the answer begins with y. In a pipe, or
-- where nobody answers, false.
function changes.confirm(question)
  local terminal = require "rpcctl.terminal"
  if not (terminal.is(0) and terminal.is(2)) then
    return false
  end
  io.stderr:write(printable.line(question), " [y/N] ")
  local answer = io.stdin:read("*l")
  return answer ~= nil and answer:match("^%s*[yY]") ~= nil
end

-- Ends the program where a set's status is not 0.
function changes.check_status(api, status)
  if status and status ~= 0 then
    ending.give_up(("%s: expected status 0, found %s, the daemon's own"):format(api.name, output.cell(status)),
      "daemon_status")
  end
end

return changes

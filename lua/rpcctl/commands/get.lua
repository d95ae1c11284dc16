-- rpcctl get: one row.
local ending = require "rpcctl.ending"
local filters = require "rpcctl.filters"
local formats = require "rpcctl.formats"
local reading = require "rpcctl.reading"
local subject = require "rpcctl.subject"

-- " with port=3": the words of filters as they were given.
local function told(words)
  return words[2] and " with " .. table.concat(words, " ", 2) or ""
end

return {
  name = "get",
  summary = "read one row",
  details = "FIELD=VALUE says which row: by its key, or by any fields that only one row has. A table of one row wants "
    .. "none. In a pipe, a field a line: name, value.",
  arguments = { { "TABLE", what = "rows" }, { "FILTER", many = true, optional = true, what = "filter" } },
  options = reading.all_options {},
  examples = {
    { "rpcctl get devinfo", "the device" },
    { "rpcctl get portinfo port=3", "a port by its key" },
    { "rpcctl get portinfo name=ge3 --fields link", "a port by its name" },
  },
  run = function(words, options)
    local this = subject.open("get", words[1])
    local wanted = filters.all(this, words, 2)
    local settings = reading.settings(this, options)
    local columns = this:chosen(options.fields)
    local form, shown = formats.settings(options, "vertical")
    if #wanted == 0 and this.key[1] and not settings.after then
      ending.give_up(this:key_missing(), "no_key")
    end
    local rows = {}
    local done, message, code = this:each(wanted, settings, function(row)
      rows[#rows + 1] = row
      return #rows < 2
    end)
    if #rows > 1 then
      ending.give_up(("get: %s: expected one row%s, found %s and %s"):format(this.name, told(words),
        this:key_of(rows[1]), this:key_of(rows[2])), "usage")
    elseif not done then
      ending.give_up(message, code)
    elseif not rows[1] then
      ending.give_up(("get: %s: expected a row%s, found none"):format(this.name, told(words)), "no_row")
    end
    if options.json then -- one row is no list
      return ending.write(formats.object(columns, rows[1], shown), "\n")
    end
    local writer = formats.writer(form, columns, shown)
    writer:row(rows[1])
    writer:finish()
  end,
}

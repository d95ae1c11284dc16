-- rpcctl rows: the rows of a table, as they come.
local ending = require "rpcctl.ending"
local filters = require "rpcctl.filters"
local formats = require "rpcctl.formats"
local reading = require "rpcctl.reading"
local subject = require "rpcctl.subject"

return {
  name = "rows",
  summary = "read the rows of a table",
  details = "FIELD=VALUE chooses the rows that have it; != < <= > >= compare, ~ finds a text (* and ? as in a shell) "
    .. "and !~ does not. Several must all hold. Quote < and > for the shell.\n"
    .. "On a terminal rows are a table as wide as there is room; in a pipe a line each, tabs between.",
  arguments = { { "TABLE", what = "rows" }, { "FILTER", many = true, optional = true, what = "filter" } },
  options = reading.all_options {
    { "limit", "N", "at most so many rows", number = 1, whole = true },
    { "sort", "FIELD", "sort by a field, -FIELD from high to low", what = "column" },
  },
  examples = {
    { "rpcctl rows portinfo link=down", "the ports without a link" },
    { "rpcctl rows portinfo 'speed>=1000' name~ge --fields port,name,speed", "some fields of the fast ports" },
    { "rpcctl rows vlaninfo --after vlan=1", "the rows behind one" },
    { "rpcctl rows fdb --format csv >fdb.csv", "a table for a spreadsheet" },
  },
  run = function(words, options)
    local this = subject.open("rows", words[1])
    local wanted = filters.all(this, words, 2)
    local settings = reading.settings(this, options)
    local order = options.sort and reading.order(this, options.sort)
    local form, shown = formats.settings(options)
    local writer = formats.writer(form, this:chosen(options.fields), shown)
    local held, count = {}, 0
    local function read()
      return this:each(wanted, settings, function(row)
        count = count + 1
        if order then
          held[count] = row
        else
          writer:row(row)
          return count ~= options.limit
        end
      end)
    end
    local worked, done, message, code = pcall(read)
    if order then
      reading.sort(held, order)
      for i = 1, math.min(options.limit or #held, #held) do
        writer:row(held[i])
      end
    end
    -- what came before a failure, or before Ctrl-C, is whole
    writer:finish()
    if not worked then
      error(done, 0)
    elseif not done then
      if code == "no_end" or code == "usage" then
        ending.give_up("rows: " .. message, code)
      end
      ending.give_up(message, code)
    end
  end,
}

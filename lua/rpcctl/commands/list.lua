-- rpcctl list: which APIs and tables there are.
local ending = require "rpcctl.ending"
local filters = require "rpcctl.filters"
local formats = require "rpcctl.formats"
local names = require "librpc.names"
local schema = require "librpc.schema"

local function named(list)
  local columns = {}
  for i, name in ipairs(list) do
    columns[i] = { name = name }
  end
  return columns
end

local api_columns = named { "name", "service", "program", "procedure", "operation", "table" }
local table_columns = named { "table", "service", "operations", "title" }

-- The tables of a list of APIs, in its order.
local function tables_of(apis)
  local list, by_name = {}, {}
  for _, api in ipairs(apis) do
    local line = by_name[api.table]
    if line then
      line.operations = line.operations .. " " .. api.operation
    else
      local known = ending.need(names.loaded())[api.table]
      line = { table = api.table, service = api.service, operations = api.operation, title = known and known.title }
      by_name[api.table], list[#list + 1] = line, line
    end
  end
  return list
end

return {
  name = "list",
  summary = "list the APIs, or those whose name, service or title matches",
  details = "PATTERN is found anywhere; * stands for any text, ? for one character. In a pipe, an API a line: "
    .. "name, service, program, procedure, operation, table.",
  arguments = { { "PATTERN", what = "service", optional = true } },
  options = {
    { "tables", nil, "list tables: name, service, operations, title" },
    formats.options[1], formats.options[2], formats.options[3],
  },
  examples = {
    { "rpcctl list --tables vlan", "the tables that have to do with VLANs" },
    { "rpcctl list 'vrrp*set'", "what can be set of VRRP" },
  },
  run = function(words, options)
    local pattern, found = filters.pattern(words[1] or ""), {}
    for _, api in ipairs(schema.apis) do
      local known = (names.loaded() or {})[api.table]
      if api.name:lower():find(pattern) or api.service:find(pattern)
        or known and known.title and known.title:lower():find(pattern) then
        found[#found + 1] = api
      end
    end
    if #found == 0 then
      ending.give_up(("list: expected a part of an API's name, a service's or a table's title, found %s"):format(
        ending.quoted(words[1])), "unknown_api")
    end
    local form, settings = formats.settings(options)
    local writer = formats.writer(form, options.tables and table_columns or api_columns, settings)
    for _, one in ipairs(options.tables and tables_of(found) or found) do
      writer:row(one)
    end
    writer:finish()
  end,
}

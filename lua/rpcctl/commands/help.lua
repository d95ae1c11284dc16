-- rpcctl help: what there is, and all of a command.
local commands = require "rpcctl.commands"
local ending = require "rpcctl.ending"
local exits = require "rpcctl.exits"
local options = require "rpcctl.options"

local width = 79 -- of a line of help

-- Lines of two columns, the second wrapped.
local function two_columns(rows, left)
  for _, row in ipairs(rows) do
    left = math.max(left or 0, #row[1])
  end
  for _, row in ipairs(rows) do
    local indent = (" "):rep(left + 4)
    ending.write("  ", row[1], (" "):rep(left - #row[1] + 2), options.wrapped(row[2], indent, width), "\n")
  end
end

local function overview()
  ending.write("rpcctl COMMAND [ARGUMENT]...: the tables of this device's daemons\n\nCommands:\n")
  local rows = {}
  for i, name in ipairs(commands.list) do
    rows[i] = { name, commands.find(name).summary }
  end
  two_columns(rows)
  ending.write("\nrpcctl help COMMAND says more; rpcctl --version prints the version.\n\nExit statuses:\n")
  rows = {}
  for i, status in ipairs(exits.statuses) do
    rows[i] = { tostring(status.number), status.meaning }
  end
  two_columns(rows)
end

local function usage_of(command)
  local usage = options.usage(command)
  return "rpcctl " .. command.name .. " [OPTION]..." .. (usage ~= "" and " " .. usage or "")
end

local function about(command)
  ending.write(usage_of(command), "\n\n", options.wrapped(command.summary:gsub("^%l", string.upper) .. ".", "", width),
    "\n")
  if command.details then
    ending.write("\n", options.wrapped(command.details, "", width), "\n")
  end
  local rows = {}
  for i, option in ipairs(options.of(command)) do
    rows[i] = { "--" .. option[1] .. (option[2] and " " .. option[2] or ""), option[3] }
  end
  ending.write("\nOptions:\n")
  two_columns(rows)
  if command.examples then
    ending.write("\nExamples:\n")
    for _, example in ipairs(command.examples) do
      ending.write("  ", example[1], "\n      ", options.wrapped(example[2], "      ", width), "\n")
    end
  end
end

return {
  name = "help",
  summary = "tell what rpcctl can do, or one of its commands",
  arguments = { { "COMMAND", what = "command", optional = true } },
  run = function(words)
    if not words[1] then
      return overview()
    end
    local command = commands.find(words[1])
    if not command then
      local nearest = require("librpc.record.problems").nearest(words[1], commands.list)
      ending.misuse("help", nearest and "a command (did you mean " .. nearest .. "?)"
        or "one of " .. table.concat(commands.list, ", "), ending.quoted(words[1]))
    end
    about(command)
  end,
}

-- rpcctl from its arguments to its exit status.
local ending = require "rpcctl.ending"
local commands = require "rpcctl.commands"
local exits = require "rpcctl.exits"
local options = require "rpcctl.options"

-- The version: what installing wrote, or the source tree's own.
local function version_of(project)
  local there, version = pcall(require, "rpcctl.version")
  if there then
    return version
  end
  local file = project and io.open(project)
  local text = file and file:read("*a") or ""
  if file then
    file:close()
  end
  return text:match("project%(librpc VERSION ([%d.]+)") or "of unknown version"
end

local function unknown_command(name)
  local nearest = name and require("librpc.record.problems").nearest(name, commands.list)
  ending.misuse(nil, "a command (" .. (nearest and "did you mean " .. nearest .. "?"
    or table.concat(commands.list, ", ")) .. ")", name and ending.quoted(name) or "none")
end

local function run(arguments, project)
  local name = arguments[1]
  if name == "--help" or name == "-h" then
    return commands.find("help").run({}, {})
  elseif name == "--version" then
    return ending.write("rpcctl ", version_of(project), "\n")
  elseif name == "--complete" then
    return require("rpcctl.complete").print(arguments)
  end
  local command = commands.find(name) or unknown_command(name)
  local words, given = options.parse(command, arguments, 2)
  if given.help then
    return commands.find("help").run({ name }, {})
  end
  options.check_count(command, words)
  given.call_seconds = given.timeout or 25
  command.run(words, given)
end

-- Runs it; the exit status.
return function(arguments, project)
  local _, failure = xpcall(function()
    run(arguments, project)
    ending.flush()
  end, function(problem)
    if getmetatable(problem) == ending.Exit then
      return problem
    elseif tostring(problem):find("interrupted!", 1, true) then
      return { status = exits.interrupted }
    end
    io.stderr:write("rpcctl: ", debug.traceback(tostring(problem)), "\n")
    return { status = exits.failed }
  end)
  io.stdout:flush()
  return failure and failure.status or exits.done
end

-- help: of every command, in lines that fit, and from the same data that is parsed.
local check = require "check"
local commands = require "rpcctl.commands"
local options = require "rpcctl.options"
local tool = require "tool"

local overview = tool.run "rpcctl help"
check.equal("--help is the same", tool.run "rpcctl --help", overview)
local texts = { overview }
for _, name in ipairs(commands.list) do
  local text, errors, status = tool.run("rpcctl help " .. name)
  texts[#texts + 1] = text
  check.equal("help " .. name, { text:match("^rpcctl " .. name .. " %[OPTION%]") ~= nil, errors, status }, { true, "",
    0 })
  check.equal(name .. " --help is the same", tool.run("rpcctl " .. name .. " --help"), text)
  check.equal(name .. " -h too", tool.run("rpcctl " .. name .. " -h"), text)
  check.equal("the overview names " .. name, overview:find("\n  " .. name .. " ", 1, true) ~= nil, true)
  for _, option in ipairs(options.of(commands.find(name))) do
    check.equal(name .. ": --" .. option[1], text:find("\n  --" .. option[1] .. (option[2] and " " .. option[2] or ""),
      1, true)
      ~= nil, true)
  end
end
check.equal("two columns, the second folded", overview:find([[

  health    ask every daemon at once whether it is well
  backup    write the settings of the device, or of some tables, to a file
  restore   bring the settings of a file back
  diff      compare the settings of a file with the device's, or with another
            file's
]], 1, true) ~= nil, true)
for line in table.concat(texts):gmatch("[^\n]+") do
  check.equal(line, #line <= 80, true)
end

-- Every example of help works, or says what it would change; those that are for ever end
for _, name in ipairs(commands.list) do
  for _, example in ipairs(commands.find(name).examples or {}) do
    local line = example[1]:gsub("^rpcctl watch", "%0 --count 1 --interval 0.1")
    if name == "restore" or name == "diff" then
      line = "rpcctl backup device.txt; cp device.txt monday.txt; cp device.txt friday.txt; " .. line
    end
    local _, errors, status = tool.run("cd /run; " .. line)
    check.equal(example[1], { errors, status }, { "", 0 })
  end
end

-- What an option takes is data: its help may say anything
local command = { name = "try", options = { { "count", "N", "times to do it", number = 1 }, { "all", nil, "N of them" },
  { "with", "WORD", "any", many = true } } }
local words, given = options.parse(command, { "a", "--count", "3", "--all", "b", "--with=x", "--with", "y", "--",
  "--all" }, 1)
check.equal("words", words, { "a", "b", "--all" })
check.equal("options", given, { count = 3, all = true, with = { "x", "y" } })
check.equal("wrapped", options.wrapped("one two three", "  ", 9), "one two\n  three")

check.finish()

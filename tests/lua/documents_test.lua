-- The examples of the documents, beside the simulated device: each file in a
-- fresh row of commands and scripts, with the output that it shows.
--
-- In a console block a line "$ COMMAND" is run and the lines below it are its
-- output; "..." stands for any further lines. In a lua block the texts behind
-- "-->" are what the whole block prints; one without them only has to run. So
-- have the lines of an sh block that begin with rpcctl or lua5.1.
local check = require "check"
local shell = require "shell"

local source = os.getenv("LIBRPC_TEST_SOURCE")
local prefix = ("cd %s; PATH=%s/bin:$PATH; "):format(source, source)

local function printed(command)
  return (shell.run("{ " .. prefix .. command .. "\n} 2>&1"))
end

local function run_console(name, block)
  local command, expected
  local function finish()
    if not command then
      return
    end
    local output = printed(command)
    local any = expected:find("...\n", 1, true)
    if any then
      output, expected = output:sub(1, any - 1), expected:sub(1, any - 1)
    end
    check.equal(name .. ": " .. command, output, expected)
  end
  for line in block:gmatch("([^\n]*)\n") do
    if line:match("^%$ ") then
      finish()
      command, expected = line:sub(3), ""
    else
      expected = expected .. line .. "\n"
    end
  end
  finish()
end

local function run_lua(name, block)
  local expected = {}
  for text in block:gmatch("%-%->%s?([^\n]*)") do
    expected[#expected + 1] = text .. "\n"
  end
  local path = os.tmpname()
  local file = assert(io.open(path, "w"))
  file:write(block)
  file:close()
  local output, errors, status = shell.run(prefix .. shell.interpreter .. " " .. path)
  os.remove(path)
  check.equal(name .. ":\n" .. block, { errors, status }, { "", 0 })
  if #expected > 0 then
    check.equal(name .. ":\n" .. block, (output:gsub("0x%x+", "ADDRESS")), table.concat(expected))
  end
end

local function run_shell(name, block)
  for line in block:gmatch("[^\n]+") do
    if line:match("^rpcctl ") or line:match("^lua5%.1 ") then
      local _, errors, status = shell.run(prefix .. line)
      check.equal(name .. ": " .. line, { errors, status }, { "", 0 })
    end
  end
end

-- Each document finds the device's settings as the first one did.
check.equal("backup", printed "rpcctl backup /run/documents.txt", "")
for i = 1, #arg do
  local blocks = 0
  printed "rpcctl restore /run/documents.txt"
  local text = assert(io.open(source .. "/" .. arg[i])):read("*a")
  for language, block in text:gmatch("\n```(%a+)\n(.-\n)```\n") do
    if language == "console" then
      run_console(arg[i], block)
    elseif language == "lua" then
      run_lua(arg[i], block)
    elseif language == "sh" then
      run_shell(arg[i], block)
    end
    blocks = blocks + 1
  end
  check.equal(arg[i] .. " has examples", blocks > 0, true)
end

-- How many APIs and services there are is said by the reference, which is made
-- from them, and by nothing that is written by hand: it would lag behind.
local written = shell.run(
  "cd " .. source .. " && ls *.md docs/*.md docs/*.dot docs/man/* *.rockspec cmake/*.cmake")
local teens = { "fourteen", "fifteen", "sixteen", "seventeen", "eighteen", "nineteen", "twenty" }
local function counted(line)
  for _, teen in ipairs(teens) do
    if line:find(teen .. " [%l ]*services") or line:find(teen .. " [%l ]*daemons") then
      return teen
    end
  end
  return line:match("%d+ apis")
end
for name in written:gmatch("%S+") do
  local number = 0
  for line in io.lines(source .. "/" .. name) do
    number = number + 1
    check.equal(name .. ":" .. number .. ": no number of APIs or services", counted(line:lower()), nil)
  end
end

-- The tables of codes are the modules' own.
local documented = assert(io.open(source .. "/docs/named_fields.md")):read("*a")
for _, codes in ipairs { require("librpc.record").codes, require("librpc.status").codes } do
  for code, meaning in pairs(codes) do
    local row = ("| `%s` | %s |\n"):format(code, meaning)
    check.equal("docs/named_fields.md: " .. code, documented:find(row, 1, true) and row or "no such row", row)
  end
end

check.finish()

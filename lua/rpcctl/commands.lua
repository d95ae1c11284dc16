-- The commands in the order in which help lists them; each is the file of its name in
-- commands/, loaded when it is asked for. options.lua tells what such a file returns.
local commands = {
  list = { "list", "describe", "get", "rows", "watch", "set", "add", "call", "health", "backup", "restore", "diff",
    "help" },
}

local known = {}
for _, name in ipairs(commands.list) do
  known[name] = true
end

-- The command of that name, or nil.
function commands.find(name)
  return known[name] and require("rpcctl.commands." .. name) or nil
end

return commands

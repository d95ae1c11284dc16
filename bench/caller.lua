-- Makes `count` calls of one API, for the tools that watch a whole process:
-- caller.lua WAY COUNT [API], where WAY is librpc, plain or none.
local way, count, api = arg[1], tonumber(arg[2]), arg[3]

if way ~= "none" then
  local library = require(way)
  local call = way == "plain" and library[api] or function(argument)
    return library.callapi(api, argument)
  end
  local argument
  for _, row in ipairs(require("calls")) do
    argument = row.api == api and row.argument or argument
  end
  for _ = 1, count do
    if not call(argument) then
      error(("caller: %s: expected a reply, found none"):format(api))
    end
  end
end

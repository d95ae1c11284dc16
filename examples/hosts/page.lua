-- What the page of every host answers to /row?table=portinfo&key=3: that row as
-- the library gives it, or why there is none. For Lua 5.1 to 5.4 and LuaJIT.
require "librpc"
local last = require "librpc.status".last

local page = {}

-- What anybody may read; a table that holds secrets does not belong here.
local tables = { portinfo = true, vlaninfo = true, svi = true, optical = true, d1x_pcfg = true }

-- What a client can do about a failure, by its code.
local statuses = {
  no_portmapper = "503 Service Unavailable",
  no_daemon = "503 Service Unavailable",
  refused = "503 Service Unavailable",
  timed_out = "504 Gateway Timeout",
}

local function decoded(text)
  return (text:gsub("+", " "):gsub("%%(%x%x)", function(digits)
    return string.char(tonumber(digits, 16))
  end))
end

-- The status, as "200 OK", and the page's text. `query` is what stands behind
-- the address's '?', or nil.
function page.row(query)
  local asked = {}
  for name, value in (query or ""):gmatch("(%w+)=([^&]*)") do
    asked[name] = decoded(value)
  end
  if not tables[asked.table] then
    return "404 Not Found", "unknown_table: expected the name of a table, found " .. (asked.table or "none") .. "\n"
  end
  local reply = librpc.callapi("oltmib_" .. asked.table .. "_get_1", asked.key or "")
  if reply then
    return "200 OK", reply .. "\n"
  end
  local code, sentence = last()
  return statuses[code] or "500 Internal Server Error", code .. ": " .. sentence .. "\n"
end

-- For hosts that want the status as a number.
function page.numbered_row(query)
  local status, text = page.row(query)
  return tonumber(status:match("^%d+")), text
end

return page

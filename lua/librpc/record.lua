-- Named fields for callapi: rows as tables in, rows as tables out, and an error
-- wherever the plain text would lose something without a word. For Lua 5.1 to
-- 5.4 and LuaJIT; see docs/named_fields.md. This file is the door to the rooms
-- in record/: each is loaded when the first of its functions is asked for. A new
-- function of the module is a row below.
--
-- Every function returns nil, a message and a code on failure. A message reads
-- "API: FIELD: expected X, found Y"; the codes stand in record.codes and, for
-- calls that gave no value, in librpc.status.
local rooms = {
  find = "tables",
  encode = "calling", decode = "calling", call = "calling",
  check = "wrong",
  rows = "walking", carried = "walking",
  all = "at_once", walks = "at_once",
  get = "reading",
  change = "changing", add = "changing",
  difference = "counters",
  codes = "problems", nearest = "problems",
}

return setmetatable({}, {
  __index = function(record, name)
    local room = rooms[name]
    local found = room and require("librpc.record." .. room)[name]
    rawset(record, name, found)
    return found
  end,
})

-- The annotations for editors are right in LuaLS's grammar: every tag and type can
-- be parsed, every type that is named is declared, parameters are the function's
-- own, and each file is Lua.
local check = require "check"

local source = os.getenv("LIBRPC_TEST_SOURCE")
local files = { "librpc", "librpc/calls", "librpc/names", "librpc/record", "librpc/schema", "librpc/status" }

local known = {}
local builtin = "nil any boolean string number integer function table thread userdata lightuserdata "
for name in (builtin .. "unknown self true false"):gmatch("%a+") do
  known[name] = true
end
local named = {} -- type = where

-- A parser of one line: `take(pattern)` eats what matches at the place, after blanks.
local function parser(text, where)
  local self, at = {}, 1
  function self.take(pattern)
    local first, last, match = text:find("^%s*(" .. pattern .. ")", at)
    if first then
      at = last + 1
    end
    return first and match
  end
  function self.expect(pattern, what)
    return self.take(pattern) or error(("%s: expected %s, found '%s'"):format(where, what, text:sub(at)), 0)
  end
  function self.rest()
    return text:sub(at)
  end
  function self.mark(place)
    at, place = place or at, at
    return place
  end
  return self
end

local type_of

local function list_of(p, closing, item)
  if p.take(closing) then
    return
  end
  repeat
    item()
  until not p.take(",")
  p.expect(closing, "the end of a list")
end

local function primary(p, where)
  if p.take("%(") then
    type_of(p, where)
    p.expect("%)", "')'")
  elseif p.take("{") then
    list_of(p, "}", function()
      if p.take("%[") then
        type_of(p, where)
        p.expect("%]", "']'")
      else
        p.expect("[%a_][%w_]*%??", "a field's name")
      end
      p.expect(":", "':'")
      type_of(p, where)
    end)
  elseif p.take("fun%f[%W]") then
    p.expect("%(", "'('")
    list_of(p, "%)", function()
      p.expect("[%a_.][%w_.]*%??", "a parameter")
      if p.take(":") then
        type_of(p, where)
      end
    end)
    if p.take(":") then
      repeat
        type_of(p, where)
      until not p.take(",")
    end
  elseif not p.take('"[^"]*"') and not p.take("%-?%d+") then
    local name = p.expect("[%a_][%w_.]*", "a type")
    named[name] = named[name] or where
    if p.take("<") then
      list_of(p, ">", function() type_of(p, where) end)
    end
  end
  repeat until not (p.take("%[%]") or p.take("%?"))
end

function type_of(p, where)
  repeat
    primary(p, where)
  until not p.take("|")
end

-- Behind the types of a field, a parameter or a value stands its description.
local described = { field = true, param = true, ["return"] = true }

local function ends(p, tag, where)
  local rest = p.rest()
  local text = described[tag] and rest:match("^ %l[^|<>{}%[%]]*$")
  if not text and not rest:match("^%s*$") and not rest:match("^ # .") then
    error(("%s: expected the end or a description, found '%s'"):format(where, rest), 0)
  end
end

-- What each tag is made of; `block` holds the tags since the last line that is code.
local tags = {
  meta = function(p) p.expect("[%w_.]+", "a name") end,
  class = function(p, where)
    known[p.expect("[%w_.]+", "a class")] = true
    if p.take(":") then
      type_of(p, where)
    end
  end,
  field = function(p, where)
    if p.take("%[") then
      type_of(p, where)
      p.expect("%]", "']'")
    else
      p.expect("[%w_]+%??", "a field")
    end
    type_of(p, where)
  end,
  param = function(p, where, block)
    block[#block + 1] = p.expect("[%a_.][%w_.]*", "a parameter")
    p.take("%?")
    type_of(p, where)
  end,
  ["return"] = function(p, where)
    repeat
      type_of(p, where)
      p.take("[%a_][%w_]*")
    until not p.take(",")
  end,
  alias = function(p, where)
    known[p.expect("[%w_.]+", "an alias")] = true
    if p.rest():match("%S") then
      type_of(p, where)
    end
  end,
}

local function check_line(line, where, block)
  local tag, text = line:match("^%-%-%-@(%l+)%s*(.*)$")
  local p
  if tag then
    if not tags[tag] then
      error(("%s: expected a tag, found '@%s'"):format(where, tag), 0)
    end
    p = parser(text, where)
    tags[tag](p, where, block)
  elseif line:match("^%-%-%-|") then
    p = parser(line:sub(5), where)
    type_of(p, where)
  end
  if p then
    ends(p, tag, where)
  end
  local parameters = line:match("^function [%w_.:]+%((.-)%)")
  if parameters and table.concat(block, ", ") ~= parameters then
    error(("%s: expected @param of (%s), found (%s)"):format(where, parameters, table.concat(block, ", ")), 0)
  end
  if not line:match("^%-%-") then
    for i = #block, 1, -1 do
      block[i] = nil
    end
  end
end

-- The checker itself: what is wrong is seen.
local wrong = { "---@param", "---@param x", "---@return table<string", "---@return string |", "---@retrun x",
  "---@field x fun(a: string", '---| "open', "---@class a:" }
for _, line in ipairs(wrong) do
  check.equal(line .. " is refused", (pcall(check_line, line, "here", {})), false)
end
check.equal("a parameter too many", (pcall(check_line, "function a.b(c)", "here", {})), false)

for _, name in ipairs(files) do
  local path = ("%s/docs/reference/%s.lua"):format(source, name)
  check.equal(name .. " is Lua", (loadfile(path)) ~= nil, true)
  local number, block = 0, {}
  for line in io.lines(path) do
    number = number + 1
    local ok, problem = pcall(check_line, line, ("%s:%d"):format(name, number), block)
    check.equal(("%s:%d"):format(name, number), ok or problem, true)
  end
end
for name, where in pairs(named) do
  check.equal(("%s: type %s"):format(where, name), known[name], true)
end

check.finish()

-- Instructions a call, from callgrind's own files: what 1000 more calls cost,
-- divided by them, by object file and by function.
local profile = {}

-- The self costs of one callgrind file: {["object\0function"] = instructions}.
local function read(path)
  local names = { ob = {}, fn = {} }
  local costs, object, skip = {}, "?", false
  local place = "?\0?"
  for line in io.lines(path) do
    local kind, id, name = line:match("^c?(%l%l)=%((%d+)%) ?(.*)$")
    if kind == "ob" or kind == "fn" then
      if name ~= "" then
        names[kind][id] = name
      end
      if line:sub(1, 1) ~= "c" then
        if kind == "ob" then
          object = names.ob[id]
        else
          place = object .. "\0" .. names.fn[id]
        end
      end
    elseif line:match("^calls=") then
      skip = true -- the line after it is the callee's
    elseif line:match("^[%d+*-]") then
      local cost = line:match("^%S+ (%d+)")
      if cost and not skip then
        costs[place] = (costs[place] or 0) + tonumber(cost)
      end
      skip = false
    end
  end
  return costs
end

local parts = {
  { "librpc%.so", "library" },
  { "plain%.so", "library" },
  { "libtirpc", "libtirpc" },
  { "lua5%.1", "Lua" },
  { "liblua", "Lua" },
  { "libc%.so", "libc" },
  { "libc%-", "libc" },
}

-- The part that an object file belongs to.
local function part_of(object)
  local name = object:match("[^/]*$")
  for _, part in ipairs(parts) do
    if name:match(part[1]) then
      return part[2]
    end
  end
  return "other"
end

-- Runs one way's calls of an API under callgrind, twice. Returns what
-- per_call does.
function profile.measure(way, api, scratch)
  local few, many = 100, 1100
  local paths = {}
  for i, count in ipairs({ few, many }) do
    paths[i] = ("%s/callgrind.%s.%s.%d"):format(scratch, way, api, count)
    local watched = ("valgrind --tool=callgrind --callgrind-out-file=%s lua5.1 bench/fresh.lua calls %s %d %s"):format(
      paths[i], way, count, api)
    local log = scratch .. "/callgrind.log"
    if os.execute(("%s >%s 2>&1"):format(watched, log)) ~= 0 then
      error(("bench: %s: expected a run under callgrind, found a failure; see %s"):format(api, log), 0)
    end
  end
  return profile.per_call(paths[1], paths[2], many - few)
end

-- A function's name without its namespace and arguments.
local function short(name)
  return (name:gsub("%(anonymous namespace%)::", ""):gsub("%(.*", ""))
end

-- The instructions of one call by part, in all, and function by function
-- (dearest first), from the files of `few` and of `many` calls.
function profile.per_call(few_path, many_path, calls)
  local few, many = read(few_path), read(many_path)
  local split, functions = { total = 0, library = 0, libtirpc = 0, Lua = 0, libc = 0, other = 0 }, {}
  for place, cost in pairs(many) do
    local each = (cost - (few[place] or 0)) / calls
    local object, name = place:match("^(.*)%z(.*)$")
    local part = part_of(object)
    split[part] = split[part] + each
    split.total = split.total + each
    if each >= 1 then
      functions[#functions + 1] = { name = short(name), part = part, cost = each }
    end
  end
  table.sort(functions, function(a, b)
    return a.cost > b.cost
  end)
  return split, functions
end

return profile

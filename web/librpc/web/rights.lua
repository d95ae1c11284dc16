-- What a user may read and change: what everybody may, and what the configuration
-- gives the user and the user's groups beyond it.
local rights = {}

local function add(given, list)
  if list == "*" then
    given["*"] = true
  end
  for _, name in ipairs(type(list) == "table" and list or {}) do
    given[name] = true
  end
end

local function is_member(group, user)
  for _, member in ipairs(group.members or {}) do
    if member == user then
      return true
    end
  end
  return false
end

-- The rights of a user, nil where the web server named none: two functions of a
-- table's name, may_read and may_change. nil where nobody is let in so.
function rights.of(site, user)
  local sources = { site.everybody, user and site.users[user] }
  if not user then
    if not site.without_user then
      return nil
    end
    sources = { site.without_user }
  else
    for _, group in pairs(site.groups) do
      sources[#sources + 1] = is_member(group, user) and group or nil
    end
  end
  local read, change = {}, {}
  for _, source in pairs(sources) do
    add(read, source.read)
    add(change, source.change)
  end
  return {
    may_read = function(table_name)
      return read["*"] or read[table_name] or false
    end,
    -- who changes a row sees it: its fields before and after
    may_change = function(table_name)
      return (read["*"] or read[table_name]) and (change["*"] or change[table_name]) or false
    end,
  }
end

return rights

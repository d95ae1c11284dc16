-- What a site or a device's maker knows about the tables: which fields are the
-- key, what they are called, their units, the words for their numbers, which are
-- secret. It stands in files of its own: those of LIBRPC_NAMES (paths between
-- colons), else /etc/librpc/names/*.lua; docs/named_fields.md tells their form.
--
--     names.tables             all that is loaded, by table; fields by their name in the schema
--     names.fields(table)      a table's fields in the record's order, with what is known of each
--     names.load(path)         loads one more file, over those before it
--     names.check(path)        true, or nil, every mistake as one text, a code, and as a list
--     names.keep(path)         a file that remembers which files were right: a process after
--                              this one need not look for mistakes again
--
-- Without a file this costs a look whether there is one. Where one has a mistake
-- none is used: names.tables raises it, and librpc.record refuses to call, since a
-- page could show what the file calls secret.
local rooms = { load = "files", check = "files", fields = "columns" }

local names = {}

local folder = "/etc/librpc/names"
local tables, problem -- what is loaded, or the mistakes
local kept -- the file of names.keep
local views = {}

-- The files of the folder in the order of their names; nil and why they cannot be
-- told. Where there is no folder, there are none.
local function listed_files()
  local there, reason, number = io.open(folder)
  if not there and number == 2 then -- no such file
    return {}
  end
  local paths, last = {}, reason or ""
  if there then
    there:close()
    local listing = io.popen("LC_ALL=C ls " .. folder .. " 2>&1 && echo /") -- which is no file's name
    for name in listing:lines() do
      if name:match("%.lua$") then
        paths[#paths + 1] = folder .. "/" .. name
      end
      last = name
    end
    listing:close()
  end
  if last ~= "/" then
    return nil, ("%s: expected a folder that can be read, found %s"):format(folder, last)
  end
  return paths
end

-- The files that are to be loaded, later ones over earlier.
local function installed_files()
  local listed = os.getenv("LIBRPC_NAMES")
  if not listed then
    return listed_files()
  end
  local paths = {}
  for path in listed:gmatch("[^:]+") do
    paths[#paths + 1] = path
  end
  return paths
end

-- The tables that are loaded; nil and the mistakes where there are any.
function names.loaded()
  if not tables and not problem then
    local paths
    paths, problem = installed_files()
    if paths and #paths == 0 then
      tables = {}
    elseif paths then
      tables, problem = require("librpc.names.files").read(paths, {}, kept)
    end
  end
  return tables, problem
end

-- Says where it stands which files of names were right already. For pages that are
-- a process each; whoever may write there can have mistakes passed over.
function names.keep(path)
  kept = path
end

-- Replaces what is loaded.
function names.use(read)
  tables, problem, views = read, nil, {}
end

-- How the rows of a table read of which nothing is said, see names/views.lua.
local plain = { name = {}, field = {}, words = {}, numbers = {}, secret = {}, exact = {}, res = "res", oper = "oper",
  plain = true }

-- The view of a table; nil, a message and a code where the names have mistakes.
function names.view(table_name)
  local view = views[table_name]
  if not view then
    local all, mistakes = names.loaded()
    if not all then
      return nil, mistakes, "bad_names"
    end
    local entry, every = all[table_name], all["*"]
    view = (entry or every) and require("librpc.names.views").of(entry or { fields = {} }, every or {}) or plain
    views[table_name] = view
  end
  return view
end

-- A row by the schema's names as its reader sees it.
function names.present(view, row)
  return view.plain and row or view.present(row)
end

return setmetatable(names, {
  __index = function(_, name)
    if name == "tables" then
      return names.loaded() or error(problem, 0)
    end
    local room = rooms[name]
    return room and require("librpc.names." .. room)[name]
  end,
})

---@meta librpc.names
-- Annotations for editors (LuaLS); nothing loads this file.
-- Made by the target `describe`; change tools/describe/module_annotations.cpp instead.

---@class librpc.names.field
---@field field string # its name in the schema
---@field name string
---@field title string
---@field kind string
---@field size? integer
---@field key boolean # it says which row
---@field argument boolean # arguments carry it
---@field unit? string
---@field description? string
---@field values? table<integer, string>
---@field secret? boolean
---@field role? string # what it is to a page, see docs/named_fields.md

---@class librpc.names
---@field tables table<string, table> # all that is loaded
local names = {}

---A table's fields in the record's order.
---@param name librpc.table|librpc.api|string
---@return librpc.names.field[]? fields
---@return string? message
---@return string? code
function names.fields(name) end

---Loads a file over those that are loaded.
---@param path string
---@return true? done
---@return string? mistakes
---@return string? code
function names.load(path) end

---Every mistake of a file.
---@param path string
---@return true? right
---@return string? mistakes # a line each
---@return string? code
---@return string[]? list
function names.check(path) end

---Says where it stands which files were right already: they are not looked through again.
---@param path string
function names.keep(path) end

---Whether what is installed can be used.
---@return table? tables
---@return string? mistakes
function names.loaded() end

return names

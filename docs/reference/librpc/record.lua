---@meta librpc.record
-- Annotations for editors (LuaLS); nothing loads this file.
-- Made by the target `describe`; change tools/describe/module_annotations.cpp instead.

---Names and values of fields.
---@alias librpc.fields table<string, string|number|number[]>

---@class librpc.record.options
---@field done? fun(row: librpc.fields): boolean? # true at the end, which is not a row
---@field next? fun(row: librpc.fields): librpc.fields # the fields of the next request
---@field limit? integer # rows at most, 100000 if not given
---@field each? fun(row: librpc.fields): boolean? # takes each row as it comes; false ends the walk
---@field seconds? number # that the walk may take
---@field call_seconds? number # that each of its calls may take
---@field ends? integer[] # the results with which a walk ends

---@class librpc.record.wrong
---@field code string
---@field message string
---@field limits table<string, any>

---Every function gives nil, a message and a code on failure.
---@class librpc.record
---@field codes table<string, string> # what each code means
local record = {}

---The row of a key.
---@param name librpc.table|librpc.api|string
---@param key? librpc.fields
---@param options? { call_seconds: number? } # 25 for each call if not given
---@return librpc.fields? row
---@return string? message
---@return string? code
---@return librpc.fields? other # a row that is none
function record.get(name, key, options) end

---The rows behind a key, all of them without one.
---@param name librpc.table|librpc.api|string
---@param key? librpc.fields
---@param options? librpc.record.options
---@return librpc.fields[]? rows
---@return string why # "end", "res" or "stopped"; of a failure the message
---@return librpc.fields|string|nil last # the row that ended them; of a failure the code
---@return librpc.fields[]? had # of a failure, the rows so far
---@return librpc.fields? ended # and the row that ended them
function record.rows(name, key, options) end

---Walks of several tables at once.
---@param list { [1]: string, [2]: librpc.fields|nil, [3]: librpc.record.options|nil }[] # each { table [, key [, options]] }
---@param seconds? number # a deadline for all
---@return librpc.fields[][]? rows # of each, all that there were; nil where the list is none
---@return table<integer, librpc.failure>|string failures
---@return table<integer, { why: string, last: librpc.fields? }>|string ends
function record.walks(list, seconds) end

---One call with fields: the row, or a set's status.
---@param name librpc.api|string
---@param fields? librpc.fields
---@param options? { call_seconds: number? } # 25 if not given
---@return librpc.fields|integer|nil result
---@return string? message
---@return string? code
function record.call(name, fields, options) end

---Calls with fields at once.
---@param list { [1]: librpc.api|string, [2]: librpc.fields|nil }[] # each { api [, fields] }
---@param seconds? number # a deadline for all; 25 if not given
---@return (librpc.fields|integer|false)[]? rows # nil where the list is none
---@return table<integer, librpc.failure>|string failures
---@return string? code
function record.all(list, seconds) end

---Changes some fields of a row; without changes the key is among them.
---@param name librpc.table|librpc.api|string
---@param key librpc.fields
---@param changes? librpc.fields
---@param options? { call_seconds: number?, dry_run: boolean?, only: boolean? }
---@return integer|false|nil status # false of a dry run
---@return table<string, { before: any, after: any }>|string changed # of a failure the message
---@return string? code
function record.change(name, key, changes, options) end

---A new row, where the daemon has none of its key.
---@param name librpc.table|librpc.api|string
---@param fields librpc.fields
---@param options? { call_seconds: number?, dry_run: boolean? }
---@return integer|false|nil status # false of a dry run
---@return table<string, { after: any }>|string changed # of a failure the message
---@return string? code
function record.add(name, fields, options) end

---Every wrong field of a form; an empty table where all is right.
---@param name librpc.api|string
---@param fields librpc.fields
---@return table<string, librpc.record.wrong>? wrong
---@return string? message
---@return string? code
function record.check(name, fields) end

---The argument's text of fields.
---@param name librpc.api|string
---@param fields? librpc.fields
---@return string? text
---@return string? message
---@return string? code
function record.encode(name, fields) end

---The row of a reply's text; of a set, the status.
---@param name librpc.api|string
---@param text string
---@return librpc.fields|integer|nil result
---@return string? message
---@return string? code
function record.decode(name, text) end

---The API of a table's operation.
---@param name librpc.table|librpc.api|string
---@param operation "get"|"getn"|"set"|"other"
---@return librpc.schema.api? api
---@return string? message
---@return string? code
function record.find(name, operation) end

---What of a row an argument of the API carries back.
---@param name librpc.api|string
---@param row librpc.fields
---@return librpc.fields? fields
---@return string? message
---@return string? code
function record.carried(name, row) end

---How far a counter went, over the end of its 64 bits too.
---@param later string|number
---@param earlier string|number
---@return number? difference
---@return string? message
---@return string? code
function record.difference(later, earlier) end

---The name of a list that is closest to a misspelt one.
---@param name string
---@param names string[]
---@return string?
function record.nearest(name, names) end

return record

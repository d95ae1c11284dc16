// docs/reference/librpc/*.lua: what an editor with LuaLS annotations wants to know of
// the modules beside librpc. A new function of one of them is a paragraph here;
// tests/lua/annotations_test.lua fails until it is.
#include <set>
#include <string>

#include "common/status.h"
#include "tools/describe/names.h"
#include "tools/describe/outputs.h"

namespace
{
constexpr char calls[] = R"(---Why a call has no text, or a row is none.
---@class librpc.failure
---@field code librpc.code|string # of librpc.status.codes, with named fields of librpc.record.codes too
---@field message string
---@field details? librpc.status.details

---@class librpc.calls
local calls = {}

---Calls APIs at once. Raises an error for a list that is none, and for two sets of one table.
---@param list { [1]: librpc.api|string, [2]: string|number|nil }[] # each { name [, argument] }
---@param seconds? number # a deadline for all; 25 if not given
---@return (string|false)[] texts # in the list's order; false where there is none
---@return table<integer, librpc.failure> failures # why, by the same place
function calls.all(list, seconds) end

---A call's datagram, for a host that has a socket of its own.
---@param name librpc.api|string
---@param argument string|number
---@return string? datagram
---@return string address # to send it to; of a call that cannot be made the message
---@return integer|string port # of a call that cannot be made the code
---@return librpc.calls.message? message
function calls.message(name, argument) end

---Calls the null procedure of every service at once.
---@param seconds? number # 25 if not given
---@return librpc.calls.service[]
function calls.services(seconds) end

---@class librpc.calls.service
---@field service string
---@field title string
---@field program integer
---@field port? integer # of a daemon that was found
---@field seconds? number # that its answer took
---@field failure? librpc.failure

---Calls that begin and end at any time.
---@return librpc.calls.group
function calls.group() end

---@class librpc.calls.group
local group = {}

---Begins a call.
---@param name librpc.api|string
---@param argument string|number
---@param seconds? number # its deadline from now, the time in the queue included; 25 if not given
---@return integer? id
---@return string? message # where it cannot begin
---@return librpc.code? code
function group:call(name, argument, seconds) end

---The calls that have ended, each exactly once, for use with `for`. Never waits.
---@return fun(): integer?, string|false, librpc.failure?, number # id, text, failure, seconds
function group:finished() end

---Waits until a call has ended.
---@param seconds? number # without a limit if not given
---@return boolean? ended # false where the time is over or nothing is open
---@return string? message # where the group is closed
---@return librpc.code? code
function group:wait(seconds) end

---A descriptor, the same for the group's life, that is readable when there is something to do.
---@return integer? descriptor
---@return string? message
---@return librpc.code? code
function group:pollfd() end

---@return "r"
function group:events() end

---Seconds until there is something to do; nil where nothing is open.
---@return number?
function group:timeout() end

---Gives the open calls up.
function group:close() end

---@class librpc.calls.message
local message = {}

---What a datagram that the host received says.
---@param datagram string
---@return string|false|nil text # nil: not this call's datagram; false: a failure
---@return librpc.failure? failure
function message:reply(datagram) end

---Has the daemon's port asked for again by the next message.
function message:lost() end

return calls
)";

constexpr char schema[] = R"(---A field of an argument's or a reply's text.
---@class librpc.schema.position
---@field name string
---@field kind "int"|"unsigned"|"text"|"mac"|"bytes"|"hex"|"list"|"real"|"counter"|"skip"
---@field size? integer
---@field longest? integer # of a list's text
---@field least? integer # of a list's numbers
---@field most? integer

---@class librpc.schema.api
---@field name librpc.api
---@field service string
---@field program integer
---@field procedure integer
---@field operation "get"|"getn"|"set"|"other"
---@field table librpc.table|string
---@field request string # the record's name, or "void"
---@field reply string # the record's name, or "int"
---@field input librpc.schema.position[]
---@field output? librpc.schema.position[] # none of a set
---@field delimiters string
---@field separator? string
---@field longest? integer # characters of a reply
---@field status? { kind: "int"|"little"|"big", rest: string }

---@class librpc.schema.service
---@field name string
---@field title string
---@field program integer

---@class librpc.schema
---@field apis librpc.schema.api[] # in the order of registration
---@field services librpc.schema.service[]
---@field kinds table<string, string> # what is to be said of each kind of text
local schema = {}

---@param name librpc.api|string
---@return librpc.schema.api?
function schema.api(name) end

---The table's APIs by their operation.
---@param name string
---@return table<string, librpc.schema.api>?
function schema.table(name) end

return schema
)";

constexpr char status[] = R"(---@class librpc.status.details
---@field api string
---@field service? string
---@field program? integer
---@field reason? string # the RPC library's own words
---@field errno? integer

---@class librpc.status
---@field codes table<librpc.code, string> # what each code means
local status = {}

---Why the last callapi gave no value.
---@return librpc.code? code # nil after a success
---@return string? sentence
---@return librpc.status.details? details
function status.last() end

return status
)";

constexpr char record[] = R"(---Names and values of fields.
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
)";

constexpr char names[] = R"(---@class librpc.names.field
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

---Whether what is installed can be used.
---@return table? tables
---@return string? mistakes
function names.loaded() end

return names
)";

void write_codes(std::ostream& out)
{
    out << "---Why a call gave no value.\n---@alias librpc.code\n";
    for (unsigned i = 1; i <= static_cast<unsigned>(last_call_code); i++) {
        const auto code = static_cast<CallCode>(i);
        out << "---| \"" << name_of(code) << "\" # " << meaning_of(code) << '\n';
    }
    out << '\n';
}

void write_tables(std::ostream& out)
{
    std::set<std::string> written;
    out << "---Every table.\n---@alias librpc.table\n";
    for (const Service* service : all_services)
        for (const Api& api : *service)
            if (api.registered() && written.insert(table_of(api)).second)
                out << "---| \"" << table_of(api) << "\" # " << service->name << '\n';
    out << '\n';
}
} // namespace

const AnnotatedModule annotated_modules[] = {
    {"calls", nullptr, calls},        {"names", nullptr, names},       {"record", nullptr, record},
    {"schema", write_tables, schema}, {"status", write_codes, status}, {nullptr, nullptr, nullptr},
};

void write_module_annotations(std::ostream& out, const AnnotatedModule& module)
{
    out << "---@meta librpc." << module.name << R"(
-- Annotations for editors (LuaLS); nothing loads this file.
-- Made by the target `describe`; change tools/describe/module_annotations.cpp instead.

)";
    if (module.write_derived)
        module.write_derived(out);
    out << module.text;
}

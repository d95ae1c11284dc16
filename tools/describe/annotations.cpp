// docs/reference/librpc.lua: what an editor with LuaLS annotations wants to
// know of the module: API names, the positions of their texts, fields by table.
#include <set>
#include <string>

#include "tools/describe/names.h"
#include "tools/describe/outputs.h"

namespace
{
std::string joined(const std::vector<NotedPosition>& positions, const char* separator)
{
    std::string text;
    for (const NotedPosition& position : positions)
        text += (text.empty() ? "" : separator) + std::string(position.name);
    return text;
}

std::string signature_of(const Api& api)
{
    const std::string in = api.request ? joined(positions_of(*api.input(), Side::Input), "&") : "";
    const std::string out =
        api.output() ? joined(positions_of(*api.output(), Side::Output), api.output()->separator) : "status";
    return (in.empty() ? "nothing" : in) + " -> " + out;
}

// What a field is as a value of Lua, where a caller names fields: as its
// reply's text has it.
const char* lua_type(const Position& position) { return kind_of(position, Side::Output).lua_type; }

// One class a table: the fields of the row that its texts hold.
void write_row(std::ostream& out, const Api& api)
{
    out << "\n---A row of " << table_of(api) << ".\n---@class librpc.row." << table_of(api) << '\n';
    std::set<std::string> written;
    for (const TextForm* form : {api.input(), api.output()}) {
        if (!form)
            continue;
        for (const NotedPosition& position : positions_of(*form, form == api.input() ? Side::Input : Side::Output)) {
            if (!written.insert(std::string(position.name)).second)
                continue;
            out << "---@field " << position.name << "? " << lua_type(position.position);
            if (position.size)
                out << " " << position.kind->name << " of " << position.size;
            if (!position.notes.empty())
                out << (position.size ? ", " : " ") << position.notes;
            out << '\n';
        }
    }
}
} // namespace

void write_annotations(std::ostream& out)
{
    out << R"(---@meta librpc
-- Annotations for editors (LuaLS); nothing loads this file.
-- Made by the target `describe`; change the services or tools/describe/annotations.cpp instead.

---Every API by name, with the positions of its argument and of its reply.
---@alias librpc.api
)";
    for (const Service* service : all_services)
        for (const Api& api : *service)
            if (api.registered())
                out << "---| \"" << api.name << "\" # " << service->name << ": " << signature_of(api) << '\n';
    out << R"(
---@class librpc
librpc = {}

---Calls one API. Positions of the argument and the reply are joined by '&'.
---@param name librpc.api|string
---@param argument string
---@return string? reply # the reply's text; nothing when the call failed
function librpc.callapi(name, argument) end

---Prints every registered API to standard output.
function librpc.showapi() end

---Switches the trace lines on standard output on.
function librpc.enabledebug() end

---Switches the trace lines off.
function librpc.disabledebug() end
)";
    std::set<std::string> written;
    for (const Service* service : all_services)
        for (const bool with_output : {true, false}) // a row with both texts before one without
            for (const Api& api : *service)
                if (api.registered() && (api.output() != nullptr) == with_output &&
                    written.insert(table_of(api)).second)
                    write_row(out, api);
    out << "\nreturn librpc\n";
}

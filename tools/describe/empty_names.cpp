// docs/reference/names.lua: a file of names with every table and field and nothing
// said of them, for a device's maker to fill in.
#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "tools/describe/names.h"
#include "tools/describe/outputs.h"

namespace
{
// A field's name as a key of a Lua table.
std::string key_of(std::string_view name)
{
    static const std::set<std::string_view> reserved = {
        "and", "break", "do",  "else", "elseif", "end",    "false",  "for",  "function", "goto",  "if",
        "in",  "local", "nil", "not",  "or",     "repeat", "return", "then", "true",     "until", "while"};
    const std::string plain(name);
    return reserved.count(name) ? "[\"" + plain + "\"]" : plain;
}

// The registered APIs of each table of a service, in the order of registration.
std::vector<std::vector<const Api*>> tables_of(const Service& service)
{
    std::vector<std::vector<const Api*>> tables;
    for (const Api& api : service) {
        if (!api.registered())
            continue;
        const auto same = std::find_if(tables.begin(), tables.end(),
                                       [&](const auto& table) { return table_of(*table[0]) == table_of(api); });
        if (same == tables.end())
            tables.push_back({&api});
        else
            same->push_back(&api);
    }
    return tables;
}

void write_fields(std::ostream& out, const std::vector<const Api*>& apis)
{
    std::set<std::string_view> written;
    for (const Side side : {Side::Output, Side::Input})
        for (const Api* api : apis) {
            const TextForm* form = side == Side::Output ? api->output() : api->request ? api->input() : nullptr;
            if (!form || (side == Side::Output && !api->reply))
                continue;
            for (const NotedPosition& position : positions_of(*form, side)) {
                if (!written.insert(position.name).second)
                    continue;
                out << "    " << key_of(position.name) << " = {}, -- " << position.kind->name;
                if (position.size)
                    out << " of " << position.size;
                out << '\n';
            }
        }
}
} // namespace

void write_empty_names(std::ostream& out)
{
    out << R"(-- Made by the target `describe`; change the services or tools/describe/empty_names.cpp instead.
-- A file of names in which nothing is said yet: every table and every field. Copy
-- it, or a part of it, to /etc/librpc/names/YOURS.lua, and fill in what you know:
--
--     portinfo = {
--       title = "Ports", key = { "ifx" },
--       field8 = { name = "speed", unit = "Mbit/s", values = { [0] = "auto" } },
--     },
--
-- docs/named_fields.md tells every word. `require("librpc.names").check(PATH)` finds
-- the mistakes of a file.
return {
)";
    for (const Service* service : all_services) {
        out << "  -- " << service->name << ": " << service->title << '\n';
        for (const std::vector<const Api*>& apis : tables_of(*service)) {
            out << "  " << key_of(table_of(*apis[0])) << " = { --";
            for (const Api* api : apis)
                out << ' ' << name_of(split_name(*api).operation);
            out << '\n';
            write_fields(out, apis);
            out << "  },\n";
        }
    }
    out << "}\n";
}

// The first half of tools/wireshark/librpc.lua: programs, procedures and
// records as Lua tables.
#include <string>

#include "rpc/client.h"
#include "tools/describe/names.h"
#include "tools/describe/outputs.h"

namespace
{
std::string short_name(const Record& record)
{
    const std::string name = record.name, prefix = "oltmib_";
    return name.compare(0, prefix.size(), prefix) == 0 ? name.substr(prefix.size()) : name;
}

// What the plug-in shows a value as.
const char* shown_as(const Record& record, const Field& value)
{
    const Position position = position_of(record, value);
    if (const char* dissection = kind_of(position, Side::Output).dissection)
        return dissection;
    const bool is_unsigned = position.text == Text::Unsigned;
    switch (value.kind) {
    case Kind::Char:
        return "text";
    case Kind::Int:
    case Kind::UInt:
        return value.count > 1 ? "ints" : is_unsigned || value.kind == Kind::UInt ? "uint" : "int";
    case Kind::Double:
        return "double";
    case Kind::Int64:
        return is_unsigned ? "uint64" : "int64";
    case Kind::UInt64:
        return "uint64";
    }
    return "";
}

void write_record(std::ostream& out, const Record& record)
{
    out << "  " << short_name(record) << " = {\n";
    for (const Value& value : values_of(record))
        out << "    { \"" << value.name << "\", \"" << shown_as(record, value.field) << "\", "
            << value.field.count * units_of(value.field.kind) << " },\n";
    out << "  },\n";
}

std::string record_or_nothing(const char* key, const Record* record)
{
    return record ? std::string(", ") + key + " = \"" + short_name(*record) + "\"" : "";
}
} // namespace

void write_dissector_data(std::ostream& out)
{
    out << R"(-- Wireshark and tshark plug-in: shows every call and reply of the library's
-- fifteen programs with field names and values. For one run:
--
--     tshark -X lua_script:librpc.lua -i lo
--
-- or put it into the folder that Help, About, Folders calls "Personal Lua
-- Plugins"; README.md beside this file has filters. Made by the target `describe`: change the services, or
-- tools/wireshark/dissector.lua, which is the second half of this file.

-- A record is its fields in wire order: { name, kind, units of four bytes }.
local records = {
)";
    for (const Service* service : all_services)
        for (const Record* record : records_of(*service))
            write_record(out, *record);
    out << "}\n\n-- A procedure's request and reply are records. Without a request the call has\n"
           "-- no body, without a reply the daemon answers with an int status.\n"
           "local version = "
        << server_version << "\nlocal programs = {\n";
    for (const Service* service : all_services) {
        out << "  [" << service->program << "] = {\n    name = \"" << service->name << "\",\n    title = \""
            << service->title << "\",\n    procedures = {\n";
        for (const Api& api : *service)
            out << "      [" << api.procedure << "] = { name = \"" << api.name << "\", table = \"" << table_of(api)
                << "\"" << record_or_nothing("request", api.request) << record_or_nothing("reply", api.reply)
                << " },\n";
        out << "    },\n  },\n";
    }
    out << "}\n";
}

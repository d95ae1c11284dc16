// docs/reference/: a page a service with each API's numbers, text positions and
// an example that runs, and the index of all pages.
#include <string>
#include <vector>

#include "rpc/client.h"
#include "tools/describe/names.h"
#include "tools/describe/outputs.h"

namespace
{
// APIs that share their text are told together.
struct Table {
    const TextForm* form;
    std::vector<const Api*> apis;
};

std::vector<Table> tables_of(const Service& service)
{
    std::vector<Table> tables;
    for (const Api& api : service) {
        if (!api.registered())
            continue;
        Table* found = nullptr;
        for (Table& table : tables)
            if (table.form == api.input())
                found = &table;
        if (!found)
            found = &tables.emplace_back(Table{api.input(), {}});
        found->apis.push_back(&api);
    }
    return tables;
}

const TextForm* output_of(const Table& table)
{
    for (const Api* api : table.apis)
        if (api->output())
            return api->output();
    return nullptr;
}

std::string title_of(const Table& table)
{
    std::string title;
    for (const Api* api : table.apis) {
        const std::string name = table_of(*api);
        if (("," + title + ",").find("," + name + ",") == std::string::npos)
            title += (title.empty() ? "" : ",") + name;
    }
    std::string spaced;
    for (const char c : title)
        spaced += c == ',' ? ", " : std::string(1, c);
    return spaced;
}

std::string in_code(const std::string& text) { return "`" + text + "`"; }

// A value that the position takes.
std::string example_value(const NotedPosition& position)
{
    const std::string name(position.name);
    if (name == "oper" || name == "res")
        return "0";
    const TextKind& kind = *position.kind;
    if (!kind.example) {
        const bool address = name == "ip" || name == "dip" || name == "gateway";
        return address ? "192.0.2.1" : name.substr(0, position.size - 1);
    }
    if (!kind.joint)
        return kind.example;
    std::string text;
    for (unsigned i = 0; i < position.position.count; i++) {
        std::string element = kind.example;
        element.replace(element.find('#'), 1, std::to_string(i % 8));
        text += (i ? kind.joint : "") + element;
    }
    return text;
}

// A whole row: which of its fields are the key is the daemon's to say.
std::string example_argument(const Api& api)
{
    if (!api.request)
        return "";
    const std::string joint = api.input()->delimiters[0] ? std::string(1, api.input()->delimiters[0]) : "&";
    std::string argument;
    for (const NotedPosition& position : positions_of(*api.input(), Side::Input))
        argument += (argument.empty() ? "" : joint) + example_value(position);
    return argument;
}

std::string reply_text(const Api& api)
{
    if (!api.output())
        return "the status";
    if (!api.reply)
        return "the status, then empty positions";
    return "the row";
}

int number_of(const std::vector<NotedPosition>& positions, const Field& field)
{
    for (size_t i = 0; i < positions.size(); i++)
        if (positions[i].position.offset == field.offset)
            return static_cast<int>(i) + 1;
    return 0;
}

void write_position(std::ostream& out, int in, int back, const NotedPosition& position, const std::string& kind,
                    const std::string& notes)
{
    const auto cell = [](int number) { return number ? std::to_string(number) : std::string(); };
    out << "| " << cell(in) << " | " << cell(back) << " | `" << position.name << "` | " << kind << " | "
        << cell(static_cast<int>(position.size)) << " | " << notes << " |\n";
}

// Every position of either text, in the argument's order; what only the reply
// has stands where the reply has it.
void write_positions(std::ostream& out, const Table& table)
{
    const std::vector<NotedPosition> in = positions_of(*table.form, Side::Input);
    const TextForm* output = output_of(table);
    const std::vector<NotedPosition> back = output ? positions_of(*output, Side::Output) : std::vector<NotedPosition>();

    out << "| in | out | field | kind | size | notes |\n|---:|---:|---|---|---:|---|\n";
    size_t next = 0;
    const auto write_reply_only = [&](size_t until) {
        for (; next < until; next++)
            if (!number_of(in, back[next].position))
                write_position(out, 0, static_cast<int>(next) + 1, back[next], back[next].kind->name,
                               back[next].notes.empty() ? "reply only" : "reply only; " + back[next].notes);
    };
    for (size_t i = 0; i < in.size(); i++) {
        const int out_number = number_of(back, in[i].position);
        if (out_number)
            write_reply_only(static_cast<size_t>(out_number) - 1);
        std::string kind = in[i].kind->name, notes = in[i].notes;
        if (out_number) {
            const NotedPosition& same = back[static_cast<size_t>(out_number) - 1];
            if (in[i].position.use == Use::Unread) {
                kind = same.kind->name;
                notes = "in an argument: takes its place, is not read";
            } else if (kind != same.kind->name) {
                kind += std::string(", back ") + same.kind->name;
            }
        } else if (output) {
            notes += notes.empty() ? "argument only" : "; argument only";
        }
        write_position(out, static_cast<int>(i) + 1, out_number, in[i], kind, notes);
    }
    write_reply_only(back.size());
}

void write_table(std::ostream& out, const Table& table)
{
    out << "\n## " << title_of(table) << "\n\nRecord `" << table.form->record->name << "`, "
        << table.form->record->units << " units.\n\n| API | procedure | operation | reply |\n|---|---:|---|---|\n";
    for (const Api* api : table.apis) {
        out << "| `" << api->name << "` | " << api->procedure << " | " << name_of(split_name(*api).operation) << " | "
            << reply_text(*api) << " |\n";
    }
    out << '\n';
    if (table.form->delimiters[0])
        out << "The argument is cut at any of " << in_code(table.form->delimiters)
            << ", and a run of them counts as one.\n";
    const TextForm* output = output_of(table);
    if (output && std::string(output->separator) != "&")
        out << "The reply's positions stand between " << in_code(output->separator) << ".\n";
    for (const Api* api : table.apis)
        if (!api->request)
            out << in_code(api->name) << " sends no request: its argument is not looked at.\n";
    write_positions(out, table);
    out << "\n```lua\n";
    for (const bool is_set : {true, false}) // a row is set before it is asked for
        for (const Api* api : table.apis)
            if ((split_name(*api).operation == Operation::Set) == is_set)
                out << "librpc.callapi(\"" << api->name << "\", \"" << example_argument(*api) << "\")\n";
    out << "```\n";
}

void write_unregistered(std::ostream& out, const Service& service)
{
    bool first = true;
    for (const Api& api : service) {
        if (api.registered())
            continue;
        if (first)
            out << "\n## Not callable from Lua\n\n"
                   "These procedures have a stub that native code can call, and no name in the registry.\n\n"
                   "| stub | procedure | operation | request | reply |\n|---|---:|---|---|---|\n";
        first = false;
        out << "| `" << api.name << "` | " << api.procedure << " | " << name_of(split_name(api).operation) << " | `"
            << (api.request ? api.request->name : "void") << "` | `" << (api.reply ? api.reply->name : "int")
            << "` |\n";
    }
}

size_t registered_apis(const Service& service)
{
    size_t count = 0;
    for (const Api& api : service)
        count += api.registered();
    return count;
}

// What the index says behind the list of services, and behind that of the kinds of text.
const char how_to_read[] =
    R"( APIs in all. [librpc.lua](librpc.lua) holds the same for editors that know LuaLS annotations, and
[librpc/](librpc) the modules beside it: add this folder to `workspace.library`, and the editor completes API names,
fields and functions.

## How to read a page

`librpc.callapi(name, argument)` takes one row as text, its positions joined by `&`, and returns the daemon's reply
in the same way, or nothing when the call failed. Nothing is escaped: a text cannot hold a `&`. Positions that are
missing at the end read as empty, so as 0.

A section tells one table, with all APIs that share its text. Its first list names them:

- a **get** takes a row's key and returns that row; which fields are the key, most often the first, is the daemon's
  to say, and it does not look at the others;
- a **getn** takes a key in the same way and returns the row behind it;
- a **set** takes a whole row and returns the daemon's status, `0` for success. A few sets return the status as the
  first position of a whole row whose other positions are empty.

The second list tells the positions: their number in the argument (**in**) and in the reply (**out**; no number: not
there), the field, the kind of its text, and the array's size where it has one.

| kind | text |
|---|---|
)";

const char numbers_and_examples[] = R"(
`oper` tells the daemon what a set is to do; `res` is the word that the daemon fills with its result. The library
carries both as they are. Of a number beyond an `int` its low 32 bits count where a `long` has 64 bits; where it has 32,
the nearest `int` does. The examples set a row and ask for it again; each runs beside the simulated device.
)";
} // namespace

void write_reference_page(std::ostream& out, const Service& service)
{
    out << "<!-- Made by the target `describe`; change services/" << service.name << " instead. -->\n# " << service.name
        << ": " << service.title << "\n\nProgram " << service.program << ", version " << server_version
        << ", over UDP on " << server_host << ". " << registered_apis(service) << " APIs.\nRecords: [protocol/"
        << service.name << ".x](../../protocol/" << service.name
        << ".x). How to read this page: [the index](README.md).\n";
    for (const Table& table : tables_of(service))
        write_table(out, table);
    write_unregistered(out, service);
}

void write_reference_index(std::ostream& out)
{
    out << R"(<!-- Made by the target `describe`; change the services or tools/describe/reference.cpp instead. -->
# Reference

A page a service, in the order in which the library registers them:

| service | | program | APIs |
|---|---|---:|---:|
)";
    size_t all = 0;
    for (const Service* service : all_services) {
        const size_t count = registered_apis(*service);
        all += count;
        out << "| [" << service->name << "](" << service->name << ".md) | " << service->title << " | "
            << service->program << " | " << count << " |\n";
    }
    out << "\n" << all << how_to_read;
    for (const TextKind& kind : text_kinds)
        out << "| " << kind.name << " | " << kind.meaning << " |\n";
    out << numbers_and_examples;
}

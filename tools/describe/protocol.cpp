// protocol/SERVICE.x: a service's types and procedures in RPC language (RFC
// 5531, RFC 4506), as rpcgen reads it.
#include <cctype>
#include <iomanip>
#include <sstream>
#include <string>

#include "rpc/client.h"
#include "tools/describe/names.h"
#include "tools/describe/outputs.h"

namespace
{
std::string upper(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    return text;
}

// rpcgen makes a stub's name of the procedure's: in lower case, the version
// behind it.
std::string procedure_name(const Api& api)
{
    const std::string stub = api.name;
    return upper(stub.substr(0, stub.rfind('_')));
}

const char* type_of(Kind kind)
{
    switch (kind) {
    case Kind::Int:
        return "int";
    case Kind::UInt:
        return "unsigned int";
    case Kind::Char:
        return "char";
    case Kind::Double:
        return "double";
    case Kind::Int64:
        return "oltmib_int64_t";
    case Kind::UInt64:
        return "oltmib_uint64_t";
    }
    return "";
}

std::string remark_on(const Record& record, const Field& field)
{
    const Position position = position_of(record, field);
    std::string remark = kind_of(position, Side::Output).remark;
    if (position.text == Text::CountedHex)
        remark += ", as many as the int before says";
    else if (position.text == Text::List && field.kind != Kind::Char)
        remark = ""; // the type says it
    return remark.empty() ? "" : " /* " + remark + " */";
}

bool uses(const std::vector<const Record*>& records, Kind kind)
{
    for (const Record* record : records)
        for (const Field& field : *record)
            if (field.kind == kind)
                return true;
    return false;
}

// Which of a block's values the record's replies show, in the order of the text.
std::string shown_of(const Record& record, const Field& block)
{
    std::string shown;
    const std::vector<Value> values = values_of(record);
    for (const Service* service : all_services)
        for (const Api& api : *service) {
            const TextForm* form = api.output();
            if (!form || form->record != &record || !shown.empty())
                continue;
            for (const Position position : *form)
                for (const Value& value : values)
                    if (value.field.offset == position.offset && position.offset >= block.offset &&
                        position.offset < block.offset + block.count * sizeof(int64_t))
                        shown += (shown.empty() ? "" : ", ") + value.name;
        }
    return shown;
}

// A comment behind a member, in lines of what fits beside it.
void write_comment(std::ostream& out, const std::string& text)
{
    constexpr size_t most = 100;
    size_t column = 0;
    std::istringstream words(text);
    out << "\n    /* ";
    for (std::string word; words >> word; column += word.size() + 1) {
        if (column + word.size() > most) {
            out << "\n     * ";
            column = 0;
        }
        out << (column == 0 ? "" : " ") << word;
    }
    out << " */";
}

void write_record(std::ostream& out, const Record& record)
{
    out << "\n/* " << record.units << " units */\nstruct " << record.name << " {\n";
    for (const Member& member : members_of(record)) {
        out << "    " << (member.block ? member.block->name : type_of(member.field->kind)) << ' ' << member.name;
        if (!member.block && member.field->count > 1)
            out << '[' << member.field->count << ']';
        out << ';' << (member.block ? "" : remark_on(record, *member.field));
        if (member.block && !shown_of(record, *member.field).empty())
            write_comment(out, "a reply's text shows " + shown_of(record, *member.field));
        out << '\n';
    }
    out << "};\n";
}
} // namespace

void write_protocol(std::ostream& out, const Service& service)
{
    const std::vector<const Record*> records = records_of(service);
    out << "/*\n * The " << service.title << " service, program " << service.program
        << ", over UDP on the loopback address.\n"
           " * Made by the target `describe`; change services/"
        << service.name
        << " instead.\n"
           " *\n"
           " * A record is its fields one after another, each value one unit of four bytes;\n"
           " * a char is widened to a unit of its own. A double is two units.\n"
           " */\n";
    if (uses(records, Kind::Int64) || uses(records, Kind::UInt64))
        out << "\n/*\n * 64-bit integers are two units, the low word first, and so a struct: on big-endian\n"
               " * hosts their bytes are no integer's. low = value, high = value >> 32.\n */\n";
    if (uses(records, Kind::Int64))
        out << "struct oltmib_int64_t {\n    unsigned int low;\n    int high;\n};\n";
    if (uses(records, Kind::UInt64))
        out << "struct oltmib_uint64_t {\n    unsigned int low;\n    unsigned int high;\n};\n";
    for (const Record* record : records)
        write_record(out, *record);

    const std::string program = "OLTMIB_" + upper(service.name);
    out << "\nprogram " << program << "_PROG {\n    version " << program << "_V" << server_version << " {\n";
    for (const Api& api : service)
        out << "        " << (api.reply ? api.reply->name : "int") << ' ' << procedure_name(api) << '('
            << (api.request ? api.request->name : "void") << ") = " << api.procedure << ";\n";
    out << "    } = " << server_version << ";\n} = " << service.program << ";\n";
}

void write_layout(std::ostream& out, const Service& service)
{
    const std::string program = "OLTMIB_" + upper(service.name);
    out << "/* What rpcgen makes of " << service.name << ".x, see layout.h. */\n#include \"" << service.name
        << ".h\"\n#include \"layout.h\"\n\n";
    const std::vector<const Record*> records = records_of(service);
    for (const Record* record : records) {
        out << "static const struct plain_member members_of_" << record->name << "[] = {\n";
        for (const Member& member : members_of(*record))
            out << "    PLAIN_MEMBER(" << record->name << ", " << member.name << "),\n";
        out << "};\n";
    }
    out << "static const struct plain_record records[] = {\n";
    for (const Record* record : records)
        out << "    PLAIN_RECORD(" << record->name << "),\n";
    out << "};\nstatic const struct plain_procedure procedures[] = {\n";
    for (const Api& api : service)
        out << "    PLAIN_PROCEDURE(" << api.name << ", " << procedure_name(api) << "),\n";
    out << "};\nconst struct plain_service plain_code = PLAIN_SERVICE(" << program << "_PROG, " << program << "_V"
        << server_version << ");\n";
}

// Tables from descriptions, see tables.h.
#include "sim/tables.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>

#include "common/schema.h"
#include "rpc/bytes.h"
#include "sim/content.h"
#include "sim/fail.h"

namespace
{
constexpr int no_such_row = 1; // what `res` says then

const Record& record_of_table(const Api& api) { return *(api.request ? api.request : api.reply); }

template <class T> T value_of(const Row& row, const Field& field) { return load<T>(row.data() + field.offset); }

template <class T> int order(T a, T b) { return a < b ? -1 : a > b; }

bool is_bytes(const Position& position) { return position.kind == Kind::Char && position.text != Text::Plain; }

int compare_field(const Position& field, const Row& a, const Row& b)
{
    const char* first = a.data() + field.offset;
    const char* second = b.data() + field.offset;
    switch (field.kind) {
    case Kind::Int:
        return order(value_of<int>(a, field), value_of<int>(b, field));
    case Kind::UInt:
        return order(value_of<unsigned>(a, field), value_of<unsigned>(b, field));
    case Kind::Double:
        return order(value_of<double>(a, field), value_of<double>(b, field));
    case Kind::Int64:
        return order(value_of<int64_t>(a, field), value_of<int64_t>(b, field));
    case Kind::UInt64:
        return order(value_of<uint64_t>(a, field), value_of<uint64_t>(b, field));
    case Kind::Char:
        return is_bytes(field) ? memcmp(first, second, field.count) : strncmp(first, second, field.count);
    }
    return 0;
}

// "ifx name" as its parts.
std::vector<std::string> words(const std::string& list)
{
    std::istringstream parts(list);
    return {std::istream_iterator<std::string>(parts), std::istream_iterator<std::string>()};
}

bool is_wide(const Field& field) { return field.kind == Kind::Int64 || field.kind == Kind::UInt64; }

// Text of a field whose content nobody wrote down.
std::string generated(const Position& field, const std::string& member, size_t number, size_t position)
{
    const std::string digits = std::to_string(number);
    switch (field.text) {
    case Text::Mac:
    case Text::RawMac:
        return "00-1E-80-00-" + std::to_string(10 + position) + "-0" + digits;
    case Text::Hex:
    case Text::CountedHex:
        return "80000000000000" + std::to_string(10 + number);
    case Text::List:
        return "0,1,2,3,4,5,6,7";
    case Text::Plain:
    case Text::Unsigned:
        break;
    }
    if (member == "oper" || member == "res")
        return "0";
    if (field.kind == Kind::Double)
        return digits + ".50";
    if (field.kind != Kind::Char)
        return position == 0 ? digits : std::to_string((number * 7 + position * 3) % 100);
    if (member == "name")
        return "ge" + digits;
    return member.compare(0, 4, "text") == 0 && position > 2 ? "" : member + "-" + digits;
}
} // namespace

Field field_named(const Record& record, const std::string& name)
{
    for (const Field& field : record)
        if (field_name(record, field) == name)
            return field;
    fail(record.name, std::string("a member among ") + record.members, name);
}

Verb verb_of(const Api& api)
{
    const Operation operation = split_name(api).operation;
    if (api.reply)
        return operation == Operation::Getn ? Verb::Next : Verb::Get;
    return operation == Operation::Set ? Verb::Set : Verb::Act;
}

std::string table_name(const Api& api)
{
    std::string name(split_name(api).table);
    for (const Alias& alias : aliases)
        if (name == alias.name)
            return alias.table;
    return name;
}

ArgumentForm::ArgumentForm(const Record& record, const TextForm* input)
{
    if (input)
        for (const Position field : *input) {
            if (field.use == Use::OutputOnly)
                continue;
            positions.push_back(field);
            if (field.text == Text::RawMac)
                positions.back().text = Text::Mac;
        }
    else
        positions.assign(record.begin(), record.end());
    if (input)
        form = *input;
    form.record = &record;
    form.count = static_cast<uint16_t>(positions.size());
    form.buffer = 16384;
    if (!input)
        memcpy(form.separator, "&", 2);
}

Row ArgumentForm::parse(const std::string& text) const
{
    TextForm own = form;
    own.listed = positions.data();
    own.is_listed = true;
    Row row(own.record->size);
    std::string writable = text;
    parse_record(own, row.data(), writable.data());
    return row;
}

size_t ArgumentForm::parts(const std::string& text) const
{
    return 1 + static_cast<size_t>(std::count(text.begin(), text.end(), separator()));
}

std::string ArgumentForm::format(const Row& row) const
{
    std::vector<Position> shown = positions;
    for (Position& position : shown)
        position.use = Use::Both;
    TextForm own = form;
    own.listed = shown.data();
    own.is_listed = true;
    std::vector<char> text(own.buffer);
    return format_record(own, row.data(), text.data());
}

Table::Table(std::string name, const Api& api, bool walked)
    : own_name(std::move(name)), own_record(record_of_table(api)), argument(own_record, api.input()), one_row(!walked)
{
    for (const Field& field : own_record)
        if (is_wide(field))
            kept.push_back(field);
    if (api.input())
        for (const Position field : *api.input()) {
            if (field.text == Text::RawMac)
                kept.push_back(field);
            if (is_wide(field))
                (field.kind == Kind::UInt64 || field.text == Text::Unsigned ? counters : rates).push_back(field);
        }
    key.assign(argument.fields().begin(), argument.fields().begin() + 1);
    for (const Key& special : special_keys) {
        if (own_name != special.table)
            continue;
        const std::vector<std::string> members = words(special.members);
        one_row = members.empty();
        if (members.empty())
            break;
        key.clear();
        for (const std::string& member : members) {
            Position field = field_named(own_record, member);
            for (const Position& position : argument.fields())
                if (position.offset == field.offset)
                    field = position;
            key.push_back(field);
        }
    }
}

int Table::compare(const Row& a, const Row& b) const
{
    for (const Position& field : key)
        if (const int result = compare_field(field, a, b))
            return result;
    return 0;
}

Row* Table::find(const Row& request)
{
    for (Row& row : rows)
        if (one_row || compare(row, request) == 0)
            return &row;
    return nullptr;
}

Row* Table::next(const Row& request)
{
    for (Row& row : rows)
        if (compare(row, request) > 0)
            return &row;
    return nullptr;
}

void Table::move_counters(Row& row)
{
    for (const Field& field : counters) {
        const auto value = value_of<uint64_t>(row, field);
        ::store(row.data() + field.offset, value + value % 97 + 1);
    }
    for (const Field& field : rates) {
        const auto value = value_of<int64_t>(row, field);
        ::store(row.data() + field.offset, value % 2 ? value - value % 31 - 1 : value + value % 29 + 1);
    }
}

Row Table::answer(Verb verb, const Row& request)
{
    Row* row = verb == Verb::Next ? next(request) : find(request);
    if (row) {
        move_counters(*row);
        return *row;
    }
    Row none = request;
    const Field& last = own_record.end()[-1];
    if (last.kind == Kind::Int)
        ::store(none.data() + last.offset, no_such_row);
    return none;
}

void Table::store(const Row& request)
{
    if (Row* row = find(request)) {
        Row changed = request;
        for (const Field& field : kept)
            memcpy(changed.data() + field.offset, row->data() + field.offset,
                   size_t{field.count} * size_of(field.kind));
        *row = std::move(changed);
        return;
    }
    const auto place =
        std::find_if(rows.begin(), rows.end(), [&](const Row& row) { return compare(row, request) > 0; });
    rows.insert(place, request);
}

void Table::add(const std::string& text)
{
    const size_t parts = argument.parts(text);
    if (parts != argument.count())
        fail("content of " + own_name, std::to_string(argument.count()) + " positions",
             std::to_string(parts) + " in '" + text + "'");
    Row row = argument.parse(text);
    uint64_t seed = 7001 + 1009 * rows.size();
    for (const std::vector<Field>* wide : {&counters, &rates})
        for (const Field& field : *wide)
            ::store(row.data() + field.offset, seed = seed * 31 % 10000019);
    if (find(row))
        fail("content of " + own_name, "rows with keys of their own", "'" + text + "' twice");
    store(row);
}

// A row, or one for each port, made up from the fields' kinds.
void generate_rows(Table& table)
{
    const Record& record = table.own_record;
    const size_t count = table.one_row ? 1 : member_name(record, 0) == "ifx" ? 8 : 2;
    for (size_t number = 1; number <= count; number++) {
        std::string text;
        for (size_t i = 0; i < table.argument.count(); i++) {
            const Position& field = table.argument.fields()[i];
            std::string member;
            for (unsigned m = 0; m < record.count; m++)
                if (record.fields[m].offset == field.offset)
                    member = member_name(record, m);
            text += (i ? std::string(1, table.argument.separator()) : "") + generated(field, member, number, i);
        }
        table.add(text);
    }
}

std::map<std::string, Table> make_tables(const Service& service)
{
    std::map<std::string, Table> tables;
    for (const Api& api : service) {
        if (!api.request && !api.reply)
            continue;
        const std::string name = table_name(api);
        const bool walked = std::any_of(service.begin(), service.end(), [&](const Api& other) {
            return verb_of(other) == Verb::Next && table_name(other) == name;
        });
        const auto [table, added] = tables.emplace(name, Table(name, api, walked));
        if (!added && &table->second.record() != &record_of_table(api))
            fail(api.name, std::string("the record of table ") + name, record_of_table(api).name);
    }
    return tables;
}

void fill_tables(std::map<std::string, Table>& tables)
{
    for (auto& [name, table] : tables) {
        for (const Content& content : initial_content) {
            if (name != content.table)
                continue;
            for (int number = content.first; number <= content.last; number++) {
                std::string text;
                for (const char* c = content.text; *c; c++)
                    text += *c == '#' ? std::to_string(number) : std::string(1, *c);
                table.add(text);
            }
        }
        if (table.size() == 0)
            generate_rows(table);
    }
}

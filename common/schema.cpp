// The readings of the descriptions, see schema.h.
#include "common/schema.h"

#include <cstring>

namespace
{
constexpr std::string_view name_prefix = "oltmib_";
constexpr std::string_view name_suffix = "_1";

// The item of that index in a list such as "ifx, name, class_".
std::string_view item(const char* list, unsigned index)
{
    for (; index > 0; index--)
        list = strchr(list, ',') + 1;
    list += strspn(list, " ");
    size_t length = strcspn(list, ", ");
    if (list[length - 1] == '_')
        length--;
    return {list, length};
}

bool cut_end(std::string_view& text, std::string_view end)
{
    if (text.size() < end.size() || memcmp(text.data() + text.size() - end.size(), end.data(), end.size()) != 0)
        return false;
    text.remove_suffix(end.size());
    return true;
}

const char* plain_kind(const Field& field)
{
    switch (field.kind) {
    case Kind::Char:
        return "text";
    case Kind::Int:
        return field.text == Text::Unsigned ? "unsigned" : "int";
    case Kind::UInt:
        return "unsigned";
    case Kind::Double:
        return "real";
    case Kind::Int64:
    case Kind::UInt64:
        break;
    }
    return "counter";
}

const char* kind_of(const Field& field, Side side)
{
    if (side == Side::Input && field.use == Use::Unread)
        return "skip";
    switch (field.text) {
    case Text::Plain:
    case Text::Unsigned:
        break;
    case Text::Mac:
        return "mac";
    case Text::RawMac:
        return side == Side::Input ? "bytes" : "mac";
    case Text::Hex:
    case Text::CountedHex:
        return "hex";
    case Text::List:
        return "list";
    }
    return plain_kind(field);
}
} // namespace

std::string_view field_name(const Record& record, const Field& field)
{
    unsigned holder = 0;
    for (unsigned i = 0; i < record.count && record.fields[i].offset <= field.offset; i++)
        holder = i;
    const Field& found = record.fields[holder];
    if (found.count == field.count || !record.block)
        return item(record.members, holder);
    const unsigned within = field.offset - found.offset;
    return item(record.block->members, within / size_of(field.kind));
}

const char* name_of(Operation operation)
{
    static constexpr char names[][6] = {"get", "getn", "set", "other"};
    return names[static_cast<unsigned>(operation)];
}

ApiName split_name(const Api& api)
{
    std::string_view rest = api.name;
    rest.remove_prefix(name_prefix.size());
    cut_end(rest, name_suffix);
    if (cut_end(rest, "_get"))
        return {rest, Operation::Get};
    if (cut_end(rest, "_getn"))
        return {rest, Operation::Getn};
    if (cut_end(rest, "_set"))
        return {rest, Operation::Set};
    return {rest, Operation::Other};
}

bool has_position(const Field& field, Side side)
{
    return field.use != (side == Side::Input ? Use::OutputOnly : Use::InputOnly);
}

Position describe_position(const TextForm& form, const Field& field, Side side)
{
    Position position = {field_name(*form.record, field), kind_of(field, side), 0};
    if (field.kind == Kind::Char || field.count > 1)
        position.size = field.count;
    return position;
}

bool same_on_both_sides(const TextForm& form)
{
    for (const Field& field : form)
        if (field.use != Use::Both || field.text == Text::RawMac)
            return false;
    return true;
}

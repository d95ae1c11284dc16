// The readings of the descriptions, see schema.h.
#include "common/schema.h"

#include <cstring>
#include <iterator>

namespace
{
constexpr std::string_view name_prefix = "oltmib_";
constexpr std::string_view name_suffix = "_1";

bool cut_end(std::string_view& text, std::string_view end)
{
    if (text.size() < end.size() || memcmp(text.data() + text.size() - end.size(), end.data(), end.size()) != 0)
        return false;
    text.remove_suffix(end.size());
    return true;
}

// The kinds of text. A row more wants a name below it, and its case in kind_of.
constexpr TextKind kinds[] = {
    {"int", "a decimal number, as C's `int`", "integer", "", nullptr, "1", nullptr, nullptr},
    {"unsigned", "a decimal number, as C's `unsigned`", "integer", "", nullptr, "1", nullptr, nullptr},
    {"text", "characters, at most size - 1 of them: the rest is cut off", "string", "", nullptr, nullptr, nullptr,
     nullptr},
    {"mac",
     "in an argument `00:11:22:33:44:55`, `00-11-22-33-44-55`, `0011.2233.4455` or `001122334455`; a reply prints "
     "`00-11-22-33-44-55`",
     "string", "MAC address", nullptr, "00:11:22:33:44:55", nullptr, "mac"},
    {"bytes", "characters that are copied into the bytes as they are", "string", "MAC address",
     "copied into the bytes as it is", "ABCDE", nullptr, "mac"},
    {"hex", "two hexadecimal digits a byte", "string", "bytes", " bytes, two digits each", "0#", "", "hex"},
    {"list", "decimal numbers between commas", "integer[]", "numbers", " numbers between commas", "#", ",", "ints"},
    {"real", "a decimal number, printed with two decimals", "number", "", nullptr, "1.50", nullptr, nullptr},
    {"counter", "a 64-bit decimal number", "integer|string", "", nullptr, "1", nullptr, nullptr},
    {"skip", "nothing is read from it", nullptr, "", "not read", "0", nullptr, nullptr},
};
enum KindRow : unsigned {
    int_kind,
    unsigned_kind,
    text_kind,
    mac_kind,
    bytes_kind,
    hex_kind,
    list_kind,
    real_kind,
    counter_kind,
    skip_kind,
    kind_rows
};
static_assert(std::size(kinds) == kind_rows, "a name for each row of the kinds");

KindRow plain_kind(const Position& position)
{
    switch (position.kind) {
    case Kind::Char:
        return text_kind;
    case Kind::Int:
        return position.text == Text::Unsigned ? unsigned_kind : int_kind;
    case Kind::UInt:
        return unsigned_kind;
    case Kind::Double:
        return real_kind;
    case Kind::Int64:
    case Kind::UInt64:
        break;
    }
    return counter_kind;
}

KindRow row_of(const Position& position, Side side)
{
    if (side == Side::Input && position.use == Use::Unread)
        return skip_kind;
    switch (position.text) {
    case Text::Plain:
    case Text::Unsigned:
        break;
    case Text::Mac:
        return mac_kind;
    case Text::RawMac:
        return side == Side::Input ? bytes_kind : mac_kind;
    case Text::Hex:
    case Text::CountedHex:
        return hex_kind;
    case Text::List:
        return list_kind;
    }
    return plain_kind(position);
}
} // namespace

const TextKind* TextKinds::begin() const { return std::begin(kinds); }
const TextKind* TextKinds::end() const { return std::end(kinds); }

const TextKind& kind_of(const Position& position, Side side) { return kinds[row_of(position, side)]; }

std::string_view member_name(const Record& record, unsigned index)
{
    const char* list = record.members;
    for (; index > 0; index--)
        list = strchr(list, ',') + 1;
    list += strspn(list, " ");
    return {list, strcspn(list, ", ")};
}

std::string_view field_name(const Record& record, const Field& field)
{
    const Record* of = &record;
    unsigned holder = 0;
    for (unsigned i = 0; i < record.count && record.fields[i].offset <= field.offset; i++)
        holder = i;
    const Field& found = record.fields[holder];
    if (record.block && found.count != field.count) {
        of = record.block;
        holder = (field.offset - found.offset) / size_of(field.kind);
    }
    std::string_view name = member_name(*of, holder);
    if (name.back() == '_')
        name.remove_suffix(1);
    return name;
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

bool has_position(const Position& position, Side side)
{
    return position.use != (side == Side::Input ? Use::OutputOnly : Use::InputOnly);
}

PositionText describe_position(const TextForm& form, const Position& position, Side side)
{
    PositionText text = {field_name(*form.record, position), &kind_of(position, side), 0};
    if (position.kind == Kind::Char || position.count > 1)
        text.size = position.count;
    return text;
}

bool same_on_both_sides(const TextForm& form)
{
    for (const Position position : form)
        if (position.use != Use::Both || position.text == Text::RawMac)
            return false;
    return true;
}

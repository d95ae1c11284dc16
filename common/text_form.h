// Text forms: which fields of a record stand in its text, in which order and
// how, and the two walkers that read and write a record's text by them. And the
// macros that a service's converters.h is written with.
//
// To add a table, in its service's converters.h:
//
//     TABLE(example, oltmib_exampleEntry)   every field, in wire order
//     CONVERTERS(example)                   str2arg_example and arg2str_example
//
// Fields that are converted otherwise follow the record's name:
//     TABLE(example, oltmib_exampleEntry, MAC(mac1), HEX(bytes1))
// Where the text's order is not the wire's, or leaves fields out, the positions
// are listed:
//     TABLE_OF(example, oltmib_exampleEntry, AT(sid), AT(mode), COUNTER(counters.counter9))
// A converter that prints a trace line names it:
//     TRACED_PARSER(example, 58, "ifx %d, oper %d", row.ifx, row.oper)
//     TRACED_FORMATTER(example, 66, "str: %s", str)
// What no attribute says is a function of its own, see portinfo's parser.
//
// These macros define functions: a converters.h is included by its service.cpp
// alone.
#pragma once

#include <array>

#include "common/trace.h"
#include "rpc/record.h"

constexpr unsigned text_size = 1024;  // of a reply's text, its NUL included
constexpr unsigned list_size = 256;   // of a list's text in an argument, its NUL included
constexpr int most_items = 80;        // that such a list is split into
constexpr unsigned hex_size = 20;     // of a hex text, its NUL included
constexpr int counted_hex_size = 100; // of a counted hex text, its NUL included
constexpr unsigned most_positions = 40;

// One table's text. Its positions are joined by '&'; there is no escaping.
struct TextForm {
    const Record* record;
    const Field* positions;
    uint16_t count;
    uint16_t buffer = text_size; // of the reply's text
    char delimiters[4] = "";     // when set, an argument's parts end as for strtok
    char separator[4] = "&";     // between the parts of a reply

    const Field* begin() const { return positions; }
    const Field* end() const { return positions + count; }

    // The same form with another splitting, joining or buffer.
    constexpr TextForm split_on(const char (&set)[3]) const
    {
        TextForm form = *this;
        form.delimiters[0] = set[0], form.delimiters[1] = set[1];
        return form;
    }
    constexpr TextForm joined_by(const char (&text)[3]) const
    {
        TextForm form = *this;
        form.separator[0] = text[0], form.separator[1] = text[1];
        return form;
    }
    constexpr TextForm with_buffer(uint16_t size) const
    {
        TextForm form = *this;
        form.buffer = size;
        return form;
    }
};

// Clears `record` and fills it from `text`, which is cut up on the way. Missing
// parts read as empty, so as 0; texts are cut to their array, NUL included.
// Returns `record`.
void* parse_record(const TextForm& form, void* record, char* text);

// Writes the record's text into `text` (form.buffer bytes), cut to fit.
// Reads nothing beyond the record, whatever its bytes are. Returns `text`.
char* format_record(const TextForm& form, const void* record, char* text);

// Puts the delimiters of an argument of `length` characters back that its
// parser cut it at.
void unsplit(char* text, size_t length);

// The text forms of a service's tables, and their converters' storage: one
// static request record a parser, one static text a formatter, valid until the
// next call of the same function.
namespace tables
{
}

template <class Table> typename Table::Entry& parse(char* text)
{
    static typename Table::Entry arg;
    return *static_cast<typename Table::Entry*>(parse_record(Table::form, &arg, text));
}

template <class Table> char* format(const void* reply)
{
    static char str[Table::form.buffer];
    return format_record(Table::form, reply, str);
}

// The table that a converter belongs to, so that an API row that names
// converters can be checked against its records.
template <auto converter> struct TableOf {
    using Table = void;
};

// Every field of T in wire order, where `changed` says otherwise with the
// conversion that it gives.
template <class T, size_t N> constexpr auto wire_order(const std::array<Field, N>& changed)
{
    std::array<Field, field_count<T>> positions = {};
    for (size_t i = 0; i < positions.size(); i++) {
        positions[i] = Description<T>::fields[i];
        for (const Field& field : changed)
            if (field.offset == positions[i].offset)
                positions[i] = field;
    }
    return positions;
}

template <class... Fields> constexpr std::array<Field, sizeof...(Fields)> positions_of(Fields... fields)
{
    return {fields...};
}

constexpr bool reads_counters(const Field* positions, size_t count)
{
    for (size_t i = 0; i < count; i++)
        if (positions[i].use != Use::Unread && positions[i].use != Use::OutputOnly &&
            (positions[i].kind == Kind::Int64 || positions[i].kind == Kind::UInt64))
            return true;
    return false;
}

template <class T, size_t N> constexpr TextForm make_form(const std::array<Field, N>& positions)
{
    static_assert(N <= most_positions, "raise most_positions: an argument is split into no more");
    return {&record_of<T>, positions.data(), static_cast<uint16_t>(N)};
}

// A table whose fields all convert plainly shares its record's own list.
template <class T> constexpr TextForm make_form()
{
    static_assert(field_count<T> <= most_positions, "raise most_positions: an argument is split into no more");
    return {&record_of<T>, Description<T>::fields, field_count<T>};
}

// The notation of positions, inside a table's macro. COUNTER and RATE are 64-bit
// values that only come back: the argument has their position, nothing reads it.
#define POSITION(member, ...) make_field<decltype(Entry::member)>(offsetof(Entry, member), __VA_ARGS__)
#define AT(member) POSITION(member, Text::Plain)
#define MAC(member) mac_field<sizeof(Entry::member)>(POSITION(member, Text::Mac))
#define RAW_MAC(member) mac_field<sizeof(Entry::member)>(POSITION(member, Text::RawMac))
#define HEX(member) hex_field<sizeof(Entry::member)>(POSITION(member, Text::Hex))
#define LIST(member) list_field<std::extent_v<decltype(Entry::member)>>(POSITION(member, Text::List))
#define UNSIGNED(member) POSITION(member, Text::Unsigned)
#define COUNTER(member) POSITION(member, Text::Unsigned, Use::Unread)
#define RATE(member) POSITION(member, Text::Plain, Use::Unread)
#define OUTPUT_ONLY(member) POSITION(member, Text::Plain, Use::OutputOnly)
#define INPUT_ONLY(member) POSITION(member, Text::Plain, Use::InputOnly)
// Bytes whose number stands in the int `length` just before them. A reply's
// number may say more than there are; the digits then go on into what follows.
#define COUNTED_HEX(length, member)                                                                                    \
    counted_hex_field<offsetof(Entry, length) + sizeof(Entry::length) == offsetof(Entry, member) &&                    \
                          std::is_same_v<decltype(Entry::length), int>,                                                \
                      offsetof(Entry, member) + counted_hex_size / 2 <= sizeof(Entry)>(                                \
        POSITION(member, Text::CountedHex))

template <size_t size> constexpr Field mac_field(Field field)
{
    static_assert(size == 6, "a MAC address is six bytes");
    return field;
}

template <size_t size> constexpr Field hex_field(Field field)
{
    static_assert(2 * size < hex_size, "raise hex_size: the bytes' digits and their NUL fit it");
    return field;
}

template <size_t items> constexpr Field list_field(Field field)
{
    static_assert(items > 0 && items <= most_items, "raise most_items: a list is split into no more");
    return field;
}

template <bool follows, bool fits> constexpr Field counted_hex_field(Field bytes)
{
    static_assert(follows, "COUNTED_HEX takes an int and the bytes right behind it");
    static_assert(fits, "the most digits that a reply's number can ask for stand for bytes of the record");
    return bytes;
}

// Both functions of a table; one that no API names is never defined.
#define DECLARE_CONVERTERS(table)                                                                                      \
    EXPORT void* str2arg_##table(char* text);                                                                          \
    EXPORT char* arg2str_##table(void* reply);                                                                         \
    template <> struct TableOf<str2arg_##table> {                                                                      \
        using Table = tables::table;                                                                                   \
    };                                                                                                                 \
    template <> struct TableOf<arg2str_##table> {                                                                      \
        using Table = tables::table;                                                                                   \
    };

#define DEFINE_TABLE(table, Type, positions_of_table, form_of_table)                                                   \
    namespace tables                                                                                                   \
    {                                                                                                                  \
    struct table {                                                                                                     \
        using Entry = Type;                                                                                            \
        positions_of_table;                                                                                            \
        static constexpr TextForm form = form_of_table;                                                                \
        static_assert(!reads_counters(form.positions, form.count),                                                     \
                      "64-bit values only come back: use COUNTER or RATE");                                            \
    };                                                                                                                 \
    }                                                                                                                  \
    DECLARE_CONVERTERS(table)

#define CHANGED_POSITIONS(...) static constexpr auto positions = wire_order<Entry>(positions_of(__VA_ARGS__))

// The whole record in wire order; fields converted otherwise follow its name.
#define TABLE(table, Type, ...)                                                                                        \
    DEFINE_TABLE(table, Type, __VA_OPT__(CHANGED_POSITIONS(__VA_ARGS__)), make_form<Entry>(__VA_OPT__(positions)))

// As TABLE with fields converted otherwise, and another splitting, joining or
// buffer: split_on(), joined_by(), with_buffer().
#define TABLE_AS(table, Type, changes, ...)                                                                            \
    DEFINE_TABLE(table, Type, CHANGED_POSITIONS(__VA_ARGS__), make_form<Entry>(positions).changes)

// The listed positions of the record, in the text's order.
#define TABLE_OF(table, Type, ...)                                                                                     \
    DEFINE_TABLE(table, Type, static constexpr auto positions = positions_of(__VA_ARGS__), make_form<Entry>(positions))

#define PARSER(table)                                                                                                  \
    void* str2arg_##table(char* text) { return &parse<tables::table>(text); }
#define FORMATTER(table)                                                                                               \
    char* arg2str_##table(void* reply) { return format<tables::table>(reply); }
#define CONVERTERS(table)                                                                                              \
    PARSER(table)                                                                                                      \
    FORMATTER(table)

// A parser that prints a trace line; its values are members of `row`, the
// request, or the whole argument `text`.
#define TRACED_PARSER(table, line, ...)                                                                                \
    void* str2arg_##table(char* text)                                                                                  \
    {                                                                                                                  \
        static_assert(!tables::table::form.delimiters[0], "unsplit() knows '&' only");                                 \
        const size_t length = rpclib_dbg ? strlen(text) : 0;                                                           \
        auto& row = parse<tables::table>(text);                                                                        \
        if (rpclib_dbg)                                                                                                \
            unsplit(text, length);                                                                                     \
        TRACE(line, __VA_ARGS__);                                                                                      \
        return &row;                                                                                                   \
    }

// A formatter that prints a trace line; its values are members of `row`, the
// reply, or its text `str`.
#define TRACED_FORMATTER(table, line, ...)                                                                             \
    char* arg2str_##table(void* reply)                                                                                 \
    {                                                                                                                  \
        [[maybe_unused]] auto& row = *static_cast<tables::table::Entry*>(reply);                                       \
        char* str = format<tables::table>(reply);                                                                      \
        TRACE(line, __VA_ARGS__);                                                                                      \
        return str;                                                                                                    \
    }

// Both with the same text, each with its own line.
#define TRACED_CONVERTERS(table, parser_line, formatter_line, ...)                                                     \
    TRACED_PARSER(table, parser_line, __VA_ARGS__)                                                                     \
    TRACED_FORMATTER(table, formatter_line, __VA_ARGS__)

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
// What no attribute says is a body of its own behind OWN_PARSER or
// OWN_FORMATTER, see portinfo's parser.
//
// To add a way of writing a field: a value of Text, its two conversions in
// text_form.cpp, its notation here, and what people are told of it in
// schema.cpp's table of kinds.
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

// How a field is written as text where its kind alone does not tell.
enum class Text : uint8_t {
    Plain,      // ints "%d", texts "%s", doubles "%.2f", 64-bit values "%lld" or "%llu"
    Unsigned,   // an int or 64-bit value printed unsigned
    Mac,        // six bytes, str2mac and mac2str
    RawMac,     // six bytes: the text is copied in as it is, printed by mac2str
    Hex,        // bytes, str2hex and hex2str
    CountedHex, // as Hex; the int just before the bytes says how many count
    List,       // an array as numbers between commas
};

// Which of the two texts has a position for the field.
enum class Use : uint8_t {
    Both,
    Unread,     // the argument has the position, but nothing is read from it
    OutputOnly, // only the reply's text has the position
    InputOnly,  // only the argument has the position
};

// One position of a text: the field that stands there, and how.
struct Position : Field {
    Text text : 4;
    Use use : 4;

    constexpr Position() : Position(Field{0, 0, Kind::Int}) {}
    constexpr Position(Field field, Text text = Text::Plain, Use use = Use::Both) : Field(field), text(text), use(use)
    {
    }
};
static_assert(sizeof(Position) == sizeof(Field), "a position takes no more room than its field");

// One table's text. Its positions are joined by '&'; there is no escaping.
struct TextForm {
    const Record* record;
    const Position* listed; // where is_listed; else every field of the record stands there, plainly, in wire order
    uint16_t count;
    bool is_listed;
    uint16_t buffer = text_size; // of the reply's text
    char delimiters[4] = "";     // when set, an argument's parts end as for strtok
    char separator[4] = "&";     // between the parts of a reply

    constexpr Position operator[](unsigned i) const { return is_listed ? listed[i] : Position(record->fields[i]); }

    // Goes through the positions, by value.
    struct Iterator {
        const TextForm* form;
        unsigned at;
        Position operator*() const { return (*form)[at]; }
        Iterator& operator++() { return at++, *this; }
        bool operator!=(const Iterator& other) const { return at != other.at; }
    };
    Iterator begin() const { return {this, 0}; }
    Iterator end() const { return {this, count}; }

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

// A converter as calls use it: on storage of the caller's, see parse_record and
// format_record. The exported one of the same name has static storage, which
// holds until the next call of the same function.
typedef void* (*RecordParser)(void* record, char* text);
typedef char* (*RecordFormatter)(const void* record, char* text);

// The text forms of a service's tables.
namespace tables
{
}

// Those of their converters that do more than walk the table's form.
namespace own_converters
{
}

template <class Table> typename Table::Entry& parse(void* record, char* text)
{
    return *static_cast<typename Table::Entry*>(parse_record(Table::form, record, text));
}

template <class Table> char* format(const void* record, char* text) { return format_record(Table::form, record, text); }

// What the exported converters do: the work on storage of their own.
template <class Table, RecordParser own> void* parse_to_own(char* text)
{
    static typename Table::Entry arg;
    if constexpr (own != nullptr)
        return own(&arg, text);
    else
        return &parse<Table>(&arg, text);
}

template <class Table, RecordFormatter own> char* format_to_own(const void* reply)
{
    static char str[Table::form.buffer];
    if constexpr (own != nullptr)
        return own(reply, str);
    else
        return format<Table>(reply, str);
}

// The table that a converter belongs to, so that an API row that names
// converters can be checked against its records.
template <auto converter> struct TableOf {
    using Table = void;
};

// A table's converter: the exported function, and its work on the caller's
// storage.
struct Parser {
    void* (*str2arg)(char* text);
    const TextForm* form;
    RecordParser own; // null: walks the form
};
struct Formatter {
    char* (*ret2str)(void* reply);
    const TextForm* form; // null: an int
    RecordFormatter own;  // null: walks the form
};

// The Parser or Formatter of an exported converter.
template <auto converter> struct WorkOf {
    static constexpr bool is_defined = false;
};

// Every field of T in wire order, where `changed` says otherwise with the
// conversion that it gives.
template <class T, size_t N> constexpr auto wire_order(const std::array<Position, N>& changed)
{
    std::array<Position, field_count<T>> positions = {};
    for (size_t i = 0; i < positions.size(); i++) {
        positions[i] = Description<T>::fields[i];
        for (const Position& position : changed)
            if (position.offset == positions[i].offset)
                positions[i] = position;
    }
    return positions;
}

template <class... Positions> constexpr std::array<Position, sizeof...(Positions)> positions_of(Positions... positions)
{
    return {positions...};
}

constexpr bool reads_wide(const Position& position)
{
    return position.use != Use::Unread && position.use != Use::OutputOnly &&
           (position.kind == Kind::Int64 || position.kind == Kind::UInt64);
}

constexpr bool reads_counters(const TextForm& form)
{
    for (unsigned i = 0; i < form.count; i++)
        if (reads_wide(form[i]))
            return true;
    return false;
}

template <class T, size_t N> constexpr TextForm make_form(const std::array<Position, N>& positions)
{
    static_assert(N <= most_positions, "raise most_positions: an argument is split into no more");
    return {&record_of<T>, positions.data(), static_cast<uint16_t>(N), true};
}

// A table whose fields all convert plainly needs no list but its record's.
template <class T> constexpr TextForm make_form()
{
    static_assert(field_count<T> <= most_positions, "raise most_positions: an argument is split into no more");
    return {&record_of<T>, nullptr, field_count<T>, false};
}

// The notation of positions, inside a table's macro. COUNTER and RATE are 64-bit
// values that only come back: the argument has their position, nothing reads it.
#define POSITION(member, ...) Position(make_field<decltype(Entry::member)>(offsetof(Entry, member)), __VA_ARGS__)
#define AT(member) POSITION(member, Text::Plain)
#define MAC(member) mac_position<sizeof(Entry::member)>(POSITION(member, Text::Mac))
#define RAW_MAC(member) mac_position<sizeof(Entry::member)>(POSITION(member, Text::RawMac))
#define HEX(member) hex_position<sizeof(Entry::member)>(POSITION(member, Text::Hex))
#define LIST(member) list_position<std::extent_v<decltype(Entry::member)>>(POSITION(member, Text::List))
#define UNSIGNED(member) POSITION(member, Text::Unsigned)
#define COUNTER(member) POSITION(member, Text::Unsigned, Use::Unread)
#define RATE(member) POSITION(member, Text::Plain, Use::Unread)
#define OUTPUT_ONLY(member) POSITION(member, Text::Plain, Use::OutputOnly)
#define INPUT_ONLY(member) POSITION(member, Text::Plain, Use::InputOnly)
// Bytes whose number stands in the int `length` just before them. A reply's
// number may say more than there are; the digits then go on into what follows.
#define COUNTED_HEX(length, member)                                                                                    \
    counted_hex_position<sizeof(Entry::member),                                                                        \
                         offsetof(Entry, length) + sizeof(Entry::length) == offsetof(Entry, member) &&                 \
                             std::is_same_v<decltype(Entry::length), int>,                                             \
                         offsetof(Entry, member) + counted_hex_size / 2 <= sizeof(Entry)>(                             \
        POSITION(member, Text::CountedHex))

template <size_t size> constexpr Position mac_position(Position position)
{
    static_assert(size == 6, "a MAC address is six bytes");
    return position;
}

template <size_t size> constexpr Position hex_position(Position position)
{
    static_assert(2 * size < hex_size, "raise hex_size: the bytes' digits and their NUL fit it");
    return position;
}

template <size_t items> constexpr Position list_position(Position position)
{
    static_assert(items > 0 && items <= most_items, "raise most_items: a list is split into no more");
    return position;
}

template <size_t size, bool follows, bool fits> constexpr Position counted_hex_position(Position bytes)
{
    static_assert(2 * size < counted_hex_size, "raise counted_hex_size: the bytes' digits and their NUL fit it");
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
        static_assert(!reads_counters(form), "64-bit values only come back: use COUNTER or RATE");                     \
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

// The exported function over a converter that works on the caller's storage.
#define EXPORTED_PARSER(table, work)                                                                                   \
    template <> struct WorkOf<str2arg_##table> {                                                                       \
        static constexpr bool is_defined = true;                                                                       \
        static constexpr Parser value = {str2arg_##table, &tables::table::form, work};                                 \
    };                                                                                                                 \
    void* str2arg_##table(char* text) { return parse_to_own<tables::table, work>(text); }
#define EXPORTED_FORMATTER(table, work)                                                                                \
    template <> struct WorkOf<arg2str_##table> {                                                                       \
        static constexpr bool is_defined = true;                                                                       \
        static constexpr Formatter value = {arg2str_##table, &tables::table::form, work};                              \
    };                                                                                                                 \
    char* arg2str_##table(void* reply) { return format_to_own<tables::table, work>(reply); }

#define PARSER(table) EXPORTED_PARSER(table, nullptr)
#define FORMATTER(table) EXPORTED_FORMATTER(table, nullptr)
#define CONVERTERS(table)                                                                                              \
    PARSER(table)                                                                                                      \
    FORMATTER(table)

// The head of a converter with a body of its own, which stands behind it: a
// RecordParser or RecordFormatter that begins with parse<tables::TABLE> or ends
// with format<tables::TABLE>.
#define OWN_PARSER(table)                                                                                              \
    namespace own_converters                                                                                           \
    {                                                                                                                  \
    static void* str2arg_##table(void* record, char* text);                                                            \
    }                                                                                                                  \
    EXPORTED_PARSER(table, own_converters::str2arg_##table)                                                            \
    void* own_converters::str2arg_##table(void* record, char* text)
#define OWN_FORMATTER(table)                                                                                           \
    namespace own_converters                                                                                           \
    {                                                                                                                  \
    static char* arg2str_##table(const void* record, char* str);                                                       \
    }                                                                                                                  \
    EXPORTED_FORMATTER(table, own_converters::arg2str_##table)                                                         \
    char* own_converters::arg2str_##table(const void* record, char* str)

// A parser that prints a trace line; its values are members of `row`, the
// request, or the whole argument `text`.
#define TRACED_PARSER(table, line, ...)                                                                                \
    OWN_PARSER(table)                                                                                                  \
    {                                                                                                                  \
        static_assert(!tables::table::form.delimiters[0], "unsplit() knows '&' only");                                 \
        const size_t length = is_tracing() ? strlen(text) : 0;                                                         \
        auto& row = parse<tables::table>(record, text);                                                                \
        if (is_tracing())                                                                                              \
            unsplit(text, length);                                                                                     \
        TRACE(line, __VA_ARGS__);                                                                                      \
        return &row;                                                                                                   \
    }

// A formatter that prints a trace line; its values are members of `row`, the
// reply, or its text `str`.
#define TRACED_FORMATTER(table, line, ...)                                                                             \
    OWN_FORMATTER(table)                                                                                               \
    {                                                                                                                  \
        [[maybe_unused]] auto& row = *static_cast<const tables::table::Entry*>(record);                                \
        format<tables::table>(record, str);                                                                            \
        TRACE(line, __VA_ARGS__);                                                                                      \
        return str;                                                                                                    \
    }

// Both with the same text, each with its own line.
#define TRACED_CONVERTERS(table, parser_line, formatter_line, ...)                                                     \
    TRACED_PARSER(table, parser_line, __VA_ARGS__)                                                                     \
    TRACED_FORMATTER(table, formatter_line, __VA_ARGS__)

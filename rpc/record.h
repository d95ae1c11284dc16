// How a record is described: once, as a plain struct and the list of its
// members in wire order. The XDR routine, the text converters, the schema, the
// simulated device and the protocol files all walk this list.
//
// To add a record, in a service's records.h:
//
//     struct oltmib_exampleEntry {
//         int ifx;
//         char name[32];
//         int oper, res;
//     };
//     RECORD(oltmib_exampleEntry, ifx, name, oper, res)
//
// A member is an int, an unsigned, a double, an oltmib_int64_t or
// oltmib_uint64_t, an array char[N] or int[N], or a record that is a block of
// values of one kind. The compiler checks that no member is missing, that the
// order is the struct's, and that the record fits a datagram.
#pragma once

#include <cstddef>
#include <cstdint>
#include <rpc/rpc.h>
#include <type_traits>
#include <utility>

#include "rpc/export.h"
#include "rpc/for_each.h"

// What a field is, on the wire (RFC 4506) and in memory.
enum class Kind : uint8_t {
    Int,    // xdr_int, one unit
    UInt,   // xdr_u_int, one unit
    Char,   // xdr_char, one unit a character
    Double, // xdr_double, two units
    Int64,  // two units, the low word first
    UInt64, // two units, the low word first
};

// One field of a record: `count` values of one kind, `offset` bytes into the
// struct.
struct Field {
    uint16_t offset;
    uint16_t count;
    Kind kind;

    constexpr Field(uint16_t offset, uint16_t count, Kind kind) : offset(offset), count(count), kind(kind) {}
};
static_assert(sizeof(Field) == 6, "a field stays small: the library holds one for every member of every record");

constexpr unsigned units_of(Kind kind)
{
    return kind == Kind::Double || kind == Kind::Int64 || kind == Kind::UInt64 ? 2 : 1;
}

constexpr unsigned size_of(Kind kind)
{
    return kind == Kind::Char ? 1 : kind == Kind::Int || kind == Kind::UInt ? 4 : 8;
}

// An XDR routine (RFC 4506): codes `object` as xdrs->x_op says; false when the
// stream has no room, or no more units.
typedef bool_t (*XdrRoutine)(XDR* xdrs, void* object);

// The same as the RPC library's calls take it: through xdrproc_t, whatever its own type.
template <class Routine> xdrproc_t as_xdrproc(Routine* routine)
{
    return reinterpret_cast<xdrproc_t>(reinterpret_cast<void (*)()>(routine));
}

// One record type. Its size in memory is `size` bytes, on the wire `units`
// units of four bytes.
struct Record {
    const char* name;    // the struct's name
    const char* members; // "ifx, name, oper, res"
    const Field* fields; // in wire order
    const Record* block; // the record that a member is a block of, or null
    XdrRoutine xdr;      // xdr_ and the struct's name
    uint16_t count;
    uint16_t size;
    uint16_t units;

    const Field* begin() const { return fields; }
    const Field* end() const { return fields + count; }
};

// Specialised by RECORD: `members`, `fields` and `block` of a record type.
template <class T> struct Description;

template <class T> constexpr unsigned field_count = sizeof(Description<T>::fields) / sizeof(Field);

namespace record_checks
{
#if defined __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wmissing-field-initializers"
#endif
struct Anything {
    template <class T> operator T() const;
};

template <class T, size_t... I> constexpr auto takes(std::index_sequence<I...>)
    -> decltype(T{{(void(I), Anything{})}...}, true)
{
    return true;
}
template <class T, size_t... I> constexpr bool takes(...) { return false; }

// True when T has exactly `members` members; an array counts as one.
template <class T, size_t members> constexpr bool has_members = takes<T>(std::make_index_sequence<members>{}) &&
                                                                !takes<T>(std::make_index_sequence<members + 1>{});

#if defined __clang__
#pragma clang diagnostic pop
#endif

template <class T> constexpr bool ascends()
{
    for (unsigned i = 1; i < field_count<T>; i++)
        if (Description<T>::fields[i].offset <= Description<T>::fields[i - 1].offset)
            return false;
    return true;
}

template <class T> constexpr bool one_kind()
{
    for (const Field& field : Description<T>::fields)
        if (field.kind != Description<T>::fields[0].kind || field.count != 1)
            return false;
    return true;
}

template <class T> constexpr unsigned wire_units()
{
    unsigned units = 0;
    for (const Field& field : Description<T>::fields)
        units += field.count * units_of(field.kind);
    return units;
}
} // namespace record_checks

constexpr unsigned most_record_size = UDPMSGSIZE; // in memory, where no field takes more than on the wire
constexpr unsigned datagram_size = UDPMSGSIZE;    // of libtirpc's datagram transport, RPC header included
constexpr unsigned call_header_size = 40;         // with AUTH_NONE; a reply's is shorter

template <class Element> constexpr Kind kind_of()
{
    constexpr bool supported = std::is_same_v<Element, int> || std::is_same_v<Element, unsigned> ||
                               std::is_same_v<Element, char> || std::is_same_v<Element, double> ||
                               std::is_same_v<Element, int64_t> || std::is_same_v<Element, uint64_t>;
    static_assert(supported,
                  "a record's member is an int, unsigned, double, 64-bit integer, char[N], int[N] or a block record");
    return std::is_same_v<Element, int>        ? Kind::Int
           : std::is_same_v<Element, unsigned> ? Kind::UInt
           : std::is_same_v<Element, char>     ? Kind::Char
           : std::is_same_v<Element, double>   ? Kind::Double
           : std::is_same_v<Element, int64_t>  ? Kind::Int64
                                               : Kind::UInt64;
}

// The field that a member of type Member is, `offset` bytes into its struct.
template <class Member> constexpr Field make_field(size_t offset)
{
    static_assert(std::rank_v<Member> <= 1, "a record's array has one dimension");
    using Element = std::remove_extent_t<Member>;
    const auto at = static_cast<uint16_t>(offset);
    if constexpr (std::is_class_v<Element>) {
        static_assert(record_checks::one_kind<Element>(), "a nested record is a block of single values of one kind");
        return {at, field_count<Element>, Description<Element>::fields[0].kind};
    } else {
        constexpr auto count = static_cast<uint16_t>(std::is_array_v<Member> ? std::extent_v<Member> : 1);
        return {at, count, kind_of<Element>()};
    }
}

// The descriptor of record type T.
template <class T> struct RecordOf {
    static_assert(std::is_standard_layout_v<T>, "a record is a plain struct");
    static_assert(sizeof(T) <= most_record_size, "raise most_record_size: calls have no more room for a record");
    static_assert(record_checks::has_members<T, field_count<T>>, "RECORD lists each member of its struct exactly once");
    static_assert(record_checks::ascends<T>(), "RECORD lists the members in the order of the struct");
    static_assert(4 * record_checks::wire_units<T>() + call_header_size <= datagram_size,
                  "a record fits one UDP datagram");

    static constexpr Record value = {Description<T>::name,
                                     Description<T>::members,
                                     Description<T>::fields,
                                     Description<T>::block,
                                     Description<T>::xdr,
                                     field_count<T>,
                                     sizeof(T),
                                     record_checks::wire_units<T>()};
};

template <class T> constexpr const Record& record_of = RecordOf<T>::value;

// The descriptor of a member's type where it is a record of its own.
struct Block {
    bool is_record;
    const Record* record;
};

template <class T> constexpr Block block_of()
{
    if constexpr (std::is_class_v<T>)
        return {true, &record_of<T>};
    else
        return {false, nullptr};
}

// The one nested record among some members, or null.
constexpr const Record* only_block(std::initializer_list<Block> blocks)
{
    for (const Block& block : blocks)
        if (block.is_record)
            return block.record;
    return nullptr;
}

#define RECORD_FIELD(Type, member) make_field<decltype(Type::member)>(offsetof(Type, member))
#define RECORD_BLOCK(Type, member) block_of<decltype(Type::member)>()

// XDR routines are defined where LIBRPC_DEFINES_XDR is set (each service's
// service.cpp) and declared everywhere else.
#ifdef LIBRPC_DEFINES_XDR
#define XDR_BODY(Type, body)                                                                                           \
    bool_t xdr_##Type(XDR* xdrs, void* objp) { body; }
#else
#define XDR_BODY(Type, body)
#endif

// Describes a record: its type, then its members in wire order.
#define RECORD(Type, ...)                                                                                              \
    EXPORT bool_t xdr_##Type(XDR* xdrs, void* objp);                                                                   \
    template <> struct Description<Type> {                                                                             \
        static constexpr char name[] = #Type;                                                                          \
        static constexpr char members[] = #__VA_ARGS__;                                                                \
        static constexpr Field fields[] = {FOR_EACH_COMMA(RECORD_FIELD, Type, __VA_ARGS__)};                           \
        static constexpr const Record* block = only_block({FOR_EACH_COMMA(RECORD_BLOCK, Type, __VA_ARGS__)});          \
        static constexpr XdrRoutine xdr = xdr_##Type;                                                                  \
    };                                                                                                                 \
    XDR_BODY(Type, return xdr_record(xdrs, record_of<Type>, objp))

// An enum whose values are the daemon's own; it travels as one unit.
#define WIRE_ENUM(Type)                                                                                                \
    enum Type : int {};                                                                                                \
    EXPORT bool_t xdr_##Type(XDR* xdrs, void* objp);                                                                   \
    XDR_BODY(Type, return xdr_enum(xdrs, static_cast<enum_t*>(objp)))

// Encodes, decodes or frees one record, as xdrs->x_op says. Fields follow one
// another with nothing between them; every unit is big-endian (RFC 4506).
// Allocates nothing. False when the stream has no room, or no more units.
bool_t xdr_record(XDR* xdrs, const Record& record, void* object);

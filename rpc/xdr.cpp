// The walkers that code a record: straight stores into a block of the stream's
// buffer where the stream has one, one XDR routine a field where it has not.
#include "rpc/bytes.h"
#include "rpc/int64.h"
#include "rpc/record.h"

namespace
{
constexpr unsigned unit_size = BYTES_PER_XDR_UNIT;

// A character as the unit that xdr_char makes of it, in network byte order: on
// a little-endian host its byte goes straight to the top and the sign fills the
// rest, which the compiler vectorises; a swap a unit it does not.
inline uint32_t unit_of_char(char c)
{
    const auto value = static_cast<int32_t>(c);
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return static_cast<uint32_t>(value) << 24 | (static_cast<uint32_t>(value >> 8) & 0x00FFFFFFU);
#else
    return static_cast<uint32_t>(value);
#endif
}

inline char char_of_unit(uint32_t unit)
{
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return static_cast<char>(unit >> 24);
#else
    return static_cast<char>(unit);
#endif
}

inline uint32_t* put_words(uint32_t* unit, uint32_t first, uint32_t second)
{
    unit[0] = htonl(first);
    unit[1] = htonl(second);
    return unit + 2;
}

// Buffer and record never overlap; knowing that, the compiler checks nothing
// before its vector loops.
void put_chars(uint32_t* __restrict unit, const char* __restrict from, unsigned count)
{
    for (unsigned i = 0; i < count; i++)
        unit[i] = unit_of_char(from[i]);
}

void get_chars(const uint32_t* __restrict unit, char* __restrict to, unsigned count)
{
    for (unsigned i = 0; i < count; i++)
        to[i] = char_of_unit(unit[i]);
}

uint32_t* put(uint32_t* unit, const Field& field, const char* from)
{
    switch (field.kind) {
    case Kind::Char:
        put_chars(unit, from, field.count);
        return unit + field.count;
    case Kind::Int:
    case Kind::UInt:
        for (unsigned i = 0; i < field.count; i++)
            *unit++ = htonl(load<uint32_t>(from + sizeof(uint32_t) * i));
        return unit;
    case Kind::Double:
    case Kind::Int64:
    case Kind::UInt64:
        for (unsigned i = 0; i < field.count; i++) {
            const auto bits = load<uint64_t>(from + sizeof(uint64_t) * i);
            const auto low = static_cast<uint32_t>(bits), high = static_cast<uint32_t>(bits >> 32);
            unit = field.kind == Kind::Double ? put_words(unit, high, low) : put_words(unit, low, high);
        }
        return unit;
    }
    return unit;
}

const uint32_t* get(const uint32_t* unit, const Field& field, char* to)
{
    switch (field.kind) {
    case Kind::Char:
        get_chars(unit, to, field.count);
        return unit + field.count;
    case Kind::Int:
    case Kind::UInt:
        for (unsigned i = 0; i < field.count; i++)
            store(to + sizeof(uint32_t) * i, ntohl(*unit++));
        return unit;
    case Kind::Double:
    case Kind::Int64:
    case Kind::UInt64:
        for (unsigned i = 0; i < field.count; i++, unit += 2) {
            const uint64_t first = ntohl(unit[0]), second = ntohl(unit[1]);
            const uint64_t bits = field.kind == Kind::Double ? first << 32 | second : second << 32 | first;
            store(to + sizeof bits * i, bits);
        }
        return unit;
    }
    return unit;
}

// The two words of a 64-bit value, through the stream's own routine for each.
bool_t code_words(XDR* xdrs, Kind kind, void* value)
{
    const auto bits = load<uint64_t>(value);
    uint32_t words[2] = {static_cast<uint32_t>(bits), static_cast<uint32_t>(bits >> 32)};
    const xdrproc_t routine = kind == Kind::Int64 ? as_xdrproc(xdr_int) : as_xdrproc(xdr_u_int);
    if (!xdr_vector(xdrs, reinterpret_cast<char*>(words), 2, sizeof words[0], routine))
        return FALSE;
    store(value, static_cast<uint64_t>(words[1]) << 32 | words[0]);
    return TRUE;
}

bool_t code_value(XDR* xdrs, Kind kind, void* value)
{
    switch (kind) {
    case Kind::Int:
        return xdr_int(xdrs, static_cast<int*>(value));
    case Kind::UInt:
        return xdr_u_int(xdrs, static_cast<u_int*>(value));
    case Kind::Char:
        return xdr_char(xdrs, static_cast<char*>(value));
    case Kind::Double:
        return xdr_double(xdrs, static_cast<double*>(value));
    case Kind::Int64:
    case Kind::UInt64:
        return code_words(xdrs, kind, value);
    }
    return FALSE;
}

[[gnu::noinline]] bool_t code_plainly(XDR* xdrs, const Field* fields, unsigned count, char* object)
{
    for (const Field* field = fields; field < fields + count; field++)
        for (unsigned i = 0; i < field->count; i++)
            if (!code_value(xdrs, field->kind, object + field->offset + size_of(field->kind) * i))
                return FALSE;
    return TRUE;
}

bool_t code(XDR* xdrs, const Field* fields, unsigned count, unsigned units, void* record)
{
    auto* object = static_cast<char*>(record);
    if (xdrs->x_op == XDR_FREE)
        return code_plainly(xdrs, fields, count, object);
    void* block = XDR_INLINE(xdrs, units * unit_size);
    if (!block)
        return code_plainly(xdrs, fields, count, object);
    if (xdrs->x_op == XDR_ENCODE) {
        auto* unit = static_cast<uint32_t*>(block);
        for (const Field* field = fields; field < fields + count; field++)
            unit = put(unit, *field, object + field->offset);
    } else {
        const auto* unit = static_cast<const uint32_t*>(block);
        for (const Field* field = fields; field < fields + count; field++)
            unit = get(unit, *field, object + field->offset);
    }
    return TRUE;
}

bool_t code_one(XDR* xdrs, Kind kind, void* value)
{
    const Field field = {0, 1, kind};
    return code(xdrs, &field, 1, units_of(kind), value);
}
} // namespace

bool_t xdr_record(XDR* xdrs, const Record& record, void* object)
{
    return code(xdrs, record.fields, record.count, record.units, object);
}

bool_t xdr_oltmib_int64_t(XDR* xdrs, oltmib_int64_t* objp) { return code_one(xdrs, Kind::Int64, objp); }
bool_t xdr_oltmib_uint64_t(XDR* xdrs, oltmib_uint64_t* objp) { return code_one(xdrs, Kind::UInt64, objp); }

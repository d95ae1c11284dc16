// Records on the wire: the block-wise path against the plain chain and against
// bytes written by hand, truncated buffers, and the types beside the records.
#include <gtest/gtest.h>
#include <set>

#include "rpc/int64.h"
#include "services/devinfo/records.h"
#include "services/mstpinfo/records.h"
#include "services/nsminfo/forwarding/records.h"
#include "services/nsminfo/modules/records.h"
#include "services/nsminfo/ports/records.h"
#include "services/nsminfo/traffic/records.h"
#include "tests/golden/golden_list.h"
#include "tests/unit/support.h"

EXPORT void* str2arg_accesslog(char* text);

namespace
{
// RFC 4506, value by value.
Bytes by_hand(const Record& record, const char* object)
{
    Bytes bytes;
    for (const Field& field : record)
        for (unsigned i = 0; i < field.count; i++) {
            const char* at = object + field.offset + i * size_of(field.kind);
            if (field.kind == Kind::Char) {
                append_unit(bytes, static_cast<uint32_t>(static_cast<int32_t>(*at)));
            } else if (size_of(field.kind) == 4) {
                uint32_t value;
                memcpy(&value, at, sizeof value);
                append_unit(bytes, value);
            } else {
                uint64_t value;
                memcpy(&value, at, sizeof value);
                const bool high_first = field.kind == Kind::Double;
                append_unit(bytes, static_cast<uint32_t>(high_first ? value >> 32 : value));
                append_unit(bytes, static_cast<uint32_t>(high_first ? value : value >> 32));
            }
        }
    return bytes;
}

// What `code` encodes; nothing when it fails.
template <class Code> Bytes encoded(size_t room, Stream stream, Code&& code)
{
    const ExactMemory buffer = exact_stream(Bytes(room), room);
    MemoryStream to(XDR_ENCODE, buffer.data(), room, stream);
    if (!code(to.get()))
        return {};
    return Bytes(buffer.data(), buffer.data() + to.position());
}

// Decodes `bytes` and no more; false when the routine fails.
template <class Code> bool decoded(const Bytes& bytes, size_t size, Stream stream, Code&& code)
{
    const ExactMemory buffer = exact_stream(bytes, size);
    MemoryStream from(XDR_DECODE, buffer.data(), size, stream);
    return code(from.get()) && from.position() <= size;
}

struct every_record : testing::TestWithParam<const Record*> {
    const Record& record = *GetParam();
    const size_t size = 4U * record.units;
    Random random{record.units};
    Object object{record};

    every_record() { fill_randomly(random, record, object.data()); }

    bool code(XDR* xdrs, Object& of) const { return record.xdr(xdrs, of.data()); }
};

std::string name_of(const testing::TestParamInfo<const Record*>& info) { return info.param->name; }

struct NamedRoutine {
    const char* name;
    XdrRoutine routine;
};
#define ROUTINE_OF(Type)                                                                                               \
    NamedRoutine { #Type, xdr_##Type }

struct every_enum : testing::TestWithParam<NamedRoutine> {
};
} // namespace

INSTANTIATE_TEST_SUITE_P(xdr, every_record, testing::ValuesIn(all_records()), name_of);

TEST_P(every_record, encodes_alike_by_blocks_and_plainly)
{
    const auto code_it = [&](XDR* xdrs) { return code(xdrs, object); };
    const Bytes expected = by_hand(record, object.data());
    ASSERT_EQ(expected.size(), size);
    EXPECT_EQ(encoded(size, Stream::Blocks, code_it), expected);
    EXPECT_EQ(encoded(size, Stream::Plain, code_it), expected);
}

TEST_P(every_record, decodes_alike_by_blocks_and_plainly)
{
    const Bytes bytes = by_hand(record, object.data());
    for (const Stream stream : {Stream::Blocks, Stream::Plain}) {
        Object back(record);
        EXPECT_TRUE(decoded(bytes, size, stream, [&](XDR* xdrs) { return code(xdrs, back); }));
        EXPECT_EQ(back.bytes(), object.bytes());
    }
}

TEST_P(every_record, decodes_characters_by_their_low_byte_alone)
{
    Bytes bytes = by_hand(record, object.data());
    size_t unit = 0;
    for (const Field& field : record)
        for (unsigned i = 0; i < field.count * units_of(field.kind); i++, unit++)
            if (field.kind == Kind::Char)
                for (unsigned byte = 0; byte < 3; byte++)
                    bytes[4 * unit + byte] = static_cast<unsigned char>(random());
    for (const Stream stream : {Stream::Blocks, Stream::Plain}) {
        Object back(record);
        EXPECT_TRUE(decoded(bytes, size, stream, [&](XDR* xdrs) { return code(xdrs, back); }));
        EXPECT_EQ(back.bytes(), object.bytes());
    }
}

TEST_P(every_record, fails_on_a_buffer_of_any_smaller_length)
{
    const Bytes bytes = by_hand(record, object.data());
    for (size_t length = 0; length < size; length += length < 64 || length + 64 > size ? 1 : 4) {
        Object back(record);
        ASSERT_FALSE(decoded(bytes, length, Stream::Blocks, [&](XDR* xdrs) { return code(xdrs, back); })) << length;
        ASSERT_EQ(encoded(length, Stream::Blocks, [&](XDR* xdrs) { return code(xdrs, object); }), Bytes()) << length;
    }
}

TEST_P(every_record, frees_nothing_and_stays_as_it_is)
{
    // a stream with room, and with another record's bytes, from which nothing is read
    const Bytes before = object.bytes(), bytes = Bytes(size, 0x5A);
    const ExactMemory buffer = exact_stream(bytes, size);
    MemoryStream stream(XDR_FREE, buffer.data(), size);
    EXPECT_TRUE(code(stream.get(), object));
    EXPECT_EQ(object.bytes(), before);
    EXPECT_EQ(stream.position(), 0U);
    EXPECT_EQ(memcmp(buffer.data(), bytes.data(), size), 0);
}

TEST(xdr, every_record_that_travels_is_here)
{
    std::set<std::string> here;
    for (const Record* record : all_records())
        here.insert(record->name);
    for (const std::string& name : golden::column("records.txt", 0))
        EXPECT_EQ(here.count(name), 1U) << name;
}

TEST(xdr, accesslog_record_byte_for_byte)
{
    char text[] = "user&\xA9&1&-2&16909060&&7&-1";
    auto* entry = static_cast<oltmib_accesslogEntry*>(str2arg_accesslog(text));
    const Bytes expected = text_units("user", 64) + text_units("\xA9", 64) + units({1, 0xFFFFFFFE, 0x01020304}) +
                           text_units("", 32) + units({7, 0xFFFFFFFF});
    EXPECT_EQ(encoded(4 * 165, Stream::Blocks, [&](XDR* xdrs) { return xdr_oltmib_accesslogEntry(xdrs, entry); }),
              expected);
    oltmib_accesslogEntry back = {};
    EXPECT_TRUE(decoded(expected, expected.size(), Stream::Blocks,
                        [&](XDR* xdrs) { return xdr_oltmib_accesslogEntry(xdrs, &back); }));
    EXPECT_EQ(memcmp(&back, entry, sizeof back), 0);
}

TEST(xdr, char_40_field_occupies_160_bytes)
{
    char text[40] = "x";
    const Field field = {0, sizeof text, Kind::Char};
    const Record record = {"text", "text", &field, nullptr, nullptr, 1, sizeof text, sizeof text};
    EXPECT_EQ(encoded(200, Stream::Blocks, [&](XDR* xdrs) { return xdr_record(xdrs, record, text); }).size(), 160U);
}

TEST(xdr, double_travels_high_word_first)
{
    double real = 1.0;
    const Field field = {0, 1, Kind::Double};
    const Record record = {"real", "real", &field, nullptr, nullptr, 1, sizeof real, 2};
    EXPECT_EQ(encoded(8, Stream::Blocks, [&](XDR* xdrs) { return xdr_record(xdrs, record, &real); }),
              units({0x3FF00000, 0}));
}

TEST(xdr, int_64_travels_low_word_first)
{
    const Bytes expected = units({0xFFFFFFFB, 0xFFFFFFFF});
    for (const Stream stream : {Stream::Blocks, Stream::Plain}) {
        oltmib_int64_t value = -5, back = 0;
        EXPECT_EQ(encoded(8, stream, [&](XDR* xdrs) { return xdr_oltmib_int64_t(xdrs, &value); }), expected);
        EXPECT_TRUE(decoded(expected, 8, stream, [&](XDR* xdrs) { return xdr_oltmib_int64_t(xdrs, &back); }));
        EXPECT_EQ(back, -5);
    }
}

TEST(xdr, uint_64_travels_low_word_first)
{
    const Bytes expected = units({0x05060708, 0x81020304});
    for (const Stream stream : {Stream::Blocks, Stream::Plain}) {
        oltmib_uint64_t value = 0x8102030405060708U, back = 0;
        EXPECT_EQ(encoded(8, stream, [&](XDR* xdrs) { return xdr_oltmib_uint64_t(xdrs, &value); }), expected);
        EXPECT_TRUE(decoded(expected, 8, stream, [&](XDR* xdrs) { return xdr_oltmib_uint64_t(xdrs, &back); }));
        EXPECT_EQ(back, value);
    }
}

TEST(xdr, int_64_of_a_short_buffer_fails)
{
    const Bytes bytes = units({1, 2});
    for (size_t length = 0; length < 8; length++)
        for (const Stream stream : {Stream::Blocks, Stream::Plain}) {
            oltmib_int64_t value = 0;
            EXPECT_FALSE(decoded(bytes, length, stream, [&](XDR* xdrs) { return xdr_oltmib_int64_t(xdrs, &value); }));
            EXPECT_EQ(encoded(length, stream, [&](XDR* xdrs) { return xdr_oltmib_int64_t(xdrs, &value); }), Bytes());
        }
}

TEST(xdr, int_64_is_freed_without_a_change)
{
    oltmib_int64_t value = 5;
    Bytes bytes(8, 0x5A);
    MemoryStream stream(XDR_FREE, bytes.data(), bytes.size());
    EXPECT_TRUE(xdr_oltmib_int64_t(stream.get(), &value));
    EXPECT_EQ(value, 5);
    EXPECT_EQ(stream.position(), 0U);
}

INSTANTIATE_TEST_SUITE_P(xdr, every_enum,
                         testing::Values(ROUTINE_OF(oltmib_iftype_e), ROUTINE_OF(oltmib_ratelimit_type),
                                         ROUTINE_OF(oltmib_class_matchtype), ROUTINE_OF(oltmib_agmode_e),
                                         ROUTINE_OF(oltmib_dos_type), ROUTINE_OF(oltmib_mstpver_e)),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(every_enum, travels_as_one_signed_unit)
{
    int value = -2, back = 0;
    const Bytes expected = units({0xFFFFFFFE});
    EXPECT_EQ(encoded(4, Stream::Blocks, [&](XDR* xdrs) { return GetParam().routine(xdrs, &value); }), expected);
    EXPECT_TRUE(decoded(expected, 4, Stream::Blocks, [&](XDR* xdrs) { return GetParam().routine(xdrs, &back); }));
    EXPECT_EQ(back, -2);
    EXPECT_FALSE(decoded(expected, 3, Stream::Blocks, [&](XDR* xdrs) { return GetParam().routine(xdrs, &back); }));
}

// Records and their field lists: kinds, offsets, sizes and units.
#define LIBRPC_DEFINES_XDR // of the records below
#include <gtest/gtest.h>

#include "common/text_form.h"
#include "rpc/int64.h"
#include "tests/unit/support.h"

struct test_pairEntry {
    oltmib_uint64_t one, two;
};
RECORD(test_pairEntry, one, two)
static_assert(record_of<test_pairEntry>.units == 4);

struct test_mixedEntry {
    char mac[6];
    int number;
    unsigned count;
    double real;
    oltmib_int64_t wide;
    int list[3];
    test_pairEntry pair;
    char one[1];
};
RECORD(test_mixedEntry, mac, number, count, real, wide, list, pair, one)
static_assert(record_of<test_mixedEntry>.units == 6 + 1 + 1 + 2 + 2 + 3 + 4 + 1);

TEST(record, describes_each_member_by_its_type)
{
    const Record& record = record_of<test_mixedEntry>;
    EXPECT_STREQ(record.name, "test_mixedEntry");
    EXPECT_STREQ(record.members, "mac, number, count, real, wide, list, pair, one");
    EXPECT_EQ(record.size, sizeof(test_mixedEntry));
    EXPECT_EQ(record.units, 20);
    struct Expected {
        size_t offset;
        Kind kind;
        unsigned count;
    };
    const Expected expected[] = {
        {offsetof(test_mixedEntry, mac), Kind::Char, 6},    {offsetof(test_mixedEntry, number), Kind::Int, 1},
        {offsetof(test_mixedEntry, count), Kind::UInt, 1},  {offsetof(test_mixedEntry, real), Kind::Double, 1},
        {offsetof(test_mixedEntry, wide), Kind::Int64, 1},  {offsetof(test_mixedEntry, list), Kind::Int, 3},
        {offsetof(test_mixedEntry, pair), Kind::UInt64, 2}, {offsetof(test_mixedEntry, one), Kind::Char, 1},
    };
    ASSERT_EQ(record.count, std::size(expected));
    for (unsigned i = 0; i < record.count; i++) {
        EXPECT_EQ(record.fields[i].offset, expected[i].offset) << i;
        EXPECT_EQ(record.fields[i].kind, expected[i].kind) << i;
        EXPECT_EQ(record.fields[i].count, expected[i].count) << i;
    }
}

TEST(record, names_the_block_record_inside_it)
{
    EXPECT_EQ(record_of<test_mixedEntry>.block, &record_of<test_pairEntry>);
    EXPECT_EQ(record_of<test_pairEntry>.block, nullptr);
}

TEST(record, position_of_a_nested_member_lies_inside_its_block)
{
    using Entry = test_mixedEntry;
    constexpr Field second = AT(pair.two);
    EXPECT_EQ(second.offset, offsetof(test_mixedEntry, pair) + sizeof(oltmib_uint64_t));
    EXPECT_EQ(second.count, 1);
    EXPECT_EQ(second.kind, Kind::UInt64);
}

TEST(record, every_record_fits_a_datagram_and_its_fields_fit_the_record)
{
    for (const Record* record : all_records()) {
        unsigned units = 0, end = 0;
        for (const Field& field : *record) {
            EXPECT_GE(field.offset, end) << record->name;
            end = field.offset + field.count * size_of(field.kind);
            units += field.count * units_of(field.kind);
        }
        EXPECT_LE(end, record->size) << record->name;
        EXPECT_EQ(units, record->units) << record->name;
        EXPECT_LE(40 + 4 * units, 8800U) << record->name;
    }
}

TEST(record, positions_of_every_text_lie_inside_its_record)
{
    for_each_api([](const Service&, const Api& api) {
        for (const TextForm* form : {api.input(), api.output()}) {
            if (!form)
                continue;
            for (const Position position : *form)
                EXPECT_LE(position.offset + position.count * size_of(position.kind), form->record->size) << api.name;
        }
    });
}

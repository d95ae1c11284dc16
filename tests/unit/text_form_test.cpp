// Records to text and back: how each kind of field is read and written, what
// happens to missing, broken, over-long and surplus parts, and the traces.
#define LIBRPC_DEFINES_XDR // of the records below
#include <array>
#include <climits>
#include <cmath>
#include <gtest/gtest.h>

#include "rpc/int64.h"
#include "tests/unit/support.h"

namespace
{
struct PlainEntry {
    int number;
    char name[8];
    unsigned count;
    double real;
    int last;
};
struct BytesEntry {
    char mac[6];
    char raw[6];
    char hex[8];
    int length;
    char counted[4];
    char behind[6];
    char map[3];
    int list[3];
    char rest[32]; // so that the most digits of `counted` stand for bytes of the record
};
struct UsesEntry {
    int one, two, three, four;
    oltmib_int64_t wide;
    oltmib_uint64_t huge;
};
struct LongEntry {
    char text[1100];
    int res;
};
} // namespace

RECORD(PlainEntry, number, name, count, real, last)
RECORD(BytesEntry, mac, raw, hex, length, counted, behind, map, list, rest)
RECORD(UsesEntry, one, two, three, four, wide, huge)
RECORD(LongEntry, text, res)

#undef DECLARE_CONVERTERS
#define DECLARE_CONVERTERS(table)
TABLE(plain, PlainEntry)
TABLE(unsigned_plain, PlainEntry, UNSIGNED(number), UNSIGNED(count))
TABLE_AS(collapsing, PlainEntry, split_on("&$").joined_by("&$").with_buffer(20))
TABLE_OF(bytes, BytesEntry, MAC(mac), RAW_MAC(raw), HEX(hex), COUNTED_HEX(length, counted), LIST(map), LIST(list))
TABLE_OF(uses, UsesEntry, AT(three), COUNTER(wide), OUTPUT_ONLY(one), INPUT_ONLY(two), COUNTER(huge), RATE(wide),
         AT(four))
TABLE(long_text, LongEntry)

namespace
{
template <class Table> typename Table::Entry& read(const std::string& text)
{
    static std::string copy;
    copy = text;
    static typename Table::Entry record;
    return parse<Table>(&record, copy.data());
}

template <class Table> std::string written(const typename Table::Entry& entry)
{
    char text[Table::form.buffer];
    return format<Table>(&entry, text);
}

struct IntText {
    const char* text;
    int value;
};

// As atoi reads it: blanks, one sign, digits, the rest ignored.
constexpr IntText int_texts[] = {
    {"", 0},
    {"0", 0},
    {"7", 7},
    {"-7", -7},
    {"+9", 9},
    {" 12", 12},
    {"\t5", 5},
    {"\n\v\f\r 6", 6},
    {"12abc", 12},
    {"1.9", 1},
    {"1 2", 1},
    {"007", 7},
    {"0x10", 0},
    {"abc", 0},
    {"-", 0},
    {"+", 0},
    {"- 3", 0},
    {"+-3", 0},
    {"--3", 0},
    {"999999999", 999999999},
    {"1000000000", 1000000000},
    {"2147483647", INT_MAX},
    {"-2147483648", INT_MIN},
    {"00000000000000000000042", 42},
    {"000000000-5", 0},
    {"123456789x", 123456789},
    {"1234567890x", 1234567890},
    {"\x80"
     "5",
     0},
    {":", 0},
    {"/", 0},
};

// Beyond an int the value is the lower half of what a long holds at most.
constexpr bool wide_long = sizeof(long) == 8;
constexpr IntText big_int_texts[] = {
    {"2147483648", wide_long ? INT_MIN : INT_MAX},
    {"4294967295", wide_long ? -1 : INT_MAX},
    {"4294967296", wide_long ? 0 : INT_MAX},
    {"9999999999", wide_long ? 1410065407 : INT_MAX},
    {"99999999999", wide_long ? 1215752191 : INT_MAX},
    {"-2147483649", wide_long ? INT_MAX : INT_MIN},
    {"-99999999999", wide_long ? -1215752191 : INT_MIN},
    {"99999999999999999999", wide_long ? -1 : INT_MAX},
    {"-99999999999999999999", wide_long ? 0 : INT_MIN},
};

struct int_text : testing::TestWithParam<IntText> {
};
} // namespace

INSTANTIATE_TEST_SUITE_P(text_form, int_text, testing::ValuesIn(int_texts));
INSTANTIATE_TEST_SUITE_P(text_form_beyond_int, int_text, testing::ValuesIn(big_int_texts));

TEST_P(int_text, read_as_atoi_reads_them)
{
    const auto [text, value] = GetParam();
    const std::string field = text;
    EXPECT_EQ(read<tables::plain>(field).number, value);
    EXPECT_EQ(read<tables::plain>(field + "&" + field + "&" + field).count, static_cast<unsigned>(value));
    EXPECT_EQ(atoi(text), value);
}

TEST(text_form, random_int_texts_read_as_atoi_reads_them)
{
    Random random(10);
    for (int i = 0; i < 50000; i++) {
        const std::string text = random_text(random, "0012345678999+- x", 0, 13);
        ASSERT_EQ(read<tables::plain>(text).number, atoi(text.c_str())) << '"' << text << '"';
    }
}

TEST(text_form, missing_fields_are_0_or_empty)
{
    PlainEntry& entry = read<tables::plain>("5&name");
    EXPECT_EQ(entry.number, 5);
    EXPECT_STREQ(entry.name, "name");
    EXPECT_EQ(entry.count, 0U);
    EXPECT_EQ(entry.real, 0.0);
    EXPECT_EQ(entry.last, 0);
}

TEST(text_form, surplus_fields_are_dropped)
{
    PlainEntry& entry = read<tables::plain>("1&2&3&4&5&6&7");
    EXPECT_EQ(entry.last, 5);
}

TEST(text_form, request_is_cleared_before_each_parse)
{
    read<tables::plain>("5&longest&7&2.5&9");
    PlainEntry& entry = read<tables::plain>("&x");
    const PlainEntry expected = {0, "x", 0, 0, 0};
    EXPECT_EQ(entry.number, 0);
    EXPECT_EQ(memcmp(entry.name, expected.name, sizeof entry.name), 0);
    EXPECT_EQ(entry.last, 0);
}

TEST(text_form, text_is_cut_to_its_array_minus_1)
{
    EXPECT_STREQ(read<tables::plain>("&1234567").name, "1234567");
    EXPECT_STREQ(read<tables::plain>("&12345678").name, "1234567");
    EXPECT_STREQ(read<tables::plain>("&123456789&4").name, "1234567");
    EXPECT_EQ(read<tables::plain>("&123456789&4").count, 4U);
}

TEST(text_form, bytes_of_any_value_pass_through_a_text)
{
    EXPECT_STREQ(read<tables::plain>("&\xC3\xA9\x01\xFF%s").name, "\xC3\xA9\x01\xFF%s");
    EXPECT_EQ(written<tables::plain>({1, "\xC3\xA9\x01\xFF%s", 0, 0, 0}), "1&\xC3\xA9\x01\xFF%s&0&0.00&0");
}

TEST(text_form, reply_text_without_nul_ends_with_its_array)
{
    EXPECT_EQ(written<tables::plain>({1, {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'}, 2, 0, 3}), "1&abcdefgh&2&0.00&3");
}

TEST(text_form, doubles_have_two_decimals)
{
    EXPECT_EQ(written<tables::plain>({0, "", 0, -3.756, 0}), "0&&0&-3.76&0");
    EXPECT_EQ(written<tables::plain>({0, "", 0, 1e6, 0}), "0&&0&1000000.00&0");
    EXPECT_EQ(read<tables::plain>("&&&1e3").real, 1000.0);
    EXPECT_EQ(read<tables::plain>("&&& -1.25x").real, -1.25);
    EXPECT_EQ(read<tables::plain>("&&&abc").real, 0.0);
}

TEST(text_form, longest_doubles_are_whole)
{
    char expected[400];
    snprintf(expected, sizeof expected, "0&&0&%.2f&0", -1.7976931348623157e308);
    EXPECT_EQ(written<tables::plain>({0, "", 0, -1.7976931348623157e308, 0}), expected);
    EXPECT_EQ(written<tables::plain>({0, "", 0, INFINITY, 0}), "0&&0&inf&0");
}

TEST(text_form, unsigned_values_print_signed_unless_the_form_says_otherwise)
{
    const PlainEntry entry = {-1, "", 4294967295U, 0, INT_MIN};
    EXPECT_EQ(written<tables::plain>(entry), "-1&&-1&0.00&-2147483648");
    EXPECT_EQ(written<tables::unsigned_plain>(entry), "4294967295&&4294967295&0.00&-2147483648");
}

TEST(text_form, mac_is_read_in_any_notation_and_written_with_dashes)
{
    EXPECT_EQ(memcmp(read<tables::bytes>("aabb.ccdd.eeff").mac, "\xAA\xBB\xCC\xDD\xEE\xFF", 6), 0);
    BytesEntry entry = {};
    memcpy(entry.mac, "\xAA\xBB\xCC\xDD\xEE\xFF", 6);
    EXPECT_EQ(written<tables::bytes>(entry).substr(0, 18), "AA-BB-CC-DD-EE-FF&");
}

TEST(text_form, raw_mac_takes_the_texts_first_five_characters)
{
    EXPECT_EQ(memcmp(read<tables::bytes>("&00:11:22").raw, "00:11\0", 6), 0);
    EXPECT_EQ(memcmp(read<tables::bytes>("&00").raw, "00\0\0\0\0", 6), 0);
}

TEST(text_form, counted_hex_keeps_its_byte_count)
{
    BytesEntry& entry = read<tables::bytes>("&&&0102");
    EXPECT_EQ(entry.length, 2);
    EXPECT_EQ(memcmp(entry.counted, "\1\2\0\0", 4), 0);
    BytesEntry& full = read<tables::bytes>("&&&010203040506");
    EXPECT_EQ(full.length, 4);
    EXPECT_EQ(memcmp(full.behind, "\0\0\0\0\0\0", 6), 0);
}

TEST(text_form, counted_hex_of_a_longer_count_goes_on_into_the_bytes_behind)
{
    BytesEntry entry = {};
    memcpy(entry.counted, "\1\2\3\4", 4);
    memcpy(entry.behind, "\5\6\7\xAB\xCD\xEF", 6);
    const std::pair<int, const char*> cases[] = {{-1, ""},
                                                 {INT_MIN, ""},
                                                 {0, ""},
                                                 {3, "010203"},
                                                 {4, "01020304"},
                                                 {7, "01020304050607"},
                                                 {10, "01020304050607abcdef"}};
    for (const auto& [length, text] : cases) {
        entry.length = length;
        const std::string all = written<tables::bytes>(entry);
        EXPECT_EQ(all.substr(0, all.find("&0,0,0")),
                  std::string("00-00-00-00-00-00&00-00-00-00-00-00&0000000000000000&") + text);
    }
}

TEST(text_form, counted_hex_reads_nothing_beyond_its_record)
{
    Random random(11);
    for_each_api([&](const Service&, const Api& api) {
        if (!api.output())
            return;
        for (const Position position : *api.output())
            if (position.text == Text::CountedHex)
                for (const int length : {33, 49, 50, 51, 1000, INT_MAX}) {
                    Object exact(*api.output()->record);
                    fill_randomly(random, *api.output()->record, exact.data());
                    memcpy(exact.data() + position.offset - sizeof length, &length, sizeof length);
                    std::string bytes;
                    for (int i = 0; i < std::min(length, 50); i++) {
                        char digits[3];
                        snprintf(digits, sizeof digits, "%02x",
                                 static_cast<unsigned char>(exact.data()[position.offset + i]));
                        bytes += digits;
                    }
                    const std::string text = api.formatter->ret2str(exact.data());
                    EXPECT_NE(text.find('&' + bytes.substr(0, 99) + '&'), text.npos) << text;
                }
    });
}

TEST(text_form, hex_reads_pairs_and_prints_all_its_bytes)
{
    BytesEntry& entry = read<tables::bytes>("&&0aFF");
    EXPECT_EQ(memcmp(entry.hex, "\x0A\xFF\0\0\0\0\0\0", 8), 0);
    EXPECT_EQ(written<tables::bytes>(entry), "00-00-00-00-00-00&00-00-00-00-00-00&0aff000000000000&&0,0,0&0,0,0");
    EXPECT_EQ(memcmp(read<tables::bytes>("&&01020304050607080900").hex, "\1\2\3\4\5\6\7\x8", 8), 0);
}

TEST(text_form, lists_are_numbers_between_commas)
{
    BytesEntry& entry = read<tables::bytes>("&&&&1,,3&-7, 8,x9");
    EXPECT_EQ(memcmp(entry.map, "\1\0\3", 3), 0);
    EXPECT_EQ(entry.list[0], -7);
    EXPECT_EQ(entry.list[1], 8);
    EXPECT_EQ(entry.list[2], 0);
    EXPECT_EQ(written<tables::bytes>(entry), "00-00-00-00-00-00&00-00-00-00-00-00&0000000000000000&&1,0,3&-7,8,0");
}

TEST(text_form, surplus_list_items_are_dropped_and_missing_ones_are_0)
{
    BytesEntry& entry = read<tables::bytes>("&&&&1,2,3,4,5&9");
    EXPECT_EQ(memcmp(entry.map, "\1\2\3", 3), 0);
    EXPECT_EQ(entry.list[0], 9);
    EXPECT_EQ(entry.list[1], 0);
}

TEST(text_form, list_text_is_read_up_to_255_characters)
{
    BytesEntry& cut = read<tables::bytes>("&&&&" + std::string(254, '0') + "12,5");
    EXPECT_EQ(cut.map[0], 1);
    EXPECT_EQ(cut.map[1], 0);
}

TEST(text_form, list_bytes_print_as_the_hosts_char)
{
    BytesEntry entry = {};
    entry.map[1] = static_cast<char>(0xFE);
    const std::string expected = CHAR_MIN < 0 ? "0,-2,0" : "0,254,0";
    EXPECT_NE(written<tables::bytes>(entry).find('&' + expected + '&'), std::string::npos);
}

TEST(text_form, unread_positions_are_skipped_and_one_way_positions_have_one_place)
{
    UsesEntry& entry = read<tables::uses>("3&99&2&98&97&4&5");
    EXPECT_EQ(entry.one, 0);
    EXPECT_EQ(entry.two, 2);
    EXPECT_EQ(entry.three, 3);
    EXPECT_EQ(entry.four, 4);
    EXPECT_EQ(entry.wide, 0);
    EXPECT_EQ(entry.huge, 0U);
    EXPECT_EQ(written<tables::uses>({1, 2, 3, 4, -5, UINT64_MAX}),
              "3&18446744073709551611&1&18446744073709551615&-5&4");
    EXPECT_EQ(written<tables::uses>({1, 2, 3, 4, INT64_MIN, 0}), "3&9223372036854775808&1&0&-9223372036854775808&4");
}

TEST(text_form, reply_text_is_cut_at_1023_characters)
{
    LongEntry entry = {{}, 7};
    memset(entry.text, 'x', 1021);
    EXPECT_EQ(written<tables::long_text>(entry), std::string(1021, 'x') + "&7");
    entry.text[1021] = 'x';
    EXPECT_EQ(written<tables::long_text>(entry), std::string(1022, 'x') + "&");
    memset(entry.text, 'x', sizeof entry.text);
    EXPECT_EQ(written<tables::long_text>(entry), std::string(1023, 'x'));
}

TEST(text_form, other_delimiters_collapse_and_another_separator_joins)
{
    PlainEntry& entry = read<tables::collapsing>("$$1&&$name$2");
    EXPECT_EQ(entry.number, 1);
    EXPECT_STREQ(entry.name, "name");
    EXPECT_EQ(entry.count, 2U);
    EXPECT_EQ(written<tables::collapsing>(entry), "1&$name&$2&$0.00&$0");
    EXPECT_EQ(written<tables::collapsing>({1, "1234567", 123456, 0, 5}), "1&$1234567&$123456&");
}

TEST(text_form, unsplit_puts_the_delimiters_back)
{
    char text[] = "a&&b&";
    PlainEntry record;
    parse<tables::plain>(&record, text);
    EXPECT_STREQ(text, "a");
    unsplit(text, 5);
    EXPECT_STREQ(text, "a&&b&");
}

TEST(converters, empty_argument_gives_a_request_of_zeroes)
{
    for_each_api([](const Service&, const Api& api) {
        if (!api.registered())
            return;
        char empty[] = "";
        const auto* request = static_cast<const char*>(api.parser->str2arg(empty));
        const size_t size = api.input()->record->size;
        EXPECT_EQ(std::count(request, request + size, '\0'), static_cast<ptrdiff_t>(size)) << api.name;
    });
}

TEST(converters, print_nothing_while_debugging_is_off)
{
    Random random(12);
    CapturedOutput output;
    for_each_api([&](const Service&, const Api& api) {
        if (!api.registered())
            return;
        char text[] = "1&two&3,4&5&6&7";
        api.parser->str2arg(text);
        if (!api.output())
            return;
        Object reply(*api.output()->record);
        fill_randomly(random, *api.output()->record, reply.data());
        api.formatter->ret2str(reply.data());
    });
    EXPECT_EQ(output.text(), "");
}

// Bytes of any value in a reply, its texts without a NUL, its counts beyond
// everything: a text comes out, within its buffer, and nothing beyond the
// record is read (a sanitizer sees).
TEST(converters, hostile_replies_give_a_text_that_fits)
{
    Random random(13);
    const std::string lines = traced([&] {
        for_each_api([&](const Service&, const Api& api) {
            if (!api.output())
                return;
            for (const int filler : {-1, 0xFF, 0x41}) {
                Object reply(*api.output()->record);
                if (filler < 0)
                    fill_randomly(random, *api.output()->record, reply.data());
                else
                    memset(reply.data(), filler, api.output()->record->size);
                EXPECT_LT(strlen(api.formatter->ret2str(reply.data())), api.output()->buffer) << api.name;
            }
        });
    });
    EXPECT_NE(lines.find("[arg2str_"), lines.npos);
}

TEST(converters, hostile_arguments_fill_nothing_but_the_request)
{
    Random random(14);
    const std::string any = "&&&&&&,$%s%n0123456789-+.:abcdef \t\x80\xFF";
    traced([&] {
        for_each_api([&](const Service&, const Api& api) {
            if (!api.registered())
                return;
            for (int i = 0; i < 10; i++) {
                std::string text = random_text(random, any, 0, 6000);
                EXPECT_NE(api.parser->str2arg(text.data()), nullptr) << api.name;
            }
        });
    });
}

TEST(trace, value_of_a_full_array_ends_with_it)
{
    struct {
        char text[3] = {'a', 'b', 'c'};
        char next[2] = "x";
    } row;
    EXPECT_STREQ(Shown(row.text).value, "abc");
    EXPECT_EQ(Shown(7).value, 7);
}

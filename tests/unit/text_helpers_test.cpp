// The text helpers: their edge behaviour case by case, then each against the
// plain reference on random input.
#include <array>
#include <climits>
#include <gtest/gtest.h>

#include "common/text.h"
#include "tests/support/reference.h"
#include "tests/unit/support.h"

namespace
{
using Mac = std::array<unsigned char, 6>;

Mac mac_of(const char* text)
{
    Mac mac;
    mac.fill(0xEE);
    EXPECT_EQ(str2mac(text, mac.data()), mac.data());
    return mac;
}

const Mac address = {0x00, 0x1A, 0x2B, 0xC3, 0xD4, 0xFF};
const Mac no_address = {};

struct Split {
    int count;
    std::vector<std::string> slots;
};

// Splits a copy of `text` and gives the slots as texts.
template <class Run> Split slots_of(std::string text, size_t max, Run&& run)
{
    std::vector<char*> field(max, nullptr);
    const int count = run(text.data(), field.data(), static_cast<int>(max));
    return {count, {field.begin(), field.end()}};
}

Split split(const std::string& text, size_t max, char delimiter = '&')
{
    return slots_of(text, max, [&](char* t, char** field, int m) { return strsplit(t, delimiter, field, m); });
}

Split split2(const std::string& text, size_t max, const char* delimiters = "&")
{
    return slots_of(text, max, [&](char* t, char** field, int m) { return strsplit2(t, delimiters, field, m); });
}

std::string numbered_fields(int count)
{
    std::string text;
    for (int i = 1; i <= count; i++)
        text += (i > 1 ? "&" : "") + std::to_string(i);
    return text;
}

void expect_parts(const Split& got, std::vector<std::string> expected, size_t max, const std::string& text)
{
    EXPECT_EQ(got.count, static_cast<int>(expected.size())) << text;
    expected.resize(max);
    EXPECT_EQ(got.slots, expected) << text;
}

constexpr int rounds = 20000;
} // namespace

TEST(int2str, of_a_null_reply_gives_minus_1) { EXPECT_STREQ(int2str(nullptr), "-1"); }

TEST(int2str, prints_every_kind_of_int)
{
    for (const auto& [value, text] :
         {std::pair{0, "0"}, {-1, "-1"}, {7, "7"}, {INT_MAX, "2147483647"}, {INT_MIN, "-2147483648"}}) {
        int copy = value;
        EXPECT_STREQ(int2str(&copy), text);
    }
}

TEST(int2str, reuses_one_buffer)
{
    int one = 1, two = 2;
    char* first = int2str(&one);
    EXPECT_EQ(int2str(&two), first);
    EXPECT_STREQ(first, "2");
}

TEST(int2str, equals_the_reference)
{
    Random random(1);
    for (int i = 0; i < rounds; i++) {
        int value = static_cast<int>(random()) >> between(random, 0, 31);
        ASSERT_EQ(int2str(&value), reference::int2str(value));
    }
}

TEST(mac2str, writes_upper_case_with_dashes)
{
    char text[18];
    EXPECT_EQ(mac2str(address.data(), text), text);
    EXPECT_STREQ(text, "00-1A-2B-C3-D4-FF");
}

TEST(mac2str, fifth_of_five_calls_without_destination_overwrites_the_first)
{
    std::array<char*, 5> result;
    for (size_t i = 0; i < result.size(); i++) {
        const Mac mac = {static_cast<unsigned char>(i)};
        result[i] = mac2str(mac.data(), nullptr);
    }
    EXPECT_EQ(result[4], result[0]);
    EXPECT_STREQ(result[0], "04-00-00-00-00-00");
    EXPECT_STREQ(result[1], "01-00-00-00-00-00");
    EXPECT_STREQ(result[2], "02-00-00-00-00-00");
    EXPECT_STREQ(result[3], "03-00-00-00-00-00");
}

TEST(mac2str, destination_leaves_the_ring_alone)
{
    char own[18];
    char* first = mac2str(address.data(), nullptr);
    mac2str(no_address.data(), own);
    for (int i = 0; i < 3; i++)
        mac2str(no_address.data(), nullptr);
    EXPECT_STREQ(first, "00-1A-2B-C3-D4-FF");
    EXPECT_EQ(mac2str(no_address.data(), nullptr), first);
}

TEST(mac2str, equals_the_reference)
{
    Random random(2);
    for (int i = 0; i < rounds; i++) {
        Mac mac;
        for (auto& byte : mac)
            byte = static_cast<unsigned char>(between(random, 0, 255));
        ASSERT_EQ(mac2str(mac.data(), nullptr), reference::mac2str(mac.data()));
    }
}

TEST(str2mac, all_four_notations_give_the_same_six_bytes)
{
    for (const char* text : {"00:1a:2b:c3:d4:ff", "001a.2bc3.d4ff", "00-1A-2B-C3-D4-FF", "001a2bc3d4ff",
                             "00:1A:2B:C3:D4:FF", "001A.2BC3.D4FF", "00-1a-2b-c3-d4-ff", "001A2BC3D4FF"})
        EXPECT_EQ(mac_of(text), address) << text;
}

TEST(str2mac, empty_text_gives_six_zero_bytes) { EXPECT_EQ(mac_of(""), no_address); }

TEST(str2mac, dotted_text_that_stops_after_five_bytes_gives_the_last_byte_0)
{
    EXPECT_EQ(mac_of("001a.2bc3.d4"), (Mac{0x00, 0x1A, 0x2B, 0xC3, 0xD4, 0}));
}

TEST(str2mac, text_with_dots_and_colons_is_dotted)
{
    EXPECT_EQ(mac_of("001a.2bc3.d4ff:"), address);
    EXPECT_EQ(mac_of("00:1a:2b:c3:d4:ff."), (Mac{0, 0, 0, 0, 0, 0})); // "%02x%02x" ends at the colon
    EXPECT_EQ(mac_of("11:1a:2b:c3:d4:ff."), (Mac{0x11}));
}

TEST(str2mac, text_with_colons_and_dashes_is_colons) { EXPECT_EQ(mac_of("00:1a:2b:c3:d4:ff-"), address); }

TEST(str2mac, separators_that_change_or_are_others_end_the_address)
{
    EXPECT_EQ(mac_of("11:22-33:44:55:66"), (Mac{0x11, 0x22}));
    EXPECT_EQ(mac_of("11-22-33-44:55-66"), (Mac{0x11})); // with a colon it is colons
    EXPECT_EQ(mac_of("11:22:33:44:55-66"), (Mac{0x11, 0x22, 0x33, 0x44, 0x55}));
    EXPECT_EQ(mac_of("11-22:33:44:55:66"), (Mac{0x11}));
    EXPECT_EQ(mac_of("11x22x33x44x55x66"), (Mac{0x11}));
    EXPECT_EQ(mac_of("11/22/33/44/55/66"), (Mac{0x11}));
}

TEST(str2mac, digits_are_0_to_9_and_a_to_f)
{
    EXPECT_EQ(mac_of("0g:22:33:44:55:66"), no_address);
    EXPECT_EQ(mac_of("1g:22:33:44:55:66"), (Mac{0x01}));
    EXPECT_EQ(mac_of("11:g2:33:44:55:66"), (Mac{0x11}));
    EXPECT_EQ(mac_of("11:@2:33:44:55:66"), (Mac{0x11}));
    EXPECT_EQ(mac_of("11:`2:33:44:55:66"), (Mac{0x11}));
    EXPECT_EQ(mac_of("11:/2:33:44:55:66"), (Mac{0x11}));
    EXPECT_EQ(mac_of("11:G2:33:44:55:66"), (Mac{0x11}));
    EXPECT_EQ(mac_of("af:AF:09:90:fa:FA"), (Mac{0xAF, 0xAF, 0x09, 0x90, 0xFA, 0xFA}));
}

TEST(str2mac, broken_texts_keep_what_was_scanned)
{
    EXPECT_EQ(mac_of("zz"), no_address);
    EXPECT_EQ(mac_of("12:zz:34:56:78:9a"), (Mac{0x12}));
    EXPECT_EQ(mac_of("1:2:3:4:5:6"), (Mac{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(mac_of("123"), (Mac{0x12, 0x03}));
    EXPECT_EQ(mac_of("12:34:56:78:9a:bc:de"), (Mac{0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC}));
    EXPECT_EQ(mac_of(" 12: 34:56:78:9a:bc"), (Mac{0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC}));
    EXPECT_EQ(mac_of(":12:34"), no_address);
}

TEST(str2mac, fifth_of_five_calls_without_destination_overwrites_the_first)
{
    std::array<void*, 5> result;
    for (size_t i = 0; i < result.size(); i++)
        result[i] = str2mac(("0" + std::to_string(i)).c_str(), nullptr);
    EXPECT_EQ(result[4], result[0]);
    for (size_t i = 1; i < 5; i++)
        EXPECT_EQ(*static_cast<unsigned char*>(result[i]), i);
}

TEST(str2mac, equals_the_reference)
{
    Random random(3);
    for (int i = 0; i < rounds; i++) {
        const char separator = ":-. "[between(random, 0, 3)];
        std::string text;
        for (int part = between(random, 0, 8); part-- > 0;)
            text += random_text(random, "0123456789abcdefABCDEFxX+", 0, 4) + separator;
        text += random_text(random, "09aF:-. g", 0, 3);
        ASSERT_EQ(mac_of(text.c_str()), reference::str2mac(text)) << '"' << text << '"';
    }
}

TEST(strsplit, two_delimiters_in_a_row_give_an_empty_field)
{
    const auto [count, slots] = split("one&&two", 20);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(slots[0], "one");
    EXPECT_EQ(slots[1], "");
    EXPECT_EQ(slots[2], "two");
    for (size_t i = 3; i < 20; i++)
        EXPECT_EQ(slots[i], "");
}

TEST(strsplit, of_25_fields_with_max_20_the_last_is_the_20th_field_only)
{
    const auto [count, slots] = split(numbered_fields(25), 20);
    EXPECT_EQ(count, 20);
    EXPECT_EQ(slots[19], "20");
}

TEST(strsplit, of_exactly_max_fields_keeps_them_all)
{
    const auto [count, slots] = split(numbered_fields(20), 20);
    EXPECT_EQ(count, 20);
    EXPECT_EQ(slots[19], "20");
}

TEST(strsplit, empty_text_counts_one_empty_field)
{
    const auto [count, slots] = split("", 3);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(slots, (std::vector<std::string>{"", "", ""}));
}

TEST(strsplit, first_slot_is_the_text_itself_and_every_delimiter_is_cut)
{
    char text[] = "a&b&c&d";
    char* field[2];
    EXPECT_EQ(strsplit(text, '&', field, 2), 2);
    EXPECT_EQ(field[0], text);
    EXPECT_EQ(field[1], text + 2);
    EXPECT_EQ(std::string(text, sizeof text), std::string("a\0b\0c\0d\0", 8));
}

TEST(strsplit, slots_beyond_the_fields_share_one_empty_text)
{
    char text[] = "a";
    char* field[4];
    strsplit(text, '&', field, 4);
    EXPECT_EQ(field[1], field[2]);
    EXPECT_EQ(field[2], field[3]);
}

TEST(strsplit, equals_the_reference)
{
    Random random(4);
    for (int i = 0; i < rounds; i++) {
        const std::string text = random_text(random, "&&&ab ,", 0, 40);
        const auto max = static_cast<size_t>(between(random, 1, 25));
        const char delimiter = "&,"[between(random, 0, 1)];
        expect_parts(split(text, max, delimiter), reference::strsplit(text, delimiter, max), max, text);
    }
}

TEST(strsplit2, two_delimiters_in_a_row_count_as_one)
{
    const auto [count, slots] = split2("one&&two", 20);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(slots[0], "one");
    EXPECT_EQ(slots[1], "two");
    EXPECT_EQ(slots[2], "");
}

TEST(strsplit2, nothing_but_delimiters_gives_no_field)
{
    EXPECT_EQ(split2("", 3).count, 0);
    EXPECT_EQ(split2("&&&", 3).count, 0);
    EXPECT_EQ(split2("&&&", 3).slots[0], "");
}

TEST(strsplit2, any_character_of_the_set_ends_a_field)
{
    EXPECT_EQ(split2("&$a$&b&c$", 4, "&$").slots, (std::vector<std::string>{"a", "b", "c", ""}));
}

TEST(strsplit2, stops_after_max_fields_and_leaves_the_rest_uncut)
{
    char text[] = "a&b&c&d";
    char* field[2];
    EXPECT_EQ(strsplit2(text, "&", field, 2), 2);
    EXPECT_STREQ(field[1], "b");
    EXPECT_STREQ(text + 4, "c&d");
}

TEST(strsplit2, equals_the_reference)
{
    Random random(5);
    for (int i = 0; i < rounds; i++) {
        const std::string text = random_text(random, "&&$$ab ,", 0, 40);
        const auto max = static_cast<size_t>(between(random, 1, 12));
        const char* delimiters = between(random, 0, 1) ? "&" : "&$";
        expect_parts(split2(text, max, delimiters), reference::strsplit2(text, delimiters, max), max, text);
    }
}

TEST(hex2str, three_bytes_into_capacity_4_write_one_digit_of_the_second_and_return_4)
{
    char text[8] = "XXXXXXX";
    EXPECT_EQ(hex2str("\x12\x34\x56", 3, text, 4), 4);
    EXPECT_EQ(std::string(text, 8), std::string("123\0XXX\0", 8));
}

TEST(hex2str, writes_lower_case)
{
    char text[7];
    EXPECT_EQ(hex2str("\xAB\x0C\xFF", 3, text, sizeof text), 6);
    EXPECT_STREQ(text, "ab0cff");
}

TEST(hex2str, without_bytes_leaves_the_destination_untouched)
{
    char text[] = "before";
    EXPECT_EQ(hex2str("", 0, text, sizeof text), 0);
    EXPECT_EQ(hex2str("", -1, text, sizeof text), 0);
    EXPECT_STREQ(text, "before");
}

TEST(hex2str, without_room_for_a_digit_writes_nothing)
{
    for (const int capacity : {-1, 0, 1}) {
        char text[] = "before";
        EXPECT_EQ(hex2str("\x12", 1, text, capacity), 0);
        EXPECT_STREQ(text, "before");
    }
}

TEST(hex2str, equals_the_reference)
{
    Random random(6);
    for (int i = 0; i < rounds; i++) {
        const std::string bytes = random_text(random, std::string("\0\x01\x7f\x80\xA9\xFF", 6), 0, 12);
        const int count = between(random, -1, static_cast<int>(bytes.size())), capacity = between(random, 0, 26);
        const auto* raw = reinterpret_cast<const unsigned char*>(bytes.data());
        const auto written = reference::hex2str(raw, count, capacity);
        std::string got(26, 'X'), expected(26, 'X');
        if (written.result > 0) // with its NUL
            expected.replace(0, written.text.size() + 1, written.text.c_str(), written.text.size() + 1);
        ASSERT_EQ(hex2str(raw, count, got.data(), capacity), written.result);
        ASSERT_EQ(got, expected) << count << " bytes into " << capacity;
    }
}

TEST(str2hex, reads_pairs_of_either_case)
{
    unsigned char bytes[3] = {};
    EXPECT_EQ(str2hex("aBcDeF", 6, bytes, 3), 3);
    EXPECT_EQ(Bytes(bytes, bytes + 3), (Bytes{0xAB, 0xCD, 0xEF}));
}

TEST(str2hex, odd_last_digit_is_left)
{
    unsigned char bytes[2] = {0x77, 0x77};
    EXPECT_EQ(str2hex("123", 3, bytes, 2), 1);
    EXPECT_EQ(bytes[0], 0x12);
    EXPECT_EQ(bytes[1], 0x77);
}

TEST(str2hex, stops_at_max_and_at_the_given_length)
{
    unsigned char bytes[3] = {0x77, 0x77, 0x77};
    EXPECT_EQ(str2hex("010203", 6, bytes, 2), 2);
    EXPECT_EQ(bytes[2], 0x77);
    EXPECT_EQ(str2hex("0506", 2, bytes, 2), 1);
    EXPECT_EQ(bytes[1], 0x02);
    for (const int length : {1, 0, -1, -4})
        EXPECT_EQ(str2hex("0102", length, bytes, 2), 0);
    EXPECT_EQ(str2hex("0102", 4, bytes, -1), 0);
}

TEST(str2hex, pair_that_does_not_scan_repeats_the_byte_before_it)
{
    unsigned char bytes[4];
    EXPECT_EQ(str2hex("12zz34zz", 8, bytes, 4), 4);
    EXPECT_EQ(Bytes(bytes, bytes + 4), (Bytes{0x12, 0x12, 0x34, 0x34}));
}

TEST(str2hex, first_pair_that_does_not_scan_is_0)
{
    unsigned char bytes[2] = {0x77, 0x77};
    EXPECT_EQ(str2hex("zz12", 4, bytes, 2), 2);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(bytes[1], 0x12);
}

TEST(str2hex, equals_the_reference)
{
    Random random(7);
    for (int i = 0; i < rounds; i++) {
        const std::string text = random_text(random, "0123456789abcdefABCDEF xz-", 0, 24);
        const int length = between(random, 0, static_cast<int>(text.size())), max = between(random, 0, 14);
        Bytes got(14), expected = reference::str2hex(text, length, max);
        ASSERT_EQ(str2hex(text.c_str(), length, got.data(), max), static_cast<int>(expected.size()));
        expected.resize(got.size());
        ASSERT_EQ(got, expected) << '"' << text << '"' << length << ' ' << max;
    }
}

TEST(strappend, appends_and_returns_the_new_length)
{
    char text[20] = "ab";
    EXPECT_EQ(strappend(text, sizeof text, "&%d", -7), 5);
    EXPECT_STREQ(text, "ab&-7");
    EXPECT_EQ(strappend(text, sizeof text, "%s", ""), 5);
}

TEST(strappend, on_a_full_buffer_returns_0)
{
    char text[4] = "abc";
    EXPECT_EQ(strappend(text, sizeof text, "%d", 1), 0);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(strappend(text, 2, "%d", 1), 0); // longer than the capacity already
    EXPECT_EQ(strappend(text, 0, "%d", 1), 0);
    EXPECT_STREQ(text, "abc");
}

TEST(strappend, cut_text_returns_capacity_minus_1)
{
    char text[6] = "ab";
    EXPECT_EQ(strappend(text, sizeof text, "%s", "cdef"), 5);
    EXPECT_STREQ(text, "abcde");
}

TEST(strappend, text_that_just_fits_is_whole)
{
    char text[6] = "ab";
    EXPECT_EQ(strappend(text, sizeof text, "%s", "cde"), 5);
    EXPECT_STREQ(text, "abcde");
}

TEST(strappend, equals_the_reference)
{
    Random random(8);
    for (int i = 0; i < rounds; i++) {
        const std::string before = random_text(random, "ab", 0, 12), value = random_text(random, "%xy", 0, 12);
        const int capacity = between(random, 0, 26);
        char got[32] = "";
        strcpy(got, before.c_str());
        const auto expected = reference::strappend(before, capacity, value);
        ASSERT_EQ(strappend(got, capacity, "%s", value.c_str()), expected.result);
        ASSERT_EQ(got, expected.text) << before << '+' << value << " into " << capacity;
    }
}

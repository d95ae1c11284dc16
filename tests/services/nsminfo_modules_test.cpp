// The network service module's tables: optical modules, cable diagnostics, DoS protection,
// DNS and the global settings.
#include "tests/services/support.h"

using namespace support;

TEST(nsminfo_modules, optical_has_seventeen_positions)
{
    EXPECT_BOTH_WAYS("oltmib_optical_get_1", "1&ge1&3&4&5&6&7&8&9&10&11&12&13&14&text&15&16", 1, chars(32, "ge1"),
                     counting(3, 12), chars(32, "text"), 15, 16);
}

namespace
{
// An optical module's row around its alarm, as text and on the wire.
const std::string detail_head = "1&ge1&3&four&five&six&7&8&9&10&11&12&13&14&fifteen&16&";
const std::string detail_tail = "&nineteen&twenty&t21&t22&t23&t24&t25&26&27";
const Units detail_before = wire(1, chars(32, "ge1"), 3, chars(32, "four"), chars(32, "five"), chars(32, "six"),
                                 counting(7, 8), chars(32, "fifteen"), 16);
const Units detail_after = wire(chars(32, "nineteen"), chars(32, "twenty"), chars(32, "t21"), chars(32, "t22"),
                                chars(32, "t23"), chars(32, "t24"), chars(32, "t25"), 26, 27);
const char detail_get[] = "oltmib_opticaldetail_get_1";

// The text of a reply that says it has `length` alarm bytes; the array holds 01 to 20 in hex, field19 letters.
std::string alarm_of(int length)
{
    const std::string letters = "abcdefghijklmnopqrstuvwxyzabcdef";
    const std::string text =
        text_of(detail_get, wire(detail_before, length, counting(1, 32), chars(32, letters), zeros(6 * 32), 26, 27));
    const std::string tail = "&" + letters + "&&&&&&&26&27";
    EXPECT_EQ(text.substr(0, detail_head.size()), detail_head);
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
    return text.substr(detail_head.size(), text.size() - tail.size() - detail_head.size());
}

const std::string alarm_bytes = "0102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20";
} // namespace

TEST(nsminfo_modules, opticaldetail_seventeenth_field_is_its_alarm)
{
    EXPECT_BOTH_WAYS(detail_get, detail_head + "0a0b0c" + detail_tail, detail_before, 3, 0x0A, 0x0B, 0x0C, zeros(29),
                     detail_after);
}

TEST(nsminfo_modules, opticaldetail_reads_twenty_six_positions_and_no_more)
{
    EXPECT_REQUEST("oltmib_opticaldetail_set_1", detail_head + "0a" + detail_tail + repeated("&x", 30), detail_before,
                   1, 0x0A, zeros(31), detail_after);
}

TEST(nsminfo_modules, alarm_digits_of_either_case)
{
    EXPECT_REQUEST(detail_get, detail_head + "aBFfa9" + detail_tail, detail_before, 3, chars(32, "\xAB\xFF\xA9"),
                   detail_after);
    EXPECT_REPLY(detail_get, detail_head + "abffa9" + detail_tail, detail_before, 3, chars(32, "\xAB\xFF\xA9"),
                 detail_after);
}

TEST(nsminfo_modules, alarm_without_digits_is_empty)
{
    EXPECT_BOTH_WAYS(detail_get, detail_head + detail_tail, detail_before, 0, zeros(32), detail_after);
}

TEST(nsminfo_modules, alarm_ignores_an_odd_digit)
{
    EXPECT_REQUEST(detail_get, detail_head + "0a0b0" + detail_tail, detail_before, 2, 0x0A, 0x0B, zeros(30),
                   detail_after);
    EXPECT_REQUEST(detail_get, detail_head + "7" + detail_tail, detail_before, 0, zeros(32), detail_after);
}

TEST(nsminfo_modules, alarm_keeps_32_bytes)
{
    for (const char* more : {"", "2", "21", "2122", "21222324252627"})
        EXPECT_REQUEST(detail_get, detail_head + alarm_bytes + more + detail_tail, detail_before, 32, counting(1, 32),
                       detail_after);
}

TEST(nsminfo_modules, alarm_pair_that_does_not_scan_repeats_the_byte_before)
{
    EXPECT_REQUEST(detail_get, detail_head + "0azz0b" + detail_tail, detail_before, 3, 0x0A, 0x0A, 0x0B, zeros(29),
                   detail_after);
    EXPECT_REQUEST(detail_get, detail_head + "zz0b" + detail_tail, detail_before, 2, 0, 0x0B, zeros(30), detail_after);
}

TEST(nsminfo_modules, alarm_len_of_a_reply_says_how_many_bytes_are_shown)
{
    EXPECT_EQ(alarm_of(0), "");
    EXPECT_EQ(alarm_of(1), "01");
    EXPECT_EQ(alarm_of(32), alarm_bytes);
}

TEST(nsminfo_modules, negative_alarm_len_shows_nothing)
{
    EXPECT_EQ(alarm_of(-1), "");
    EXPECT_EQ(alarm_of(INT32_MIN), "");
}

// Above 32 the bytes that follow in the record are shown, as far as the text's
// 100 characters reach: 49 whole bytes and a digit, never a byte further.
TEST(nsminfo_modules, alarm_len_above_32_shows_the_bytes_that_follow)
{
    EXPECT_EQ(alarm_of(33), alarm_bytes + "61");
    EXPECT_EQ(alarm_of(48), alarm_bytes + "6162636465666768696a6b6c6d6e6f70");
    EXPECT_EQ(alarm_of(49), alarm_bytes + "6162636465666768696a6b6c6d6e6f7071");
    for (const int length : {50, 51, 100, 1000, INT32_MAX})
        EXPECT_EQ(alarm_of(length), alarm_bytes + "6162636465666768696a6b6c6d6e6f70717") << length;
}

TEST(nsminfo_modules, opticaldetail_formatter_traces_alarm_and_text)
{
    EXPECT_EQ(formatter_trace(detail_get, wire(detail_before, 3, 0x0A, 0x0B, 0x0C, zeros(29), detail_after)),
              "[arg2str_opticaldetail: 1109]alarmstr: 0a0b0c, len 3.\r\n"
              "[arg2str_opticaldetail: 1110]str: " +
                  detail_head + "0a0b0c" + detail_tail + ".\r\n");
    EXPECT_EQ(formatter_trace(detail_get, wire(zeros(171), -1, zeros(258))),
              "[arg2str_opticaldetail: 1109]alarmstr: , len -1.\r\n"
              "[arg2str_opticaldetail: 1110]str: 0&&0&&&&0&0&0&0&0&0&0&0&&0&&&&&&&&&0&0.\r\n");
    EXPECT_EQ(formatter_trace(detail_get, wire(zeros(171), 1000, zeros(258))),
              "[arg2str_opticaldetail: 1109]alarmstr: " + repeated("0", 99) +
                  ", len 1000.\r\n"
                  "[arg2str_opticaldetail: 1110]str: 0&&0&&&&0&0&0&0&0&0&0&0&&0&" +
                  repeated("0", 99) + "&&&&&&&&0&0.\r\n");
}

TEST(nsminfo_modules, cabledetect_has_thirteen_positions)
{
    EXPECT_BOTH_WAYS("oltmib_cabledetect_get_1", "1&ge1&3&4&5&6&a&b&c&d&text&7&8", 1, chars(32, "ge1"), 3, 4, 5, 6,
                     chars(16, "a"), chars(16, "b"), chars(16, "c"), chars(16, "d"), chars(32, "text"), 7, 8);
}

TEST(nsminfo_modules, dos_has_eleven_positions_and_sends_no_counters)
{
    for (const char* name : {"oltmib_dosglobal_get_1", "oltmib_dosglobal_set_1", "oltmib_dosif_get_1",
                             "oltmib_dosif_getn_1", "oltmib_dosif_set_1"})
        EXPECT_REQUEST(name, "1&ge1&3&4&5&6&77&88&text&9&10", 1, chars(32, "ge1"), 3, 4, 5, 6, zeros(4),
                       chars(32, "text"), 9, 10);
}

TEST(nsminfo_modules, dos_counters_are_unsigned_in_seventh_and_eighth_position)
{
    EXPECT_REPLY("oltmib_dosglobal_get_1", "1&ge1&3&4&5&6&4294967296&18446744073709551615&text&9&10", 1,
                 chars(32, "ge1"), 3, 4, 5, 6, 0, 1, words(~0ULL), chars(32, "text"), 9, 10);
    EXPECT_REPLY("oltmib_dosif_getn_1", "1&ge1&3&4&5&6&4294967298&7&text&9&10", 1, chars(32, "ge1"), 3, 4, 5, 6, 2, 1,
                 7, 0, chars(32, "text"), 9, 10);
}

// Servers, domains and hosts take one text; only the procedures differ.
TEST(nsminfo_modules, dns_tables_share_one_text)
{
    for (const char* name : {"oltmib_dnserver_get_1", "oltmib_dnsdomain_get_1", "oltmib_dnshost_get_1"}) {
        EXPECT_BOTH_WAYS(name, "one&two&three&4&text&5&6", chars(65, "one"), chars(64, "two"), chars(64, "three"), 4,
                         chars(32, "text"), 5, 6);
        EXPECT_REQUEST(name, repeated("a", 70) + "&" + repeated("b", 70), chars(65, repeated("a", 64)),
                       chars(64, repeated("b", 63)), zeros(64 + 35));
    }
}

TEST(nsminfo_modules, nsm_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_nsm_get_1", "one&two&3&4", chars(80, "one"), chars(800, "two"), 3, 4);
    EXPECT_REQUEST("oltmib_nsm_set_1", repeated("a", 90) + "&" + repeated("b", 900) + "&3&4",
                   chars(80, repeated("a", 79)), chars(800, repeated("b", 799)), 3, 4);
}

// The longest text that terminated fields can give has 903 characters.
TEST(nsminfo_modules, nsm_text_of_full_fields)
{
    EXPECT_REPLY("oltmib_nsm_get_1", repeated("a", 79) + "&" + repeated("b", 799) + "&-2147483648&-2147483648",
                 chars(80, repeated("a", 79)), chars(800, repeated("b", 799)), 0x80000000, 0x80000000);
    EXPECT_REPLY("oltmib_nsm_get_1", repeated("a", 80) + "&" + repeated("b", 800) + "&3&4",
                 chars(80, repeated("a", 80)), chars(800, repeated("b", 800)), 3, 4);
}

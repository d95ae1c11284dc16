// The authentication service's tables: what they send and what they make of a
// reply, and where they are unlike their neighbours.
#include "tests/services/support.h"

using namespace support;

// Four fields, a number, a word and two numbers, in that order both ways.
TEST(auth, global_takes_four_fields_in_order)
{
    EXPECT_BOTH_WAYS("oltmib_auth_global_get_1", "5&word&7&9", 5, chars(32, "word"), 7, 9);
    EXPECT_REQUEST("oltmib_auth_global_set_1", "5&word&7&9", 5, chars(32, "word"), 7, 9);
}

TEST(auth, sets_reply_with_their_status)
{
    for (const char* name : {"oltmib_auth_global_set_1", "oltmib_d1x_pcfg_set_1", "oltmib_macauth_pcfg_set_1",
                             "oltmib_radglobal_set_1", "oltmib_radsrv_set_1"}) {
        EXPECT_REPLY(name, "0", 0);
        EXPECT_REPLY(name, "-3", -3);
    }
}

TEST(auth, d1x_pcfg_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_d1x_pcfg_get_1", "1&ge1&11&12&13&14&15&16&17&18&19&20&text&2&3", 1, chars(40, "ge1"),
                     counting(11, 10), chars(32, "text"), 2, 3);
    EXPECT_REQUEST("oltmib_d1x_pcfg_getn_1", "4", 4, zeros(84));
    EXPECT_REQUEST("oltmib_d1x_pcfg_set_1", "4", 4, zeros(84));
}

TEST(auth, text_40_keeps_thirty_nine_characters)
{
    const std::string kept(39, 'x');
    EXPECT_REQUEST("oltmib_d1x_pcfg_get_1", "1&" + kept + "yyyyyy&5", 1, chars(40, kept), 5, zeros(43));
    EXPECT_REQUEST("oltmib_macauth_pcfg_get_1", "1&" + kept + "yyyyyy&5", 1, chars(40, kept), 5, zeros(39));
}

// Of 24 ints the text has four places; the fourth is int7's.
TEST(auth, d1x_pst_takes_int_7_from_the_sixth_field)
{
    EXPECT_REQUEST("oltmib_d1x_pst_get_1", "1&ge1&11&12&13&77&text&2&3", 1, chars(40, "ge1"), 11, 12, 13, 0, 0, 0, 77,
                   zeros(17), chars(32, "text"), 2, 3);
    EXPECT_REQUEST("oltmib_d1x_pst_getn_1", "1&&&&&77", 1, zeros(40), zeros(6), 77, zeros(17), zeros(34));
}

TEST(auth, d1x_pst_shows_four_of_its_ints)
{
    EXPECT_REPLY("oltmib_d1x_pst_get_1", "1&ge1&101&102&103&107&text&2&3", 1, chars(40, "ge1"), counting(101, 24),
                 chars(32, "text"), 2, 3);
}

TEST(auth, macauth_pcfg_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_macauth_pcfg_get_1", "1&ge1&11&12&13&14&15&16&text&2&3", 1, chars(40, "ge1"),
                     counting(11, 6), chars(32, "text"), 2, 3);
    EXPECT_REQUEST("oltmib_macauth_pcfg_getn_1", "4", 4, zeros(80));
    EXPECT_REQUEST("oltmib_macauth_pcfg_set_1", "4", 4, zeros(80));
}

// Not the first field, as in the other tables of ports, but the fifth.
TEST(auth, macauth_user_has_its_ifx_in_fifth_place)
{
    EXPECT_BOTH_WAYS("oltmib_macauth_user_get_1", "1&00-11-22-33-44-55&2&3&9&ge9&text&4&5", 1,
                     ints(0, 0x11, 0x22, 0x33, 0x44, 0x55), 2, 3, 9, chars(40, "ge9"), chars(32, "text"), 4, 5);
    EXPECT_EQ(parser_trace("oltmib_macauth_user_get_1", "1&&2&3&9&ge9&text&4&5"),
              "[str2arg_macauthuser: 147]ifx 9, oper 4.\r\n");
}

TEST(auth, macauth_user_reads_any_mac_notation_and_shows_one)
{
    for (const char* notation : {"00:1a:2b:3c:4d:5e", "001a.2b3c.4d5e", "00-1A-2B-3C-4D-5E", "001A2b3c4D5e"})
        EXPECT_REQUEST("oltmib_macauth_user_getn_1", std::string("7&") + notation, 7,
                       ints(0, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E), zeros(77));
    EXPECT_REPLY("oltmib_macauth_user_getn_1", "7&00-1A-2B-3C-4D-5E&0&0&0&&&0&0", 7,
                 ints(0, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E), zeros(77));
}

TEST(auth, macauth_user_mac_is_zero_from_where_its_scan_stopped)
{
    EXPECT_REQUEST("oltmib_macauth_user_get_1", "7&10:20:zz:40:50:60", 7, ints(0x10, 0x20, 0, 0, 0, 0), zeros(77));
    EXPECT_REQUEST("oltmib_macauth_user_get_1", "7&no address", 7, zeros(83));
    EXPECT_REQUEST("oltmib_macauth_user_get_1", "7&", 7, zeros(83));
}

// A byte above 127 travels as the host's char, and comes back from either form.
TEST(auth, macauth_user_mac_bytes_above_127)
{
    EXPECT_REQUEST("oltmib_macauth_user_get_1", "0&a9-ff-80-7f-00-01", 0,
                   chars(6, std::string("\xA9\xFF\x80\x7F\x00\x01", 6)), zeros(77));
    const char* text = "0&A9-FF-80-7F-00-01&0&0&0&&&0&0";
    EXPECT_REPLY("oltmib_macauth_user_get_1", text, 0, ints(0xA9, 0xFF, 0x80, 0x7F, 0, 1), zeros(77));
    EXPECT_REPLY("oltmib_macauth_user_get_1", text, 0, ints(0xFFFFFFA9, 0xFFFFFFFF, 0xFFFFFF80, 0x7F, 0, 1), zeros(77));
}

TEST(auth, radglobal_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_radglobal_get_1", "1&key&2&3&4&source&5&text&6&7", 1, chars(64, "key"), 2, 3, 4,
                     chars(40, "source"), 5, chars(32, "text"), 6, 7);
    EXPECT_REQUEST("oltmib_radglobal_set_1", "1&" + repeated("k", 70), 1, chars(64, repeated("k", 63)), zeros(78));
}

TEST(auth, radglobal_has_no_parser_trace)
{
    EXPECT_EQ(parser_trace("oltmib_radglobal_get_1", "1&key&2&3&4&source&5&text&6&7"), "");
    EXPECT_EQ(formatter_trace("oltmib_radglobal_get_1", wire(1, zeros(142))),
              "[arg2str_radglobal: 185]str: 1&&0&0&0&&0&&0&0.\r\n");
}

TEST(auth, radsrv_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_radsrv_get_1", "10.0.0.1&1&2&3&key&4&5&text&6&7", chars(32, "10.0.0.1"), 1, 2, 3,
                     chars(64, "key"), 4, 5, chars(32, "text"), 6, 7);
    EXPECT_REQUEST("oltmib_radsrv_getn_1", "10.0.0.1", chars(32, "10.0.0.1"), zeros(103));
    EXPECT_REQUEST("oltmib_radsrv_set_1", "10.0.0.1", chars(32, "10.0.0.1"), zeros(103));
}

// A daemon may fill a text's array to its last byte; none beyond is shown.
TEST(auth, texts_of_a_reply_need_no_nul)
{
    const std::string ip(32, 'i'), key(64, 'k'), text(32, 't');
    EXPECT_REPLY("oltmib_radsrv_get_1", ip + "&1&2&3&" + key + "&4&5&" + text + "&6&7", chars(32, ip), 1, 2, 3,
                 chars(64, key), 4, 5, chars(32, text), 6, 7);
}

TEST(auth, parsers_trace)
{
    EXPECT_EQ(parser_trace("oltmib_auth_global_get_1", "5&word&7&9"), "[str2arg_authglobal: 21]config 5, oper 7.\r\n");
    EXPECT_EQ(parser_trace("oltmib_d1x_pcfg_get_1", "1&ge1&&&&&&&&&&&text&2&3"),
              "[str2arg_d1xpcfg: 56]ifx 1, oper 2.\r\n");
    EXPECT_EQ(parser_trace("oltmib_d1x_pst_get_1", "1&ge1&11&12&13&77&text&2&3"),
              "[str2arg_d1xpst: 86]ifx 1, oper 2.\r\n");
    EXPECT_EQ(parser_trace("oltmib_macauth_pcfg_get_1", "1&ge1&&&&&&&text&2&3"),
              "[str2arg_macauthpcfg: 117]ifx 1, oper 2.\r\n");
    EXPECT_EQ(parser_trace("oltmib_radsrv_get_1", "10.0.0.1&1&2&3&key&4&5&text&6&7"),
              "[str2arg_radsrv: 206]ip 10.0.0.1, oper 6.\r\n");
}

TEST(auth, formatters_trace)
{
    EXPECT_EQ(formatter_trace("oltmib_auth_global_get_1", wire(5, chars(32, "word"), 7, 9)),
              "[arg2str_authglobal: 30]str: 5&word&7&9.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_d1x_pcfg_get_1", wire(1, zeros(84))),
              "[arg2str_d1xpcfg: 66]str: 1&&0&0&0&0&0&0&0&0&0&0&&0&0.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_d1x_pst_get_1", wire(1, zeros(98))),
              "[arg2str_d1xpst: 95]str: 1&&0&0&0&0&&0&0.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_macauth_pcfg_get_1", wire(1, zeros(80))),
              "[arg2str_macauthpcfg: 127]str: 1&&0&0&0&0&0&0&&0&0.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_macauth_user_get_1", wire(1, zeros(83))),
              "[arg2str_macauthuser: 156]str: 1&00-00-00-00-00-00&0&0&0&&&0&0.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_radsrv_get_1", wire(chars(32, "10.0.0.1"), zeros(103))),
              "[arg2str_radsrv: 215]str: 10.0.0.1&0&0&0&&0&0&&0&0.\r\n");
}

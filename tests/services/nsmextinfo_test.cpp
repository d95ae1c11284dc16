// The NSM extension service: power over Ethernet, port security, authenticated
// addresses and IP source guard.
#include "tests/services/support.h"

using namespace support;

namespace
{
const std::string mac_00_to_55("\x00\x11\x22\x33\x44\x55", 6);
const std::string mac_aa_to_ff("\xAA\xBB\xCC\xDD\xEE\xFF", 6);
} // namespace

// The ports' settings stand before the system's information, though their
// procedures come later.
// Power over Ethernet.

TEST(nsmextinfo, power_settings_carry_seven_fields)
{
    EXPECT_BOTH_WAYS("oltmib_poeconf_get_1", "1&2&3&4&t&5&6", 1, 2, 3, 4, chars(32, "t"), 5, 6);
    EXPECT_REQUEST("oltmib_poeconf_set_1", "1&2&3&4&t&5&6", 1, 2, 3, 4, chars(32, "t"), 5, 6);
}

TEST(nsmextinfo, power_information_carries_five_fields)
{
    EXPECT_BOTH_WAYS("oltmib_poeinfo_get_1", "1&2&t&3&4", 1, 2, chars(32, "t"), 3, 4);
    EXPECT_REQUEST("oltmib_poeinfo_set_1", "1&2&t&3&4", 1, 2, chars(32, "t"), 3, 4);
}

TEST(nsmextinfo, port_power_settings_carry_sixteen_fields)
{
    const Units record = wire(1, chars(32, "eth1"), 2, chars(40, "camera"), 3, 4, 5, 6, chars(32, "c"), 7, 8, 9, 10,
                              chars(32, "d"), 11, 12);
    ASSERT_EQ(record.size(), 148U);
    const std::string text = "1&eth1&2&camera&3&4&5&6&c&7&8&9&10&d&11&12";
    EXPECT_BOTH_WAYS("oltmib_poeifconf_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_poeifconf_getn_1", text, record);
    EXPECT_REQUEST("oltmib_poeifconf_set_1", text, record);
}

TEST(nsmextinfo, port_power_keeps_39_characters_of_its_second_text_and_31_of_the_others)
{
    const std::string x40(40, 'x');
    const Units x31 = chars(32, std::string(31, 'x'));
    EXPECT_REQUEST("oltmib_poeifconf_get_1", "1&" + x40 + "&2&" + x40 + "&3&4&5&6&" + x40 + "&7&8&9&10&" + x40, 1, x31,
                   2, chars(40, std::string(39, 'x')), 3, 4, 5, 6, x31, 7, 8, 9, 10, x31, 0, 0);
    EXPECT_REQUEST("oltmib_poeconf_get_1", "1&2&3&4&" + x40, 1, 2, 3, 4, x31, 0, 0);
    EXPECT_REQUEST("oltmib_poeinfo_get_1", "1&2&" + x40, 1, 2, x31, 0, 0);
    EXPECT_REQUEST("oltmib_poeifinfo_get_1", "1&" + x40 + "&2&3&" + x40, 1, x31, 2, 3, x31, zeros(11 + 32 + 2));
}

TEST(nsmextinfo, empty_port_power_argument_sends_zeros_and_returns_nineteen_fields)
{
    EXPECT_REQUEST("oltmib_poeifinfo_get_1", "", zeros(112));
    EXPECT_REPLY("oltmib_poeifinfo_get_1", "0&&0&0&&0&0&0&0&0&0&0&0&0&0&0&&0&0", zeros(112));
    const Units record = wire(1, chars(32, "eth1"), 2, 3, chars(32, "b"), counting(4, 11), chars(32, "c"), 15, 16);
    ASSERT_EQ(record.size(), 112U);
    const std::string text = "1&eth1&2&3&b&4&5&6&7&8&9&10&11&12&13&14&c&15&16";
    EXPECT_BOTH_WAYS("oltmib_poeifinfo_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_poeifinfo_getn_1", text, record);
    EXPECT_REQUEST("oltmib_poeifinfo_set_1", text, record);
}

// Authenticated addresses, port security, IP source guard.

TEST(nsmextinfo, authenticated_address_carries_ten_fields)
{
    const Units record = wire(1, chars(6, mac_aa_to_ff), 2, 3, 4, 5, chars(32, "a"), chars(32, "b"), 6, 7);
    ASSERT_EQ(record.size(), 77U);
    EXPECT_BOTH_WAYS("oltmib_nsmauthmac_get_1", "1&AA-BB-CC-DD-EE-FF&2&3&4&5&a&b&6&7", record);
    EXPECT_BOTH_WAYS("oltmib_nsmauthmac_getn_1", "1&AA-BB-CC-DD-EE-FF&2&3&4&5&a&b&6&7", record);
    EXPECT_REQUEST("oltmib_nsmauthmac_set_1", "1&AA-BB-CC-DD-EE-FF&2&3&4&5&a&b&6&7", record);
}

TEST(nsmextinfo, port_security_carries_eleven_fields)
{
    const Units record = wire(1, chars(32, "eth1"), counting(2, 6), chars(32, "t"), 8, 9);
    ASSERT_EQ(record.size(), 73U);
    EXPECT_BOTH_WAYS("oltmib_nsmps_get_1", "1&eth1&2&3&4&5&6&7&t&8&9", record);
    EXPECT_BOTH_WAYS("oltmib_nsmps_getn_1", "1&eth1&2&3&4&5&6&7&t&8&9", record);
    EXPECT_REQUEST("oltmib_nsmps_set_1", "1&eth1&2&3&4&5&6&7&t&8&9", record);
}

TEST(nsmextinfo, secure_address_with_dots_is_sent_as_six_bytes_and_comes_back_with_dashes)
{
    const Units record = wire(1, chars(32, "eth1"), 2, chars(6, mac_00_to_55), 3, chars(32, "t"), 4, 5);
    ASSERT_EQ(record.size(), 75U);
    EXPECT_REQUEST("oltmib_nsmpsmac_get_1", "1&eth1&2&0011.2233.4455&3&t&4&5", record);
    EXPECT_REPLY("oltmib_nsmpsmac_get_1", "1&eth1&2&00-11-22-33-44-55&3&t&4&5", record);
    EXPECT_BOTH_WAYS("oltmib_nsmpsmac_getn_1", "1&eth1&2&00-11-22-33-44-55&3&t&4&5", record);
    EXPECT_REQUEST("oltmib_nsmpsmac_set_1", "1&eth1&2&0011.2233.4455&3&t&4&5", record);
    EXPECT_REQUEST("oltmib_nsmpsmac_get_1", "1&eth1&2&nonsense&3", 1, chars(32, "eth1"), 2, zeros(6), 3, zeros(34));
}

TEST(nsmextinfo, empty_security_state_argument_returns_sixteen_fields_and_a_zero_address)
{
    EXPECT_REQUEST("oltmib_nsmpsstate_get_1", "", zeros(114));
    EXPECT_REPLY("oltmib_nsmpsstate_get_1", "0&&0&0&0&0&0&0&0&0&0&00-00-00-00-00-00&&&0&0", zeros(114));
    const Units record =
        wire(1, chars(32, "eth1"), counting(2, 9), chars(6, mac_00_to_55), chars(32, "a"), chars(32, "b"), 11, 12);
    ASSERT_EQ(record.size(), 114U);
    const std::string text = "1&eth1&2&3&4&5&6&7&8&9&10&00-11-22-33-44-55&a&b&11&12";
    EXPECT_BOTH_WAYS("oltmib_nsmpsstate_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_nsmpsstate_getn_1", text, record);
}

TEST(nsmextinfo, secure_address_state_carries_nine_fields)
{
    const Units record = wire(1, chars(32, "eth1"), 2, chars(6, mac_00_to_55), 3, 4, chars(32, "t"), 5, 6);
    ASSERT_EQ(record.size(), 76U);
    EXPECT_BOTH_WAYS("oltmib_nsmpsmacstate_get_1", "1&eth1&2&00-11-22-33-44-55&3&4&t&5&6", record);
    EXPECT_BOTH_WAYS("oltmib_nsmpsmacstate_getn_1", "1&eth1&2&00-11-22-33-44-55&3&4&t&5&6", record);
}

TEST(nsmextinfo, source_guard_of_a_port_carries_nine_fields)
{
    const Units record = wire(1, chars(32, "eth1"), 2, 3, 4, 5, chars(32, "t"), 6, 7);
    ASSERT_EQ(record.size(), 71U);
    EXPECT_BOTH_WAYS("oltmib_nsmipsgif_get_1", "1&eth1&2&3&4&5&t&6&7", record);
    EXPECT_BOTH_WAYS("oltmib_nsmipsgif_getn_1", "1&eth1&2&3&4&5&t&6&7", record);
    EXPECT_REQUEST("oltmib_nsmipsgif_set_1", "1&eth1&2&3&4&5&t&6&7", record);
}

TEST(nsmextinfo, source_guard_binding_carries_nine_fields)
{
    const Units record =
        wire(1, chars(32, "eth1"), 2, chars(6, mac_aa_to_ff), chars(32, "192.0.2.1"), 3, chars(32, "t"), 4, 5);
    ASSERT_EQ(record.size(), 107U);
    const std::string text = "1&eth1&2&AA-BB-CC-DD-EE-FF&192.0.2.1&3&t&4&5";
    EXPECT_BOTH_WAYS("oltmib_nsmipsguser_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_nsmipsguser_getn_1", text, record);
    EXPECT_REQUEST("oltmib_nsmipsguser_set_1", text, record);
}

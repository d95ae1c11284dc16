// The VRRP service. The configuration's trace shows the interface twice.
#include "tests/services/support.h"

using namespace support;

TEST(vrrpinfo, configuration_carries_thirteen_fields)
{
    const Units record =
        wire(7, chars(40, "vlan10"), chars(32, "192.0.2.1"), 1, 2, 3, 4, chars(40, "b"), 5, 6, chars(32, "c"), 8, 9);
    ASSERT_EQ(record.size(), 153U);
    const std::string text = "7&vlan10&192.0.2.1&1&2&3&4&b&5&6&c&8&9";
    EXPECT_BOTH_WAYS("oltmib_vrrp_ssconf_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_vrrp_ssconf_getn_1", text, record);
    EXPECT_REQUEST("oltmib_vrrp_ssconf_set_1", text, record);
}

TEST(vrrpinfo, state_carries_nine_fields)
{
    const Units record = wire(7, 1, 2, 3, 4, 5, chars(32, "t"), 6, 8);
    ASSERT_EQ(record.size(), 40U);
    EXPECT_BOTH_WAYS("oltmib_vrrp_ssstate_get_1", "7&1&2&3&4&5&t&6&8", record);
    EXPECT_BOTH_WAYS("oltmib_vrrp_ssstate_getn_1", "7&1&2&3&4&5&t&6&8", record);
    EXPECT_REQUEST("oltmib_vrrp_ssstate_set_1", "7&1&2&3&4&5&t&6&8", record);
}

TEST(vrrpinfo, configuration_keeps_39_characters_of_its_long_texts_and_31_of_the_others)
{
    const std::string x50(50, 'x');
    EXPECT_REQUEST("oltmib_vrrp_ssconf_get_1", "1&" + x50 + "&" + x50 + "&&&&&" + x50 + "&&&" + x50, 1,
                   chars(40, std::string(39, 'x')), chars(32, std::string(31, 'x')), zeros(4),
                   chars(40, std::string(39, 'x')), zeros(2), chars(32, std::string(31, 'x')), zeros(2));
}

TEST(vrrpinfo, configuration_trace_shows_the_interface_as_its_address_too)
{
    EXPECT_EQ(parser_trace("oltmib_vrrp_ssconf_set_1", "7&vlan10&192.0.2.1&&&&&&&&&1"),
              "[str2arg_vrrp_ssconf: 30]vrid 7, ifname vlan10, ip vlan10, oper 1.\r\n");
}

TEST(vrrpinfo, state_trace_shows_its_fourth_int_as_role)
{
    EXPECT_EQ(parser_trace("oltmib_vrrp_ssstate_get_1", "7&1&2&3&4&5&t&6&8"),
              "[str2arg_vrrp_ssstate: 58]vrid 7, role 3, oper 6.\r\n");
}

TEST(vrrpinfo, nothing_is_printed_without_the_flag)
{
    testing::internal::CaptureStdout();
    request_of("oltmib_vrrp_ssconf_set_1", "7&vlan10&192.0.2.1&&&&&&&&&1");
    request_of("oltmib_vrrp_ssstate_get_1", "7");
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

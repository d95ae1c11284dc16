// The services of a table or two: DHCP snooping, SDSM, IPC ioctl, routes, loop detection and
// VRRP.
#include "services/dhcpsnp/records.h"
#include "services/sdsminfo/records.h"
#include "tests/services/support.h"

using namespace support;

// The DHCP snooping and the SDSM service: the same shape twice, nothing shared.

extern "C" {
void* str2arg_dhcpsnp(char* text);
char* arg2str_dhcpsnp(void* reply);
void* str2arg_sdsminfo(char* text);
char* arg2str_sdsminfo(void* reply);
}

namespace
{
const Service& dhcpsnp = service_named("dhcpsnp");
const Service& sdsminfo = service_named("sdsminfo");
} // namespace

TEST(dhcpsnp, carries_two_texts_and_two_ints)
{
    EXPECT_BOTH_WAYS("oltmib_dhcpsnp_get_1", "a&b&-1&2", chars(80, "a"), chars(512, "b"), -1, 2);
    EXPECT_REQUEST("oltmib_dhcpsnp_set_1", "a&b&-1&2", chars(80, "a"), chars(512, "b"), -1, 2);
    EXPECT_REPLY("oltmib_dhcpsnp_set_1", "-1", -1);
}

TEST(dhcpsnp, second_field_is_cut_to_511_characters)
{
    EXPECT_REQUEST("oltmib_dhcpsnp_get_1", std::string(90, 'a') + "&" + std::string(600, 'b') + "&1&2",
                   chars(80, std::string(79, 'a')), chars(512, std::string(511, 'b')), 1, 2);
}

TEST(dhcpsnp, reply_with_both_texts_full_still_fits)
{
    const std::string a79(79, 'a');
    const std::string b511(511, 'b');
    EXPECT_REPLY("oltmib_dhcpsnp_get_1", a79 + "&" + b511 + "&-2147483648&-2147483648", chars(80, a79),
                 chars(512, b511), ints(0x80000000U, 0x80000000U));
}

TEST(dhcpsnp, empty_argument_sends_two_empty_texts_and_two_zeros)
{
    EXPECT_REQUEST("oltmib_dhcpsnp_get_1", "", zeros(594));
}

TEST(sdsminfo, carries_two_texts_and_two_ints)
{
    EXPECT_BOTH_WAYS("oltmib_sdsminfo_get_1", "a&b&-1&2", chars(80, "a"), chars(512, "b"), -1, 2);
    EXPECT_REQUEST("oltmib_sdsminfo_set_1", "a&b&-1&2", chars(80, "a"), chars(512, "b"), -1, 2);
    EXPECT_REPLY("oltmib_sdsminfo_set_1", "-1", -1);
}

TEST(sdsminfo, one_field_sends_an_empty_second_text_and_two_zeros)
{
    EXPECT_REQUEST("oltmib_sdsminfo_get_1", "only", chars(80, "only"), zeros(512 + 2));
}

TEST(sdsminfo, second_field_of_600_characters_is_cut_to_511)
{
    EXPECT_REQUEST("oltmib_sdsminfo_get_1", "a&" + std::string(600, 'b'), chars(80, "a"),
                   chars(512, std::string(511, 'b')), 0, 0);
}

TEST(dhcpsnp_and_sdsminfo, share_neither_records_nor_texts_nor_replies)
{
    char first[] = "snooping&1";
    char second[] = "sdsm&2";
    void* const snooping = str2arg_dhcpsnp(first);
    void* const sdsm = str2arg_sdsminfo(second);
    EXPECT_EQ(units_of_record(*api_named("oltmib_dhcpsnp_get_1").request, snooping),
              wire(chars(80, "snooping"), chars(512, "1"), 0, 0));
    EXPECT_EQ(units_of_record(*api_named("oltmib_sdsminfo_get_1").request, sdsm),
              wire(chars(80, "sdsm"), chars(512, "2"), 0, 0));

    const char* const snooping_text = arg2str_dhcpsnp(snooping);
    const char* const sdsm_text = arg2str_sdsminfo(sdsm);
    EXPECT_STREQ(snooping_text, "snooping&1&0&0");
    EXPECT_STREQ(sdsm_text, "sdsm&2&0&0");

    for (const char* verb : {"get", "set"}) {
        ScriptedClient daemon;
        daemon.reply = units(zeros(594));
        const void* reply = api_named("oltmib_dhcpsnp_" + std::string(verb) + "_1").func(snooping, daemon.get());
        const void* other = api_named("oltmib_sdsminfo_" + std::string(verb) + "_1").func(sdsm, daemon.get());
        ASSERT_NE(reply, nullptr);
        ASSERT_NE(other, nullptr);
        EXPECT_NE(reply, other);
    }
}

// The IPC ioctl service.

TEST(ipcminfo, eight_fields_come_back_with_their_texts_cut_to_31_characters)
{
    const Units record = wire(1, 2, 3, 4, chars(32, "a"), chars(32, "b"), 5, 6);
    ASSERT_EQ(record.size(), 70U);
    EXPECT_BOTH_WAYS("oltmib_ioctlinfo_get_1", "1&2&3&4&a&b&5&6", record);
    EXPECT_BOTH_WAYS("oltmib_ioctlinfo_getn_1", "1&2&3&4&a&b&5&6", record);
    EXPECT_REQUEST("oltmib_ioctlinfo_set_1", "1&2&3&4&a&b&5&6", record);
    const std::string a31(31, 'a');
    const std::string b31(31, 'b');
    EXPECT_EQ(text_of("oltmib_ioctlinfo_get_1",
                      request_of("oltmib_ioctlinfo_get_1", "1&2&3&4&" + a31 + "a&" + b31 + "bbbb&5&6")),
              "1&2&3&4&" + a31 + "&" + b31 + "&5&6");
}

TEST(ipcminfo, ints_that_are_no_numbers_are_sent_as_zeros)
{
    EXPECT_REQUEST("oltmib_ioctlinfo_get_1", "one&&0x7&- 3&a&b&five&-6x", zeros(4), chars(32, "a"), chars(32, "b"), 0,
                   -6);
}

// The routing table service.

TEST(ribinfo, nine_fields_come_back_unchanged)
{
    const Units record = wire(chars(64, "192.0.2.0"), chars(64, "255.255.255.0"), chars(32, "10.0.0.1"), 1, 2,
                              chars(32, "static"), chars(32, "t"), 3, 4);
    ASSERT_EQ(record.size(), 228U);
    const std::string text = "192.0.2.0&255.255.255.0&10.0.0.1&1&2&static&t&3&4";
    EXPECT_BOTH_WAYS("oltmib_route_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_route_getn_1", text, record);
    EXPECT_REQUEST("oltmib_route_set_1", text, record);
    EXPECT_REPLY("oltmib_route_set_1", "-1", -1);
}

TEST(ribinfo, empty_argument_sends_zeros_to_procedure_2)
{
    EXPECT_REQUEST("oltmib_route_getn_1", "", zeros(228));
    EXPECT_EQ(api_named("oltmib_route_getn_1").procedure, 2U);
}

TEST(ribinfo, first_field_of_70_characters_is_sent_as_its_first_63)
{
    EXPECT_REQUEST("oltmib_route_get_1", std::string(70, 'r'), chars(64, std::string(63, 'r')), zeros(228 - 64));
}

// The loop detection service. Its registration function is named for
// "lpdetinfo", its client for "lpdet".

namespace
{
const Service& lpdet = service_named("lpdet");
}

TEST(lpdet, global_returns_six_fields_the_fourth_a_text)
{
    EXPECT_REQUEST("oltmib_lpdet_global_get_1", "", zeros(37));
    EXPECT_REPLY("oltmib_lpdet_global_get_1", "0&0&0&&0&0", zeros(37));
    EXPECT_BOTH_WAYS("oltmib_lpdet_global_get_1", "1&2&3&t&4&5", 1, 2, 3, chars(32, "t"), 4, 5);
    EXPECT_REQUEST("oltmib_lpdet_global_set_1", "1&2&3&t&4&5", 1, 2, 3, chars(32, "t"), 4, 5);
}

TEST(lpdet, port_information_carries_eleven_fields)
{
    const Units record = wire(1, chars(32, "eth1"), 2, chars(64, "b"), chars(16, "c"), chars(16, "d"), chars(32, "e"),
                              3, chars(32, "f"), 4, 5);
    ASSERT_EQ(record.size(), 197U);
    EXPECT_BOTH_WAYS("oltmib_lpdet_portinfo_get_1", "1&eth1&2&b&c&d&e&3&f&4&5", record);
    EXPECT_BOTH_WAYS("oltmib_lpdet_portinfo_getn_1", "1&eth1&2&b&c&d&e&3&f&4&5", record);
    EXPECT_REQUEST("oltmib_lpdet_portinfo_set_1", "1&eth1&2&b&c&d&e&3&f&4&5", record);
}

TEST(lpdet, port_information_keeps_15_characters_of_its_third_text)
{
    const std::string x70(70, 'x');
    EXPECT_REQUEST("oltmib_lpdet_portinfo_get_1", "1&&2&&" + std::string(20, 'x'), 1, zeros(32), 2, zeros(64),
                   chars(16, std::string(15, 'x')), zeros(16 + 32 + 1 + 32 + 2));
    EXPECT_REQUEST(
        "oltmib_lpdet_portinfo_get_1", "1&" + x70 + "&2&" + x70 + "&" + x70 + "&" + x70 + "&" + x70 + "&3&" + x70, 1,
        chars(32, std::string(31, 'x')), 2, chars(64, std::string(63, 'x')), chars(16, std::string(15, 'x')),
        chars(16, std::string(15, 'x')), chars(32, std::string(31, 'x')), 3, chars(32, std::string(31, 'x')), 0, 0);
}

// The VRRP service. The configuration's trace shows the interface twice.

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

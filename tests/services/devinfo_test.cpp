// The device information service: what its stubs send, and the texts of its
// records.
#include <algorithm>

#include "tests/services/support.h"

using namespace support;

namespace
{
const char get[] = "oltmib_devinfo_get_1";

// The units of a device information record.
Units device_units(const char* first, const char* second, const Units& mac, const char* third, const char* fourth,
                   const char* fifth, int saveconfig, int number, const std::string& hostname, int oper, int res)
{
    return wire(chars(32, first), chars(32, second), mac, chars(32, third), chars(32, fourth), chars(32, fifth),
                saveconfig, number, chars(64, hostname), oper, res);
}

const Units device = device_units("a", "b", ints(0x00, 0x11, 0x22, 0xFFFFFFAA, 0xFFFFFFBB, 0xFFFFFFCC), "c", "d", "e",
                                  -1, -1, "host", 77, 5);
const char device_text[] = "a&b&00-11-22-AA-BB-CC&c&d&e&-1&4294967295&host&5";
} // namespace

TEST(devinfo, get_with_an_empty_argument_sends_an_all_zero_record) { EXPECT_REQUEST(get, "", zeros(234)); }

TEST(devinfo, reply_prints_the_mac_in_the_third_position_in_upper_case_with_dashes)
{
    EXPECT_REPLY(get, device_text, device);
}

TEST(devinfo, host_name_of_70_characters_is_cut_to_63_before_sending)
{
    EXPECT_REQUEST("oltmib_devinfo_set_1", "&&&&&&&&" + std::string(70, 'h'), zeros(32 + 32 + 6 + 32 + 32 + 32 + 1 + 1),
                   chars(64, std::string(63, 'h')), zeros(2));
}

TEST(devinfo, reply_text_never_contains_oper_and_ends_with_res)
{
    const std::string text = text_of(get, device);
    EXPECT_EQ(std::count(text.begin(), text.end(), '&'), 9);
    EXPECT_EQ(text.find("77"), text.npos);
    EXPECT_EQ(text.substr(text.rfind('&')), "&5");
}

TEST(devinfo, mac_text_is_not_parsed_but_copied_to_five_characters)
{
    EXPECT_REQUEST(get, "&&00:11:22:AA:BB:CC", device_units("", "", chars(6, "00:11"), "", "", "", 0, 0, "", 0, 0));
}

TEST(devinfo, fields_are_read_in_order)
{
    EXPECT_REQUEST(get, "a&b&m&c&d&e&-3&-1&host&10&11",
                   device_units("a", "b", chars(6, "m"), "c", "d", "e", -3, -1, "host", 10, 11));
}

TEST(devinfo, both_converters_trace)
{
    EXPECT_EQ(parser_trace(get, "&&&&&&1&2&olt&4"), "[str2arg_devinfo: 28]save config 1, hostname olt, oper 4.\r\n");
    EXPECT_EQ(formatter_trace(get, device), "[arg2str_devinfo: 37]str: " + std::string(device_text) + ".\r\n");
}

TEST(devinfo, capability_and_configuration_entries_carry_all_seven_fields)
{
    const char text[] = "one&two&-3&four&five&6&7";
    const Units row = wire(chars(64, "one"), chars(64, "two"), -3, chars(64, "four"), chars(32, "five"), 6, 7);
    for (const char* table : {"devcapbool", "devcapint", "devcapstr", "libconfbool", "libconfint", "libconfstr"}) {
        const std::string name = "oltmib_" + std::string(table) + "_get_1";
        EXPECT_BOTH_WAYS(name.c_str(), text, row);
        EXPECT_EQ(parser_trace(name.c_str(), text) + formatter_trace(name.c_str(), row), "") << name;
    }
}

TEST(devinfo, set_reply_of_0_is_the_text_0) { EXPECT_REPLY("oltmib_devinfo_set_1", "0", 0); }

TEST(devinfo, api_get_is_a_stub_of_procedure_4_that_is_not_registered)
{
    const Api& api = api_named("oltmib_api_get_1");
    EXPECT_FALSE(api.registered());
    ScriptedClient daemon;
    daemon.reply = units(ints(3, 4));
    const void* reply = api.func(record_of_units(*api.request, ints(1, 2)).data(), daemon.get());
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(units_of_record(*api.reply, reply), ints(3, 4));
    EXPECT_EQ(daemon.procedure, 4U);
    EXPECT_EQ(units_of(daemon.request), ints(1, 2));
    EXPECT_EQ(daemon.calls, 1);
}

TEST(devinfo, access_log_sends_its_three_ints_in_a_row)
{
    EXPECT_REQUEST("oltmib_accesslog_set_1", "who&what&1&2&3&text&4&5", chars(64, "who"), chars(64, "what"), 1, 2, 3,
                   chars(32, "text"), 4, 5);
}

// The device information service: what its stubs send, and the texts of its
// records.
#include <gtest/gtest.h>

#include "common/text.h"
#include "services/devinfo/records.h"
#include "tests/unit/support.h"

EXPORT void* str2arg_devinfo(char* text);
EXPORT char* arg2str_devinfo(void* reply);
EXPORT void* str2arg_devcap(char* text);
EXPORT char* arg2str_devcap(void* reply);
EXPORT void* str2arg_libconf(char* text);
EXPORT char* arg2str_libconf(void* reply);
EXPORT void* str2arg_accesslog(char* text);
EXPORT void* oltmib_devinfo_get_1(void* argp, CLIENT* clnt);
EXPORT void* oltmib_devinfo_set_1(void* argp, CLIENT* clnt);
EXPORT void* oltmib_api_get_1(void* argp, CLIENT* clnt);
EXPORT void* oltmib_accesslog_set_1(void* argp, CLIENT* clnt);

namespace
{
oltmib_DevInfoEntry& parse_devinfo(const std::string& text)
{
    return parsed<oltmib_DevInfoEntry>(str2arg_devinfo, text);
}

std::string text_of(oltmib_DevInfoEntry entry) { return arg2str_devinfo(&entry); }

const oltmib_DevInfoEntry device = {
    "a", "b", {0x00, 0x11, 0x22, char(0xAA), char(0xBB), char(0xCC)}, "c", "d", "e", -1, -1, "host", 77, 5};
} // namespace

TEST(devinfo, get_with_an_empty_argument_sends_an_all_zero_record)
{
    ScriptedClient client;
    EXPECT_EQ(oltmib_devinfo_get_1(&parse_devinfo(""), client.get()), nullptr); // no reply was laid ready
    EXPECT_EQ(client.procedure, 1U);
    EXPECT_EQ(client.request, Bytes(4 * 234));
}

TEST(devinfo, reply_prints_the_mac_in_the_third_position_in_upper_case_with_dashes)
{
    EXPECT_EQ(text_of(device), "a&b&00-11-22-AA-BB-CC&c&d&e&-1&4294967295&host&5");
}

TEST(devinfo, host_name_of_70_characters_is_cut_to_63_before_sending)
{
    ScriptedClient client;
    oltmib_devinfo_set_1(&parse_devinfo("&&&&&&&&" + std::string(70, 'h')), client.get());
    EXPECT_EQ(client.request,
              Bytes(4 * (32 + 32 + 6 + 32 + 32 + 32 + 1 + 1)) + text_units(std::string(63, 'h'), 64) + Bytes(4 * 2));
}

TEST(devinfo, reply_text_never_contains_oper_and_ends_with_res)
{
    const std::string text = text_of(device);
    EXPECT_EQ(std::count(text.begin(), text.end(), '&'), 9);
    EXPECT_EQ(text.find("77"), text.npos);
    EXPECT_EQ(text.substr(text.rfind('&')), "&5");
}

TEST(devinfo, mac_text_is_not_parsed_but_copied_to_five_characters)
{
    const char* mac = parse_devinfo("&&00:11:22:AA:BB:CC").mac;
    EXPECT_EQ(std::string(mac, 6), std::string("00:11\0", 6));
}

TEST(devinfo, fields_are_read_in_order)
{
    const auto& entry = parse_devinfo("a&b&m&c&d&e&-3&4294967295&host&10&11");
    EXPECT_STREQ(entry.text32a, "a");
    EXPECT_STREQ(entry.text32b, "b");
    EXPECT_STREQ(entry.mac, "m");
    EXPECT_STREQ(entry.text32c, "c");
    EXPECT_STREQ(entry.text32d, "d");
    EXPECT_STREQ(entry.text32e, "e");
    EXPECT_EQ(entry.saveconfig, -3);
    EXPECT_STREQ(entry.hostname, "host");
    EXPECT_EQ(entry.oper, 10);
    EXPECT_EQ(entry.res, 11);
}

TEST(devinfo, both_converters_trace)
{
    EXPECT_EQ(traced([] { parse_devinfo("&&&&&&1&2&olt&4"); }),
              "[str2arg_devinfo: 28]save config 1, hostname olt, oper 4.\r\n");
    EXPECT_EQ(traced([] { text_of(device); }),
              "[arg2str_devinfo: 37]str: a&b&00-11-22-AA-BB-CC&c&d&e&-1&4294967295&host&5.\r\n");
}

TEST(devinfo, capability_and_configuration_entries_print_all_seven_fields)
{
    const char* text = "one&two&-3&four&five&6&7";
    EXPECT_STREQ(arg2str_devcap(&parsed<oltmib_devcapEntry>(str2arg_devcap, text)), text);
    EXPECT_STREQ(arg2str_libconf(&parsed<oltmib_libconfEntry>(str2arg_libconf, text)), text);
    EXPECT_EQ(traced([&] { arg2str_devcap(&parsed<oltmib_devcapEntry>(str2arg_devcap, text)); }), "");
}

TEST(devinfo, set_reply_of_0_is_the_text_0)
{
    ScriptedClient client;
    client.reply = units({0});
    EXPECT_STREQ(int2str(oltmib_devinfo_set_1(&parse_devinfo(""), client.get())), "0");
    EXPECT_EQ(client.procedure, 3U);
}

TEST(devinfo, api_get_is_a_stub_of_procedure_4_that_is_not_registered)
{
    ScriptedClient client;
    client.reply = units({3, 4});
    oltmib_apiEntry request = {1, 2};
    const auto* reply = static_cast<oltmib_apiEntry*>(oltmib_api_get_1(&request, client.get()));
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(reply->int1, 3);
    EXPECT_EQ(reply->int2, 4);
    EXPECT_EQ(client.procedure, 4U);
    EXPECT_EQ(client.request, units({1, 2}));
    for_each_api([](const Service&, const Api& api) {
        if (strcmp(api.name, "oltmib_api_get_1") == 0) {
            EXPECT_FALSE(api.registered());
        }
    });
}

TEST(devinfo, access_log_sends_its_three_ints_in_a_row)
{
    ScriptedClient client;
    client.reply = units({0});
    oltmib_accesslog_set_1(str2arg_accesslog(std::string("who&what&1&2&3&text&4&5").data()), client.get());
    EXPECT_EQ(client.procedure, 13U);
    EXPECT_EQ(client.request, text_units("who", 64) + text_units("what", 64) + units({1, 2, 3}) +
                                  text_units("text", 32) + units({4, 5}));
}

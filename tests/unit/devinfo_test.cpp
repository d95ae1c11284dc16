// The device information service: what its stubs send, and the texts of its
// records.
#include <gtest/gtest.h>

#include "common/text.h"
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
void* parse_devinfo(std::string text) { return str2arg_devinfo(text.data()); }

// The units of a device information record.
Bytes device_units(const char* first, const char* second, const Bytes& mac, const char* third, const char* fourth,
                   const char* fifth, uint32_t saveconfig, uint32_t number, const std::string& hostname, uint32_t oper,
                   uint32_t res)
{
    return text_units(first, 32) + text_units(second, 32) + mac + text_units(third, 32) + text_units(fourth, 32) +
           text_units(fifth, 32) + units({saveconfig, number}) + text_units(hostname, 64) + units({oper, res});
}

// What a get sends for an argument, and its text of a reply.
Bytes request_of(const std::string& text)
{
    ScriptedClient client;
    EXPECT_EQ(oltmib_devinfo_get_1(parse_devinfo(text), client.get()), nullptr); // no reply was laid ready
    EXPECT_EQ(client.procedure, 1U);
    return client.request;
}

void* replied(const Bytes& reply)
{
    ScriptedClient client;
    client.reply = reply;
    return oltmib_devinfo_get_1(parse_devinfo(""), client.get());
}

std::string text_of(const Bytes& reply) { return arg2str_devinfo(replied(reply)); }

const Bytes device = device_units("a", "b", units({0x00, 0x11, 0x22, 0xFFFFFFAA, 0xFFFFFFBB, 0xFFFFFFCC}), "c", "d",
                                  "e", 0xFFFFFFFF, 0xFFFFFFFF, "host", 77, 5);
} // namespace

TEST(devinfo, get_with_an_empty_argument_sends_an_all_zero_record) { EXPECT_EQ(request_of(""), Bytes(4 * 234)); }

TEST(devinfo, reply_prints_the_mac_in_the_third_position_in_upper_case_with_dashes)
{
    EXPECT_EQ(text_of(device), "a&b&00-11-22-AA-BB-CC&c&d&e&-1&4294967295&host&5");
}

TEST(devinfo, host_name_of_70_characters_is_cut_to_63_before_sending)
{
    ScriptedClient client;
    oltmib_devinfo_set_1(parse_devinfo("&&&&&&&&" + std::string(70, 'h')), client.get());
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
    EXPECT_EQ(request_of("&&00:11:22:AA:BB:CC"),
              device_units("", "", text_units("00:11", 6), "", "", "", 0, 0, "", 0, 0));
}

TEST(devinfo, fields_are_read_in_order)
{
    EXPECT_EQ(request_of("a&b&m&c&d&e&-3&-1&host&10&11"),
              device_units("a", "b", text_units("m", 6), "c", "d", "e", 0xFFFFFFFD, 0xFFFFFFFF, "host", 10, 11));
}

TEST(devinfo, both_converters_trace)
{
    EXPECT_EQ(traced([] { parse_devinfo("&&&&&&1&2&olt&4"); }),
              "[str2arg_devinfo: 28]save config 1, hostname olt, oper 4.\r\n");
    void* reply = replied(device);
    EXPECT_EQ(traced([&] { arg2str_devinfo(reply); }),
              "[arg2str_devinfo: 37]str: a&b&00-11-22-AA-BB-CC&c&d&e&-1&4294967295&host&5.\r\n");
}

TEST(devinfo, capability_and_configuration_entries_print_all_seven_fields)
{
    const char* text = "one&two&-3&four&five&6&7";
    EXPECT_STREQ(arg2str_devcap(str2arg_devcap(std::string(text).data())), text);
    EXPECT_STREQ(arg2str_libconf(str2arg_libconf(std::string(text).data())), text);
    EXPECT_EQ(traced([&] { arg2str_devcap(str2arg_devcap(std::string(text).data())); }), "");
}

TEST(devinfo, set_reply_of_0_is_the_text_0)
{
    ScriptedClient client;
    client.reply = units({0});
    EXPECT_STREQ(int2str(oltmib_devinfo_set_1(parse_devinfo(""), client.get())), "0");
    EXPECT_EQ(client.procedure, 3U);
}

TEST(devinfo, api_get_is_a_stub_of_procedure_4_that_is_not_registered)
{
    ScriptedClient client;
    client.reply = units({3, 4});
    for_each_api([&](const Service&, const Api& api) {
        if (api.func != oltmib_api_get_1)
            return;
        EXPECT_FALSE(api.registered());
        Bytes sent = units({1, 2}), back(sent.size());
        Object request(*api.request);
        EXPECT_TRUE(api.request->xdr(MemoryStream(XDR_DECODE, sent.data(), sent.size()).get(), request.data()));
        void* reply = oltmib_api_get_1(request.data(), client.get());
        ASSERT_NE(reply, nullptr);
        EXPECT_TRUE(api.reply->xdr(MemoryStream(XDR_ENCODE, back.data(), back.size()).get(), reply));
        EXPECT_EQ(back, client.reply);
        EXPECT_EQ(client.procedure, 4U);
        EXPECT_EQ(client.request, sent);
    });
    EXPECT_EQ(client.calls, 1);
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

// The DHCP snooping and the SDSM service: the same shape twice, nothing shared.
#include "services/dhcpsnp/records.h"
#include "services/sdsminfo/records.h"
#include "tests/services/support.h"

using namespace support;

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
        FakeDaemon daemon;
        daemon.reply = zeros(594);
        const void* reply = api_named("oltmib_dhcpsnp_" + std::string(verb) + "_1").func(snooping, daemon.client());
        const void* other = api_named("oltmib_sdsminfo_" + std::string(verb) + "_1").func(sdsm, daemon.client());
        ASSERT_NE(reply, nullptr);
        ASSERT_NE(other, nullptr);
        EXPECT_NE(reply, other);
    }
}

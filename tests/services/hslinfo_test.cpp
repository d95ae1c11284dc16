// The hardware services layer service. Two of its sets answer as a record, and
// its unsigned counters print as ints.
#include "tests/services/support.h"

using namespace support;

extern "C" {
char* arg2str_hslinfo(void* reply);
char* arg2str_dyinggasp(void* reply);
}

// The management interface.

TEST(hslinfo, management_carries_ten_fields)
{
    const Units record = wire(1, 2, chars(20, "192.168.1.100"), chars(20, "192.168.1.1"), 3, chars(64, "a"),
                              chars(64, "b"), chars(32, "c"), 4, 5);
    ASSERT_EQ(record.size(), 205U);
    EXPECT_BOTH_WAYS("oltmib_mgmtvlan_get_1", "1&2&192.168.1.100&192.168.1.1&3&a&b&c&4&5", record);
    EXPECT_REQUEST("oltmib_mgmtvlan_set_1", "1&2&192.168.1.100&192.168.1.1&3&a&b&c&4&5", record);
}

TEST(hslinfo, management_trace_shows_address_gateway_and_oper)
{
    EXPECT_EQ(parser_trace("oltmib_mgmtvlan_get_1", "0&0&192.168.1.100&192.168.1.1&0&&&&1"),
              "[str2arg_hslinfo: 27]set ip 192.168.1.100, gateway 192.168.1.1, oper 1.\r\n");
}

TEST(hslinfo, gateway_of_25_characters_is_sent_and_traced_as_its_first_19)
{
    const std::string gateway = "abcdefghijklmnopqrstuvwxy";
    EXPECT_REQUEST("oltmib_mgmtvlan_get_1", "&&&" + gateway, zeros(2 + 20), chars(20, "abcdefghijklmnopqrs"),
                   zeros(1 + 64 + 64 + 32 + 2));
    EXPECT_EQ(parser_trace("oltmib_mgmtvlan_set_1", "&&" + gateway + "&" + gateway),
              "[str2arg_hslinfo: 27]set ip abcdefghijklmnopqrs, gateway abcdefghijklmnopqrs, oper 0.\r\n");
}

// format() copies the whole record out of the stub's storage, so
// AddressSanitizer sees that it is all there.
TEST(hslinfo, management_set_answers_through_the_records_formatter)
{
    EXPECT_EQ(api_named("oltmib_mgmtvlan_set_1").formatter->ret2str, arg2str_hslinfo);
    EXPECT_REPLY("oltmib_mgmtvlan_set_1", "-5&0&&&0&&&&0&0", -5);
    EXPECT_REPLY("oltmib_mgmtvlan_set_1", "0&0&&&0&&&&0&0", 0);
}

// Dying gasp.

TEST(hslinfo, dying_gasp_support_gets_like_a_get)
{
    for (const char* name : {"oltmib_dyinggasp_support_1", "oltmib_dyinggasp_get_1"}) {
        EXPECT_BOTH_WAYS(name, "1&2&t&3&4", 1, 2, chars(32, "t"), 3, 4);
    }
    EXPECT_REQUEST("oltmib_dyinggasp_set_1", "1&2&t&3&4", 1, 2, chars(32, "t"), 3, 4);
}

TEST(hslinfo, dying_gasp_set_answers_with_its_result_and_four_more_fields)
{
    EXPECT_EQ(api_named("oltmib_dyinggasp_set_1").formatter->ret2str, arg2str_dyinggasp);
    EXPECT_REPLY("oltmib_dyinggasp_set_1", "0&0&&0&0", 0);
    EXPECT_REPLY("oltmib_dyinggasp_set_1", "-2147483648&0&&0&0", ints(0x80000000U));
    EXPECT_REPLY("oltmib_dyinggasp_set_1", "7&0&&0&0", 7);
}

// Ports.

TEST(hslinfo, interface_mode_carries_eight_fields_in_39_units)
{
    const Units record = wire(1, 2, 3, 4, 5, chars(32, "t"), 6, 7);
    ASSERT_EQ(record.size(), 39U);
    EXPECT_BOTH_WAYS("oltmib_portintfmode_get_1", "1&2&3&4&5&t&6&7", record);
    EXPECT_BOTH_WAYS("oltmib_portintfmode_getn_1", "1&2&3&4&5&t&6&7", record);
    EXPECT_REQUEST("oltmib_portintfmode_set_1", "1&2&3&4&5&t&6&7", record);
    EXPECT_REPLY("oltmib_portintfmode_set_1", "-1", -1);
    EXPECT_EQ(parser_trace("oltmib_portintfmode_set_1", "1&2&3&4&5&t&6&7"),
              "[str2arg_hslportintfmode: 53]ifx 1, mode_flag 2, mode 3, oper 6.\r\n");
}

TEST(hslinfo, in_band_state_carries_five_fields)
{
    EXPECT_BOTH_WAYS("oltmib_portinbandan_get_1", "1&2&t&3&4", 1, 2, chars(32, "t"), 3, 4);
    EXPECT_BOTH_WAYS("oltmib_portinbandan_getn_1", "1&2&t&3&4", 1, 2, chars(32, "t"), 3, 4);
    EXPECT_REQUEST("oltmib_portinbandan_set_1", "1&2&t&3&4", 1, 2, chars(32, "t"), 3, 4);
    EXPECT_REPLY("oltmib_portinbandan_set_1", "9", 9);
    EXPECT_EQ(parser_trace("oltmib_portinbandan_get_1", "1&2&t&3&4"),
              "[str2arg_hslportinbandan: 99]ifx 1, state 2, oper 3.\r\n");
}

// MBA.

TEST(hslinfo, mba_serial_carries_eight_fields)
{
    const Units record = wire(1, 9600, 3, chars(32, "a"), 4, chars(32, "b"), 5, 6);
    ASSERT_EQ(record.size(), 70U);
    EXPECT_BOTH_WAYS("oltmib_mbaserial_get_1", "1&9600&3&a&4&b&5&6", record);
    EXPECT_BOTH_WAYS("oltmib_mbaserial_getn_1", "1&9600&3&a&4&b&5&6", record);
    EXPECT_REQUEST("oltmib_mbaserial_set_1", "1&9600&3&a&4&b&5&6", record);
    EXPECT_REPLY("oltmib_mbaserial_set_1", "0", 0);
}

TEST(hslinfo, mba_serial_trace_of_two_fields_shows_oper_0)
{
    EXPECT_EQ(parser_trace("oltmib_mbaserial_get_1", "1&9600"),
              "[str2arg_mbaserial: 125]ifx 1, brate 9600, oper 0.\r\n");
}

TEST(hslinfo, mba_instance_carries_eleven_fields)
{
    const Units record = wire(chars(32, "name"), 1, chars(20, "sip"), 2, chars(20, "192.0.2.1"), 3, chars(32, "a"), 4,
                              chars(32, "b"), 5, 6);
    ASSERT_EQ(record.size(), 142U);
    const std::string text = "name&1&sip&2&192.0.2.1&3&a&4&b&5&6";
    EXPECT_BOTH_WAYS("oltmib_mbainst_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_mbainst_getn_1", text, record);
    EXPECT_REQUEST("oltmib_mbainst_set_1", text, record);
    EXPECT_REPLY("oltmib_mbainst_set_1", "1", 1);
    EXPECT_EQ(parser_trace("oltmib_mbainst_get_1", text),
              "[str2arg_mbainst: 162]name name, dip 192.0.2.1, oper 5.\r\n");
}

TEST(hslinfo, mba_instance_keeps_19_characters_of_a_dip_of_25)
{
    EXPECT_REQUEST("oltmib_mbainst_get_1", "n&&&&abcdefghijklmnopqrstuvwxy", chars(32, "n"), zeros(1 + 20 + 1),
                   chars(20, "abcdefghijklmnopqrs"), zeros(1 + 32 + 1 + 32 + 2));
    EXPECT_EQ(parser_trace("oltmib_mbainst_get_1", "n&&&&abcdefghijklmnopqrstuvwxy"),
              "[str2arg_mbainst: 162]name n, dip abcdefghijklmnopqrs, oper 0.\r\n");
}

TEST(hslinfo, mba_instance_state_carries_eleven_fields)
{
    const Units record =
        wire(chars(32, "name"), 1, 2, chars(20, "sip"), 3, chars(20, "192.0.2.1"), 4, 5, chars(32, "t"), 6, 7);
    ASSERT_EQ(record.size(), 111U);
    const std::string text = "name&1&2&sip&3&192.0.2.1&4&5&t&6&7";
    EXPECT_BOTH_WAYS("oltmib_mbainststate_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_mbainststate_getn_1", text, record);
    EXPECT_REQUEST("oltmib_mbainststate_set_1", text, record);
    EXPECT_REPLY("oltmib_mbainststate_set_1", "1", 1);
    EXPECT_EQ(parser_trace("oltmib_mbainststate_get_1", text),
              "[str2arg_mbainststate: 202]name name, dip 192.0.2.1, oper 6.\r\n");
}

TEST(hslinfo, mba_serial_counters_print_as_ints)
{
    const Units record = wire(1, 2147483647, ints(0x80000000U, 0xFFFFFFFFU), chars(32, "t"), 3, 4);
    ASSERT_EQ(record.size(), 38U);
    EXPECT_BOTH_WAYS("oltmib_mbaserialstatis_get_1", "1&2147483647&-2147483648&-1&t&3&4", record);
    EXPECT_BOTH_WAYS("oltmib_mbaserialstatis_getn_1", "1&2147483647&-2147483648&-1&t&3&4", record);
    EXPECT_REQUEST("oltmib_mbaserialstatis_set_1", "1&2147483647&-2147483648&-1&t&3&4", record);
    EXPECT_REPLY("oltmib_mbaserialstatis_set_1", "1", 1);
    EXPECT_EQ(parser_trace("oltmib_mbaserialstatis_get_1", "1&-2&0&0&t&3&4"),
              "[str2arg_mbaserialstatis: 238]ifx 1, err -2, oper 3.\r\n");
}

TEST(hslinfo, mba_instance_counter_of_4294967295_prints_as_minus_1)
{
    EXPECT_REPLY("oltmib_mbainststatis_get_1", "n&-1&0&0&0&0&0&0&0&&0&0", chars(32, "n"), 0xFFFFFFFFU,
                 zeros(7 + 32 + 2));
    const Units record = wire(chars(32, "name"), counting(1, 8), chars(32, "t"), 9, 10);
    ASSERT_EQ(record.size(), 74U);
    EXPECT_BOTH_WAYS("oltmib_mbainststatis_get_1", "name&1&2&3&4&5&6&7&8&t&9&10", record);
    EXPECT_BOTH_WAYS("oltmib_mbainststatis_getn_1", "name&1&2&3&4&5&6&7&8&t&9&10", record);
    EXPECT_REQUEST("oltmib_mbainststatis_set_1", "name&1&2&3&4&5&6&7&8&t&9&10", record);
    EXPECT_REPLY("oltmib_mbainststatis_set_1", "1", 1);
    EXPECT_EQ(parser_trace("oltmib_mbainststatis_get_1", "name&-3&2&3&4&5&6&7&8&t&9&10"),
              "[str2arg_mbainststatis: 275]name name, rx_bytes -3, oper 9.\r\n");
}

TEST(hslinfo, nothing_is_printed_without_the_flag)
{
    testing::internal::CaptureStdout();
    request_of("oltmib_mgmtvlan_get_1", "1&2&a&b");
    request_of("oltmib_mbainststatis_get_1", "n&1");
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

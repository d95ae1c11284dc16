// The host protocols service: management access, accounts, time, the DHCP
// server, SNMP, syslog and alerts.
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "services/hostpdinfo/records.h"
#include "tests/services/support.h"

using namespace support;

extern "C" {
void* oltmib_snmp_cfg_req_1(void* argp, CLIENT* clnt);
}

namespace
{
const Service& hostpdinfo = service_named("hostpdinfo");

// "2&3&4&...": ints from `first` up to `last`.
std::string numbers(int first, int last)
{
    std::string text = std::to_string(first);
    while (first < last)
        text += "&" + std::to_string(++first);
    return text;
}

// The last two units of 2.5 and -1.75 are the low words: both 0.
const Units two_and_a_half = {0x40040000, 0};
const Units minus_one_and_three_quarters = {0xBFFC0000, 0};

// LC_NUMERIC with a decimal comma while it lives, from a locale made here.
class DecimalComma
{
  public:
    DecimalComma()
    {
        char folder[] = "/tmp/librpc-locale-XXXXXX";
        if (!mkdtemp(folder))
            return;
        at = folder;
        std::ofstream(at / "source") << "LC_NUMERIC\n"
                                        "decimal_point \",\"\n"
                                        "thousands_sep \".\"\n"
                                        "grouping 3;3\n"
                                        "END LC_NUMERIC\n";
        std::filesystem::create_directory(at / "comma");
        const std::string make = "localedef -c -i " + (at / "source").string() + " " + (at / "comma").string();
        // Ends with 1 for the categories that the source leaves out.
        [[maybe_unused]] const int warned = system((make + " >/dev/null 2>&1").c_str());
        setenv("LOCPATH", folder, 1);
        stands = setlocale(LC_NUMERIC, "comma") != nullptr;
    }
    ~DecimalComma()
    {
        setlocale(LC_NUMERIC, "C");
        unsetenv("LOCPATH");
        std::error_code ignored;
        std::filesystem::remove_all(at, ignored);
    }
    bool stands = false;

  private:
    std::filesystem::path at;
};
} // namespace

// Management access and accounts.

TEST(hostpdinfo, management_tables_carry_nine_fields_in_record_order)
{
    const std::string text = "-1&forty&2&sixtyfour&a&b&thirtytwo&3&4";
    const Units record = wire(-1, chars(40, "forty"), 2, chars(64, "sixtyfour"), chars(80, "a"), chars(80, "b"),
                              chars(32, "thirtytwo"), 3, 4);
    ASSERT_EQ(record.size(), 300U);
    for (const char* name :
         {"oltmib_telnet_get_1", "oltmib_web_get_1", "oltmib_ssh_get_1", "oltmib_snmp_community_get_1",
          "oltmib_snmp_community_getn_1", "oltmib_snmp_srv_get_1", "oltmib_snmp_srv_getn_1"}) {
        EXPECT_BOTH_WAYS(name, text, record);
    }
}

TEST(hostpdinfo, telnet_web_and_ssh_requests_differ_only_in_the_procedure)
{
    const std::string argument = "1&name&2&text&x&y&z&3&4";
    const auto procedure = [](const char* name) { return api_named(name).procedure; };
    for (const char* name : {"oltmib_web_get_1", "oltmib_ssh_get_1", "oltmib_telnet_set_1", "oltmib_web_set_1",
                             "oltmib_ssh_set_1"}) // request_of sees to the procedure that is called
        EXPECT_EQ(request_of(name, argument), request_of("oltmib_telnet_get_1", argument)) << name;
    EXPECT_EQ(procedure("oltmib_telnet_set_1"), 1U);
    EXPECT_EQ(procedure("oltmib_telnet_get_1"), 2U);
    EXPECT_EQ(procedure("oltmib_web_set_1"), 3U);
    EXPECT_EQ(procedure("oltmib_web_get_1"), 4U);
    EXPECT_EQ(procedure("oltmib_ssh_set_1"), 31U);
    EXPECT_EQ(procedure("oltmib_ssh_get_1"), 32U);
}

TEST(hostpdinfo, account_has_one_more_int_before_its_last_text)
{
    const Units record =
        wire(1, chars(40, "user"), 2, chars(64, "c"), chars(80, "d"), chars(80, "secret"), 77, chars(32, "e"), 5, 6);
    ASSERT_EQ(record.size(), 301U);
    EXPECT_BOTH_WAYS("oltmib_account_get_1", "1&user&2&c&d&secret&77&e&5&6", record);
    EXPECT_BOTH_WAYS("oltmib_account_getn_1", "1&user&2&c&d&secret&77&e&5&6", record);
    EXPECT_REQUEST("oltmib_account_set_1", "1&user&2&c&d&secret&77&e&5&6", record);
    EXPECT_REPLY("oltmib_account_set_1", "-3", -3);
}

TEST(hostpdinfo, eleven_fields_for_ten_drop_the_last)
{
    EXPECT_EQ(request_of("oltmib_account_get_1", "1&a&2&b&c&d&3&e&4&5&6"),
              request_of("oltmib_account_get_1", "1&a&2&b&c&d&3&e&4&5"));
}

TEST(hostpdinfo, fewer_fields_read_as_zero_and_empty)
{
    EXPECT_REQUEST("oltmib_telnet_get_1", "9&x", 9, chars(40, "x"), zeros(1 + 64 + 80 + 80 + 32 + 2));
    EXPECT_REQUEST("oltmib_telnet_get_1", "", zeros(300));
}

// Time.

TEST(hostpdinfo, time_carries_fifteen_fields_and_two_doubles)
{
    const Units record = wire(chars(40, "a"), chars(64, "b"), chars(64, "c"), chars(65, "d"), 1, 2, 3, chars(64, "e"),
                              chars(64, "f"), 4, two_and_a_half, minus_one_and_three_quarters, chars(32, "g"), 5, 6);
    ASSERT_EQ(record.size(), 403U);
    EXPECT_BOTH_WAYS("oltmib_ntp_get_1", "a&b&c&d&1&2&3&e&f&4&2.50&-1.75&g&5&6", record);
    EXPECT_REQUEST("oltmib_ntp_set_1", "a&b&c&d&1&2&3&e&f&4&2.5&-1.75&g&5&6", record);
}

TEST(hostpdinfo, empty_time_argument_sends_zeros) { EXPECT_REQUEST("oltmib_ntp_get_1", "", zeros(403)); }

TEST(hostpdinfo, time_reply_shows_two_and_a_half_as_2_point_50)
{
    EXPECT_REPLY("oltmib_ntp_get_1", "&&&&0&0&0&&&0&2.50&0.00&&0&0", zeros(40 + 64 + 64 + 65 + 3 + 64 + 64 + 1),
                 two_and_a_half, zeros(2 + 32 + 2));
}

TEST(hostpdinfo, time_keeps_64_characters_in_its_fourth_field_and_39_in_its_first)
{
    const std::string seventy(70, 't');
    EXPECT_REQUEST("oltmib_ntp_get_1", seventy + "&" + seventy + "&" + seventy + "&" + seventy,
                   chars(40, std::string(39, 't')), chars(64, std::string(63, 't')), chars(64, std::string(63, 't')),
                   chars(65, std::string(64, 't')), zeros(3 + 64 + 64 + 1 + 4 + 32 + 2));
}

TEST(hostpdinfo, time_reply_may_fill_all_65_characters_of_its_fourth_field)
{
    EXPECT_REPLY("oltmib_ntp_get_1", "&&&" + std::string(65, 'q') + "&1&0&0&&&0&0.00&0.00&&0&0", zeros(40 + 64 + 64),
                 chars(65, std::string(65, 'q')), 1, zeros(2 + 64 + 64 + 1 + 4 + 32 + 2));
}

TEST(hostpdinfo, doubles_go_out_with_two_decimals_whatever_came_in)
{
    const auto sent_back = [](const std::string& real) {
        const std::string text =
            text_of("oltmib_ntp_get_1", request_of("oltmib_ntp_get_1", "&&&&&&&&&&" + real + "&0&&&"));
        return text.substr(strlen("&&&&0&0&0&&&0&"), text.size() - strlen("&&&&0&0&0&&&0&") - strlen("&0.00&&0&0"));
    };
    EXPECT_EQ(sent_back("1.23456"), "1.23");
    EXPECT_EQ(sent_back("-0.126"), "-0.13");
    EXPECT_EQ(sent_back("1e3"), "1000.00");
    EXPECT_EQ(sent_back("  7 apples"), "7.00");
    EXPECT_EQ(sent_back("none"), "0.00");
    EXPECT_EQ(sent_back("inf"), "inf");
    EXPECT_EQ(sent_back("1e308").size(), 309U + 3U);
}

TEST(hostpdinfo, time_reply_of_the_longest_doubles_is_cut_at_1023_characters)
{
    const Units most = {0x7FEFFFFF, 0xFFFFFFFF}; // 309 digits before the point
    EXPECT_EQ(text_of("oltmib_ntp_get_1",
                      wire(zeros(40 + 64 + 64 + 65 + 3 + 64 + 64 + 1), most, most, chars(32, "end"), 1, 2))
                  .size(),
              strlen("&&&&0&0&0&&&0&") + 312 + strlen("&") + 312 + strlen("&end&1&2"));
    const std::string x39(39, 'x');
    const std::string x63(63, 'x');
    constexpr int least = -2147483647 - 1;
    const std::string cut =
        text_of("oltmib_ntp_get_1", wire(chars(40, x39), chars(64, x63), chars(64, x63), chars(65, x63 + "x"), least,
                                         least, least, chars(64, x63), chars(64, x63), least, most, most, zeros(34)));
    const std::string before = x39 + "&" + x63 + "&" + x63 + "&" + x63 + "x" + repeated("&-2147483648", 3) + "&" + x63 +
                               "&" + x63 + "&-2147483648&";
    EXPECT_EQ(cut.size(), 1023U);
    EXPECT_EQ(cut.substr(0, before.size()), before);
    EXPECT_EQ(cut.substr(before.size() + 313), cut.substr(before.size(), 1023 - before.size() - 313));
}

TEST(hostpdinfo, decimal_comma_of_the_process_locale_goes_for_both_ways)
{
    if (system("command -v localedef >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "localedef is not installed, so no locale with a decimal comma can be made";
    const DecimalComma comma;
    ASSERT_TRUE(comma.stands) << "localedef made no locale with a decimal comma";
    const Units reals = wire(two_and_a_half, minus_one_and_three_quarters);
    EXPECT_BOTH_WAYS("oltmib_ntp_get_1", "&&&&0&0&0&&&0&2,50&-1,75&&0&0", zeros(40 + 64 + 64 + 65 + 3 + 64 + 64 + 1),
                     reals, zeros(32 + 2));
    const Units two = {0x40000000, 0};
    EXPECT_REQUEST("oltmib_ntp_get_1", "&&&&0&0&0&&&0&2.50", zeros(40 + 64 + 64 + 65 + 3 + 64 + 64 + 1), two,
                   zeros(2 + 32 + 2)); // a point ends the number there
}

// The DHCP server.

TEST(hostpdinfo, dhcp_server_carries_two_texts_and_two_ints)
{
    EXPECT_BOTH_WAYS("oltmib_dhcpdinfo_get_1", "pool&range&-7&8", chars(80, "pool"), chars(512, "range"), -7, 8);
    EXPECT_REQUEST("oltmib_dhcpdinfo_set_1", "pool&range&-7&8", chars(80, "pool"), chars(512, "range"), -7, 8);
}

TEST(hostpdinfo, dhcp_server_reply_with_both_texts_full_still_fits)
{
    const std::string x79(79, 'x');
    const std::string y511(511, 'y');
    EXPECT_BOTH_WAYS("oltmib_dhcpdinfo_get_1", x79 + "&" + y511 + "&-2147483648&2147483647", chars(80, x79),
                     chars(512, y511), ints(0x80000000U, 0x7FFFFFFFU));
}

// SNMP.

TEST(hostpdinfo, snmp_configuration_request_has_a_stub_and_no_registration)
{
    register_once(hostpdinfo);
    EXPECT_EQ(lua_getapibyname("oltmib_snmp_cfg_req_1"), nullptr);
    EXPECT_FALSE(api_named("oltmib_snmp_cfg_req_1").registered());

    const Units sent = wire(12, zeros(40 + 1 + 64 + 80 + 80), chars(32, "save"), 0, 13);
    const auto request = record_of_units(*api_named("oltmib_snmp_cfg_req_1").request, sent);
    ScriptedClient daemon;
    daemon.reply = units(ints(-4));
    const void* reply = oltmib_snmp_cfg_req_1(request.data(), daemon.get());
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(*static_cast<const int*>(reply), -4);
    EXPECT_EQ(daemon.procedure, 14U);
    EXPECT_EQ(units_of(daemon.request), sent);
    daemon.status = RPC_TIMEDOUT;
    EXPECT_EQ(oltmib_snmp_cfg_req_1(request.data(), daemon.get()), nullptr);
}

TEST(hostpdinfo, view_text_of_450_characters_is_kept_as_its_first_399)
{
    const std::string x399(399, 'x');
    EXPECT_REQUEST("oltmib_snmp_view_get_1", "view&" + std::string(450, 'x') + "&included&1&2", chars(80, "view"),
                   chars(400, x399), chars(32, "included"), 1, 2);
    EXPECT_REPLY("oltmib_snmp_view_get_1", "view&" + x399 + "&included&1&2", chars(80, "view"), chars(400, x399),
                 chars(32, "included"), 1, 2);
    EXPECT_BOTH_WAYS("oltmib_snmp_view_getn_1", "v&.1&t&-1&0", chars(80, "v"), chars(400, ".1"), chars(32, "t"), -1, 0);
}

TEST(hostpdinfo, longest_view_stays_below_the_buffer)
{
    const std::string text =
        std::string(79, 'a') + "&" + std::string(399, 'b') + "&" + std::string(31, 'c') + "&-2147483648&-2147483648";
    EXPECT_BOTH_WAYS("oltmib_snmp_view_get_1", text, chars(80, std::string(79, 'a')), chars(400, std::string(399, 'b')),
                     chars(32, std::string(31, 'c')), ints(0x80000000U, 0x80000000U));
}

TEST(hostpdinfo, group_and_user_fill_different_fields_from_the_same_nine_values)
{
    const std::string nine = "1&2&3&4&5&6&7&8&9";
    const Units group =
        wire(chars(80, "1"), 2, 3, chars(80, "4"), chars(80, "5"), chars(80, "6"), chars(32, "7"), 8, 9);
    const Units user = wire(chars(80, "1"), chars(80, "2"), 3, chars(80, "4"), 5, chars(80, "6"), chars(32, "7"), 8, 9);
    ASSERT_EQ(group.size(), 356U);
    ASSERT_EQ(user.size(), 356U);
    EXPECT_BOTH_WAYS("oltmib_snmp_group_get_1", nine, group);
    EXPECT_BOTH_WAYS("oltmib_snmp_group_getn_1", nine, group);
    EXPECT_BOTH_WAYS("oltmib_snmp_user_get_1", nine, user);
    EXPECT_BOTH_WAYS("oltmib_snmp_user_getn_1", nine, user);
    EXPECT_REQUEST("oltmib_snmp_group_set_1", nine, group);
    EXPECT_REQUEST("oltmib_snmp_user_set_1", nine, user);
}

TEST(hostpdinfo, notification_host_carries_nine_fields)
{
    const Units host = wire(1, chars(80, "192.0.2.7"), 162, chars(80, "public"), 2, 3, chars(32, "t"), 4, 5);
    ASSERT_EQ(host.size(), 198U);
    EXPECT_BOTH_WAYS("oltmib_snmp_host_get_1", "1&192.0.2.7&162&public&2&3&t&4&5", host);
    EXPECT_BOTH_WAYS("oltmib_snmp_host_getn_1", "1&192.0.2.7&162&public&2&3&t&4&5", host);
    EXPECT_REQUEST("oltmib_snmp_host_set_1", "1&192.0.2.7&162&public&2&3&t&4&5", host);
}

// Syslog and alerts.

TEST(hostpdinfo, syslogs_fourteen_fields_come_back)
{
    EXPECT_BOTH_WAYS("oltmib_sysloginfo_get_1", numbers(1, 11) + "&text&12&13", counting(1, 11), chars(32, "text"), 12,
                     13);
    EXPECT_REQUEST("oltmib_sysloginfo_set_1", numbers(1, 11) + "&text&12&13", counting(1, 11), chars(32, "text"), 12,
                   13);
}

TEST(hostpdinfo, syslog_of_three_fields_sends_zeros_behind_them)
{
    EXPECT_REQUEST("oltmib_sysloginfo_get_1", "7&8&9", 7, 8, 9, zeros(8 + 32 + 2));
}

TEST(hostpdinfo, remote_syslog_keeps_63_characters_of_70)
{
    EXPECT_REQUEST("oltmib_syslogremote_get_1", "1&" + std::string(70, 'h') + "&514&t&2&3", 1,
                   chars(64, std::string(63, 'h')), 514, chars(32, "t"), 2, 3);
    EXPECT_BOTH_WAYS("oltmib_syslogremote_get_1", "1&host&514&t&2&3", 1, chars(64, "host"), 514, chars(32, "t"), 2, 3);
    EXPECT_REQUEST("oltmib_syslogremote_set_1", "1&host&514&t&2&3", 1, chars(64, "host"), 514, chars(32, "t"), 2, 3);
}

TEST(hostpdinfo, alert_with_an_empty_text_has_two_separators_in_a_row)
{
    EXPECT_REPLY("oltmib_alert_get_1", "1&2&3&4&&5&6", 1, 2, 3, 4, zeros(32), 5, 6);
    EXPECT_BOTH_WAYS("oltmib_alert_get_1", "1&2&3&4&mail&5&6", 1, 2, 3, 4, chars(32, "mail"), 5, 6);
    EXPECT_REQUEST("oltmib_alert_set_1", "1&2&3&4&mail&5&6", 1, 2, 3, 4, chars(32, "mail"), 5, 6);
}

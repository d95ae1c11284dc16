// The network service module's tables of ports, VLANs and the forwarding database (also
// aggregation, spanning-tree status, error-disable and ARP).
#include "tests/services/support.h"

using namespace support;

TEST(nsminfo_ports, portinfo_of_two_fields_is_zero_behind_them)
{
    EXPECT_REQUEST("oltmib_portinfo_get_1", "1&ge1", 1, chars(32, "ge1"), zeros(80 + 2 + 64 + 3 + 128 + 13 + 32 + 2));
}

TEST(nsminfo_ports, portinfo_sixth_field_fills_field_8_and_field_9)
{
    EXPECT_REQUEST("oltmib_portinfo_set_1", "&&&&&5", zeros(1 + 32 + 80 + 2 + 64), 5, 5, 0, zeros(128 + 13 + 32 + 2));
}

TEST(nsminfo_ports, portinfo_reads_twenty_four_fields)
{
    EXPECT_REQUEST("oltmib_portinfo_getn_1",
                   "1&ge1&desc&4&5&8&10&eleven&twelve&13&14&15&16&17&18&19&20&21&23&24&25&last&27&28&29", 1,
                   chars(32, "ge1"), chars(80, "desc"), 4, 5, zeros(64), 8, 8, 10, chars(64, "eleven"),
                   chars(64, "twelve"), counting(13, 9), 0, counting(23, 3), chars(32, "last"), 27, 28);
}

// field6, field7, field9 and field22 are in the reply, but not in its text.
TEST(nsminfo_ports, portinfo_shows_twenty_four_fields)
{
    EXPECT_REPLY("oltmib_portinfo_get_1",
                 "1&ge1&desc&4&5&8&10&eleven&twelve&13&14&15&16&17&18&19&20&21&23&24&25&last&27&28", 1,
                 chars(32, "ge1"), chars(80, "desc"), 4, 5, chars(32, "six"), chars(32, "seven"), 8, 9, 10,
                 chars(64, "eleven"), chars(64, "twelve"), counting(13, 13), chars(32, "last"), 27, 28);
}

TEST(nsminfo_ports, portstat_reads_nothing_from_the_counter_positions)
{
    EXPECT_REQUEST("oltmib_portstat_set_1", "1&2&ge1&91&92&93&94&95&96&97&98&99&90&text&3&4", 1, 2, chars(32, "ge1"),
                   zeros(108), chars(32, "text"), 3, 4);
}

TEST(nsminfo_ports, portstat_of_three_fields_is_zero_behind_them)
{
    EXPECT_REQUEST("oltmib_portstat_get_1", "1&2&ge1", 1, 2, chars(32, "ge1"), zeros(108 + 32 + 2));
}

TEST(nsminfo_ports, portstat_shows_ten_counters_in_their_odd_order)
{
    Units counters;
    for (int i = 0; i < 54; i++)
        append(counters, ints(1000 + i, 0));
    EXPECT_REPLY("oltmib_portstat_get_1", "1&2&ge1&1009&1006&1013&1027&1026&1029&1035&1037&1040&1042&text&3&4", 1, 2,
                 chars(32, "ge1"), counters, chars(32, "text"), 3, 4);
}

TEST(nsminfo_ports, portstat_counters_print_unsigned)
{
    EXPECT_REPLY("oltmib_portstat_getn_1", "0&0&&18446744073709551615&9223372036854775808&0&0&0&0&0&0&0&0&&0&0",
                 zeros(34 + 12), words(1ULL << 63), zeros(4), words(~0ULL), zeros(88 + 34));
}

TEST(nsminfo_ports, portstat_traces_the_whole_argument)
{
    EXPECT_EQ(parser_trace("oltmib_portstat_get_1", "1&2&ge1&&&&&&&&&&&text&3&4&more&"),
              "[str2arg_portstat: 136]str 1&2&ge1&&&&&&&&&&&text&3&4&more&, ifx 1, oper 3.\r\n");
    EXPECT_EQ(parser_trace("oltmib_portstat_get_1", ""), "[str2arg_portstat: 136]str , ifx 0, oper 0.\r\n");
    EXPECT_EQ(
        formatter_trace("oltmib_portstat_get_1", wire(1, 2, chars(32, "ge1"), zeros(108), chars(32, "text"), 3, 4)),
        "[arg2str_portstat: 173]ifx 1, name ge1, res 4, str 1&2&ge1&0&0&0&0&0&0&0&0&0&0&text&3&4.\r\n");
}

TEST(nsminfo_ports, portrate_reads_nothing_from_the_rate_positions)
{
    EXPECT_REQUEST("oltmib_portrate_getn_1", "1&2&ge1&91&92&93&94&95&96&text&3&4", 1, 2, chars(32, "ge1"), zeros(12),
                   chars(32, "text"), 3, 4);
}

TEST(nsminfo_ports, portrate_shows_six_signed_rates)
{
    EXPECT_REPLY("oltmib_portrate_get_1", "1&2&ge1&-1&4294967298&3&4&-9223372036854775808&6&text&3&4", 1, 2,
                 chars(32, "ge1"), -1, -1, 2, 1, 3, 0, 4, 0, words(1ULL << 63), 6, 0, chars(32, "text"), 3, 4);
}

TEST(nsminfo_ports, portrate_traces_the_whole_argument)
{
    EXPECT_EQ(parser_trace("oltmib_portrate_get_1", "1&2&ge1&&&&&&&text&3&4"),
              "[str2arg_portrate: 214]str 1&2&ge1&&&&&&&text&3&4, ifx 1, oper 3.\r\n");
    EXPECT_EQ(
        formatter_trace("oltmib_portrate_get_1", wire(1, 2, chars(32, "ge1"), zeros(12), chars(32, "text"), 3, 4)),
        "[arg2str_portrate: 233]ifx 1, name ge1, res 4, str 1&2&ge1&0&0&0&0&0&0&text&3&4.\r\n");
}

// The text has `to` before `src`, the wire `src` before `to`.
TEST(nsminfo_ports, pminfo_text_order_is_not_the_wires)
{
    EXPECT_BOTH_WAYS("oltmib_pminfo_getn_1", "1&2&desc&to&3&4&src&vlans&5&6&text&7&8", 1, 2, chars(36, "desc"),
                     chars(32, "src"), chars(512, "vlans"), chars(32, "to"), 5, 3, 4, 6, chars(32, "text"), 7, 8);
}

TEST(nsminfo_ports, pminfo_traces_in_text_order)
{
    const std::string values = "sid 1, mode 2, desc desc, to to, to switch 3, rspan_vlan 4, src src, src_vlan vlans, "
                               "dir 5, state 6, oper 7.\r\n";
    EXPECT_EQ(parser_trace("oltmib_pminfo_set_1", "1&2&desc&to&3&4&src&vlans&5&6&text&7&8"),
              "[str2arg_pminfo: 258]" + values);
    EXPECT_EQ(
        formatter_trace("oltmib_pminfo_getn_1", wire(1, 2, chars(36, "desc"), chars(32, "src"), chars(512, "vlans"),
                                                     chars(32, "to"), 5, 3, 4, 6, chars(32, "text"), 7, 8)),
        "[arg2str_pminfo: 267]" + values);
}

// A full desc and text arrays without a NUL are shown and traced to their ends.
TEST(nsminfo_ports, pminfo_texts_of_a_reply_need_no_nul)
{
    const std::string desc(36, 'd'), src(32, 's'), vlans(512, 'v'), to(32, 't'), text(32, 'x');
    const Units reply = wire(1, 2, chars(36, desc), chars(32, src), chars(512, vlans), chars(32, to), 5, 3, 4, 6,
                             chars(32, text), 7, 8);
    EXPECT_EQ(text_of("oltmib_pminfo_getn_1", reply),
              "1&2&" + desc + "&" + to + "&3&4&" + src + "&" + vlans + "&5&6&" + text + "&7&8");
    EXPECT_EQ(formatter_trace("oltmib_pminfo_getn_1", reply),
              "[arg2str_pminfo: 267]sid 1, mode 2, desc " + desc + ", to " + to + ", to switch 3, rspan_vlan 4, src " +
                  src + ", src_vlan " + vlans + ", dir 5, state 6, oper 7.\r\n");
}

TEST(nsminfo_ports, texts_are_cut_to_their_arrays)
{
    EXPECT_REQUEST("oltmib_pminfo_set_1",
                   "1&2&" + repeated("d", 40) + "&" + repeated("t", 40) + "&3&4&" + repeated("s", 40) + "&" +
                       repeated("v", 600) + "&5",
                   1, 2, chars(36, repeated("d", 35)), chars(32, repeated("s", 31)), chars(512, repeated("v", 511)),
                   chars(32, repeated("t", 31)), 5, 3, 4, zeros(35));
}

TEST(nsminfo_vlans, vlaninfo_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_vlaninfo_get_1", "1&2&three&4&five&six&text&5&6", 1, 2, chars(33, "three"), 4,
                     chars(512, "five"), chars(512, "six"), chars(32, "text"), 5, 6);
}

TEST(nsminfo_vlans, vlaninfo_field_3_keeps_thirty_two_characters)
{
    EXPECT_REQUEST("oltmib_vlaninfo_set_1", "1&2&" + repeated("n", 40) + "&4", 1, 2, chars(33, repeated("n", 32)), 4,
                   zeros(1024 + 34));
}

TEST(nsminfo_vlans, vlaninfo_text_is_cut_at_1023)
{
    const std::string tagged(511, 'a'), untagged(511, 'b');
    EXPECT_REPLY("oltmib_vlaninfo_getn_1", "1&2&v&3&" + tagged + "&" + repeated("b", 503), 1, 2, chars(33, "v"), 3,
                 chars(512, tagged), chars(512, untagged), chars(32, "text"), 5, 6);
}

TEST(nsminfo_vlans, vlanvpn_text_is_cut_at_1023)
{
    const std::string first(511, 'a'), second(511, 'b');
    EXPECT_REPLY("oltmib_vlanvpn_get_1", "v&3&" + first + "&" + repeated("b", 507), chars(40, "v"), 3,
                 chars(512, first), chars(512, second), chars(32, "text"), 5, 6);
}

TEST(nsminfo_vlans, vlanbitmapinfo_sends_its_bitmap)
{
    EXPECT_REQUEST("oltmib_vlanbitmapinfo_set_1", "1&0101&three&four&text&2&3", 1, chars(684, "0101"),
                   chars(512, "three"), chars(512, "four"), chars(32, "text"), 2, 3);
}

TEST(nsminfo_vlans, bitmap_keeps_683_characters)
{
    EXPECT_REQUEST("oltmib_vlanbitmapinfo_set_1", "1&" + repeated("b", 684) + "&three", 1,
                   chars(684, repeated("b", 683)), chars(512, "three"), zeros(512 + 34));
}

TEST(nsminfo_vlans, bitmap_of_a_reply_may_have_684_characters)
{
    const std::string bitmap(684, 'b');
    for (const char* name : {"oltmib_cvlan_table_get_1", "oltmib_p2p_svlan_table_get_1"})
        EXPECT_REPLY(name, bitmap + "&text&1&2", chars(684, bitmap), chars(32, "text"), 1, 2);
    EXPECT_EQ(formatter_trace("oltmib_cvlan_table_get_1", wire(chars(684, bitmap), zeros(32), 1, 2)),
              "[arg2str_vlanbitmap: 196]bit " + bitmap + ", oper 1.\r\n");
}

TEST(nsminfo_vlans, table_gets_send_nothing)
{
    EXPECT_EQ(request_of("oltmib_cvlan_table_get_1", ""), Units{});
    EXPECT_EQ(request_of("oltmib_p2p_svlan_table_get_1", "0101&text&1&2"), Units{});
    EXPECT_REPLY("oltmib_cvlan_table_get_1", "0110&text&1&2", chars(684, "0110"), chars(32, "text"), 1, 2);
}

TEST(nsminfo_vlans, table_gets_parse_their_argument_all_the_same)
{
    char text[] = "0101&text&1&2";
    const Api& api = api_named("oltmib_p2p_svlan_table_get_1");
    EXPECT_EQ(units_of_record(*api.reply, api.parser->str2arg(text)),
              wire(chars(684, "0101"), chars(32, "text"), 1, 2));
    EXPECT_EQ(parser_trace("oltmib_cvlan_table_get_1", "0101&text&1&2"),
              "[str2arg_vlanbitmap: 188]bit 0101, oper 1.\r\n");
    EXPECT_EQ(parser_trace("oltmib_cvlan_table_get_1", ""), "[str2arg_vlanbitmap: 188]bit , oper 0.\r\n");
}

// A stub clears its reply before each call.
TEST(nsminfo_vlans, table_gets_forget_the_last_reply)
{
    const Api& api = api_named("oltmib_cvlan_table_get_1");
    ScriptedClient daemon;
    daemon.reply = units(wire(chars(684, "0110"), chars(32, "text"), 1, 2));
    const void* reply = api.func(nullptr, daemon.get());
    ASSERT_NE(reply, nullptr);
    daemon.status = RPC_TIMEDOUT;
    EXPECT_EQ(api.func(nullptr, daemon.get()), nullptr);
    EXPECT_EQ(units_of_record(*api.reply, reply), zeros(718));
}

TEST(nsminfo_vlans, sptmode_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_sptmode_get_1", "1&2&text&3&4", 1, 2, chars(32, "text"), 3, 4);
}

TEST(nsminfo_vlans, vlanvpn_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_vlanvpn_get_1", "one&2&three&four&text&5&6", chars(40, "one"), 2, chars(512, "three"),
                     chars(512, "four"), chars(32, "text"), 5, 6);
}

TEST(nsminfo_vlans, vlanvpnif_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_vlanvpnif_getn_1", "1&ge1&3&4&five&six&text&7&8", 1, chars(32, "ge1"), 3, 4,
                     chars(32, "five"), chars(32, "six"), chars(32, "text"), 7, 8);
}

TEST(nsminfo_vlans, svi_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_svi_get_1", "1&vlan1&10.0.0.1/24&text&2&3", 1, chars(32, "vlan1"),
                     chars(20, "10.0.0.1/24"), chars(32, "text"), 2, 3);
    EXPECT_REQUEST("oltmib_svi_set_1", "1&&" + repeated("a", 25), 1, zeros(32), chars(20, repeated("a", 19)),
                   zeros(34));
}

TEST(nsminfo_forwarding, fdbparam_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_fdbparam_get_1", "300&text&1&2", 300, chars(32, "text"), 1, 2);
}

TEST(nsminfo_forwarding, fdb_is_the_whole_record)
{
    for (const char* name : {"oltmib_fdb_get_1", "oltmib_fdb_getn_1", "oltmib_fdb_dynamic_getn_1"})
        EXPECT_BOTH_WAYS(name, "00-11-22-33-44-55&2&ge1&4&text&5&6", ints(0, 0x11, 0x22, 0x33, 0x44, 0x55), 2,
                         chars(32, "ge1"), 4, chars(32, "text"), 5, 6);
}

TEST(nsminfo_forwarding, fdb_reads_any_mac_notation)
{
    for (const char* mac : {"00:11:22:33:44:55", "0011.2233.4455", "00-11-22-33-44-55", "001122334455"})
        EXPECT_REQUEST("oltmib_fdb_set_1", std::string(mac) + "&2", ints(0, 0x11, 0x22, 0x33, 0x44, 0x55), 2,
                       zeros(32 + 1 + 34));
}

TEST(nsminfo_forwarding, fdb_of_an_unreadable_mac_is_sent_all_the_same)
{
    EXPECT_REQUEST("oltmib_fdb_set_1", "wrong&2", zeros(6), 2, zeros(32 + 1 + 34));
    EXPECT_REQUEST("oltmib_fdb_set_1", "1122.3344.55&2", ints(0x11, 0x22, 0x33, 0x44, 0x55, 0), 2, zeros(32 + 1 + 34));
    EXPECT_REQUEST("oltmib_fdb_set_1", "&2", zeros(6), 2, zeros(32 + 1 + 34));
}

TEST(nsminfo_forwarding, ag_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_ag_get_1", "1&po1&3&4&text&5&6", 1, chars(32, "po1"), 3, 4, chars(32, "text"), 5, 6);
}

TEST(nsminfo_forwarding, agsys_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_agsys_get_1", "32768&text&1&2", 32768, chars(32, "text"), 1, 2);
}

TEST(nsminfo_forwarding, stpifstatus_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_stpifstatus_getn_1", "1&ge1&3&text&4&5", 1, chars(32, "ge1"), 3, chars(32, "text"), 4, 5);
}

TEST(nsminfo_forwarding, errdisable_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_errdisable_get_1", "1&2&3&text&4&5", 1, 2, 3, chars(32, "text"), 4, 5);
}

TEST(nsminfo_forwarding, errdisportinfo_of_an_empty_name_has_six_positions)
{
    EXPECT_BOTH_WAYS("oltmib_errdisportinfo_get_1", "1&ge1&3&text&4&5", 1, chars(32, "ge1"), 3, chars(32, "text"), 4,
                     5);
    EXPECT_REPLY("oltmib_errdisportinfo_getn_1", "1&&3&text&4&5", 1, zeros(32), 3, chars(32, "text"), 4, 5);
}

// Both tables take one text; only the procedure differs.
TEST(nsminfo_forwarding, arp_and_static_arp_share_one_text)
{
    for (const char* name : {"oltmib_arp_getn_1", "oltmib_sarp_getn_1", "oltmib_arp_get_1", "oltmib_sarp_get_1"})
        EXPECT_BOTH_WAYS(name, "10.0.0.1&0011.2233.4455&vlan1&4&text&5&6", chars(64, "10.0.0.1"),
                         chars(64, "0011.2233.4455"), chars(32, "vlan1"), 4, chars(32, "text"), 5, 6);
}

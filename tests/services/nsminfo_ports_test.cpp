// The network service module's tables: settings, counters, rates and mirroring of
// ports.
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

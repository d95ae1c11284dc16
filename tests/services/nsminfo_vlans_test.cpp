// The network service module's tables: VLANs, their bitmaps, port modes, VLAN VPNs and
// switch interfaces.
#include "tests/services/support.h"

using namespace support;

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

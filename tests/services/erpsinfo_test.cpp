// The ring protection and LLDP service. Its neighbour table has the longest
// record and separators of its own; its state table's set answers as a record.
#include "tests/services/support.h"

using namespace support;

extern "C" char* arg2str_erpsstate(void* reply);

namespace
{
const Service& erpsinfo = service_named("erpsinfo");
const std::string mac_00_to_55("\x00\x11\x22\x33\x44\x55", 6);
const std::string mac_aa_to_ff("\xAA\xBB\xCC\xDD\xEE\xFF", 6);
} // namespace

// Rings.

TEST(erpsinfo, instance_text_has_its_first_int_before_its_second_text)
{
    EXPECT_REQUEST("oltmib_erpsinst_get_1", "A&5&B", chars(32, "A"), chars(32, "B"), 5, zeros(3 + 4 * 32 + 2));
    const Units record = wire(chars(32, "A"), chars(32, "B"), 5, 6, 7, 8, chars(32, "c"), chars(32, "d"),
                              chars(32, "e"), chars(32, "f"), 9, 10);
    ASSERT_EQ(record.size(), 198U);
    EXPECT_BOTH_WAYS("oltmib_erpsinst_get_1", "A&5&B&6&7&8&c&d&e&f&9&10", record);
    EXPECT_BOTH_WAYS("oltmib_erpsinst_getn_1", "A&5&B&6&7&8&c&d&e&f&9&10", record);
    EXPECT_REQUEST("oltmib_erpsinst_set_1", "A&5&B&6&7&8&c&d&e&f&9&10", record);
}

TEST(erpsinfo, ring_carries_six_fields)
{
    const Units record = wire(1, chars(32, "east"), chars(32, "west"), chars(32, "t"), 2, 3);
    ASSERT_EQ(record.size(), 99U);
    EXPECT_BOTH_WAYS("oltmib_erpsring_get_1", "1&east&west&t&2&3", record);
    EXPECT_BOTH_WAYS("oltmib_erpsring_getn_1", "1&east&west&t&2&3", record);
    EXPECT_REQUEST("oltmib_erpsring_set_1", "1&east&west&t&2&3", record);
    EXPECT_REQUEST("oltmib_erpsring_get_1", "1&" + std::string(40, 'e'), 1, chars(32, std::string(31, 'e')),
                   zeros(32 + 32 + 2));
}

TEST(erpsinfo, profile_carries_nine_fields)
{
    const Units record = wire(chars(32, "profile"), 1, 2, 3, 4, 5, chars(32, "t"), 6, 7);
    ASSERT_EQ(record.size(), 71U);
    EXPECT_BOTH_WAYS("oltmib_erpsprof_get_1", "profile&1&2&3&4&5&t&6&7", record);
    EXPECT_BOTH_WAYS("oltmib_erpsprof_getn_1", "profile&1&2&3&4&5&t&6&7", record);
    EXPECT_REQUEST("oltmib_erpsprof_set_1", "profile&1&2&3&4&5&t&6&7", record);
}

TEST(erpsinfo, state_carries_two_addresses_among_its_seventeen_fields)
{
    const Units record = wire(chars(32, "ring"), 1, 2, 3, 4, 5, chars(6, mac_00_to_55), 6, 7, 8, chars(6, mac_aa_to_ff),
                              9, 10, 11, chars(32, "t"), 12, 13);
    ASSERT_EQ(record.size(), 89U);
    const std::string text = "ring&1&2&3&4&5&00-11-22-33-44-55&6&7&8&AA-BB-CC-DD-EE-FF&9&10&11&t&12&13";
    EXPECT_BOTH_WAYS("oltmib_erpsstate_getn_1", text, record);
    EXPECT_REQUEST("oltmib_erpsstate_set_1", text, record);
}

TEST(erpsinfo, state_address_in_any_notation_is_the_same_six_bytes)
{
    for (const std::string address : {"aabb.ccdd.eeff", "aa:bb:cc:dd:ee:ff", "AA-BB-CC-DD-EE-FF", "aabbccddeeff"}) {
        EXPECT_REQUEST("oltmib_erpsstate_getn_1", "&&&&&&" + address + "&&&&" + address, zeros(32 + 5),
                       chars(6, mac_aa_to_ff), zeros(3), chars(6, mac_aa_to_ff), zeros(3 + 32 + 2));
    }
    EXPECT_REPLY("oltmib_erpsstate_getn_1", "&0&0&0&0&0&AA-BB-CC-DD-EE-FF&0&0&0&00-00-00-00-00-00&0&0&0&&0&0",
                 zeros(32 + 5), chars(6, mac_aa_to_ff), zeros(3 + 6 + 3 + 32 + 2));
}

TEST(erpsinfo, state_address_that_is_none_is_sent_as_zeros)
{
    EXPECT_REQUEST("oltmib_erpsstate_getn_1", "r&1&2&3&4&5&nonsense&6", chars(32, "r"), 1, 2, 3, 4, 5, zeros(6), 6,
                   zeros(2 + 6 + 3 + 32 + 2));
}

TEST(erpsinfo, no_api_gets_a_state)
{
    register_once(erpsinfo);
    EXPECT_EQ(lua_getapibyname("oltmib_erpsstate_get_1"), nullptr);
    EXPECT_NE(lua_getapibyname("oltmib_erpsstate_getn_1"), nullptr);
}

// The set's int is formatted by the state's formatter: its four bytes are the
// begin of the first text, and zeros follow. format() copies the whole record
// out of the stub's storage, so AddressSanitizer sees that it is all there.
TEST(erpsinfo, state_set_answers_through_the_records_formatter)
{
    EXPECT_EQ(api_named("oltmib_erpsstate_set_1").formatter->ret2str, arg2str_erpsstate);
    const std::string rest = "&0&0&0&0&0&00-00-00-00-00-00&0&0&0&00-00-00-00-00-00&0&0&0&&0&0";
    EXPECT_REPLY("oltmib_erpsstate_set_1", rest, 0);
    EXPECT_REPLY("oltmib_erpsstate_set_1", "AAAA" + rest, 0x41414141);
    EXPECT_REPLY("oltmib_erpsstate_set_1", "\xFF\xFF\xFF\xFF" + rest, -1);
    EXPECT_REPLY("oltmib_erpsstate_set_1", rest, 0);
}

TEST(erpsinfo, state_set_that_fails_gives_nothing)
{
    const Api& api = api_named("oltmib_erpsstate_set_1");
    ScriptedClient daemon;
    daemon.status = RPC_TIMEDOUT;
    EXPECT_EQ(api.func(api.parser->str2arg(exact_text("ring").data()), daemon.get()), nullptr);
}

// LLDP.

TEST(erpsinfo, lldp_settings_carry_seven_fields)
{
    const Units record = wire(1, chars(64, "a"), chars(64, "b"), chars(64, "c"), chars(32, "d"), 2, 3);
    ASSERT_EQ(record.size(), 227U);
    EXPECT_BOTH_WAYS("oltmib_lldpcfg_get_1", "1&a&b&c&d&2&3", record);
    EXPECT_REQUEST("oltmib_lldpcfg_set_1", "1&a&b&c&d&2&3", record);
}

TEST(erpsinfo, lldp_port_settings_carry_twenty_fields)
{
    const Units record = wire(1, chars(64, "a"), chars(64, "b"), chars(64, "c"), chars(64, "d"), counting(2, 12),
                              chars(32, "e"), 14, 15);
    ASSERT_EQ(record.size(), 303U);
    const std::string text = "1&a&b&c&d&2&3&4&5&6&7&8&9&10&11&12&13&e&14&15";
    EXPECT_BOTH_WAYS("oltmib_lldpifcfg_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_lldpifcfg_getn_1", text, record);
    EXPECT_REQUEST("oltmib_lldpifcfg_set_1", text, record);
    EXPECT_REQUEST("oltmib_lldpifcfg_set_1", text + "&99&98", record); // the 20th ends before the 21st
}

TEST(erpsinfo, lldp_statistics_carry_twelve_fields)
{
    const Units record = wire(1, chars(64, "port"), counting(2, 7), chars(32, "t"), 9, 10);
    ASSERT_EQ(record.size(), 106U);
    EXPECT_BOTH_WAYS("oltmib_lldpifstat_get_1", "1&port&2&3&4&5&6&7&8&t&9&10", record);
    EXPECT_BOTH_WAYS("oltmib_lldpifstat_getn_1", "1&port&2&3&4&5&6&7&8&t&9&10", record);
    EXPECT_REQUEST("oltmib_lldpifstat_set_1", "1&port&2&3&4&5&6&7&8&t&9&10", record);
}

// Neighbours.

TEST(erpsinfo, neighbour_reply_has_seven_fields_between_pairs_and_can_be_sent_back)
{
    const Units record =
        wire(3, chars(6, mac_aa_to_ff), chars(64, "port 1"), chars(2000, "a switch"), chars(32, "t"), 1, -2);
    ASSERT_EQ(record.size(), 2105U);
    const std::string text = "3&$AA-BB-CC-DD-EE-FF&$port 1&$a switch&$t&$1&$-2";
    EXPECT_BOTH_WAYS("oltmib_lldpifnei_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_lldpifnei_getn_1", text, record);
}

TEST(erpsinfo, neighbour_argument_of_separators_behind_3_yields_only_3)
{
    EXPECT_REQUEST("oltmib_lldpifnei_get_1", "3&&$&$", 3, zeros(2104));
}

TEST(erpsinfo, neighbour_fields_end_at_either_character_and_runs_count_as_one)
{
    const Units record = wire(3, chars(6, mac_aa_to_ff), chars(64, "a"), chars(2000, "b"), chars(32, "c"), 4, 5);
    EXPECT_REQUEST("oltmib_lldpifnei_get_1", "3&aabb.ccdd.eeff&a&b&c&4&5", record);
    EXPECT_REQUEST("oltmib_lldpifnei_get_1", "3$aabb.ccdd.eeff$a$b$c$4$5", record);
    EXPECT_REQUEST("oltmib_lldpifnei_get_1", "&&$3$&&aabb.ccdd.eeff&$$a$&$b&$c&4$$$$5&", record);
    EXPECT_REQUEST("oltmib_lldpifnei_get_1", "3&aabb.ccdd.eeff&a&b&c&4&5&6&7", record);
}

TEST(erpsinfo, neighbour_fields_behind_an_empty_one_move_forward)
{
    EXPECT_REQUEST("oltmib_lldpifnei_get_1", "3&&port&text", 3, zeros(6), chars(64, "text"), zeros(2000 + 32 + 2));
    EXPECT_REQUEST("oltmib_lldpifnei_get_1", "", zeros(2105));
    EXPECT_REQUEST("oltmib_lldpifnei_get_1", "&$&", zeros(2105));
}

TEST(erpsinfo, neighbour_text_is_cut_to_1999_characters)
{
    for (const size_t length : {1999, 2000, 2001, 5000}) {
        EXPECT_REQUEST("oltmib_lldpifnei_get_1", "1&00-00-00-00-00-00&p&" + std::string(length, 'x') + "&t", 1,
                       zeros(6), chars(64, "p"), chars(2000, std::string(1999, 'x')), chars(32, "t"), 0, 0);
    }
}

TEST(erpsinfo, neighbour_reply_is_far_longer_than_other_replies)
{
    const std::string p63(63, 'p');
    const std::string x1999(1999, 'x');
    const std::string t31(31, 't');
    EXPECT_REPLY("oltmib_lldpifnei_get_1",
                 "-2147483648&$00-11-22-33-44-55&$" + p63 + "&$" + x1999 + "&$" + t31 + "&$-2147483648&$-2147483648",
                 ints(0x80000000U), chars(6, mac_00_to_55), chars(64, p63), chars(2000, x1999), chars(32, t31),
                 ints(0x80000000U, 0x80000000U));
    EXPECT_EQ(api_named("oltmib_lldpifnei_get_1").output()->buffer, 4000U);
    EXPECT_EQ(api_named("oltmib_lldpcfg_get_1").output()->buffer, 1024U);
}

TEST(erpsinfo, neighbour_reply_keeps_separators_within_its_texts)
{
    EXPECT_REPLY("oltmib_lldpifnei_get_1", "3&$00-00-00-00-00-00&$R&D$&$&&$&$0&$0", 3, zeros(6), chars(64, "R&D$"),
                 chars(2000, "&"), zeros(32 + 2));
}

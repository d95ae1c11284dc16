// The network service module's tables: rate limits, storm control, access lists, quality of service.
#include "tests/services/support.h"

using namespace support;

TEST(nsminfo_traffic, ratelimit_is_the_whole_record)
{
    const Units row = wire(1, chars(32, "ge1"), 3, 4, 5, 6, chars(32, "text"), 7, 8);
    EXPECT_BOTH_WAYS("oltmib_ratelimitinfo_get_1", "1&ge1&3&4&5&6&text&7&8", row);
    const std::string values = "ifx 1, name ge1, in cir 3, cbs 4, out cir 5, cbs 6, oper 7.\r\n";
    EXPECT_EQ(parser_trace("oltmib_ratelimitinfo_get_1", "1&ge1&3&4&5&6&text&7&8"),
              "[str2arg_ratelimitinfo: 287]" + values);
    EXPECT_EQ(formatter_trace("oltmib_ratelimitinfo_get_1", row), "[arg2str_ratelimitinfo: 295]" + values);
}

TEST(nsminfo_traffic, stormcontrol_is_the_whole_record)
{
    const Units row = wire(1, chars(32, "ge1"), 3, 4, 5, chars(32, "text"), 6, 7);
    EXPECT_BOTH_WAYS("oltmib_stormcontrolinfo_getn_1", "1&ge1&3&4&5&text&6&7", row);
    const std::string values = "ifx 1, name ge1, ratelimit_type 3, level 4, fraction 5, oper 6.\r\n";
    EXPECT_EQ(parser_trace("oltmib_stormcontrolinfo_getn_1", "1&ge1&3&4&5&text&6&7"),
              "[str2arg_stormcontrolinfo: 314]" + values);
    EXPECT_EQ(formatter_trace("oltmib_stormcontrolinfo_getn_1", row), "[arg2str_stormcontrolinfo: 322]" + values);
}

namespace
{
// An access list's row without its count, and what is behind it.
const Units acl_head = wire(chars(70, "list"), counting(2, 5), chars(70, "seven"), 8, 9, chars(20, "ten"),
                            chars(40, "from"), chars(40, "twelve"), chars(20, "thirteen"), chars(40, "fourteen"),
                            chars(40, "fifteen"), chars(20, "sixteen"), 17, 18);
const Units acl_tail = wire(chars(32, "text"), 21, 22);
const std::string acl_text = "list&2&3&4&5&6&seven&8&9&ten&from&twelve&thirteen&fourteen&fifteen&sixteen&17&18";
} // namespace

TEST(nsminfo_traffic, acl_reads_twenty_one_positions_and_sends_no_count)
{
    EXPECT_REQUEST("oltmib_acl_set_1", acl_text + "&text&21&22", acl_head, 0, 0, acl_tail);
    // more than 21, and more than a parser of 20 would take
    EXPECT_REQUEST("oltmib_acl_set_1", acl_text + "&text&21&22&23" + repeated("&x", 20), acl_head, 0, 0, acl_tail);
}

TEST(nsminfo_traffic, acl_shows_twenty_two_positions_with_the_count_as_nineteenth)
{
    EXPECT_REPLY("oltmib_acl_get_1", acl_text + "&18446744073709551615&text&21&22", acl_head, words(~0ULL), acl_tail);
    EXPECT_REPLY("oltmib_acl_getn_1", acl_text + "&4294967298&text&21&22", acl_head, 2, 1, acl_tail);
}

TEST(nsminfo_traffic, acl_texts_are_cut_to_their_arrays)
{
    EXPECT_REQUEST("oltmib_acl_set_1",
                   repeated("n", 80) + "&2&3&4&5&6&" + repeated("s", 80) + "&8&9&" + repeated("t", 30) + "&" +
                       repeated("f", 50) + "&",
                   chars(70, repeated("n", 69)), counting(2, 5), chars(70, repeated("s", 69)), 8, 9,
                   chars(20, repeated("t", 19)), chars(40, repeated("f", 39)),
                   zeros(40 + 20 + 40 + 40 + 20 + 2 + 2 + 34));
}

TEST(nsminfo_traffic, acl_traces)
{
    EXPECT_EQ(parser_trace("oltmib_acl_get_1", acl_text + "&text&21&22"),
              "[str2arg_aclinfo: 355]name list, src from, oper 21.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_acl_get_1", wire(acl_head, 0, 0, acl_tail)),
              "[arg2str_aclinfo: 367]name list, src from, oper 21.\r\n");
}

TEST(nsminfo_traffic, aclif_is_the_whole_record)
{
    const Units row = wire(1, chars(32, "ge1"), chars(70, "inbound"), chars(70, "outbound"), chars(32, "text"), 2, 3);
    EXPECT_BOTH_WAYS("oltmib_aclif_get_1", "1&ge1&inbound&outbound&text&2&3", row);
    EXPECT_EQ(parser_trace("oltmib_aclif_get_1", "1&ge1&inbound&outbound&text&2&3"),
              "[str2arg_aclifinfo: 385]name ge1, in inbound, oper 2.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_aclif_get_1", row), "[arg2str_aclifinfo: 393]name ge1, in inbound, oper 2.\r\n");
}

TEST(nsminfo_traffic, qoscfg_is_the_whole_record)
{
    const Units row = wire(1, 2, chars(32, "text"), 3, 4);
    EXPECT_BOTH_WAYS("oltmib_qoscfg_get_1", "1&2&text&3&4", row);
    EXPECT_EQ(parser_trace("oltmib_qoscfg_get_1", "1&2&text&3&4"),
              "[str2arg_qoscfginfo: 409]status 1, alg 2, oper 3.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_qoscfg_get_1", row), "[arg2str_qoscfginfo: 417]status 1, alg 2, oper 3.\r\n");
}

TEST(nsminfo_traffic, class_is_the_whole_record)
{
    const Units row = wire(chars(70, "voice"), 2, chars(120, "three"), chars(32, "text"), 4, 5);
    EXPECT_BOTH_WAYS("oltmib_class_getn_1", "voice&2&three&text&4&5", row);
    EXPECT_EQ(parser_trace("oltmib_class_getn_1", "voice&2&three&text&4&5"),
              "[str2arg_classinfo: 634]name voice, matchtype 2, oper 4.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_class_getn_1", row),
              "[arg2str_classinfo: 642]name voice, matchtype 2, oper 4.\r\n");
}

TEST(nsminfo_traffic, policy_is_the_whole_record)
{
    const Units row =
        wire(chars(70, "gold"), chars(70, "voice"), 3, chars(120, "four"), counting(5, 5), chars(32, "text"), 10, 11);
    EXPECT_BOTH_WAYS("oltmib_policy_get_1", "gold&voice&3&four&5&6&7&8&9&text&10&11", row);
    EXPECT_EQ(parser_trace("oltmib_policy_get_1", "gold&voice&3&four&5&6&7&8&9&text&10&11"),
              "[str2arg_policyinfo: 665]name gold, class voice, oper 10.\r\n");
    EXPECT_EQ(formatter_trace("oltmib_policy_get_1", row),
              "[arg2str_policyinfo: 674]name gold, class voice, oper 10.\r\n");
}

// Both tables take one text; only the procedure differs.
TEST(nsminfo_traffic, trust_and_policy_of_an_interface_share_one_text)
{
    const Units row = wire(1, chars(32, "ge1"), 3, 4, chars(70, "gold"), chars(70, "six"), chars(32, "text"), 5, 6);
    for (const char* name : {"oltmib_qostrustif_get_1", "oltmib_qospolicyif_get_1"}) {
        EXPECT_BOTH_WAYS(name, "1&ge1&3&4&gold&six&text&5&6", row);
        EXPECT_EQ(parser_trace(name, "1&ge1&3&4&gold&six&text&5&6"),
                  "[str2arg_qosifinfo: 694]name ge1, in gold, oper 5.\r\n");
        EXPECT_EQ(formatter_trace(name, row), "[arg2str_qosifinfo: 702]name ge1, in gold, oper 5.\r\n");
    }
}

namespace
{
std::string text_of_char(char c) { return std::to_string(static_cast<int>(c)); }

const char* const maps_of_8[] = {"oltmib_queueweight_get_1", "oltmib_cos2dscp_get_1", "oltmib_cos2queue_get_1"};
const char* const maps_of_64[] = {"oltmib_dscp2cos_get_1", "oltmib_dscp2dscp_get_1", "oltmib_dscp2queue_get_1"};

// "1,2,3" up to `last`.
std::string numbers(int last)
{
    std::string text = "1";
    for (int i = 2; i <= last; i++)
        text += "," + std::to_string(i);
    return text;
}
} // namespace

TEST(nsminfo_lists, maps_are_a_byte_per_element)
{
    for (const char* name : maps_of_8)
        EXPECT_BOTH_WAYS(name, "1,2,3,4,5,6,7,8&text&9&10", counting(1, 8), chars(32, "text"), 9, 10);
    for (const char* name : maps_of_64)
        EXPECT_BOTH_WAYS(name, numbers(64) + "&text&9&10", counting(1, 64), chars(32, "text"), 9, 10);
}

TEST(nsminfo_lists, fewer_items_leave_the_rest_zero)
{
    for (const char* name : maps_of_8) {
        EXPECT_REQUEST(name, "1,2,3&text", 1, 2, 3, zeros(5), chars(32, "text"), 0, 0);
        EXPECT_REQUEST(name, ",,3&text", 0, 0, 3, zeros(5), chars(32, "text"), 0, 0);
        EXPECT_REQUEST(name, "", zeros(42));
    }
}

// The first field is the list 1,2,3, the others are empty: 61 zeros follow, and the reply lists 64 values.
TEST(nsminfo_lists, dscp2queue_of_three_items)
{
    EXPECT_REQUEST("oltmib_dscp2queue_get_1", "1,2,3&&&", 1, 2, 3, zeros(61 + 34));
    EXPECT_REPLY("oltmib_dscp2queue_get_1", "1,2,3" + repeated(",0", 61) + "&&0&0", 1, 2, 3, zeros(61 + 34));
}

TEST(nsminfo_lists, more_items_than_elements)
{
    for (const char* name : maps_of_8)
        for (const int items : {9, 16, 17, 40})
            EXPECT_REQUEST(name, numbers(items) + "&text", counting(1, 8), chars(32, "text"), 0, 0);
    for (const char* name : maps_of_64)
        for (const int items : {65, 80, 85})
            EXPECT_REQUEST(name, numbers(items) + "&text", counting(1, 64), chars(32, "text"), 0, 0);
    // beyond 80 items within 255 characters
    EXPECT_REQUEST("oltmib_dscp2cos_set_1", "7" + repeated(",7", 120) + "&text", chars(64, std::string(64, '\7')),
                   chars(32, "text"), 0, 0);
}

TEST(nsminfo_lists, values_above_255_keep_their_low_byte)
{
    for (const char* name : maps_of_8)
        EXPECT_REQUEST(name, "256,257,300,511,-1,200", chars(8, std::string("\x00\x01\x2C\xFF\xFF\xC8", 6)), zeros(34));
}

// An element is the host's char, also in the text.
TEST(nsminfo_lists, bytes_above_127_print_as_the_hosts_char)
{
    EXPECT_REPLY("oltmib_queueweight_get_1", text_of_char('\xC8') + "," + text_of_char('\xFF') + ",0,0,0,0,0,0&&0&0",
                 200, 255, zeros(6 + 34));
}

// A reply lists every element, however long the list gets, and no comma behind the last.
TEST(nsminfo_lists, replies_list_every_element)
{
    for (const char* name : maps_of_8)
        EXPECT_REPLY(name, "0,0,0,0,0,0,0,0&&0&0", zeros(42));
    const std::string most = text_of_char('\x80'); // four characters where char is signed
    for (const char* name : maps_of_64)
        EXPECT_REPLY(name, most + repeated("," + most, 63) + "&text&1&2", chars(64, std::string(64, '\x80')),
                     chars(32, "text"), 1, 2);
}

// 255 characters are split: 42 items of six, and "001" of the 43rd.
TEST(nsminfo_lists, texts_of_more_than_255_characters_are_cut_before_they_are_split)
{
    const std::string text = repeated("00123,", 64);
    for (const char* name : maps_of_64)
        EXPECT_REQUEST(name, text + "&text&1&2", chars(64, std::string(42, '\x7B') + "\1"), chars(32, "text"), 1, 2);
    // the cut behind a comma, and behind the last digit of an item
    EXPECT_REQUEST("oltmib_dscp2cos_get_1", repeated("0007,", 64) + "&text", chars(64, std::string(51, '\7')),
                   chars(32, "text"), 0, 0);
    const std::string blanks(252, ' ');
    EXPECT_REQUEST("oltmib_queueweight_get_1", blanks + "1234,5&text", 123, zeros(7), chars(32, "text"), 0, 0);
}

TEST(nsminfo_lists, qosifcfg_has_two_lists_of_ints)
{
    EXPECT_BOTH_WAYS("oltmib_qosifcfg_get_1", "1&ge1&1,2,3,4,5,6,7,8&-1,300,70000,0,0,0,0,-2147483648&text&2&3", 1,
                     chars(32, "ge1"), counting(1, 8), -1, 300, 70000, zeros(4), 0x80000000, chars(32, "text"), 2, 3);
}

TEST(nsminfo_lists, qosifcfg_lists_of_other_lengths)
{
    EXPECT_REQUEST("oltmib_qosifcfg_set_1", "1&ge1&&" + numbers(20) + "&text", 1, chars(32, "ge1"), zeros(8),
                   counting(1, 8), chars(32, "text"), 0, 0);
    EXPECT_REQUEST("oltmib_qosifcfg_getn_1", "1&ge1&7&" + std::string(252, ' ') + "1234,5&text", 1, chars(32, "ge1"), 7,
                   zeros(7), 123, zeros(7), chars(32, "text"), 0, 0);
    EXPECT_REPLY("oltmib_qosifcfg_getn_1", "1&ge1&0,0,0,0,0,0,0,0&0,0,0,0,0,0,0,0&&0&0", 1, chars(32, "ge1"),
                 zeros(16 + 34));
}

// The parser traces once an item of the list text.
TEST(nsminfo_lists, dscp2queue_parser_traces_each_item)
{
    const auto line = [](int dscp, const std::string& queue, const std::string& item) {
        return "[str2arg_dscp2queueinfo: 602]dscp " + std::to_string(dscp) + ", queue " + queue + "(" + item + ").\r\n";
    };
    EXPECT_EQ(parser_trace("oltmib_dscp2queue_set_1", "1,,x7,300&text&1&2"),
              line(0, "1", "1") + line(1, "0", "") + line(2, "0", "x7") + line(3, "44", "300"));
    EXPECT_EQ(parser_trace("oltmib_dscp2queue_set_1", "&text&1&2"), line(0, "0", ""));
    EXPECT_EQ(parser_trace("oltmib_dscp2queue_set_1", "200"), line(0, text_of_char('\xC8'), "200"));

    std::string first_64;
    for (int i = 0; i < 64; i++)
        first_64 += line(i, std::to_string(i + 1), std::to_string(i + 1));
    EXPECT_EQ(parser_trace("oltmib_dscp2queue_set_1", numbers(64)), first_64);
    EXPECT_EQ(parser_trace("oltmib_dscp2queue_set_1", numbers(85)), first_64);

    std::string cut;
    for (int i = 0; i < 42; i++)
        cut += line(i, "123", "00123");
    EXPECT_EQ(parser_trace("oltmib_dscp2queue_set_1", repeated("00123,", 64)), cut + line(42, "1", "001"));
}

// The formatter traces once an element, with the list as far as it has come.
TEST(nsminfo_lists, dscp2queue_formatter_traces_each_element)
{
    std::string lines, list;
    Units map;
    for (int i = 0; i < 64; i++) {
        const char element = i % 2 ? '\x80' : '\5';
        append(map, static_cast<int>(element));
        list += text_of_char(element) + ",";
        lines += "[arg2str_dscp2queueinfo: 614]dscp " + std::to_string(i) + ", queue " + text_of_char(element) + "(" +
                 list + ").\r\n";
    }
    EXPECT_EQ(formatter_trace("oltmib_dscp2queue_get_1", wire(map, zeros(34))), lines);
}

// The network service module's tables: the forwarding database, aggregation, spanning-tree
// status, error-disable and ARP.
#include "tests/services/support.h"

using namespace support;

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

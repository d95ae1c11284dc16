// The IGMP snooping service. Its static and its learned groups share a record.
#include "tests/services/support.h"

using namespace support;

namespace
{
const Service& igmpsnpinfo = service_named("igmpsnpinfo");
}

TEST(igmpsnpinfo, global_carries_six_fields)
{
    EXPECT_BOTH_WAYS("oltmib_igmpsnp_get_1", "1&2&3&t&4&5", 1, 2, 3, chars(32, "t"), 4, 5);
    EXPECT_REQUEST("oltmib_igmpsnp_set_1", "1&2&3&t&4&5", 1, 2, 3, chars(32, "t"), 4, 5);
}

TEST(igmpsnpinfo, router_port_carries_five_fields)
{
    const Units record = wire(1, chars(40, "eth0/1"), chars(32, "t"), 2, 3);
    ASSERT_EQ(record.size(), 75U);
    EXPECT_BOTH_WAYS("oltmib_igmpsnp_mrouter_get_1", "1&eth0/1&t&2&3", record);
    EXPECT_BOTH_WAYS("oltmib_igmpsnp_mrouter_getn_1", "1&eth0/1&t&2&3", record);
    EXPECT_REQUEST("oltmib_igmpsnp_mrouter_set_1", "1&eth0/1&t&2&3", record);
}

TEST(igmpsnpinfo, learned_and_static_groups_send_the_same_record_to_procedures_10_and_7)
{
    const std::string text = "1&eth0/1&239.1.2.3&192.0.2.1&2&t&3&4";
    const Units record =
        wire(1, chars(40, "eth0/1"), chars(32, "239.1.2.3"), chars(32, "192.0.2.1"), 2, chars(32, "t"), 3, 4);
    ASSERT_EQ(record.size(), 140U);
    for (const char* name : {"oltmib_igmpsnp_grp_get_1", "oltmib_igmpsnp_grp_getn_1", "oltmib_igmpsnp_static_grp_get_1",
                             "oltmib_igmpsnp_static_grp_getn_1"}) { // request_of sees to the procedure
        EXPECT_BOTH_WAYS(name, text, record);
    }
    EXPECT_REQUEST("oltmib_igmpsnp_static_grp_set_1", text, record);
    EXPECT_EQ(api_named("oltmib_igmpsnp_grp_get_1").procedure, 10U);
    EXPECT_EQ(api_named("oltmib_igmpsnp_static_grp_get_1").procedure, 7U);
}

TEST(igmpsnpinfo, group_keeps_39_characters_of_45_in_its_second_field)
{
    EXPECT_REQUEST("oltmib_igmpsnp_grp_get_1", "1&" + std::string(45, 'g'), 1, chars(40, std::string(39, 'g')),
                   zeros(32 + 32 + 1 + 32 + 2));
}

TEST(igmpsnpinfo, no_api_sets_a_learned_group)
{
    register_once(igmpsnpinfo);
    EXPECT_EQ(lua_getapibyname("oltmib_igmpsnp_grp_set_1"), nullptr);
    EXPECT_NE(lua_getapibyname("oltmib_igmpsnp_static_grp_set_1"), nullptr);
}

TEST(igmpsnpinfo, fast_leave_carries_five_fields)
{
    EXPECT_BOTH_WAYS("oltmib_igmpsnp_fastleave_get_1", "1&2&t&3&4", 1, 2, chars(32, "t"), 3, 4);
    EXPECT_REQUEST("oltmib_igmpsnp_fastleave_set_1", "1&2&t&3&4", 1, 2, chars(32, "t"), 3, 4);
}

// The routing table service.
#include "tests/services/support.h"

using namespace support;

TEST(ribinfo, nine_fields_come_back_unchanged)
{
    const Units record = wire(chars(64, "192.0.2.0"), chars(64, "255.255.255.0"), chars(32, "10.0.0.1"), 1, 2,
                              chars(32, "static"), chars(32, "t"), 3, 4);
    ASSERT_EQ(record.size(), 228U);
    const std::string text = "192.0.2.0&255.255.255.0&10.0.0.1&1&2&static&t&3&4";
    EXPECT_BOTH_WAYS("oltmib_route_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_route_getn_1", text, record);
    EXPECT_REQUEST("oltmib_route_set_1", text, record);
    EXPECT_REPLY("oltmib_route_set_1", "-1", -1);
}

TEST(ribinfo, empty_argument_sends_zeros_to_procedure_2)
{
    EXPECT_REQUEST("oltmib_route_getn_1", "", zeros(228));
    EXPECT_EQ(api_named("oltmib_route_getn_1").procedure, 2U);
}

TEST(ribinfo, first_field_of_70_characters_is_sent_as_its_first_63)
{
    EXPECT_REQUEST("oltmib_route_get_1", std::string(70, 'r'), chars(64, std::string(63, 'r')), zeros(228 - 64));
}

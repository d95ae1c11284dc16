// The loop detection service. Its registration function is named for
// "lpdetinfo", its client for "lpdet".
#include "tests/services/support.h"

using namespace support;

namespace
{
const Service& lpdet = service_named("lpdet");
}

TEST(lpdet, global_returns_six_fields_the_fourth_a_text)
{
    EXPECT_REQUEST("oltmib_lpdet_global_get_1", "", zeros(37));
    EXPECT_REPLY("oltmib_lpdet_global_get_1", "0&0&0&&0&0", zeros(37));
    EXPECT_BOTH_WAYS("oltmib_lpdet_global_get_1", "1&2&3&t&4&5", 1, 2, 3, chars(32, "t"), 4, 5);
    EXPECT_REQUEST("oltmib_lpdet_global_set_1", "1&2&3&t&4&5", 1, 2, 3, chars(32, "t"), 4, 5);
}

TEST(lpdet, port_information_carries_eleven_fields)
{
    const Units record = wire(1, chars(32, "eth1"), 2, chars(64, "b"), chars(16, "c"), chars(16, "d"), chars(32, "e"),
                              3, chars(32, "f"), 4, 5);
    ASSERT_EQ(record.size(), 197U);
    EXPECT_BOTH_WAYS("oltmib_lpdet_portinfo_get_1", "1&eth1&2&b&c&d&e&3&f&4&5", record);
    EXPECT_BOTH_WAYS("oltmib_lpdet_portinfo_getn_1", "1&eth1&2&b&c&d&e&3&f&4&5", record);
    EXPECT_REQUEST("oltmib_lpdet_portinfo_set_1", "1&eth1&2&b&c&d&e&3&f&4&5", record);
}

TEST(lpdet, port_information_keeps_15_characters_of_its_third_text)
{
    const std::string x70(70, 'x');
    EXPECT_REQUEST("oltmib_lpdet_portinfo_get_1", "1&&2&&" + std::string(20, 'x'), 1, zeros(32), 2, zeros(64),
                   chars(16, std::string(15, 'x')), zeros(16 + 32 + 1 + 32 + 2));
    EXPECT_REQUEST(
        "oltmib_lpdet_portinfo_get_1", "1&" + x70 + "&2&" + x70 + "&" + x70 + "&" + x70 + "&" + x70 + "&3&" + x70, 1,
        chars(32, std::string(31, 'x')), 2, chars(64, std::string(63, 'x')), chars(16, std::string(15, 'x')),
        chars(16, std::string(15, 'x')), chars(32, std::string(31, 'x')), 3, chars(32, std::string(31, 'x')), 0, 0);
}

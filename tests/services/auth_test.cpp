// The authentication service's tables: what they send and what they make of a reply.
#include "tests/services/support.h"

using namespace support;

TEST(Auth, GlobalTakesFourFieldsInOrder)
{
    EXPECT_REQUEST("oltmib_auth_global_get_1", "5&word&7&9", 5, chars(32, "word"), 7, 9);
    EXPECT_REPLY("oltmib_auth_global_get_1", "5&word&7&9", 5, chars(32, "word"), 7, 9);
}

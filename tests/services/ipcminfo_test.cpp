// The IPC ioctl service.
#include "tests/services/support.h"

using namespace support;

TEST(ipcminfo, eight_fields_come_back_with_their_texts_cut_to_31_characters)
{
    const Units record = wire(1, 2, 3, 4, chars(32, "a"), chars(32, "b"), 5, 6);
    ASSERT_EQ(record.size(), 70U);
    EXPECT_BOTH_WAYS("oltmib_ioctlinfo_get_1", "1&2&3&4&a&b&5&6", record);
    EXPECT_BOTH_WAYS("oltmib_ioctlinfo_getn_1", "1&2&3&4&a&b&5&6", record);
    EXPECT_REQUEST("oltmib_ioctlinfo_set_1", "1&2&3&4&a&b&5&6", record);
    const std::string a31(31, 'a');
    const std::string b31(31, 'b');
    EXPECT_EQ(text_of("oltmib_ioctlinfo_get_1",
                      request_of("oltmib_ioctlinfo_get_1", "1&2&3&4&" + a31 + "a&" + b31 + "bbbb&5&6")),
              "1&2&3&4&" + a31 + "&" + b31 + "&5&6");
}

TEST(ipcminfo, ints_that_are_no_numbers_are_sent_as_zeros)
{
    EXPECT_REQUEST("oltmib_ioctlinfo_get_1", "one&&0x7&- 3&a&b&five&-6x", zeros(4), chars(32, "a"), chars(32, "b"), 0,
                   -6);
}

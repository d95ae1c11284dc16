// The spanning tree service. Its port states carry three 8-byte identifiers as
// hexadecimal text.
#include "services/mstpinfo/records.h"
#include "tests/services/support.h"

using namespace support;

namespace
{
const Service& mstpinfo = service_named("mstpinfo");
const std::string bridge("\x80\x00\x00\x11\x22\x33\x44\x55", 8);
} // namespace

TEST(mstpinfo, empty_global_argument_sends_zeros_and_returns_fourteen_fields)
{
    EXPECT_REQUEST("oltmib_mstp_global_get_1", "", zeros(45));
    EXPECT_REPLY("oltmib_mstp_global_get_1", "0&0&0&0&0&0&0&0&0&0&0&&0&0", zeros(45));
    EXPECT_BOTH_WAYS("oltmib_mstp_global_get_1", "1&2&3&4&5&6&7&8&9&10&11&text&12&13", counting(1, 11),
                     chars(32, "text"), 12, 13);
    EXPECT_REQUEST("oltmib_mstp_global_set_1", "1&2&3&4&5&6&7&8&9&10&11&text&12&13", counting(1, 11), chars(32, "text"),
                   12, 13);
}

TEST(mstpinfo, mst_carries_five_fields)
{
    const Units record = wire(chars(40, "region"), 1, chars(32, "t"), 2, 3);
    ASSERT_EQ(record.size(), 75U);
    EXPECT_BOTH_WAYS("oltmib_mstp_mst_get_1", "region&1&t&2&3", record);
    EXPECT_REQUEST("oltmib_mstp_mst_set_1", "region&1&t&2&3", record);
    EXPECT_REQUEST("oltmib_mstp_mst_get_1", std::string(50, 'r'), chars(40, std::string(39, 'r')), zeros(35));
}

TEST(mstpinfo, instance_carries_six_fields)
{
    const Units record = wire(1, chars(64, "1-100"), 2, chars(32, "t"), 3, 4);
    ASSERT_EQ(record.size(), 100U);
    EXPECT_BOTH_WAYS("oltmib_mstp_inst_get_1", "1&1-100&2&t&3&4", record);
    EXPECT_BOTH_WAYS("oltmib_mstp_inst_getn_1", "1&1-100&2&t&3&4", record);
    EXPECT_REQUEST("oltmib_mstp_inst_set_1", "1&1-100&2&t&3&4", record);
}

TEST(mstpinfo, port_settings_carry_seventeen_fields)
{
    const Units record = wire(1, 2, chars(32, "eth1"), counting(3, 11), chars(32, "t"), 14, 15);
    ASSERT_EQ(record.size(), 79U);
    const std::string text = "1&2&eth1&3&4&5&6&7&8&9&10&11&12&13&t&14&15";
    EXPECT_BOTH_WAYS("oltmib_mstp_if_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_mstp_if_getn_1", text, record);
    EXPECT_REQUEST("oltmib_mstp_if_set_1", text, record);
}

TEST(mstpinfo, more_than_twenty_fields_change_nothing)
{
    EXPECT_REQUEST("oltmib_mstp_if_get_1", "1&2&eth1&3&4&5&6&7&8&9&10&11&12&13&t&14&15&16&17&18&19&20&21&22", 1, 2,
                   chars(32, "eth1"), counting(3, 11), chars(32, "t"), 14, 15);
}

TEST(mstpinfo, port_state_carries_three_identifiers_as_sixteen_hex_digits)
{
    const Units record =
        wire(1, 2, chars(32, "eth1"), 3, 4, 5, chars(8, bridge), chars(8, "\xFF\xEE\xDD\xCC\xBB\xAA\x99\x88"),
             chars(8, std::string(8, '\x01')), chars(32, "t"), 6, 7);
    ASSERT_EQ(record.size(), 95U);
    const std::string text = "1&2&eth1&3&4&5&8000001122334455&ffeeddccbbaa9988&0101010101010101&t&6&7";
    EXPECT_BOTH_WAYS("oltmib_mstp_ifstate_get_1", text, record);
    EXPECT_BOTH_WAYS("oltmib_mstp_ifstate_getn_1", text, record);
}

TEST(mstpinfo, identifiers_take_whole_pairs_eight_at_most_and_either_case)
{
    const auto sent = [](const std::string& hex) {
        const Units units = request_of("oltmib_mstp_ifstate_get_1", "&&&&&&" + hex);
        return Units(units.begin() + 37, units.begin() + 37 + 8 + 8);
    };
    EXPECT_EQ(sent(""), zeros(16));
    EXPECT_EQ(sent("8"), zeros(16));
    EXPECT_EQ(sent("800"), wire(chars(8, "\x80"), zeros(8)));
    EXPECT_EQ(sent("aAFf7"), wire(chars(8, "\xAA\xFF"), zeros(8)));
    EXPECT_EQ(sent("01020304050607080900"), wire(chars(8, "\x01\x02\x03\x04\x05\x06\x07\x08"), zeros(8)));
    EXPECT_EQ(sent("12zz34"), wire(chars(8, "\x12\x12\x34"), zeros(8))); // a pair that is none repeats
    EXPECT_EQ(sent("zz12"), wire(chars(8, std::string("\x00\x12", 2)), zeros(8)));
}

TEST(mstpinfo, reset_takes_a_port_state_and_answers_with_an_int)
{
    EXPECT_REQUEST("oltmib_mstp_reset_if_detect_1",
                   "1&2&eth1&3&4&5&8000001122334455&8000001122334455&8000001122334455&t&6&7", 1, 2, chars(32, "eth1"),
                   3, 4, 5, chars(8, bridge), chars(8, bridge), chars(8, bridge), chars(32, "t"), 6, 7);
    EXPECT_REPLY("oltmib_mstp_reset_if_detect_1", "-17", -17);
    EXPECT_REPLY("oltmib_mstp_reset_if_detect_1", "0", 0);
}

// No record has a version, but the routine stands for those who add one.
TEST(mstpinfo, version_travels_as_one_unit)
{
    static_assert(sizeof(oltmib_mstpver_e) == sizeof(int), "the enum is an int");
    auto version = static_cast<oltmib_mstpver_e>(3);
    uint32_t unit = 0;
    XDR xdrs;
    xdrmem_create(&xdrs, reinterpret_cast<char*>(&unit), sizeof unit, XDR_ENCODE);
    EXPECT_TRUE(xdr_oltmib_mstpver_e(&xdrs, &version));
    EXPECT_EQ(XDR_GETPOS(&xdrs), 4U);
    EXPECT_EQ(ntohl(unit), 3U);
    EXPECT_FALSE(xdr_oltmib_mstpver_e(&xdrs, &version)) << "there is no room for a second";
    unit = htonl(0xFFFFFFFE);
    xdrmem_create(&xdrs, reinterpret_cast<char*>(&unit), sizeof unit, XDR_DECODE);
    EXPECT_TRUE(xdr_oltmib_mstpver_e(&xdrs, &version));
    EXPECT_EQ(static_cast<int>(version), -2);
}

// The network service module's tables: what they send and what they make of a
// reply, and each place where a table is unlike its neighbours.
#include "services/nsminfo/forwarding/records.h"
#include "services/nsminfo/modules/records.h"
#include "services/nsminfo/ports/records.h"
#include "services/nsminfo/traffic/records.h"
#include "services/nsminfo/vlans/records.h"
#include "tests/golden/golden_list.h"
#include "tests/services/support.h"

using namespace support;

namespace
{
// The units of a 64-bit value: the low word, then the high word.
Units words(uint64_t value) { return ints(static_cast<uint32_t>(value), static_cast<uint32_t>(value >> 32)); }

std::string text_of_char(char c) { return std::to_string(static_cast<int>(c)); }

// What the routine makes of `value`; with an inline buffer, or as a stream
// without one does it.
template <class Value, class Routine> Units encoded(Routine routine, Value value, bool with_inline)
{
    Units units(sizeof value / BYTES_PER_XDR_UNIT);
    XDR xdrs;
    xdrmem_create(&xdrs, reinterpret_cast<char*>(units.data()), sizeof value, XDR_ENCODE);
    auto ops = *xdrs.x_ops;
    if (!with_inline) {
        ops.x_inline = [](XDR*, u_int) -> int32_t* { return nullptr; };
        xdrs.x_ops = &ops;
    }
    EXPECT_TRUE(routine(&xdrs, &value));
    EXPECT_EQ(XDR_GETPOS(&xdrs), sizeof value);
    for (uint32_t& unit : units)
        unit = ntohl(unit);
    return units;
}

template <class Value, class Routine> Value decoded(Routine routine, Units units, bool with_inline)
{
    for (uint32_t& unit : units)
        unit = htonl(unit);
    Value value = {};
    XDR xdrs;
    xdrmem_create(&xdrs, reinterpret_cast<char*>(units.data()), sizeof value, XDR_DECODE);
    auto ops = *xdrs.x_ops;
    if (!with_inline) {
        ops.x_inline = [](XDR*, u_int) -> int32_t* { return nullptr; };
        xdrs.x_ops = &ops;
    }
    EXPECT_TRUE(routine(&xdrs, &value));
    return value;
}

// A block of 64-bit values, and one of its values, by place.
template <class Block> Block block_of(std::vector<int64_t> values)
{
    Block block = {};
    values.resize(sizeof block / sizeof values[0]);
    memcpy(&block, values.data(), sizeof block);
    return block;
}

template <class Block> int64_t value_of(const Block& block, size_t place)
{
    int64_t value;
    memcpy(&value, reinterpret_cast<const char*>(&block) + place * sizeof value, sizeof value);
    return value;
}
} // namespace

// --- the service ---

// Four procedures have a stub that Lua cannot reach.
TEST(nsminfo, four_stubs_are_never_registered)
{
    register_once(service_named("nsminfo"));
    for (const char* name :
         {"oltmib_pminfo_get_1", "oltmib_cvlaninfo_get_1", "oltmib_cvlaninfo_getn_1", "oltmib_cvlaninfo_set_1"}) {
        EXPECT_FALSE(api_named(name).registered()) << name;
        EXPECT_EQ(lua_getapibyname(name), nullptr) << name;
    }
}

TEST(nsminfo, unregistered_stubs_still_call)
{
    FakeDaemon daemon;
    const Units units = wire(chars(32, "one"), counting(2, 4), chars(32, "text"), 6, 7);
    const Record& record = *api_named("oltmib_cvlaninfo_get_1").request;
    const auto cvlan = record_of_units(record, units);
    daemon.reply = wire(chars(32, "two"), counting(3, 4), chars(32, "more"), 8, 9);
    rpcproc_t procedure = 13;
    for (const char* name : {"oltmib_cvlaninfo_get_1", "oltmib_cvlaninfo_getn_1"}) {
        const void* reply = api_named(name).func(cvlan.get(), daemon.client());
        ASSERT_NE(reply, nullptr);
        EXPECT_EQ(daemon.procedure, procedure++);
        EXPECT_EQ(daemon.request, units);
        EXPECT_EQ(units_of_record(record, reply), daemon.reply);
    }
    daemon.reply = ints(-4);
    const auto* status = static_cast<int*>(api_named("oltmib_cvlaninfo_set_1").func(cvlan.get(), daemon.client()));
    EXPECT_EQ(daemon.procedure, 15U);
    EXPECT_EQ(daemon.request, units);
    EXPECT_EQ(*status, -4);

    const Api& pminfo = api_named("oltmib_pminfo_get_1");
    const auto session = record_of_units(*pminfo.request, wire(1, zeros(651)));
    daemon.reply = zeros(652);
    EXPECT_NE(pminfo.func(session.get(), daemon.client()), nullptr);
    EXPECT_EQ(daemon.procedure, 7U);
    EXPECT_EQ(daemon.request, wire(1, zeros(651)));
}

TEST(nsminfo, sets_reply_with_their_status)
{
    int sets = 0;
    for (const Api& api : service_named("nsminfo"))
        if (api.registered() && std::string(api.name).find("_set_1") != std::string::npos) {
            sets++;
            EXPECT_REPLY(api.name, "0", 0);
            EXPECT_REPLY(api.name, "-17", -17);
        }
    int expected = 0;
    for (const auto& row : golden::list("apis.txt"))
        expected += row.at(0) == "50004" && row.at(1).find("_set_1") != std::string::npos;
    EXPECT_EQ(sets, expected);
}

TEST(nsminfo, failed_calls_give_no_reply)
{
    const Api& api = api_named("oltmib_portinfo_get_1");
    const auto request = record_of_units(*api.request, zeros(357));
    FakeDaemon daemon;
    daemon.reply = zeros(356); // a unit short
    EXPECT_EQ(api.func(request.get(), daemon.client()), nullptr);
    daemon.reply.push_back(0);
    EXPECT_NE(api.func(request.get(), daemon.client()), nullptr);
    daemon.status = RPC_TIMEDOUT;
    EXPECT_EQ(api.func(request.get(), daemon.client()), nullptr);
}

TEST(nsminfo, nothing_is_printed_unless_tracing)
{
    testing::internal::CaptureStdout();
    for (const Api& api : service_named("nsminfo"))
        if (api.registered()) {
            request_of(api.name, "1&2&3");
            text_of(api.name, zeros(api.reply ? api.reply->units : 1));
        }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// The tables without a trace line, of which neither converter may print.
TEST(nsminfo, tables_without_a_trace)
{
    for (const char* name :
         {"portinfo", "vlaninfo",  "sptmode",     "vlanvpn",    "vlanvpnif",      "svi",      "queueweight",
          "cos2dscp", "cos2queue", "dscp2cos",    "dscp2dscp",  "qosifcfg",       "fdbparam", "fdb",
          "ag",       "agsys",     "stpifstatus", "errdisable", "errdisportinfo", "arp",      "sarp",
          "optical",  "nsm",       "cabledetect", "dosglobal",  "dosif",          "dnserver"}) {
        const std::string api = "oltmib_" + std::string(name) + "_get_1";
        EXPECT_EQ(parser_trace(api.c_str(), "1&2&3"), "") << api;
        EXPECT_EQ(formatter_trace(api.c_str(), zeros(api_named(api).reply->units)), "") << api;
    }
    EXPECT_EQ(parser_trace("oltmib_vlanbitmapinfo_set_1", "1&2&3"), "");
    EXPECT_EQ(parser_trace("oltmib_opticaldetail_get_1", "1&2&3"), "");
}

// --- 64-bit values, blocks and enums ---

TEST(nsminfo_words, low_word_travels_first)
{
    for (const bool with_inline : {true, false}) {
        EXPECT_EQ(encoded(xdr_oltmib_int64_t, oltmib_int64_t{(1LL << 32) + 2}, with_inline), ints(2, 1));
        EXPECT_EQ(encoded(xdr_oltmib_uint64_t, oltmib_uint64_t{(1ULL << 32) + 2}, with_inline), ints(2, 1));
        EXPECT_EQ(encoded(xdr_oltmib_int64_t, oltmib_int64_t{-2}, with_inline), ints(0xFFFFFFFE, 0xFFFFFFFF));
        EXPECT_EQ(encoded(xdr_oltmib_uint64_t, oltmib_uint64_t{0xFEDCBA9876543210}, with_inline),
                  ints(0x76543210, 0xFEDCBA98));
    }
}

TEST(nsminfo_words, low_word_arrives_first)
{
    for (const bool with_inline : {true, false}) {
        EXPECT_EQ(decoded<oltmib_int64_t>(xdr_oltmib_int64_t, ints(2, 1), with_inline), (1LL << 32) + 2);
        EXPECT_EQ(decoded<oltmib_int64_t>(xdr_oltmib_int64_t, ints(-2, -1), with_inline), -2);
        EXPECT_EQ(decoded<oltmib_uint64_t>(xdr_oltmib_uint64_t, ints(0x76543210, 0xFEDCBA98), with_inline),
                  0xFEDCBA9876543210U);
    }
}

TEST(nsminfo_words, blocks_are_their_values_in_order)
{
    std::vector<int64_t> values(54);
    values[0] = (1LL << 32) + 2, values[9] = -1, values[53] = 53;
    const auto counters = block_of<oltmib_if_counters>(values);
    const auto rates = block_of<oltmib_ifrate_s>({(3LL << 32) + 4, 0, 0, 0, 0, -5});
    for (const bool with_inline : {true, false}) {
        EXPECT_EQ(encoded(xdr_oltmib_if_counters, counters, with_inline),
                  wire(2, 1, zeros(16), -1, -1, zeros(86), 53, 0));
        EXPECT_EQ(encoded(xdr_oltmib_ifrate_s, rates, with_inline), wire(4, 3, zeros(8), -5, -1));
        EXPECT_EQ(
            value_of(decoded<oltmib_if_counters>(xdr_oltmib_if_counters, wire(zeros(106), 7, 1), with_inline), 53),
            (1LL << 32) + 7);
        EXPECT_EQ(value_of(decoded<oltmib_ifrate_s>(xdr_oltmib_ifrate_s, wire(-6, -1, zeros(10)), with_inline), 0), -6);
    }
}

// No record carries them, but their routines are there: one unit, any value.
TEST(nsminfo_words, enums_are_one_unit)
{
    const auto check = [](auto routine, auto) {
        EXPECT_EQ(encoded(routine, 0x12345678, true), ints(0x12345678));
        EXPECT_EQ(decoded<int>(routine, ints(-9), true), -9);
    };
    check(xdr_oltmib_iftype_e, oltmib_iftype_e{});
    check(xdr_oltmib_ratelimit_type, oltmib_ratelimit_type{});
    check(xdr_oltmib_class_matchtype, oltmib_class_matchtype{});
    check(xdr_oltmib_agmode_e, oltmib_agmode_e{});
    check(xdr_oltmib_dos_type, oltmib_dos_type{});
}

// --- ports ---

TEST(nsminfo_ports, portinfo_of_two_fields_is_zero_behind_them)
{
    EXPECT_REQUEST("oltmib_portinfo_get_1", "1&ge1", 1, chars(32, "ge1"), zeros(80 + 2 + 64 + 3 + 128 + 13 + 32 + 2));
}

TEST(nsminfo_ports, portinfo_sixth_field_fills_field_8_and_field_9)
{
    EXPECT_REQUEST("oltmib_portinfo_set_1", "&&&&&5", zeros(1 + 32 + 80 + 2 + 64), 5, 5, 0, zeros(128 + 13 + 32 + 2));
}

TEST(nsminfo_ports, portinfo_reads_twenty_four_fields)
{
    EXPECT_REQUEST("oltmib_portinfo_getn_1",
                   "1&ge1&desc&4&5&8&10&eleven&twelve&13&14&15&16&17&18&19&20&21&23&24&25&last&27&28&29", 1,
                   chars(32, "ge1"), chars(80, "desc"), 4, 5, zeros(64), 8, 8, 10, chars(64, "eleven"),
                   chars(64, "twelve"), counting(13, 9), 0, counting(23, 3), chars(32, "last"), 27, 28);
}

// field6, field7, field9 and field22 are in the reply, but not in its text.
TEST(nsminfo_ports, portinfo_shows_twenty_four_fields)
{
    EXPECT_REPLY("oltmib_portinfo_get_1",
                 "1&ge1&desc&4&5&8&10&eleven&twelve&13&14&15&16&17&18&19&20&21&23&24&25&last&27&28", 1,
                 chars(32, "ge1"), chars(80, "desc"), 4, 5, chars(32, "six"), chars(32, "seven"), 8, 9, 10,
                 chars(64, "eleven"), chars(64, "twelve"), counting(13, 13), chars(32, "last"), 27, 28);
}

TEST(nsminfo_ports, portstat_reads_nothing_from_the_counter_positions)
{
    EXPECT_REQUEST("oltmib_portstat_set_1", "1&2&ge1&91&92&93&94&95&96&97&98&99&90&text&3&4", 1, 2, chars(32, "ge1"),
                   zeros(108), chars(32, "text"), 3, 4);
}

TEST(nsminfo_ports, portstat_of_three_fields_is_zero_behind_them)
{
    EXPECT_REQUEST("oltmib_portstat_get_1", "1&2&ge1", 1, 2, chars(32, "ge1"), zeros(108 + 32 + 2));
}

TEST(nsminfo_ports, portstat_shows_ten_counters_in_their_odd_order)
{
    Units counters;
    for (int i = 0; i < 54; i++)
        append(counters, ints(1000 + i, 0));
    EXPECT_REPLY("oltmib_portstat_get_1", "1&2&ge1&1009&1006&1013&1027&1026&1029&1035&1037&1040&1042&text&3&4", 1, 2,
                 chars(32, "ge1"), counters, chars(32, "text"), 3, 4);
}

TEST(nsminfo_ports, portstat_counters_print_unsigned)
{
    EXPECT_REPLY("oltmib_portstat_getn_1", "0&0&&18446744073709551615&9223372036854775808&0&0&0&0&0&0&0&0&&0&0",
                 zeros(34 + 12), words(1ULL << 63), zeros(4), words(~0ULL), zeros(88 + 34));
}

TEST(nsminfo_ports, portstat_traces_the_whole_argument)
{
    EXPECT_EQ(parser_trace("oltmib_portstat_get_1", "1&2&ge1&&&&&&&&&&&text&3&4&more&"),
              "[str2arg_portstat: 136]str 1&2&ge1&&&&&&&&&&&text&3&4&more&, ifx 1, oper 3.\r\n");
    EXPECT_EQ(parser_trace("oltmib_portstat_get_1", ""), "[str2arg_portstat: 136]str , ifx 0, oper 0.\r\n");
    EXPECT_EQ(
        formatter_trace("oltmib_portstat_get_1", wire(1, 2, chars(32, "ge1"), zeros(108), chars(32, "text"), 3, 4)),
        "[arg2str_portstat: 173]ifx 1, name ge1, res 4, str 1&2&ge1&0&0&0&0&0&0&0&0&0&0&text&3&4.\r\n");
}

TEST(nsminfo_ports, portrate_reads_nothing_from_the_rate_positions)
{
    EXPECT_REQUEST("oltmib_portrate_getn_1", "1&2&ge1&91&92&93&94&95&96&text&3&4", 1, 2, chars(32, "ge1"), zeros(12),
                   chars(32, "text"), 3, 4);
}

TEST(nsminfo_ports, portrate_shows_six_signed_rates)
{
    EXPECT_REPLY("oltmib_portrate_get_1", "1&2&ge1&-1&4294967298&3&4&-9223372036854775808&6&text&3&4", 1, 2,
                 chars(32, "ge1"), -1, -1, 2, 1, 3, 0, 4, 0, words(1ULL << 63), 6, 0, chars(32, "text"), 3, 4);
}

TEST(nsminfo_ports, portrate_traces_the_whole_argument)
{
    EXPECT_EQ(parser_trace("oltmib_portrate_get_1", "1&2&ge1&&&&&&&text&3&4"),
              "[str2arg_portrate: 214]str 1&2&ge1&&&&&&&text&3&4, ifx 1, oper 3.\r\n");
    EXPECT_EQ(
        formatter_trace("oltmib_portrate_get_1", wire(1, 2, chars(32, "ge1"), zeros(12), chars(32, "text"), 3, 4)),
        "[arg2str_portrate: 233]ifx 1, name ge1, res 4, str 1&2&ge1&0&0&0&0&0&0&text&3&4.\r\n");
}

// The text has `to` before `src`, the wire `src` before `to`.
TEST(nsminfo_ports, pminfo_text_order_is_not_the_wires)
{
    EXPECT_BOTH_WAYS("oltmib_pminfo_getn_1", "1&2&desc&to&3&4&src&vlans&5&6&text&7&8", 1, 2, chars(36, "desc"),
                     chars(32, "src"), chars(512, "vlans"), chars(32, "to"), 5, 3, 4, 6, chars(32, "text"), 7, 8);
}

TEST(nsminfo_ports, pminfo_traces_in_text_order)
{
    const std::string values = "sid 1, mode 2, desc desc, to to, to switch 3, rspan_vlan 4, src src, src_vlan vlans, "
                               "dir 5, state 6, oper 7.\r\n";
    EXPECT_EQ(parser_trace("oltmib_pminfo_set_1", "1&2&desc&to&3&4&src&vlans&5&6&text&7&8"),
              "[str2arg_pminfo: 258]" + values);
    EXPECT_EQ(
        formatter_trace("oltmib_pminfo_getn_1", wire(1, 2, chars(36, "desc"), chars(32, "src"), chars(512, "vlans"),
                                                     chars(32, "to"), 5, 3, 4, 6, chars(32, "text"), 7, 8)),
        "[arg2str_pminfo: 267]" + values);
}

// A full desc and text arrays without a NUL are shown and traced to their ends.
TEST(nsminfo_ports, pminfo_texts_of_a_reply_need_no_nul)
{
    const std::string desc(36, 'd'), src(32, 's'), vlans(512, 'v'), to(32, 't'), text(32, 'x');
    const Units reply = wire(1, 2, chars(36, desc), chars(32, src), chars(512, vlans), chars(32, to), 5, 3, 4, 6,
                             chars(32, text), 7, 8);
    EXPECT_EQ(text_of("oltmib_pminfo_getn_1", reply),
              "1&2&" + desc + "&" + to + "&3&4&" + src + "&" + vlans + "&5&6&" + text + "&7&8");
    EXPECT_EQ(formatter_trace("oltmib_pminfo_getn_1", reply),
              "[arg2str_pminfo: 267]sid 1, mode 2, desc " + desc + ", to " + to + ", to switch 3, rspan_vlan 4, src " +
                  src + ", src_vlan " + vlans + ", dir 5, state 6, oper 7.\r\n");
}

TEST(nsminfo_ports, texts_are_cut_to_their_arrays)
{
    EXPECT_REQUEST("oltmib_pminfo_set_1",
                   "1&2&" + repeated("d", 40) + "&" + repeated("t", 40) + "&3&4&" + repeated("s", 40) + "&" +
                       repeated("v", 600) + "&5",
                   1, 2, chars(36, repeated("d", 35)), chars(32, repeated("s", 31)), chars(512, repeated("v", 511)),
                   chars(32, repeated("t", 31)), 5, 3, 4, zeros(35));
}

// --- VLANs ---

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
    FakeDaemon daemon;
    daemon.reply = wire(chars(684, "0110"), chars(32, "text"), 1, 2);
    const void* reply = api.func(nullptr, daemon.client());
    ASSERT_NE(reply, nullptr);
    daemon.status = RPC_TIMEDOUT;
    EXPECT_EQ(api.func(nullptr, daemon.client()), nullptr);
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

// --- traffic ---

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

// --- traffic: lists ---

namespace
{
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

// --- forwarding ---

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

// --- modules ---

TEST(nsminfo_modules, optical_has_seventeen_positions)
{
    EXPECT_BOTH_WAYS("oltmib_optical_get_1", "1&ge1&3&4&5&6&7&8&9&10&11&12&13&14&text&15&16", 1, chars(32, "ge1"),
                     counting(3, 12), chars(32, "text"), 15, 16);
}

namespace
{
// An optical module's row around its alarm, as text and on the wire.
const std::string detail_head = "1&ge1&3&four&five&six&7&8&9&10&11&12&13&14&fifteen&16&";
const std::string detail_tail = "&nineteen&twenty&t21&t22&t23&t24&t25&26&27";
const Units detail_before = wire(1, chars(32, "ge1"), 3, chars(32, "four"), chars(32, "five"), chars(32, "six"),
                                 counting(7, 8), chars(32, "fifteen"), 16);
const Units detail_after = wire(chars(32, "nineteen"), chars(32, "twenty"), chars(32, "t21"), chars(32, "t22"),
                                chars(32, "t23"), chars(32, "t24"), chars(32, "t25"), 26, 27);
const char detail_get[] = "oltmib_opticaldetail_get_1";

// The text of a reply that says it has `length` alarm bytes; the array holds 01 to 20 in hex, field19 letters.
std::string alarm_of(int length)
{
    const std::string letters = "abcdefghijklmnopqrstuvwxyzabcdef";
    const std::string text =
        text_of(detail_get, wire(detail_before, length, counting(1, 32), chars(32, letters), zeros(6 * 32), 26, 27));
    const std::string tail = "&" + letters + "&&&&&&&26&27";
    EXPECT_EQ(text.substr(0, detail_head.size()), detail_head);
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
    return text.substr(detail_head.size(), text.size() - tail.size() - detail_head.size());
}

const std::string alarm_bytes = "0102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20";
} // namespace

TEST(nsminfo_modules, opticaldetail_seventeenth_field_is_its_alarm)
{
    EXPECT_BOTH_WAYS(detail_get, detail_head + "0a0b0c" + detail_tail, detail_before, 3, 0x0A, 0x0B, 0x0C, zeros(29),
                     detail_after);
}

TEST(nsminfo_modules, opticaldetail_reads_twenty_six_positions_and_no_more)
{
    EXPECT_REQUEST("oltmib_opticaldetail_set_1", detail_head + "0a" + detail_tail + repeated("&x", 30), detail_before,
                   1, 0x0A, zeros(31), detail_after);
}

TEST(nsminfo_modules, alarm_digits_of_either_case)
{
    EXPECT_REQUEST(detail_get, detail_head + "aBFfa9" + detail_tail, detail_before, 3, chars(32, "\xAB\xFF\xA9"),
                   detail_after);
    EXPECT_REPLY(detail_get, detail_head + "abffa9" + detail_tail, detail_before, 3, chars(32, "\xAB\xFF\xA9"),
                 detail_after);
}

TEST(nsminfo_modules, alarm_without_digits_is_empty)
{
    EXPECT_BOTH_WAYS(detail_get, detail_head + detail_tail, detail_before, 0, zeros(32), detail_after);
}

TEST(nsminfo_modules, alarm_ignores_an_odd_digit)
{
    EXPECT_REQUEST(detail_get, detail_head + "0a0b0" + detail_tail, detail_before, 2, 0x0A, 0x0B, zeros(30),
                   detail_after);
    EXPECT_REQUEST(detail_get, detail_head + "7" + detail_tail, detail_before, 0, zeros(32), detail_after);
}

TEST(nsminfo_modules, alarm_keeps_32_bytes)
{
    for (const char* more : {"", "2", "21", "2122", "21222324252627"})
        EXPECT_REQUEST(detail_get, detail_head + alarm_bytes + more + detail_tail, detail_before, 32, counting(1, 32),
                       detail_after);
}

TEST(nsminfo_modules, alarm_pair_that_does_not_scan_repeats_the_byte_before)
{
    EXPECT_REQUEST(detail_get, detail_head + "0azz0b" + detail_tail, detail_before, 3, 0x0A, 0x0A, 0x0B, zeros(29),
                   detail_after);
    EXPECT_REQUEST(detail_get, detail_head + "zz0b" + detail_tail, detail_before, 2, 0, 0x0B, zeros(30), detail_after);
}

TEST(nsminfo_modules, alarm_len_of_a_reply_says_how_many_bytes_are_shown)
{
    EXPECT_EQ(alarm_of(0), "");
    EXPECT_EQ(alarm_of(1), "01");
    EXPECT_EQ(alarm_of(32), alarm_bytes);
}

TEST(nsminfo_modules, negative_alarm_len_shows_nothing)
{
    EXPECT_EQ(alarm_of(-1), "");
    EXPECT_EQ(alarm_of(INT32_MIN), "");
}

// Above 32 the bytes that follow in the record are shown, as far as the text's
// 100 characters reach: 49 whole bytes and a digit, never a byte further.
TEST(nsminfo_modules, alarm_len_above_32_shows_the_bytes_that_follow)
{
    EXPECT_EQ(alarm_of(33), alarm_bytes + "61");
    EXPECT_EQ(alarm_of(48), alarm_bytes + "6162636465666768696a6b6c6d6e6f70");
    EXPECT_EQ(alarm_of(49), alarm_bytes + "6162636465666768696a6b6c6d6e6f7071");
    for (const int length : {50, 51, 100, 1000, INT32_MAX})
        EXPECT_EQ(alarm_of(length), alarm_bytes + "6162636465666768696a6b6c6d6e6f70717") << length;
}

TEST(nsminfo_modules, opticaldetail_formatter_traces_alarm_and_text)
{
    EXPECT_EQ(formatter_trace(detail_get, wire(detail_before, 3, 0x0A, 0x0B, 0x0C, zeros(29), detail_after)),
              "[arg2str_opticaldetail: 1109]alarmstr: 0a0b0c, len 3.\r\n"
              "[arg2str_opticaldetail: 1110]str: " +
                  detail_head + "0a0b0c" + detail_tail + ".\r\n");
    EXPECT_EQ(formatter_trace(detail_get, wire(zeros(171), -1, zeros(258))),
              "[arg2str_opticaldetail: 1109]alarmstr: , len -1.\r\n"
              "[arg2str_opticaldetail: 1110]str: 0&&0&&&&0&0&0&0&0&0&0&0&&0&&&&&&&&&0&0.\r\n");
    EXPECT_EQ(formatter_trace(detail_get, wire(zeros(171), 1000, zeros(258))),
              "[arg2str_opticaldetail: 1109]alarmstr: " + repeated("0", 99) +
                  ", len 1000.\r\n"
                  "[arg2str_opticaldetail: 1110]str: 0&&0&&&&0&0&0&0&0&0&0&0&&0&" +
                  repeated("0", 99) + "&&&&&&&&0&0.\r\n");
}

TEST(nsminfo_modules, cabledetect_has_thirteen_positions)
{
    EXPECT_BOTH_WAYS("oltmib_cabledetect_get_1", "1&ge1&3&4&5&6&a&b&c&d&text&7&8", 1, chars(32, "ge1"), 3, 4, 5, 6,
                     chars(16, "a"), chars(16, "b"), chars(16, "c"), chars(16, "d"), chars(32, "text"), 7, 8);
}

TEST(nsminfo_modules, dos_has_eleven_positions_and_sends_no_counters)
{
    for (const char* name : {"oltmib_dosglobal_get_1", "oltmib_dosglobal_set_1", "oltmib_dosif_get_1",
                             "oltmib_dosif_getn_1", "oltmib_dosif_set_1"})
        EXPECT_REQUEST(name, "1&ge1&3&4&5&6&77&88&text&9&10", 1, chars(32, "ge1"), 3, 4, 5, 6, zeros(4),
                       chars(32, "text"), 9, 10);
}

TEST(nsminfo_modules, dos_counters_are_unsigned_in_seventh_and_eighth_position)
{
    EXPECT_REPLY("oltmib_dosglobal_get_1", "1&ge1&3&4&5&6&4294967296&18446744073709551615&text&9&10", 1,
                 chars(32, "ge1"), 3, 4, 5, 6, 0, 1, words(~0ULL), chars(32, "text"), 9, 10);
    EXPECT_REPLY("oltmib_dosif_getn_1", "1&ge1&3&4&5&6&4294967298&7&text&9&10", 1, chars(32, "ge1"), 3, 4, 5, 6, 2, 1,
                 7, 0, chars(32, "text"), 9, 10);
}

// Servers, domains and hosts take one text; only the procedures differ.
TEST(nsminfo_modules, dns_tables_share_one_text)
{
    for (const char* name : {"oltmib_dnserver_get_1", "oltmib_dnsdomain_get_1", "oltmib_dnshost_get_1"}) {
        EXPECT_BOTH_WAYS(name, "one&two&three&4&text&5&6", chars(65, "one"), chars(64, "two"), chars(64, "three"), 4,
                         chars(32, "text"), 5, 6);
        EXPECT_REQUEST(name, repeated("a", 70) + "&" + repeated("b", 70), chars(65, repeated("a", 64)),
                       chars(64, repeated("b", 63)), zeros(64 + 35));
    }
}

TEST(nsminfo_modules, nsm_is_the_whole_record)
{
    EXPECT_BOTH_WAYS("oltmib_nsm_get_1", "one&two&3&4", chars(80, "one"), chars(800, "two"), 3, 4);
    EXPECT_REQUEST("oltmib_nsm_set_1", repeated("a", 90) + "&" + repeated("b", 900) + "&3&4",
                   chars(80, repeated("a", 79)), chars(800, repeated("b", 799)), 3, 4);
}

// The longest text that terminated fields can give has 903 characters.
TEST(nsminfo_modules, nsm_text_of_full_fields)
{
    EXPECT_REPLY("oltmib_nsm_get_1", repeated("a", 79) + "&" + repeated("b", 799) + "&-2147483648&-2147483648",
                 chars(80, repeated("a", 79)), chars(800, repeated("b", 799)), 0x80000000, 0x80000000);
    EXPECT_REPLY("oltmib_nsm_get_1", repeated("a", 80) + "&" + repeated("b", 800) + "&3&4",
                 chars(80, repeated("a", 80)), chars(800, repeated("b", 800)), 3, 4);
}

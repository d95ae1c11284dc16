// The network service module as a whole, and its 64-bit values. Its tables, and each place
// where one is unlike its neighbours, stand in the files beside.
#include "services/nsminfo/ports/records.h"
#include "tests/golden/golden_list.h"
#include "tests/services/support.h"

using namespace support;

namespace
{
// What the routine makes of `value`; with blocks of the stream's buffer, or without.
template <class Value, class Routine> Units encoded(Routine routine, Value value, Stream stream)
{
    Bytes bytes(sizeof value);
    MemoryStream to(XDR_ENCODE, bytes.data(), bytes.size(), stream);
    EXPECT_TRUE(routine(to.get(), &value));
    EXPECT_EQ(to.position(), sizeof value);
    return units_of(bytes);
}

template <class Value, class Routine> Value decoded(Routine routine, const Units& sent, Stream stream)
{
    Bytes bytes = units(sent);
    MemoryStream from(XDR_DECODE, bytes.data(), bytes.size(), stream);
    Value value = {};
    EXPECT_TRUE(routine(from.get(), &value));
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
    ScriptedClient daemon;
    const Units sent = wire(chars(32, "one"), counting(2, 4), chars(32, "text"), 6, 7);
    const Record& record = *api_named("oltmib_cvlaninfo_get_1").request;
    const auto cvlan = record_of_units(record, sent);
    daemon.reply = units(wire(chars(32, "two"), counting(3, 4), chars(32, "more"), 8, 9));
    rpcproc_t procedure = 13;
    for (const char* name : {"oltmib_cvlaninfo_get_1", "oltmib_cvlaninfo_getn_1"}) {
        const void* reply = api_named(name).func(cvlan.data(), daemon.get());
        ASSERT_NE(reply, nullptr);
        EXPECT_EQ(daemon.procedure, procedure++);
        EXPECT_EQ(units_of(daemon.request), sent);
        EXPECT_EQ(units_of_record(record, reply), units_of(daemon.reply));
    }
    daemon.reply = units(ints(-4));
    const auto* status = static_cast<int*>(api_named("oltmib_cvlaninfo_set_1").func(cvlan.data(), daemon.get()));
    EXPECT_EQ(daemon.procedure, 15U);
    EXPECT_EQ(units_of(daemon.request), sent);
    EXPECT_EQ(*status, -4);

    const Api& pminfo = api_named("oltmib_pminfo_get_1");
    const auto session = record_of_units(*pminfo.request, wire(1, zeros(651)));
    daemon.reply = units(zeros(652));
    EXPECT_NE(pminfo.func(session.data(), daemon.get()), nullptr);
    EXPECT_EQ(daemon.procedure, 7U);
    EXPECT_EQ(units_of(daemon.request), wire(1, zeros(651)));
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
    ScriptedClient daemon;
    daemon.reply = units(zeros(356)); // a unit short
    EXPECT_EQ(api.func(request.data(), daemon.get()), nullptr);
    daemon.reply = units(zeros(357));
    EXPECT_NE(api.func(request.data(), daemon.get()), nullptr);
    daemon.status = RPC_TIMEDOUT;
    EXPECT_EQ(api.func(request.data(), daemon.get()), nullptr);
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

TEST(nsminfo_words, low_word_travels_first)
{
    for (const Stream stream : {Stream::Blocks, Stream::Plain}) {
        EXPECT_EQ(encoded(xdr_oltmib_int64_t, oltmib_int64_t{(1LL << 32) + 2}, stream), ints(2, 1));
        EXPECT_EQ(encoded(xdr_oltmib_uint64_t, oltmib_uint64_t{(1ULL << 32) + 2}, stream), ints(2, 1));
        EXPECT_EQ(encoded(xdr_oltmib_int64_t, oltmib_int64_t{-2}, stream), ints(0xFFFFFFFE, 0xFFFFFFFF));
        EXPECT_EQ(encoded(xdr_oltmib_uint64_t, oltmib_uint64_t{0xFEDCBA9876543210}, stream),
                  ints(0x76543210, 0xFEDCBA98));
    }
}

TEST(nsminfo_words, low_word_arrives_first)
{
    for (const Stream stream : {Stream::Blocks, Stream::Plain}) {
        EXPECT_EQ(decoded<oltmib_int64_t>(xdr_oltmib_int64_t, ints(2, 1), stream), (1LL << 32) + 2);
        EXPECT_EQ(decoded<oltmib_int64_t>(xdr_oltmib_int64_t, ints(-2, -1), stream), -2);
        EXPECT_EQ(decoded<oltmib_uint64_t>(xdr_oltmib_uint64_t, ints(0x76543210, 0xFEDCBA98), stream),
                  0xFEDCBA9876543210U);
    }
}

TEST(nsminfo_words, blocks_are_their_values_in_order)
{
    std::vector<int64_t> values(54);
    values[0] = (1LL << 32) + 2, values[9] = -1, values[53] = 53;
    const auto counters = block_of<oltmib_if_counters>(values);
    const auto rates = block_of<oltmib_ifrate_s>({(3LL << 32) + 4, 0, 0, 0, 0, -5});
    for (const Stream stream : {Stream::Blocks, Stream::Plain}) {
        EXPECT_EQ(encoded(xdr_oltmib_if_counters, counters, stream), wire(2, 1, zeros(16), -1, -1, zeros(86), 53, 0));
        EXPECT_EQ(encoded(xdr_oltmib_ifrate_s, rates, stream), wire(4, 3, zeros(8), -5, -1));
        EXPECT_EQ(value_of(decoded<oltmib_if_counters>(xdr_oltmib_if_counters, wire(zeros(106), 7, 1), stream), 53),
                  (1LL << 32) + 7);
        EXPECT_EQ(value_of(decoded<oltmib_ifrate_s>(xdr_oltmib_ifrate_s, wire(-6, -1, zeros(10)), stream), 0), -6);
    }
}

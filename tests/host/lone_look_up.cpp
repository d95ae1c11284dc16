// A service's first call: what the port mapper may say, and what comes of it.
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <set>
#include <sys/resource.h>

#include "tests/host/lone.h"

namespace
{
using Units = RpcServer::Units;

// Units of a text as XDR has it.
Units text_units(const std::string& text)
{
    std::string bytes = text;
    bytes.resize((text.size() + 3) / 4 * 4);
    Units units = {static_cast<uint32_t>(text.size())};
    for (size_t i = 0; i < bytes.size(); i += 4)
        units.push_back(static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 24 |
                        static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 16 |
                        static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 2])) << 8 |
                        static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 3])));
    return units;
}

using namespace std::string_literals;

std::string universal(const std::string& host, unsigned port)
{
    return host + "." + std::to_string(port / 256) + "." + std::to_string(port % 256);
}

class look_up : public Lone
{
  protected:
    // A port mapper that speaks these versions alone; `address` is its answer in
    // versions 3 and 4.
    void map_versions(uint32_t low, uint32_t high, const std::string& address)
    {
        map([=, port = daemon->port()](const RpcCall& query) {
            if (query.version < low || query.version > high)
                return RpcServer::accepted(query, {low, high}, version_mismatch);
            return RpcServer::accepted(query, query.version == 2 ? Units{port} : text_units(address));
        });
    }

    // What a query says in the end, and the port where it says one.
    static std::pair<PortQuery::State, uint16_t> ask()
    {
        PortQuery query(program, server_version, Life::Long);
        PortQuery::State state = query.start(1);
        while (state == PortQuery::State::Asking) {
            pollfd readable = {query.fd(), POLLIN, 0};
            poll(&readable, 1, query.next().left_for_poll());
            errno = EIO; // of somebody else's failure
            state = query.receive();
            if (state == PortQuery::State::Asking)
                state = query.check_time();
        }
        return {state, query.port()};
    }

    std::vector<uint32_t> versions_asked()
    {
        std::vector<uint32_t> versions;
        for (const RpcCall& query : mapper->queries())
            versions.push_back(query.version);
        mapper->forget();
        return versions;
    }
};
using Versions = std::vector<uint32_t>;
} // namespace

TEST_F(look_up, port_mapper_of_version_2_is_asked_once)
{
    map_versions(2, 2, "");
    expect_success();
    expect_success();
    EXPECT_EQ(versions_asked(), Versions{2});
}

TEST_F(look_up, port_mapper_of_version_4_alone_is_asked_in_it)
{
    map_versions(4, 4, universal("127.0.0.1", daemon->port()));
    expect_success();
    const std::vector<RpcCall> queries = mapper->queries();
    ASSERT_EQ(queries.size(), 2U);
    EXPECT_NE(queries[0].xid, queries[1].xid);
    // RPCBPROC_GETADDR of program, version, "udp", address and owner (RFC 1833)
    Units wanted = {program, 1};
    for (const char* text : {"udp", "", ""})
        for (const uint32_t unit : text_units(text))
            wanted.push_back(unit);
    EXPECT_EQ(queries[1].program, 100000U);
    EXPECT_EQ(queries[1].procedure, 3U);
    EXPECT_EQ(queries[1].arguments, wanted);
    EXPECT_EQ(versions_asked(), (Versions{2, 4}));
}

TEST_F(look_up, port_mapper_of_versions_3_and_4_is_asked_in_the_later_one)
{
    map_versions(3, 4, universal("127.0.0.1", daemon->port()));
    expect_success();
    EXPECT_EQ(versions_asked(), (Versions{2, 4}));
}

TEST_F(look_up, port_mapper_of_version_3_alone_is_asked_in_it)
{
    map_versions(3, 3, universal("127.0.0.1", daemon->port()));
    expect_success();
    EXPECT_EQ(versions_asked(), (Versions{2, 3}));
}

TEST_F(look_up, port_mapper_that_refuses_every_version_is_asked_twice)
{
    map([](const RpcCall& query) { return RpcServer::accepted(query, {3, 4}, version_mismatch); });
    expect_no_port_mapper("RPC: Port mapper failure - RPC: Program/version mismatch");
    EXPECT_EQ(rpc_createerr.cf_error.re_vers.low, 3U);
    EXPECT_EQ(rpc_createerr.cf_error.re_vers.high, 4U);
    EXPECT_EQ(versions_asked(), (Versions{2, 4}));
}

TEST_F(look_up, of_an_address_the_port_alone_counts)
{
    for (const uint32_t version : {3U, 4U})
        for (const std::string& host :
             {"0.0.0.0"s, "192.0.2.7"s, "255.255.255.255"s, "::1"s, "fe80::1%eth0"s, "a.host.of.another"s,
              std::string(64 - universal("", daemon->port()).size(), 'x')}) {
            map_versions(version, version, universal(host, daemon->port()));
            forget_clients();
            expect_success(host);
        }
}

TEST_F(look_up, the_last_two_numbers_of_an_address_are_its_port)
{
    const std::pair<const char*, uint16_t> ports[] = {
        {"1.2.3.4.0.1", 1},       {"1.2.3.4.1.0", 256},    {"1.2.3.4.10.9", 2569},   {"1.2.3.4.90.100", 23140},
        {"1.2.3.4.209.8", 53512}, {"1.2.3.4.0.255", 255},  {"1.2.3.4.255.0", 65280}, {"1.2.3.4.007.080", 1872},
        {"0.0.0.0.99.99", 25443}, {"1.2.3.4.19.92", 4956},
    };
    for (const auto& [address, port] : ports) {
        map_versions(4, 4, address);
        EXPECT_EQ(ask(), std::make_pair(PortQuery::State::Found, port)) << address;
    }
}

TEST_F(look_up, an_empty_datagram_is_no_answer_and_no_failure)
{
    map([this, port = daemon->port()](const RpcCall& query) {
        for (int i = 0; i < 3; i++)
            serving.load()->send(query.from, {});
        return RpcServer::accepted(query, {port});
    });
    for (int i = 0; i < 5; i++)
        EXPECT_EQ(ask(), std::make_pair(PortQuery::State::Found, daemon->port()));
}

TEST_F(look_up, address_that_is_none_is_no_answer)
{
    for (const char* address : {"127.0.0.1", "1", ".", "..", ".1.1.", "127.0.0.1.1", "127.0.0.1.256.1",
                                "127.0.0.1.1.256", "127.0.0.1.-1.1", "127.0.0.1.1.1 ", "127.0.0.1.1.0x1",
                                "127.0.0.1.1111.1", "127.0.0.1.0001.1", "127.0.0.1.1.0001", "any", "127.0.0.1:1024"}) {
        if (std::string(address) == "127.0.0.1" || std::string(address) == "127.0.0.1.1")
            continue; // whose last two numbers are a port like any other
        map_versions(4, 4, address);
        forget_clients();
        expect_no_port_mapper("RPC: Port mapper failure - RPC: Can't decode result", address);
    }
    map_versions(4, 4, universal(std::string(65 - universal("", daemon->port()).size(), 'x'), daemon->port()));
    forget_clients();
    expect_no_port_mapper("RPC: Port mapper failure - RPC: Can't decode result", "65 characters");
    map_versions(4, 4, std::string(1000, '1'));
    expect_no_port_mapper("RPC: Port mapper failure - RPC: Can't decode result", "1000 digits");
}

TEST_F(look_up, port_0_and_an_empty_address_are_no_daemon)
{
    const char meaning[] = "the daemon has not registered with the port mapper";
    map_to(0);
    expect_no_client("no_daemon", meaning, "RPC: Program not registered", "0");
    map_versions(4, 4, "");
    expect_no_client("no_daemon", meaning, "RPC: Program not registered", "empty");
    map_versions(4, 4, "0.0.0.0.0.0");
    expect_no_client("no_daemon", meaning, "RPC: Program not registered", "address of port 0");
    map_to(daemon->port());
    expect_success("registered since");
}

TEST_F(look_up, port_beyond_65535_is_no_answer)
{
    const uint32_t port = daemon->port();
    for (const uint32_t beyond : {65536U, 65536U + port, 0x80000000U + port, 0xFFFFFFFFU}) {
        map_to(beyond);
        expect_no_port_mapper("RPC: Port mapper failure - RPC: Can't decode result", std::to_string(beyond));
    }
    EXPECT_TRUE(daemon->queries().empty());
}

TEST_F(look_up, last_port_is_a_port)
{
    map_to(65535);
    expect_refused();
    map_versions(4, 4, "127.0.0.1.255.255");
    expect_refused();
}

// Without privileges, or when all reserved ports are taken, both sockets get a port from
// the same range, and here it has but the first one that is not reserved.
TEST_F(look_up, own_port_is_refused_and_nobody_calls_himself)
{
    std::atomic<uint32_t> told = 0;
    map([&](const RpcCall& query) { return RpcServer::accepted(query, {told = ntohs(query.from.sin_port)}); });
    ASSERT_EQ(system("echo 1024 1024 > /proc/sys/net/ipv4/ip_local_port_range"), 0);
    std::vector<int> taken;
    for (const bool is_privileged : {false, true}) {
        for (uint16_t port = 600; is_privileged && port < 1024; port++) {
            const sockaddr_in address = loopback_address(port);
            taken.push_back(socket(AF_INET, SOCK_DGRAM, 0));
            ASSERT_EQ(bind(taken.back(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0) << port;
        }
        ASSERT_EQ(seteuid(is_privileged ? 0 : 65534), 0);
        told = 0;
        expect_no_client("refused", "nothing listens on the port that the daemon had",
                         "RPC: Remote system error - Connection refused");
        ASSERT_EQ(seteuid(0), 0);
        EXPECT_EQ(told, 1024U);
    }
    for (const int one : taken)
        close(one);
}

// With privileges the socket's own port is never the daemon's.
TEST_F(look_up, reserved_port_without_a_daemon_is_refused)
{
    for (uint32_t port = 600; port < 1024; port += 3) {
        map_to(port);
        for (int i = 0; i < 3; i++)
            expect_refused(std::to_string(port));
    }
}

TEST_F(look_up, port_of_a_tcp_service_is_refused_and_nobody_connects)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    sockaddr_in address = loopback_address(0);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    map_to(ntohs(address.sin_port));
    expect_refused();
    EXPECT_EQ(accept(listener, nullptr, nullptr), -1);
    close(listener);
}

TEST_F(look_up, port_without_a_listener_is_refused_and_asked_for_again)
{
    const uint16_t port = daemon->port();
    daemon.reset();
    map_to(port);
    expect_refused();
    daemon = std::make_unique<RpcServer>(0, [](const RpcCall& call) { return RpcServer::accepted(call, {7}); });
    map_to(daemon->port());
    expect_success();
}

TEST_F(look_up, answer_cut_anywhere_is_none)
{
    const char reason[] = "RPC: Port mapper failure - RPC: Can't decode result";
    for (size_t size = 1; size < 7; size++) {
        map([=](const RpcCall& query) {
            Units units = RpcServer::accepted(query, {9});
            units.resize(size);
            return units;
        });
        expect_no_port_mapper(reason, std::to_string(size));
    }
    const Units garbled[] = {
        {0, 0, 0, 0, 0, 9},                                     // a call
        {2, 0, 0, 0, 0, 9},                                     // neither
        {1, 2, 0, 0, 0, 9},                                     // neither accepted nor denied
        {1, 0, 0, 401, 0, 9},                                   // a verifier too long
        {1, 0, 0, 0xFFFFFFFF, 0, 9},                            // far too long
        {1, 0, 0, 0, 6, 9},                                     // an accept_stat that there is not
        {1, 1, 7, 0, 0, 9},                                     // denied for no known reason
        {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0, 0}, //
    };
    for (size_t i = 0; i < std::size(garbled); i++) {
        map([units = garbled[i]](const RpcCall& query) {
            Units all = {query.xid};
            all.insert(all.end(), units.begin(), units.end());
            return all;
        });
        expect_no_port_mapper(reason, "garbled " + std::to_string(i));
    }
    EXPECT_TRUE(daemon->queries().empty());
}

TEST_F(look_up, refusals_of_the_port_mapper_are_told)
{
    const struct {
        Units units; // behind the xid
        const char* reason;
    } refusals[] = {
        {{1, 1, 1, 5}, "RPC: Authentication error"},
        {{1, 1, 0, 3, 3}, "RPC: Incompatible versions of RPC"},
        {{1, 0, 0, 0, 1}, "RPC: Program unavailable"},
        {{1, 0, 0, 0, 3}, "RPC: Procedure unavailable"},
        {{1, 0, 0, 0, 4}, "RPC: Server can't decode arguments"},
        {{1, 0, 0, 0, 5}, "RPC: Remote system error"},
    };
    for (const auto& refusal : refusals) {
        map([&](const RpcCall& query) {
            Units all = {query.xid};
            all.insert(all.end(), refusal.units.begin(), refusal.units.end());
            return all;
        });
        expect_no_port_mapper(std::string("RPC: Port mapper failure - ") + refusal.reason);
    }
}

TEST_F(look_up, answers_to_other_queries_are_passed_over)
{
    map([this](const RpcCall& query) -> std::optional<Units> {
        for (const uint32_t away : {1U, 2U, 0xFFFFFFFFU, 0x80000000U}) {
            RpcCall other = query;
            other.xid += away;
            serving.load()->send(query.from, RpcServer::accepted(other, {9}));
        }
        serving.load()->send(query.from, {});
        return RpcServer::accepted(query, {daemon->port()});
    });
    expect_success();
    EXPECT_EQ(versions_asked(), Versions{2});
}

TEST_F(look_up, late_answer_in_version_2_is_not_that_in_version_4)
{
    map([this](const RpcCall& query) -> std::optional<Units> {
        if (query.version == 2)
            return RpcServer::accepted(query, {4, 4}, version_mismatch);
        RpcCall first = query;
        first.xid = serving.load()->queries()[0].xid;
        serving.load()->send(query.from, RpcServer::accepted(first, {9}));
        return RpcServer::accepted(query, text_units(universal("127.0.0.1", daemon->port())));
    });
    expect_success();
}

TEST_F(look_up, query_is_repeated_as_it_was_when_it_or_its_answer_is_lost)
{
    for (const size_t lost : {1U, 2U}) {
        forget_clients();
        map([this, lost, port = daemon->port()](const RpcCall& query) -> std::optional<Units> {
            if (serving.load()->queries().size() <= lost)
                return {};
            return RpcServer::accepted(query, {port});
        });
        expect_success();
        const std::vector<RpcCall> queries = mapper->queries();
        ASSERT_EQ(queries.size(), lost + 1);
        for (const RpcCall& query : queries) {
            EXPECT_EQ(query.xid, queries[0].xid);
            EXPECT_EQ(query.arguments, queries[0].arguments);
            EXPECT_EQ(query.from.sin_port, queries[0].from.sin_port);
        }
    }
}

TEST_F(look_up, port_mapper_that_is_restarted_meanwhile_gets_the_next_query)
{
    map([](const RpcCall&) { return std::optional<Units>(); });
    std::thread restart([this] {
        while (mapper->queries().empty())
            usleep(1000);
        map_to(daemon->port());
    });
    expect_success();
    restart.join();
    EXPECT_EQ(mapper->queries().size(), 1U);
}

TEST_F(look_up, without_a_port_mapper_calls_fail_at_once_and_the_next_one_with_it_works)
{
    for (int i = 0; i < 3; i++)
        expect_no_port_mapper("RPC: Unable to receive - Connection refused");
    map_to(daemon->port());
    expect_success();
}

// Whoever comes late to a query hears of it when he repeats it.
TEST_F(look_up, refusal_that_the_repeated_query_meets_is_the_same_as_any_other)
{
    PortQuery query(program, server_version, Life::Long);
    ASSERT_EQ(query.start(1), PortQuery::State::Asking);
    while (query.next().left() > 0)
        poll(nullptr, 0, query.next().left_for_poll());
    ASSERT_EQ(query.check_time(), PortQuery::State::Failed);
    EXPECT_EQ(query.failure().status, RPC_CANTRECV);
    EXPECT_EQ(query.failure().error.re_status, RPC_CANTRECV);
    EXPECT_EQ(query.failure().error.re_errno, ECONNREFUSED);
}

TEST_F(look_up, every_query_has_a_port_and_a_number_of_its_own)
{
    map_to(daemon->port());
    std::map<uint32_t, int> numbers;
    std::vector<uint32_t> all;
    for (int i = 0; i < 300; i++) {
        forget_clients();
        expect_success();
    }
    const std::vector<RpcCall> queries = mapper->queries();
    ASSERT_EQ(queries.size(), 300U);
    int close = 0; // numbers that another one gives away
    for (size_t i = 0; i < queries.size(); i++) {
        numbers[queries[i].xid]++;
        if (i > 0) {
            const uint32_t step = queries[i].xid - queries[i - 1].xid;
            close += step + 1000 <= 2000;
        }
    }
    EXPECT_EQ(numbers.size(), 300U);
    EXPECT_EQ(close, 0);
}

// Otherwise whoever knows one knows the next one: of the query, or of the client before.
TEST_F(look_up, every_client_has_a_first_number_of_its_own)
{
    map_to(daemon->port());
    std::set<uint32_t> numbers, steps, from_query;
    for (int i = 0; i < 100; i++) {
        forget_clients();
        expect_success();
    }
    const std::vector<RpcCall> calls = daemon->queries(), queries = mapper->queries();
    ASSERT_EQ(calls.size(), 100U);
    ASSERT_EQ(queries.size(), 100U);
    for (size_t i = 0; i < calls.size(); i++) {
        numbers.insert(calls[i].xid);
        from_query.insert(calls[i].xid - queries[i].xid);
        if (i > 0)
            steps.insert(calls[i].xid - calls[i - 1].xid);
    }
    EXPECT_EQ(numbers.size(), 100U);
    EXPECT_EQ(from_query.size(), 100U);
    EXPECT_EQ(steps.size(), 99U);
}

TEST_F(look_up, without_descriptors_calls_fail_and_the_next_one_works)
{
    map_to(daemon->port());
    rlimit before;
    getrlimit(RLIMIT_NOFILE, &before);
    int failed = 0;
    for (rlim_t most = 3; most < 40; most++) {
        forget_clients();
        const int out = dup(2), capture = open("/dev/null", O_WRONLY | O_CLOEXEC); // a capture would want descriptors
        dup2(capture, 2);
        rlimit limit = before;
        limit.rlim_cur = most;
        setrlimit(RLIMIT_NOFILE, &limit);
        const std::optional<std::string> value = lua->call(api, "1&6");
        setrlimit(RLIMIT_NOFILE, &before);
        dup2(out, 2), close(out), close(capture);
        if (!value) {
            failed++;
            EXPECT_EQ(lua->code(), "no_client") << most;
            EXPECT_EQ(lua->sentence(),
                      "oltmib_sysloginfo_set_1 (service hostpdinfo, program 50006): no client could be made for the "
                      "daemon [RPC: Remote system error - Too many open files]")
                << most;
        }
        expect_success(std::to_string(most));
    }
    EXPECT_GT(failed, 0);
    EXPECT_LT(failed, 37);
}

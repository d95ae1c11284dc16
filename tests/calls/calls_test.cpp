// calls at once, with a port mapper and daemons of the test's own: what is under
// way, in which order replies may come, who waits for whom.
#include <algorithm>
#include <atomic>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <linux/sock_diag.h>
#include <map>
#include <memory>
#include <poll.h>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

#include "common/calls.h"
#include "tests/support/private_network.h"
#include "tests/support/rpc_server.h"

namespace
{
using Units = std::vector<uint32_t>;

constexpr size_t call_units = 10; // of the header

// A daemon that answers when the test says so. Its tables echo: the reply's
// record is the request's.
class Daemon
{
  public:
    struct Request {
        Units units; // in network order
        sockaddr_in from;
        uint32_t xid() const { return ntohl(units[0]); }
    };

    Daemon()
    {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (bind(fd, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
            getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0)
            throw std::runtime_error("daemon: expected a port, found none");
        port = ntohs(address.sin_port);
    }
    ~Daemon() { close(fd); }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    // What has come, none of it answered.
    std::vector<Request> requests() const
    {
        std::vector<Request> all;
        for (;;) {
            Request one = {Units(datagram_units), {}};
            socklen_t length = sizeof one.from;
            const ssize_t got = recvfrom(fd, one.units.data(), 4 * one.units.size(), MSG_DONTWAIT,
                                         reinterpret_cast<sockaddr*>(&one.from), &length);
            if (got < 0)
                return all;
            one.units.resize(static_cast<size_t>(got) / 4);
            all.push_back(one);
        }
    }

    void reply(const Request& request, uint32_t xid) const
    {
        Units units = {htonl(xid), htonl(REPLY), 0, 0, 0, 0};
        units.insert(units.end(), request.units.begin() + call_units, request.units.end());
        send(request, units);
    }
    void reply(const Request& request) const { reply(request, request.xid()); }
    void send(const Request& request, const Units& units) const
    {
        sendto(fd, units.data(), 4 * units.size(), 0, reinterpret_cast<const sockaddr*>(&request.from),
               sizeof request.from);
    }

    // What the kernel counts for the datagrams that wait for the daemon.
    size_t buffered() const
    {
        uint32_t memory[SK_MEMINFO_VARS];
        socklen_t size = sizeof memory;
        EXPECT_EQ(getsockopt(fd, SOL_SOCKET, SO_MEMINFO, memory, &size), 0);
        return memory[SK_MEMINFO_RMEM_ALLOC];
    }

    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    uint16_t port;
};

struct End {
    CallCode code;
    std::string text;
};

class group : public testing::Test
{
  protected:
    void SetUp() override
    {
        static const bool is_private = enter_private_network();
        if (!is_private)
            GTEST_SKIP() << "a network of our own is for root";
        static const bool is_registered = [] {
            for (const Service* service : all_services)
                service->init();
            return true;
        }();
        EXPECT_TRUE(is_registered);
        mapper =
            std::make_unique<FakePortMapper>([this](const PortMapperQuery& query) { return mapper_answer(query); });
    }
    void TearDown() override
    {
        calls.close();
        mapper.reset();
    }

    virtual std::optional<Units> mapper_answer(const PortMapperQuery& query)
    {
        const auto at = daemons.find(query.wanted());
        return FakePortMapper::accepted(query, {at == daemons.end() ? 0U : at->second->port});
    }

    Daemon& daemon_of(const char* service)
    {
        for (const Service* each : all_services)
            if (service == std::string(each->name)) {
                auto& daemon = daemons[static_cast<uint32_t>(each->program)];
                if (!daemon)
                    daemon = std::make_unique<Daemon>();
                return *daemon;
            }
        throw std::runtime_error("expected a service");
    }

    unsigned call(const char* name, const std::string& argument, int64_t ms = 20000)
    {
        CallStatus status;
        const unsigned id = calls.call(name, argument.c_str(), Deadline::after(ms), status);
        EXPECT_NE(id, 0U) << name;
        return id;
    }

    // The ends that there are, by id.
    std::map<unsigned, End> ends()
    {
        std::map<unsigned, End> found;
        for (; const ApiCall* call = calls.first_finished(); calls.drop_finished()) {
            EXPECT_EQ(found.count(call->id), 0U);
            found[call->id] = {call->text ? CallCode::Success : call->status.code,
                               call->text ? std::string(call->text, call->length) : ""};
        }
        return found;
    }

    // Requests that reach the daemon until there are so many.
    std::vector<Daemon::Request> requests(const Daemon& daemon, size_t count)
    {
        std::vector<Daemon::Request> all;
        const Deadline end = Deadline::after(10000);
        while (all.size() < count && end.left() > 0) {
            calls.wait(Deadline::after(5), {});
            for (const Daemon::Request& one : daemon.requests())
                all.push_back(one);
        }
        EXPECT_EQ(all.size(), count);
        return all;
    }

    // The same of those that need no waiting.
    static size_t requests_there(const Daemon& daemon) { return daemon.requests().size(); }

    // The descriptors of this process that are connected to a port.
    static std::vector<int> sockets_to(uint16_t port)
    {
        std::vector<int> found;
        for (int fd = 3; fd < 100; fd++) {
            sockaddr_in peer = {};
            socklen_t size = sizeof peer;
            if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &size) == 0 && peer.sin_family == AF_INET &&
                peer.sin_port == htons(port))
                found.push_back(fd);
        }
        return found;
    }
    // The first that is connected to the daemon, or -1.
    static int socket_to(const Daemon& daemon)
    {
        const std::vector<int> found = sockets_to(daemon.port);
        return found.empty() ? -1 : found.front();
    }

    // A first call, after which the port is known.
    void warm_up(const char* name, const Daemon& daemon)
    {
        const unsigned id = call(name, "1");
        daemon.reply(requests(daemon, 1).at(0));
        calls.wait(Deadline::after(10000), {});
        EXPECT_EQ(ends().at(id).code, CallCode::Success);
    }

    std::map<uint32_t, std::unique_ptr<Daemon>> daemons;
    std::unique_ptr<FakePortMapper> mapper;
    ApiCalls calls{CallsOf::Loop};
};

// Tables whose requests and replies are the same record.
constexpr char small[] = "oltmib_fdbparam_get_1";    // nsminfo
constexpr char largest[] = "oltmib_lldpifnei_get_1"; // erpsinfo
constexpr char other[] = "oltmib_devcapint_get_1";   // devinfo
} // namespace

TEST_F(group, replies_in_any_order_find_their_calls)
{
    Daemon& daemon = daemon_of("nsminfo");
    std::map<unsigned, std::string> wanted;
    for (int i = 0; i < 40; i++)
        wanted[call(small, std::to_string(i))] = std::to_string(i) + "&";
    auto came = requests(daemon, 40);
    std::mt19937 random(1);
    std::shuffle(came.begin(), came.end(), random);
    for (const auto& request : came)
        daemon.reply(request);
    std::map<unsigned, End> all;
    while (calls.is_open()) {
        calls.wait(Deadline::after(10000), {});
        all.merge(ends());
    }
    ASSERT_EQ(all.size(), 40U);
    for (const auto& [id, end] : all)
        EXPECT_EQ(end.text.substr(0, wanted[id].size()), wanted[id]);
}

TEST_F(group, late_doubled_and_strange_replies_are_passed_over)
{
    Daemon& daemon = daemon_of("nsminfo");
    const Daemon stranger;
    const unsigned late = call(small, "1", 100);
    const auto first = requests(daemon, 1).at(0);
    while (calls.is_open())
        calls.wait(Deadline::after(10000), {});
    EXPECT_EQ(ends().at(late).code, CallCode::TimedOut);

    const unsigned a = call(small, "2"), b = call(small, "3");
    const auto came = requests(daemon, 2);
    daemon.send(came[0], {}); // nothing at all
    daemon.send(came[0], {htonl(came[0].xid() + 1000)});
    daemon.reply(came[0], first.xid());       // of a call that is over
    daemon.reply(came[0], came[0].xid() + 2); // of one that will be
    stranger.reply(came[1], came[0].xid());   // from somebody else
    daemon.reply(came[1]);
    daemon.reply(came[1]);
    daemon.reply(came[1]);
    calls.wait(Deadline::after(10000), {});
    auto found = ends();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.at(b).text.substr(0, 2), "3&");
    daemon.reply(came[0]);
    calls.wait(Deadline::after(10000), {});
    found = ends();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.at(a).text.substr(0, 2), "2&");
    EXPECT_FALSE(calls.is_open());
}

// A reply may have a verifier of 400 bytes, and more behind it than its record.
TEST_F(group, replies_that_are_longer_than_their_records_are_read)
{
    Daemon& daemon = daemon_of("nsminfo");
    std::map<unsigned, std::string> wanted;
    for (int i = 0; i < 6; i++)
        wanted[call(small, std::to_string(i))] = std::to_string(i) + "&";
    const auto came = requests(daemon, 6);
    for (size_t i = 0; i < came.size(); i++) {
        Units units = {came[i].units[0], htonl(REPLY), 0, htonl(AUTH_NONE), htonl(i < 3 ? MAX_AUTH_BYTES : 0)};
        units.resize(units.size() + (i < 3 ? MAX_AUTH_BYTES / 4 : 0), 0x55555555);
        units.push_back(0);
        units.insert(units.end(), came[i].units.begin() + call_units, came[i].units.end());
        units.resize(units.size() + (i % 3) * 1000, 0x66666666);
        daemon.send(came[i], units);
    }
    std::map<unsigned, End> all;
    while (calls.is_open()) {
        calls.wait(Deadline::after(10000), {});
        all.merge(ends());
    }
    for (const auto& [id, end] : all)
        EXPECT_EQ(end.text.substr(0, 2), wanted[id]);
    EXPECT_EQ(all.size(), 6U);
}

// Nothing is asked with, a table comes back.
TEST_F(group, a_reply_that_is_longer_than_its_request_is_read)
{
    constexpr char name[] = "oltmib_cvlan_table_get_1";
    const Daemon& daemon = daemon_of("nsminfo");
    const unsigned id = call(name, "");
    const auto request = requests(daemon, 1).at(0);
    ASSERT_EQ(request.units.size(), call_units);
    const size_t units = find_api(name).api->reply->units;
    ASSERT_GT(units, (MAX_AUTH_BYTES + call_units) / sizeof(uint32_t)); // more than any call has room for
    Units reply = {request.units[0], htonl(REPLY), 0, 0, 0, 0};
    reply.resize(reply.size() + units);
    daemon.send(request, reply);
    calls.wait(Deadline::after(10000), {});
    EXPECT_EQ(ends().at(id).code, CallCode::Success);
}

// What the process does at a fork is done once, however many groups there were; a
// second time it would wait for its own lock.
TEST_F(group, a_process_with_threads_forks_after_any_number_of_groups)
{
    const pid_t forking = fork();
    if (forking == 0) {
        alarm(10);                            // that ends what waits for itself
        std::thread another([] { pause(); }); // with one thread no lock is taken
        for (int i = 0; i < 3; i++)
            ApiCalls(CallsOf::Loop).close();
        const pid_t child = fork();
        if (child == 0)
            _exit(0);
        int status = -1;
        _exit(waitpid(child, &status, 0) == child && status == 0 ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(forking, &status, 0), forking);
    EXPECT_EQ(status, 0);
}

// Two sockets, two daemons: the same xid may be under way to both.
TEST_F(group, a_replies_xid_counts_for_its_own_service_only)
{
    Daemon &one = daemon_of("nsminfo"), &two = daemon_of("devinfo");
    const unsigned a = call(small, "7"), b = call(other, "name");
    const auto to_one = requests(one, 1).at(0), to_two = requests(two, 1).at(0);
    one.reply(to_one, to_two.xid());
    two.reply(to_two, to_one.xid());
    calls.wait(Deadline::after(50), {});
    EXPECT_TRUE(ends().empty());
    one.reply(to_one);
    two.reply(to_two);
    std::map<unsigned, End> all;
    while (calls.is_open()) {
        calls.wait(Deadline::after(10000), {});
        all.merge(ends());
    }
    EXPECT_EQ(all.at(a).text.substr(0, 2), "7&");
    EXPECT_EQ(all.at(b).text.substr(0, 5), "name&");
}

// More than it receives in one go.
TEST_F(group, processing_once_takes_all_that_came)
{
    Daemon& daemon = daemon_of("nsminfo");
    for (int i = 0; i < 20; i++)
        call(small, std::to_string(i));
    for (const auto& request : requests(daemon, 20))
        daemon.reply(request);
    calls.process();
    EXPECT_EQ(ends().size(), 20U);
    EXPECT_FALSE(calls.is_open());
}

// The host's code runs between one call and the next, however short the time is.
TEST_F(group, nothing_is_sent_to_what_took_the_sockets_number_between_two_calls)
{
    Daemon& daemon = daemon_of("nsminfo");
    warm_up(small, daemon);
    const unsigned first = call(small, "1");
    EXPECT_EQ(requests(daemon, 1).size(), 1U);
    const int number = socket_to(daemon);
    ASSERT_GT(number, 2);
    int pair[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, pair), 0);
    calls.process(); // as an event loop does; what is used from here on is used just now
    const unsigned second = call(small, "2");
    EXPECT_EQ(requests_there(daemon), 1U);
    ASSERT_EQ(dup2(pair[0], number), number);
    const unsigned third = call(small, "3");
    char byte;
    EXPECT_EQ(recv(pair[1], &byte, 1, MSG_DONTWAIT), -1) << "the host's socket got a call";
    std::map<unsigned, End> all = ends();
    daemon.reply(requests(daemon, 1).at(0)); // through a socket of the group's again
    while (calls.is_open()) {
        calls.wait(Deadline::after(10000), {});
        all.merge(ends());
    }
    EXPECT_EQ(all.at(first).code, CallCode::Failed);
    EXPECT_EQ(all.at(second).code, CallCode::Failed);
    EXPECT_EQ(all.at(third).text.substr(0, 2), "3&");
    EXPECT_GE(fcntl(number, F_GETFD), 0) << "the host's socket was closed";
    close(number), close(pair[0]), close(pair[1]);
}

TEST_F(group, what_is_under_way_to_a_daemon_takes_no_more_of_the_kernel_than_the_window)
{
    std::map<std::string, std::string> by_service; // each service's largest and smallest table
    size_t tried = 0;
    for (const Service* service : all_services) {
        Daemon& daemon = daemon_of(service->name);
        const Api *least = nullptr, *most = nullptr;
        for (const Api& api : *service) {
            if (!api.registered() || !api.request)
                continue;
            least = !least || api.request->units < least->request->units ? &api : least;
            most = !most || api.request->units > most->request->units ? &api : most;
        }
        for (const Api* api : {least, most}) {
            ASSERT_NE(api, nullptr);
            ApiCalls own(CallsOf::Loop);
            CallStatus status;
            for (int i = 0; i < 1000; i++)
                EXPECT_NE(own.call(api->name, "1", Deadline::after(20000), status), 0U);
            const Deadline end = Deadline::after(10000);
            while (daemon.buffered() == 0 && end.left() > 0)
                own.wait(Deadline::after(5), {});
            EXPECT_LE(daemon.buffered(), group_window) << api->name;
            EXPECT_GE(daemon.buffered(), group_window / 2) << api->name;
            daemon.requests();
            tried++;
        }
    }
    EXPECT_EQ(tried, 30U);
}

TEST_F(group, a_window_is_filled_to_its_last_byte_and_no_further)
{
    const Service& service = *all_services[0];
    Daemon& daemon = daemon_of(service.name);
    constexpr size_t most = 96; // null calls: each is counted as 512 bytes of data and 256 that describe them
    for (size_t i = 0; i < 2 * most; i++) {
        CallStatus status;
        EXPECT_NE(calls.call_null(service, Deadline::after(20000), status), 0U);
    }
    EXPECT_EQ(requests(daemon, most).size(), most);
    calls.wait(Deadline::after(5), {});
    EXPECT_TRUE(daemon.requests().empty());
}

TEST_F(group, a_window_is_whole_again_after_its_socket_failed)
{
    const Service& service = *all_services[0];
    constexpr size_t most = 96;
    Daemon& old = daemon_of(service.name);
    CallStatus status;
    for (size_t i = 0; i < 3 * most; i++)
        EXPECT_NE(calls.call_null(service, Deadline::after(20000), status), 0U);
    old.reply(requests(old, most).at(0)); // so that one more is sent, to nobody
    daemons.clear();
    Daemon& fresh = daemon_of(service.name);
    size_t ended = 0, came = 0;
    for (const Deadline end = Deadline::after(10000); came < most && end.left() > 0; ended += ends().size()) {
        calls.wait(Deadline::after(5), {});
        came += requests_there(fresh);
    }
    EXPECT_EQ(ended, most + 1);
    calls.wait(Deadline::after(5), {});
    EXPECT_EQ(came + requests_there(fresh), most);
}

TEST_F(group, calls_are_gathered_until_they_are_sent_and_not_after)
{
    Daemon& daemon = daemon_of("nsminfo");
    warm_up(small, daemon);
    calls.gather();
    call(small, "1");
    call(small, "2");
    EXPECT_EQ(requests_there(daemon), 0U);
    calls.send_gathered();
    EXPECT_EQ(requests_there(daemon), 2U);
    call(small, "3");
    EXPECT_EQ(requests_there(daemon), 1U);
}

TEST_F(group, a_call_waits_its_turn_and_goes_once_a_replies_make_room)
{
    Daemon& daemon = daemon_of("erpsinfo");
    constexpr size_t at_once = group_window / kernel_memory(8460);
    for (int i = 0; i < 20; i++)
        call(largest, std::to_string(i));
    size_t seen = 0;
    std::map<unsigned, End> all;
    while (seen < 20) {
        const auto came = requests(daemon, seen == 0 ? at_once : 1);
        seen += came.size();
        EXPECT_TRUE(daemon.requests().empty());
        daemon.reply(came.at(0));
        calls.wait(Deadline::after(10000), {});
        all.merge(ends());
        // the others of the first go are never answered
        EXPECT_EQ(all.size(), seen - at_once + 1);
    }
    EXPECT_EQ(all.size(), 20 - at_once + 1);
}

TEST_F(group, the_sooner_of_two_deadlines_counts_whichever_call_began_first)
{
    warm_up(small, daemon_of("nsminfo"));
    for (const bool begins_first : {true, false}) {
        const unsigned a = call(small, "1", begins_first ? 100 : 20000);
        const unsigned b = call(small, "2", begins_first ? 20000 : 100);
        calls.wait(Deadline::after(5000), {});
        const auto ended = ends();
        ASSERT_EQ(ended.size(), 1U) << begins_first;
        EXPECT_EQ(ended.begin()->first, begins_first ? a : b);
    }
}

TEST_F(group, a_wait_whose_time_is_over_still_finds_that_deadlines_are)
{
    Daemon& daemon = daemon_of("nsminfo");
    warm_up(small, daemon);
    const unsigned id = call(small, "1", 1);
    usleep(20000); // as if the process had been stopped
    calls.wait(Deadline{milliseconds_now() - 10}, {});
    EXPECT_FALSE(calls.is_open());
    EXPECT_EQ(ends().at(id).code, CallCode::TimedOut);
}

TEST_F(group, a_reply_that_came_in_time_is_taken_however_late_somebody_looks)
{
    Daemon& daemon = daemon_of("nsminfo");
    warm_up(small, daemon);
    const unsigned id = call(small, "5", 500);
    daemon.reply(requests(daemon, 1).at(0));
    usleep(600000);
    calls.wait(Deadline{milliseconds_now() - 10}, {});
    EXPECT_EQ(ends().at(id).text.substr(0, 2), "5&");
}

// However much one daemon has to say, another's reply is taken in the same turn.
TEST_F(group, no_service_waits_for_another)
{
    Daemon &busy = daemon_of("nsminfo"), &quiet = daemon_of("devinfo");
    for (const bool busy_first : {true, false}) {
        ApiCalls own(CallsOf::Loop);
        CallStatus status;
        const auto begin = [&](const char* name, const std::string& argument) {
            return own.call(name, argument.c_str(), Deadline::after(20000), status);
        };
        unsigned wanted = 0;
        if (!busy_first)
            wanted = begin(other, "q");
        for (int i = 0; i < 40; i++)
            begin(small, std::to_string(i));
        if (busy_first)
            wanted = begin(other, "q");
        std::vector<Daemon::Request> to_busy, to_quiet;
        const Deadline end = Deadline::after(10000);
        while (to_busy.size() + to_quiet.size() < 41 && end.left() > 0) {
            own.wait(Deadline::after(5), {});
            for (const auto& one : busy.requests())
                to_busy.push_back(one);
            for (const auto& one : quiet.requests())
                to_quiet.push_back(one);
        }
        ASSERT_EQ(to_quiet.size(), 1U);
        // the busy one: a hundred datagrams of nobody's, and a reply to each call
        for (int i = 0; i < 100; i++)
            busy.send(to_busy.at(0), {htonl(to_busy[0].xid() + 5000)});
        for (const auto& one : to_busy)
            busy.reply(one);
        quiet.reply(to_quiet[0]);
        own.process();
        bool found = false;
        for (; const ApiCall* one = own.first_finished(); own.drop_finished())
            found |= one->id == wanted;
        EXPECT_TRUE(found) << (busy_first ? "after" : "before") << " the busy one";
    }
}

// A call that begins when another ends, for ever: the third one has its turn.
TEST_F(group, an_endless_row_of_calls_leaves_another_service_its_turn)
{
    Daemon &busy = daemon_of("nsminfo"), &quiet = daemon_of("devinfo");
    warm_up(small, busy);
    warm_up(other, quiet);
    const unsigned wanted = call(other, "q");
    call(small, "1");
    const auto asked = requests(quiet, 1);
    quiet.reply(asked.at(0));
    bool found = false;
    for (int turn = 0; turn < 3 && !found; turn++) {
        for (const auto& one : busy.requests())
            busy.reply(one);
        call(small, "1");
        for (const auto& one : busy.requests())
            busy.reply(one);
        calls.wait(Deadline::after(10000), {});
        found = ends().count(wanted) > 0;
    }
    EXPECT_TRUE(found);
}

TEST_F(group, a_daemon_that_sends_without_end_leaves_others_their_turn)
{
    Daemon& busy = daemon_of("nsminfo");
    warm_up(small, busy);
    const unsigned open = call(small, "1");
    const auto asked = requests(busy, 1);
    const int room = 1 << 22, socket = socket_to(busy);
    if (setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room) != 0)
        GTEST_SKIP() << "room for so many is for root";
    for (int i = 0; i < 1000; i++)
        busy.reply(asked.at(0), asked.at(0).xid() + 1);
    busy.reply(asked.at(0));
    calls.process();
    uint32_t next;
    EXPECT_GT(recv(socket, &next, sizeof next, MSG_DONTWAIT | MSG_PEEK | MSG_TRUNC), 0) << "all were taken in one go";
    for (int i = 0; i < 100 && calls.is_open(); i++)
        calls.process();
    EXPECT_EQ(ends().at(open).code, CallCode::Success);
}

// An alarm that rings early would have its host look again and again.
TEST_F(group, the_descriptor_rests_before_a_deadline_and_once_nothing_is_open)
{
    Daemon& daemon = daemon_of("nsminfo");
    warm_up(small, daemon);
    pollfd readable = {calls.descriptor(), POLLIN, 0};
    ASSERT_GT(readable.fd, 2);
    for (const int64_t deadline : {1050, 1000}) {
        const unsigned id = call(small, "1", deadline);
        const auto asked = requests(daemon, 1);
        calls.keep_alarm();
        usleep(60000); // the first is due in more than a second, of which 50 milliseconds are a part
        EXPECT_EQ(poll(&readable, 1, 0), 0) << deadline;
        daemon.reply(asked.at(0));
        EXPECT_EQ(poll(&readable, 1, 10000), 1) << deadline;
        calls.process();
        EXPECT_EQ(ends().at(id).code, CallCode::Success) << deadline;
        calls.keep_alarm();
    }
    usleep(1000000); // beyond the second one's deadline
    EXPECT_EQ(poll(&readable, 1, 0), 0);
}

TEST_F(group, a_descriptor_without_room_for_its_timer_is_none_and_can_be_had_later)
{
    daemon_of("nsminfo");
    const auto next_number = [] {
        const int next = dup(0);
        close(next);
        return next;
    };
    rlimit before;
    getrlimit(RLIMIT_NOFILE, &before);
    const int next = next_number();
    const rlimit room_for_one = {static_cast<rlim_t>(next) + 1, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &room_for_one);
    EXPECT_EQ(calls.descriptor(), -1);
    EXPECT_EQ(errno, EMFILE);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(next_number(), next) << "something stayed open";

    const unsigned lost = call(small, "1", 30);
    pollfd readable = {calls.descriptor(), POLLIN, 0};
    ASSERT_GT(readable.fd, 2);
    calls.keep_alarm();
    while (calls.is_open()) {
        ASSERT_EQ(poll(&readable, 1, 10000), 1);
        calls.process();
        calls.keep_alarm();
    }
    EXPECT_EQ(ends().at(lost).code, CallCode::TimedOut);
}

namespace
{
// Answers nobody before it has been asked for three services.
class patient_mapper : public group
{
    std::optional<Units> mapper_answer(const PortMapperQuery& query) override
    {
        for (const PortMapperQuery& one : mapper->queries())
            seen[one.wanted()] = one;
        if (seen.size() < 3)
            return {};
        for (const auto& [program, one] : seen)
            if (program != query.wanted())
                mapper->send(one.from, *group::mapper_answer(one));
        return group::mapper_answer(query);
    }
    std::map<uint32_t, PortMapperQuery> seen;
};
} // namespace

TEST_F(patient_mapper, ports_of_several_services_are_asked_for_at_once)
{
    Daemon &a = daemon_of("nsminfo"), &b = daemon_of("devinfo"), &c = daemon_of("erpsinfo");
    call(small, "1");
    call(other, "x");
    call(largest, "1");
    EXPECT_EQ(requests(a, 1).size() + requests(b, 1).size() + requests(c, 1).size(), 3U);
    EXPECT_EQ(mapper->queries().size(), 3U);
}

TEST_F(patient_mapper, a_query_under_way_is_the_parents_when_it_forks)
{
    Daemon &a = daemon_of("nsminfo"), &b = daemon_of("devinfo"), &c = daemon_of("erpsinfo");
    call(small, "1");
    EXPECT_EQ(sockets_to(111).size(), 1U);
    const pid_t child = fork();
    if (child == 0)
        _exit(sockets_to(111).empty() ? 0 : 1);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(sockets_to(111).size(), 1U);
    call(other, "x");
    call(largest, "1");
    EXPECT_EQ(requests(a, 1).size() + requests(b, 1).size() + requests(c, 1).size(), 3U);
}

namespace
{
class mute_mapper : public group
{
  protected:
    std::optional<Units> mapper_answer(const PortMapperQuery& query) override
    {
        if (is_mute)
            return {};
        return group::mapper_answer(query);
    }
    std::atomic<bool> is_mute = false;
};
} // namespace

// A call failed, so that the port is asked for again; others are still under way.
TEST_F(mute_mapper, replies_are_taken_while_the_port_is_asked_for)
{
    Daemon& daemon = daemon_of("nsminfo");
    warm_up(small, daemon);
    const unsigned lost = call(small, "1", 30), open = call(small, "2");
    const std::vector<Daemon::Request> sent = requests(daemon, 2);
    calls.wait(Deadline::after(10000), {});
    ASSERT_EQ(ends().at(lost).code, CallCode::TimedOut);
    is_mute = true;
    call(small, "3");
    calls.wait(Deadline::after(20), {});
    EXPECT_TRUE(daemon.requests().empty()) << "it waits for the port";
    daemon.reply(sent.at(1));
    calls.wait(Deadline::after(10000), {});
    const auto ended = ends();
    EXPECT_EQ(ended.size(), 1U) << "the port is still asked for";
    EXPECT_EQ(ended.at(open).code, CallCode::Success);
}

// The new daemon has another port, and the old one's is silent, not closed.
TEST_F(group, after_a_failure_the_next_call_goes_where_the_daemon_is_then)
{
    Daemon& old = daemon_of("nsminfo");
    warm_up(small, old);
    const unsigned lost = call(small, "1", 30), open = call(small, "2", 20000);
    requests(old, 2);
    usleep(40000);
    calls.wait(Deadline::after(10000), {});
    EXPECT_EQ(ends().at(lost).code, CallCode::TimedOut);

    // still there: the open call goes on
    unsigned next = call(small, "3");
    const auto came = requests(old, 1);
    old.reply(came.at(0));
    calls.wait(Deadline::after(10000), {});
    EXPECT_EQ(ends().at(next).text.substr(0, 2), "3&");
    EXPECT_TRUE(calls.is_open());

    const unsigned again = call(small, "4", 30);
    requests(old, 1);
    usleep(40000);
    calls.wait(Deadline::after(10000), {});
    EXPECT_EQ(ends().at(again).code, CallCode::TimedOut);
    const std::unique_ptr<Daemon> kept = std::move(daemons.begin()->second); // its port stays taken
    daemons.clear();
    Daemon& fresh = daemon_of("nsminfo");
    next = call(small, "5");
    fresh.reply(requests(fresh, 1).at(0));
    std::map<unsigned, End> all;
    while (calls.is_open()) {
        calls.wait(Deadline::after(10000), {});
        all.merge(ends());
    }
    EXPECT_EQ(all.at(next).text.substr(0, 2), "5&");
    EXPECT_EQ(all.at(open).code, CallCode::Refused);
}

TEST_F(group, a_page_leaves_no_socket_to_where_the_daemon_was)
{
    Daemon& old = daemon_of("nsminfo");
    ApiCalls page(CallsOf::Page);
    CallStatus status;
    EXPECT_NE(page.call(small, "1", Deadline::after(30), status), 0U);
    EXPECT_NE(page.call(small, "2", Deadline::after(20000), status), 0U);
    while (!page.first_finished()) // the first, by its time
        page.wait(Deadline::after(10000), {});
    EXPECT_EQ(requests_there(old), 2U);
    const std::unique_ptr<Daemon> kept = std::move(daemons.begin()->second);
    daemons.clear();
    Daemon& fresh = daemon_of("nsminfo");
    EXPECT_NE(page.call(small, "3", Deadline::after(20000), status), 0U);
    for (const Deadline end = Deadline::after(10000); page.is_open() && end.left() > 0;) {
        page.wait(Deadline::after(5), {});
        for (const auto& request : fresh.requests())
            fresh.reply(request);
        while (page.first_finished())
            page.drop_finished();
    }
    page.close();
    EXPECT_EQ(sockets_to(kept->port).size(), 0U);
    EXPECT_EQ(sockets_to(fresh.port).size(), 1U);
    destroy_all_clients();
}

// A page's sockets are the next calls' clients, under numbers that nobody can guess.
TEST_F(group, sockets_that_a_page_leaves_have_first_numbers_of_their_own)
{
    Daemon &one = daemon_of("nsminfo"), &two = daemon_of("devinfo");
    ApiCalls page(CallsOf::Page);
    CallStatus status;
    EXPECT_NE(page.call(small, "1", Deadline::after(20000), status), 0U);
    EXPECT_NE(page.call(other, "1", Deadline::after(20000), status), 0U);
    std::vector<uint32_t> numbers;
    for (const Deadline end = Deadline::after(10000); page.is_open() && end.left() > 0;) {
        page.wait(Deadline::after(5), {});
        for (const Daemon* daemon : {&one, &two})
            for (const auto& request : daemon->requests()) {
                numbers.push_back(request.xid());
                daemon->reply(request);
            }
        while (page.first_finished())
            page.drop_finished();
    }
    page.close();
    for (const Service* service : all_services)
        if (Client* left = lend_idle_client(*service->client)) {
            numbers.push_back(left->xid + 1); // which its next call has
            give_back_client(*service->client, *left, false);
        }
    EXPECT_EQ(numbers.size(), 4U);
    std::sort(numbers.begin(), numbers.end());
    for (size_t i = 1; i < numbers.size(); i++)
        EXPECT_GT(numbers[i] - numbers[i - 1], 2U);
    destroy_all_clients();
}

// A failed call makes older clients stale, not those that come after it.
TEST_F(group, sockets_that_a_page_leaves_after_a_failed_call_are_used_by_the_next_one)
{
    Daemon& daemon = daemon_of("nsminfo");
    const Service& service = *find_api(small).service;
    for (int round = 0; round < 3; round++) {
        ApiCalls page(CallsOf::Page);
        CallStatus status;
        EXPECT_NE(page.call(small, "1", Deadline::after(20000), status), 0U);
        for (const Deadline end = Deadline::after(10000); !page.first_finished() && end.left() > 0;) {
            page.wait(Deadline::after(5), {});
            for (const auto& request : daemon.requests())
                daemon.reply(request);
        }
        page.close();
        Client* left = lend_idle_client(*service.client);
        ASSERT_NE(left, nullptr) << round;
        give_back_client(*service.client, *left, true);
        EXPECT_EQ(lend_idle_client(*service.client), nullptr);
    }
}

// Between two pages the host's own code runs, too.
TEST_F(group, nothing_is_sent_to_what_took_a_clients_number_between_two_pages)
{
    Daemon& daemon = daemon_of("nsminfo");
    const auto read_page = [&](const std::function<void()>& at_first) {
        ApiCalls page(CallsOf::Page);
        CallStatus status;
        EXPECT_NE(page.call(small, "1", Deadline::after(20000), status), 0U);
        at_first();
        for (const Deadline end = Deadline::after(10000); !page.first_finished() && end.left() > 0;) {
            page.wait(Deadline::after(5), {});
            for (const auto& request : daemon.requests())
                daemon.reply(request);
        }
        ASSERT_NE(page.first_finished(), nullptr);
        EXPECT_NE(page.first_finished()->text, nullptr);
        page.close();
    };
    read_page([] {});
    const int number = socket_to(daemon);
    ASSERT_GT(number, 2);
    int pair[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, pair), 0);
    ASSERT_EQ(dup2(pair[0], number), number);
    char byte;
    read_page([&] { EXPECT_EQ(recv(pair[1], &byte, 1, MSG_DONTWAIT), -1) << "the host's socket got a call"; });
    EXPECT_GE(fcntl(number, F_GETFD), 0) << "the host's socket was closed";
    close(number), close(pair[0]), close(pair[1]);
}

TEST_F(group, an_api_of_the_hosts_own_cannot_be_one_of_many)
{
    ApiNode node = {};
    strcpy(node.name, "oltmib_of_a_host_get_1");
    ASSERT_EQ(lua_addapi(&node), 1);
    CallStatus status = {};
    EXPECT_EQ(calls.call(node.name, "", Deadline::after(100), status), 0U);
    EXPECT_EQ(status.code, CallCode::HostApi);
    EXPECT_STREQ(status.api, node.name);
    EXPECT_FALSE(calls.is_open());
    EXPECT_EQ(lua_delapi(node.name), 1);
}

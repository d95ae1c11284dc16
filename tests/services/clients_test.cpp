// The services' client functions: whom they ask for, what they keep and what
// they drop. The port mapper is the test's own.
#include <atomic>
#include <dlfcn.h>
#include <map>
#include <memory>
#include <sys/wait.h>
#include <thread>
#include <utility>

#include "tests/golden/golden_list.h"
#include "tests/services/support.h"
#include "tests/support/private_network.h"
#include "tests/support/rpc_server.h"

using namespace support;

namespace
{
struct Expected {
    std::string service;
    unsigned program;
    int (*init)();
    CLIENT* (*get)();
    void (*drop)();
};

template <class Function> Function* exported(const std::string& name)
{
    void* function = dlsym(RTLD_DEFAULT, name.c_str());
    EXPECT_NE(function, nullptr) << name;
    return reinterpret_cast<Function*>(function);
}

// In the order in which opening the module registers them.
std::vector<Expected> expected_services()
{
    std::vector<Expected> services;
    for (const auto& row : golden::list("services.txt"))
        services.push_back({row.at(1), static_cast<unsigned>(std::stoul(row[0])), exported<int()>(row.at(2)),
                            exported<CLIENT*()>(row.at(3)), exported<void()>(row.at(4))});
    return services;
}

class clients : public testing::Test
{
  protected:
    const std::vector<Expected> expected = expected_services();

    void SetUp() override
    {
        static const bool is_private = enter_private_network();
        if (!is_private)
            GTEST_SKIP() << "a network of our own is for root";
        port_mapper = std::make_unique<FakePortMapper>([this](const PortMapperQuery& query) {
            auto answer = std::optional(FakePortMapper::accepted(query, {creation_fails ? 0U : daemon_port.load()}));
            if (mapper_is_silent)
                answer.reset();
            return answer;
        });
    }

    // The programs that were asked for since the last time.
    std::vector<uint32_t> asked()
    {
        std::vector<uint32_t> programs;
        for (const PortMapperQuery& query : port_mapper->queries()) {
            EXPECT_EQ(query.program, 100000U);
            EXPECT_EQ(query.version, 2U);
            EXPECT_EQ(query.procedure, 3U);
            EXPECT_EQ(query.arguments, (std::vector<uint32_t>{query.wanted(), 1, 17, 0})); // version 1, UDP
            programs.push_back(query.wanted());
        }
        port_mapper->forget();
        return programs;
    }

    // Connected UDP sockets of this process.
    static int sockets_of_ours()
    {
        int count = 0;
        for (int fd = 3; fd < 256; fd++) {
            sockaddr_in peer = {};
            socklen_t size = sizeof peer;
            count += getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &size) == 0 && peer.sin_family == AF_INET;
        }
        return count;
    }

    std::atomic<bool> creation_fails = false, mapper_is_silent = false;
    std::atomic<uint32_t> daemon_port = 9;
    std::unique_ptr<FakePortMapper> port_mapper;
};
} // namespace

TEST(services, stand_in_the_order_of_registration)
{
    const std::vector<Expected> expected = expected_services();
    ASSERT_EQ(std::size(all_services), expected.size());
    for (size_t i = 0; i < expected.size(); i++) {
        EXPECT_EQ(all_services[i]->name, expected[i].service);
        EXPECT_EQ(all_services[i]->program, expected[i].program);
        EXPECT_EQ(all_services[i]->init, expected[i].init) << expected[i].service;
        EXPECT_EQ(all_services[i]->clnt_init, expected[i].get) << expected[i].service;
        EXPECT_EQ(all_services[i]->clnt_destroy, expected[i].drop) << expected[i].service;
    }
}

TEST_F(clients, each_is_created_once_kept_and_created_again_after_a_drop)
{
    using Programs = std::vector<uint32_t>;
    for (const Expected& service : expected) {
        CLIENT* client = service.get();
        ASSERT_NE(client, nullptr) << service.service;
        EXPECT_EQ(asked(), Programs{service.program});
        EXPECT_EQ(service.get(), client);
        EXPECT_EQ(asked(), Programs());
        service.drop();
        EXPECT_EQ(asked(), Programs());
        EXPECT_NE(service.get(), nullptr);
        EXPECT_EQ(asked(), Programs{service.program});
        service.drop();
    }
}

TEST_F(clients, services_share_none)
{
    std::map<CLIENT*, std::string> clients;
    for (const Expected& service : expected) {
        const auto inserted = clients.emplace(service.get(), service.service);
        EXPECT_TRUE(inserted.second) << service.service << " has the client of " << inserted.first->second;
    }
    EXPECT_EQ(asked().size(), expected.size());
    for (const Expected& dropped : expected) {
        dropped.drop();
        for (const Expected& service : expected)
            if (service.get != dropped.get)
                service.get();
        EXPECT_TRUE(asked().empty()) << "dropping the client of " << dropped.service << " touched another's";
        dropped.get();
        asked();
    }
    for (const Expected& service : expected)
        service.drop();
}

// The daemon may have been restarted: neither the failed call's nor one that was lent meanwhile stays.
TEST_F(clients, of_a_service_whose_call_failed_are_closed_when_they_come_back)
{
    const ServiceClient& service = *all_services[0]->client;
    CreationFailure failure;
    Client* one = lend_client(service, Deadline::after(10000), {}, failure);
    Client* two = lend_client(service, Deadline::after(10000), {}, failure);
    ASSERT_TRUE(one && two);
    EXPECT_EQ(sockets_of_ours(), 2);
    give_back_client(service, *one, true);
    EXPECT_EQ(sockets_of_ours(), 1);
    give_back_client(service, *two, false);
    EXPECT_EQ(sockets_of_ours(), 0);
}

TEST_F(clients, that_are_lent_while_theirs_are_dropped_are_closed_when_they_come_back)
{
    const ServiceClient& service = *all_services[0]->client;
    CreationFailure failure;
    for (const bool all_services_too : {false, true}) {
        Client* lent = lend_client(service, Deadline::after(10000), {}, failure);
        ASSERT_NE(lent, nullptr);
        if (all_services_too)
            destroy_all_clients();
        else
            destroy_client(service);
        EXPECT_EQ(sockets_of_ours(), 1) << "it is somebody's";
        give_back_client(service, *lent, false);
        EXPECT_EQ(sockets_of_ours(), 0);
    }
}

TEST_F(clients, that_come_back_once_none_are_kept_are_closed)
{
    const ServiceClient& service = *all_services[0]->client;
    CreationFailure failure;
    Client* lent = lend_client(service, Deadline::after(10000), {}, failure);
    ASSERT_NE(lent, nullptr);
    keep_clients(false);
    give_back_client(service, *lent, false);
    EXPECT_EQ(sockets_of_ours(), 0);
    keep_clients(true);
    lent = lend_client(service, Deadline::after(10000), {}, failure);
    ASSERT_NE(lent, nullptr);
    give_back_client(service, *lent, false);
    EXPECT_EQ(sockets_of_ours(), 1);
    destroy_all_clients();
}

// A socket that a page leaves becomes a client where there is none, and is closed elsewhere.
TEST_F(clients, one_at_most_is_made_of_the_sockets_that_pages_leave)
{
    const ServiceClient& service = *all_services[0]->client;
    const auto leave_socket = [&] {
        UdpSocket socket;
        ASSERT_TRUE(open_udp_socket(socket, 9, LocalPort::Any, 0, 0));
        keep_as_client(service, socket);
    };
    keep_clients(false);
    leave_socket();
    EXPECT_EQ(sockets_of_ours(), 0);
    keep_clients(true);
    leave_socket();
    EXPECT_EQ(sockets_of_ours(), 1);
    destroy_all_clients();
    EXPECT_EQ(sockets_of_ours(), 0) << "it is known to be there";
    leave_socket();
    leave_socket();
    EXPECT_EQ(sockets_of_ours(), 1);
    CreationFailure failure;
    std::vector<Client*> lent;
    for (unsigned i = 0; i < most_clients; i++)
        lent.push_back(lend_client(service, Deadline::after(10000), {}, failure));
    EXPECT_EQ(asked().size(), most_clients - 1) << "one was there";
    leave_socket();
    EXPECT_EQ(sockets_of_ours(), static_cast<int>(most_clients));
    for (Client* client : lent)
        give_back_client(service, *client, true);
    EXPECT_EQ(sockets_of_ours(), 0);
}

// Whose number nobody can have taken meanwhile. Calls of one length are told apart by their
// deadlines; of others nothing is known.
TEST_F(clients, lent_again_within_50_microseconds_are_known_to_be)
{
    const ServiceClient& service = *all_services[0]->client;
    const int64_t first = Deadline::after(10000).at;
    const auto was_just_used = [&](int64_t later) {
        CreationFailure failure;
        Client* client = lend_client(service, {first + later}, {}, failure);
        const bool known = client->socket.was_just_used;
        give_back_client(service, *client, false);
        return known;
    };
    was_just_used(0);
    EXPECT_TRUE(was_just_used(0));
    EXPECT_TRUE(was_just_used(49));
    EXPECT_FALSE(was_just_used(99));
    EXPECT_FALSE(was_just_used(98));
    EXPECT_TRUE(was_just_used(98));
    destroy_all_clients();
}

// While all are lent the processor is for those who have them.
TEST_F(clients, are_waited_for_without_work)
{
    const ServiceClient& service = *all_services[0]->client;
    CreationFailure failure;
    std::vector<Client*> lent;
    for (unsigned i = 0; i < most_clients; i++)
        lent.push_back(lend_client(service, Deadline::after(10000), {}, failure));
    std::thread waiting([&] { // with one thread no lock is taken
        // through the end of a second, where the time of day goes over
        EXPECT_EQ(lend_client(service, Deadline::after(1100), {}, failure), nullptr);
        timespec worked;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &worked);
        EXPECT_LT(worked.tv_sec * 1000 + worked.tv_nsec / 1000000, 20);
    });
    waiting.join();
    for (Client* client : lent)
        give_back_client(service, *client, true);
    EXPECT_EQ(sockets_of_ours(), 0);
}

TEST_F(clients, of_every_service_are_dropped_at_once)
{
    for (const Expected& service : expected)
        service.get();
    EXPECT_EQ(asked().size(), expected.size());
    destroy_all_clients();
    EXPECT_EQ(sockets_of_ours(), 0);
}

TEST_F(clients, of_no_service_are_a_forked_childs)
{
    for (const Expected& service : expected)
        service.get();
    EXPECT_EQ(sockets_of_ours(), static_cast<int>(expected.size()));
    const pid_t child = fork();
    if (child == 0)
        _exit(sockets_of_ours());
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(sockets_of_ours(), static_cast<int>(expected.size()));
    destroy_all_clients();
}

// A host calls through a service's handle as through the RPC library's own.
namespace
{
class handle : public clients
{
  protected:
    void SetUp() override
    {
        clients::SetUp();
        if (IsSkipped())
            return;
        daemon = std::make_unique<RpcServer>(0, answer); // in the private network
        daemon_port = daemon->port();
        of = expected.front().get();
        ASSERT_NE(of, nullptr);
        asked();
    }
    void TearDown() override { destroy_all_clients(); }

    // Procedure 1 replies its argument, others reply nothing at all.
    static std::optional<RpcServer::Units> answer(const RpcCall& call)
    {
        if (call.procedure != 1)
            return std::nullopt;
        return RpcServer::accepted(call, call.arguments);
    }

    clnt_stat call(rpcproc_t procedure, xdrproc_t encode, void* request, xdrproc_t decode, void* reply, long ms)
    {
        return clnt_call(of, procedure, encode, request, decode, reply, (timeval{ms / 1000, ms % 1000 * 1000}));
    }
    clnt_stat call(rpcproc_t procedure, long ms)
    {
        return call(procedure, as_xdrproc(xdr_void), nullptr, as_xdrproc(xdr_void), nullptr, ms);
    }
    clnt_stat last_error() const
    {
        rpc_err error = {};
        error.re_status = RPC_FAILED; // which nothing here is
        clnt_geterr(of, &error);
        return error.re_status;
    }
    // Of the client that is kept; -1 without one.
    int descriptor() const
    {
        int fd = 0;
        return clnt_control(of, CLGET_FD, reinterpret_cast<char*>(&fd)) ? fd : -1;
    }

    std::unique_ptr<RpcServer> daemon;
    CLIENT* of = nullptr;
};
} // namespace

TEST_F(handle, makes_calls_through_the_client_that_is_kept)
{
    for (int value = 7; value < 10; value++) {
        int replied = 0;
        EXPECT_EQ(call(1, as_xdrproc(xdr_int), &value, as_xdrproc(xdr_int), &replied, 10000), RPC_SUCCESS);
        EXPECT_EQ(replied, value);
        EXPECT_EQ(last_error(), RPC_SUCCESS);
        EXPECT_EQ(sockets_of_ours(), 1);
    }
    EXPECT_TRUE(asked().empty());
    ASSERT_EQ(daemon->queries().size(), 3U);
    for (const RpcCall& one : daemon->queries())
        EXPECT_EQ((std::pair{one.program, one.version}), (std::pair{expected.front().program, 1U}));
}

TEST_F(handle, tells_why_the_last_call_failed)
{
    int short_of = 0, of_nothing[2] = {};
    const Deadline soon = Deadline::after(5000);
    EXPECT_EQ(call(2, 200), RPC_TIMEDOUT);
    EXPECT_GT(soon.left(), 0) << "the call's own time counts, not the usual";
    EXPECT_EQ(last_error(), RPC_TIMEDOUT);
    EXPECT_EQ(call(1, as_xdrproc(xdr_void), nullptr, as_xdrproc(xdr_int), of_nothing, 10000), RPC_CANTDECODERES);
    EXPECT_EQ(last_error(), RPC_CANTDECODERES);
    EXPECT_EQ(call(1, as_xdrproc(xdr_int), &short_of, as_xdrproc(xdr_int), of_nothing, 10000), RPC_SUCCESS);
    EXPECT_EQ(last_error(), RPC_SUCCESS);
    expected.front().drop();
    creation_fails = true;
    EXPECT_EQ(call(1, 10000), RPC_PROGNOTREGISTERED);
    EXPECT_EQ(last_error(), RPC_PROGNOTREGISTERED);
}

TEST_F(handle, tells_its_descriptor_program_and_version_and_nothing_else)
{
    sockaddr_in peer = {};
    socklen_t size = sizeof peer;
    ASSERT_GT(descriptor(), 2);
    ASSERT_EQ(getpeername(descriptor(), reinterpret_cast<sockaddr*>(&peer), &size), 0);
    EXPECT_EQ(ntohs(peer.sin_port), daemon->port());
    uint32_t number = 0;
    EXPECT_TRUE(clnt_control(of, CLGET_PROG, reinterpret_cast<char*>(&number)));
    EXPECT_EQ(number, expected.front().program);
    EXPECT_TRUE(clnt_control(of, CLGET_VERS, reinterpret_cast<char*>(&number)));
    EXPECT_EQ(number, 1U);
    EXPECT_FALSE(clnt_control(of, CLGET_XID, reinterpret_cast<char*>(&number)));
    CreationFailure failure;
    Client* lent = lend_client(*all_services[0]->client, Deadline::after(10000), {}, failure);
    ASSERT_NE(lent, nullptr);
    EXPECT_EQ(descriptor(), -1) << "of a client that somebody else has";
    give_back_client(*all_services[0]->client, *lent, false);
    EXPECT_GT(descriptor(), 2);
}

// Only where nothing has left may another socket send.
TEST_F(handle, sends_once_when_its_socket_heard_of_a_failure_before)
{
    EXPECT_EQ(call(1, 10000), RPC_SUCCESS);
    const int kept = descriptor();
    daemon.reset();
    EXPECT_EQ(send(kept, "x", 1, 0), 1); // to a port that is closed, of which the next send is told
    daemon = std::make_unique<RpcServer>(0, answer);
    daemon_port = daemon->port();
    EXPECT_EQ(call(1, 10000), RPC_CANTSEND);
    rpc_err error = {};
    clnt_geterr(of, &error);
    EXPECT_EQ(error.re_errno, ECONNREFUSED);
    EXPECT_TRUE(asked().empty());
    EXPECT_TRUE(daemon->queries().empty());
}

TEST_F(handle, sends_once_when_its_socket_is_closed_while_it_waits)
{
    daemon = std::make_unique<RpcServer>(0, [this](const RpcCall& call) {
        daemon->send(call.from, {}); // so that the call looks around
        return std::nullopt;
    });
    daemon_port = daemon->port();
    expected.front().drop();
    of = expected.front().get();
    asked();
    int number = descriptor();
    const auto close_it = [](void* fd) { return close(std::exchange(*static_cast<int*>(fd), -1)) == 1; };
    const Caller caller = {close_it, &number};
    set_handle_caller(&caller);
    EXPECT_EQ(call(2, 10000), RPC_CANTRECV);
    set_handle_caller(nullptr);
    EXPECT_TRUE(asked().empty());
    EXPECT_EQ(daemon->queries().size(), 1U);
}

TEST_F(handle, asks_whether_its_caller_gives_up_in_that_thread_and_until_then_only)
{
    const ServiceClient& service = *all_services[0]->client;
    CreationFailure failure;
    std::vector<Client*> lent; // so that a call waits for a client, and asks meanwhile
    for (unsigned i = 0; i < most_clients; i++)
        lent.push_back(lend_client(service, Deadline::after(10000), {}, failure));
    std::atomic<int> asked_of = 0;
    const auto gives_up = [](void* times) { return ++*static_cast<std::atomic<int>*>(times) > 0; };
    const Caller caller = {gives_up, &asked_of};
    set_handle_caller(&caller);
    EXPECT_EQ(call(1, 10000), RPC_TIMEDOUT);
    EXPECT_EQ(asked_of, 1);
    std::thread([&] { EXPECT_EQ(call(1, 50), RPC_TIMEDOUT); }).join();
    EXPECT_EQ(asked_of, 1) << "another thread's call";
    set_handle_caller(nullptr);
    EXPECT_EQ(call(1, 50), RPC_TIMEDOUT);
    EXPECT_EQ(asked_of, 1) << "a later call";
    for (Client* client : lent)
        give_back_client(service, *client, true);
}

TEST_F(handle, waits_for_the_port_mapper_as_long_as_its_call_may_take_and_its_caller_wants)
{
    destroy_all_clients();
    mapper_is_silent = true;
    const Deadline soon = Deadline::after(4000); // the port mapper alone may take five seconds
    EXPECT_EQ(call(1, 200), RPC_TIMEDOUT);
    const Caller caller = {[](void*) { return true; }, nullptr};
    set_handle_caller(&caller);
    EXPECT_EQ(call(1, 10000), RPC_SYSTEMERROR);
    rpc_err error = {};
    clnt_geterr(of, &error);
    EXPECT_EQ(error.re_errno, EINTR);
    set_handle_caller(nullptr);
    EXPECT_GT(soon.left(), 0);
    EXPECT_EQ(sockets_of_ours(), 0);
    mapper_is_silent = false;
    EXPECT_EQ(call(1, 10000), RPC_SUCCESS);
}

TEST_F(handle, frees_what_a_reply_left_and_drops_the_clients_when_it_is_destroyed)
{
    char* text = nullptr;
    char given[] = "text";
    char* request = given;
    ASSERT_EQ(call(1, as_xdrproc(xdr_wrapstring), &request, as_xdrproc(xdr_wrapstring), &text, 10000), RPC_SUCCESS);
    EXPECT_STREQ(text, "text");
    EXPECT_TRUE(clnt_freeres(of, as_xdrproc(xdr_wrapstring), reinterpret_cast<char*>(&text)));
    EXPECT_EQ(text, nullptr);
    clnt_abort(of);
    EXPECT_EQ(sockets_of_ours(), 1);
    clnt_destroy(of);
    EXPECT_EQ(sockets_of_ours(), 0);
    EXPECT_EQ(descriptor(), -1);
}

TEST_F(clients, one_that_cannot_be_created_says_why_and_is_tried_again)
{
    for (const Expected& service : expected) {
        creation_fails = true;
        testing::internal::CaptureStderr();
        EXPECT_EQ(service.get(), nullptr);
        EXPECT_EQ(service.get(), nullptr);
        const std::string line = "127.0.0.1: RPC: Program not registered\n";
        EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line);
        EXPECT_EQ(asked().size(), 2U);
        creation_fails = false;
        EXPECT_NE(service.get(), nullptr);
        EXPECT_EQ(asked().size(), 1U);
        service.drop();
    }
}

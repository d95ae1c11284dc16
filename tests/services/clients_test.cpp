// The services' client functions: whom they ask for, what they keep and what
// they drop. The port mapper is the test's own.
#include <dlfcn.h>
#include <map>
#include <memory>
#include <sys/wait.h>
#include <thread>

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
            return FakePortMapper::accepted(query, {creation_fails ? 0U : 9U});
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

    std::atomic<bool> creation_fails = false;
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

// While all are lent the processor is for those who have them.
TEST_F(clients, are_waited_for_without_work)
{
    const ServiceClient& service = *all_services[0]->client;
    CreationFailure failure;
    std::vector<Client*> lent;
    for (unsigned i = 0; i < most_clients; i++)
        lent.push_back(lend_client(service, Deadline::after(10000), {}, failure));
    std::thread waiting([&] { // with one thread no lock is taken
        EXPECT_EQ(lend_client(service, Deadline::after(500), {}, failure), nullptr);
        timespec worked;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &worked);
        EXPECT_LT(worked.tv_sec * 1000 + worked.tv_nsec / 1000000, 50);
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

// As the RPC library's own handle does.
TEST_F(clients, handle_of_tells_why_the_last_call_through_it_was_not_sent)
{
    CLIENT* handle = expected.front().get();
    ASSERT_NE(handle, nullptr);
    expected.front().drop();
    creation_fails = true;
    const auto nothing = as_xdrproc(xdr_void);
    EXPECT_EQ(clnt_call(handle, NULLPROC, nothing, nullptr, nothing, nullptr, (timeval{1, 0})), RPC_PROGNOTREGISTERED);
    rpc_err error = {};
    clnt_geterr(handle, &error);
    EXPECT_EQ(error.re_status, RPC_PROGNOTREGISTERED);
    creation_fails = false;
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

// The services' client functions: whom they ask for, what they keep and what
// they drop. clnt_create is this file's own, which asks no port
// mapper.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <map>

#include "tests/golden/golden_list.h"
#include "tests/services/support.h"

using namespace support;

namespace
{
std::vector<std::string> created; // what clnt_create was asked for
bool creation_fails;
} // namespace

extern "C" {
CLIENT* clnt_create(const char* host, const rpcprog_t program, const rpcvers_t version, const char* transport)
{
    created.push_back(std::string(host) + " " + std::to_string(program) + " " + std::to_string(version) + " " +
                      transport);
    if (creation_fails) {
        rpc_createerr.cf_stat = RPC_PROGNOTREGISTERED;
        return nullptr;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(9);
    int socket = RPC_ANYSOCK;
    return clntudp_create(&address, program, version, {1, 0}, &socket);
}
}

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

class Clients : public testing::Test
{
  protected:
    void SetUp() override { created.clear(), creation_fails = false; }
    const std::vector<Expected> expected = expected_services();
};
} // namespace

TEST_F(Clients, ServicesStandInTheOrderOfRegistration)
{
    ASSERT_EQ(std::size(all_services), expected.size());
    for (size_t i = 0; i < expected.size(); i++) {
        EXPECT_EQ(all_services[i]->name, expected[i].service);
        EXPECT_EQ(all_services[i]->program, expected[i].program);
        EXPECT_EQ(all_services[i]->init, expected[i].init) << expected[i].service;
        EXPECT_EQ(all_services[i]->clnt_init, expected[i].get) << expected[i].service;
        EXPECT_EQ(all_services[i]->clnt_destroy, expected[i].drop) << expected[i].service;
    }
}

TEST_F(Clients, EachIsCreatedOnceKeptAndCreatedAgainAfterADrop)
{
    for (const Expected& service : expected) {
        const std::string asked = "127.0.0.1 " + std::to_string(service.program) + " 1 udp";
        created.clear();
        CLIENT* client = service.get();
        ASSERT_NE(client, nullptr) << service.service;
        EXPECT_EQ(created, std::vector<std::string>{asked});
        EXPECT_EQ(service.get(), client);
        EXPECT_EQ(created.size(), 1U);
        service.drop();
        EXPECT_NE(service.get(), nullptr);
        EXPECT_EQ(created, (std::vector<std::string>{asked, asked}));
        service.drop();
    }
}

TEST_F(Clients, ServicesShareNone)
{
    std::map<CLIENT*, std::string> clients;
    for (const Expected& service : expected) {
        const auto inserted = clients.emplace(service.get(), service.service);
        EXPECT_TRUE(inserted.second) << service.service << " has the client of " << inserted.first->second;
    }
    EXPECT_EQ(created.size(), expected.size());
    for (const Expected& dropped : expected) {
        dropped.drop();
        created.clear();
        for (const Expected& service : expected)
            if (service.get != dropped.get)
                service.get();
        EXPECT_TRUE(created.empty()) << "dropping the client of " << dropped.service << " touched another's";
        dropped.get();
    }
    for (const Expected& service : expected)
        service.drop();
}

TEST_F(Clients, OneThatCannotBeCreatedSaysWhyAndIsTriedAgain)
{
    for (const Expected& service : expected) {
        creation_fails = true;
        created.clear();
        testing::internal::CaptureStderr();
        EXPECT_EQ(service.get(), nullptr);
        EXPECT_EQ(service.get(), nullptr);
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_EQ(created.size(), 2U);
        EXPECT_EQ(said.substr(0, 11), "127.0.0.1: ") << said;
        EXPECT_NE(said.find("127.0.0.1: ", 11), std::string::npos) << said;
        creation_fails = false;
        EXPECT_NE(service.get(), nullptr);
        EXPECT_EQ(created.size(), 3U);
        service.drop();
    }
}

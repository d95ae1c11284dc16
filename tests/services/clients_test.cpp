// The client functions of the fifteen services: whom they ask for, what they
// keep and what they drop. clnt_create is this file's own, which asks no port
// mapper.
#include <arpa/inet.h>
#include <map>

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

#define DECLARE(init, clnt_init, clnt_destroy)                                                                         \
    int init();                                                                                                        \
    CLIENT* clnt_init();                                                                                               \
    void clnt_destroy();
#define DECLARE_REGULAR(name) DECLARE(oltmib_##name##_init, oltmib_##name##_clnt_init, oltmib_##name##_clnt_destroy)
DECLARE_REGULAR(devinfo)
DECLARE_REGULAR(hslinfo)
DECLARE_REGULAR(nsminfo)
DECLARE_REGULAR(erpsinfo)
DECLARE_REGULAR(hostpdinfo)
DECLARE_REGULAR(mstpinfo)
DECLARE_REGULAR(igmpsnpinfo)
DECLARE_REGULAR(nsmextinfo)
DECLARE_REGULAR(auth)
DECLARE_REGULAR(ribinfo)
DECLARE_REGULAR(vrrpinfo)
DECLARE_REGULAR(sdsminfo)
DECLARE_REGULAR(ipcminfo)
DECLARE_REGULAR(dhcpsnp)
DECLARE(oltmib_lpdetinfo_init, oltmib_lpdet_clnt_init, oltmib_lpdet_clnt_destroy)
}

namespace
{
struct Expected {
    const char* service;
    int (*init)();
    CLIENT* (*get)();
    void (*drop)();
    unsigned program;
};

#define REGULAR(name) #name, oltmib_##name##_init, oltmib_##name##_clnt_init, oltmib_##name##_clnt_destroy
// In the order in which opening the module registers them.
const Expected expected[] = {
    {REGULAR(erpsinfo), 50005},
    {REGULAR(nsminfo), 50004},
    {REGULAR(devinfo), 50002},
    {REGULAR(hslinfo), 50003},
    {REGULAR(hostpdinfo), 50006},
    {REGULAR(igmpsnpinfo), 50008},
    {REGULAR(mstpinfo), 50007},
    {REGULAR(nsmextinfo), 50009},
    {REGULAR(auth), 50010},
    {REGULAR(ribinfo), 50011},
    {REGULAR(vrrpinfo), 50013},
    {REGULAR(sdsminfo), 50015},
    {REGULAR(ipcminfo), 50016},
    {REGULAR(dhcpsnp), 50017},
    {"lpdet", oltmib_lpdetinfo_init, oltmib_lpdet_clnt_init, oltmib_lpdet_clnt_destroy, 50018},
};

class Clients : public testing::Test
{
  protected:
    void SetUp() override { created.clear(), creation_fails = false; }
};
} // namespace

TEST_F(Clients, FifteenServicesStandInTheOrderOfRegistration)
{
    ASSERT_EQ(std::size(all_services), std::size(expected));
    for (size_t i = 0; i < std::size(expected); i++) {
        EXPECT_STREQ(all_services[i]->name, expected[i].service);
        EXPECT_EQ(all_services[i]->program, expected[i].program);
        EXPECT_EQ(all_services[i]->init, expected[i].init) << expected[i].service;
        EXPECT_EQ(all_services[i]->clnt_init, expected[i].get) << expected[i].service;
        EXPECT_EQ(all_services[i]->clnt_destroy, expected[i].drop) << expected[i].service;
    }
}

TEST_F(Clients, RegistrationsAre304)
{
    for (const Service* service : all_services)
        register_once(*service);
    size_t registered = 0;
    for (const ListLinks* at = apinode_head.next; at != &apinode_head; at = at->next)
        registered++;
    EXPECT_EQ(registered, 304U);
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
    std::map<CLIENT*, const char*> clients;
    for (const Expected& service : expected) {
        const auto inserted = clients.emplace(service.get(), service.service);
        EXPECT_TRUE(inserted.second) << service.service << " has the client of " << inserted.first->second;
    }
    EXPECT_EQ(created.size(), 15U);
    oltmib_dhcpsnp_clnt_destroy();
    created.clear();
    oltmib_sdsminfo_clnt_init();
    EXPECT_TRUE(created.empty()) << "dropping one service's client touched another's";
    for (const Expected& service : expected) {
        if (service.get != oltmib_dhcpsnp_clnt_init)
            service.drop();
    }
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

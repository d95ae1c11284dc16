// The client functions of the fifteen services: whom they ask for, what they
// keep and what they drop. The port mapper is the test's own.
#include <map>
#include <memory>

#include "tests/services/support.h"
#include "tests/support/fake_port_mapper.h"
#include "tests/support/private_network.h"

using namespace support;

extern "C" {
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

    std::atomic<bool> creation_fails = false;
    std::unique_ptr<FakePortMapper> port_mapper;
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

TEST_F(Clients, ServicesShareNone)
{
    std::map<CLIENT*, const char*> clients;
    for (const Expected& service : expected) {
        const auto inserted = clients.emplace(service.get(), service.service);
        EXPECT_TRUE(inserted.second) << service.service << " has the client of " << inserted.first->second;
    }
    EXPECT_EQ(asked().size(), std::size(expected));
    oltmib_dhcpsnp_clnt_destroy();
    oltmib_sdsminfo_clnt_init();
    EXPECT_TRUE(asked().empty()) << "dropping one service's client touched another's";
    for (const Expected& service : expected) {
        if (service.get != oltmib_dhcpsnp_clnt_init)
            service.drop();
    }
}

TEST_F(Clients, OneThatCannotBeCreatedSaysWhyAndIsTriedAgain)
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

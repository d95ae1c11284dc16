// Tests with a network of their own: the port mapper is a fake one, and so are
// the daemons.
#pragma once

#include <gtest/gtest.h>
#include <memory>

#include "rpc/client.h"
#include "tests/support/lua_state.h"
#include "tests/support/private_network.h"
#include "tests/support/rpc_server.h"

// How a call ended: its value, what status.last() tells of it, what it printed
// on standard error.
struct Outcome {
    std::optional<std::string> value;
    std::string code, sentence, printed;
};

// One call of one service, whose daemon says 7 to everything.
class Lone : public testing::Test
{
  protected:
    static constexpr char api[] = "oltmib_sysloginfo_set_1";
    static constexpr uint32_t program = 50006;
    static constexpr uint32_t version_mismatch = 2; // an accept_stat

    // In the private network, while the process can still fork without a care.
    virtual void before_threads() {}

    void SetUp() override
    {
        static const bool is_private = enter_private_network();
        if (!is_private)
            GTEST_SKIP() << "a network of our own is for root";
        before_threads();
        daemon = std::make_unique<RpcServer>(0, [](const RpcCall& call) { return RpcServer::accepted(call, {7}); });
        lua = std::make_unique<LuaState>();
    }

    void map(const RpcServer::Answer& answer)
    {
        mapper.reset();
        mapper = std::make_unique<FakePortMapper>(answer);
        serving = mapper.get();
    }
    // A port mapper that speaks version 2 and tells that port.
    void map_to(uint32_t port)
    {
        map([port](const RpcCall& query) { return RpcServer::accepted(query, {port}); });
    }

    // The next call looks its daemon up.
    static void forget_clients() { destroy_all_clients(); }

    Outcome call()
    {
        Outcome outcome;
        testing::internal::CaptureStderr();
        outcome.value = lua->call(api, "1&6");
        outcome.printed = testing::internal::GetCapturedStderr();
        outcome.code = lua->code();
        outcome.sentence = lua->sentence();
        return outcome;
    }

    void expect_success(const std::string& where = "")
    {
        const Outcome outcome = call();
        EXPECT_EQ(outcome.value.value_or("no value"), "7") << where << ": " << outcome.sentence;
        EXPECT_EQ(outcome.code, "") << where;
        EXPECT_EQ(outcome.printed, "") << where;
    }

    // What clnt_pcreateerror prints: the second reason without its "RPC: ", and
    // none where nothing could be received.
    static std::string line_of(const std::string& reason)
    {
        if (reason == "RPC: Unable to receive - Connection refused")
            return "127.0.0.1: RPC: Unable to receive\n";
        std::string line = "127.0.0.1: " + reason + "\n";
        if (const size_t second = line.find(" - RPC: "); second != std::string::npos)
            line.erase(second + 3, 5);
        return line;
    }

    // The daemon could not be found: told by the status and by a line.
    void expect_no_client(const std::string& code, const std::string& meaning, const std::string& reason,
                          const std::string& where = "")
    {
        const Outcome outcome = call();
        EXPECT_FALSE(outcome.value) << where << *outcome.value;
        EXPECT_EQ(outcome.code, code) << where;
        EXPECT_EQ(outcome.sentence,
                  "oltmib_sysloginfo_set_1 (service hostpdinfo, program 50006): " + meaning + " [" + reason + "]")
            << where;
        EXPECT_EQ(outcome.printed, line_of(reason)) << where;
    }
    void expect_no_port_mapper(const std::string& reason, const std::string& where = "")
    {
        expect_no_client("no_portmapper", "the port mapper does not answer, so no daemon can be found", reason, where);
    }
    // It was found, and nothing listened there: told by the status alone.
    void expect_refused(const std::string& where = "")
    {
        const Outcome outcome = call();
        EXPECT_FALSE(outcome.value) << where << *outcome.value;
        EXPECT_EQ(outcome.code, "refused") << where;
        EXPECT_EQ(outcome.sentence, "oltmib_sysloginfo_set_1 (service hostpdinfo, program 50006): nothing listens on "
                                    "the port that the daemon had [RPC: Unable to receive - Connection refused]")
            << where;
        EXPECT_EQ(outcome.printed, "") << where;
    }

    std::unique_ptr<RpcServer> daemon;
    std::unique_ptr<FakePortMapper> mapper;
    std::atomic<FakePortMapper*> serving = nullptr; // the same, for its answers
    std::unique_ptr<LuaState> lua;
};

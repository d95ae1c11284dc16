// Look-ups that take their time.
#include "tests/host/lone.h"

namespace
{
class slow_look_up : public Lone
{
};
} // namespace

TEST_F(slow_look_up, query_is_sent_four_times)
{
    map([this](const RpcCall& query) -> std::optional<RpcServer::Units> {
        if (serving.load()->queries().size() <= 3)
            return {};
        return RpcServer::accepted(query, {daemon->port()});
    });
    expect_success();
    EXPECT_EQ(mapper->queries().size(), 4U);
}

TEST_F(slow_look_up, silent_port_mapper_is_given_up_after_five_seconds)
{
    std::atomic<bool> silent = true;
    map([&](const RpcCall& query) -> std::optional<RpcServer::Units> {
        if (silent)
            return {};
        return RpcServer::accepted(query, {daemon->port()});
    });
    const int64_t started = milliseconds_now();
    expect_no_port_mapper("RPC: Timed out");
    const int64_t took = milliseconds_now() - started;
    EXPECT_GE(took, 5000);
    EXPECT_LT(took, 5500);
    EXPECT_EQ(mapper->queries().size(), 4U);
    silent = false;
    expect_success();
}

TEST_F(slow_look_up, its_time_is_part_of_the_calls_25_seconds)
{
    RpcServer silent(0, [](const RpcCall&) { return std::optional<RpcServer::Units>(); });
    map([&](const RpcCall& query) {
        sleep(3);
        return RpcServer::accepted(query, {silent.port()});
    });
    const int64_t started = milliseconds_now();
    const Outcome outcome = call();
    const int64_t took = milliseconds_now() - started;
    EXPECT_FALSE(outcome.value);
    EXPECT_EQ(outcome.code, "timed_out");
    EXPECT_EQ(silent.queries().size(), 1U);
    EXPECT_GE(took, 25000);
    EXPECT_LT(took, 25500);
}

// Calls at their deadline of 25 seconds, and look-ups at theirs of 5. What is asserted here
// is a time.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <map>
#include <mutex>
#include <sys/wait.h>

#include "common/service.h"
#include "tests/host/lone.h"

namespace
{
// The first API of the service whose reply is a status.
const char* set_of(const Service& service)
{
    for (const Api& api : service)
        if (api.registered() && !api.reply && !api.output())
            return api.name;
    return nullptr;
}

class slow_deadlines : public Lone
{
  protected:
    // The daemon answers at once, or after that many milliseconds, or never.
    std::atomic<int> delay_ms = 0;
    static constexpr int never = -1;

    void SetUp() override
    {
        Lone::SetUp();
        if (IsSkipped())
            return;
        daemon = std::make_unique<RpcServer>(0, [this](const RpcCall& call) -> std::optional<RpcServer::Units> {
            if (delay_ms == never)
                return {};
            usleep(static_cast<useconds_t>(delay_ms) * 1000);
            return RpcServer::accepted(call, {7});
        });
        map_to(daemon->port());
    }

    // Runs a call, which ends 25.00 to 25.05 seconds later. A busy machine may
    // wake anybody late: as late as the latest of threads that only sleep so long.
    template <class Body> void expect_25_seconds(Body body)
    {
        const int64_t started = milliseconds_now();
        std::thread sleeper([&] {
            std::this_thread::sleep_for(std::chrono::seconds(25));
            note(slept, milliseconds_now() - started);
        });
        body();
        note(took, milliseconds_now() - started);
        sleeper.join();
    }
    void TearDown() override
    {
        if (took.empty())
            return;
        const int64_t late = *std::max_element(slept.begin(), slept.end()) - 25000;
        const auto [shortest, longest] = std::minmax_element(took.begin(), took.end());
        printf("%zu calls of %lld to %lld ms, sleepers %lld ms late\n", took.size(), static_cast<long long>(*shortest),
               static_cast<long long>(*longest), static_cast<long long>(late));
        EXPECT_GE(*shortest, 25000);
        EXPECT_LE(*longest, 25050 + late);
    }

  private:
    void note(std::vector<int64_t>& times, int64_t time)
    {
        const std::lock_guard guard(mutex);
        times.push_back(time);
    }

    std::mutex mutex;
    std::vector<int64_t> took, slept;
};
} // namespace

// Fifteen with a client that was there, whose socket waits first, and one more
// with a new one.
TEST_F(slow_deadlines, sixteen_silent_calls_each_end_25_seconds_after_their_own_start)
{
    std::vector<std::string> sets;
    for (const Service* service : all_services)
        if (const char* name = set_of(*service))
            sets.emplace_back(name);
    ASSERT_GE(sets.size(), 8U);
    for (const std::string& set : sets)
        ASSERT_EQ(lua->call(set, "1"), "7") << set;
    delay_ms = never;
    std::vector<std::thread> threads;
    for (size_t i = 0; i < 16; i++) {
        threads.emplace_back([&, i] {
            LuaState own;
            expect_25_seconds([&] { EXPECT_FALSE(own.call(sets[i % sets.size()], "1")); });
            EXPECT_EQ(own.code(), "timed_out");
        });
        usleep(150000);
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(daemon->queries().size(), sets.size() + 16) << "each call is one datagram";
}

TEST_F(slow_deadlines, reply_after_25_seconds_and_a_bit_is_not_taken)
{
    delay_ms = 25200;
    Outcome outcome;
    expect_25_seconds([&] { outcome = call(); });
    EXPECT_FALSE(outcome.value);
    EXPECT_EQ(outcome.code, "timed_out");
    EXPECT_EQ(outcome.sentence,
              "oltmib_sysloginfo_set_1 (service hostpdinfo, program 50006): the daemon did not answer "
              "in time; it may still carry the call out [RPC: Timed out]");
    EXPECT_EQ(outcome.printed, "");
    delay_ms = 0;
    expect_success("the next call");
}

// Two processes: one whose client is new, one whose client was there.
TEST_F(slow_deadlines, reply_that_came_while_the_process_was_stopped_beyond_the_deadline_is_taken)
{
    std::vector<pid_t> children;
    for (const bool has_client : {false, true}) {
        delay_ms = 0;
        const size_t before = daemon->queries().size();
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        children.push_back(fork());
        ASSERT_GE(children.back(), 0);
        if (children.back() == 0) {
            char byte = has_client && lua->call(api, "1&6") != "7";
            if (byte || read(ready[0], &byte, 1) != 1)
                _exit(2);
            _exit(lua->call(api, "1&6") == "7" ? 0 : 1);
        }
        while (daemon->queries().size() < before + has_client)
            usleep(1000);
        usleep(100000); // until the answer is out
        delay_ms = 1000;
        ASSERT_EQ(write(ready[1], "x", 1), 1);
        close(ready[0]), close(ready[1]);
        while (daemon->queries().size() < before + has_client + 1)
            usleep(1000);
        kill(children.back(), SIGSTOP);
    }
    sleep(26);
    for (const pid_t child : children)
        kill(child, SIGCONT);
    for (const pid_t child : children) {
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
}

// Eight calls have all clients; eight more get one when those give up, and have
// a second left; the last eight get none, or one whose daemon they cannot even
// look up in the time that is left.
TEST_F(slow_deadlines, callers_that_wait_for_a_client_give_up_at_their_own)
{
    delay_ms = never;
    std::vector<std::thread> threads;
    for (int i = 0; i < 24; i++) {
        threads.emplace_back([&] {
            LuaState own;
            expect_25_seconds([&] { EXPECT_FALSE(own.call(api, "1&6")); });
        });
        if (i == 7)
            sleep(1);
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GE(daemon->queries().size(), 16U);
    EXPECT_LE(daemon->queries().size(), 24U);
}

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

TEST_F(slow_look_up, query_in_another_version_is_sent_four_times_too)
{
    map([](const RpcCall& query) -> std::optional<RpcServer::Units> {
        if (query.version == 2)
            return RpcServer::accepted(query, {4, 4}, version_mismatch);
        return {};
    });
    expect_no_port_mapper("RPC: Timed out");
    std::map<uint32_t, int> asked;
    for (const RpcCall& query : mapper->queries())
        asked[query.version]++;
    EXPECT_EQ(asked, (std::map<uint32_t, int>{{2, 1}, {4, 4}}));
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

// A host with threads, each with a Lua state of its own: nobody gets another's
// reply, waits for another's daemon or learns of another's failure.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <sys/wait.h>
#include <thread>

#include "common/registry.h"
#include "common/service.h"
#include "common/trace.h"
#include "tests/host/device.h"

namespace
{
constexpr int thread_count = 8;

// Where threads meet.
class Meeting
{
  public:
    explicit Meeting(int expected) : expected(expected) {}
    void wait()
    {
        const int round = (arrived++) / expected;
        while (arrived < (round + 1) * expected)
            std::this_thread::yield();
    }

  private:
    const int expected;
    std::atomic<int> arrived = 0;
};

// Runs body(0) to body(count - 1), each in a thread.
template <class Body> void in_threads(int count, Body body)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; i++)
        threads.emplace_back([&body, i] { body(i); });
    for (std::thread& thread : threads)
        thread.join();
}

// A get whose reply is known: the row's beginning for key `i`.
struct Get {
    const char* api;
    const char* argument;  // # stands for the number
    const char* beginning; // here too
    int first, last;       // of the number
};

std::string with_number(const char* text, int number)
{
    std::string all;
    for (; *text; text++)
        all += *text == '#' ? std::to_string(number) : std::string(1, *text);
    return all;
}

// Three of one service, then one of each other, with rows as sim/content.cpp has
// them.
constexpr Get gets[] = {
    {"oltmib_portinfo_get_1", "#", "#&ge#&", 1, 8},
    {"oltmib_optical_get_1", "#", "#&ge#&1&-21&", 7, 8},
    {"oltmib_vlaninfo_get_1", "#0", "#0&1&v", 1, 2},
    {"oltmib_devcapint_get_1", "ports", "ports&Number of ports&8&", 1, 1},
    {"oltmib_account_get_1", "1&admin", "1&admin&15&secret&", 1, 1},
    {"oltmib_mstp_ifstate_get_1", "0&#", "0&#&ge#&3&", 1, 8},
    {"oltmib_d1x_pst_get_1", "#", "#&ge#&1&2&", 1, 8},
    {"oltmib_route_get_1", "0.0.0.0/0", "0.0.0.0/0&192.0.2.1&vlan1&", 1, 1},
    {"oltmib_vrrp_ssstate_get_1", "1", "1&1&100&2&3&1&192.0.2.254", 1, 1},
    {"oltmib_lldpifstat_get_1", "#", "#&ge#&120&118&", 1, 8},
    {"oltmib_portinbandan_get_1", "#", "#&1&", 1, 8},
    {"oltmib_igmpsnp_fastleave_get_1", "20", "20&1&", 1, 1},
    {"oltmib_poeifconf_get_1", "#", "#&ge#&1&customer #&", 1, 4},
    {"oltmib_sdsminfo_get_1", "state", "state&running&1&", 1, 1},
    {"oltmib_ioctlinfo_get_1", "1", "1&0&0&0&ioctl-1&", 1, 1},
    {"oltmib_dhcpsnp_get_1", "trust ge1", "trust ge1&vlan 10,20&1&", 1, 1},
    {"oltmib_lpdet_portinfo_get_1", "#", "#&ge#&1&", 1, 1},
};

class threads : public BesideDevice
{
  protected:
    // `each` calls a thread, with the gets that `pick` says; counts the wrong
    // replies.
    template <class Pick> void expect_right_replies(int each, Pick pick)
    {
        std::atomic<int> wrong = 0;
        in_threads(thread_count, [&](int thread) {
            LuaState lua;
            for (int i = 0; i < each; i++) {
                const Get& get = pick(thread, i);
                const int number = get.first + (thread + i / 100) % (get.last - get.first + 1);
                const std::optional<std::string> reply = lua.call(get.api, with_number(get.argument, number));
                if (!begins_with(reply, with_number(get.beginning, number)) && wrong++ < 5)
                    ADD_FAILURE() << get.api << ' ' << number << ": " << reply.value_or("no value: " + lua.sentence());
            }
        });
        printf("%d calls, %d wrong\n", thread_count * each, wrong.load());
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(calls("*"), thread_count * each);
    }

    // Lets all threads have a client of the service that owns vlaninfo.
    static void make_eight_clients(std::vector<std::unique_ptr<LuaState>>& states)
    {
        states.clear();
        for (int i = 0; i < thread_count; i++)
            states.push_back(std::make_unique<LuaState>());
        tell("fault oltmib_vlaninfo_get_1 count=8 delay 300");
        in_threads(thread_count, [&](int i) { EXPECT_EQ(states[static_cast<size_t>(i)]->call(vlan, "10"), vlan10); });
        ASSERT_EQ(internet_sockets(), thread_count);
    }
};
} // namespace

TEST_F(threads, each_gets_its_own_replies_of_one_api)
{
    expect_right_replies(4200, [](int, int) -> const Get& { return gets[0]; });
    EXPECT_LE(internet_sockets(), 8);
}

TEST_F(threads, each_gets_its_own_replies_of_one_service)
{
    expect_right_replies(4200, [](int, int i) -> const Get& { return gets[i % 3]; });
    EXPECT_LE(internet_sockets(), 8);
}

TEST_F(threads, each_gets_its_own_replies_of_all_services)
{
    expect_right_replies(
        4200, [](int thread, int i) -> const Get& { return gets[static_cast<size_t>(thread + i) % std::size(gets)]; });
}

TEST_F(threads, host_with_one_has_one_socket_a_service)
{
    LuaState lua, other;
    for (int i = 0; i < 50; i++) {
        EXPECT_EQ(lua.call(vlan, "10"), vlan10);
        EXPECT_TRUE(begins_with(other.call("oltmib_portinfo_get_1", "3"), port_row(3)));
    }
    EXPECT_EQ(internet_sockets(), 1);
    lua.call("oltmib_devinfo_get_1", "");
    EXPECT_EQ(internet_sockets(), 2);
    std::thread([] { EXPECT_EQ(LuaState().call(vlan, "10"), vlan10); }).join();
    EXPECT_EQ(internet_sockets(), 2) << "a thread that calls when nobody else does needs no socket of its own";
}

TEST_F(threads, each_may_open_call_and_close_while_others_do)
{
    std::atomic<int> wrong = 0;
    Meeting start(thread_count);
    in_threads(thread_count, [&](int thread) {
        start.wait();
        for (int round = 0; round < 25; round++) {
            LuaState lua;
            lua.run("for i = 1, 3 do package.loaded.librpc = nil require 'librpc' end");
            const int port = thread + 1;
            wrong += !begins_with(lua.call("oltmib_portinfo_get_1", std::to_string(port)), port_row(port));
            wrong += lua.call("oltmib_nothing_get_1", "").has_value();
            wrong += lua.call(vlan, "10") != vlan10;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(internet_sockets(), 0) << "every state is closed";
}

TEST_F(threads, status_is_that_of_the_state_which_asks)
{
    tell("fault oltmib_portinfo_get_1 error garbage_args");
    std::atomic<int> wrong = 0;
    Meeting meeting(thread_count);
    in_threads(thread_count, [&](int thread) {
        LuaState lua;
        const std::string name = "oltmib_nothing" + std::to_string(thread) + "_get_1";
        for (int i = 0; i < 200; i++) {
            lua.call(name, "");
            meeting.wait();
            wrong += lua.code() != "unknown_api" || lua.sentence().compare(0, name.size(), name) != 0;
            if (thread % 2) {
                wrong += lua.call(vlan, "10") != vlan10;
                meeting.wait();
                wrong += !lua.code().empty();
            } else {
                lua.call("oltmib_portinfo_get_1", "1");
                meeting.wait();
                wrong += lua.code() != "rejected";
            }
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST_F(threads, ninth_caller_of_a_service_waits_for_its_turn)
{
    constexpr int callers = thread_count + 1;
    tell("fault oltmib_vlaninfo_get_1 delay 400");
    std::atomic<int> right = 0;
    int most = 0;
    std::atomic<bool> over = false;
    std::thread watch([&] {
        while (!over)
            most = std::max(most, internet_sockets());
    });
    in_threads(callers, [&](int) {
        LuaState lua;
        right += lua.call(vlan, "10") == vlan10;
    });
    over = true;
    watch.join();
    EXPECT_EQ(right, callers);
    EXPECT_EQ(calls(vlan), callers);
    EXPECT_LE(most, thread_count + 1) << "eight of calls, and one that asks the port mapper at the same time";
}

TEST_F(threads, ninth_caller_of_a_service_gives_up_at_its_own_deadline)
{
    LuaState lua;
    ASSERT_EQ(lua.call(vlan, "10"), vlan10); // nothing but a service is needed below
    const Service* nsminfo = nullptr;
    for (const Service* service : all_services)
        if (std::string(service->name) == "nsminfo")
            nsminfo = service;
    Client* lent[most_clients];
    CreationFailure failure = {};
    for (Client*& client : lent)
        ASSERT_NE(client = lend_client(*nsminfo->client, Deadline::after(1000), Caller(), failure), nullptr);
    for (const int64_t wait_ms : {0, 30, 250}) {
        const int64_t started = milliseconds_now();
        EXPECT_EQ(lend_client(*nsminfo->client, Deadline::after(wait_ms), Caller(), failure), nullptr);
        const int64_t took = milliseconds_now() - started;
        // a busy machine wakes anybody late
        std::this_thread::sleep_for(std::chrono::milliseconds(wait_ms));
        const int64_t slept = milliseconds_now() - started - took;
        EXPECT_EQ(failure.status, RPC_TIMEDOUT);
        EXPECT_GE(took, wait_ms);
        EXPECT_LT(took, std::max(slept, wait_ms) + 400);
    }
    for (Client* client : lent)
        give_back_client(*nsminfo->client, *client, false);
    EXPECT_EQ(lua.call(vlan, "10"), vlan10);
}

TEST_F(threads, slow_daemon_holds_up_no_call_of_another_service)
{
    tell("fault nsminfo delay 500");
    std::atomic<int> meanwhile = 0;
    std::atomic<bool> over = false;
    std::thread others[2];
    for (std::thread& other : others)
        other = std::thread([&] {
            LuaState lua;
            while (!over) {
                EXPECT_TRUE(begins_with(lua.call("oltmib_devcapint_get_1", "ports"), "ports&"));
                meanwhile += !over;
            }
        });
    in_threads(thread_count, [](int) { EXPECT_EQ(LuaState().call(vlan, "10"), vlan10); });
    over = true;
    for (std::thread& other : others)
        other.join();
    printf("%d calls of another service meanwhile\n", meanwhile.load());
    EXPECT_GT(meanwhile, 50); // were one of them held up, there would be one a thread
}

TEST_F(threads, restarted_daemon_costs_one_failed_call_and_not_one_a_thread)
{
    std::vector<std::unique_ptr<LuaState>> states;
    make_eight_clients(states);
    tell("restart nsminfo");
    EXPECT_FALSE(states[0]->call(vlan, "10"));
    EXPECT_EQ(states[0]->code(), "refused");
    std::atomic<int> failed = 0;
    in_threads(thread_count, [&](int i) { failed += states[static_cast<size_t>(i)]->call(vlan, "10") != vlan10; });
    EXPECT_EQ(failed, 0);
}

TEST_F(threads, restarted_daemon_costs_nobody_more_than_the_calls_in_flight)
{
    std::vector<std::unique_ptr<LuaState>> states;
    make_eight_clients(states);
    tell("restart nsminfo");
    std::atomic<int> failed = 0, failed_later = 0;
    Meeting start(thread_count);
    in_threads(thread_count, [&](int i) {
        start.wait();
        failed += states[static_cast<size_t>(i)]->call(vlan, "10") != vlan10;
        start.wait();
        for (int again = 0; again < 20; again++)
            failed_later += states[static_cast<size_t>(i)]->call(vlan, "10") != vlan10;
    });
    printf("%d of %d calls in flight failed\n", failed.load(), thread_count);
    EXPECT_GE(failed, 1);
    EXPECT_EQ(failed_later, 0);
}

namespace
{
// A node of the host's own: what its functions do, in order.
struct Step {
    std::thread::id thread;
    std::string what;
};
std::mutex steps_mutex;
std::vector<Step> steps;
char reply_text[100]; // as generated functions keep theirs: one for all threads

void note(const char* what)
{
    const std::lock_guard guard(steps_mutex);
    steps.push_back({std::this_thread::get_id(), what});
}

CLIENT* own_init()
{
    note("init");
    return reinterpret_cast<CLIENT*>(reply_text); // nobody but our own functions looks at it
}
CLIENT* own_failing_init()
{
    note("init");
    return nullptr;
}
void own_destroy() { note("destroy"); }
void* own_parser(char* text)
{
    note("parse");
    strcpy(reply_text, text);
    return reply_text;
}
void* own_func(void* request, CLIENT*)
{
    note("call");
    std::this_thread::yield();
    return strcmp(reply_text, "fail") == 0 ? nullptr : request;
}
char* own_formatter(void* reply)
{
    note("format");
    std::this_thread::yield();
    return static_cast<char*>(reply);
}

ApiNode own_node(const char* name, ApiClientInit init)
{
    ApiNode node = {};
    strcpy(node.name, name);
    node.func = own_func;
    node.str2arg = own_parser;
    node.ret2str = own_formatter;
    node.clntinit = init;
    node.clntdestroy = own_destroy;
    return node;
}
} // namespace

TEST_F(threads, hosts_own_functions_run_in_order_one_thread_at_a_time)
{
    LuaState lua; // first, so that the library's own nodes are there
    const ApiNode echo = own_node("echo", own_init), no_client = own_node("no_client", own_failing_init);
    ASSERT_EQ(lua_addapi(&echo), 1);
    ASSERT_EQ(lua_addapi(&no_client), 1);
    std::atomic<int> wrong = 0;
    constexpr int each = 600;
    in_threads(thread_count, [&](int thread) {
        LuaState own;
        for (int i = 0; i < each; i++) {
            const std::string text = std::to_string(thread) + "." + std::to_string(i);
            wrong += own.call("echo", text) != text;
            wrong += i % 10 == 0 && own.call("echo", "fail").has_value();
            wrong += i % 10 == 5 && own.call("no_client", "").has_value();
            wrong += i % 10 == 7 && own.call(vlan, "10") != vlan10;
        }
    });
    EXPECT_EQ(wrong, 0);
    const std::vector<std::string> sequences[] = {
        {"init", "parse", "call", "format"}, {"init", "parse", "call", "destroy"}, {"init"}};
    int found[3] = {};
    for (size_t at = 0; at < steps.size();) {
        std::vector<std::string> run;
        const std::thread::id thread = steps[at].thread;
        do
            run.push_back(steps[at++].what);
        while (at < steps.size() && steps[at].what != "init" && steps[at].thread == thread);
        const auto* sequence = std::find(std::begin(sequences), std::end(sequences), run);
        if (sequence == std::end(sequences)) {
            ADD_FAILURE() << "step " << at << ": a call of " << run.size() << " steps that begins with " << run[0];
            break;
        }
        found[sequence - sequences]++;
    }
    EXPECT_EQ(found[0], thread_count * each);
    EXPECT_EQ(found[1], thread_count * each / 10);
    EXPECT_EQ(found[2], thread_count * each / 10);
    EXPECT_EQ(lua_delapi("echo"), 1);
    EXPECT_EQ(lua_delapi("no_client"), 1);
}

namespace
{
// What a call prints with tracing on.
std::string trace_of(LuaState& lua, const char* api, const char* argument)
{
    testing::internal::CaptureStdout();
    set_tracing(true);
    lua.call(api, argument);
    set_tracing(false);
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}
} // namespace

// The node of a host that has our five functions is another node, which is
// called by them; one that lua_addapi finds unchanged would stay ours.
TEST_F(threads, traces_are_the_same_for_a_hosts_node_with_our_functions)
{
    LuaState lua;
    tell("fault oltmib_vlaninfo_set_1 error system_err");
    tell("stop vrrpinfo");
    const struct {
        const char *api, *argument;
    } traced[] = {{"oltmib_devinfo_get_1", "a&b"},         {"oltmib_portinfo_get_1", "3"},
                  {"oltmib_account_get_1", "1&admin%s"},   {"oltmib_mstp_ifstate_get_1", "0&1"},
                  {"oltmib_lldpifnei_getn_1", ""},         {"oltmib_vlaninfo_set_1", "5"},
                  {"oltmib_vrrp_ssstate_get_1", "1&0&0&2"}};
    std::vector<std::unique_ptr<ApiNode>> nodes;
    for (const auto& [api, argument] : traced) {
        const std::string ours = trace_of(lua, api, argument);
        EXPECT_NE(ours.find("[lua_callapi: 160]"), std::string::npos);
        EXPECT_NE(ours.find("[lua_callapi: 169]"), std::string::npos);
        const ApiNode* node = lua_getapibyname(api);
        ASSERT_NE(node, nullptr);
        nodes.push_back(std::make_unique<ApiNode>(*node));
        ASSERT_EQ(lua_delapi(api), 1);
        list_add_tail(nodes.back().get(), &apinode_head);
        ASSERT_EQ(lua_getapibyname(api), nodes.back().get());
        EXPECT_EQ(trace_of(lua, api, argument), ours) << api;
        list_del(nodes.back().get());
    }
}

namespace
{
std::atomic<bool> is_in_function, may_leave;
void* func_that_waits(void* request, CLIENT*)
{
    is_in_function = true;
    while (!may_leave)
        std::this_thread::yield();
    return request;
}
} // namespace

// In the child there is nobody who would pass the turn on.
TEST_F(threads, fork_while_another_is_in_a_hosts_own_function_leaves_the_child_its_turn)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's malloc may stay locked in a forked child";
#endif
    LuaState lua;
    const ApiNode echo = own_node("echo", own_init);
    ApiNode waits = own_node("waits", own_init);
    waits.func = func_that_waits;
    ASSERT_EQ(lua_addapi(&echo), 1);
    ASSERT_EQ(lua_addapi(&waits), 1);
    std::thread other([] {
        LuaState own;
        own.call("waits", "");
    });
    while (!is_in_function)
        std::this_thread::yield();
    const pid_t child = fork();
    if (child == 0) {
        alarm(10); // that ends a child which never has its turn
        _exit(lua.call("echo", "child") == "child" ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    may_leave = true;
    other.join();
    EXPECT_EQ(lua.call("echo", "parent"), "parent");
}

TEST_F(threads, fork_while_others_call_gives_each_process_its_own_replies)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's malloc may stay locked in a forked child";
#endif
    std::atomic<bool> over = false;
    std::atomic<int> wrong = 0;
    // Five clients, so that no look-up is under way: the child has no use for sockets of its parent's.
    tell("fault oltmib_vlaninfo_get_1 count=5 delay 300");
    Meeting started(5);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; thread++)
        threads.emplace_back([&, thread] {
            LuaState lua;
            const int port = thread + 1;
            lua.call(vlan, "10");
            started.wait();
            while (!over)
                wrong += !begins_with(lua.call("oltmib_portinfo_get_1", std::to_string(port)), port_row(port));
        });
    LuaState lua;
    EXPECT_EQ(lua.call(vlan, "10"), vlan10);
    started.wait();
    for (int i = 0; i < 30; i++) {
        EXPECT_EQ(lua.call(vlan, "10"), vlan10);
        const pid_t child = fork();
        if (child == 0) {
            int failed = internet_sockets();
            for (int again = 0; again < 20; again++)
                failed += !begins_with(lua.call("oltmib_portinfo_get_1", "7"), port_row(7));
            _exit(failed ? 1 : 0);
        }
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << "child " << i;
    }
    over = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

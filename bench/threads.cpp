// Threads that call side by side, each with a Lua state of its own.
//
//     bench_threads SECONDS THREADS [WAITING_API]
//
// Prints the calls a second of all threads together, and the milliseconds in which
// all of them but one in a thousand were made: the longest one is whichever thread
// the system let wait. With WAITING_API one more thread calls that API all the time, whose
// daemon takes its time; its calls do not count.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <lua.hpp>
#include <string>
#include <thread>
#include <vector>

namespace
{
using Clock = std::chrono::steady_clock;

constexpr char api[] = "oltmib_vrrp_ssstate_get_1", argument[] = "1&100&3&2&1&120&192.168.10.254&1&0";

std::atomic<bool> is_over{false};

using Times = std::vector<float>; // of calls, in milliseconds

[[noreturn]] void fail(const char* where, const char* found)
{
    fprintf(stderr, "bench_threads: %s: expected a reply, found %s\n", where, found);
    exit(1);
}

void call(const char* name, const char* text, Times& times)
{
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    if (luaL_dostring(L, "return require('librpc').callapi"))
        fail(name, lua_tostring(L, -1));
    while (!is_over) {
        const auto start = Clock::now();
        lua_pushvalue(L, 1);
        lua_pushstring(L, name);
        lua_pushstring(L, text);
        lua_call(L, 2, 1);
        if (lua_isnil(L, -1))
            fail(name, "none");
        lua_settop(L, 1);
        const std::chrono::duration<float, std::milli> taken = Clock::now() - start;
        times.push_back(taken.count());
    }
    lua_close(L);
}
} // namespace

int main(int count, char** arguments)
{
    if (count < 3)
        fail("arguments", "fewer than SECONDS and THREADS");
    const double seconds = atof(arguments[1]);
    std::vector<Times> times(static_cast<size_t>(atoi(arguments[2])));
    Times of_waiting;
    std::vector<std::thread> threads;
    if (count > 3)
        threads.emplace_back([&] { call(arguments[3], "1", of_waiting); });
    for (Times& one : times)
        threads.emplace_back([&one] { call(api, argument, one); });
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    is_over = true;
    for (std::thread& thread : threads)
        thread.join();
    Times all;
    for (const Times& one : times)
        all.insert(all.end(), one.begin(), one.end());
    if (all.empty())
        fail("threads", "none");
    const auto nearly_last = all.end() - 1 - static_cast<long>(all.size() / 1000);
    std::nth_element(all.begin(), nearly_last, all.end());
    printf("%.0f %.2f\n", static_cast<double>(all.size()) / seconds, static_cast<double>(*nearly_last));
}

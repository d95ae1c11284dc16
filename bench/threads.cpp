// Threads that call side by side, each with a Lua state of its own.
//
//     bench_threads SECONDS THREADS [WAITING_API]
//
// Prints the calls a second of all threads together and the longest call in
// milliseconds. With WAITING_API one more thread calls that API all the time, whose
// daemon takes its time; its calls do not count.
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

struct Figures {
    long calls = 0;
    double longest_ms = 0;
};

[[noreturn]] void fail(const char* where, const char* found)
{
    fprintf(stderr, "bench_threads: %s: expected a reply, found %s\n", where, found);
    exit(1);
}

void call(const char* name, const char* text, Figures& figures)
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
        const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
        if (figures.calls++ > 0 && taken.count() > figures.longest_ms) // the first looks the daemon up
            figures.longest_ms = taken.count();
    }
    lua_close(L);
}
} // namespace

int main(int count, char** arguments)
{
    if (count < 3)
        fail("arguments", "fewer than SECONDS and THREADS");
    const double seconds = atof(arguments[1]);
    std::vector<Figures> figures(static_cast<size_t>(atoi(arguments[2])));
    Figures of_waiting;
    std::vector<std::thread> threads;
    if (count > 3)
        threads.emplace_back([&] { call(arguments[3], "1", of_waiting); });
    for (Figures& one : figures)
        threads.emplace_back([&one] { call(api, argument, one); });
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    is_over = true;
    for (std::thread& thread : threads)
        thread.join();
    Figures sum;
    for (const Figures& one : figures) {
        sum.calls += one.calls;
        sum.longest_ms = std::max(sum.longest_ms, one.longest_ms);
    }
    printf("%.0f %.2f\n", static_cast<double>(sum.calls) / seconds, sum.longest_ms);
}

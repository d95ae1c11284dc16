// Opens and closes a Lua state with the library a thousand times, each with
// calls. Nothing stays: no descriptor, no thread, no memory.
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <lua.hpp>
#include <malloc.h>

namespace
{
constexpr int warm_up = 50, states = 1000;
constexpr long slack = 64 << 10; // what the allocator caches; grows no further with more states

int entries(const char* folder)
{
    DIR* directory = opendir(folder);
    int count = 0;
    while (directory && readdir(directory))
        count++;
    closedir(directory);
    return count;
}

void use_one_state()
{
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    const char* script = R"(
        require "librpc"
        assert(librpc.callapi("oltmib_devinfo_get_1", ""):find("olt-lab-1", 1, true))
        assert(librpc.callapi("oltmib_vlaninfo_get_1", "10"):find("voice", 1, true))
        assert(librpc.callapi("oltmib_sysloginfo_set_1", "1&2") == "0")
    )";
    if (luaL_dostring(L, script)) {
        fprintf(stderr, "many_states: script: expected no error, found %s\n", lua_tostring(L, -1));
        exit(1);
    }
    lua_close(L);
}

void expect(const char* what, long expected, long found)
{
    if (expected == found)
        return;
    fprintf(stderr, "many_states: %s: expected %ld, found %ld\n", what, expected, found);
    exit(1);
}
} // namespace

int main()
{
    const int before_any = entries("/proc/self/fd");
    for (int i = 0; i < warm_up; i++)
        use_one_state();
    const size_t memory = mallinfo2().uordblks;
    const int descriptors = entries("/proc/self/fd"), threads = entries("/proc/self/task");
    expect("descriptors after the first states", before_any, descriptors);
    for (int i = warm_up; i < states; i++)
        use_one_state();
    expect("descriptors", descriptors, entries("/proc/self/fd"));
    expect("threads", threads, entries("/proc/self/task"));
    const long growth = static_cast<long>(mallinfo2().uordblks - memory);
    printf("%ld bytes more after %d states\n", growth, states - warm_up);
    if (memory != 0 && growth > slack) { // an instrumented malloc tells nothing
        fprintf(stderr, "many_states: memory: expected at most %ld bytes more, found %ld\n", slack, growth);
        return 1;
    }
    puts("passed");
}

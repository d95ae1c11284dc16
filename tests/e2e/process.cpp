// What the end-to-end tests need of the system and Lua lacks, as a Lua module:
// fork, signals, an alarm whose handler returns, limits, time, the host's types. It
// needs no C++ run-time library, as a C library may have none of its own.
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <lua.hpp>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
volatile sig_atomic_t alarms;
int taken[64]; // descriptors that nobody else shall have
int taken_count;

void count_alarm(int) { alarms = alarms + 1; }

// fork(): 0 in the child, the child's id in the parent.
int do_fork(lua_State* L)
{
    const pid_t child = fork();
    if (child < 0)
        return luaL_error(L, "fork: expected a child, found: %s", strerror(errno));
    lua_pushinteger(L, child);
    return 1;
}

// wait(child): its exit status, or 1000 and the signal that ended it.
int do_wait(lua_State* L)
{
    int status = 0;
    const auto child = static_cast<pid_t>(luaL_checkinteger(L, 1));
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return luaL_error(L, "wait: expected a child, found: %s", strerror(errno));
    lua_pushinteger(L, WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status));
    return 1;
}

// exit(status): ends the process without more ado.
int do_exit(lua_State* L) { _exit(static_cast<int>(luaL_checkinteger(L, 1))); }

// kill(process, signal)
int do_kill(lua_State* L)
{
    kill(static_cast<pid_t>(luaL_checkinteger(L, 1)), static_cast<int>(luaL_checkinteger(L, 2)));
    return 0;
}

// default_action(signal)
int do_default_action(lua_State* L)
{
    signal(static_cast<int>(luaL_checkinteger(L, 1)), SIG_DFL);
    return 0;
}

// alarms_every(ms): SIGALRM again and again, with a handler that returns; 0 ends it,
// and no late one finds a handler that is unloaded by then.
int do_alarms_every(lua_State* L)
{
    const long ms = static_cast<long>(luaL_checkinteger(L, 1));
    const itimerval timer = {{ms / 1000, ms % 1000 * 1000}, {ms / 1000, ms % 1000 * 1000}};
    struct sigaction action = {};
    action.sa_handler = ms > 0 ? count_alarm : SIG_IGN;
    sigaction(SIGALRM, &action, nullptr);
    setitimer(ITIMER_REAL, &timer, nullptr);
    return 0;
}

// alarms(): how many there were.
int do_alarms(lua_State* L)
{
    lua_pushinteger(L, alarms);
    return 1;
}

// use_up_descriptors(free): leaves that many of the process's descriptors.
int do_use_up_descriptors(lua_State* L)
{
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = sizeof taken / sizeof *taken;
    setrlimit(RLIMIT_NOFILE, &limit);
    for (int fd = open("/dev/null", O_RDONLY | O_CLOEXEC); fd >= 0; fd = open("/dev/null", O_RDONLY | O_CLOEXEC))
        taken[taken_count++] = fd;
    for (auto left = luaL_checkinteger(L, 1); left > 0 && taken_count > 0; left--)
        close(taken[--taken_count]);
    return 0;
}

// give_back_descriptors()
int do_give_back_descriptors(lua_State*)
{
    while (taken_count > 0)
        close(taken[--taken_count]);
    return 0;
}

// sleep(ms)
int do_sleep(lua_State* L)
{
    usleep(static_cast<useconds_t>(luaL_checkinteger(L, 1)) * 1000);
    return 0;
}

// now(): seconds that only ever grow.
int do_now(lua_State* L)
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    lua_pushnumber(L, static_cast<lua_Number>(now.tv_sec) + static_cast<lua_Number>(now.tv_nsec) / 1e9);
    return 1;
}

// host(): whether a char is signed, a long's bits, whether the low byte comes first.
int do_host(lua_State* L)
{
    const int one = 1;
    lua_pushboolean(L, CHAR_MIN < 0);
    lua_pushinteger(L, static_cast<lua_Integer>(sizeof(long) * CHAR_BIT));
    lua_pushboolean(L, *reinterpret_cast<const char*>(&one));
    return 3;
}

const luaL_Reg functions[] = {
    {"fork", do_fork},
    {"wait", do_wait},
    {"exit", do_exit},
    {"kill", do_kill},
    {"default_action", do_default_action},
    {"alarms_every", do_alarms_every},
    {"alarms", do_alarms},
    {"use_up_descriptors", do_use_up_descriptors},
    {"give_back_descriptors", do_give_back_descriptors},
    {"sleep", do_sleep},
    {"now", do_now},
    {"host", do_host},
    {nullptr, nullptr},
};
} // namespace

extern "C" int luaopen_e2e_process(lua_State* L)
{
    lua_newtable(L);
    for (const luaL_Reg* function = functions; function->name; function++) {
        lua_pushcfunction(L, function->func);
        lua_setfield(L, -2, function->name);
    }
    return 1;
}

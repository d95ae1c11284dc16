// Refuses memory: preloaded into a Lua interpreter, this library's malloc,
// calloc and realloc fail when told to. The same file is the Lua module
// "refuse" that tells them.
//
//     refuse.arm(n, all)   the n-th request from now fails, and with `all` every one after it
//     refuse.disarm()      true when a request was refused since
//     refuse.descriptors(n)  the process may have no more than n descriptors; returns the limit before
//
// A crash ends the process with status 99 and one line that names the library
// and the function it happened in: the innermost one outside libc.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <initializer_list>
#include <lua.hpp>
#include <sys/resource.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
}

namespace
{
long until_refusal; // 0: not armed
bool all_after;
bool refused;

const char* base_name(const char* path)
{
    const char* slash = strrchr(path, '/');
    return slash ? slash + 1 : path;
}

// Prints the functions from the innermost one that matters to the one of
// librpc.so that called. One that its library does not export goes by the
// library's name; of this file's own, and of the C library's start of a signal
// handler, nothing is said.
void tell_callers(const char* what)
{
    void* frame[200];
    const int count = backtrace(frame, 200);
    char line[1000];
    int length = snprintf(line, sizeof line, "%s", what);
    const char* told = "";
    for (int i = 0; i < count; i++) {
        Dl_info info;
        if (!dladdr(frame[i], &info) || !info.dli_fname)
            continue;
        const char* library = base_name(info.dli_fname);
        const char* name = info.dli_sname ? info.dli_sname : library;
        const bool ours = strcmp(library, "librpc.so") == 0;
        if (ours)
            name = library;
        if (strcmp(library, "refuse.so") == 0 || strcmp(name, told) == 0)
            continue;
        told = name;
        if (length < static_cast<int>(sizeof line) - 1)
            length += snprintf(line + length, sizeof line - static_cast<size_t>(length), " %s", name);
        if (ours)
            break;
    }
    fprintf(stderr, "%s\n", line);
}

void tell_crash(int number)
{
    until_refusal = 0;
    char what[32];
    snprintf(what, sizeof what, "crash: signal %d in", number);
    tell_callers(what);
    _exit(99);
}

bool refuse()
{
    if (until_refusal == 0 || --until_refusal > 0)
        return false;
    tell_callers("refused:");
    refused = true;
    if (all_after)
        until_refusal = 1;
    errno = ENOMEM;
    return true;
}

int arm(lua_State* L)
{
    refused = false;
    all_after = lua_toboolean(L, 2);
    until_refusal = static_cast<long>(luaL_checkinteger(L, 1));
    return 0;
}

int disarm(lua_State* L)
{
    until_refusal = 0;
    lua_pushboolean(L, refused);
    return 1;
}

int descriptors(lua_State* L)
{
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    lua_pushinteger(L, static_cast<lua_Integer>(limit.rlim_cur));
    limit.rlim_cur = static_cast<rlim_t>(luaL_checkinteger(L, 1));
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
        return luaL_error(L, "setrlimit: %s", strerror(errno));
    return 1;
}

__attribute__((constructor)) void watch_crashes()
{
    void* frame[1];
    backtrace(frame, 1);        // loads what it needs now
    static char stack[1 << 16]; // for a crash that used up its own
    stack_t other = {};
    other.ss_sp = stack;
    other.ss_size = sizeof stack;
    sigaltstack(&other, nullptr);
    struct sigaction action = {};
    action.sa_handler = tell_crash;
    action.sa_flags = SA_ONSTACK;
    for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL})
        sigaction(number, &action, nullptr);
}
} // namespace

extern "C" __attribute__((visibility("default"))) void* malloc(size_t size)
{
    return refuse() ? nullptr : __libc_malloc(size);
}

extern "C" __attribute__((visibility("default"))) void* calloc(size_t count, size_t size)
{
    return refuse() ? nullptr : __libc_calloc(count, size);
}

extern "C" __attribute__((visibility("default"))) void* realloc(void* memory, size_t size)
{
    return refuse() ? nullptr : __libc_realloc(memory, size);
}

extern "C" __attribute__((visibility("default"))) int luaopen_refuse(lua_State* L)
{
    const luaL_Reg functions[] = {{"arm", arm}, {"disarm", disarm}, {"descriptors", descriptors}, {nullptr, nullptr}};
    luaL_register(L, "refuse", functions);
    return 1;
}

// The Lua module bench: what the benchmark's scripts cannot do in Lua. The
// clock, the bare echo, the APIs with an argument for each, further
// registrations, and starting programs.
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <lua.hpp>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/registry.h"
#include "common/service.h"

extern "C" __attribute__((visibility("default"))) int luaopen_bench(lua_State* L);

namespace
{
constexpr unsigned call_units = 10, reply_units = 6; // headers

double microseconds_now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

// now(): microseconds of a clock that nobody sets.
int now(lua_State* L)
{
    lua_pushnumber(L, microseconds_now());
    return 1;
}

// used(pid...): microseconds of processor time that these processes and this one
// have taken so far.
int used(lua_State* L)
{
    double sum = 0;
    for (int i = 0; i <= lua_gettop(L); i++) {
        clockid_t clock;
        timespec time = {};
        const pid_t pid = i == 0 ? 0 : static_cast<pid_t>(luaL_checkinteger(L, i));
        if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &time) != 0)
            luaL_error(L, "bench: process %d: expected its clock, found none", static_cast<int>(pid));
        sum += static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
    }
    lua_pushnumber(L, sum);
    return 1;
}

template <class Do> void for_each_api(Do&& todo)
{
    for (const Service* service : all_services)
        for (const Api& api : *service)
            if (api.registered())
                todo(*service, api);
}

unsigned request_units_of(const Api& api) { return api.request ? api.request->units : 0; }
unsigned reply_units_of(const Api& api) { return api.reply ? api.reply->units : 1; }

void set_number(lua_State* L, const char* key, double value)
{
    lua_pushnumber(L, value);
    lua_setfield(L, -2, key);
}

// apis(): every registered API in order, as {name, program, procedure, request, reply};
// the last two are units.
int apis(lua_State* L)
{
    lua_newtable(L);
    int count = 0;
    for_each_api([&](const Service& service, const Api& api) {
        lua_newtable(L);
        lua_pushstring(L, api.name);
        lua_setfield(L, -2, "name");
        set_number(L, "program", static_cast<double>(service.program));
        set_number(L, "procedure", static_cast<double>(api.procedure));
        set_number(L, "request", request_units_of(api));
        set_number(L, "reply", reply_units_of(api));
        lua_rawseti(L, -2, ++count);
    });
    return 1;
}

const Api& check_api(lua_State* L, int index)
{
    const char* name = luaL_checkstring(L, index);
    const Api* found = nullptr;
    for_each_api([&](const Service&, const Api& api) {
        if (strcmp(api.name, name) == 0)
            found = &api;
    });
    if (!found)
        luaL_error(L, "bench: argument %d: expected a registered API, found %s", index, name);
    return *found;
}

void add_value(luaL_Buffer* to, const Position& field)
{
    switch (field.text) {
    case Text::Mac:
    case Text::RawMac:
        return luaL_addstring(to, "00-1A-2B-3C-4D-5E");
    case Text::Hex:
    case Text::CountedHex:
        return luaL_addstring(to, "0a1b2c3d4e5f");
    case Text::List:
        return luaL_addstring(to, "1,2,3,4,5,6,7,8");
    case Text::Plain:
    case Text::Unsigned:
        break;
    }
    if (field.kind != Kind::Char)
        return luaL_addstring(to, field.kind == Kind::Double ? "3.25" : "1024");
    for (unsigned i = 0; i < (field.count + 1U) / 2; i++)
        luaL_addchar(to, static_cast<char>('a' + i % 26));
}

// argument(name): an argument with every position filled, texts to half their array.
int argument(lua_State* L)
{
    const Api& api = check_api(L, 1);
    luaL_Buffer text;
    luaL_buffinit(L, &text);
    bool first = true;
    for (const Position field : *api.input()) {
        if (field.use == Use::OutputOnly)
            continue;
        if (!first)
            luaL_addstring(&text, api.input()->delimiters[0] ? api.input()->delimiters : "&");
        first = false;
        add_value(&text, field);
    }
    luaL_pushresult(&text);
    return 1;
}

void fail(lua_State* L, const char* where)
{
    luaL_error(L, "bench: %s: expected success, found %s", where, strerror(errno));
}

int connected_socket(lua_State* L, int port)
{
    static int fd = -1;
    if (fd >= 0)
        return fd;
    const sockaddr_in address = loopback_address(static_cast<uint16_t>(port));
    fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail(L, "socket to the daemon");
    return fd;
}

// echo(port, api, count): `count` round trips of datagrams of the API's sizes,
// with nothing done to them.
int echo(lua_State* L)
{
    const int fd = connected_socket(L, static_cast<int>(luaL_checkinteger(L, 1)));
    luaL_checktype(L, 2, LUA_TTABLE);
    const auto field = [L](const char* key) {
        lua_getfield(L, 2, key);
        const auto value = static_cast<uint32_t>(luaL_checknumber(L, -1));
        lua_pop(L, 1);
        return value;
    };
    const long count = luaL_checkinteger(L, 3);
    static uint32_t request[UDPMSGSIZE / sizeof(uint32_t)], reply[UDPMSGSIZE / sizeof(uint32_t)];
    const uint32_t header[call_units] = {1, CALL, 2, field("program"), 1, field("procedure"), 0, 0, 0, 0};
    for (unsigned i = 0; i < call_units; i++)
        request[i] = htonl(header[i]);
    const size_t request_size = sizeof *request * (call_units + field("request"));
    const auto reply_size = static_cast<ssize_t>(sizeof *reply * (reply_units + field("reply")));
    for (long i = 0; i < count; i++)
        if (send(fd, request, request_size, 0) < 0 || recv(fd, reply, sizeof reply, 0) != reply_size)
            fail(L, "echo");
    return 0;
}

// A function of the library as Lua loaded it.
void* function_of(lua_State* L, const char* path, const char* name)
{
    void* library = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    void* function = library ? dlsym(library, name) : nullptr;
    if (!function)
        luaL_error(L, "bench: %s: expected the loaded library with %s, found %s", path, name, dlerror());
    return function;
}

// add_apis(library, from, to): registers APIs of the names extra_<from> to extra_<to>.
int add_apis(lua_State* L)
{
    const auto add = reinterpret_cast<int (*)(const ApiNode*)>(function_of(L, luaL_checkstring(L, 1), "lua_addapi"));
    for (long i = luaL_checkinteger(L, 2); i <= luaL_checkinteger(L, 3); i++) {
        ApiNode node = {};
        snprintf(node.name, sizeof node.name, "oltmib_extra_%ld_get_1", i);
        if (!add(&node))
            fail(L, "lua_addapi");
    }
    return 0;
}

// look_up(library, rounds): finds each of the library's own names `rounds` times.
int look_up(lua_State* L)
{
    const auto find =
        reinterpret_cast<ApiNode* (*)(const char*)>(function_of(L, luaL_checkstring(L, 1), "lua_getapibyname"));
    const long rounds = luaL_checkinteger(L, 2);
    long found = 0, sought = 0;
    for (long i = 0; i < rounds; i++)
        for_each_api([&](const Service&, const Api& api) {
            sought++;
            found += find(api.name) != nullptr;
        });
    if (found != sought)
        luaL_error(L, "bench: registry: expected %d names, found %d", static_cast<int>(sought),
                   static_cast<int>(found));
    return 0;
}

// run(program, ...): the processor's microseconds that a program takes from its
// start to its end. Unlike the clock's, they leave out whoever else ran.
int run(lua_State* L)
{
    constexpr int most = 16;
    char* arguments[most + 1] = {};
    for (int i = 0; i < lua_gettop(L) && i < most; i++)
        arguments[i] = const_cast<char*>(luaL_checkstring(L, i + 1));
    pid_t child;
    int status = 0;
    rusage used = {};
    const int failure = posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments, environ);
    if (failure == 0)
        wait4(child, &status, 0, &used);
    if (failure != 0 || status != 0)
        luaL_error(L, "bench: %s: expected exit status 0, found %d", arguments[0], failure ? failure : status);
    lua_pushnumber(L, static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) * 1e6 +
                          static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec));
    return 1;
}
} // namespace

int luaopen_bench(lua_State* L)
{
    static const luaL_Reg functions[] = {
        {"now", now},   {"used", used},         {"apis", apis},       {"argument", argument},
        {"echo", echo}, {"add_apis", add_apis}, {"look_up", look_up}, {"run", run},
    };
    lua_newtable(L);
    for (const luaL_Reg& function : functions) {
        lua_pushcfunction(L, function.func);
        lua_setfield(L, -2, function.name);
    }
    return 1;
}

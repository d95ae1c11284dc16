// What a host program of many calls has and Lua lacks, as a Lua module: waiting
// for a descriptor, a UDP socket of its own, its memory, its descriptors. It needs
// no C++ run-time library, as a C library may have none of its own.
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <lua.hpp>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr size_t most_datagram = 1 << 16;

bool wait_for(int fd, double seconds)
{
    pollfd readable = {fd, POLLIN, 0};
    return poll(&readable, 1, static_cast<int>(seconds * 1000)) > 0 && readable.revents & POLLIN;
}

// readable(fd, seconds): whether the descriptor became readable in that time.
int do_readable(lua_State* L)
{
    lua_pushboolean(L, wait_for(static_cast<int>(luaL_checkinteger(L, 1)), luaL_checknumber(L, 2)));
    return 1;
}

// exchange(datagram, address, port, seconds): sends it from a socket of its own;
// what came back, or nil and the reason.
int do_exchange(lua_State* L)
{
    size_t size;
    const char* datagram = luaL_checklstring(L, 1, &size);
    sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<uint16_t>(luaL_checkinteger(L, 3)));
    luaL_argcheck(L, inet_pton(AF_INET, luaL_checkstring(L, 2), &to.sin_addr) == 1, 2, "expected an address");
    const double seconds = luaL_checknumber(L, 4);
    static char room[most_datagram];
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ssize_t got = -1;
    if (fd >= 0 && connect(fd, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0 &&
        send(fd, datagram, size, MSG_NOSIGNAL) >= 0 && wait_for(fd, seconds))
        got = recv(fd, room, sizeof room, MSG_DONTWAIT);
    const int number = errno;
    if (fd >= 0)
        close(fd);
    if (got >= 0) {
        lua_pushlstring(L, room, static_cast<size_t>(got));
        return 1;
    }
    lua_pushnil(L);
    lua_pushstring(L, strerror(number));
    return 2;
}

// memory(): bytes of heap memory that are in use; where the C library cannot tell,
// the memory that the kernel has given for data.
int do_memory(lua_State* L)
{
#ifdef __GLIBC__
    const struct mallinfo2 now = mallinfo2();
    lua_pushnumber(L, static_cast<lua_Number>(now.uordblks + now.hblkhd));
#else
    FILE* status = fopen("/proc/self/status", "r");
    if (!status)
        return luaL_error(L, "/proc/self/status: expected a file, found: %s", strerror(errno));
    char line[256];
    unsigned long kilobytes = 0;
    while (kilobytes == 0 && fgets(line, sizeof line, status))
        sscanf(line, "VmData: %lu", &kilobytes);
    fclose(status);
    lua_pushnumber(L, static_cast<lua_Number>(kilobytes) * 1024);
#endif
    return 1;
}

// What the process has open, one after another.
template <class Do> void for_each_descriptor(lua_State* L, Do todo)
{
    DIR* folder = opendir("/proc/self/fd");
    if (!folder)
        luaL_error(L, "/proc/self/fd: expected a folder, found: %s", strerror(errno));
    while (const dirent* entry = readdir(folder))
        if (const int fd = atoi(entry->d_name); entry->d_name[0] != '.' && fd != dirfd(folder))
            todo(fd);
    closedir(folder);
}

// descriptors(): how many the process has open.
int do_descriptors(lua_State* L)
{
    int count = 0;
    for_each_descriptor(L, [&](int) { count++; });
    lua_pushinteger(L, count);
    return 1;
}

// close_sockets(): closes every socket of the process, whoever made it.
int do_close_sockets(lua_State* L)
{
    for_each_descriptor(L, [](int fd) {
        struct stat now;
        if (fstat(fd, &now) == 0 && S_ISSOCK(now.st_mode))
            close(fd);
    });
    return 0;
}

const luaL_Reg functions[] = {
    {"readable", do_readable},       {"exchange", do_exchange},           {"memory", do_memory},
    {"descriptors", do_descriptors}, {"close_sockets", do_close_sockets}, {nullptr, nullptr},
};
} // namespace

extern "C" int luaopen_calls_host(lua_State* L)
{
    lua_newtable(L);
    for (const luaL_Reg* function = functions; function->name; function++) {
        lua_pushcfunction(L, function->func);
        lua_setfield(L, -2, function->name);
    }
    return 1;
}

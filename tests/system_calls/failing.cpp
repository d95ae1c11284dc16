// Makes system calls fail: preloaded into a Lua interpreter, the n-th call of one
// of the functions below fails when told to, without being made. The same file is
// the Lua module "failing" that tells them.
//
//     failing.functions                 {name = {error, ...}}: what may fail, and with which errors
//     failing.arm(name, n, error, all)  the n-th call from now fails; with `all` every one after it
//     failing.disarm()                  true when a call has failed since
//     failing.descriptors()             how many this process has
//     failing.close_standard()          closes 0 to 2
//
// To give a function to the list: a row of `functions`, and a wrapper at the end.
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <lua.hpp>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace
{
constexpr int cut = -1; // no error: less than was asked for
constexpr size_t most_errors = 16;

// The errors of the manual's pages, less those that only a wrong argument has.
struct Function {
    const char* name;
    int errors[most_errors];
};
constexpr Function functions[] = {
    {"socket", {EACCES, EAFNOSUPPORT, EMFILE, ENFILE, ENOBUFS, ENOMEM, EPROTONOSUPPORT}},
    {"bind", {EACCES, EADDRINUSE, EADDRNOTAVAIL, EINVAL, ENOMEM}},
    {"connect", {EACCES, EPERM, EADDRINUSE, EADDRNOTAVAIL, EAGAIN, ECONNREFUSED, EINTR, ENETUNREACH}},
    {"getsockname", {EBADF, ENOBUFS, ENOTSOCK}},
    {"setsockopt", {EBADF, EDOM, ENOMEM, ENOPROTOOPT, ENOTSOCK}},
    {"fcntl", {EBADF, EINVAL, EMFILE}},
    {"fstat", {EBADF, ENOMEM, EOVERFLOW}},
    {"send",
     {EACCES, EAGAIN, EBADF, ECONNREFUSED, EINTR, EINVAL, EISCONN, EMSGSIZE, ENOBUFS, ENOMEM, ENOTCONN, ENOTSOCK,
      EOPNOTSUPP, EPERM, EPIPE}},
    {"sendmsg",
     {EACCES, EAGAIN, EBADF, ECONNREFUSED, EINTR, EINVAL, EISCONN, EMSGSIZE, ENOBUFS, ENOMEM, ENOTCONN, ENOTSOCK,
      EOPNOTSUPP, EPERM, EPIPE}},
    {"recv", {EAGAIN, EBADF, ECONNREFUSED, EHOSTUNREACH, EINTR, EINVAL, ENOMEM, ENOTCONN, ENOTSOCK}},
    {"recvmmsg", {EAGAIN, EBADF, ECONNREFUSED, EHOSTUNREACH, EINTR, EINVAL, ENOMEM, ENOTCONN, ENOTSOCK}},
    {"poll", {EINTR, EINVAL, ENOMEM}},
    {"close", {EDQUOT, EINTR, EIO}},
    {"getrandom", {EAGAIN, EINTR, ENOSYS, cut}},
    {"epoll_create1", {EMFILE, ENFILE, ENOMEM}},
    {"epoll_ctl", {EEXIST, ENOMEM, ENOSPC, EPERM}},
    {"timerfd_create", {EMFILE, ENFILE, ENODEV, ENOMEM}},
    {"timerfd_settime", {ECANCELED, EINVAL}},
};

const char* name_of_error(int number) { return number == cut ? "cut" : strerrorname_np(number); }

const char* armed = "";
long until_failure; // 0: not armed
int error;
bool all_after, has_failed;

bool fails(const char* name)
{
    if (until_failure == 0 || strcmp(name, armed) != 0 || --until_failure > 0)
        return false;
    has_failed = true;
    if (all_after)
        until_failure = 1;
    errno = error == cut ? 0 : error;
    return true;
}

const Function& find(lua_State* L, const char* name)
{
    for (const Function& function : functions)
        if (strcmp(function.name, name) == 0)
            return function;
    luaL_error(L, "failing: expected one of its functions, found %s", name);
    return functions[0];
}

template <class Signature> Signature* next(const char* name)
{
    return reinterpret_cast<Signature*>(dlsym(RTLD_NEXT, name));
}

int arm(lua_State* L)
{
    const Function& function = find(L, luaL_checkstring(L, 1));
    const char* name = luaL_checkstring(L, 3);
    for (const int number : function.errors) {
        if (number == 0 || strcmp(name_of_error(number), name) != 0)
            continue;
        armed = function.name;
        error = number;
        all_after = lua_toboolean(L, 4);
        has_failed = false;
        until_failure = static_cast<long>(luaL_checkinteger(L, 2));
        return 0;
    }
    return luaL_error(L, "failing: %s: expected one of its errors, found %s", function.name, name);
}

int disarm(lua_State* L)
{
    until_failure = 0;
    lua_pushboolean(L, has_failed);
    has_failed = false;
    return 1;
}

// Even while fcntl fails.
int descriptors(lua_State* L)
{
    static const auto made = next<int(int, int, ...)>("fcntl");
    int count = 0;
    for (int fd = 0; fd < 1024; fd++)
        count += made(fd, F_GETFD) >= 0;
    lua_pushinteger(L, count);
    return 1;
}

int close_standard(lua_State*)
{
    for (int fd = 0; fd <= STDERR_FILENO; fd++)
        close(fd);
    return 0;
}
} // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int luaopen_failing(lua_State* L)
{
    const luaL_Reg entries[] = {{"arm", arm},
                                {"disarm", disarm},
                                {"descriptors", descriptors},
                                {"close_standard", close_standard},
                                {nullptr, nullptr}};
    luaL_register(L, "failing", entries);
    lua_newtable(L);
    for (const Function& function : functions) {
        lua_newtable(L);
        for (int i = 0; i < static_cast<int>(most_errors) && function.errors[i] != 0; i++) {
            lua_pushstring(L, name_of_error(function.errors[i]));
            lua_rawseti(L, -2, i + 1);
        }
        lua_setfield(L, -2, function.name);
    }
    lua_setfield(L, -2, "functions");
    return 1;
}

// A function that fails without being made, or is made.
#define WRAPPER(result, name, parameters, arguments)                                                                   \
    EXPORTED result name parameters                                                                                    \
    {                                                                                                                  \
        static const auto made = next<result parameters>(#name);                                                       \
        return fails(#name) ? static_cast<result>(-1) : made arguments;                                                \
    }

WRAPPER(int, socket, (int domain, int type, int protocol), (domain, type, protocol))
WRAPPER(int, bind, (int fd, const sockaddr* address, socklen_t size), (fd, address, size))
WRAPPER(int, connect, (int fd, const sockaddr* address, socklen_t size), (fd, address, size))
WRAPPER(int, getsockname, (int fd, sockaddr* address, socklen_t* size), (fd, address, size))
WRAPPER(int, setsockopt, (int fd, int level, int name, const void* value, socklen_t size),
        (fd, level, name, value, size))
WRAPPER(int, fstat, (int fd, struct stat* found), (fd, found))
WRAPPER(ssize_t, send, (int fd, const void* from, size_t size, int flags), (fd, from, size, flags))
WRAPPER(ssize_t, sendmsg, (int fd, const msghdr* message, int flags), (fd, message, flags))
WRAPPER(ssize_t, recv, (int fd, void* into, size_t size, int flags), (fd, into, size, flags))
WRAPPER(int, recvmmsg, (int fd, mmsghdr* messages, unsigned count, int flags, timespec* wait),
        (fd, messages, count, flags, wait))
WRAPPER(int, poll, (pollfd * list, nfds_t count, int wait), (list, count, wait))
WRAPPER(int, epoll_create1, (int flags), (flags))
WRAPPER(int, epoll_ctl, (int fd, int operation, int of, epoll_event* event), (fd, operation, of, event))
WRAPPER(int, timerfd_create, (int clock, int flags), (clock, flags))
WRAPPER(int, timerfd_settime, (int fd, int flags, const itimerspec* value, itimerspec* old), (fd, flags, value, old))

// The library duplicates descriptors, which takes one number.
EXPORTED int fcntl(int fd, int operation, ...)
{
    static const auto made = next<int(int, int, ...)>("fcntl");
    va_list arguments;
    va_start(arguments, operation);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    return fails("fcntl") ? -1 : made(fd, operation, argument);
}

// The kernel closes it whatever it says.
EXPORTED int close(int fd)
{
    static const auto made = next<int(int)>("close");
    const int closed = made(fd);
    return fails("close") ? -1 : closed;
}

EXPORTED ssize_t getrandom(void* into, size_t size, unsigned flags)
{
    static const auto made = next<ssize_t(void*, size_t, unsigned)>("getrandom");
    if (fails("getrandom"))
        return errno == 0 ? made(into, size / 2, flags) : -1;
    return made(into, size, flags);
}

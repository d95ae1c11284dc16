// The benchmark's slow daemons: every service's program, each on a socket of its
// own, each reply so many milliseconds after its call; one service may take another
// time, or be silent. They say "ready" once the port mapper knows them.
//
//     bench_slow_daemon MS [SERVICE MS|silent]
#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <queue>
#include <rpc/pmap_clnt.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "common/service.h"
#include "rpc/client.h"

namespace
{
constexpr unsigned call_units = 10, reply_units = 6; // headers, with empty verifiers

struct Reply {
    double due;
    int fd;
    sockaddr_in to;
    std::vector<uint32_t> units;
};

double milliseconds()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

[[noreturn]] void give_up(const char* what)
{
    fprintf(stderr, "bench_slow_daemon: %s: expected success, found %s\n", what, strerror(errno));
    exit(1);
}

int open_socket(const Service& service)
{
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback_address(0);
    socklen_t size = sizeof address;
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        give_up("socket on 127.0.0.1");
    pmap_unset(service.program, server_version);
    if (!pmap_set(service.program, server_version, IPPROTO_UDP, ntohs(address.sin_port)))
        give_up(service.name);
    return fd;
}

// The echo of a call: an accepted reply whose body is the call's, as long as the
// procedure's reply.
std::vector<uint32_t> reply_to(const Service& service, std::vector<uint32_t> call)
{
    unsigned body = 1;
    for (const Api& api : service)
        if (api.procedure == ntohl(call[5]) && api.reply)
            body = api.reply->units;
    std::vector<uint32_t> reply = {call[0], htonl(REPLY), htonl(MSG_ACCEPTED), 0, 0, htonl(SUCCESS)};
    call.resize(call_units + body);
    reply.insert(reply.end(), call.begin() + call_units, call.end());
    return reply;
}
} // namespace

int main(int count, char** argument)
{
    const double usual = count > 1 ? atof(argument[1]) : 0;
    const std::string other = count > 3 ? argument[2] : "", others = count > 3 ? argument[3] : "";
    std::vector<pollfd> sockets;
    for (const Service* service : all_services)
        sockets.push_back({open_socket(*service), POLLIN, 0});
    puts("ready");
    fflush(stdout);
    const auto is_later = [](const Reply& one, const Reply& another) { return one.due > another.due; };
    std::priority_queue<Reply, std::vector<Reply>, decltype(is_later)> waiting(is_later);
    for (;;) {
        const double left = waiting.empty() ? -1 : waiting.top().due - milliseconds();
        timespec time = {0, static_cast<long>(std::max(left, 0.0) * 1e6)};
        ppoll(sockets.data(), sockets.size(), waiting.empty() ? nullptr : &time, nullptr);
        while (!waiting.empty() && waiting.top().due <= milliseconds()) {
            const Reply& one = waiting.top();
            sendto(one.fd, one.units.data(), sizeof(uint32_t) * one.units.size(), 0,
                   reinterpret_cast<const sockaddr*>(&one.to), sizeof one.to);
            waiting.pop();
        }
        for (size_t i = 0; i < sockets.size(); i++) {
            const bool is_other = other == all_services[i]->name;
            std::vector<uint32_t> units(datagram_units);
            Reply reply = {milliseconds() + (is_other ? atof(others.c_str()) : usual), sockets[i].fd, {}, {}};
            socklen_t size = sizeof reply.to;
            const ssize_t got = recvfrom(reply.fd, units.data(), sizeof(uint32_t) * units.size(), MSG_DONTWAIT,
                                         reinterpret_cast<sockaddr*>(&reply.to), &size);
            if (got < static_cast<ssize_t>(sizeof(uint32_t) * call_units) || (is_other && others == "silent"))
                continue;
            units.resize(static_cast<size_t>(got) / sizeof(uint32_t));
            reply.units = reply_to(*all_services[i], units);
            waiting.push(reply);
        }
    }
}

// The benchmark's daemon: every service's program on one UDP socket, registered
// with the port mapper, and the barest loop that can answer a call: receive,
// put the reply's header before the body that came, send. Its clients' figures
// differ by the client alone.
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <rpc/pmap_clnt.h>
#include <rpc/rpc.h>
#include <sys/socket.h>
#include <unistd.h>

#include "common/service.h"
#include "rpc/client.h"

namespace
{
constexpr unsigned call_units = 10, reply_units = 6; // headers, with empty verifiers
constexpr unsigned first_program = 50000, programs = 32, procedures = 256;

uint16_t body_units[programs][procedures]; // of the reply; 0 is no such procedure

[[noreturn]] void give_up(const char* what)
{
    fprintf(stderr, "bench_daemon: %s: expected success, found %s\n", what, strerror(errno));
    exit(1);
}

int open_socket(uint16_t& port)
{
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback_address(0);
    socklen_t size = sizeof address;
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        give_up("socket on 127.0.0.1");
    port = ntohs(address.sin_port);
    return fd;
}

void add_service(const Service& service, uint16_t port)
{
    for (const Api& api : service)
        body_units[service.program - first_program][api.procedure] = api.reply ? api.reply->units : 1;
    pmap_unset(service.program, server_version);
    if (!pmap_set(service.program, server_version, IPPROTO_UDP, port)) {
        fprintf(stderr, "bench_daemon: program %lu: expected the port mapper to register it, found a refusal\n",
                static_cast<unsigned long>(service.program));
        exit(1);
    }
}

// The reply's size in units, or 0 when nothing is to be said.
unsigned size_of_reply(const uint32_t* call, ssize_t size)
{
    if (size < static_cast<ssize_t>(sizeof(uint32_t) * call_units))
        return 0;
    const uint32_t program = ntohl(call[3]) - first_program, procedure = ntohl(call[5]);
    if (program >= programs || procedure >= procedures || body_units[program][procedure] == 0)
        return 0;
    return reply_units + body_units[program][procedure];
}

void answer_for_ever(int fd)
{
    static uint32_t units[UDPMSGSIZE / sizeof(uint32_t) + 1];
    uint32_t* const reply = units + call_units - reply_units; // its body is the call's
    for (;;) {
        sockaddr_in client;
        socklen_t client_size = sizeof client;
        auto* const from = reinterpret_cast<sockaddr*>(&client);
        const ssize_t size = recvfrom(fd, units, sizeof units, 0, from, &client_size);
        const unsigned count = size_of_reply(units, size);
        if (count == 0)
            continue;
        reply[0] = units[0];
        reply[1] = htonl(REPLY);
        reply[2] = htonl(MSG_ACCEPTED);
        reply[3] = reply[4] = 0; // AUTH_NONE, empty
        reply[5] = htonl(SUCCESS);
        if (count == reply_units + 1)
            reply[reply_units] = 0; // a set's status
        sendto(fd, reply, sizeof(uint32_t) * count, 0, from, client_size);
    }
}
} // namespace

int main()
{
    uint16_t port;
    const int fd = open_socket(port);
    for (const Service* service : all_services)
        add_service(*service, port);
    printf("%u %d\n", unsigned{port}, static_cast<int>(getpid()));
    fflush(stdout);
    answer_for_ever(fd);
}

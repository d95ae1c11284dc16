// Connected sockets on the loopback address, see udp_socket.h.
#include "rpc/udp_socket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "rpc/clock.h"

#ifndef MSG_FASTOPEN
#define MSG_FASTOPEN 0x20000000
#endif

namespace
{
// Reserved ports as bindresvport takes them (600 to 1023), less those that other
// servers are known to want on UDP.
constexpr uint16_t first_port = 600, end_port = 1024;
constexpr uint16_t others_ports[] = {623, 631, 636, 655, 664, 749, 750, 754, 783,
                                     853, 873, 902, 989, 990, 992, 993, 995};
constexpr int port_tries = 8; // with as many taken, the socket gets any port

sockaddr_in loopback(uint16_t port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

bool is_others(uint16_t port)
{
    for (const uint16_t other : others_ports)
        if (port == other)
            return true;
    return false;
}

// Takes a reserved port other than `not_this`, or none.
void bind_reserved(int fd, uint32_t random, uint16_t not_this)
{
    for (int tries = 0; tries < port_tries; random = random * 1664525 + 1013904223) {
        const auto port = static_cast<uint16_t>(first_port + (random >> 8) % (end_port - first_port));
        if (is_others(port) || port == not_this)
            continue;
        tries++;
        const sockaddr_in address = loopback(port);
        if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 || errno != EADDRINUSE)
            return;
    }
}

// Whose port is its own would talk to itself.
bool connect_to(int fd, uint16_t port)
{
    const sockaddr_in server = loopback(port);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0)
        return false;
    sockaddr_in own = {};
    socklen_t size = sizeof own;
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&own), &size) != 0)
        return false;
    if (own.sin_port != server.sin_port)
        return true;
    errno = ECONNREFUSED;
    return false;
}

// Errors of a send on what is no UDP socket of ours.
bool tells_of_another(int number)
{
    return number == EBADF || number == ENOTSOCK || number == EISCONN || number == EOPNOTSUPP || number == EINVAL ||
           number == EAFNOSUPPORT || number == EPIPE || number == ENOTCONN || number == EDESTADDRREQ ||
           number == EPROTOTYPE;
}
} // namespace

// The address, which a connected stream refuses, and MSG_FASTOPEN, which a TCP
// connection refuses, are the cheapest way to never write into a stream that has
// the socket's number by now. UDP takes both.
ssize_t UdpSocket::send(const void* datagram, size_t size)
{
    const sockaddr_in server = loopback(port);
    const auto* to = reinterpret_cast<const sockaddr*>(&server);
    const ssize_t sent = sendto(fd, datagram, size, MSG_NOSIGNAL | MSG_FASTOPEN, to, sizeof server);
    if (sent >= 0 || !tells_of_another(errno))
        return sent;
    if (is_ours()) // a system that does not know the flag
        return sendto(fd, datagram, size, MSG_NOSIGNAL, to, sizeof server);
    errno = EBADF;
    return -1;
}

ssize_t UdpSocket::receive(void* datagram, size_t size, int flags) const { return recv(fd, datagram, size, flags); }

bool UdpSocket::set_wait(int64_t ms) const
{
    const timeval wait = {static_cast<time_t>(ms / ms_of_second), static_cast<suseconds_t>(ms % ms_of_second * 1000)};
    return setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait) == 0;
}

bool open_udp_socket(UdpSocket& opened, uint16_t port, LocalPort local, uint32_t random, int64_t wait_ms)
{
    UdpSocket made;
    if (!made.take(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)))
        return false;
    if (local == LocalPort::Reserved)
        bind_reserved(made.fd, random, port);
    if (!connect_to(made.fd, port) || (wait_ms > 0 && !made.set_wait(wait_ms))) {
        made.close();
        return false;
    }
    made.port = port;
    opened = made;
    return true;
}

uint32_t random_bits()
{
    uint32_t bits;
    if (getrandom(&bits, sizeof bits, GRND_NONBLOCK) == sizeof bits)
        return bits;
    return static_cast<uint32_t>(milliseconds_now()) * 2654435761U ^ static_cast<uint32_t>(getpid()) << 16;
}

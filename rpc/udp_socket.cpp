// Connected sockets on the loopback address, see udp_socket.h.
#include "rpc/udp_socket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
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

bool is_others(uint16_t port)
{
    for (const uint16_t other : others_ports)
        if (port == other)
            return true;
    return false;
}

// Takes a reserved port other than `not_this`. False where it takes none.
bool bind_reserved(int fd, uint32_t random, uint16_t not_this)
{
    for (int tries = 0; tries < port_tries; random = random * 1664525 + 1013904223) {
        const auto port = static_cast<uint16_t>(first_port + (random >> 8) % (end_port - first_port));
        if (is_others(port) || port == not_this)
            continue;
        tries++;
        const sockaddr_in address = loopback_address(port);
        if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            return true;
        if (errno != EADDRINUSE)
            return false;
    }
    return false;
}

bool connect_to(int fd, uint16_t port)
{
    const sockaddr_in server = loopback_address(port);
    return connect(fd, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0;
}

// The port that the kernel chose may be the server's own: the socket would talk
// to itself. The kernel chooses none that is reserved.
bool talks_to_itself(int fd, uint16_t port)
{
    sockaddr_in own = {};
    socklen_t size = sizeof own;
    return port >= IPPORT_RESERVED && getsockname(fd, reinterpret_cast<sockaddr*>(&own), &size) == 0 &&
           own.sin_port == htons(port);
}

// Errors of a send on what is no UDP socket of ours.
bool tells_of_another(int number)
{
    return number == EBADF || number == ENOTSOCK || number == EISCONN || number == EOPNOTSUPP || number == EINVAL ||
           number == EAFNOSUPPORT || number == EPIPE || number == ENOTCONN || number == EDESTADDRREQ ||
           number == EPROTOTYPE;
}
} // namespace

namespace
{
// Sends so that whatever has the socket's number by now refuses it: a connected
// stream because of the address, a TCP connection because of MSG_FASTOPEN, every
// socket of the local domain because of the control message, also one of
// packets, which ignores addresses. UDP takes all three, and looks its route up
// once more; the message asks for no time stamps.
ssize_t send_guarded(int fd, const void* datagram, size_t size, sockaddr_in& server)
{
    iovec part = {const_cast<void*>(datagram), size};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_name = &server;
    message.msg_namelen = sizeof server;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* stamps = CMSG_FIRSTHDR(&message);
    stamps->cmsg_level = SOL_SOCKET;
    stamps->cmsg_type = SO_TIMESTAMPING;
    stamps->cmsg_len = CMSG_LEN(sizeof(int));
    return sendmsg(fd, &message, MSG_NOSIGNAL | MSG_FASTOPEN);
}
} // namespace

ssize_t UdpSocket::send(const void* datagram, size_t size)
{
    sockaddr_in server = loopback_address(port);
    const ssize_t sent = was_just_used ? ::send(fd, datagram, size, MSG_NOSIGNAL | MSG_FASTOPEN)
                                       : send_guarded(fd, datagram, size, server);
    if (sent >= 0 || !tells_of_another(errno))
        return sent;
    if (inode == 0 || is_ours()) // a system that does not know the flag or the message
        return ::send(fd, datagram, size, MSG_NOSIGNAL);
    errno = EBADF;
    return -1;
}

ssize_t UdpSocket::receive(void* datagram, size_t size, int flags) const { return recv(fd, datagram, size, flags); }

bool UdpSocket::set_wait(int64_t ms) const
{
    const timeval wait = {static_cast<time_t>(ms / ms_of_second), static_cast<suseconds_t>(ms % ms_of_second * 1000)};
    return setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait) == 0;
}

bool open_udp_socket(UdpSocket& opened, uint16_t port, LocalPort local, uint32_t random, int64_t wait_ms, Life life)
{
    UdpSocket made;
    if (!made.take_number(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)))
        return false;
    const bool is_bound = local == LocalPort::Reserved && bind_reserved(made.fd, random, port);
    bool is_ready = connect_to(made.fd, port) && (wait_ms == 0 || made.set_wait(wait_ms));
    if (is_ready && !is_bound && talks_to_itself(made.fd, port)) {
        errno = ECONNREFUSED;
        is_ready = false;
    }
    if (!is_ready) {
        made.close_blindly();
        return false;
    }
    if (life == Life::Long && !made.know())
        return false;
    made.port = port;
    opened = made;
    return true;
}

RandomBits random_bits()
{
    RandomBits bits;
    if (getrandom(&bits, sizeof bits, GRND_NONBLOCK) == sizeof bits)
        return bits;
    const uint32_t seed = static_cast<uint32_t>(microseconds_now()) * 2654435761U ^ static_cast<uint32_t>(getpid())
                                                                                        << 16;
    return {seed, seed >> 7, seed * 2246822519U};
}

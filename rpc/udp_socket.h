// UDP sockets that hear one port of 127.0.0.1 and nobody else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <sys/types.h>

#include "rpc/descriptor.h"

// A port of 127.0.0.1.
inline sockaddr_in loopback_address(uint16_t port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

// Which local port a socket gets.
enum class LocalPort : uint8_t {
    Any,
    Reserved, // below 1024 where privileges allow, else any
};

// A connected socket.
struct UdpSocket : Descriptor {
    uint16_t port = 0; // of the daemon
    // Set by who has just used the socket: the host can hardly have closed it
    // since, so that send looks less closely, which is cheaper.
    bool was_just_used = false;

    // send(2) and recv(2). Nothing is sent on anything but a UDP socket: a
    // descriptor that is a stream or file of the host's by now gives EBADF. Of
    // one that was_just_used, only files and TCP connections are told apart.
    // `flags` are recv's own.
    ssize_t send(const void* datagram, size_t size);
    ssize_t receive(void* datagram, size_t size, int flags) const;
    // From now on reading waits for `ms` at most, 0 for ever.
    bool set_wait(int64_t ms) const;
};

// Whether the host's own code may run while a socket is open.
enum class Life : uint8_t {
    Long,
    OneCall, // close_blindly closes it
};

// A socket that is connected to that port of 127.0.0.1, closed on exec; reading
// waits for `wait_ms` at most, 0 for ever. `random` chooses among reserved
// ports: those that are taken cost a step each. False with errno set;
// ECONNREFUSED where the port is the socket's own.
bool open_udp_socket(UdpSocket& socket, uint16_t port, LocalPort local, uint32_t random, int64_t wait_ms,
                     Life life = Life::Long);

// Bits that nobody can guess, unless the kernel has none.
struct RandomBits {
    uint32_t query_xid, port, call_xid; // what a client needs
};
RandomBits random_bits();

// UDP sockets that hear one port of 127.0.0.1 and nobody else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <sys/stat.h>
#include <sys/types.h>

// Which local port a socket gets.
enum class LocalPort : uint8_t {
    Any,
    Reserved, // below 1024 where privileges allow, else any
};

// A connected socket. Whoever closes all descriptors of the process and opens
// others may give its number to something else; `device` and `inode` tell.
struct UdpSocket {
    int fd = 0; // 3 or more: 0 to 2 are the host's, even while they are closed
    uint16_t port = 0;
    dev_t device = 0;
    ino_t inode = 0;

    bool is_open() const { return fd > 2; }
    // True while the descriptor is still this socket.
    bool is_ours() const;
    // Closes the descriptor where it is still ours.
    void close();
    // send(2) and recv(2). Nothing is sent on anything but a UDP socket: a
    // descriptor that is a stream or file of the host's by now gives EBADF.
    // 'flags' are recv's own.
    ssize_t send(const void* datagram, size_t size);
    ssize_t receive(void* datagram, size_t size, int flags) const;
};

// A socket that is connected to that port of 127.0.0.1, closed on exec; reading
// waits for `wait_ms` at most, 0 for ever. `random` chooses among reserved
// ports: those that are taken cost a step each. False with errno set;
// ECONNREFUSED where the port is the socket's own.
bool open_udp_socket(UdpSocket& socket, uint16_t port, LocalPort local, uint32_t random, int64_t wait_ms);

// Bits that nobody can guess, unless the kernel has none.
uint32_t random_bits();

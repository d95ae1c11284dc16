// A network of the test's own, where it may bind any port of 127.0.0.1.
#pragma once

#include <cerrno>
#include <cstring>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

// Moves the calling thread, and those that it starts from now on, into a network
// with nothing but a loopback interface. False, with errno set, where the system
// does not let us.
inline bool enter_private_network()
{
    if (unshare(CLONE_NEWNET) != 0)
        return false;
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    ifreq loopback = {};
    strcpy(loopback.ifr_name, "lo");
    loopback.ifr_flags = IFF_UP | IFF_RUNNING;
    const bool is_up = fd >= 0 && ioctl(fd, SIOCSIFFLAGS, &loopback) == 0;
    const int number = errno;
    if (fd >= 0)
        close(fd);
    errno = number;
    return is_up;
}

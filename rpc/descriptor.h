// A descriptor that knows itself: whoever closes all descriptors of the process
// and opens others may give its number to something else.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

struct Descriptor {
    int fd = 0; // 3 or more: 0 to 2 are the host's, even while they are closed
    dev_t device = 0;
    ino_t inode = 0;

    bool is_open() const { return fd > STDERR_FILENO; }

    // True while the number is still this descriptor's.
    bool is_ours() const
    {
        struct stat now;
        return is_open() && fstat(fd, &now) == 0 && now.st_dev == device && now.st_ino == inode;
    }

    // Takes over a descriptor that was just made, under a number of 3 or more.
    // False, with errno set, where there is none.
    bool take(int made)
    {
        if (made >= 0 && made <= STDERR_FILENO) {
            const int higher = fcntl(made, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
            const int number = errno;
            ::close(made);
            errno = number;
            made = higher;
        }
        struct stat now;
        if (made < 0 || fstat(made, &now) != 0)
            return false;
        fd = made, device = now.st_dev, inode = now.st_ino;
        return true;
    }

    // Closes the descriptor where the number is still its own. Keeps errno.
    void close()
    {
        const int number = errno;
        if (is_ours())
            ::close(fd);
        fd = 0;
        errno = number;
    }
};

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
    bool take(int made) { return take_number(made) && know(); }

    // The same without knowing it again: for one that is closed before the host
    // runs. Only close_blindly may close it.
    bool take_number(int made)
    {
        if (made >= 0 && made <= STDERR_FILENO) {
            const int higher = fcntl(made, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
            const int number = errno;
            ::close(made);
            errno = number;
            made = higher;
        }
        fd = made < 0 ? 0 : made;
        return made >= 0;
    }

    // Learns to know the descriptor again. Closes it where that fails.
    bool know()
    {
        struct stat now;
        if (fstat(fd, &now) != 0) {
            close_blindly();
            return false;
        }
        device = now.st_dev, inode = now.st_ino;
        return true;
    }

    void close_blindly()
    {
        const int number = errno;
        ::close(fd);
        fd = 0;
        errno = number;
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

// Captures what a test's code prints.
#pragma once

#include <cstdio>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

// What is written to a file descriptor while this lives.
class CapturedOutput
{
  public:
    explicit CapturedOutput(int of = STDOUT_FILENO) : fd(of)
    {
        fflush(nullptr);
        before = dup(fd);
        dup2(file, fd);
    }
    ~CapturedOutput()
    {
        restore();
        close(file);
    }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    // Ends the capture.
    std::string text()
    {
        restore();
        std::string all(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
        const ssize_t got = pread(file, all.data(), all.size(), 0);
        all.resize(got < 0 ? 0 : static_cast<size_t>(got));
        return all;
    }

  private:
    void restore()
    {
        if (before < 0)
            return;
        fflush(nullptr);
        dup2(before, fd);
        close(before);
        before = -1;
    }

    const int file = memfd_create("output", MFD_CLOEXEC);
    int fd;
    int before = -1;
};

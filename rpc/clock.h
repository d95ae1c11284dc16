// Time that only ever grows, and the deadlines of calls.
#pragma once

#include <climits>
#include <cstdint>
#include <ctime>
#include <sys/time.h>

constexpr int64_t ms_of_second = 1000;

// Milliseconds. Counts on while the process is stopped.
inline int64_t milliseconds_now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * ms_of_second + now.tv_nsec / 1000000;
}

// The same as the kernel noted it last: up to `coarse_ms` behind, and cheaper.
constexpr int64_t coarse_ms = 10;
inline int64_t coarse_milliseconds_now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<int64_t>(now.tv_sec) * ms_of_second + now.tv_nsec / 1000000;
}

// A point in time at which something ends. Rounded up, so that nothing ends
// before its time.
struct Deadline {
    int64_t at; // of milliseconds_now

    static Deadline after(int64_t milliseconds) { return {milliseconds_now() + 1 + milliseconds}; }
    static Deadline after(timeval time)
    {
        return after(static_cast<int64_t>(time.tv_sec) * ms_of_second + (time.tv_usec + 999) / 1000);
    }

    int64_t left() const { return at - milliseconds_now(); }
    // What poll takes: 0 where the time is over.
    int left_for_poll() const
    {
        const int64_t ms = left();
        return ms <= 0 ? 0 : ms > INT_MAX ? INT_MAX : static_cast<int>(ms);
    }
    Deadline or_sooner(Deadline other) const { return other.at < at ? other : *this; }
};

// Time that only ever grows, and the deadlines of calls.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <ctime>
#include <sys/time.h>

constexpr int64_t ms_of_second = 1000, us_of_ms = 1000;

// Microseconds. Counts on while the process is stopped.
inline int64_t microseconds_now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * ms_of_second * us_of_ms + now.tv_nsec / 1000;
}

inline int64_t milliseconds_now() { return microseconds_now() / us_of_ms; }

// The same as the kernel noted it last: up to `coarse_ms` behind, and cheaper.
constexpr int64_t coarse_ms = 10;
inline int64_t coarse_microseconds_now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<int64_t>(now.tv_sec) * ms_of_second * us_of_ms + now.tv_nsec / 1000;
}

// A point in time at which something ends.
struct Deadline {
    int64_t at; // of microseconds_now

    static Deadline after(int64_t milliseconds) { return {microseconds_now() + milliseconds * us_of_ms}; }
    static Deadline after(timeval time)
    {
        return {microseconds_now() + static_cast<int64_t>(time.tv_sec) * ms_of_second * us_of_ms + time.tv_usec};
    }
    static constexpr Deadline never() { return {INT64_MAX}; }

    // Milliseconds, rounded up, so that nothing ends before its time.
    int64_t left() const { return is_never() ? INT64_MAX : (at - microseconds_now() + us_of_ms - 1) / us_of_ms; }
    // What poll takes: 0 where the time is over.
    int left_for_poll() const { return static_cast<int>(std::clamp<int64_t>(left(), 0, INT_MAX)); }
    bool is_never() const { return at == INT64_MAX; }
    Deadline or_sooner(Deadline other) const { return other.at < at ? other : *this; }
    Deadline and_then(int64_t milliseconds) const { return {at + milliseconds * us_of_ms}; }
};

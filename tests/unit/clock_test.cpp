// Deadlines by a clock that stands still: nothing ends before its time, nor a millisecond later.
#include <climits>
#include <gtest/gtest.h>

#include "rpc/call_lane.h"
#include "rpc/clock.h"
#include "tests/unit/standing_clock.h"

int64_t standing_still = -1;
extern "C" int __real_clock_gettime(clockid_t clock, timespec* now);
extern "C" int __wrap_clock_gettime(clockid_t clock, timespec* now);
extern "C" int __wrap_clock_gettime(clockid_t clock, timespec* now)
{
    if (standing_still < 0)
        return __real_clock_gettime(clock, now);
    *now = {static_cast<time_t>(standing_still / 1000000), static_cast<long>(standing_still % 1000000 * 1000)};
    return 0;
}

namespace
{
struct deadline : testing::Test {
    static constexpr int64_t start = 7'000'000'123; // microseconds

    deadline() { standing_still = start; }
    ~deadline() override { standing_still = -1; }
};
} // namespace

TEST_F(deadline, is_told_in_milliseconds_that_are_rounded_up)
{
    const Deadline end = Deadline::after(5);
    EXPECT_EQ(end.at, start + 5000);
    const std::pair<int64_t, int64_t> left[] = {{0, 5},    {1, 5},    {999, 5},  {1000, 4}, {4000, 1},
                                                {4001, 1}, {4999, 1}, {5000, 0}, {5999, 0}, {7000, -1}};
    for (const auto& [passed, milliseconds] : left) {
        standing_still = start + passed;
        EXPECT_EQ(end.left(), milliseconds) << passed;
        EXPECT_EQ(end.left_for_poll(), std::max<int64_t>(milliseconds, 0)) << passed;
    }
}

TEST_F(deadline, is_made_of_seconds_and_microseconds_too)
{
    EXPECT_EQ(Deadline::after(timeval{25, 0}).at, start + 25'000'000);
    EXPECT_EQ(Deadline::after(timeval{2, 500001}).at, start + 2'500'001);
    EXPECT_EQ(Deadline{start}.and_then(1500).at, start + 1'500'000);
}

TEST_F(deadline, never_comes_where_there_is_none)
{
    const Deadline never = Deadline::never(), end = Deadline::after(1);
    EXPECT_TRUE(never.is_never());
    EXPECT_FALSE(end.is_never());
    EXPECT_EQ(never.left(), INT64_MAX);
    EXPECT_EQ(never.left_for_poll(), INT_MAX);
    EXPECT_EQ(Deadline{start + int64_t{INT_MAX} * 2000}.left_for_poll(), INT_MAX);
    EXPECT_EQ(never.or_sooner(end).at, end.at);
    EXPECT_EQ(end.or_sooner(never).at, end.at);
    EXPECT_EQ(Deadline::after(2).or_sooner(end).at, end.at);
}

TEST_F(deadline, is_told_by_both_clocks)
{
    EXPECT_EQ(microseconds_now(), start);
    EXPECT_EQ(coarse_microseconds_now(), start);
    EXPECT_EQ(milliseconds_now(), 7'000'000);
}

// 448 bytes go with each, into 512, 1,024, 2,048 ... bytes, and 256 describe them.
TEST(kernel_memory, of_a_datagram_doubles_where_its_page_is_full)
{
    const std::pair<size_t, size_t> counted[] = {{40, 768},    {64, 768},    {65, 1280},    {576, 1280},
                                                 {577, 2304},  {1600, 2304}, {1601, 4352},  {3648, 4352},
                                                 {3649, 8448}, {7744, 8448}, {7745, 16640}, {8800, 16640}};
    for (const auto& [size, memory] : counted)
        EXPECT_EQ(kernel_memory(size), memory) << size;
}

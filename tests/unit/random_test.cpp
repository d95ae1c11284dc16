// The numbers that tell a client from others: of the kernel, or where it has none
// of the time and the process.
#include <cerrno>
#include <gtest/gtest.h>
#include <set>
#include <sys/random.h>
#include <sys/wait.h>
#include <unistd.h>

#include "rpc/clock.h"
#include "rpc/udp_socket.h"
#include "tests/unit/standing_clock.h"

// getrandom as the whole program calls it (linked with --wrap=getrandom).
static ssize_t most_random = -1; // bytes that the kernel has, -1: as many as it likes
static unsigned asked_with;
extern "C" ssize_t __real_getrandom(void* bytes, size_t size, unsigned flags);
extern "C" ssize_t __wrap_getrandom(void* bytes, size_t size, unsigned flags);
extern "C" ssize_t __wrap_getrandom(void* bytes, size_t size, unsigned flags)
{
    asked_with = flags;
    if (most_random < 0)
        return __real_getrandom(bytes, size, flags);
    errno = EAGAIN;
    return most_random == 0 ? -1 : __real_getrandom(bytes, static_cast<size_t>(most_random), flags);
}

namespace
{
struct chance : testing::Test {
    ~chance() override { most_random = standing_still = -1; }

    static constexpr size_t rounds = 500;

    // In as many microseconds, all different, and each of the three another.
    static void expect_different()
    {
        std::set<uint32_t> queries, ports, calls;
        for (size_t i = 0; i < rounds; i++) {
            for (const int64_t before = microseconds_now(); microseconds_now() == before;)
                ;
            const RandomBits bits = random_bits();
            EXPECT_NE(bits.query_xid, bits.call_xid);
            queries.insert(bits.query_xid), ports.insert(bits.port), calls.insert(bits.call_xid);
        }
        // of 500 numbers of 32 bits two are alike once in 30,000 times
        EXPECT_GE(queries.size(), rounds - 1);
        EXPECT_GE(calls.size(), rounds - 1);
        EXPECT_GE(ports.size(), rounds - 5); // which loses some bits
    }
};
} // namespace

TEST_F(chance, are_the_kernels_which_is_not_waited_for)
{
    expect_different();
    EXPECT_EQ(asked_with, static_cast<unsigned>(GRND_NONBLOCK));
}

// On a device that has just started.
TEST_F(chance, differ_with_the_time_where_the_kernel_has_none)
{
    most_random = 0;
    expect_different();
}

TEST_F(chance, are_not_left_unset_where_the_kernel_has_too_few)
{
    most_random = 4;
    expect_different();
}

TEST_F(chance, differ_between_processes_of_one_moment_where_the_kernel_has_none)
{
    most_random = 0;
    standing_still = microseconds_now();
    const RandomBits mine = random_bits();
    EXPECT_EQ(random_bits().query_xid, mine.query_xid); // the moment is one
    int found[2];
    ASSERT_EQ(pipe(found), 0);
    const pid_t child = fork();
    if (child == 0) {
        const RandomBits bits = random_bits();
        _exit(write(found[1], &bits, sizeof bits) == sizeof bits ? 0 : 1);
    }
    RandomBits childs = mine;
    EXPECT_EQ(read(found[0], &childs, sizeof childs), static_cast<ssize_t>(sizeof childs));
    close(found[0]), close(found[1]);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_NE(childs.query_xid, mine.query_xid);
    EXPECT_NE(childs.call_xid, mine.call_xid);
    EXPECT_NE(childs.port, mine.port);
}

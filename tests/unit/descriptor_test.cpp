// A descriptor that is closed is nobody's: its number may be the host's next file.
#include <gtest/gtest.h>
#include <vector>

#include "rpc/descriptor.h"

namespace
{
int open_null() { return open("/dev/null", O_RDWR | O_CLOEXEC); }

bool is_open(int fd) { return fcntl(fd, F_GETFD) >= 0; }

// The host has the very same file, so that nothing but the number tells whose it is.
struct closed : testing::Test {
    Descriptor descriptor;
    int number = -1, hosts = -1;

    void SetUp() override
    {
        ASSERT_TRUE(descriptor.take(open_null()));
        number = descriptor.fd;
    }
    ~closed() override { close(hosts); }

    void let_the_host_have_the_number()
    {
        hosts = open_null();
        ASSERT_EQ(hosts, number);
    }
};
} // namespace

TEST_F(closed, twice_leaves_the_hosts_file_open)
{
    EXPECT_TRUE(descriptor.is_open());
    descriptor.close();
    EXPECT_FALSE(descriptor.is_open());
    EXPECT_FALSE(is_open(number));
    let_the_host_have_the_number();
    EXPECT_FALSE(descriptor.is_ours());
    descriptor.close();
    EXPECT_TRUE(is_open(hosts));
}

TEST_F(closed, blindly_is_no_number_any_more)
{
    descriptor.close_blindly();
    EXPECT_FALSE(descriptor.is_open());
    EXPECT_FALSE(is_open(number));
    let_the_host_have_the_number();
    descriptor.close();
    EXPECT_TRUE(is_open(hosts));
}

TEST_F(closed, keeps_errno)
{
    errno = EDOM;
    descriptor.close();
    EXPECT_EQ(errno, EDOM);
    ASSERT_TRUE(descriptor.take(open_null()));
    errno = ERANGE;
    descriptor.close_blindly();
    EXPECT_EQ(errno, ERANGE);
    ASSERT_TRUE(descriptor.take(open_null()));
    close(descriptor.fd); // by the host
    errno = EDOM;
    descriptor.close();
    EXPECT_EQ(errno, EDOM);
}

// 0 to 2 are the host's, even while they are closed.
TEST(descriptor, gets_a_number_of_its_own_and_leaves_the_standard_ones_free)
{
    for (const std::vector<int>& closed : {std::vector{0}, {1}, {2}, {0, 1, 2}}) {
        std::vector<int> kept;
        for (const int number : closed)
            kept.push_back(fcntl(number, F_DUPFD, 3)), close(number);
        Descriptor descriptor;
        const int made = open_null();
        const bool is_taken = descriptor.take(made), is_free = !is_open(made);
        for (size_t i = 0; i < closed.size(); i++)
            dup2(kept[i], closed[i]), close(kept[i]);
        EXPECT_EQ(made, closed[0]);
        EXPECT_TRUE(is_taken && is_free) << made;
        EXPECT_GT(descriptor.fd, 2) << made;
        EXPECT_TRUE(descriptor.is_ours()) << made;
        EXPECT_EQ(fcntl(descriptor.fd, F_GETFD), FD_CLOEXEC) << made;
        descriptor.close();
    }
}

TEST(descriptor, that_cannot_be_had_is_none_and_says_why)
{
    Descriptor descriptor;
    errno = EMFILE;
    EXPECT_FALSE(descriptor.take(-1));
    EXPECT_EQ(errno, EMFILE);
    EXPECT_FALSE(descriptor.is_open());
    EXPECT_FALSE(descriptor.is_ours());
}

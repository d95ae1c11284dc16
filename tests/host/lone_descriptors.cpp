// Whose descriptors are whose: a host may close all of them, also ours, and open
// others that get the same numbers. Nothing of ours goes to those, nothing is
// read from them, none is closed, and the next call works.
#include <fcntl.h>
#include <set>
#include <sys/wait.h>

#include "tests/host/lone.h"

namespace
{
constexpr int most_descriptors = 64; // that the tests look at

bool is_open(int fd) { return fcntl(fd, F_GETFD) >= 0; }

// The bytes that wait at the far end of something.
std::string read_all(int fd)
{
    std::string all;
    char bytes[10000];
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    for (ssize_t got = read(fd, bytes, sizeof bytes); got > 0; got = read(fd, bytes, sizeof bytes))
        all.append(bytes, static_cast<size_t>(got));
    return all;
}

// What a host opens, and where it sees what arrived at the far end. Both ends
// hold bytes for one another, which are to stay there.
struct Opened {
    const char* kind;
    int near, far;
};

class descriptors : public Lone
{
  protected:
    void SetUp() override
    {
        Lone::SetUp();
        if (IsSkipped())
            return;
        map_to(daemon->port());
        for (int fd = 3; fd < most_descriptors; fd++)
            if (is_open(fd))
                tests_own.insert(fd);
    }

    bool is_the_tests(int fd) const { return tests_own.count(fd) > 0; }

    // As daemons do on their start; the test's own servers stay.
    void close_all(int first = 3) const
    {
        for (int fd = first; fd < most_descriptors; fd++)
            if (!is_the_tests(fd))
                close(fd);
    }

    // Opens one of each kind under the lowest free numbers, which the library's
    // sockets had. The far ends lie beyond.
    static std::vector<Opened> open_others()
    {
        std::vector<Opened> all;
        char path[] = "/tmp/descriptors_test.XXXXXX";
        const int file = mkstemp(path);
        all.push_back({"file", file, open(path, O_RDONLY | O_CLOEXEC)});
        unlink(path);
        int pair[2];
        EXPECT_EQ(pipe(pair), 0);
        all.push_back({"pipe", pair[1], pair[0]});
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
        all.push_back({"local stream", pair[0], pair[1]});
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, pair), 0);
        all.push_back({"local datagrams", pair[0], pair[1]});
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair), 0);
        all.push_back({"local packets", pair[0], pair[1]});
        const int listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = loopback_address(0);
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
        EXPECT_EQ(listen(listener, 1), 0);
        EXPECT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
        pair[0] = socket(AF_INET, SOCK_STREAM, 0);
        EXPECT_EQ(connect(pair[0], reinterpret_cast<sockaddr*>(&address), size), 0);
        pair[1] = accept(listener, nullptr, nullptr);
        close(listener);
        all.push_back({"TCP connection", pair[0], pair[1]});
        for (Opened& one : all) {
            const int far = fcntl(one.far, F_DUPFD_CLOEXEC, most_descriptors);
            close(one.far);
            one.far = far;
        }
        return all;
    }

    static bool is_a_connection(const Opened& one) { return strcmp(one.kind, "file") && strcmp(one.kind, "pipe"); }

    // Lets one of them have the number `fd`.
    static void give_number(std::vector<Opened>& others, Opened& one, int fd)
    {
        for (Opened& other : others)
            if (other.near == fd)
                move_to(other, most_descriptors + 20);
        move_to(one, fd);
    }
    static void move_to(Opened& one, int fd)
    {
        const int moved = fcntl(one.near, F_DUPFD_CLOEXEC, most_descriptors);
        close(one.near);
        EXPECT_EQ(dup2(moved, fd), fd);
        close(moved);
        one.near = fd;
    }

    static void leave_bytes(const Opened& one)
    {
        if (is_a_connection(one)) {
            EXPECT_EQ(write(one.far, "stay", 4), 4) << one.kind;
        }
    }

    static void expect_untouched(const Opened& one)
    {
        EXPECT_TRUE(is_open(one.near)) << one.kind << ' ' << one.near;
        EXPECT_EQ(read_all(one.far), "") << one.kind << ' ' << one.near;
        if (is_a_connection(one)) {
            EXPECT_EQ(read_all(one.near), "stay") << one.kind << ' ' << one.near;
        }
    }

    // The library's one socket.
    int socket_of_ours() const
    {
        for (int fd = 3; fd < most_descriptors; fd++)
            if (is_open(fd) && !is_the_tests(fd))
                return fd;
        ADD_FAILURE() << "the library has no socket";
        return -1;
    }

    std::set<int> tests_own;
};
} // namespace

TEST_F(descriptors, whatever_has_the_sockets_number_by_now_gets_no_byte_and_stays_open)
{
    for (size_t kind = 0; kind < 6; kind++) {
        expect_success("first");
        const int ours = socket_of_ours();
        close(ours);
        std::vector<Opened> others = open_others();
        give_number(others, others[kind], ours);
        leave_bytes(others[kind]);
        expect_success(others[kind].kind);
        expect_untouched(others[kind]);
        for (const Opened& one : others)
            close(one.near), close(one.far);
    }
    EXPECT_EQ(daemon->junk(), 0U);
    EXPECT_EQ(daemon->queries().size(), 12U);
}

TEST_F(descriptors, second_failed_call_closes_nothing_of_the_hosts)
{
    for (size_t kind = 0; kind < 6; kind++) {
        expect_success("first");
        const int ours = socket_of_ours();
        close(ours);
        std::vector<Opened> others = open_others();
        give_number(others, others[kind], ours);
        leave_bytes(others[kind]);
        map_to(0); // nobody knows the daemon any more
        for (int i = 0; i < 3; i++)
            EXPECT_FALSE(call().value) << others[kind].kind;
        forget_clients();
        expect_untouched(others[kind]);
        for (const Opened& one : others) {
            EXPECT_TRUE(is_open(one.near)) << one.kind;
            close(one.near), close(one.far);
        }
        map_to(daemon->port());
    }
}

TEST_F(descriptors, host_that_closes_all_and_opens_others_keeps_them)
{
    for (int round = 0; round < 3; round++) {
        expect_success("first");
        close_all();
        const std::vector<Opened> others = open_others();
        for (const Opened& one : others)
            leave_bytes(one);
        for (int i = 0; i < 3; i++)
            expect_success("with others");
        for (const Opened& one : others) {
            expect_untouched(one);
            close(one.near), close(one.far);
        }
    }
    EXPECT_EQ(daemon->junk(), 0U);
}

// A daemon's usual start.
TEST_F(descriptors, forked_host_that_closes_all_and_opens_a_log_and_a_connection_keeps_them)
{
    expect_success("before the fork");
    int result[2];
    ASSERT_EQ(pipe2(result, O_CLOEXEC), 0);
    const int kept = fcntl(result[1], F_DUPFD_CLOEXEC, most_descriptors);
    const pid_t child = fork();
    if (child == 0) {
        setsid();
        for (int fd = 0; fd < most_descriptors; fd++)
            close(fd); // the test's servers too: the parent has them
        for (int fd = 0; fd < 3; fd++)
            open("/dev/null", O_RDWR);
        const std::vector<Opened> others = open_others();
        int wrong = 0;
        for (int i = 0; i < 5; i++) {
            wrong += lua->call(api, "1&6") != "7";
            for (const Opened& one : others)
                wrong += !is_open(one.near) || !read_all(one.far).empty();
        }
        const char byte = static_cast<char>(wrong);
        _exit(write(kept, &byte, 1) == 1 ? 0 : 1);
    }
    close(kept);
    close(result[1]);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    char wrong = -1;
    EXPECT_EQ(read(result[0], &wrong, 1), 1);
    EXPECT_EQ(wrong, 0);
    expect_success("the parent's next call");
    EXPECT_EQ(daemon->queries().size(), 7U);
    EXPECT_EQ(mapper->queries().size(), 2U) << "one of each process";
}

TEST_F(descriptors, output_of_a_host_without_standard_descriptors_goes_nowhere)
{
    const pid_t child = fork();
    if (child == 0) {
        close(0), close(1), close(2);
        int wrong = 0;
        for (int i = 0; i < 20; i++) {
            lua->run("print(('x'):rep(5000)) io.stdout:flush() io.stderr:write(('y'):rep(5000))");
            if (i % 5 == 0)
                forget_clients();
            wrong += lua->call(api, "1&6") != "7";
            lua->run("print(('x'):rep(5000)) io.stdout:flush() io.stderr:write(('y'):rep(5000))");
            wrong += is_open(0) || is_open(1) || is_open(2);
        }
        _exit(wrong);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(daemon->junk(), 0U);
    EXPECT_EQ(mapper->junk(), 0U);
    EXPECT_EQ(daemon->queries().size(), 20U);
}

TEST_F(descriptors, socket_that_asks_the_port_mapper_is_not_among_the_standard_ones_either)
{
    std::atomic<bool> hold = true;
    map([&](const RpcCall& query) {
        while (hold)
            usleep(1000);
        return RpcServer::accepted(query, {daemon->port()});
    });
    int open_ones = 0;
    const int saved[] = {fcntl(0, F_DUPFD_CLOEXEC, most_descriptors), fcntl(1, F_DUPFD_CLOEXEC, most_descriptors),
                         fcntl(2, F_DUPFD_CLOEXEC, most_descriptors)};
    close(0), close(1), close(2);
    std::thread watch([&] {
        while (mapper->queries().empty())
            usleep(1000);
        for (int fd = 0; fd < 3; fd++)
            open_ones += is_open(fd);
        hold = false;
    });
    const std::optional<std::string> value = lua->call(api, "1&6");
    watch.join();
    for (int fd = 0; fd < 3; fd++) {
        dup2(saved[fd], fd);
        close(saved[fd]);
    }
    EXPECT_EQ(value, "7");
    EXPECT_EQ(open_ones, 0);
}

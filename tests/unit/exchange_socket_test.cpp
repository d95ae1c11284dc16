// The socket of calls: its descriptor, what a host may have put in its place, its port.
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <set>
#include <utility>

#include "tests/support/private_network.h"
#include "tests/unit/exchange.h"

// sendmsg as the whole program calls it (linked with --wrap=sendmsg).
static int next_refusal; // the errno of the next one, 0: it sends
extern "C" ssize_t __real_sendmsg(int fd, const msghdr* message, int flags);
extern "C" ssize_t __wrap_sendmsg(int fd, const msghdr* message, int flags);
extern "C" ssize_t __wrap_sendmsg(int fd, const msghdr* message, int flags)
{
    if (next_refusal == 0)
        return __real_sendmsg(fd, message, flags);
    errno = std::exchange(next_refusal, 0);
    return -1;
}

namespace
{
int open_descriptors()
{
    int count = 0;
    if (DIR* folder = opendir("/proc/self/fd")) {
        while (readdir(folder))
            count++;
        closedir(folder);
    }
    return count;
}
} // namespace

TEST_F(exchange, socket_is_closed_on_exec_and_blocks)
{
    EXPECT_EQ(fcntl(client.socket.fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_EQ(fcntl(client.socket.fd, F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(exchange, socket_gets_a_number_beyond_the_standard_ones)
{
    client.socket.close();
    const int in = dup(0), out = dup(1), err = dup(2);
    close(0), close(1), close(2);
    make();
    const int made = client.socket.fd;
    dup2(in, 0), dup2(out, 1), dup2(err, 2);
    close(in), close(out), close(err);
    EXPECT_GT(made, 2);
    EXPECT_EQ(call_answered_by(answer(next_xid(), 6)), RPC_SUCCESS);
}

TEST_F(exchange, no_descriptor_stays_behind)
{
    client.socket.close();
    const int before = open_descriptors();
    for (int i = 0; i < 3; i++) {
        make();
        client.socket.close();
    }
    EXPECT_EQ(open_descriptors(), before);
}

namespace
{
// What a host may have opened under the socket's number.
struct Impostor {
    int pair[2] = {-1, -1};

    Impostor(int number, int domain, int type)
    {
        EXPECT_EQ(socketpair(domain, type, 0, pair), 0);
        take(number);
    }
    explicit Impostor(int number) // a TCP connection
    {
        const int listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = loopback_address(0);
        EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener, 1), 0);
        address = loopback_address(Socket::port_of(listener));
        pair[0] = socket(AF_INET, SOCK_STREAM, 0);
        EXPECT_EQ(connect(pair[0], reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        pair[1] = accept(listener, nullptr, nullptr);
        close(listener);
        take(number);
    }
    ~Impostor() { close(pair[0]), close(pair[1]); }
    Impostor(const Impostor&) = delete;
    Impostor& operator=(const Impostor&) = delete;

    void take(int number)
    {
        for (int& end : pair) { // neither shall have the number by chance
            const int moved = fcntl(end, F_DUPFD, number + 1);
            close(end);
            end = moved;
        }
        EXPECT_EQ(dup2(pair[0], number), number);
        close(pair[0]);
        pair[0] = number;
    }
    bool is_open() const { return fcntl(pair[0], F_GETFD) >= 0; }
    // Bytes that reached the other end.
    ssize_t received() const
    {
        char bytes[10000];
        return recv(pair[1], bytes, sizeof bytes, MSG_DONTWAIT);
    }
};
} // namespace

// No port mapper knows the program, so the call fails; what counts is the host's
// own descriptor.
TEST_F(exchange, nothing_is_sent_to_or_closed_of_a_stream_that_took_the_sockets_number)
{
    for (int kind = 0; kind < 3; kind++) {
        const int number = client.socket.fd;
        close(number);
        const Impostor host = kind == 0   ? Impostor(number)
                              : kind == 1 ? Impostor(number, AF_UNIX, SOCK_STREAM)
                                          : Impostor(number, AF_UNIX, SOCK_DGRAM);
        EXPECT_EQ(call(), RPC_CANTSEND) << kind;
        EXPECT_EQ(host.received(), -1) << kind;
        EXPECT_TRUE(host.is_open()) << kind;
        client.socket.close();
        EXPECT_TRUE(host.is_open()) << kind;
        client.socket.fd = 0;
        make();
    }
    EXPECT_TRUE(daemon.received().empty());
}

TEST_F(exchange, file_that_took_the_sockets_number_is_neither_written_nor_closed)
{
    const int number = client.socket.fd;
    close(number);
    char path[] = "/tmp/exchange_test.XXXXXX";
    const int file = mkstemp(path);
    unlink(path);
    ASSERT_EQ(dup2(file, number), number);
    EXPECT_EQ(call(), RPC_CANTSEND);
    client.socket.close();
    EXPECT_EQ(lseek(number, 0, SEEK_END), 0);
    EXPECT_GE(fcntl(number, F_GETFD), 0);
    if (file != number)
        close(file);
    close(number);
}

// The guard of a send makes what is no UDP socket refuse it. Systems that do not know the
// guard refuse it on a UDP socket, too: the call goes without it then.
TEST_F(exchange, refused_guard_fails_no_call_over_a_socket_of_ours)
{
    for (const int number :
         {EBADF, ENOTSOCK, EISCONN, EOPNOTSUPP, EINVAL, EAFNOSUPPORT, EPIPE, ENOTCONN, EDESTADDRREQ, EPROTOTYPE}) {
        next_refusal = number;
        EXPECT_EQ(call_answered_by(answer(next_xid(), 6)), RPC_SUCCESS) << strerror(number);
        EXPECT_EQ(next_refusal, 0) << strerror(number);
        EXPECT_EQ(daemon.received().size(), 1U) << strerror(number);
    }
}

TEST_F(exchange, any_other_failure_to_send_is_told_and_nothing_is_sent)
{
    for (const int number : {EACCES, EAGAIN, ECONNREFUSED, EMSGSIZE, ENETUNREACH, ENOBUFS, ENOMEM, EPERM}) {
        next_refusal = number;
        EXPECT_EQ(call(), RPC_CANTSEND) << strerror(number);
        EXPECT_EQ(error().re_errno, number);
        EXPECT_TRUE(daemon.received().empty()) << strerror(number);
    }
}

namespace
{
// Other tests, and the machine's servers, have reserved ports, too.
struct udp_socket : testing::Test {
    void SetUp() override
    {
        static const bool is_private = enter_private_network();
        if (!is_private)
            GTEST_SKIP() << "reserved ports, and a network of our own, are for root";
    }
};
} // namespace

// Of those that bindresvport would take.
TEST_F(udp_socket, ports_that_other_servers_want_are_left_to_them)
{
    const std::map<in_port_t, const char*> others = {
        {623, "IPMI"},     {631, "printers"}, {636, "LDAP"},   {655, "tinc"}, {664, "IPMI"},  {749, "Kerberos"},
        {750, "Kerberos"}, {754, "Kerberos"}, {783, "spamd"},  {853, "DNS"},  {873, "rsync"}, {902, "virtual machines"},
        {989, "FTP"},      {990, "FTP"},      {992, "telnet"}, {993, "IMAP"}, {995, "POP3"},
    };
    Socket daemon;
    std::set<in_port_t> ports;
    for (uint32_t choice = 0; choice < 424; choice++) { // each port is some choice's first
        UdpSocket one;
        ASSERT_TRUE(open_udp_socket(one, daemon.port(), LocalPort::Reserved, choice << 8, 0));
        const in_port_t port = Socket::port_of(one.fd);
        EXPECT_EQ(others.count(port), 0U) << port;
        ports.insert(port);
        one.close();
    }
    EXPECT_EQ(ports.size(), 424 - others.size());
    EXPECT_GE(*ports.begin(), 600);
    EXPECT_LT(*ports.rbegin(), 1024);
}

TEST_F(udp_socket, the_daemons_own_port_is_not_taken)
{
    for (uint16_t port = 600; port < 1024; port++) {
        UdpSocket one;
        const uint32_t choice = port - 600U; // whose first port it is
        ASSERT_TRUE(open_udp_socket(one, port, LocalPort::Reserved, choice << 8, 0));
        EXPECT_NE(Socket::port_of(one.fd), port);
        EXPECT_LT(Socket::port_of(one.fd), 1024) << port;
        one.close();
    }
}

TEST_F(udp_socket, reserved_ports_are_found_however_many_are_taken)
{
    Socket daemon;
    std::vector<UdpSocket> all(500);
    std::set<uint16_t> ports;
    int reserved = 0;
    for (UdpSocket& one : all) {
        ASSERT_TRUE(open_udp_socket(one, daemon.port(), LocalPort::Reserved, random_bits().port, 0));
        const uint16_t port = Socket::port_of(one.fd);
        reserved += port < 1024;
        ports.insert(port);
    }
    EXPECT_EQ(ports.size(), all.size());
    EXPECT_GT(reserved, 350); // with one try each it is 290 or so
    for (UdpSocket& one : all)
        one.close();
}

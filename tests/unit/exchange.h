// A client and its daemon, whose datagrams the test lays ready: what the tests of one call
// over a kept socket share.
#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "rpc/client.h"
#include "tests/unit/support.h"

constexpr rpcprog_t program = 50099;
constexpr timeval long_wait = {20, 0};
constexpr timeval short_wait = {0, 300000};

// A UDP socket of the test's own on the loopback address.
class Socket
{
  public:
    Socket() : fd(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in any = loopback_address(0);
        EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&any), sizeof any), 0);
    }
    ~Socket() { close_now(); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    static uint16_t port_of(int socket)
    {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        EXPECT_EQ(getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size), 0);
        return ntohs(address.sin_port);
    }

    uint16_t port() const { return port_of(fd); }

    void send_to(uint16_t to, const Bytes& datagram)
    {
        const sockaddr_in address = loopback_address(to);
        EXPECT_EQ(sendto(fd, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                         sizeof address),
                  static_cast<ssize_t>(datagram.size()));
    }

    // The datagrams that have come so far.
    std::vector<Bytes> received()
    {
        std::vector<Bytes> all;
        Bytes buffer(65536);
        ssize_t got;
        while ((got = recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT)) >= 0)
            all.emplace_back(buffer.begin(), buffer.begin() + got);
        return all;
    }

    void close_now()
    {
        if (fd >= 0)
            close(fd);
        fd = -1;
    }

  private:
    int fd;
};

// The datagrams of a daemon (RFC 5531, section 9).
inline Bytes accepted(uint32_t xid, uint32_t accept_stat, const Bytes& body = {})
{
    return units({xid, 1, 0, 0, 0, accept_stat}) + body;
}
inline Bytes answer(uint32_t xid, uint32_t value) { return accepted(xid, 0, units({value})); }
struct exchange : testing::Test {
    Socket daemon;
    ClientPool pool = {};
    const ServiceClient service = {program, &pool};
    Client& client = pool.clients[0];
    Caller caller;
    rpc_err failure = {};
    int reply = 0;

    exchange() { make(); }
    ~exchange() override { client.socket.close(); }

    void make()
    {
        ASSERT_TRUE(open_udp_socket(client.socket, daemon.port(), LocalPort::Reserved, random_bits().port,
                                    socket_wait_ms(long_wait)));
        client.xid = random_bits().call_xid;
    }

    uint32_t next_xid() const { return client.xid + 1; }
    uint16_t client_port() const { return Socket::port_of(client.socket.fd); }
    void daemon_sends(const Bytes& datagram) { daemon.send_to(client_port(), datagram); }

    enum clnt_stat make_call(const Call& call, timeval wait)
    {
        uint32_t units[datagram_units];
        client.time = wait.tv_sec == long_wait.tv_sec ? TimeLeft::All : TimeLeft::Some;
        return call_client(service, client, call, Deadline::after(wait), caller, units, failure);
    }

    enum clnt_stat call(int argument = 5, timeval wait = long_wait, uint32_t procedure = 7)
    {
        reply = 0;
        return make_call({procedure, as_xdrproc(xdr_int), &argument, as_xdrproc(xdr_int), &reply}, wait);
    }

    // The call's outcome when the daemon's datagram is this.
    enum clnt_stat call_answered_by(const Bytes& datagram)
    {
        daemon_sends(datagram);
        return call();
    }

    rpc_err error() const { return failure; }
};

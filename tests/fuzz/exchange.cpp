// Reply datagrams, any, through the exchange: a client's socket that calls a
// daemon's socket in this process. What arrives is queued before the call is
// made; libtirpc's xdr_replymsg says which of it is a reply, and of what.
//
// Input: API (1), then datagrams: kind (1, see datagrams.h), size (2), bytes. The
// daemon's good reply follows them all, so that every call ends at once.
#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

#include "rpc/client.h"
#include "tests/fuzz/datagrams.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/private_network.h"

namespace
{
constexpr size_t api_choices = 16; // some of each shape are enough here
constexpr unsigned most_datagrams = 8;
constexpr rpcprog_t program = 50099;

int bound_socket(sockaddr_in& address)
{
    address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    EXPECT(fd >= 0 && bind(fd, reinterpret_cast<sockaddr*>(&address), length) == 0 &&
               getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0,
           "a socket on the loopback address", "%s", strerror(errno));
    return fd;
}

// Client, daemon and stranger, once for all inputs.
struct Parties {
    ClientPool pool = {};
    const ServiceClient service = {program, &pool};
    Client& caller = pool.clients[0];
    int daemon, other;
    sockaddr_in client = {};

    Parties()
    {
        enter_private_network(); // where the system lets us; ports are the kernel's choice anyway
        sockaddr_in address, unused;
        daemon = bound_socket(address);
        other = bound_socket(unused);
        EXPECT(open_udp_socket(caller.socket, ntohs(address.sin_port), LocalPort::Any, 0, socket_wait_ms(TIMEOUT)),
               "a connected socket", "%s", strerror(errno));
        caller.time = TimeLeft::All;
        socklen_t length = sizeof client;
        EXPECT(getsockname(caller.socket.fd, reinterpret_cast<sockaddr*>(&client), &length) == 0, "the client's port",
               "%s", strerror(errno));
    }

    void send(const std::string& datagram, bool by_stranger) const
    {
        EXPECT(sendto(by_stranger ? other : daemon, datagram.data(), datagram.size(), 0,
                      reinterpret_cast<const sockaddr*>(&client),
                      sizeof client) == static_cast<ssize_t>(datagram.size()),
               "a datagram sent", "%s", strerror(errno));
    }
};

Parties& parties()
{
    static Parties all;
    return all;
}

void check_call(const Api& api, uint32_t xid)
{
    uint32_t units[UDPMSGSIZE / sizeof(uint32_t)];
    const ssize_t size = recv(parties().daemon, units, sizeof units, MSG_DONTWAIT);
    const ssize_t expected = 40 + 4 * (api.request ? api.request->units : 0);
    EXPECT(size == expected, "one call message", "%zd bytes, not %zd", size, expected);
    EXPECT(ntohl(units[0]) == xid && ntohl(units[3]) == program && ntohl(units[5]) == api.procedure,
           "the call's own header", "xid %u, procedure %u", ntohl(units[0]), ntohl(units[5]));
    EXPECT(recv(parties().daemon, units, sizeof units, MSG_DONTWAIT) < 0, "no second call message", "one");
}

void drain(int fd)
{
    char byte;
    while (recv(fd, &byte, sizeof byte, MSG_DONTWAIT) >= 0) {
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input input(data, size);
    const Api& api = *callable_apis()[input.byte() % api_choices * callable_apis().size() / api_choices];
    rpclib_dbg = 0;
    Parties& all = parties();
    const uint32_t xid = all.caller.xid + 1;
    const size_t reply_size = BYTES_PER_XDR_UNIT * (api.reply ? api.reply->units : 1);

    std::vector<std::string> heard;
    for (unsigned i = 0; i < most_datagrams && input.left() > 0; i++) {
        const unsigned kind = input.byte();
        const std::string datagram = make_datagram(input, kind, xid, reply_size);
        all.send(datagram, kind & from_stranger);
        if (!(kind & from_stranger))
            heard.push_back(datagram);
    }
    heard.push_back(accepted(xid) + std::string(reply_size, '\0'));
    all.send(heard.back(), false);

    size_t first = 0;
    while (!is_of_call(heard[first], xid))
        first++;
    const Outcome expected = outcome_of(heard[first], api);

    std::string no_text;
    RecordRoom request, room;
    uint32_t units[datagram_units];
    rpc_err error;
    const Call call = make_call(api, parse_argument(api, request, &no_text[0]), room.bytes);
    const bool is_reply =
        call_client(all.service, all.caller, call, Deadline::after(TIMEOUT), {}, units, error) == RPC_SUCCESS;
    EXPECT(is_reply == expected.success, expected.success ? "a reply" : "no reply", "%s from datagram %zu of %s",
           is_reply ? "one" : "none", first, api.name);
    EXPECT(!is_reply || memcmp(room.bytes, expected.reply.data(), expected.reply.size()) == 0, "the reply's record",
           "another %s", api.name);
    check_call(api, xid);
    drain(all.caller.socket.fd);
    return 0;
}

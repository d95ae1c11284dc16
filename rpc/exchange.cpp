// Sending a call and waiting for its reply, see exchange.h.
#include "rpc/exchange.h"

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

namespace
{
// What lies in the socket when the time is over is still looked through, because
// the process may have been stopped meanwhile; but a daemon that keeps sending
// holds nobody up.
constexpr int most_late_datagrams = 1000;

ssize_t fail(rpc_err& error, enum clnt_stat status, int number = 0)
{
    error = {};
    error.re_status = status;
    error.re_errno = number;
    return -1;
}

// Waits for a datagram until the deadline and receives it: its size, -1 with
// errno EAGAIN when the time is over, or -1 with another error.
ssize_t receive_until(UdpSocket& socket, uint32_t* units, Deadline deadline, bool& is_late)
{
    const int wait = deadline.left_for_poll();
    is_late = wait == 0;
    pollfd readable = {socket.fd, POLLIN, 0};
    const int ready = poll(&readable, 1, wait);
    if (ready > 0)
        return socket.receive(units, sizeof(uint32_t) * datagram_units, MSG_DONTWAIT);
    if (ready == 0)
        errno = is_late ? ETIME : EAGAIN;
    return -1;
}
} // namespace

ssize_t transact(UdpSocket& socket, uint32_t* units, size_t size, TimeLeft time, Deadline deadline,
                 const Caller& caller, rpc_err& error)
{
    while (socket.send(units, size) < 0) {
        if (errno != EINTR)
            return fail(error, RPC_CANTSEND, errno);
        if (caller.has_given_up())
            return fail(error, RPC_INTR, EINTR);
    }
    const uint32_t xid = ntohl(units[0]);
    bool is_late = false;
    ssize_t got = time == TimeLeft::All ? socket.receive(units, sizeof(uint32_t) * datagram_units, 0)
                                        : receive_until(socket, units, deadline, is_late);
    for (int late = 0; !answers(got, units, xid); late += is_late) {
        if (got < 0 && errno == ETIME)
            return fail(error, RPC_TIMEDOUT);
        if (got < 0 && errno != EINTR && errno != EAGAIN)
            return fail(error, RPC_CANTRECV, errno);
        if (caller.has_given_up())
            return fail(error, RPC_INTR, EINTR);
        if (late == most_late_datagrams)
            return fail(error, RPC_TIMEDOUT);
        got = receive_until(socket, units, deadline, is_late);
    }
    return got;
}

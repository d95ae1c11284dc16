// One call over a connected socket: one datagram out, the daemon's own reply to
// it in, one deadline over everything (RFC 5531).
//
// libtirpc's own call sends again after 15 seconds, takes a datagram from
// anybody, counts a late reply to an earlier call as a lost one, shares its
// socket with forked children and programs started from here, and blocks every
// signal for up to 25 seconds.
#pragma once

#include "rpc/clock.h"
#include "rpc/message.h"
#include "rpc/udp_socket.h"

// Who waits for a call. Asked whenever the wait is interrupted or goes on:
// should the call be given up, because whoever made it wants to stop? Null
// wants every call until its deadline.
struct Caller {
    bool (*gives_up)(void* context) = nullptr;
    void* context = nullptr;

    bool has_given_up() const { return gives_up && gives_up(context); }
};

// What is asked for, and what comes back.
struct Call {
    uint32_t procedure;
    xdrproc_t encode;
    void* request;
    xdrproc_t decode;
    void* reply; // may be the request's own storage
};

// How long a socket's own receive may wait: less than a call may take, because
// the kernel's timers for so long a wait are coarse.
constexpr int64_t socket_wait_ms(timeval whole_wait) { return whole_wait.tv_sec * ms_of_second / 8 * 7; }

// How much of its time a call still has.
enum class TimeLeft : uint8_t {
    Some, // or unknown
    All,  // the socket's own receive may wait first, which saves a system call
};

// Sends the call in `units` (datagram_units of them), `size` bytes long, once, and
// receives the reply to it into the same units. The reply's size, or -1 with the
// failure in `error`: RPC_CANTSEND (with EBADF: nothing was sent, the
// descriptor is not the socket any more), RPC_CANTRECV, RPC_TIMEDOUT, RPC_INTR.
ssize_t transact(UdpSocket& socket, uint32_t* units, size_t size, TimeLeft time, Deadline deadline,
                 const Caller& caller, rpc_err& error);

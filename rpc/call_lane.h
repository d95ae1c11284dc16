// One call of a group, and a lane: what a group has with one daemon, which is the
// socket, the query for its port, the calls that wait and those under way. What
// they go through is call_group's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <rpc/rpc.h>

#include "rpc/client.h"
#include "rpc/clock.h"
#include "rpc/descriptor.h"
#include "rpc/port_mapper.h"
#include "rpc/udp_socket.h"

constexpr int64_t usual_receive_ms = socket_wait_ms(TIMEOUT);

// What a datagram of that size counts in a socket's buffer: more than itself.
// Small ones count seven times their size, which is why they, too, are bounded by
// what they count.
constexpr size_t kernel_memory(size_t datagram)
{
    constexpr size_t around = 448, least = 512, description = 256;
    size_t room = least;
    while (room < datagram + around)
        room *= 2;
    return room + description;
}

// Why a call of a group ended without a reply.
struct GroupFailure {
    enum class Kind : uint8_t {
        Call,     // after it was sent: `error`
        NoClient, // there was nowhere to send it: `creation`
        NotSent,  // it was over while it waited for its turn
    };
    Kind kind;
    rpc_err error;
    CreationFailure creation;
};

// One call. Its owner keeps it until it has ended.
struct GroupCall {
    GroupCall* next = nullptr;
    const ServiceClient* service = nullptr;
    Deadline deadline = {0};
    size_t size = 0; // of the request or of the reply, whichever is larger
    uint32_t xid = 0;
};

// As the RPC library tells errors.
inline rpc_err error_of(enum clnt_stat status, int number = 0)
{
    rpc_err error = {};
    error.re_status = status;
    error.re_errno = number;
    return error;
}

inline GroupFailure call_failure(const rpc_err& error) { return {GroupFailure::Kind::Call, error, {}}; }

// One daemon's calls.
struct CallLane {
    explicit CallLane(const ServiceClient& service)
        : service(service), query(service.program, server_version, Life::Long)
    {
    }

    const ServiceClient& service;
    CallLane* next = nullptr;
    bool asks = false; // the port query is under way
    PortQuery query;
    UdpSocket own;
    Client* lent = nullptr;
    uint32_t xid = 0;
    size_t under_way = 0;         // kernel_memory of what was sent
    size_t largest = 0;           // units of the largest reply that any call of it may have
    bool is_doubted = false;      // a call failed: the daemon may be another by now, its port too
    GroupCall* waiting = nullptr; // for their turn
    GroupCall** last_waiting = &waiting;
    GroupCall* sent = nullptr;
    GroupCall** last_sent = &sent;

    int64_t receive_ms = usual_receive_ms; // how long the socket's own receive waits

    UdpSocket& socket() { return lent ? lent->socket : own; }
    bool is_ready() const { return lent || own.is_open(); }

    bool limit_receive(int64_t ms)
    {
        if (!socket().set_wait(ms))
            return false;
        receive_ms = ms;
        return true;
    }

    void wait_last(GroupCall& call)
    {
        call.next = nullptr;
        *last_waiting = &call;
        last_waiting = &call.next;
    }
    GroupCall& pop_waiting()
    {
        GroupCall& call = *waiting;
        waiting = call.next;
        if (!waiting)
            last_waiting = &waiting;
        return call;
    }
    void append_sent(GroupCall& call)
    {
        call.next = nullptr;
        *last_sent = &call;
        last_sent = &call.next;
        under_way += kernel_memory(call.size);
    }
    // Takes the call that *link leads to out of `sent`.
    GroupCall& unlink_sent(GroupCall** link)
    {
        GroupCall& call = **link;
        *link = call.next;
        if (last_sent == &call.next)
            last_sent = link;
        under_way -= kernel_memory(call.size);
        return call;
    }
};

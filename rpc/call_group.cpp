// A group's lanes: sending, receiving, failing, see call_group.h.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <sys/socket.h>

#include "rpc/call_group.h"

namespace
{
constexpr int most_turns = 32;  // batches that one lane receives before the next
constexpr int most_a_batch = 8; // datagrams that are sent or received in one go
constexpr size_t batch_units = 3 * datagram_units;

GroupFailure creation_failure(const CreationFailure& creation)
{
    return {GroupFailure::Kind::NoClient, creation.error, creation};
}
} // namespace

CallGroup::Lane* CallGroup::lane_of(const ServiceClient& service)
{
    for (Lane* lane = lanes; lane; lane = lane->next)
        if (&lane->service == &service)
            return lane;
    void* memory = malloc(sizeof(Lane));
    if (!memory)
        return nullptr;
    auto* lane = new (memory) Lane(service);
    lane->next = lanes;
    return lanes = lane;
}

bool CallGroup::add(GroupCall& call)
{
    Lane* lane = lane_of(*call.service);
    if (!lane)
        return false;
    bound = open_calls > 0 ? bound.or_sooner(call.deadline) : call.deadline;
    open_calls++;
    const size_t units = (call.size + MAX_AUTH_BYTES) / sizeof(uint32_t) + 1; // a reply may have a verifier
    lane->largest = std::min(datagram_units, std::max(units, lane->largest));
    lane->wait_last(call);
    if (clients == LaneClients::Own)
        lane->socket().was_just_used = false;
    if (!is_gathering)
        advance(*lane);
    return true;
}

void CallGroup::send_gathered()
{
    is_gathering = false;
    for (Lane* lane = lanes; lane; lane = lane->next)
        advance(*lane);
}

// Sends what may be sent, and finds out where to, if need be.
void CallGroup::advance(Lane& lane)
{
    if (lane.is_doubted && !lane.sent)
        close(lane, true);
    if (!lane.waiting || lane.asks || ((!lane.is_ready() || lane.is_doubted) && !open(lane)))
        return;
    while (lane.waiting && lane.is_ready() && send_some(lane))
        continue;
}

// True when there is a socket now. Otherwise its port is asked for, or every
// call that waits has failed. What is under way through a doubted socket stays.
bool CallGroup::open(Lane& lane)
{
    if (clients == LaneClients::Shared && !lane.is_ready())
        lane.lent = lend_idle_client(lane.service);
    if (lane.lent && !lane.is_doubted) {
        lane.xid = lane.lent->xid;
        return true;
    }
    lane.asks = true;
    use(lane, lane.query.start(random_bits().query_xid));
    if (lane.asks)
        watch(lane.query.fd());
    return lane.is_ready() && !lane.is_doubted;
}

// Goes on with what the port query says.
void CallGroup::use(Lane& lane, PortQuery::State state)
{
    if (state == PortQuery::State::Asking)
        return;
    const CreationFailure failure = lane.query.failure();
    const uint16_t port = lane.query.port();
    lane.asks = false;
    lane.query.~PortQuery();
    new (&lane.query) PortQuery(lane.service.program, server_version, Life::Long);
    if (state == PortQuery::State::Failed)
        return fail_waiting(lane, creation_failure(failure));
    if (lane.is_ready() && lane.socket().port == port) {
        lane.is_doubted = false;
        return;
    }
    if (lane.is_ready()) { // nobody answers there any more
        close(lane, true);
        fail_sent(lane, call_failure(error_of(RPC_CANTRECV, ECONNREFUSED)));
    }
    const RandomBits random = random_bits();
    if (!open_udp_socket(lane.own, port, LocalPort::Reserved, random.port, usual_receive_ms)) {
        const CreationFailure refused = {RPC_SYSTEMERROR, error_of(RPC_SYSTEMERROR, errno)};
        return fail_waiting(lane, creation_failure(refused));
    }
    lane.xid = random.call_xid;
    watch(lane.own.fd);
}

// Sends calls that wait, as many as the window and one batch take. Encoding them
// first and sending them then is quicker than taking turns: the kernel's code and
// ours do not drive each other out of the processor's caches. False when there is
// no more to send now.
bool CallGroup::send_some(Lane& lane)
{
    uint32_t units[batch_units];
    struct {
        size_t size, at;
        uint32_t xid;
    } encoded[most_a_batch];
    size_t count = 0, used = 0, under_way = lane.under_way;
    for (GroupCall* call = lane.waiting; call && count < most_a_batch; call = call->next) {
        under_way += kernel_memory(call->size);
        if (batch_units - used < datagram_units || (under_way > group_window && (lane.sent || count > 0)))
            break;
        const size_t size = owner.encode(*call, ++lane.xid, units + used);
        if (size == 0)
            break;
        encoded[count++] = {size, used, lane.xid};
        used += size / sizeof(uint32_t);
    }
    if (count == 0 && under_way <= group_window) {
        end(lane.pop_waiting(), call_failure(error_of(RPC_CANTENCODEARGS, ENOMEM)));
        return true;
    }
    for (size_t i = 0; i < count; i++) {
        if (!send(lane, units + encoded[i].at, encoded[i].size))
            return false;
        GroupCall& sent = lane.pop_waiting();
        sent.xid = encoded[i].xid;
        lane.append_sent(sent);
    }
    return count > 0;
}

// Sends the message of the call that is first in its lane. False when the lane is to
// be looked after otherwise.
bool CallGroup::send(Lane& lane, const uint32_t* units, size_t size)
{
    while (lane.socket().send(units, size) < 0) {
        if (errno == EINTR)
            continue;
        if (errno == EBADF) { // the host closed the descriptor: this one has not left
            lose(lane, error_of(RPC_CANTRECV, EBADF));
            return false;
        }
        const rpc_err error = error_of(RPC_CANTSEND, errno);
        end(lane.pop_waiting(), call_failure(error));
        return lose(lane, error), false;
    }
    lane.socket().was_just_used = true; // until the host's own code runs again
    return true;
}

void CallGroup::receive(Lane& lane)
{
    for (int turn = 0; lane.sent && lane.is_ready() && turn < most_turns && take_some(lane, MSG_DONTWAIT);)
        turn++;
    advance(lane);
}

// Takes what is there, a batch at most, for the same reason as send_some; without
// MSG_DONTWAIT it waits for the first datagram. False when no more are there.
bool CallGroup::take_some(Lane& lane, int flags)
{
    uint32_t units[batch_units];
    iovec places[most_a_batch];
    mmsghdr messages[most_a_batch] = {};
    // what a longer one has behind is not read
    const size_t each = lane.largest > 0 ? lane.largest : datagram_units;
    int count = 0;
    for (size_t at = 0; at + each <= batch_units && count < most_a_batch; at += each, count++) {
        places[count] = {units + at, sizeof(uint32_t) * each};
        messages[count].msg_hdr.msg_iov = &places[count];
        messages[count].msg_hdr.msg_iovlen = 1;
    }
    const int got = recvmmsg(lane.socket().fd, messages, static_cast<unsigned>(count), flags | MSG_WAITFORONE, nullptr);
    for (int i = 0; i < got; i++)
        take(lane, static_cast<uint32_t*>(places[i].iov_base), messages[i].msg_len);
    if (got < 0 && errno != EAGAIN && errno != EINTR)
        lose(lane, error_of(RPC_CANTRECV, errno));
    return got == count;
}

// Most replies come in the order of their calls.
void CallGroup::take(Lane& lane, uint32_t* units, size_t size)
{
    for (GroupCall** link = &lane.sent; *link; link = &(*link)->next)
        if (answers(static_cast<ssize_t>(size), units, (*link)->xid)) {
            GroupCall& call = lane.unlink_sent(link);
            open_calls--;
            if (!owner.replied(call, units, size, lane.socket().port))
                lane.is_doubted = true;
            return;
        }
}

// The socket is of no use: what was sent through it has failed, what waits goes
// to the daemon's new port.
void CallGroup::lose(Lane& lane, const rpc_err& error)
{
    close(lane, true);
    fail_sent(lane, call_failure(error));
    advance(lane);
}

void CallGroup::close(Lane& lane, bool failed)
{
    lane.is_doubted = false;
    if (!failed && lane.is_ready() && lane.receive_ms != usual_receive_ms)
        failed = !lane.limit_receive(usual_receive_ms);
    lane.receive_ms = usual_receive_ms;
    if (lane.lent) {
        lane.lent->xid = lane.xid;
        give_back_client(lane.service, *lane.lent, failed);
        lane.lent = nullptr;
    } else if (clients == LaneClients::Shared && !failed && lane.own.is_open()) {
        keep_as_client(lane.service, lane.own);
    } else {
        lane.own.close();
    }
}

void CallGroup::end(GroupCall& call, const GroupFailure& failure)
{
    open_calls--;
    owner.failed(call, failure);
}

void CallGroup::fail_calls(GroupCall*& list, const GroupFailure& failure)
{
    while (GroupCall* call = list) {
        list = call->next;
        end(*call, failure);
    }
}

void CallGroup::fail_waiting(Lane& lane, const GroupFailure& failure)
{
    fail_calls(lane.waiting, failure);
    lane.last_waiting = &lane.waiting;
}

void CallGroup::fail_sent(Lane& lane, const GroupFailure& failure)
{
    fail_calls(lane.sent, failure);
    lane.last_sent = &lane.sent;
    lane.under_way = 0;
}

void CallGroup::fail_all(const rpc_err& error)
{
    for (Lane* lane = lanes; lane; lane = lane->next) {
        fail_waiting(*lane, {GroupFailure::Kind::NotSent, error, {}});
        if (!lane->sent)
            continue;
        fail_sent(*lane, call_failure(error));
        close(*lane, true);
    }
}

void CallGroup::close()
{
    while (Lane* lane = lanes) {
        lanes = lane->next;
        close(*lane, lane->sent || lane->is_doubted);
        lane->~Lane();
        free(lane);
    }
    open_calls = 0;
    epoll.close();
    timer.close();
}

void CallGroup::close_in_child()
{
    for (Lane* lane = lanes; lane; lane = lane->next) {
        lane->lent = nullptr; // the clients' own handler closes it
        lane->own.close();
        lane->query.close();
    }
    epoll.close();
    timer.close();
}

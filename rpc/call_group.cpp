// Groups of calls, see call_group.h.
#include "rpc/call_group.h"

#include <cerrno>
#include <cstdlib>
#include <initializer_list>
#include <new>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/timerfd.h>

namespace
{
constexpr nfds_t most_polled = 64; // descriptors that one wait looks at
constexpr int most_turns = 32;     // batches that one lane receives before the next
constexpr int most_a_batch = 8;    // datagrams that are sent or received in one go
constexpr size_t batch_units = 3 * datagram_units;
constexpr int64_t usual_receive_ms = socket_wait_ms(TIMEOUT);
constexpr int64_t blind_ms = 20;         // between looks at sockets that could not be watched
constexpr int64_t least_receive_ms = 50; // less is not worth a socket's own receive

rpc_err error_of(enum clnt_stat status, int number = 0)
{
    rpc_err error = {};
    error.re_status = status;
    error.re_errno = number;
    return error;
}

GroupFailure call_failure(const rpc_err& error) { return {GroupFailure::Kind::Call, error, {}}; }
GroupFailure creation_failure(const CreationFailure& creation)
{
    return {GroupFailure::Kind::NoClient, creation.error, creation};
}
} // namespace

// One daemon's calls.
struct CallGroup::Lane {
    explicit Lane(const ServiceClient& service) : service(service), query(service.program, server_version, Life::Long)
    {
    }

    const ServiceClient& service;
    Lane* next = nullptr;
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
        receive_ms = ms;
        return socket().set_wait(ms);
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
    lane->largest = units > datagram_units ? datagram_units : units > lane->largest ? units : lane->largest;
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

void CallGroup::expire(Lane& lane, int64_t now)
{
    for (GroupCall** link = &lane.sent; *link;) {
        if ((*link)->deadline.at > now) {
            link = &(*link)->next;
            continue;
        }
        end(lane.unlink_sent(link), call_failure(error_of(RPC_TIMEDOUT)));
        lane.is_doubted = true;
    }
    for (GroupCall** link = &lane.waiting; *link;) {
        GroupCall* call = *link;
        if (call->deadline.at > now) {
            link = &call->next;
            continue;
        }
        *link = call->next;
        end(*call, {GroupFailure::Kind::NotSent, error_of(RPC_TIMEDOUT), {}});
    }
    lane.last_waiting = &lane.waiting;
    while (*lane.last_waiting)
        lane.last_waiting = &(*lane.last_waiting)->next;
}

// Ends what is over, where the bound says that something may be.
void CallGroup::expire_all()
{
    const int64_t now = microseconds_now();
    if (bound.at > now)
        return;
    for (Lane* lane = lanes; lane; lane = lane->next) {
        expire(*lane, now);
        advance(*lane);
    }
    bound = next_deadline();
}

Deadline CallGroup::next_deadline() const
{
    Deadline next = {INT64_MAX};
    for (const Lane* lane = lanes; lane; lane = lane->next)
        for (const GroupCall* list : {lane->sent, lane->waiting})
            for (const GroupCall* call = list; call; call = call->next)
                next = next.or_sooner(call->deadline);
    return next;
}

Deadline CallGroup::next_due() const
{
    Deadline due = bound;
    for (const Lane* lane = lanes; lane; lane = lane->next)
        if (lane->asks)
            due = due.or_sooner(lane->query.next());
    return due;
}

Deadline CallGroup::exact_due()
{
    bound = next_deadline();
    return next_due();
}

// The only lane that has anything under way, or null.
CallGroup::Lane* CallGroup::only_lane() const
{
    Lane* only = nullptr;
    for (Lane* lane = lanes; lane; lane = lane->next) {
        if (!lane->asks && !lane->sent)
            continue;
        if (only || lane->asks || !lane->is_ready())
            return nullptr;
        only = lane;
    }
    return only;
}

// Receives one datagram of a lane, waiting in the socket's own receive, which
// saves looking before and after. False when that cannot be: its wait is not
// exact, so the last moments before a deadline are poll's.
bool CallGroup::receive_alone(Lane& lane, Deadline until)
{
    const int64_t left = (next_due().or_sooner(until).at - coarse_microseconds_now()) / us_of_ms - coarse_ms;
    if (left < least_receive_ms)
        return false;
    if (lane.receive_ms > left && !lane.limit_receive(left / 8 * 7))
        return false;
    take_some(lane, 0);
    advance(lane);
    return true;
}

void CallGroup::process()
{
    for (Lane* lane = lanes; lane; lane = lane->next)
        lane->socket().was_just_used = false;
    look({0});
}

void CallGroup::wait(Deadline until)
{
    Lane* alone = only_lane();
    if (!alone || !receive_alone(*alone, until))
        look(until);
}

// Waits for datagrams and takes those that came: once more before a deadline ends
// calls, for the process may have been stopped.
void CallGroup::look(Deadline until)
{
    pollfd descriptors[most_polled];
    Lane* of[most_polled];
    nfds_t count = 0;
    for (Lane* lane = lanes; lane && count < most_polled; lane = lane->next) {
        const bool is_open = lane->sent && lane->is_ready();
        for (const int fd : {lane->asks ? lane->query.fd() : -1, is_open ? lane->socket().fd : -1}) {
            if (fd < 0 || count == most_polled)
                continue;
            of[count] = lane;
            descriptors[count++] = {fd, POLLIN, 0};
        }
    }
    const int ready = poll(descriptors, count, next_due().or_sooner(until).left_for_poll());
    for (nfds_t i = 0; i < count; i++) {
        Lane& lane = *of[i];
        const bool is_readable = ready > 0 && descriptors[i].revents != 0;
        if (!lane.asks || descriptors[i].fd != lane.query.fd()) {
            if (is_readable)
                receive(lane);
            continue;
        }
        if (is_readable)
            use(lane, lane.query.receive());
        if (lane.asks)
            use(lane, lane.query.check_time());
        advance(lane);
    }
    expire_all();
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

bool CallGroup::watch(int fd)
{
    if (!epoll.is_open())
        return true;
    epoll_event event = {};
    event.events = EPOLLIN;
    const bool is_watched = epoll_ctl(epoll.fd, EPOLL_CTL_ADD, fd, &event) == 0;
    is_blind |= !is_watched;
    return is_watched;
}

int CallGroup::descriptor()
{
    if (epoll.is_open())
        return epoll.fd;
    if (!epoll.take(epoll_create1(EPOLL_CLOEXEC)))
        return -1;
    if (!timer.take(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) || !watch(timer.fd)) {
        timer.close();
        epoll.close();
        return -1;
    }
    is_blind = false;
    for (Lane* lane = lanes; lane; lane = lane->next) {
        if (lane->asks)
            watch(lane->query.fd());
        if (lane->is_ready())
            watch(lane->socket().fd);
    }
    return epoll.fd;
}

void CallGroup::set_alarm(Deadline due)
{
    if (!timer.is_open())
        return;
    if (is_blind && !due.is_never())
        due = due.or_sooner(Deadline::after(blind_ms));
    if (due.at == alarm.at)
        return;
    alarm = due;
    itimerspec when = {};
    if (!due.is_never()) {
        const int64_t left = due.left();
        when.it_value.tv_sec = left > 0 ? left / ms_of_second : 0;
        when.it_value.tv_nsec = left > 0 ? left % ms_of_second * 1000000 : 1;
    }
    timerfd_settime(timer.fd, 0, &when, nullptr);
}

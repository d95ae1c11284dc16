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
constexpr int most_a_turn = 256;   // datagrams that one lane takes before the next
constexpr int64_t usual_receive_ms = socket_wait_ms(TIMEOUT);
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
    explicit Lane(const ServiceClient& service) : service(service), query(service.program, server_version) {}

    const ServiceClient& service;
    Lane* next = nullptr;
    bool asks = false; // the port query is under way
    PortQuery query;
    UdpSocket own;
    Client* lent = nullptr;
    uint32_t xid = 0;
    size_t under_way = 0;         // kernel_memory of what was sent
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
    lane->wait_last(call);
    advance(*lane);
    return true;
}

// Sends what may be sent, and finds out where to, if need be.
void CallGroup::advance(Lane& lane)
{
    if (lane.is_doubted && !lane.sent)
        close(lane, true);
    if (!lane.waiting || lane.asks || ((!lane.is_ready() || lane.is_doubted) && !open(lane)))
        return;
    while (lane.waiting && (!lane.sent || lane.under_way + kernel_memory(lane.waiting->size) <= group_window)) {
        if (!lane.is_ready() || !send(lane, *lane.waiting))
            return;
    }
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
    use(lane, lane.query.start());
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
    new (&lane.query) PortQuery(lane.service.program, server_version);
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
    if (!open_udp_socket(lane.own, port, LocalPort::Reserved, random_bits(), usual_receive_ms)) {
        const CreationFailure refused = {RPC_SYSTEMERROR, error_of(RPC_SYSTEMERROR, errno)};
        return fail_waiting(lane, creation_failure(refused));
    }
    lane.xid = random_bits();
    watch(lane.own.fd);
}

// Sends the call that is first in its lane. False when the lane is to be looked
// after otherwise.
bool CallGroup::send(Lane& lane, GroupCall& call)
{
    uint32_t units[datagram_units];
    const size_t size = owner.encode(call, ++lane.xid, units);
    if (size == 0) {
        end(lane.pop_waiting(), call_failure(error_of(RPC_CANTENCODEARGS, ENOMEM)));
        return true;
    }
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
    GroupCall& sent = lane.pop_waiting();
    sent.xid = lane.xid;
    lane.append_sent(sent);
    return true;
}

void CallGroup::receive(Lane& lane)
{
    for (int taken = 0; lane.sent && lane.is_ready() && taken < most_a_turn && take_one(lane, MSG_DONTWAIT);)
        taken++;
    advance(lane);
}

// False when there was none.
bool CallGroup::take_one(Lane& lane, int flags)
{
    uint32_t units[datagram_units];
    const ssize_t got = lane.socket().receive(units, sizeof units, flags);
    if (got >= 0)
        take(lane, units, static_cast<size_t>(got));
    else if (errno != EAGAIN && errno != EINTR)
        lose(lane, error_of(RPC_CANTRECV, errno));
    return got >= 0;
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
    const int64_t now = milliseconds_now();
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
    const int64_t left = next_due().or_sooner(until).at - coarse_milliseconds_now() - coarse_ms;
    if (left < least_receive_ms)
        return false;
    if (lane.receive_ms > left && !lane.limit_receive(left / 8 * 7))
        return false;
    take_one(lane, 0);
    advance(lane);
    return true;
}

void CallGroup::process() { look({0}); }

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

void CallGroup::watch(int fd) const
{
    if (!epoll.is_open())
        return;
    epoll_event event = {};
    event.events = EPOLLIN;
    epoll_ctl(epoll.fd, EPOLL_CTL_ADD, fd, &event);
}

int CallGroup::descriptor()
{
    if (epoll.is_open())
        return epoll.fd;
    if (!epoll.take(epoll_create1(EPOLL_CLOEXEC)))
        return -1;
    if (!timer.take(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK))) {
        epoll.close();
        return -1;
    }
    watch(timer.fd);
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
    if (!timer.is_open() || due.at == alarm.at)
        return;
    alarm = due;
    itimerspec when = {};
    if (due.at < INT64_MAX) {
        const int64_t left = due.left();
        when.it_value.tv_sec = left > 0 ? left / ms_of_second : 0;
        when.it_value.tv_nsec = left > 0 ? left % ms_of_second * 1000000 : 1;
    }
    timerfd_settime(timer.fd, 0, &when, nullptr);
}

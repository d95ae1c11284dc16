// When a group's calls are due: waiting, deadlines, and the descriptor that tells an
// event loop, see call_group.h.
#include <cerrno>
#include <initializer_list>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/timerfd.h>

#include "rpc/call_group.h"

namespace
{
constexpr nfds_t most_polled = 64;       // descriptors that one wait looks at
constexpr int64_t blind_ms = 20;         // between looks at sockets that could not be watched
constexpr int64_t least_receive_ms = 50; // less is not worth a socket's own receive
} // namespace

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

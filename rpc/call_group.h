// Many calls at once, to several daemons: each is one datagram, sent once, with
// a deadline of its own. Replies are matched by xid. One thread at a time; no
// callback of a group calls Lua.
//
// A service's calls go through a lane: a socket of the group's own, found by a
// port query that runs beside those of other lanes. What is under way to one
// daemon, and back, is bounded, because more would be lost in the kernel's buffers
// before the daemon sees it; what does not fit waits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <rpc/rpc.h>

#include "rpc/client.h"
#include "rpc/clock.h"
#include "rpc/descriptor.h"
#include "rpc/port_mapper.h"
#include "rpc/udp_socket.h"

// Memory of the kernel's that one group's datagrams to one daemon, or back, may
// occupy. A socket's buffer has 212,992 bytes unless somebody says otherwise, of
// which a quarter may be counted for some time after it was read. Twice the window
// fits the rest: replies may come doubled, and another group may be under way.
constexpr size_t group_window = 72 * 1024;

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

// What a group asks of the owner of its calls.
struct GroupOwner {
    // Writes the call's message into datagram_units, more than once where need be; its
    // size, 0 without memory.
    size_t (*encode)(GroupCall& call, uint32_t xid, uint32_t* units);
    // The call has ended: with a datagram that bears its xid, from the daemon's
    // port, or without. False when that datagram is no reply to it.
    bool (*replied)(GroupCall& call, uint32_t* units, size_t size, uint16_t port);
    void (*failed)(GroupCall& call, const GroupFailure& failure);
};

// Whether lanes may use a service's idle clients, and leave theirs to others.
enum class LaneClients : uint8_t {
    Own,    // a socket each, for the group's life
    Shared, // lent while the group lives
};

class CallGroup
{
  public:
    CallGroup(GroupOwner owner, LaneClients clients) : owner(owner), clients(clients) {}
    ~CallGroup() { close(); }
    CallGroup(const CallGroup&) = delete;
    CallGroup& operator=(const CallGroup&) = delete;

    // Begins the call: sends it, asks for its daemon's port, or lets it wait its
    // turn. False without memory.
    bool add(GroupCall& call);
    // From now on add sends nothing, until send_gathered sends all.
    void gather() { is_gathering = true; }
    void send_gathered();
    // Takes what came and does what is due. Never waits.
    void process();
    // Waits until something came or is due, `until` at most; then process().
    void wait(Deadline until);
    // Ends every open call: as failed, those that still wait as not sent.
    void fail_all(const rpc_err& error);
    // Gives the open calls up without a word and closes every socket.
    void close();

    bool is_open() const { return open_calls > 0; }
    // When something is due next, or earlier; only while a call is open.
    Deadline next_due() const;
    // The same to the moment, at the price of a look at every call.
    Deadline exact_due();

    // A descriptor that is readable when there is something to do, from now on
    // for the group's life. -1 with errno where there is none.
    int descriptor();
    // Makes that descriptor readable now, or not before `due`.
    void set_alarm(Deadline due);

    // In a forked child, whose parent's calls these are: closes every descriptor
    // and nothing else.
    void close_in_child();

  private:
    struct Lane;

    Lane* lane_of(const ServiceClient& service);
    void advance(Lane& lane);
    bool open(Lane& lane);
    void use(Lane& lane, PortQuery::State state);
    bool send_some(Lane& lane);
    bool send(Lane& lane, const uint32_t* units, size_t size);
    void look(Deadline until);
    Lane* only_lane() const;
    bool receive_alone(Lane& lane, Deadline until);
    void receive(Lane& lane);
    bool take_some(Lane& lane, int flags);
    void take(Lane& lane, uint32_t* units, size_t size);
    void expire(Lane& lane, int64_t now);
    void expire_all();
    Deadline next_deadline() const;
    void end(GroupCall& call, const GroupFailure& failure);
    void fail_calls(GroupCall*& list, const GroupFailure& failure);
    void fail_waiting(Lane& lane, const GroupFailure& failure);
    void fail_sent(Lane& lane, const GroupFailure& failure);
    void lose(Lane& lane, const rpc_err& error);
    void close(Lane& lane, bool failed);
    bool watch(int fd); // false, with errno, where the kernel has no room for it

    const GroupOwner owner;
    const LaneClients clients;
    Lane* lanes = nullptr;
    size_t open_calls = 0;
    bool is_gathering = false;
    bool is_blind = false; // a socket could not be watched: the alarm tells to look
    Deadline bound = {0};  // no open call's deadline is before
    Deadline alarm = {INT64_MAX};
    Descriptor epoll, timer;
};

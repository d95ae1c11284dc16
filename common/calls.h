// Calls of APIs that run at once: arguments and replies as texts, each call's
// end kept until it is fetched. The wire is rpc/call_group.h's; Lua sees this
// through librpc.calls. One thread at a time.
#pragma once

#include "common/registry.h"
#include "common/service.h"
#include "common/status.h"
#include "rpc/call_group.h"

// One call, from its beginning until its end was fetched.
struct ApiCall : GroupCall {
    class ApiCalls* calls; // whose call it is
    ApiCall* next_finished;
    unsigned id;          // of the group's calls
    const Service* owner; // whose API it is
    const Api* api;       // null: the null procedure, which carries nothing
    CallStatus status;    // once it has ended
    char* text;           // of the reply; null without one
    size_t length;        // of that text
    uint16_t port;        // of the daemon; 0 where there was no answer
    double seconds;       // that it took, where they are told
    double begun;         // of the host's clock, where they are
    char argument[1];     // goes on behind the struct
};

// For how long the calls of one owner are: as memory and clock are best used.
enum class CallsOf : uint8_t {
    Page, // begun together, over together: one memory, given back at the end
    Loop, // any number over any time: each has its own memory, and its seconds told
};

class ApiCalls
{
  public:
    explicit ApiCalls(CallsOf whom);
    ~ApiCalls();
    ApiCalls(const ApiCalls&) = delete;
    ApiCalls& operator=(const ApiCalls&) = delete;

    // Begins a call of that node. Its id, or 0 with `status` filled: the call
    // has not begun and never ends.
    unsigned call(const char* name, const char* argument, Deadline deadline, CallStatus& status);
    // The same for the null procedure of a service (RFC 5531, section 12.1).
    unsigned call_null(const Service& service, Deadline deadline, CallStatus& status);
    // Leaves the next id out, so that ids are places in a list of which one did not begin.
    void skip_id() { last_id++; }

    // Calls that begin between these two are sent together, which is quicker.
    void gather() { group.gather(); }
    void send_gathered() { group.send_gathered(); }

    // Takes what came, without waiting.
    void process();
    // Waits until a call has ended, the time is over, or nobody waits any more:
    // every open call is then interrupted. A call whose own deadline is over ends
    // here even where the time was over before.
    void wait(Deadline until, const Caller& caller);

    // The call that ended first of those not yet dropped, or null: in the child
    // of a fork the ends are the parent's.
    ApiCall* first_finished() { return is_closed ? nullptr : finished; }
    void drop_finished();

    bool is_open() const { return group.is_open(); }
    // When there is something to do next, INT64_MAX where there is nothing.
    Deadline next_due();
    // See CallGroup::descriptor. From now on keep_alarm tells it what is due.
    int descriptor() { return group.descriptor(); }
    void keep_alarm();

    // Gives everything up.
    void close();
    // False after close(), and in the child of a fork.
    bool is_usable() const { return !is_closed; }

    ApiCalls* next = nullptr; // among those that a fork closes
    void close_in_child();

  private:
    static size_t encode(GroupCall& call, uint32_t xid, uint32_t* units);
    static bool replied(GroupCall& call, uint32_t* units, size_t size, uint16_t port);
    static void failed(GroupCall& call, const GroupFailure& failure);

    unsigned begin(const Service& service, const Api* api, const char* argument, Deadline deadline, CallStatus& status);
    void finish(ApiCall& call);
    void* allocate(size_t size);
    void release(void* memory);
    void release_blocks();

    struct Block;

    const CallsOf whom;
    Block* blocks = nullptr; // of a page, the newest first
    CallGroup group;
    ApiCall* finished = nullptr;
    ApiCall** last_finished = &finished;
    unsigned last_id = 0;
    bool is_closed = false;
};

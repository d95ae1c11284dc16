// Calls that run at once, see calls.h.
#include "common/calls.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <pthread.h>

#include "rpc/lock.h"

namespace
{
constexpr uint32_t null_procedure = 0;
constexpr char null_name[] = "null";

Mutex mutex; // guards the list
ApiCalls* all_calls;

void lock_list() { mutex.lock(); }
void unlock_list() { mutex.unlock(); }
void close_in_child()
{
    for (ApiCalls* calls = all_calls; calls; calls = calls->next)
        calls->close_in_child();
    mutex.unlock();
}

double seconds_now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// What a call needs while it is encoded or decoded.
struct Room {
    RecordRoom request, reply;
    char text[most_text_size];
};

Call null_call() { return {null_procedure, as_xdrproc(xdr_void), nullptr, as_xdrproc(xdr_void), nullptr}; }

const char* name_of(const ApiCall& call) { return call.api ? call.api->name : null_name; }

size_t size_of(const Api* api)
{
    const unsigned request = api && api->request ? api->request->units : 0;
    const unsigned reply = !api ? 0 : api->reply ? api->reply->units : 1;
    return call_header_size + sizeof(uint32_t) * std::max(request, reply);
}
} // namespace

struct alignas(max_align_t) ApiCalls::Block {
    Block* next;
    size_t used, size; // of the room behind this
};

ApiCalls::ApiCalls(CallsOf whom)
    : whom(whom), group({encode, replied, failed}, whom == CallsOf::Page ? LaneClients::Shared : LaneClients::Own)
{
    const Guard guard(mutex);
    static bool watching;
    if (!watching)
        watching = pthread_atfork(lock_list, unlock_list, ::close_in_child) == 0;
    next = all_calls;
    all_calls = this;
}

ApiCalls::~ApiCalls() { close(); }

void* ApiCalls::allocate(size_t size)
{
    if (whom == CallsOf::Loop)
        return malloc(size);
    constexpr size_t usual = 16 * 1024 - sizeof(Block) - 16, alignment = alignof(max_align_t);
    static_assert(sizeof(Block) % alignment == 0, "what stands behind a block is aligned");
    size = (size + alignment - 1) / alignment * alignment;
    if (!blocks || blocks->size - blocks->used < size) {
        const size_t room = std::max(size, usual);
        auto* block = static_cast<Block*>(malloc(sizeof(Block) + room));
        if (!block)
            return nullptr;
        *block = {blocks, 0, room};
        blocks = block;
    }
    char* memory = reinterpret_cast<char*>(blocks + 1) + blocks->used;
    blocks->used += size;
    return memory;
}

void ApiCalls::release(void* memory)
{
    if (whom == CallsOf::Loop)
        free(memory); // NOLINT(clang-analyzer-unix.Malloc): a loop's are pieces of their own
}

void ApiCalls::release_blocks()
{
    while (Block* block = blocks) {
        blocks = block->next;
        free(block);
    }
}

unsigned ApiCalls::begin(const Service& service, const Api* api, const char* argument, Deadline deadline,
                         CallStatus& status)
{
    const size_t length = strlen(argument);
    auto* call = static_cast<ApiCall*>(allocate(sizeof(ApiCall) + length));
    if (call) {
        call->service = service.client;
        call->deadline = deadline;
        call->size = size_of(api);
        call->calls = this;
        call->id = last_id + 1;
        call->owner = &service;
        call->api = api;
        call->text = nullptr;
        call->port = 0;
        call->seconds = 0;
        call->begun = whom == CallsOf::Loop || !api ? seconds_now() : 0;
        memcpy(call->argument, argument, length + 1);
        if (group.add(*call))
            return ++last_id;
        release(call);
    }
    status = no_memory(api ? api->name : null_name);
    return 0;
}

unsigned ApiCalls::call(const char* name, const char* argument, Deadline deadline, CallStatus& status)
{
    const FoundApi found = find_api(name);
    if (is_closed)
        status = group_closed(name);
    else if (!found.node)
        status = unknown_api(name);
    else if (!found.is_described())
        status = host_api(name);
    else
        return begin(*found.service, found.api, argument, deadline, status);
    return 0;
}

unsigned ApiCalls::call_null(const Service& service, Deadline deadline, CallStatus& status)
{
    if (!is_closed)
        return begin(service, nullptr, "", deadline, status);
    status = group_closed(null_name);
    return 0;
}

// Parsers cut up what they read, and a call whose socket turned out to be closed is
// encoded once more: they get a copy. 0 without memory for it.
size_t ApiCalls::encode(GroupCall& base, uint32_t xid, uint32_t* units)
{
    auto& call = static_cast<ApiCall&>(base);
    Room room;
    char* copy = room.text;
    const size_t size = strlen(call.argument) + 1;
    if (size > sizeof room.text) {
        copy = static_cast<char*>(malloc(size));
        if (!copy)
            return 0;
    }
    memcpy(copy, call.argument, size);
    const Call message =
        call.api ? make_call(*call.api, parse_argument(*call.api, room.request, copy), room.reply.bytes) : null_call();
    const CallHeader header = {xid, call.service->program, static_cast<uint32_t>(server_version), message.procedure};
    const size_t encoded = encode_call(header, message.encode, message.request, units);
    if (copy != room.text)
        free(copy);
    return encoded;
}

bool ApiCalls::replied(GroupCall& base, uint32_t* units, size_t size, uint16_t port)
{
    auto& call = static_cast<ApiCall&>(base);
    Room room;
    const Call message = call.api ? make_call(*call.api, nullptr, room.reply.bytes) : null_call();
    rpc_err error;
    call.port = port;
    call.length = 0;
    const bool is_reply = decode_reply(units, size, message.decode, message.reply, error) == RPC_SUCCESS;
    if (is_reply) {
        if (call.api)
            call.length = format_reply(*call.api, room.reply, room.text);
        call.text = static_cast<char*>(call.calls->allocate(call.length + 1));
    }
    if (call.text)
        memcpy(call.text, room.text, call.length);
    else
        call.status = is_reply ? no_memory(name_of(call)) : failed_call(name_of(call), call.owner, error);
    call.calls->finish(call);
    return is_reply;
}

void ApiCalls::failed(GroupCall& base, const GroupFailure& failure)
{
    auto& call = static_cast<ApiCall&>(base);
    switch (failure.kind) {
    case GroupFailure::Kind::Call:
        call.status = failed_call(name_of(call), call.owner, failure.error);
        break;
    case GroupFailure::Kind::NoClient:
        call.status = no_client(name_of(call), call.owner, failure.creation);
        break;
    case GroupFailure::Kind::NotSent:
        call.status = not_sent(name_of(call), call.owner);
        break;
    }
    call.calls->finish(call);
}

void ApiCalls::finish(ApiCall& call)
{
    if (call.begun > 0)
        call.seconds = seconds_now() - call.begun;
    call.next_finished = nullptr;
    *last_finished = &call;
    last_finished = &call.next_finished;
}

void ApiCalls::drop_finished()
{
    ApiCall* call = finished;
    finished = call->next_finished;
    if (!finished)
        last_finished = &finished;
    release(call->text);
    release(call);
}

void ApiCalls::process()
{
    if (!is_closed)
        group.process();
}

// Looks at least once, however late it is: whoever waits until something has ended
// relies on deadlines being found over.
void ApiCalls::wait(Deadline until, const Caller& caller)
{
    while (!finished && is_open() && !is_closed) {
        group.wait(until);
        if (finished)
            break;
        if (caller.has_given_up()) {
            rpc_err error = {};
            error.re_status = RPC_INTR;
            error.re_errno = EINTR;
            group.fail_all(error);
        }
        if (until.left() <= 0)
            break;
    }
}

Deadline ApiCalls::next_due()
{
    if (is_closed || (!finished && !is_open()))
        return {INT64_MAX};
    return finished ? Deadline{0} : group.exact_due();
}

// An alarm that rings early costs its host one look.
void ApiCalls::keep_alarm()
{
    if (is_closed || (!finished && !is_open()))
        group.set_alarm({INT64_MAX});
    else
        group.set_alarm(finished ? Deadline{0} : group.next_due());
}

void ApiCalls::close()
{
    {
        const Guard guard(mutex);
        for (ApiCalls** link = &all_calls; *link; link = &(*link)->next)
            if (*link == this) {
                *link = next;
                break;
            }
    }
    group.fail_all({}); // which nobody will hear of
    while (finished)
        drop_finished();
    release_blocks();
    group.close();
    is_closed = true;
}

void ApiCalls::close_in_child()
{
    group.close_in_child();
    is_closed = true;
}

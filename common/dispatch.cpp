// callapi, see dispatch.h. Lua's errors are longjmps: nothing here that is alive
// when one can be raised needs a destructor, or is heap memory.
#include "common/dispatch.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <lua.hpp>

#include "common/registry.h"
#include "common/service.h"
#include "common/state.h"
#include "common/status.h"
#include "common/trace.h"
#include "rpc/client.h"
#include "rpc/lock.h"

// The trace lines name the function that Lua calls.
#define TRACE_CALL(line, ...) TRACE_AS("lua_callapi", line, __VA_ARGS__)

namespace
{
// Storage of one call.
struct Room {
    uint32_t units[datagram_units];
    RecordRoom request, reply;
    char text[most_text_size];
};

// A text that the parsers may cut up: short ones stand here, long ones in heap
// memory.
struct Copy {
    char* text;
    char room[1024];

    bool make(const char* from)
    {
        const size_t size = strlen(from) + 1;
        text = size <= sizeof room ? room : static_cast<char*>(malloc(size));
        if (text)
            memcpy(text, from, size);
        return text != nullptr;
    }
    void drop()
    {
        if (text != room)
            free(text);
    }
};

Turn host_functions; // whose host's own functions run

void trace_api(const ApiNode& api)
{
    printf("[%s: %d]", "lua_callapi", 169);
    print_api(api);
    printf(".\r\n");
}

// A call of one of our APIs, on storage of its own.
int call_described(lua_State* L, const FoundApi& found, Copy& copy)
{
    Room room;
    const Api& api = *found.api;
    const Service& service = *found.service;
    const Deadline deadline = Deadline::after(TIMEOUT);
    const Caller caller = caller_of(L);
    CreationFailure no;
    Client* client = lend_client(*service.client, deadline, caller, no);
    if (!client) {
        copy.drop();
        tell_creation_failure(no);
        note_failure(L, no_client(api.name, &service, no));
        TRACE_CALL(171, "%s clnt init failed", api.name);
        return 0;
    }
    const Call call = make_call(api, parse_argument(api, room.request, copy.text), room.reply.bytes);
    copy.drop();
    rpc_err error;
    const bool failed = call_client(*service.client, *client, call, deadline, caller, room.units, error) != RPC_SUCCESS;
    if (failed) {
        note_failure(L, failed_call(api.name, &service, error));
        TRACE_CALL(181, "%s func called failed", api.name);
    }
    give_back_client(*service.client, *client, failed);
    if (failed)
        return 0;
    note_success(L);
    lua_pushlstring(L, room.text, format_reply(api, room.reply, room.text));
    return 1;
}

// What came of a call through a node's own functions.
struct HostCall {
    bool failed;
    CallStatus status;
    size_t length;
    char* text; // of the reply: in `room`, or in heap memory
    char room[most_text_size];
};

bool keep_text(const char* text, HostCall& outcome)
{
    outcome.length = strlen(text);
    if (outcome.length > sizeof outcome.room)
        outcome.text = static_cast<char*>(malloc(outcome.length));
    if (outcome.text)
        memcpy(outcome.text, text, outcome.length);
    return outcome.text != nullptr;
}

// The five functions in their order. Their results are static storage of
// theirs, so they are copied before anybody else may call.
void run_functions(const ApiNode& api, char* argument, HostCall& outcome)
{
    const Service* service = service_of(api);
    outcome.failed = true;
    rpc_createerr = {}; // a host's function need not say why, and another call's reason is not this one's
    CLIENT* clnt = api.clntinit();
    if (!clnt) {
        const CreationFailure no = {rpc_createerr.cf_stat, rpc_createerr.cf_error};
        outcome.status = no_client(api.name, service, no);
        TRACE_CALL(171, "%s clnt init failed", api.name);
        return;
    }
    void* reply = api.func(api.str2arg(argument), clnt);
    if (!reply) {
        rpc_err error = {};
        error.re_status = RPC_FAILED;
        if (service) // another's API may have a client that is no handle of ours
            clnt_geterr(clnt, &error);
        outcome.status = failed_call(api.name, service, error);
        TRACE_CALL(181, "%s func called failed", api.name);
        api.clntdestroy();
        return;
    }
    outcome.failed = !keep_text(api.ret2str(reply), outcome);
    if (outcome.failed)
        outcome.status = no_memory(api.name);
}

int push_text(lua_State* L)
{
    const auto* outcome = static_cast<const HostCall*>(lua_touserdata(L, 1));
    lua_pushlstring(L, outcome->text, outcome->length);
    return 1;
}

// A call of a node that a host made, which knows nothing but functions. Pushes
// the text by push_text, which lies on the stack.
int call_functions(lua_State* L, const ApiNode& api, Copy& copy)
{
    HostCall outcome;
    outcome.text = outcome.room;
    const Caller caller = caller_of(L);
    host_functions.take();
    set_handle_caller(&caller);
    run_functions(api, copy.text, outcome);
    set_handle_caller(nullptr);
    host_functions.pass_on();
    copy.drop();
    if (outcome.failed) {
        note_failure(L, outcome.status);
        return 0;
    }
    note_success(L);
    lua_pushlightuserdata(L, &outcome);
    const int status = lua_pcall(L, 1, 1, 0); // memory may run out, and the text is to be freed
    if (outcome.text != outcome.room)
        free(outcome.text);
    return status == 0 ? 1 : lua_error(L);
}
} // namespace

int lua_callapi(lua_State* L)
{
    const char* name = luaL_checklstring(L, 1, nullptr);
    const char* str = luaL_checklstring(L, 2, nullptr);
    TRACE_CALL(160, "name %s, str %s", name ? name : "nil", str ? str : "nil");
    if (!name || !str)
        return 0;
    const FoundApi found = find_api(name);
    const bool described = found.is_described();
    if (!described)
        lua_pushcfunction(L, push_text); // memory may run out, so before the copy is made
    Copy copy;
    if (!copy.make(str)) {
        note_failure(L, no_memory(name));
        return 0;
    }
    if (!found.node) {
        copy.drop();
        note_failure(L, unknown_api(name));
        TRACE_CALL(165, "api %s not found", name);
        return 0;
    }
    if (is_tracing())
        trace_api(*found.node);
    return described ? call_described(L, found, copy) : call_functions(L, *found.node, copy);
}

// The Lua module librpc.calls: many calls at once, for pages and event loops.
// Lua's errors are longjmps: what needs closing lives in userdata with a __gc.
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <lua.hpp>
#include <new>

#include "common/calls.h"
#include "common/schema.h"
#include "common/state.h"
#include "common/status_module.h"

// Opens the module: leaves the table on the stack.
EXPORT int luaopen_librpc_calls(lua_State* L);

namespace
{
constexpr char group_type[] = "librpc.calls.group";
constexpr char message_type[] = "librpc.calls.message";
constexpr double most_seconds = 1e6;
constexpr Deadline no_deadline = {INT64_MAX}; // each call has its own

// Seconds as an argument: a deadline from now, 25 seconds where there is none.
Deadline check_deadline(lua_State* L, int index)
{
    if (lua_isnoneornil(L, index))
        return Deadline::after(TIMEOUT);
    const double seconds = luaL_checknumber(L, index);
    luaL_argcheck(L, seconds >= 0, index, "expected seconds, found a negative number or none");
    return Deadline::after(static_cast<int64_t>(std::min(seconds, most_seconds) * ms_of_second));
}

void set_field_text(lua_State* L, const char* key, const char* text)
{
    lua_pushstring(L, text);
    lua_setfield(L, -2, key);
}

// Pushes { code =, message =, details = }.
void push_failure_table(lua_State* L, const CallStatus& status)
{
    lua_createtable(L, 0, 3);
    push_failure(L, status);
    lua_setfield(L, -4, "details");
    lua_setfield(L, -3, "message");
    lua_setfield(L, -2, "code");
}

// Pushes nil, a message and a code.
int push_refusal(lua_State* L, const CallStatus& status)
{
    char text[status_text_size];
    write_sentence(status, text);
    lua_pushnil(L);
    lua_pushstring(L, text);
    lua_pushstring(L, name_of(status.code));
    return 3;
}

// Pushes the call's text, or false; then nil, or its failure.
void push_end(lua_State* L, const ApiCall& call)
{
    if (call.text) {
        lua_pushlstring(L, call.text, call.length);
        lua_pushnil(L);
    } else {
        lua_pushboolean(L, 0);
        push_failure_table(L, call.status);
    }
}

ApiCalls& push_calls(lua_State* L, CallsOf whom)
{
    luaL_getmetatable(L, group_type); // first: once there are calls, nothing may raise before their __gc is set
    auto* calls = new (lua_newuserdata(L, sizeof(ApiCalls))) ApiCalls(whom);
    lua_insert(L, -2);
    lua_setmetatable(L, -2);
    return *calls;
}

// ---------------------------------------------------------------- one page

// A second set of one table would race the first: the table that `seen` stands at
// has those of the list so far. Only a name that holds "_set" can be a set's.
void refuse_second_set(lua_State* L, int seen, int item, const char* name)
{
    const FoundApi found = strstr(name, "_set") ? find_api(name) : FoundApi{};
    if (!found.api || split_name(*found.api).operation != Operation::Set)
        return;
    const std::string_view table = split_name(*found.api).table;
    lua_pushlstring(L, table.data(), table.size());
    lua_pushvalue(L, -1);
    lua_rawget(L, seen);
    if (!lua_isnil(L, -1))
        luaL_error(L,
                   "calls.all: item %d: expected one set of a table, found a second of %s (their order is not "
                   "promised: callapi keeps it)",
                   item, found.node->name);
    lua_pop(L, 1);
    lua_pushboolean(L, 1);
    lua_rawset(L, seen);
}

// How many items there are, each { name [, argument] }.
int check_items(lua_State* L, int list)
{
    luaL_checktype(L, list, LUA_TTABLE);
#if LUA_VERSION_NUM == 501
    const auto length = lua_objlen(L, list);
#else
    const auto length = lua_rawlen(L, list);
#endif
    const int count = length < INT_MAX ? static_cast<int>(length) : INT_MAX;
    lua_newtable(L);
    const int seen = lua_gettop(L);
    for (int i = 1; i <= count; i++) {
        lua_rawgeti(L, list, i);
        if (!lua_istable(L, -1))
            luaL_error(L, "calls.all: item %d: expected { name, argument }, found a %s", i, luaL_typename(L, -1));
        lua_rawgeti(L, -1, 1);
        if (!lua_isstring(L, -1))
            luaL_error(L, "calls.all: item %d: expected an API's name, found a %s", i, luaL_typename(L, -1));
        lua_rawgeti(L, -2, 2);
        if (!lua_isnoneornil(L, -1) && !lua_isstring(L, -1))
            luaL_error(L, "calls.all: item %d: expected an argument's text, found a %s", i, luaL_typename(L, -1));
        refuse_second_set(L, seen, i, lua_tostring(L, -2));
        lua_pop(L, 3);
    }
    lua_pop(L, 1);
    return count;
}

// Puts a call's end, the two values on top, into the tables at `texts` and
// `texts` + 1. Pops them.
void set_end(lua_State* L, int texts, int place)
{
    if (lua_isnil(L, -1)) // which would take a place, too
        lua_pop(L, 1);
    else
        lua_rawseti(L, texts + 1, place);
    lua_rawseti(L, texts, place);
}

// Waits for every open call; a call's id is its place.
void collect(lua_State* L, ApiCalls& calls, int texts)
{
    const Caller caller = caller_of(L);
    while (calls.is_open() || calls.first_finished()) {
        calls.wait(no_deadline, caller);
        while (const ApiCall* call = calls.first_finished()) {
            push_end(L, *call);
            set_end(L, texts, static_cast<int>(call->id));
            calls.drop_finished();
        }
    }
}

// calls.all(list [, seconds]): texts, failures.
int all(lua_State* L)
{
    lua_settop(L, 2);
    const int count = check_items(L, 1);
    const Deadline deadline = check_deadline(L, 2);
    constexpr int texts = 3;
    lua_createtable(L, count, 0);
    lua_newtable(L); // failures
    ApiCalls& calls = push_calls(L, CallsOf::Page);
    calls.gather();
    for (int i = 1; i <= count; i++) {
        lua_rawgeti(L, 1, i);
        lua_rawgeti(L, -1, 1);
        lua_rawgeti(L, -2, 2);
        CallStatus status;
        const char* argument = lua_isnil(L, -1) ? "" : lua_tostring(L, -1);
        const unsigned id = calls.call(lua_tostring(L, -2), argument, deadline, status);
        lua_pop(L, 3);
        if (id != 0)
            continue;
        calls.skip_id();
        lua_pushboolean(L, 0);
        push_failure_table(L, status);
        set_end(L, texts, i);
    }
    calls.send_gathered();
    collect(L, calls, texts);
    calls.close();
    lua_settop(L, texts + 1);
    return 2;
}

// Puts into the list at 1 what the service's daemon said.
void tell_of_service(lua_State* L, const ApiCall& call)
{
    int place = 1;
    while (all_services[static_cast<size_t>(place) - 1] != call.owner)
        place++;
    lua_rawgeti(L, 1, place);
    if (call.port != 0) {
        lua_pushinteger(L, call.port);
        lua_setfield(L, -2, "port");
    }
    if (call.text) {
        lua_pushnumber(L, call.seconds);
        lua_setfield(L, -2, "seconds");
    } else {
        push_failure_table(L, call.status);
        lua_setfield(L, -2, "failure");
    }
    lua_pop(L, 1);
}

// calls.services([seconds]): the null procedure of every service, all at once,
// as { { service =, program =, title =, port =, seconds = or failure = }, ... }.
int services(lua_State* L)
{
    const Deadline deadline = check_deadline(L, 1);
    lua_settop(L, 0);
    lua_createtable(L, static_cast<int>(all_services.size()), 0);
    ApiCalls& calls = push_calls(L, CallsOf::Page);
    int place = 0;
    for (const Service* service : all_services) {
        lua_createtable(L, 0, 5);
        set_field_text(L, "service", service->name);
        set_field_text(L, "title", service->title);
        lua_pushnumber(L, static_cast<lua_Number>(service->program));
        lua_setfield(L, -2, "program");
        CallStatus status;
        if (calls.call_null(*service, deadline, status) == 0) {
            push_failure_table(L, status);
            lua_setfield(L, -2, "failure");
        }
        lua_rawseti(L, 1, ++place);
    }
    const Caller caller = caller_of(L);
    while (calls.is_open() || calls.first_finished()) {
        calls.wait(no_deadline, caller);
        while (const ApiCall* call = calls.first_finished()) {
            tell_of_service(L, *call);
            calls.drop_finished();
        }
    }
    calls.close();
    lua_settop(L, 1);
    return 1;
}

// ---------------------------------------------------------- an event loop

ApiCalls& check_group(lua_State* L) { return *static_cast<ApiCalls*>(luaL_checkudata(L, 1, group_type)); }

// calls.group()
int make_group(lua_State* L)
{
    push_calls(L, CallsOf::Loop);
    return 1;
}

// group:call(name, argument [, seconds]): an id, or nil, a message, a code.
int group_call(lua_State* L)
{
    ApiCalls& calls = check_group(L);
    const char* name = luaL_checkstring(L, 2);
    const char* argument = luaL_checkstring(L, 3);
    const Deadline deadline = check_deadline(L, 4);
    CallStatus status;
    const unsigned id = calls.call(name, argument, deadline, status);
    calls.keep_alarm();
    if (id == 0)
        return push_refusal(L, status);
    lua_pushinteger(L, static_cast<lua_Integer>(id));
    return 1;
}

// group:pollfd(): the descriptor, or nil, a message, a code.
int group_pollfd(lua_State* L)
{
    ApiCalls& calls = check_group(L);
    const int fd = calls.is_usable() ? calls.descriptor() : (errno = EBADF, -1);
    if (fd < 0) {
        lua_pushnil(L);
        lua_pushfstring(L, "group:pollfd: expected a descriptor, found none: %s", strerror(errno));
        lua_pushstring(L, name_of(calls.is_usable() ? CallCode::NoClient : CallCode::Closed));
        return 3;
    }
    calls.keep_alarm();
    lua_pushinteger(L, fd);
    return 1;
}

int group_events(lua_State* L)
{
    check_group(L);
    lua_pushliteral(L, "r");
    return 1;
}

// group:timeout(): seconds until there is something to do; nil where nothing is
// open.
int group_timeout(lua_State* L)
{
    const Deadline due = check_group(L).next_due();
    if (due.at == INT64_MAX)
        lua_pushnil(L);
    else
        lua_pushnumber(L, static_cast<double>(std::max<int64_t>(due.left(), 0)) / ms_of_second);
    return 1;
}

// The iterator: id, text or false, nil or the failure, seconds.
int next_finished(lua_State* L)
{
    ApiCalls& calls = check_group(L);
    const ApiCall* call = calls.first_finished();
    if (!call) {
        calls.keep_alarm();
        return 0;
    }
    lua_pushinteger(L, static_cast<lua_Integer>(call->id));
    push_end(L, *call);
    lua_pushnumber(L, call->seconds);
    calls.drop_finished(); // only now: memory may have run out before
    return 4;
}

// group:finished(), for use with `for`.
int group_finished(lua_State* L)
{
    ApiCalls& calls = check_group(L);
    calls.process();
    lua_pushcfunction(L, next_finished);
    lua_pushvalue(L, 1);
    return 2;
}

// group:wait([seconds]): true once something is finished; false when the time is
// over or nothing is open; nil, a message, a code where the group is dead.
int group_wait(lua_State* L)
{
    ApiCalls& calls = check_group(L);
    const Deadline until = lua_isnoneornil(L, 2) ? no_deadline : check_deadline(L, 2);
    if (!calls.is_usable())
        return push_refusal(L, group_closed("group:wait"));
    calls.wait(until, caller_of(L));
    calls.keep_alarm();
    lua_pushboolean(L, calls.first_finished() != nullptr);
    return 1;
}

// group:close(), and __gc.
int group_close(lua_State* L)
{
    check_group(L).close();
    return 0;
}

// ------------------------------------------- a socket of somebody else's

// A call whose datagrams travel through a socket of the host's own.
struct Message {
    const Service* service;
    const Api* api;
    uint32_t xid;
};

struct MessageRoom {
    uint32_t units[datagram_units];
    RecordRoom request, reply;
    char text[most_text_size];
};

// calls.message(name, argument): the datagram, the address and the port to send
// it to, and the message; or nil, a message, a code.
int make_message(lua_State* L)
{
    const char* name = luaL_checkstring(L, 1);
    const char* argument = luaL_checkstring(L, 2);
    const FoundApi found = find_api(name);
    if (!found.node)
        return push_refusal(L, unknown_api(name));
    if (!found.is_described())
        return push_refusal(L, host_api(name));
    uint16_t port = 0;
    CreationFailure failure;
    if (!find_port(*found.service->client, Deadline::after(TIMEOUT), caller_of(L), port, failure))
        return push_refusal(L, no_client(name, found.service, failure));

    MessageRoom room;
    const size_t size = strlen(argument) + 1;
    auto* copy = static_cast<char*>(lua_newuserdata(L, size)); // parsers cut up what they read
    memcpy(copy, argument, size);
    const uint32_t xid = random_bits().call_xid;
    const Call call = make_call(*found.api, parse_argument(*found.api, room.request, copy), room.reply.bytes);
    const CallHeader header = {xid, found.service->client->program, static_cast<uint32_t>(server_version),
                               call.procedure};
    const size_t length = encode_call(header, call.encode, call.request, room.units);
    lua_pushlstring(L, reinterpret_cast<const char*>(room.units), length);
    lua_pushstring(L, server_host);
    lua_pushinteger(L, port);
    auto* message = static_cast<Message*>(lua_newuserdata(L, sizeof(Message)));
    *message = {found.service, found.api, xid};
    luaL_getmetatable(L, message_type);
    lua_setmetatable(L, -2);
    return 4;
}

// message:reply(datagram): the text; nil for a datagram that is not this call's;
// false and the failure for one that says why there is none.
int message_reply(lua_State* L)
{
    const auto& message = *static_cast<Message*>(luaL_checkudata(L, 1, message_type));
    size_t size;
    const char* datagram = luaL_checklstring(L, 2, &size);
    MessageRoom room;
    if (size > sizeof room.units)
        size = sizeof room.units; // what a longer one has behind that is not read
    memcpy(room.units, datagram, size);
    if (!answers(static_cast<ssize_t>(size), room.units, message.xid)) {
        lua_pushnil(L);
        return 1;
    }
    const Call call = make_call(*message.api, nullptr, room.reply.bytes);
    rpc_err error;
    if (decode_reply(room.units, size, call.decode, call.reply, error) != RPC_SUCCESS) {
        lua_pushboolean(L, 0);
        push_failure_table(L, failed_call(message.api->name, message.service, error));
        return 2;
    }
    lua_pushlstring(L, room.text, format_reply(*message.api, room.reply, room.text));
    return 1;
}

// message:lost(): the socket was refused, or the time is over: the daemon's port
// is asked for again by the next message.
int message_lost(lua_State* L)
{
    forget_port(*static_cast<Message*>(luaL_checkudata(L, 1, message_type))->service->client);
    return 0;
}

void make_type(lua_State* L, const char* name, const luaL_Reg* methods)
{
    luaL_newmetatable(L, name);
    lua_pushvalue(L, -1);
    lua_setfield(L, -2, "__index");
    for (; methods->name; methods++) {
        lua_pushcfunction(L, methods->func);
        lua_setfield(L, -2, methods->name);
    }
    lua_pop(L, 1);
}

const luaL_Reg group_methods[] = {
    {"call", group_call},       {"pollfd", group_pollfd},     {"events", group_events},
    {"timeout", group_timeout}, {"finished", group_finished}, {"wait", group_wait},
    {"close", group_close},     {"__gc", group_close},        {nullptr, nullptr},
};
const luaL_Reg message_methods[] = {{"reply", message_reply}, {"lost", message_lost}, {nullptr, nullptr}};
const luaL_Reg functions[] = {
    {"all", all}, {"group", make_group}, {"message", make_message}, {"services", services}, {nullptr, nullptr},
};
} // namespace

int luaopen_librpc_calls(lua_State* L)
{
    lua_getglobal(L, "require"); // the APIs are librpc's to register
    lua_pushliteral(L, "librpc");
    lua_call(L, 1, 0);
    make_type(L, group_type, group_methods);
    make_type(L, message_type, message_methods);
    lua_createtable(L, 0, 4);
    for (const luaL_Reg* function = functions; function->name; function++) {
        lua_pushcfunction(L, function->func);
        lua_setfield(L, -2, function->name);
    }
    return 1;
}

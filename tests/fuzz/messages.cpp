// Reply datagrams, any, through message:reply of librpc.calls, as a host hands
// over what its own socket received.
//
// Input: API (2), then datagrams: kind (1, see datagrams.h), size (2), bytes.
#include <lua.hpp>

#include "rpc/client.h"
#include "tests/fuzz/datagrams.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/reference.h"

extern "C" int luaopen_librpc_calls(lua_State* L);

namespace
{
constexpr unsigned most_datagrams = 8;

int nothing(lua_State*) { return 0; }

// A state with calls.message at index 1. The APIs are registered, and every
// daemon's port is known, so that nobody asks for it.
lua_State* open_state()
{
    lua_State* L = luaL_newstate();
    EXPECT(L, "a Lua state", "none");
    luaL_openlibs(L);
    for (const Service* service : all_services) {
        service->init();
        service->client->pool->port = 9;
    }
    lua_getglobal(L, "package");
    lua_getfield(L, -1, "preload");
    lua_pushcfunction(L, nothing);
    lua_setfield(L, -2, "librpc");
    lua_settop(L, 0);
    lua_pushcfunction(L, luaopen_librpc_calls);
    lua_call(L, 0, 1);
    lua_getfield(L, 1, "message");
    lua_remove(L, 1);
    return L;
}

// The message is at index 2.
void check_reply(lua_State* L, const Api& api, const std::string& datagram, uint32_t xid)
{
    lua_getfield(L, 2, "reply");
    lua_pushvalue(L, 2);
    lua_pushlstring(L, datagram.data(), datagram.size());
    EXPECT(lua_pcall(L, 2, 2, 0) == 0, "no Lua error", "%s", lua_tostring(L, -1));
    if (!is_of_call(datagram, xid)) {
        EXPECT(lua_isnil(L, -2) && lua_isnil(L, -1), "nil for another's datagram", "%s", luaL_typename(L, -2));
    } else if (const Outcome outcome = outcome_of(datagram, api); !outcome.success) {
        EXPECT(lua_isboolean(L, -2) && !lua_toboolean(L, -2) && lua_istable(L, -1), "false and a failure", "%s and %s",
               luaL_typename(L, -2), luaL_typename(L, -1));
    } else {
        EXPECT(lua_type(L, -2) == LUA_TSTRING && lua_isnil(L, -1), "a text", "%s", luaL_typename(L, -2));
        const std::string text = lua_tostring(L, -2);
        if (api.reply) {
            EXPECT(text == reference::format(*api.output(), outcome.reply.data()), "the text of the plain writing",
                   "\"%s\" of %s", text.c_str(), api.name);
        } else if (!api.output()) {
            int status;
            memcpy(&status, outcome.reply.data(), sizeof status);
            EXPECT(text == std::to_string(status), "the status in decimal", "\"%s\"", text.c_str());
        }
    }
    lua_pop(L, 2);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static lua_State* const L = open_state();
    Input input(data, size);
    const Api& api = choose_api(input);
    const size_t reply_size = BYTES_PER_XDR_UNIT * (api.reply ? api.reply->units : 1);

    lua_settop(L, 1);
    lua_pushvalue(L, 1);
    lua_pushstring(L, api.name);
    lua_pushliteral(L, "");
    lua_call(L, 2, 4);
    size_t length;
    const char* call = lua_tolstring(L, 2, &length);
    EXPECT(call && length == 40 + 4 * size_t{api.request ? api.request->units : 0U}, "a call message", "%zu bytes",
           call ? length : 0);
    uint32_t xid;
    memcpy(&xid, call, sizeof xid);
    xid = ntohl(xid);
    lua_replace(L, 2);
    lua_settop(L, 2);

    for (unsigned i = 0; i < most_datagrams && input.left() > 0; i++)
        check_reply(L, api, make_datagram(input, input.byte(), xid, reply_size), xid);
    return 0;
}

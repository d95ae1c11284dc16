// What Lua sees: luaopen_librpc and the table librpc.
#include <cstdio>
#include <lua.hpp>

#include "common/dispatch.h"
#include "common/registry.h"
#include "common/service.h"
#include "common/trace.h"
#include "rpc/client.h"

// showapi(): lists the registry on standard output, whatever rpclib_dbg says.
EXPORT int lua_showapi(lua_State* L);
// enabledebug(), disabledebug(): switch the trace lines on and off.
EXPORT int lua_enabledebug(lua_State* L);
EXPORT int lua_disabledebug(lua_State* L);
// Opens the module: the global table librpc, left on the stack, and every API
// in the registry. Opened again, every API is registered anew.
EXPORT int luaopen_librpc(lua_State* L);

int lua_showapi(lua_State*)
{
    for (ListLinks* at = apinode_head.next; at != &apinode_head; at = at->next) {
        print_api(*static_cast<const ApiNode*>(at));
        printf("\r\n");
    }
    return 0;
}

int lua_enabledebug(lua_State*)
{
    rpclib_dbg = 1;
    return 0;
}

int lua_disabledebug(lua_State*)
{
    rpclib_dbg = 0;
    return 0;
}

namespace
{
const luaL_Reg librpc[] = {
    {"callapi", lua_callapi},           {"showapi", lua_showapi}, {"enabledebug", lua_enabledebug},
    {"disabledebug", lua_disabledebug}, {nullptr, nullptr},
};

// The sockets go when the last Lua state that opened the module closes; the
// library itself stays loaded (see CMakeLists.txt), and its registry with it.
int open_states;
const char closer_key = 0;

int close_state(lua_State*)
{
    if (--open_states == 0)
        destroy_all_clients();
    return 0;
}

void watch_state(lua_State* L)
{
    lua_pushlightuserdata(L, const_cast<char*>(&closer_key));
    lua_rawget(L, LUA_REGISTRYINDEX);
    if (lua_isnil(L, -1)) {
        lua_pushlightuserdata(L, const_cast<char*>(&closer_key));
        lua_newuserdata(L, 0);
        lua_newtable(L);
        lua_pushcfunction(L, close_state);
        lua_setfield(L, -2, "__gc");
        open_states++; // from here on, close_state is called
        lua_setmetatable(L, -2);
        lua_rawset(L, LUA_REGISTRYINDEX);
    }
    lua_pop(L, 1);
}

// In each Lua the table of that name, which stays the same when the module is
// opened again.
void open_table(lua_State* L)
{
#if LUA_VERSION_NUM == 501
    luaL_openlib(L, "librpc", librpc, 0);
#else
    lua_getglobal(L, "librpc");
    if (!lua_istable(L, -1)) {
        lua_pop(L, 1);
        lua_newtable(L);
        lua_pushvalue(L, -1);
        lua_setglobal(L, "librpc");
    }
    luaL_setfuncs(L, librpc, 0);
#endif
}
} // namespace

int luaopen_librpc(lua_State* L)
{
    watch_state(L);
    open_table(L);
    for (const Service* service : all_services)
        service->init();
    return 1;
}

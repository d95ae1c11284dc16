// What Lua sees: luaopen_librpc and the table librpc.
#include <lua.hpp>

#include "common/dispatch.h"
#include "common/registry.h"
#include "common/service.h"
#include "common/state.h"
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
    print_list();
    return 0;
}

int lua_enabledebug(lua_State*)
{
    set_tracing(true);
    return 0;
}

int lua_disabledebug(lua_State*)
{
    set_tracing(false);
    return 0;
}

namespace
{
const luaL_Reg librpc[] = {
    {"callapi", lua_callapi},           {"showapi", lua_showapi}, {"enabledebug", lua_enabledebug},
    {"disabledebug", lua_disabledebug}, {nullptr, nullptr},
};

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
    open_state(L);
    open_table(L);
    for (const Service* service : all_services)
        service->init();
    return 1;
}

/* A Lua module that does nothing but depend on libtirpc: what loading it costs
   is the floor for loading the library. */
#include <lua.h>
#include <rpc/rpc.h>

int luaopen_only_tirpc(lua_State* L);

int luaopen_only_tirpc(lua_State* L)
{
    static CLIENT* (*volatile needed)(const char*, rpcprog_t, rpcvers_t, const char*) = clnt_create;
    lua_pushboolean(L, needed != NULL);
    return 1;
}

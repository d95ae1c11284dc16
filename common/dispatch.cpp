// callapi, see dispatch.h. Lua's errors are longjmps: nothing here that is alive
// when one can be raised needs a destructor, or is heap memory.
#include "common/dispatch.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <lua.hpp>

#include "common/registry.h"
#include "common/status.h"
#include "common/trace.h"
#include "rpc/client.h"

namespace
{
// The stand-alone interpreter answers Ctrl-C by a hook that raises an error as
// soon as Lua code runs again. A hook that was set during a call means that
// nobody waits for the call any more.
lua_State* calling;
lua_Hook hook_before;

bool hook_was_set() { return lua_gethook(calling) != hook_before; }
} // namespace

int lua_callapi(lua_State* L)
{
    const char* name = luaL_checklstring(L, 1, nullptr);
    const char* str = luaL_checklstring(L, 2, nullptr);
    TRACE(160, "name %s, str %s", name ? name : "nil", str ? str : "nil");
    if (!name || !str)
        return 0;
    char* copy = strdup(str); // the parsers write into the text that they split
    if (!copy) {
        note_no_memory(name);
        return 0;
    }
    const ApiNode* api = find_api(name);
    if (!api) {
        note_unknown_api(name);
        TRACE(165, "api %s not found", name);
        free(copy);
        return 0;
    }
    if (rpclib_dbg) {
        printf("[%s: %d]", __func__, 169);
        print_api(*api);
        printf(".\r\n");
    }
    CLIENT* clnt = api->clntinit();
    if (!clnt) {
        note_no_client(*api);
        TRACE(171, "%s clnt init failed", api->name);
        free(copy);
        return 0;
    }
    void* request = api->str2arg(copy);
    calling = L;
    hook_before = lua_gethook(L);
    call_is_unwanted = hook_was_set;
    void* reply = api->func(request, clnt);
    call_is_unwanted = nullptr;
    free(copy);
    if (reply) {
        note_success();
        lua_pushstring(L, api->ret2str(reply));
        return 1;
    }
    note_failed_call(*api, clnt);
    TRACE(181, "%s func called failed", api->name);
    api->clntdestroy();
    return 0;
}

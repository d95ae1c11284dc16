// A host program with functions of its own that bear the library's names. None
// of them may be called by the library.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <lua.hpp>

namespace
{
[[noreturn]] void called(const char* name)
{
    fprintf(stderr, "own_names: %s: expected no call from the library, found one\n", name);
    exit(1);
}
} // namespace

#define OWN(name)                                                                                                      \
    extern "C" __attribute__((visibility("default"))) void name() { called(#name); }
OWN(hex2str)
OWN(str2hex)
OWN(int2str)
OWN(mac2str)
OWN(str2mac)
OWN(strsplit)
OWN(strsplit2)
OWN(strappend)
OWN(list_del)
OWN(__list_del)
OWN(list_add_tail)
OWN(__list_add)
OWN(lua_addapi)
OWN(lua_delapi)
OWN(lua_getapibyname)
OWN(lua_callapi)
OWN(oltmib_devinfo_init)
OWN(oltmib_devinfo_clnt_init)
OWN(oltmib_devinfo_get_1)
OWN(str2arg_devinfo)
OWN(arg2str_devinfo)
OWN(xdr_oltmib_DevInfoEntry)

int main()
{
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    const char* script = R"(
        require "librpc"
        local call = librpc.callapi
        assert(call("oltmib_devinfo_get_1", ""):find("olt-lab-1", 1, true))
        assert(call("oltmib_mstp_ifstate_get_1", "0&1"):find("8000001e804c0001", 1, true))
        assert(call("oltmib_fdb_get_1", "00-1E-80-AA-00-01"):find("^00%-1E%-80%-AA%-00%-01&"))
        assert(call("oltmib_lldpifnei_getn_1", ""):find("core-sw", 1, true))
        assert(call("oltmib_sysloginfo_set_1", "1") == "0")
        assert(not call("oltmib_nothing_get_1", ""))
        package.loadlib(package.cpath:match("([^;]*)%?%.so") .. "librpc.so", "luaopen_librpc")()
        assert(call("oltmib_devinfo_get_1", ""):find("olt-lab-1", 1, true))
    )";
    if (luaL_dostring(L, script)) {
        fprintf(stderr, "own_names: script: expected no error, found %s\n", lua_tostring(L, -1));
        return 1;
    }
    lua_close(L);
    puts("passed");
}

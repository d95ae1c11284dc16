// A Lua state with the library, for programs that hold both.
#pragma once

#include <lua.hpp>
#include <optional>
#include <stdexcept>
#include <string>

extern "C" int luaopen_librpc(lua_State* L);
extern "C" int luaopen_librpc_status(lua_State* L);

class LuaState
{
  public:
    LuaState() : L(luaL_newstate())
    {
        luaL_openlibs(L);
        lua_getglobal(L, "package");
        lua_getfield(L, -1, "preload");
        lua_pushcfunction(L, luaopen_librpc);
        lua_setfield(L, -2, "librpc");
        lua_pushcfunction(L, luaopen_librpc_status);
        lua_setfield(L, -2, "librpc.status");
        lua_settop(L, 0);
        run("require 'librpc' status = require 'librpc.status'");
    }
    ~LuaState() { lua_close(L); }
    LuaState(const LuaState&) = delete;
    LuaState& operator=(const LuaState&) = delete;

    // Runs a script; an error in it is one of the test's.
    void run(const std::string& script)
    {
        if (luaL_loadbuffer(L, script.data(), script.size(), "=script") || lua_pcall(L, 0, 0, 0))
            throw std::runtime_error("script: expected no error, found " + std::string(lua_tostring(L, -1)));
    }

    // librpc.callapi(api, argument): its value, if any.
    std::optional<std::string> call(const std::string& api, const std::string& argument)
    {
        lua_getglobal(L, "librpc");
        lua_getfield(L, -1, "callapi");
        lua_pushlstring(L, api.data(), api.size());
        lua_pushlstring(L, argument.data(), argument.size());
        lua_call(L, 2, LUA_MULTRET);
        std::optional<std::string> value;
        if (lua_gettop(L) > 1)
            value.emplace(lua_tostring(L, 2));
        lua_settop(L, 0);
        return value;
    }

    // What status.last() tells: its first two values, or "" for nil.
    std::string code() { return last(1); }
    std::string sentence() { return last(2); }

    lua_State* const L;

  private:
    std::string last(int value)
    {
        lua_getglobal(L, "status");
        lua_getfield(L, -1, "last");
        lua_call(L, 0, LUA_MULTRET);
        const char* text = lua_gettop(L) > value ? lua_tostring(L, 1 + value) : nullptr;
        const std::string found = text ? text : "";
        lua_settop(L, 0);
        return found;
    }
};

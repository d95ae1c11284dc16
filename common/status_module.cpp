// The Lua module librpc.status: why the last callapi gave no value. Lua's
// errors are longjmps: no destructor, no heap memory.
#include "common/status_module.h"

#include "common/state.h"

// Opens the module: leaves the table on the stack.
EXPORT int luaopen_librpc_status(lua_State* L);

namespace
{
void set_number(lua_State* L, const char* key, unsigned long value)
{
    lua_pushinteger(L, static_cast<lua_Integer>(value));
    lua_setfield(L, -2, key);
}

void set_text(lua_State* L, const char* key, const char* text)
{
    lua_pushstring(L, text);
    lua_setfield(L, -2, key);
}

// status.last(): nil after a successful call, or none; else what push_failure
// pushes.
int last(lua_State* L)
{
    const State* state = state_of(L);
    if (!state || state->status.code == CallCode::Success) {
        lua_pushnil(L);
        return 1;
    }
    const CallStatus status = state->status; // a finalizer may call while the answer is made
    push_failure(L, status);
    return 3;
}
} // namespace

void push_failure(lua_State* L, const CallStatus& status)
{
    char text[status_text_size];
    lua_pushstring(L, name_of(status.code));
    write_sentence(status, text);
    lua_pushstring(L, text);
    lua_createtable(L, 0, 6);
    set_text(L, "api", status.api);
    if (status.service) {
        set_text(L, "service", status.service->name);
        set_number(L, "program", status.service->program);
    }
    write_reason(status, text);
    if (text[0])
        set_text(L, "reason", text);
    if (error_number(status) != 0)
        set_number(L, "errno", static_cast<unsigned long>(error_number(status)));
}

int luaopen_librpc_status(lua_State* L)
{
    lua_createtable(L, 0, 2);
    lua_pushcfunction(L, last);
    lua_setfield(L, -2, "last");
    lua_newtable(L); // what each code means
    for (unsigned i = 1; i <= static_cast<unsigned>(last_call_code); i++) {
        const auto code = static_cast<CallCode>(i);
        set_text(L, name_of(code), meaning_of(code));
    }
    lua_setfield(L, -2, "codes");
    return 1;
}

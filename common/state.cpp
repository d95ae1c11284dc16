// Lua states that opened the module, see state.h.
#include "common/state.h"

#include <csignal>

#include "common/service.h"
#include "rpc/client.h"
#include "rpc/lock.h"

namespace
{
Mutex states_mutex;
int open_states;
bool any_failure; // was ever noted, in any state
const char state_key = 0;

void push_key(lua_State* L) { lua_pushlightuserdata(L, const_cast<char*>(&state_key)); }

bool interrupt_is_handled()
{
    struct sigaction action;
    return sigaction(SIGINT, nullptr, &action) == 0 && action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN;
}

// The sockets go with the last Lua state; the library itself stays loaded (see
// CMakeLists.txt), and its registry with it.
int close_state(lua_State*)
{
    const Guard guard(states_mutex);
    if (--open_states == 0) {
        keep_clients(false);
        destroy_all_clients();
    }
    return 0;
}

void count_state()
{
    const Guard guard(states_mutex);
    if (open_states++ == 0)
        keep_clients(true);
}

lua_State* main_thread(lua_State* L)
{
#if LUA_VERSION_NUM == 501
    const bool is_main = lua_pushthread(L) == 1;
    lua_pop(L, 1);
    return is_main ? L : nullptr;
#else
    lua_rawgeti(L, LUA_REGISTRYINDEX, LUA_RIDX_MAINTHREAD);
    lua_State* main = lua_tothread(L, -1);
    lua_pop(L, 1);
    return main;
#endif
}

// Asked rarely: when a signal came, or a datagram that is not the reply.
bool has_been_interrupted(void* context)
{
    auto* L = static_cast<lua_State*>(context);
    State* state = state_of(L);
    if (!state || state->interrupts != Interrupts::Handled || (state->main && !lua_gethook(state->main)) ||
        interrupt_is_handled())
        return false;
    state->interrupts = Interrupts::Fired;
    return true;
}
} // namespace

State* state_of(lua_State* L)
{
    push_key(L);
    lua_rawget(L, LUA_REGISTRYINDEX);
    auto* state = static_cast<State*>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    return state;
}

void open_state(lua_State* L)
{
    State* state = state_of(L);
    if (!state) {
        push_key(L);
        state = static_cast<State*>(lua_newuserdata(L, sizeof(State)));
        *state = {};
        state->main = main_thread(L);
        lua_newtable(L);
        lua_pushcfunction(L, close_state);
        lua_setfield(L, -2, "__gc");
        count_state(); // from here on, close_state is called
        lua_setmetatable(L, -2);
        lua_rawset(L, LUA_REGISTRYINDEX);
    }
    state->interrupts = interrupt_is_handled() ? Interrupts::Handled : Interrupts::Unknown;
}

void note_success(lua_State* L)
{
    if (!__atomic_load_n(&any_failure, __ATOMIC_RELAXED))
        return;
    if (State* state = state_of(L))
        state->status.code = CallCode::Success;
}

void note_failure(lua_State* L, const CallStatus& status)
{
    __atomic_store_n(&any_failure, true, __ATOMIC_RELAXED);
    if (State* state = state_of(L))
        state->status = status;
}

Caller caller_of(lua_State* L)
{
    if (__atomic_load_n(&any_failure, __ATOMIC_RELAXED))
        if (State* state = state_of(L); state && state->interrupts == Interrupts::Fired && interrupt_is_handled())
            state->interrupts = Interrupts::Handled; // the interpreter waits for Ctrl-C again
    return {has_been_interrupted, L};
}

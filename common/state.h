// What the library keeps for each Lua state that opened it: why its last call
// gave no value, and how to tell that its user wants to stop. It is gone with
// the state.
#pragma once

#include <lua.hpp>

#include "common/status.h"
#include "rpc/exchange.h"

// How the stand-alone interpreter answers Ctrl-C (SIGINT): its handler gives the
// signal back to the system and sets a hook that raises an error as soon as Lua
// code runs again.
enum class Interrupts : uint8_t {
    Unknown, // the signal was nobody's when the module was opened
    Handled, // somebody handled it
    Fired,   // and the handler has given it back
};

struct State {
    CallStatus status;
    lua_State* main; // its main thread; null where that cannot be told
    Interrupts interrupts;
};

// Keeps a State for L's Lua state where there is none. Raises Lua's memory error.
void open_state(lua_State* L);

// L's State, or null where the module was not opened in it. Needs a slot of the
// stack; raises nothing.
State* state_of(lua_State* L);

// Notes how a call of L's ended. A success after nothing but successes costs
// nothing.
void note_success(lua_State* L);
void note_failure(lua_State* L, const CallStatus& status);

// Who waits for a call of L's: gives up after Ctrl-C, and for no other signal
// whose handler returns.
Caller caller_of(lua_State* L);

// What librpc.status tells of a failure, for the modules that tell of one too.
#pragma once

#include <lua.hpp>

#include "common/status.h"

// Pushes three values: the code, a sentence, and a table of what the sentence is
// made of. Raises Lua's memory error.
void push_failure(lua_State* L, const CallStatus& status);

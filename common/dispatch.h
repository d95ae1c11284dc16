// The one path that every call takes, from an API's name and argument text to
// its reply's text.
#pragma once

struct lua_State;

// callapi(name, argument): the reply's text, or no value on any failure.
// Raises Lua's own argument error, and its memory error, nothing else.
extern "C" __attribute__((visibility("default"))) int lua_callapi(lua_State* L);

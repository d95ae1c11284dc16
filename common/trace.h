// Trace lines: what the library tells a developer on standard output while
// rpclib_dbg is set.
#pragma once

#include <cstdio>
#include <cstring>

#include "rpc/export.h"
#include "rpc/for_each.h"

// Non-zero switches every trace line on. 0 at load; enabledebug and
// disabledebug set it from Lua.
extern "C" __attribute__((visibility("default"))) int rpclib_dbg;

// Any thread may switch while others look.
inline bool is_tracing() { return __atomic_load_n(&rpclib_dbg, __ATOMIC_RELAXED) != 0; }
inline void set_tracing(bool on) { __atomic_store_n(&rpclib_dbg, on ? 1 : 0, __ATOMIC_RELAXED); }

// A value of a record as printf takes it. A text may fill its array without a
// NUL, so it is shown from a copy that has one.
template <class T> struct Shown {
    T value;
    explicit Shown(const T& from) : value(from) {}
};
template <size_t N> struct Shown<char[N]> {
    char value[N + 1];
    explicit Shown(const char (&from)[N])
    {
        memcpy(value, from, N);
        value[N] = '\0';
    }
};
template <size_t N> Shown(const char (&)[N]) -> Shown<char[N]>;

#define TRACE_VALUE(unused, expression) Shown(expression).value

// Prints "[function: line]" and the text, which ends in a full stop. The line
// is a fixed number that developers search for, not one of a source file.
#define TRACE(line, ...) TRACE_AS(__func__, line, __VA_ARGS__)
#define TRACE_AS(function, line, format, ...)                                                                          \
    do {                                                                                                               \
        if (is_tracing())                                                                                              \
            printf("[%s: %d]" format ".\r\n", function,                                                                \
                   line __VA_OPT__(, ) FOR_EACH_COMMA(TRACE_VALUE, , __VA_ARGS__));                                    \
    } while (0)

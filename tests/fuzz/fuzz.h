// What every fuzz target is made of: a reader that takes an input apart, a
// check that ends the process with one line, and the walk over all APIs.
//
// A target is one .cpp file here that defines LLVMFuzzerTestOneInput. It is
// built twice: with libFuzzer (./dev fuzz SECONDS TARGET), and with main.cpp as
// an ordinary test that replays corpus/TARGET.kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/apis.h"
#include "tests/support/exact_memory.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Ends the process, which is what libFuzzer keeps the input for.
#define EXPECT(condition, expected, ...)                                                                               \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            fprintf(stderr, "fuzz: %s:%d: expected %s, found ", __FILE__, __LINE__, expected);                         \
            fprintf(stderr, __VA_ARGS__);                                                                              \
            fputc('\n', stderr);                                                                                       \
            abort();                                                                                                   \
        }                                                                                                              \
    } while (0)

// An input, read from its front; what is missing reads as zero.
class Input
{
  public:
    Input(const uint8_t* data, size_t size) : at(data), end(data + size) {}

    unsigned byte() { return at < end ? *at++ : 0; }
    unsigned word()
    {
        const unsigned high = byte();
        return high << 8 | byte();
    }
    int number()
    {
        const unsigned high = word();
        return static_cast<int>(high << 16 | word());
    }
    std::string bytes(size_t most)
    {
        const size_t size = most < left() ? most : left();
        std::string taken(reinterpret_cast<const char*>(at), size);
        at += size;
        return taken;
    }
    std::string rest() { return bytes(left()); }
    size_t left() const { return static_cast<size_t>(end - at); }

  private:
    const uint8_t* at;
    const uint8_t* end;
};

// Every API that Lua can call, in the order of registration.
inline const std::vector<const Api*>& callable_apis()
{
    static const std::vector<const Api*> apis = [] {
        std::vector<const Api*> all;
        for_each_api([&](const Service&, const Api& api) {
            if (api.registered())
                all.push_back(&api);
        });
        return all;
    }();
    return apis;
}

inline const Api& choose_api(Input& input) { return *callable_apis()[input.word() % callable_apis().size()]; }

// Trace lines are printed to nowhere; the first call sends standard output there.
inline void set_debug(bool on)
{
    static const bool silent = freopen("/dev/null", "w", stdout) != nullptr;
    EXPECT(silent, "standard output to go to /dev/null", "an error");
    rpclib_dbg = on;
}

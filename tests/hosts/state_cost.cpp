// What a host pays that opens a Lua state for each request: a state that loads the
// library, makes one call and is closed, beside a bare one.
//
//     hosts_state_cost BUILD
//
// Prints both and how many times the bare one it takes, which is meant to be 4 at
// most; leaves that line in BUILD/hosts/results. Fails when a call does.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <lua.hpp>
#include <string>
#include <vector>

namespace
{
constexpr int rounds = 300;
constexpr double most_times = 4;

// Microseconds of one state.
double use_a_state(const char* script)
{
    const auto began = std::chrono::steady_clock::now();
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    if (luaL_dostring(L, script)) {
        fprintf(stderr, "state_cost: script: expected no error, found %s\n", lua_tostring(L, -1));
        exit(1);
    }
    lua_close(L);
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - began).count();
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "state_cost: arguments: expected BUILD, found %d arguments\n", argc - 1);
        return 2;
    }
    const std::filesystem::path build = argv[1], results = build / "hosts" / "results";
    setenv("LUA_CPATH", (build / "?.so").c_str(), 1);
    const char* script = "require 'librpc' local text = librpc.callapi('oltmib_portinfo_get_1', '3')\n"
                         "assert(text and text:find('customer 3', 1, true), text)";
    std::vector<double> bare, ours;
    for (int i = 0; i < rounds; i++) {
        bare.push_back(use_a_state(""));
        ours.push_back(use_a_state(script));
    }
    const double times = median(ours) / median(bare);
    char line[200];
    snprintf(line, sizeof line,
             "state, require, one call, close: %.0f us; a bare state: %.0f us; %.1f times, of at most %.0f",
             median(ours), median(bare), times, most_times);
    puts(line);
    std::filesystem::create_directories(results);
    std::ofstream(results / "state_cost") << line << '\n';
}

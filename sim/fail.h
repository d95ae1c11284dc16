// How the simulated device reports an error and ends.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

// Prints "simulated_device: WHERE: expected X, found Y" and ends the program.
[[noreturn]] inline void fail(const std::string& where, const std::string& expected, const std::string& found)
{
    fprintf(stderr, "simulated_device: %s: expected %s, found %s\n", where.c_str(), expected.c_str(), found.c_str());
    exit(1);
}

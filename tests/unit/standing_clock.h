// A clock that stands still where a test says so (linked with --wrap=clock_gettime).
#pragma once

#include <cstdint>

extern int64_t standing_still; // microseconds, -1: it goes on

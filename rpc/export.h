// EXPORT marks what other programs may call: C linkage, visible in librpc.so.
// Everything else stays inside the library, and the library's own calls of an
// exported function stay inside too (it is linked with -Bsymbolic).
#pragma once

#define EXPORT extern "C" __attribute__((visibility("default")))

// The protocol's 64-bit integers: two units each, the low word before the high
// one on every host.
#pragma once

#include <cstdint>
#include <rpc/rpc.h>

#include "rpc/export.h"

typedef int64_t oltmib_int64_t;
typedef uint64_t oltmib_uint64_t;

// XDR routines of the two types; as with every XDR routine, false when the
// stream has no room, or no more units.
EXPORT bool_t xdr_oltmib_int64_t(XDR* xdrs, oltmib_int64_t* objp);
EXPORT bool_t xdr_oltmib_uint64_t(XDR* xdrs, oltmib_uint64_t* objp);

// XDR routines as the RPC library's calls take them.
#pragma once

#include <rpc/rpc.h>

// Every routine is called through xdrproc_t, whatever its own type.
template <class Routine> xdrproc_t as_xdrproc(Routine* routine)
{
    return reinterpret_cast<xdrproc_t>(reinterpret_cast<void (*)()>(routine));
}

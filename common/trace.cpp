// The switch of the trace lines, see trace.h.
#include "common/trace.h"

int rpclib_dbg;

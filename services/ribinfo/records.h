// Records of the routing table service, program 50011.
#pragma once

#include "rpc/record.h"

struct oltmib_routeEntry {
    char text64a[64];
    char text64b[64];
    char text32a[32];
    int int1, int2;
    char text32b[32];
    char text32c[32];
    int oper, res;
};
RECORD(oltmib_routeEntry, text64a, text64b, text32a, int1, int2, text32b, text32c, oper, res)

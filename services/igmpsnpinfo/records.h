// Records of the IGMP snooping service, program 50008.
#pragma once

#include "rpc/record.h"

struct oltmib_igspGlobalEntry {
    int int1, int2, int3;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_igspGlobalEntry, int1, int2, int3, text32, oper, res)

struct oltmib_igspMrouterEntry {
    int int1;
    char text40[40];
    char text32a[32];
    int oper, res;
};
RECORD(oltmib_igspMrouterEntry, int1, text40, text32a, oper, res)

struct oltmib_igspGrpEntry {
    int int1;
    char text40[40];
    char text32a[32];
    char text32b[32];
    int int2;
    char text32c[32];
    int oper, res;
};
RECORD(oltmib_igspGrpEntry, int1, text40, text32a, text32b, int2, text32c, oper, res)

struct oltmib_igspifEntry {
    int int1, int2;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_igspifEntry, int1, int2, text32, oper, res)

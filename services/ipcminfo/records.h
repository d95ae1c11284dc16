// Records of the IPC ioctl service, program 50016.
#pragma once

#include "rpc/record.h"

struct oltmib_ioctlEntry {
    int int1, int2, int3, int4;
    char text32a[32];
    char text32b[32];
    int int5, int6;
};
RECORD(oltmib_ioctlEntry, int1, int2, int3, int4, text32a, text32b, int5, int6)

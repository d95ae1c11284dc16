// Records of the SDSM service, program 50015.
#pragma once

#include "rpc/record.h"

struct oltmib_sdsminfoEntry {
    char text80[80];
    char text512[512];
    int int1, int2;
};
RECORD(oltmib_sdsminfoEntry, text80, text512, int1, int2)

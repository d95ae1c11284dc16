// Records of the DHCP snooping service, program 50017.
#pragma once

#include "rpc/record.h"

struct oltmib_dhcpsnpEntry {
    char text80[80];
    char text512[512];
    int int1, int2;
};
RECORD(oltmib_dhcpsnpEntry, text80, text512, int1, int2)

// Records of the device information service, program 50002.
#pragma once

#include "rpc/record.h"

struct oltmib_DevInfoEntry {
    char text32a[32];
    char text32b[32];
    char mac[6];
    char text32c[32];
    char text32d[32];
    char text32e[32];
    int saveconfig, int1;
    char hostname[64];
    int oper, res;
};
RECORD(oltmib_DevInfoEntry, text32a, text32b, mac, text32c, text32d, text32e, saveconfig, int1, hostname, oper, res)

struct oltmib_apiEntry {
    int int1, int2;
};
RECORD(oltmib_apiEntry, int1, int2)

struct oltmib_devcapEntry {
    char text64a[64];
    char text64b[64];
    int int1;
    char text64c[64];
    char text32[32];
    int oper, res;
};
RECORD(oltmib_devcapEntry, text64a, text64b, int1, text64c, text32, oper, res)

struct oltmib_libconfEntry {
    char text64a[64];
    char text64b[64];
    int int1;
    char text64c[64];
    char text32[32];
    int oper, res;
};
RECORD(oltmib_libconfEntry, text64a, text64b, int1, text64c, text32, oper, res)

struct oltmib_accesslogEntry {
    char text64a[64];
    char text64b[64];
    int int1, int2, int3;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_accesslogEntry, text64a, text64b, int1, int2, int3, text32, oper, res)

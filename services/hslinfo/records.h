// Records of the hardware services layer service, program 50003.
#pragma once

#include "rpc/record.h"

struct oltmib_mgmtvlanEntry {
    int int1, int2;
    char ip[20];
    char gateway[20];
    int int3;
    char text64a[64];
    char text64b[64];
    char text32[32];
    int oper, res;
};
RECORD(oltmib_mgmtvlanEntry, int1, int2, ip, gateway, int3, text64a, text64b, text32, oper, res)

struct oltmib_portintfmodeEntry {
    int ifx, mode_flag, mode, int4, int5;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_portintfmodeEntry, ifx, mode_flag, mode, int4, int5, text32, oper, res)

struct oltmib_portinbandanEntry {
    int ifx, state;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_portinbandanEntry, ifx, state, text32, oper, res)

struct oltmib_dyinggaspEntry {
    int int1, int2;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_dyinggaspEntry, int1, int2, text32, oper, res)

struct oltmib_mbaserialEntry {
    int ifx, brate, int3;
    char text32a[32];
    int int4;
    char text32b[32];
    int oper, res;
};
RECORD(oltmib_mbaserialEntry, ifx, brate, int3, text32a, int4, text32b, oper, res)

struct oltmib_mbainstEntry {
    char name[32];
    int int1;
    char text20[20];
    int int2;
    char dip[20];
    int int3;
    char text32a[32];
    int int4;
    char text32b[32];
    int oper, res;
};
RECORD(oltmib_mbainstEntry, name, int1, text20, int2, dip, int3, text32a, int4, text32b, oper, res)

struct oltmib_mbainststateEntry {
    char name[32];
    int int1, int2;
    char text20[20];
    int int3;
    char dip[20];
    int int4, int5;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_mbainststateEntry, name, int1, int2, text20, int3, dip, int4, int5, text32, oper, res)

struct oltmib_mbaserialstatisEntry {
    int ifx;
    unsigned err, count2, count3;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_mbaserialstatisEntry, ifx, err, count2, count3, text32, oper, res)

struct oltmib_mbainststatisEntry {
    char name[32];
    unsigned rx_bytes, count2, count3, count4, count5, count6, count7, count8;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_mbainststatisEntry, name, rx_bytes, count2, count3, count4, count5, count6, count7, count8, text32, oper,
       res)

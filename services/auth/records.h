// Records of the authentication service, program 50010.
#pragma once

#include "rpc/record.h"

struct oltmib_authGlobalEntry {
    int config;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_authGlobalEntry, config, text32, oper, res)

struct oltmib_d1xPcfgEntry {
    int ifx;
    char text40[40];
    int int1, int2, int3, int4, int5, int6, int7, int8, int9, int10;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_d1xPcfgEntry, ifx, text40, int1, int2, int3, int4, int5, int6, int7, int8, int9, int10, text32, oper, res)

struct oltmib_d1xPstEntry {
    int ifx;
    char text40[40];
    int int1, int2, int3, int4, int5, int6, int7, int8, int9, int10, int11, int12, int13, int14, int15, int16, int17,
        int18, int19, int20, int21, int22, int23, int24;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_d1xPstEntry, ifx, text40, int1, int2, int3, int4, int5, int6, int7, int8, int9, int10, int11, int12,
       int13, int14, int15, int16, int17, int18, int19, int20, int21, int22, int23, int24, text32, oper, res)

struct oltmib_macauthPcfgEntry {
    int ifx;
    char text40[40];
    int int1, int2, int3, int4, int5, int6;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_macauthPcfgEntry, ifx, text40, int1, int2, int3, int4, int5, int6, text32, oper, res)

struct oltmib_macauthUserEntry {
    int int1;
    char mac[6];
    int int2, int3, ifx;
    char text40[40];
    char text32[32];
    int oper, res;
};
RECORD(oltmib_macauthUserEntry, int1, mac, int2, int3, ifx, text40, text32, oper, res)

struct oltmib_radglobalEntry {
    int int1;
    char text64[64];
    int int2, int3, int4;
    char text40[40];
    int int5;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_radglobalEntry, int1, text64, int2, int3, int4, text40, int5, text32, oper, res)

struct oltmib_radsrvEntry {
    char ip[32];
    int int1, int2, int3;
    char text64[64];
    int int4, int5;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_radsrvEntry, ip, int1, int2, int3, text64, int4, int5, text32, oper, res)

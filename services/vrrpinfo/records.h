// Records of the VRRP service, program 50013.
#pragma once

#include "rpc/record.h"

struct oltmib_vrrp_ssconfEntry {
    int vrid;
    char ifname[40];
    char text1[32];
    int value1, value2, value3, value4;
    char text2[40];
    int value5, value6;
    char text3[32];
    int oper, res;
};
RECORD(oltmib_vrrp_ssconfEntry, vrid, ifname, text1, value1, value2, value3, value4, text2, value5, value6, text3, oper,
       res)

struct oltmib_vrrp_ssstateEntry {
    int vrid, value1, value2, role, value3, value4;
    char text1[32];
    int oper, res;
};
RECORD(oltmib_vrrp_ssstateEntry, vrid, value1, value2, role, value3, value4, text1, oper, res)

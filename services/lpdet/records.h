// Records of the loop detection service, program 50018.
#pragma once

#include "rpc/record.h"

struct oltmib_lpdetglobalEntry {
    int value1, value2, value3;
    char text1[32];
    int oper, res;
};
RECORD(oltmib_lpdetglobalEntry, value1, value2, value3, text1, oper, res)

struct oltmib_lpdetportinfoEntry {
    int value1;
    char text1[32];
    int value2;
    char text2[64];
    char text3[16];
    char text4[16];
    char text5[32];
    int value3;
    char text6[32];
    int oper, res;
};
RECORD(oltmib_lpdetportinfoEntry, value1, text1, value2, text2, text3, text4, text5, value3, text6, oper, res)

// Records of the NSM extension service, program 50009.
#pragma once

#include "rpc/record.h"

struct oltmib_poeConfEntry {
    int value1, value2, value3, value4;
    char text1[32];
    int oper, res;
};
RECORD(oltmib_poeConfEntry, value1, value2, value3, value4, text1, oper, res)

struct oltmib_poeInfoEntry {
    int value1, value2;
    char text1[32];
    int oper, res;
};
RECORD(oltmib_poeInfoEntry, value1, value2, text1, oper, res)

struct oltmib_poeifConfEntry {
    int value1;
    char text1[32];
    int value2;
    char text2[40];
    int value3, value4, value5, value6;
    char text3[32];
    int value7, value8, value9, value10;
    char text4[32];
    int oper, res;
};
RECORD(oltmib_poeifConfEntry, value1, text1, value2, text2, value3, value4, value5, value6, text3, value7, value8,
       value9, value10, text4, oper, res)

struct oltmib_poeifInfoEntry {
    int value1;
    char text1[32];
    int value2, value3;
    char text2[32];
    int value4, value5, value6, value7, value8, value9, value10, value11, value12, value13, value14;
    char text3[32];
    int oper, res;
};
RECORD(oltmib_poeifInfoEntry, value1, text1, value2, value3, text2, value4, value5, value6, value7, value8, value9,
       value10, value11, value12, value13, value14, text3, oper, res)

struct oltmib_nsmauthmacEntry {
    int value1;
    char mac1[6];
    int value2, value3, value4, value5;
    char text1[32];
    char text2[32];
    int oper, res;
};
RECORD(oltmib_nsmauthmacEntry, value1, mac1, value2, value3, value4, value5, text1, text2, oper, res)

struct oltmib_nsmpsEntry {
    int value1;
    char text1[32];
    int value2, value3, value4, value5, value6, value7;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_nsmpsEntry, value1, text1, value2, value3, value4, value5, value6, value7, text2, oper, res)

struct oltmib_nsmpsmacEntry {
    int value1;
    char text1[32];
    int value2;
    char mac1[6];
    int value3;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_nsmpsmacEntry, value1, text1, value2, mac1, value3, text2, oper, res)

struct oltmib_nsmpsstateEntry {
    int value1;
    char text1[32];
    int value2, value3, value4, value5, value6, value7, value8, value9, value10;
    char mac1[6];
    char text2[32];
    char text3[32];
    int oper, res;
};
RECORD(oltmib_nsmpsstateEntry, value1, text1, value2, value3, value4, value5, value6, value7, value8, value9, value10,
       mac1, text2, text3, oper, res)

struct oltmib_nsmpsmacstateEntry {
    int value1;
    char text1[32];
    int value2;
    char mac1[6];
    int value3, value4;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_nsmpsmacstateEntry, value1, text1, value2, mac1, value3, value4, text2, oper, res)

struct oltmib_nsmipsgifEntry {
    int value1;
    char text1[32];
    int value2, value3, value4, value5;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_nsmipsgifEntry, value1, text1, value2, value3, value4, value5, text2, oper, res)

struct oltmib_nsmipsguserEntry {
    int value1;
    char text1[32];
    int value2;
    char mac1[6];
    char text2[32];
    int value3;
    char text3[32];
    int oper, res;
};
RECORD(oltmib_nsmipsguserEntry, value1, text1, value2, mac1, text2, value3, text3, oper, res)

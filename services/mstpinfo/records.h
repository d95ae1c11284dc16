// Records of the spanning tree service, program 50007.
#pragma once

#include "rpc/record.h"

struct oltmib_mstpglobalEntry {
    int value1, value2, value3, value4, value5, value6, value7, value8, value9, value10, value11;
    char text1[32];
    int oper, res;
};
RECORD(oltmib_mstpglobalEntry, value1, value2, value3, value4, value5, value6, value7, value8, value9, value10, value11,
       text1, oper, res)

struct oltmib_mstpmstEntry {
    char text1[40];
    int value1;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_mstpmstEntry, text1, value1, text2, oper, res)

struct oltmib_mstpinstEntry {
    int value1;
    char text1[64];
    int value2;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_mstpinstEntry, value1, text1, value2, text2, oper, res)

struct oltmib_mstpifEntry {
    int value1, value2;
    char text1[32];
    int value3, value4, value5, value6, value7, value8, value9, value10, value11, value12, value13;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_mstpifEntry, value1, value2, text1, value3, value4, value5, value6, value7, value8, value9, value10,
       value11, value12, value13, text2, oper, res)

struct oltmib_mstpifstateEntry {
    int value1, value2;
    char text1[32];
    int value3, value4, value5;
    char bytes1[8];
    char bytes2[8];
    char bytes3[8];
    char text2[32];
    int oper, res;
};
RECORD(oltmib_mstpifstateEntry, value1, value2, text1, value3, value4, value5, bytes1, bytes2, bytes3, text2, oper, res)

// The daemon's own; no record of ours holds one.
WIRE_ENUM(oltmib_mstpver_e)

// Records of the ring protection and LLDP service, program 50005.
#pragma once

#include "rpc/record.h"

struct oltmib_ErpsInstEntry {
    char text1[32];
    char text2[32];
    int value1, value2, value3, value4;
    char text3[32];
    char text4[32];
    char text5[32];
    char text6[32];
    int oper, res;
};
RECORD(oltmib_ErpsInstEntry, text1, text2, value1, value2, value3, value4, text3, text4, text5, text6, oper, res)

struct oltmib_ErpsRingEntry {
    int value1;
    char text1[32];
    char text2[32];
    char text3[32];
    int oper, res;
};
RECORD(oltmib_ErpsRingEntry, value1, text1, text2, text3, oper, res)

struct oltmib_ErpsProfEntry {
    char text1[32];
    int value1, value2, value3, value4, value5;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_ErpsProfEntry, text1, value1, value2, value3, value4, value5, text2, oper, res)

struct oltmib_ErpsStateEntry {
    char text1[32];
    int value1, value2, value3, value4, value5;
    char mac1[6];
    int value6, value7, value8;
    char mac2[6];
    int value9, value10, value11;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_ErpsStateEntry, text1, value1, value2, value3, value4, value5, mac1, value6, value7, value8, mac2, value9,
       value10, value11, text2, oper, res)

struct oltmib_lldpcfgEntry {
    int value1;
    char text1[64];
    char text2[64];
    char text3[64];
    char text4[32];
    int oper, res;
};
RECORD(oltmib_lldpcfgEntry, value1, text1, text2, text3, text4, oper, res)

struct oltmib_lldpifcfgEntry {
    int value1;
    char text1[64];
    char text2[64];
    char text3[64];
    char text4[64];
    int value2, value3, value4, value5, value6, value7, value8, value9, value10, value11, value12, value13;
    char text5[32];
    int oper, res;
};
RECORD(oltmib_lldpifcfgEntry, value1, text1, text2, text3, text4, value2, value3, value4, value5, value6, value7,
       value8, value9, value10, value11, value12, value13, text5, oper, res)

struct oltmib_lldpifneiEntry {
    int value1;
    char mac1[6];
    char text1[64];
    char text2[2000];
    char text3[32];
    int oper, res;
};
RECORD(oltmib_lldpifneiEntry, value1, mac1, text1, text2, text3, oper, res)

struct oltmib_lldpifstatEntry {
    int value1;
    char text1[64];
    int value2, value3, value4, value5, value6, value7, value8;
    char text2[32];
    int oper, res;
};
RECORD(oltmib_lldpifstatEntry, value1, text1, value2, value3, value4, value5, value6, value7, value8, text2, oper, res)

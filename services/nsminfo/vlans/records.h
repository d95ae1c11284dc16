// Records of the network service module: VLANs, their bitmaps, port modes, VLAN VPNs and switch interfaces.
#pragma once

#include "rpc/record.h"

struct oltmib_VlanInfoEntry {
    int field1, field2;
    char field3[33];
    int field4;
    char field5[512];
    char field6[512];
    char text[32];
    int oper, res;
};
RECORD(oltmib_VlanInfoEntry, field1, field2, field3, field4, field5, field6, text, oper, res)

struct oltmib_VlanbitmapInfoEntry {
    int field1;
    char bit[684];
    char field3[512];
    char field4[512];
    char text[32];
    int oper, res;
};
RECORD(oltmib_VlanbitmapInfoEntry, field1, bit, field3, field4, text, oper, res)

struct oltmib_vlanbitmapEntry {
    char bit[684];
    char text[32];
    int oper, res;
};
RECORD(oltmib_vlanbitmapEntry, bit, text, oper, res)

struct oltmib_sptmodeEntry {
    int field1, field2;
    char text[32];
    int oper, res;
};
RECORD(oltmib_sptmodeEntry, field1, field2, text, oper, res)

struct oltmib_vlanvpnEntry {
    char field1[40];
    int field2;
    char field3[512];
    char field4[512];
    char text[32];
    int oper, res;
};
RECORD(oltmib_vlanvpnEntry, field1, field2, field3, field4, text, oper, res)

struct oltmib_vlanvpnifEntry {
    int ifx;
    char name[32];
    int field3, field4;
    char field5[32];
    char field6[32];
    char text[32];
    int oper, res;
};
RECORD(oltmib_vlanvpnifEntry, ifx, name, field3, field4, field5, field6, text, oper, res)

struct oltmib_sviEntry {
    int field1;
    char name[32];
    char field3[20];
    char text[32];
    int oper, res;
};
RECORD(oltmib_sviEntry, field1, name, field3, text, oper, res)

struct oltmib_CvlanInfoEntry {
    char field1[32];
    int field2, field3, field4, field5;
    char text[32];
    int oper, res;
};
RECORD(oltmib_CvlanInfoEntry, field1, field2, field3, field4, field5, text, oper, res)

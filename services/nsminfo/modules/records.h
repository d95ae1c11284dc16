// Records of the network service module: optical modules, cable diagnostics, DoS protection, DNS and the global
// settings.
#pragma once

#include "rpc/int64.h"
#include "rpc/record.h"

struct oltmib_opticalEntry {
    int ifx;
    char name[32];
    int field3, field4, field5, field6, field7, field8, field9, field10, field11, field12, field13, field14;
    char text[32];
    int oper, res;
};
RECORD(oltmib_opticalEntry, ifx, name, field3, field4, field5, field6, field7, field8, field9, field10, field11,
       field12, field13, field14, text, oper, res)

struct oltmib_opticaldetailEntry {
    int ifx;
    char name[32];
    int field3;
    char field4[32];
    char field5[32];
    char field6[32];
    int field7, field8, field9, field10, field11, field12, field13, field14;
    char field15[32];
    int field16, alarm_len;
    char alarm[32];
    char field19[32];
    char field20[32];
    char field21[32];
    char field22[32];
    char field23[32];
    char field24[32];
    char field25[32];
    int oper, res;
};
RECORD(oltmib_opticaldetailEntry, ifx, name, field3, field4, field5, field6, field7, field8, field9, field10, field11,
       field12, field13, field14, field15, field16, alarm_len, alarm, field19, field20, field21, field22, field23,
       field24, field25, oper, res)

struct oltmib_nsmEntry {
    char field1[80];
    char field2[800];
    int oper, res;
};
RECORD(oltmib_nsmEntry, field1, field2, oper, res)

struct oltmib_cabledetectEntry {
    int ifx;
    char name[32];
    int field3, field4, field5, field6;
    char field7[16];
    char field8[16];
    char field9[16];
    char field10[16];
    char text[32];
    int oper, res;
};
RECORD(oltmib_cabledetectEntry, ifx, name, field3, field4, field5, field6, field7, field8, field9, field10, text, oper,
       res)

struct oltmib_dosEntry {
    int ifx;
    char name[32];
    int field3, field4, field5, field6;
    oltmib_uint64_t count1, count2;
    char text[32];
    int oper, res;
};
RECORD(oltmib_dosEntry, ifx, name, field3, field4, field5, field6, count1, count2, text, oper, res)

struct oltmib_dnsEntry {
    char field1[65];
    char field2[64];
    char field3[64];
    int field4;
    char text[32];
    int oper, res;
};
RECORD(oltmib_dnsEntry, field1, field2, field3, field4, text, oper, res)

// The daemon's own; no record of ours holds one.
WIRE_ENUM(oltmib_dos_type)

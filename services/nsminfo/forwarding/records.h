// Records of the network service module: the forwarding database, aggregation, spanning-tree status, error-disable and
// ARP.
#pragma once

#include "rpc/record.h"

struct oltmib_fdbParam {
    int field1;
    char text[32];
    int oper, res;
};
RECORD(oltmib_fdbParam, field1, text, oper, res)

struct oltmib_fdbEntry {
    char mac[6];
    int field2;
    char field3[32];
    int field4;
    char text[32];
    int oper, res;
};
RECORD(oltmib_fdbEntry, mac, field2, field3, field4, text, oper, res)

struct oltmib_agEntry {
    int field1;
    char name[32];
    int field3, field4;
    char text[32];
    int oper, res;
};
RECORD(oltmib_agEntry, field1, name, field3, field4, text, oper, res)

struct oltmib_agsysEntry {
    int field1;
    char text[32];
    int oper, res;
};
RECORD(oltmib_agsysEntry, field1, text, oper, res)

struct oltmib_stpifstatusEntry {
    int ifx;
    char name[32];
    int field3;
    char text[32];
    int oper, res;
};
RECORD(oltmib_stpifstatusEntry, ifx, name, field3, text, oper, res)

struct oltmib_errdisableEntry {
    int field1, field2, field3;
    char text[32];
    int oper, res;
};
RECORD(oltmib_errdisableEntry, field1, field2, field3, text, oper, res)

struct oltmib_errdisportinfoEntry {
    int ifx;
    char name[32];
    int field3;
    char text[32];
    int oper, res;
};
RECORD(oltmib_errdisportinfoEntry, ifx, name, field3, text, oper, res)

struct oltmib_arpEntry {
    char field1[64];
    char field2[64];
    char field3[32];
    int field4;
    char text[32];
    int oper, res;
};
RECORD(oltmib_arpEntry, field1, field2, field3, field4, text, oper, res)

// The daemon's own; no record of ours holds one.
WIRE_ENUM(oltmib_agmode_e)

// Records of the host protocols service, program 50006.
#pragma once

#include "rpc/record.h"

struct oltmib_hostpdInfoEntry {
    int int1;
    char text40[40];
    int int2;
    char text64[64];
    char text80a[80];
    char text80b[80];
    char text32[32];
    int oper, res;
};
RECORD(oltmib_hostpdInfoEntry, int1, text40, int2, text64, text80a, text80b, text32, oper, res)

struct oltmib_accountEntry {
    int int1;
    char text40[40];
    int int2;
    char text64[64];
    char text80a[80];
    char text80b[80];
    int int3;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_accountEntry, int1, text40, int2, text64, text80a, text80b, int3, text32, oper, res)

struct oltmib_tmEntry {
    char text40[40];
    char text64a[64];
    char text64b[64];
    char text65[65]; // one more than its neighbours
    int int1, int2, int3;
    char text64c[64];
    char text64d[64];
    int int4;
    double real1, real2;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_tmEntry, text40, text64a, text64b, text65, int1, int2, int3, text64c, text64d, int4, real1, real2, text32,
       oper, res)

struct oltmib_dhcpdinfoEntry {
    char text80[80];
    char text512[512];
    int oper, res;
};
RECORD(oltmib_dhcpdinfoEntry, text80, text512, oper, res)

struct oltmib_snmpviewEntry {
    char text80[80];
    char text400[400];
    char text32[32];
    int oper, res;
};
RECORD(oltmib_snmpviewEntry, text80, text400, text32, oper, res)

struct oltmib_snmpgroupEntry {
    char text80a[80];
    int int1, int2;
    char text80b[80];
    char text80c[80];
    char text80d[80];
    char text32[32];
    int oper, res;
};
RECORD(oltmib_snmpgroupEntry, text80a, int1, int2, text80b, text80c, text80d, text32, oper, res)

struct oltmib_snmpuserEntry {
    char text80a[80];
    char text80b[80];
    int int1;
    char text80c[80];
    int int2;
    char text80d[80];
    char text32[32];
    int oper, res;
};
RECORD(oltmib_snmpuserEntry, text80a, text80b, int1, text80c, int2, text80d, text32, oper, res)

struct oltmib_snmphostEntry {
    int int1;
    char text80a[80];
    int int2;
    char text80b[80];
    int int3, int4;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_snmphostEntry, int1, text80a, int2, text80b, int3, int4, text32, oper, res)

struct oltmib_syslogInfoEntry {
    int value1, value2, value3, value4, value5, value6, value7, value8, value9, value10, value11;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_syslogInfoEntry, value1, value2, value3, value4, value5, value6, value7, value8, value9, value10, value11,
       text32, oper, res)

struct oltmib_syslogRemoteEntry {
    int int1;
    char text64[64];
    int int2;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_syslogRemoteEntry, int1, text64, int2, text32, oper, res)

struct oltmib_alertEntry {
    int value1, value2, value3, value4;
    char text32[32];
    int oper, res;
};
RECORD(oltmib_alertEntry, value1, value2, value3, value4, text32, oper, res)

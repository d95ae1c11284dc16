// Records of the network service module: port settings, counters, rates and mirroring.
#pragma once

#include "rpc/int64.h"
#include "rpc/record.h"

struct oltmib_if_counters {
    oltmib_int64_t counter0, counter1, counter2, counter3, counter4, counter5, counter6, counter7, counter8, counter9,
        counter10, counter11, counter12, counter13, counter14, counter15, counter16, counter17, counter18, counter19,
        counter20, counter21, counter22, counter23, counter24, counter25, counter26, counter27, counter28, counter29,
        counter30, counter31, counter32, counter33, counter34, counter35, counter36, counter37, counter38, counter39,
        counter40, counter41, counter42, counter43, counter44, counter45, counter46, counter47, counter48, counter49,
        counter50, counter51, counter52, counter53;
};
RECORD(oltmib_if_counters, counter0, counter1, counter2, counter3, counter4, counter5, counter6, counter7, counter8,
       counter9, counter10, counter11, counter12, counter13, counter14, counter15, counter16, counter17, counter18,
       counter19, counter20, counter21, counter22, counter23, counter24, counter25, counter26, counter27, counter28,
       counter29, counter30, counter31, counter32, counter33, counter34, counter35, counter36, counter37, counter38,
       counter39, counter40, counter41, counter42, counter43, counter44, counter45, counter46, counter47, counter48,
       counter49, counter50, counter51, counter52, counter53)

struct oltmib_ifrate_s {
    oltmib_int64_t rate0, rate1, rate2, rate3, rate4, rate5;
};
RECORD(oltmib_ifrate_s, rate0, rate1, rate2, rate3, rate4, rate5)

struct oltmib_PortInfoEntry {
    int ifx;
    char name[32];
    char field3[80];
    int field4, field5;
    char field6[32];
    char field7[32];
    int field8, field9, field10;
    char field11[64];
    char field12[64];
    int field13, field14, field15, field16, field17, field18, field19, field20, field21, field22, field23, field24,
        field25;
    char field26[32];
    int oper, res;
};
RECORD(oltmib_PortInfoEntry, ifx, name, field3, field4, field5, field6, field7, field8, field9, field10, field11,
       field12, field13, field14, field15, field16, field17, field18, field19, field20, field21, field22, field23,
       field24, field25, field26, oper, res)

struct oltmib_PortStatEntry {
    int ifx, field2;
    char name[32];
    oltmib_if_counters counters;
    char text[32];
    int oper, res;
};
RECORD(oltmib_PortStatEntry, ifx, field2, name, counters, text, oper, res)

struct oltmib_PortRateEntry {
    int ifx, field2;
    char name[32];
    oltmib_ifrate_s rates;
    char text[32];
    int oper, res;
};
RECORD(oltmib_PortRateEntry, ifx, field2, name, rates, text, oper, res)

struct oltmib_PMInfoEntry {
    int sid, mode;
    char desc[36];
    char src[32];
    char src_vlan[512];
    char to[32];
    int dir, to_switch, rspan_vlan, state;
    char text[32];
    int oper, res;
};
RECORD(oltmib_PMInfoEntry, sid, mode, desc, src, src_vlan, to, dir, to_switch, rspan_vlan, state, text, oper, res)

// The daemon's own; no record of ours holds one.
WIRE_ENUM(oltmib_iftype_e)

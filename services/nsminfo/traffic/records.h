// Records of the network service module: rate limits, storm control, access lists and quality of service.
#pragma once

#include "rpc/int64.h"
#include "rpc/record.h"

struct oltmib_ratelimitEntry {
    int ifx;
    char name[32];
    int in_cir, in_cbs, out_cir, out_cbs;
    char text[32];
    int oper, res;
};
RECORD(oltmib_ratelimitEntry, ifx, name, in_cir, in_cbs, out_cir, out_cbs, text, oper, res)

struct oltmib_stormcontrolEntry {
    int ifx;
    char name[32];
    int ratelimit_type, level, fraction;
    char text[32];
    int oper, res;
};
RECORD(oltmib_stormcontrolEntry, ifx, name, ratelimit_type, level, fraction, text, oper, res)

struct oltmib_aclEntry {
    char name[70];
    int field2, field3, field4, field5, field6;
    char field7[70];
    int field8, field9;
    char field10[20];
    char src[40];
    char field12[40];
    char field13[20];
    char field14[40];
    char field15[40];
    char field16[20];
    int field17, field18;
    oltmib_uint64_t count;
    char text[32];
    int oper, res;
};
RECORD(oltmib_aclEntry, name, field2, field3, field4, field5, field6, field7, field8, field9, field10, src, field12,
       field13, field14, field15, field16, field17, field18, count, text, oper, res)

struct oltmib_aclifEntry {
    int ifx;
    char name[32];
    char in[70];
    char field4[70];
    char text[32];
    int oper, res;
};
RECORD(oltmib_aclifEntry, ifx, name, in, field4, text, oper, res)

struct oltmib_qoscfgEntry {
    int status, alg;
    char text[32];
    int oper, res;
};
RECORD(oltmib_qoscfgEntry, status, alg, text, oper, res)

struct oltmib_queueweightEntry {
    char map[8];
    char text[32];
    int oper, res;
};
RECORD(oltmib_queueweightEntry, map, text, oper, res)

struct oltmib_cos2dscpEntry {
    char map[8];
    char text[32];
    int oper, res;
};
RECORD(oltmib_cos2dscpEntry, map, text, oper, res)

struct oltmib_cos2queueEntry {
    char map[8];
    char text[32];
    int oper, res;
};
RECORD(oltmib_cos2queueEntry, map, text, oper, res)

struct oltmib_dscp2cosEntry {
    char map[64];
    char text[32];
    int oper, res;
};
RECORD(oltmib_dscp2cosEntry, map, text, oper, res)

struct oltmib_dscp2dscpEntry {
    char map[64];
    char text[32];
    int oper, res;
};
RECORD(oltmib_dscp2dscpEntry, map, text, oper, res)

struct oltmib_dscp2queueEntry {
    char map[64];
    char text[32];
    int oper, res;
};
RECORD(oltmib_dscp2queueEntry, map, text, oper, res)

struct oltmib_classEntry {
    char name[70];
    int matchtype;
    char field3[120];
    char text[32];
    int oper, res;
};
RECORD(oltmib_classEntry, name, matchtype, field3, text, oper, res)

struct oltmib_policyEntry {
    char name[70];
    char class_[70]; // "class" wherever people read it
    int field3;
    char field4[120];
    int field5, field6, field7, field8, field9;
    char text[32];
    int oper, res;
};
RECORD(oltmib_policyEntry, name, class_, field3, field4, field5, field6, field7, field8, field9, text, oper, res)

struct oltmib_qosifEntry {
    int ifx;
    char name[32];
    int field3, field4;
    char in[70];
    char field6[70];
    char text[32];
    int oper, res;
};
RECORD(oltmib_qosifEntry, ifx, name, field3, field4, in, field6, text, oper, res)

struct oltmib_qosifcfgEntry {
    int ifx;
    char name[32];
    int list1[8];
    int list2[8];
    char text[32];
    int oper, res;
};
RECORD(oltmib_qosifcfgEntry, ifx, name, list1, list2, text, oper, res)

// The daemon's own; no record of ours holds one.
WIRE_ENUM(oltmib_ratelimit_type)

WIRE_ENUM(oltmib_class_matchtype)

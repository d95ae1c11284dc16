/* The plain way to the same daemons: rpcgen's stubs and XDR routines, libtirpc's
   own call, sscanf and snprintf for the texts, a Lua function an API. The benchmark's yardstick;
   it holds what it measures and no more. */
#include <lauxlib.h>
#include <lua.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "erpsinfo.h"
#include "hostpdinfo.h"
#include "ipcminfo.h"
#include "nsminfo.h"
#include "ribinfo.h"
#include "vrrpinfo.h"

int luaopen_plain(lua_State* L);

/* The parts of an argument, one after the other; empty beyond its end. */
static char* next(char** text)
{
    char* part = strsep(text, "&");
    return part ? part : "";
}

static int read_int(const char* part)
{
    int value = 0;
    sscanf(part, "%d", &value);
    return value;
}

static int next_int(char** text) { return read_int(next(text)); }

#define NEXT_TEXT(array) snprintf(array, sizeof(array), "%s", next(&text))

static oltmib_vrrp_ssstateEntry* read_ssstate(char* text)
{
    static oltmib_vrrp_ssstateEntry row;
    memset(&row, 0, sizeof row);
    row.vrid = next_int(&text);
    row.value1 = next_int(&text);
    row.value2 = next_int(&text);
    row.role = next_int(&text);
    row.value3 = next_int(&text);
    row.value4 = next_int(&text);
    NEXT_TEXT(row.text1);
    row.oper = next_int(&text);
    row.res = next_int(&text);
    return &row;
}

static const char* show_ssstate(const oltmib_vrrp_ssstateEntry* row)
{
    static char text[1024];
    snprintf(text, sizeof text, "%d&%d&%d&%d&%d&%d&%s&%d&%d", row->vrid, row->value1, row->value2, row->role,
             row->value3, row->value4, row->text1, row->oper, row->res);
    return text;
}

static oltmib_ioctlEntry* read_ioctl(char* text)
{
    static oltmib_ioctlEntry row;
    memset(&row, 0, sizeof row);
    row.int1 = next_int(&text);
    row.int2 = next_int(&text);
    row.int3 = next_int(&text);
    row.int4 = next_int(&text);
    NEXT_TEXT(row.text32a);
    NEXT_TEXT(row.text32b);
    row.int5 = next_int(&text);
    row.int6 = next_int(&text);
    return &row;
}

static const char* show_ioctl(const oltmib_ioctlEntry* row)
{
    static char text[1024];
    snprintf(text, sizeof text, "%d&%d&%d&%d&%s&%s&%d&%d", row->int1, row->int2, row->int3, row->int4, row->text32a,
             row->text32b, row->int5, row->int6);
    return text;
}

static oltmib_routeEntry* read_route(char* text)
{
    static oltmib_routeEntry row;
    memset(&row, 0, sizeof row);
    NEXT_TEXT(row.text64a);
    NEXT_TEXT(row.text64b);
    NEXT_TEXT(row.text32a);
    row.int1 = next_int(&text);
    row.int2 = next_int(&text);
    NEXT_TEXT(row.text32b);
    NEXT_TEXT(row.text32c);
    row.oper = next_int(&text);
    row.res = next_int(&text);
    return &row;
}

static const char* show_int(const int* status)
{
    static char text[40];
    snprintf(text, sizeof text, "%d", *status);
    return text;
}

static oltmib_hostpdInfoEntry* read_telnet(char* text)
{
    static oltmib_hostpdInfoEntry row;
    memset(&row, 0, sizeof row);
    row.int1 = next_int(&text);
    NEXT_TEXT(row.text40);
    row.int2 = next_int(&text);
    NEXT_TEXT(row.text64);
    NEXT_TEXT(row.text80a);
    NEXT_TEXT(row.text80b);
    NEXT_TEXT(row.text32);
    row.oper = next_int(&text);
    row.res = next_int(&text);
    return &row;
}

static const char* show_telnet(const oltmib_hostpdInfoEntry* row)
{
    static char text[1024];
    snprintf(text, sizeof text, "%d&%s&%d&%s&%s&%s&%s&%d&%d", row->int1, row->text40, row->int2, row->text64,
             row->text80a, row->text80b, row->text32, row->oper, row->res);
    return text;
}

static oltmib_PortInfoEntry* read_portinfo(char* text)
{
    static oltmib_PortInfoEntry row;
    memset(&row, 0, sizeof row);
    row.ifx = next_int(&text);
    NEXT_TEXT(row.name);
    NEXT_TEXT(row.field3);
    row.field4 = next_int(&text);
    row.field5 = next_int(&text);
    row.field9 = row.field8 = next_int(&text);
    row.field10 = next_int(&text);
    NEXT_TEXT(row.field11);
    NEXT_TEXT(row.field12);
    row.field13 = next_int(&text);
    row.field14 = next_int(&text);
    row.field15 = next_int(&text);
    row.field16 = next_int(&text);
    row.field17 = next_int(&text);
    row.field18 = next_int(&text);
    row.field19 = next_int(&text);
    row.field20 = next_int(&text);
    row.field21 = next_int(&text);
    row.field23 = next_int(&text);
    row.field24 = next_int(&text);
    row.field25 = next_int(&text);
    NEXT_TEXT(row.field26);
    row.oper = next_int(&text);
    row.res = next_int(&text);
    return &row;
}

static const char* show_portinfo(const oltmib_PortInfoEntry* row)
{
    static char text[1024];
    snprintf(text, sizeof text, "%d&%s&%s&%d&%d&%d&%d&%s&%s&%d&%d&%d&%d&%d&%d&%d&%d&%d&%d&%d&%d&%s&%d&%d", row->ifx,
             row->name, row->field3, row->field4, row->field5, row->field8, row->field10, row->field11, row->field12,
             row->field13, row->field14, row->field15, row->field16, row->field17, row->field18, row->field19,
             row->field20, row->field21, row->field23, row->field24, row->field25, row->field26, row->oper, row->res);
    return text;
}

static char* next_token(char** text)
{
    char* part = strtok_r(*text, "&$", text);
    return part ? part : "";
}

static oltmib_lldpifneiEntry* read_lldpifnei(char* text)
{
    static oltmib_lldpifneiEntry row;
    unsigned mac[6] = {0};
    memset(&row, 0, sizeof row);
    row.value1 = read_int(next_token(&text));
    sscanf(next_token(&text), "%02X-%02X-%02X-%02X-%02X-%02X", &mac[0], &mac[1], &mac[2], &mac[3], &mac[4], &mac[5]);
    for (int i = 0; i < 6; i++)
        row.mac1[i] = (char)mac[i];
    snprintf(row.text1, sizeof row.text1, "%s", next_token(&text));
    snprintf(row.text2, sizeof row.text2, "%s", next_token(&text));
    snprintf(row.text3, sizeof row.text3, "%s", next_token(&text));
    row.oper = read_int(next_token(&text));
    row.res = read_int(next_token(&text));
    return &row;
}

static const char* show_lldpifnei(const oltmib_lldpifneiEntry* row)
{
    static char text[4000];
    const unsigned char* mac = (const unsigned char*)row->mac1;
    snprintf(text, sizeof text, "%d&$%02X-%02X-%02X-%02X-%02X-%02X&$%s&$%s&$%s&$%d&$%d", row->value1, mac[0], mac[1],
             mac[2], mac[3], mac[4], mac[5], row->text1, row->text2, row->text3, row->oper, row->res);
    return text;
}

/* One Lua function: text in, text out; nothing when the call fails. */
#define BINDING(api, program, read, show)                                                                              \
    static int call_##api(lua_State* L)                                                                                \
    {                                                                                                                  \
        static CLIENT* clnt;                                                                                           \
        char* text = strdup(luaL_checkstring(L, 1));                                                                   \
        if (!clnt && !(clnt = clnt_create("127.0.0.1", program, 1, "udp"))) {                                          \
            clnt_pcreateerror("127.0.0.1");                                                                            \
            free(text);                                                                                                \
            return 0;                                                                                                  \
        }                                                                                                              \
        void* reply = api(read(text), clnt);                                                                           \
        free(text);                                                                                                    \
        if (!reply)                                                                                                    \
            return 0;                                                                                                  \
        lua_pushstring(L, show(reply));                                                                                \
        return 1;                                                                                                      \
    }

BINDING(oltmib_vrrp_ssstate_get_1, 50013, read_ssstate, show_ssstate)
BINDING(oltmib_ioctlinfo_get_1, 50016, read_ioctl, show_ioctl)
BINDING(oltmib_route_set_1, 50011, read_route, show_int)
BINDING(oltmib_telnet_get_1, 50006, read_telnet, show_telnet)
BINDING(oltmib_portinfo_get_1, 50004, read_portinfo, show_portinfo)
BINDING(oltmib_lldpifnei_get_1, 50005, read_lldpifnei, show_lldpifnei)

int luaopen_plain(lua_State* L)
{
    static const luaL_Reg functions[] = {
        {"oltmib_vrrp_ssstate_get_1", call_oltmib_vrrp_ssstate_get_1},
        {"oltmib_ioctlinfo_get_1", call_oltmib_ioctlinfo_get_1},
        {"oltmib_route_set_1", call_oltmib_route_set_1},
        {"oltmib_telnet_get_1", call_oltmib_telnet_get_1},
        {"oltmib_portinfo_get_1", call_oltmib_portinfo_get_1},
        {"oltmib_lldpifnei_get_1", call_oltmib_lldpifnei_get_1},
    };
    lua_newtable(L);
    for (size_t i = 0; i < sizeof functions / sizeof *functions; i++) {
        lua_pushcfunction(L, functions[i].func);
        lua_setfield(L, -2, functions[i].name);
    }
    return 1;
}

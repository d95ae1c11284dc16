"""The lists beside the vectors: services, APIs, records and exported names."""
from services import SERVICES

HELPERS = """
    __list_add __list_del list_add_tail list_del apinode_head
    lua_addapi lua_delapi lua_getapibyname lua_callapi lua_showapi lua_enabledebug lua_disabledebug luaopen_librpc
    rpclib_dbg
    int2str mac2str str2mac strsplit strsplit2 hex2str str2hex strappend"""


def in_order():
    return sorted(SERVICES, key=lambda service: service.opened)


def services():
    return ["# program, name, registration function and client pair, in the order of registration"] + [
        "%d %s oltmib_%s_init %s" % (service.program, service.name, service.registration, " ".join(clients_of(service)))
        for service in in_order()]


def apis():
    lines = ["# program stub procedure request reply parser formatter, in the order of registration"]
    for service in in_order():
        for api in service.apis:
            lines.append("%d %s %d %s %s %s %s" % (
                service.program, api.name, api.procedure, api.request.name if api.request else "void",
                api.reply.name if api.reply else "int", api.table.parser, api.formatter))
    return lines


def shown(field):
    return "%s:%s%s" % (field.name, field.kind, "[%d]" % field.count if field.kind == "char" or field.count > 1 else "")


def records():
    return ["# record, its wire units, and its fields in wire order"] + [
        "%s %d %s" % (record.name, record.units, " ".join(map(shown, record.fields)))
        for service in SERVICES for record in service.records.values()]


def clients_of(service):
    return ["oltmib_%s_clnt_%s" % (service.name, end) for end in ("init", "destroy")]


def exports():
    clients = [name for service in SERVICES for name in clients_of(service)]
    routines = ["xdr_" + name for service in SERVICES for name in list(service.records) + service.nested]
    converters = {name for service in SERVICES for api in service.apis for name in (api.table.parser, api.formatter)}
    return (["# the registry, the Lua functions and the text helpers"] + HELPERS.split() +
            ["# service registration and clients"] +
            sorted(clients + ["oltmib_%s_init" % service.registration for service in SERVICES]) +
            ["# stubs"] + sorted(stub.name for service in SERVICES for stub in service.stubs) +
            ["# XDR routines"] + sorted(routines) +
            ["# converters"] + sorted(converters - {"int2str"}))


LISTS = {"services.txt": services, "apis.txt": apis, "records.txt": records, "exports.txt": exports}

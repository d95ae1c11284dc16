// The fifteen services, and how one of them registers.
#include <cstring>

#include "rpc/client.h"
#include "services/service.h"

// clang-format off
#define SERVICES(SERVICE) \
    SERVICE(erpsinfo) SERVICE(nsminfo) SERVICE(devinfo) SERVICE(hslinfo) SERVICE(hostpdinfo) \
    SERVICE(igmpsnpinfo) SERVICE(mstpinfo) SERVICE(nsmextinfo) SERVICE(auth) SERVICE(ribinfo) \
    SERVICE(vrrpinfo) SERVICE(sdsminfo) SERVICE(ipcminfo) SERVICE(dhcpsnp) SERVICE(lpdet)
// clang-format on

#define DECLARE(service) extern const Service service_##service;
SERVICES(DECLARE)

#define POINTER(service) &service_##service,
const Service* const all_services[service_count] = {SERVICES(POINTER)};

int register_apis(const Service& service)
{
    int result = 0;
    for (const Api& api : service) {
        if (!api.registered())
            continue;
        ApiNode node = {};
        memcpy(node.name, api.name, sizeof node.name);
        node.func = api.func;
        node.str2arg = api.str2arg;
        node.ret2str = api.ret2str;
        node.clntinit = service.clnt_init;
        node.clntdestroy = service.clnt_destroy;
        result = lua_addapi(&node);
    }
    return result;
}

namespace
{
// Every routine is called through xdrproc_t, whatever its own type.
template <class Routine> xdrproc_t as_xdrproc(Routine* routine)
{
    return reinterpret_cast<xdrproc_t>(reinterpret_cast<void (*)()>(routine));
}
} // namespace

void* call_api(void* request, CLIENT* clnt, const Api& api, void* clnt_res)
{
    // A set's int that is formatted as a record has the record's storage.
    const Record* storage = api.reply ? api.reply : api.output ? api.output->record : nullptr;
    memset(clnt_res, 0, storage ? storage->size : sizeof(int));
    const xdrproc_t encode = api.request ? as_xdrproc(api.request->xdr) : as_xdrproc(xdr_void);
    const xdrproc_t decode = api.reply ? as_xdrproc(api.reply->xdr) : as_xdrproc(xdr_int);
    const enum clnt_stat status = clnt_call(clnt, api.procedure, encode, request, decode, clnt_res, TIMEOUT);
    return status == RPC_SUCCESS ? clnt_res : nullptr;
}

// The fifteen services, and how one of them registers.
#include <cstring>

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

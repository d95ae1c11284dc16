// How a service registers, and what its stubs do, see service.h.
#include "common/service.h"

#include <cstring>

#include "rpc/client.h"
#include "rpc/xdr_routine.h"

int register_apis(const Service& service)
{
    int result = 0;
    for (const Api& api : service) {
        if (!api.registered())
            continue;
        ApiNode node = {};
        strcpy(node.name, api.name);
        node.func = api.func;
        node.str2arg = api.parser->str2arg;
        node.ret2str = api.formatter->ret2str;
        node.clntinit = service.clnt_init;
        node.clntdestroy = service.clnt_destroy;
        result = lua_addapi(&node);
    }
    return result;
}

void* call_api(void* request, CLIENT* clnt, const Api& api, void* clnt_res)
{
    // A set's int that is formatted as a record has the record's storage.
    const Record* storage = api.reply ? api.reply : api.output() ? api.output()->record : nullptr;
    memset(clnt_res, 0, storage ? storage->size : sizeof(int));
    const xdrproc_t encode = api.request ? as_xdrproc(api.request->xdr) : as_xdrproc(xdr_void);
    const xdrproc_t decode = api.reply ? as_xdrproc(api.reply->xdr) : as_xdrproc(xdr_int);
    const enum clnt_stat status = clnt_call(clnt, api.procedure, encode, request, decode, clnt_res, TIMEOUT);
    return status == RPC_SUCCESS ? clnt_res : nullptr;
}

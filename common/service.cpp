// How a service registers, and the pieces of a call, see service.h.
#include "common/service.h"

#include <cstring>

#include "common/digits.h"
#include "rpc/bytes.h"

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
        result = add_described_api(node, {&service, &api});
    }
    return result;
}

bool FoundApi::is_described() const
{
    return api && node->func == api->func && node->str2arg == api->parser->str2arg &&
           node->ret2str == api->formatter->ret2str && node->clntinit == service->clnt_init &&
           node->clntdestroy == service->clnt_destroy;
}

namespace
{
size_t storage_size(const Api& api)
{
    const Record* record = reply_storage(api);
    return record ? record->size : sizeof(int);
}

// As int2str.
size_t format_int(int value, char* text)
{
    char digits[20];
    char* const end = digits + sizeof digits;
    const char* first = write_digits(end, value);
    const auto length = static_cast<size_t>(end - first);
    memcpy(text, first, length);
    text[length] = '\0';
    return length;
}
} // namespace

void* parse_argument(const Api& api, RecordRoom& request, char* text)
{
    const Parser& parser = *api.parser;
    return parser.own ? parser.own(request.bytes, text) : parse_record(*parser.form, request.bytes, text);
}

Call make_call(const Api& api, void* request, void* reply)
{
    memset(reply, 0, storage_size(api));
    return {static_cast<uint32_t>(api.procedure), api.request ? as_xdrproc(api.request->xdr) : as_xdrproc(xdr_void),
            request, api.reply ? as_xdrproc(api.reply->xdr) : as_xdrproc(xdr_int), reply};
}

size_t format_reply(const Api& api, const RecordRoom& reply, char* text)
{
    const Formatter& formatter = *api.formatter;
    if (!formatter.form)
        return format_int(load<int>(reply.bytes), text);
    if (formatter.own)
        formatter.own(reply.bytes, text);
    else
        format_record(*formatter.form, reply.bytes, text);
    return strlen(text);
}

void* call_api(void* request, CLIENT* clnt, const Api& api, void* clnt_res)
{
    const Call call = make_call(api, request, clnt_res);
    const enum clnt_stat status =
        clnt_call(clnt, call.procedure, call.encode, call.request, call.decode, call.reply, TIMEOUT);
    return status == RPC_SUCCESS ? clnt_res : nullptr;
}

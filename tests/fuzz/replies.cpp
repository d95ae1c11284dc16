// Reply bytes, any, through every stub's decoder and every formatter. The stub
// is the real one; its client is a CLIENT of ours that answers with the bytes.
//
// Input: API (2), flags (1: trace lines, 2: a stream without blocks), reply.
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/naive.h"

namespace
{
std::string reply_bytes;
bool without_blocks;

int32_t* no_block(XDR*, u_int) { return nullptr; }

enum clnt_stat answer(CLIENT*, rpcproc_t, xdrproc_t, void*, xdrproc_t decode, void* reply, struct timeval)
{
    const auto units = std::make_unique<uint32_t[]>(reply_bytes.size() / 4 + 1);
    memcpy(units.get(), reply_bytes.data(), reply_bytes.size());
    XDR xdrs;
    xdrmem_create(&xdrs, reinterpret_cast<char*>(units.get()), static_cast<u_int>(reply_bytes.size()), XDR_DECODE);
    XDR::xdr_ops operations = *xdrs.x_ops;
    operations.x_inline = no_block;
    if (without_blocks)
        xdrs.x_ops = &operations;
    return decode(&xdrs, reply) ? RPC_SUCCESS : RPC_CANTDECODERES;
}

void check_record(const Api& api, void* reply)
{
    const auto record = exact(reply, api.reply->size);
    const std::string text = api.formatter->ret2str(record.get());
    EXPECT(text.size() < api.output()->buffer, "a text that fits its buffer", "%zu characters", text.size());
    EXPECT(text == naive::format(*api.output(), record.get()), "the text of the plain writing", "\"%s\" of %s",
           text.c_str(), api.name);
}

void check_status(const Api& api, void* reply)
{
    const std::string text = api.formatter->ret2str(reply);
    if (!api.output())
        EXPECT(text == naive::print("%d", *static_cast<int*>(reply)), "the status in decimal", "\"%s\"", text.c_str());
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static CLIENT::clnt_ops operations = {};
    static CLIENT client = {};
    operations.cl_call = answer;
    client.cl_ops = &operations;

    Input input(data, size);
    const Api& api = choose_api(input);
    const unsigned flags = input.byte();
    set_debug(flags & 1);
    without_blocks = flags & 2;
    reply_bytes = input.rest();

    std::string no_text;
    void* reply = api.func(api.parser->str2arg(&no_text[0]), &client);
    const size_t needed = BYTES_PER_XDR_UNIT * (api.reply ? api.reply->units : 1);
    EXPECT(!reply == (reply_bytes.size() < needed), "a reply of all its units, or none", "%s of %zu bytes",
           reply ? "one" : "none", reply_bytes.size());
    if (reply)
        api.reply ? check_record(api, reply) : check_status(api, reply);
    return 0;
}

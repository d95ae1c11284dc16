// Reply bytes, any, through every stub's decoder and every formatter. The stub
// is the real one; its client answers with the bytes.
//
// Input: API (2), flags (1: trace lines, 2: a stream without blocks), reply.
#include "tests/fuzz/fuzz.h"
#include "tests/support/reference.h"
#include "tests/support/scripted_client.h"

namespace
{
void check_record(const Api& api, void* reply)
{
    const ExactMemory record(reply, api.reply->size);
    const std::string text = api.formatter->ret2str(record.data());
    EXPECT(text.size() < api.output()->buffer, "a text that fits its buffer", "%zu characters", text.size());
    EXPECT(text == reference::format(*api.output(), record.data()), "the text of the plain writing", "\"%s\" of %s",
           text.c_str(), api.name);
}

void check_status(const Api& api, void* reply)
{
    const std::string text = api.formatter->ret2str(reply);
    if (!api.output())
        EXPECT(text == reference::print("%d", *static_cast<int*>(reply)), "the status in decimal", "\"%s\"",
               text.c_str());
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input input(data, size);
    const Api& api = choose_api(input);
    const unsigned flags = input.byte();
    set_debug(flags & 1);
    ScriptedClient client;
    client.stream = flags & 2 ? Stream::Plain : Stream::Blocks;
    const std::string bytes = input.rest();
    client.reply.assign(bytes.begin(), bytes.end());

    void* reply = api.func(api.parser->str2arg(exact_text("").data()), client.get());
    const size_t needed = BYTES_PER_XDR_UNIT * (api.reply ? api.reply->units : 1);
    EXPECT(!reply == (bytes.size() < needed), "a reply of all its units, or none", "%s of %zu bytes",
           reply ? "one" : "none", bytes.size());
    if (reply)
        api.reply ? check_record(api, reply) : check_status(api, reply);
    return 0;
}

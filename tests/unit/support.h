// What the tests of several themes share: captured output, records with random
// content, XDR streams over memory, and a client whose daemon is the test.
#pragma once

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "common/service.h"
#include "common/trace.h"
#include "tests/unit/captured_output.h"

using Bytes = std::vector<unsigned char>;
using Random = std::mt19937;

inline int between(Random& random, int least, int most)
{
    return std::uniform_int_distribution<int>(least, most)(random);
}

// A text of `least` to `most` characters of `alphabet`.
inline std::string random_text(Random& random, const std::string& alphabet, int least, int most)
{
    std::string text(static_cast<size_t>(between(random, least, most)), '\0');
    for (char& c : text)
        c = alphabet[static_cast<size_t>(between(random, 0, static_cast<int>(alphabet.size()) - 1))];
    return text;
}

// Trace lines are on while this lives.
struct Tracing {
    Tracing() { rpclib_dbg = 1; }
    ~Tracing() { rpclib_dbg = 0; }
};

// What `run` prints to standard output with the trace lines on.
template <class Run> std::string traced(Run&& run)
{
    const Tracing on;
    CapturedOutput output;
    run();
    return output.text();
}

// Storage for any record, aligned as one; exactly as long, so that a sanitizer
// sees a step beyond it.
class Object
{
  public:
    explicit Object(const Record& record) : size(record.size), memory(operator new(size)) { memset(memory, 0, size); }
    ~Object() { operator delete(memory); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    char* data() { return static_cast<char*>(memory); }
    Bytes bytes() const { return Bytes(static_cast<char*>(memory), static_cast<char*>(memory) + size); }

  private:
    size_t size;
    void* memory;
};

// Random bytes in every field, zero between them.
inline void fill_randomly(Random& random, const Record& record, char* object)
{
    for (const Field& field : record)
        for (unsigned i = 0; i < field.count * size_of(field.kind); i++)
            object[field.offset + i] = static_cast<char>(between(random, 0, 255));
}

inline void append_unit(Bytes& bytes, uint32_t unit)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<unsigned char>(unit >> shift));
}

// Units as they travel.
inline Bytes units(const std::vector<uint32_t>& values)
{
    Bytes bytes;
    for (const uint32_t value : values)
        append_unit(bytes, value);
    return bytes;
}

// The units of a text in an array of `count` characters.
inline Bytes text_units(const std::string& text, size_t count)
{
    std::vector<uint32_t> values(count);
    for (size_t i = 0; i < text.size(); i++)
        values[i] = static_cast<uint32_t>(static_cast<int32_t>(text[i]));
    return units(values);
}

inline Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// An XDR stream over memory. A plain one offers no block of its buffer, so that
// every field goes through an XDR routine of its own.
enum class Stream { Blocks, Plain };

class MemoryStream
{
  public:
    MemoryStream(xdr_op operation, void* bytes, size_t size, Stream stream = Stream::Blocks)
    {
        xdrmem_create(&xdrs, static_cast<char*>(bytes), static_cast<u_int>(size), operation);
        ops = *xdrs.x_ops;
        if (stream == Stream::Plain)
            ops.x_inline = [](XDR*, u_int) -> int32_t* { return nullptr; };
        xdrs.x_ops = &ops;
    }
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;

    XDR* get() { return &xdrs; }
    size_t position() { return XDR_GETPOS(&xdrs); }

  private:
    XDR xdrs = {};
    std::remove_const_t<std::remove_pointer_t<decltype(xdrs.x_ops)>> ops = {};
};

// Memory of exactly `size` bytes with some content, for a stream to read.
class ExactBuffer
{
  public:
    explicit ExactBuffer(const unsigned char* bytes, size_t size) : memory(operator new(size))
    {
        std::copy(bytes, bytes + size, static_cast<unsigned char*>(memory));
    }
    ~ExactBuffer() { operator delete(memory); }
    ExactBuffer(const ExactBuffer&) = delete;
    ExactBuffer& operator=(const ExactBuffer&) = delete;

    void* data() { return memory; }

  private:
    void* memory;
};

// A client whose calls end in the test: it keeps the request's body and decodes
// the reply that was laid ready.
class ScriptedClient
{
  public:
    ScriptedClient()
    {
        ops.cl_call = call;
        clnt.cl_ops = &ops;
        clnt.cl_private = this;
    }
    ScriptedClient(const ScriptedClient&) = delete;
    ScriptedClient& operator=(const ScriptedClient&) = delete;

    CLIENT* get() { return &clnt; }

    Bytes reply;                         // to decode
    enum clnt_stat status = RPC_SUCCESS; // of the calls
    rpcproc_t procedure = 0;             // of the latest call
    Bytes request;                       // of the latest call
    timeval timeout = {};                // of the latest call
    xdrproc_t decoder = nullptr;         // of the latest call
    int calls = 0;

  private:
    static enum clnt_stat call(CLIENT* clnt, rpcproc_t procedure, xdrproc_t encode, void* request, xdrproc_t decode,
                               void* reply, timeval timeout)
    {
        auto& self = *static_cast<ScriptedClient*>(clnt->cl_private);
        self.calls++;
        self.procedure = procedure;
        self.timeout = timeout;
        self.decoder = decode;
        self.request.resize(UDPMSGSIZE);
        MemoryStream to(XDR_ENCODE, self.request.data(), self.request.size());
        if (!encode(to.get(), request))
            return RPC_CANTENCODEARGS;
        self.request.resize(to.position());
        if (self.status != RPC_SUCCESS)
            return self.status;
        ExactBuffer body(self.reply.data(), self.reply.size());
        MemoryStream from(XDR_DECODE, body.data(), self.reply.size());
        return decode(from.get(), reply) ? RPC_SUCCESS : RPC_CANTDECODERES;
    }

    CLIENT clnt = {};
    CLIENT::clnt_ops ops = {};
};

// Runs `visit(service, api)` for every remote procedure.
template <class Visit> void for_each_api(Visit&& visit)
{
    for (const Service* service : all_services)
        for (const Api& api : *service)
            visit(*service, api);
}

// Every record that travels, each once, the blocks inside others too.
inline std::vector<const Record*> all_records()
{
    std::vector<const Record*> records;
    const auto add = [&](const Record* record) {
        if (record && std::find(records.begin(), records.end(), record) == records.end())
            records.push_back(record);
    };
    for_each_api([&](const Service&, const Api& api) {
        for (const Record* record : {api.request, api.reply})
            if (record) {
                add(record);
                add(record->block);
            }
    });
    return records;
}

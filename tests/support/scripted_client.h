// Calls that end in the test: what travels as bytes and as units, XDR streams over memory,
// and a client that keeps what it is sent and answers with what the test says.
#pragma once

#include <cstdint>
#include <rpc/rpc.h>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/exact_memory.h"

using Bytes = std::vector<unsigned char>;
using Units = std::vector<uint32_t>;

inline void append_unit(Bytes& bytes, uint32_t unit)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<unsigned char>(unit >> shift));
}

// Units as they travel, and back.
inline Bytes units(const Units& values)
{
    Bytes bytes;
    for (const uint32_t value : values)
        append_unit(bytes, value);
    return bytes;
}

inline Units units_of(const Bytes& bytes)
{
    Units values;
    for (size_t i = 0; i + 4 <= bytes.size(); i += 4)
        values.push_back(uint32_t{bytes[i]} << 24 | uint32_t{bytes[i + 1]} << 16 | uint32_t{bytes[i + 2]} << 8 |
                         bytes[i + 3]);
    return values;
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

// Bytes for a stream to read, and no more of them.
inline ExactMemory exact_stream(const Bytes& bytes, size_t size) { return {bytes.data(), size, BYTES_PER_XDR_UNIT}; }

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
    Stream stream = Stream::Blocks;      // that it is decoded from
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
        const ExactMemory body = exact_stream(self.reply, self.reply.size());
        MemoryStream from(XDR_DECODE, body.data(), body.size(), self.stream);
        return decode(from.get(), reply) ? RPC_SUCCESS : RPC_CANTDECODERES;
    }

    CLIENT clnt = {};
    CLIENT::clnt_ops ops = {};
};

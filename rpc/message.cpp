// Encoding calls and decoding replies, see message.h.
#include "rpc/message.h"

namespace
{
constexpr unsigned call_units = 10;
constexpr unsigned reply_units = 6; // without the verifier's body
constexpr uint32_t rpc_version = 2;

enum clnt_stat status_of_denial(const uint32_t* units, size_t count)
{
    if (count < 4)
        return RPC_CANTDECODERES;
    switch (ntohl(units[3])) {
    case RPC_MISMATCH:
        return RPC_VERSMISMATCH;
    case AUTH_ERROR:
        return RPC_AUTHERROR;
    default:
        return RPC_CANTDECODERES;
    }
}

enum clnt_stat status_of_acceptance(uint32_t accept_stat)
{
    switch (accept_stat) {
    case SUCCESS:
        return RPC_SUCCESS;
    case PROG_UNAVAIL:
        return RPC_PROGUNAVAIL;
    case PROG_MISMATCH:
        return RPC_PROGVERSMISMATCH;
    case PROC_UNAVAIL:
        return RPC_PROCUNAVAIL;
    case GARBAGE_ARGS:
        return RPC_CANTDECODEARGS;
    case SYSTEM_ERR:
        return RPC_SYSTEMERROR;
    default:
        return RPC_CANTDECODERES;
    }
}

// The reply's status, and where its body begins. A verifier may hold up to
// MAX_AUTH_BYTES, which are skipped.
enum clnt_stat read_header(const uint32_t* units, size_t count, size_t& body)
{
    if (count < 3 || ntohl(units[1]) != REPLY)
        return RPC_CANTDECODERES;
    if (ntohl(units[2]) == MSG_DENIED)
        return status_of_denial(units, count);
    if (ntohl(units[2]) != MSG_ACCEPTED || count < reply_units)
        return RPC_CANTDECODERES;
    const uint32_t verifier_size = ntohl(units[4]);
    if (verifier_size > MAX_AUTH_BYTES)
        return RPC_CANTDECODERES;
    body = reply_units + (verifier_size + 3) / 4;
    return count < body ? RPC_CANTDECODERES : status_of_acceptance(ntohl(units[body - 1]));
}
} // namespace

size_t encode_call(const CallHeader& call, xdrproc_t encode, void* request, uint32_t* units)
{
    const uint32_t header[call_units] = {call.xid,       CALL,      rpc_version, call.program, call.version,
                                         call.procedure, AUTH_NONE, 0,           AUTH_NONE,    0};
    for (unsigned i = 0; i < call_units; i++)
        units[i] = htonl(header[i]);
    XDR xdrs;
    xdrmem_create(&xdrs, reinterpret_cast<char*>(units + call_units), sizeof(uint32_t) * (datagram_units - call_units),
                  XDR_ENCODE);
    return encode(&xdrs, request) ? sizeof(uint32_t) * call_units + XDR_GETPOS(&xdrs) : 0;
}

bool answers(ssize_t size, const uint32_t* units, uint32_t xid)
{
    return size >= static_cast<ssize_t>(sizeof xid) && ntohl(units[0]) == xid;
}

enum clnt_stat decode_reply(uint32_t* units, size_t size, xdrproc_t decode, void* reply, rpc_err& error)
{
    const size_t count = size / sizeof(uint32_t);
    size_t body = 0;
    const enum clnt_stat status = read_header(units, count, body);
    error = {};
    error.re_status = status;
    if (status == RPC_PROGVERSMISMATCH && count >= body + 2) {
        error.re_vers.low = ntohl(units[body]);
        error.re_vers.high = ntohl(units[body + 1]);
    }
    if (status != RPC_SUCCESS)
        return status;
    XDR xdrs;
    xdrmem_create(&xdrs, reinterpret_cast<char*>(units + body), static_cast<u_int>(size - sizeof(uint32_t) * body),
                  XDR_DECODE);
    if (!decode(&xdrs, reply))
        error.re_status = RPC_CANTDECODERES;
    return error.re_status;
}

// The messages of a call (RFC 5531, section 9): a call's datagram from its
// request, and what a datagram says in reply. No input or output, no storage of
// their own.
#pragma once

#include <cstdint>
#include <rpc/rpc.h>
#include <sys/types.h>

// Big enough for any datagram of libtirpc's; what a longer reply has behind that
// is not read. In units, so that XDR streams can store whole ones.
constexpr size_t datagram_units = UDPMSGSIZE / BYTES_PER_XDR_UNIT;

// Whom a call is for. The xid tells the reply to it from every other datagram.
struct CallHeader {
    uint32_t xid;
    uint32_t program;
    uint32_t version;
    uint32_t procedure;
};

// Writes the call message with AUTH_NONE and the request into `units`, which are
// datagram_units. Its size in bytes, or 0 when the request does not fit.
size_t encode_call(const CallHeader& header, xdrproc_t encode, void* request, uint32_t* units);

// True when a datagram of `size` bytes (-1: none) bears the call's xid. Others
// are late or doubled replies to calls that are over.
bool answers(ssize_t size, const uint32_t* units, uint32_t xid);

// What a datagram of `size` bytes that bears the call's xid says: RPC_SUCCESS
// with `reply` decoded, the refusal that it carries, or RPC_CANTDECODERES. Of
// RPC_PROGVERSMISMATCH the daemon's versions stand in `error`.
enum clnt_stat decode_reply(uint32_t* units, size_t size, xdrproc_t decode, void* reply, rpc_err& error);

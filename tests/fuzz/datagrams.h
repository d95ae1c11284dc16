// Reply datagrams of an input: how they are made, and what libtirpc's
// xdr_replymsg makes of them. Shares no code with the library's own decoding.
#pragma once

#include <algorithm>
#include <arpa/inet.h>
#include <string>

#include "tests/fuzz/fuzz.h"

// A datagram's kind in an input.
enum Datagram : unsigned {
    right_xid = 1,     // its first unit is the call's xid
    good_header = 2,   // an accepted reply's header stands before the bytes
    from_stranger = 4, // comes from another port than the daemon's
    filled = 8,        // zeros follow, as many units as the reply record has
    oversized = 16,    // zeros follow, up to more than any reply has
};

constexpr size_t oversize = 9200;

inline std::string unit(uint32_t value)
{
    value = htonl(value);
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

inline std::string accepted(uint32_t xid)
{
    return unit(xid) + unit(REPLY) + unit(MSG_ACCEPTED) + std::string(12, '\0');
}

inline std::string make_datagram(Input& input, unsigned kind, uint32_t xid, size_t reply_size)
{
    std::string datagram = kind & good_header ? accepted(xid) : "";
    datagram += input.bytes(input.word());
    if (kind & filled)
        datagram += std::string(reply_size, '\0');
    if (kind & oversized && datagram.size() < oversize)
        datagram.resize(oversize);
    if (kind & right_xid && datagram.size() >= 4)
        datagram.replace(0, 4, unit(xid));
    return datagram;
}

// What the call has to give: a reply's bytes in memory, or nothing.
struct Outcome {
    bool success;
    std::string reply;
};

inline const Record* expected_record;

inline bool_t decode_expected(XDR* xdrs, void* reply)
{
    return expected_record ? xdr_record(xdrs, *expected_record, reply) : xdr_int(xdrs, static_cast<int*>(reply));
}

inline Outcome outcome_of(std::string datagram, const Api& api)
{
    expected_record = api.reply;
    Outcome outcome = {false, std::string(api.reply ? api.reply->size : sizeof(int), '\0')};
    char verifier[MAX_AUTH_BYTES];
    rpc_msg message = {};
    message.acpted_rply.ar_verf.oa_base = verifier;
    message.acpted_rply.ar_results.where = &outcome.reply[0];
    message.acpted_rply.ar_results.proc = reinterpret_cast<xdrproc_t>(reinterpret_cast<void (*)()>(decode_expected));
    datagram.resize(std::min(datagram.size(), size_t{UDPMSGSIZE}));
    XDR xdrs;
    xdrmem_create(&xdrs, &datagram[0], static_cast<u_int>(datagram.size()), XDR_DECODE);
    if (xdr_replymsg(&xdrs, &message)) {
        rpc_err error;
        _seterr_reply(&message, &error);
        outcome.success = error.re_status == RPC_SUCCESS;
    }
    return outcome;
}

inline bool is_of_call(const std::string& datagram, uint32_t xid) { return datagram.compare(0, 4, unit(xid)) == 0; }

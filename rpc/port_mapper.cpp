// The port query's steps, see port_mapper.h.
#include "rpc/port_mapper.h"

#include <cerrno>
#include <cstring>
#include <iterator>
#include <netinet/in.h>
#include <rpc/pmap_prot.h>
#include <rpc/rpcb_prot.h>

#include "rpc/record.h"

namespace
{
constexpr int64_t repeat_after_ms[] = {500, 1000, 2000}; // each after the one before
constexpr unsigned most_address = 64;                    // characters of a universal address

// The arguments and the answer of RPCBPROC_GETADDR (RFC 1833, section 2).
struct AddressQuery {
    uint32_t program;
    uint32_t version;
};

bool_t xdr_text(XDR* xdrs, const char* text)
{
    char* writable = const_cast<char*>(text);
    return xdr_string(xdrs, &writable, most_address);
}

bool_t xdr_address_query(XDR* xdrs, AddressQuery* query)
{
    return xdr_u_int(xdrs, &query->program) && xdr_u_int(xdrs, &query->version) && xdr_text(xdrs, "udp") &&
           xdr_text(xdrs, "") && xdr_text(xdrs, "");
}

bool_t xdr_port_query(XDR* xdrs, AddressQuery* query)
{
    u_int protocol = IPPROTO_UDP, port = 0;
    return xdr_u_int(xdrs, &query->program) && xdr_u_int(xdrs, &query->version) && xdr_u_int(xdrs, &protocol) &&
           xdr_u_int(xdrs, &port);
}

// "127.0.0.1.195.146" as its port, the empty text as 0: the last two numbers,
// whatever host stands before them. False for any other text.
bool read_port(const char* address, u_int& port)
{
    const char* end = address + strlen(address);
    port = 0;
    if (end == address)
        return true;
    for (unsigned part = 0, scale = 1; part < 2; part++, scale *= 256) {
        unsigned value = 0, digit_scale = 1, digits = 0;
        while (end > address && end[-1] >= '0' && end[-1] <= '9' && digits < 3) {
            value += static_cast<unsigned>(*--end - '0') * digit_scale;
            digit_scale *= 10;
            digits++;
        }
        if (digits == 0 || value > 255 || end == address || *--end != '.')
            return false;
        port += value * scale;
    }
    return true;
}

bool_t xdr_address(XDR* xdrs, u_int* port)
{
    char address[most_address + 1] = "";
    char* text = address;
    return xdr_string(xdrs, &text, most_address) && read_port(address, *port);
}
} // namespace

PortQuery::State PortQuery::start(uint32_t first_xid)
{
    if (!open_udp_socket(socket, PMAPPORT, LocalPort::Any, 0, 0, life))
        return fail(RPC_SYSTEMERROR, errno);
    xid = first_xid;
    end = Deadline::after(port_query_ms);
    return ask();
}

void PortQuery::close()
{
    if (life == Life::Long)
        socket.close();
    else if (socket.is_open())
        socket.close_blindly();
}

PortQuery::State PortQuery::ask()
{
    uint32_t units[datagram_units];
    AddressQuery query = {program, program_version};
    const CallHeader header = {xid, PMAPPROG, version, PMAPPROC_GETPORT}; // RPCBPROC_GETADDR is the same number
    const size_t size = encode_call(
        header, version == PMAPVERS ? as_xdrproc(xdr_port_query) : as_xdrproc(xdr_address_query), &query, units);
    if (socket.send(units, size) < 0 && errno != EAGAIN && errno != EINTR)
        return errno == ECONNREFUSED ? fail(RPC_CANTRECV, errno) : fail(RPC_CANTSEND, errno);
    repeat = asked < std::size(repeat_after_ms) ? Deadline::after(repeat_after_ms[asked]) : end;
    asked++;
    return State::Asking;
}

PortQuery::State PortQuery::check_time()
{
    if (end.left() <= 0)
        return fail(RPC_TIMEDOUT);
    return repeat.left() > 0 ? State::Asking : ask();
}

PortQuery::State PortQuery::receive()
{
    uint32_t units[datagram_units];
    for (;;) {
        const ssize_t got = socket.receive(units, sizeof units, MSG_DONTWAIT);
        if (got < 0)
            return errno == EAGAIN || errno == EINTR ? State::Asking : fail(RPC_CANTRECV, errno);
        if (!answers(got, units, xid))
            continue;
        if (const State state = take(units, static_cast<size_t>(got)); state != State::Asking)
            return state;
    }
}

PortQuery::State PortQuery::take(uint32_t* units, size_t size)
{
    u_int port = 0;
    rpc_err error;
    const enum clnt_stat status =
        decode_reply(units, size, version == PMAPVERS ? as_xdrproc(xdr_u_int) : as_xdrproc(xdr_address), &port, error);
    if (status == RPC_PROGVERSMISMATCH && version == PMAPVERS)
        return use_versions(error);
    if (status != RPC_SUCCESS || port > UINT16_MAX) {
        fail(RPC_PMAPFAILURE);
        why.error = error;
        why.error.re_status = status != RPC_SUCCESS ? status : RPC_CANTDECODERES;
        return State::Failed;
    }
    if (port == 0)
        return fail(RPC_PROGNOTREGISTERED);
    found = static_cast<uint16_t>(port);
    return State::Found;
}

// Asks in another version; late answers to the first one are another call's.
PortQuery::State PortQuery::use_versions(const rpc_err& error)
{
    version = error.re_vers.high >= RPCBVERS4 ? RPCBVERS4 : RPCBVERS;
    xid++;
    asked = 0;
    return ask();
}

PortQuery::State PortQuery::fail(enum clnt_stat status, int number)
{
    why = {};
    why.status = status;
    why.error.re_status = status;
    why.error.re_errno = number;
    return State::Failed;
}

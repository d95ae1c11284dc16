// The call operation: a connected socket, a call header with AUTH_NONE, and
// replies of other calls passed over.
#include "rpc/exchange.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <unistd.h>

bool (*call_is_unwanted)();

namespace
{
// Headers as RFC 5531, section 9 lays them out, in units.
constexpr unsigned call_units = 10;
constexpr unsigned reply_units = 6; // without the verifier's body
constexpr uint32_t rpc_version = 2;

// Big enough for any datagram of libtirpc's; what a longer reply has behind
// that is not read. In units, so that XDR streams can store whole ones.
constexpr size_t most_units = UDPMSGSIZE / BYTES_PER_XDR_UNIT;

Exchange& exchange_of(CLIENT* clnt) { return *reinterpret_cast<Exchange*>(clnt->cl_ops); }

// Moves on by itself; its resolution of a few milliseconds is enough for a
// deadline and it costs a fifth of the precise clock.
int64_t milliseconds_now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

int64_t milliseconds_of(timeval time) { return static_cast<int64_t>(time.tv_sec) * 1000 + (time.tv_usec + 999) / 1000; }

enum clnt_stat fail(Exchange& exchange, enum clnt_stat status, int number = 0)
{
    exchange.error.re_status = status;
    exchange.error.re_errno = number;
    return status;
}

// The socket waits by itself as long as a call may, so that a reply costs one
// system call; a zero wait would be without end.
bool set_wait(Exchange& exchange, timeval wait)
{
    if (wait.tv_sec == exchange.wait.tv_sec && wait.tv_usec == exchange.wait.tv_usec)
        return true;
    const timeval at_least = wait.tv_sec || wait.tv_usec ? wait : timeval{0, 1};
    if (setsockopt(exchange.fd, SOL_SOCKET, SO_RCVTIMEO, &at_least, sizeof at_least) != 0)
        return false;
    exchange.wait = wait;
    return true;
}

// Encodes the call message into `units`; 0 when the arguments do not fit.
u_int encode_call(const Exchange& exchange, rpcproc_t procedure, xdrproc_t encode, void* request, uint32_t* units)
{
    const uint32_t header[call_units] = {exchange.xid,   CALL,
                                         rpc_version,    static_cast<uint32_t>(exchange.program),
                                         server_version, static_cast<uint32_t>(procedure),
                                         AUTH_NONE,      0,
                                         AUTH_NONE,      0};
    for (unsigned i = 0; i < call_units; i++)
        units[i] = htonl(header[i]);
    XDR xdrs;
    xdrmem_create(&xdrs, reinterpret_cast<char*>(units + call_units), sizeof(uint32_t) * (most_units - call_units),
                  XDR_ENCODE);
    return encode(&xdrs, request) ? sizeof(uint32_t) * call_units + XDR_GETPOS(&xdrs) : 0;
}

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

// Decodes the reply message in `units`, `size` bytes long, which carries the
// call's xid. A verifier may hold up to MAX_AUTH_BYTES, which are skipped.
enum clnt_stat decode_reply(uint32_t* units, size_t size, xdrproc_t decode, void* reply)
{
    const size_t count = size / sizeof(uint32_t);
    if (count < 3 || ntohl(units[1]) != REPLY)
        return RPC_CANTDECODERES;
    if (ntohl(units[2]) == MSG_DENIED)
        return status_of_denial(units, count);
    if (ntohl(units[2]) != MSG_ACCEPTED || count < reply_units)
        return RPC_CANTDECODERES;
    const uint32_t verifier_size = ntohl(units[4]);
    if (verifier_size > MAX_AUTH_BYTES)
        return RPC_CANTDECODERES;
    const size_t body = reply_units + (verifier_size + 3) / 4;
    if (count < body)
        return RPC_CANTDECODERES;
    const enum clnt_stat status = status_of_acceptance(ntohl(units[body - 1]));
    if (status != RPC_SUCCESS)
        return status;
    XDR xdrs;
    xdrmem_create(&xdrs, reinterpret_cast<char*>(units + body), static_cast<u_int>(size - sizeof(uint32_t) * body),
                  XDR_DECODE);
    return decode(&xdrs, reply) ? RPC_SUCCESS : RPC_CANTDECODERES;
}

// True when `got` bytes in `units` answer the call `xid`. Others are late or
// doubled replies to calls that are over.
bool answers(ssize_t got, const uint32_t* units, uint32_t xid)
{
    return got >= static_cast<ssize_t>(sizeof xid) && ntohl(units[0]) == xid;
}

// Sends the call and receives its reply into the same units. Returns the
// reply's size, or -1 with the failure noted.
ssize_t transact(Exchange& exchange, uint32_t* units, u_int call_size, timeval wait)
{
    const int64_t deadline = milliseconds_now() + milliseconds_of(wait);
    while (send(exchange.fd, units, call_size, MSG_NOSIGNAL) < 0) {
        if (errno != EINTR)
            return fail(exchange, RPC_CANTSEND, errno), -1;
        if (call_is_unwanted && call_is_unwanted())
            return fail(exchange, RPC_INTR, EINTR), -1;
    }
    ssize_t got = recv(exchange.fd, units, sizeof(uint32_t) * most_units, 0);
    while (!answers(got, units, exchange.xid)) {
        if (got < 0 && errno == EINTR && call_is_unwanted && call_is_unwanted())
            return fail(exchange, RPC_INTR, EINTR), -1;
        if (got < 0 && errno != EINTR && errno != EAGAIN)
            return fail(exchange, RPC_CANTRECV, errno), -1;
        const int64_t left = deadline - milliseconds_now();
        if (left <= 0)
            return fail(exchange, RPC_TIMEDOUT), -1;
        pollfd readable = {exchange.fd, POLLIN, 0};
        got = poll(&readable, 1, static_cast<int>(left));
        if (got > 0)
            got = recv(exchange.fd, units, sizeof(uint32_t) * most_units, MSG_DONTWAIT);
    }
    return got;
}

enum clnt_stat call(CLIENT* clnt, rpcproc_t procedure, xdrproc_t encode, void* request, xdrproc_t decode, void* reply,
                    timeval wait)
{
    Exchange& exchange = exchange_of(clnt);
    uint32_t units[most_units];
    if (!set_wait(exchange, wait))
        return fail(exchange, RPC_SYSTEMERROR, errno);
    exchange.xid++;
    const u_int call_size = encode_call(exchange, procedure, encode, request, units);
    if (call_size == 0)
        return fail(exchange, RPC_CANTENCODEARGS);
    const ssize_t reply_size = transact(exchange, units, call_size, wait);
    if (reply_size < 0)
        return exchange.error.re_status;
    const enum clnt_stat status = decode_reply(units, static_cast<size_t>(reply_size), decode, reply);
    return status == RPC_SUCCESS ? status : fail(exchange, status);
}

void get_error(CLIENT* clnt, rpc_err* error) { *error = exchange_of(clnt).error; }

// libtirpc binds a client to the first free port of its range, which would be
// the failed client's own: a reply that comes late would then reach the next
// client, or the port query that makes it. So a destroyed client's port stays
// taken until its successor has another.
void destroy(CLIENT* clnt)
{
    Exchange& exchange = exchange_of(clnt);
    release_port(exchange);
    exchange.kept_port = fcntl(exchange.fd, F_DUPFD_CLOEXEC, 0) + 1;
    clnt->cl_ops = exchange.original;
    clnt_destroy(clnt);
}

bool refuse(int number)
{
    rpc_createerr.cf_stat = RPC_SYSTEMERROR;
    rpc_createerr.cf_error.re_status = RPC_SYSTEMERROR;
    rpc_createerr.cf_error.re_errno = number;
    return false;
}

uint32_t first_xid()
{
    uint32_t xid;
    if (getrandom(&xid, sizeof xid, GRND_NONBLOCK) == sizeof xid)
        return xid;
    return static_cast<uint32_t>(milliseconds_now()) ^ static_cast<uint32_t>(getpid()) << 16;
}
} // namespace

bool take_over(Exchange& exchange, CLIENT* clnt, rpcprog_t program, timeval wait)
{
    int fd = -1;
    netbuf server = {};
    if (!clnt_control(clnt, CLGET_FD, &fd) || !clnt_control(clnt, CLGET_SVC_ADDR, &server))
        return refuse(EINVAL);
    exchange.fd = fd;
    exchange.wait = {0, 0};
    if (fcntl(fd, F_SETFD, FD_CLOEXEC) != 0 || fcntl(fd, F_SETFL, 0) != 0 ||
        connect(fd, static_cast<const sockaddr*>(server.buf), server.len) != 0 || !set_wait(exchange, wait))
        return refuse(errno);
    release_port(exchange);
    exchange.program = program;
    exchange.xid = first_xid();
    exchange.original = clnt->cl_ops;
    exchange.ops = *clnt->cl_ops;
    exchange.ops.cl_call = call;
    exchange.ops.cl_geterr = get_error;
    exchange.ops.cl_destroy = destroy;
    clnt->cl_ops = &exchange.ops;
    return true;
}

void release_port(Exchange& exchange)
{
    if (exchange.kept_port > 0)
        close(exchange.kept_port - 1);
    exchange.kept_port = 0;
}

// Where a daemon listens: the port mapper's answer (RFC 1833). It is asked over
// a connected socket, so that nobody but 127.0.0.1's own port mapper is heard,
// and only the port of its answer counts.
#pragma once

#include <cstdint>
#include <rpc/rpc.h>

#include "rpc/clock.h"
#include "rpc/message.h"
#include "rpc/udp_socket.h"

constexpr int64_t port_query_ms = 5000; // the longest that a port query takes

// Why there is no client: what clnt_pcreateerror tells of (rpc_createerr).
struct CreationFailure {
    enum clnt_stat status;
    rpc_err error; // of RPC_PMAPFAILURE, and the number of others
};

// One port query: a step at a time, for callers that wait for several. A query
// changes nothing at the port mapper, so it is repeated while no answer comes.
// Version 2 is asked first, which every port mapper speaks; one that refuses it
// is asked in the version that it names.
class PortQuery
{
  public:
    enum class State : uint8_t { Asking, Found, Failed };

    PortQuery(uint32_t program, uint32_t version, Life life) : program(program), program_version(version), life(life) {}
    ~PortQuery() { close(); }
    PortQuery(const PortQuery&) = delete;
    PortQuery& operator=(const PortQuery&) = delete;

    // Opens the socket and asks, under a number that nobody can guess.
    State start(uint32_t xid);
    // Takes the datagrams that came; never waits.
    State receive();
    // Asks again or gives up, where it is time.
    State check_time();

    // Gives the query up.
    void close();

    int fd() const { return socket.fd; }
    Deadline next() const { return repeat.or_sooner(end); } // for check_time
    uint16_t port() const { return found; }                 // of Found
    const CreationFailure& failure() const { return why; }  // of Failed

  private:
    State ask();
    State fail(enum clnt_stat status, int number = 0);
    State take(uint32_t* units, size_t size);
    State use_versions(const rpc_err& error);

    const uint32_t program, program_version; // that are looked for
    const Life life;                         // of the socket
    uint32_t version = 2;                    // of the port mapper's protocol
    uint32_t xid = 0;
    unsigned asked = 0;
    uint16_t found = 0;
    UdpSocket socket;
    Deadline repeat = {0}, end = {0};
    CreationFailure why = {};
};

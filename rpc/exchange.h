// One call over a kept UDP socket: one datagram out, the daemon's own reply to
// it in, one deadline over everything (RFC 5531).
//
// clnt_create makes the handle; take_over gives it a call operation of our own
// behind clnt_call, because libtirpc's sends a call again after 15 seconds,
// takes a datagram from anybody, counts a late reply to an earlier call as a
// lost one, shares its socket with forked children and programs started from
// here, and blocks every signal for up to 25 seconds.
#pragma once

#include <cstdint>
#include <rpc/rpc.h>

constexpr rpcvers_t server_version = 1; // of every service's program

// What one handle's calls need. `ops` is the handle's operation table, which is
// how a call operation finds its Exchange.
struct Exchange {
    CLIENT::clnt_ops ops;
    CLIENT::clnt_ops* original; // libtirpc's operations of the same handle
    rpcprog_t program;
    uint32_t xid;        // of the latest call
    timeval wait;        // for which the socket is set up
    rpc_err error;       // of the latest failed call
    unsigned generation; // of the process that made the handle
    int fd;              // the handle's socket
    int kept_port;       // a socket that keeps a failed client's port, + 1; 0 is none
};

// Makes `clnt` (from clnt_create, over UDP) call through `exchange` from now
// on: its socket hears the daemon alone and is closed on exec. `exchange` stays
// where it is while the handle lives. False, with rpc_createerr set, when the
// socket refuses.
bool take_over(Exchange& exchange, CLIENT* clnt, rpcprog_t program, timeval wait);

// Frees the port of a destroyed client, see exchange.cpp.
void release_port(Exchange& exchange);

// Asked when a signal handler returned during a call: should the call be given
// up, because whoever made it wants to stop? Null asks nobody: the call goes on
// to its deadline.
extern bool (*call_is_unwanted)();

// A service's clients: made by calls that find none idle, kept for later ones,
// dropped after a failed one. A host with one thread has one client a service;
// each thread that calls at the same time has another, up to most_clients.
//
// Any thread may call at any time. No lock is held while a client is made or
// waited for, or while a call runs.
#pragma once

#include <cstdint>
#include <pthread.h>
#include <rpc/rpc.h>

#include "rpc/exchange.h"
#include "rpc/port_mapper.h"
#include "rpc/udp_socket.h"

constexpr char server_host[] = "127.0.0.1";
constexpr char server_transport[] = "udp";
constexpr rpcvers_t server_version = 1;
constexpr timeval TIMEOUT = {25, 0}; // of a whole call

constexpr unsigned most_clients = 8; // of one service

// A socket to the daemon, which one call at a time uses.
struct Client {
    enum class State : uint8_t { None, Idle, Lent };

    State state = State::None;
    TimeLeft time = TimeLeft::Some; // of the call that it is lent to
    unsigned generation = 0;        // of the service's clients when it was made
    uint32_t xid = 0;               // of the latest call
    UdpSocket socket;
};

// What a service keeps of its clients. Zero at load.
struct ClientPool {
    Client clients[most_clients];
    unsigned generation;      // counts failed calls: clients of an older one are stale
    unsigned waiting;         // calls that wait for a client
    uint16_t port;            // of the daemon, as find_port last saw it; 0 is none
    unsigned port_generation; // of the clients at that time
    pthread_cond_t came_back; // PTHREAD_COND_INITIALIZER is zero
    ClientPool* next;         // among those that have ever had a client
    bool is_listed;

    CLIENT handle; // what get_client gives to functions of the RPC library
    rpc_err error; // of the handle's latest failed call
};

struct ServiceClient {
    uint32_t program;
    ClientPool* pool;
};

// A client for one call, idle or new, for the caller until it is given back.
// Null with `failure` filled: RPC_TIMEDOUT with EBUSY where every client is
// lent until the deadline.
Client* lend_client(const ServiceClient& service, Deadline deadline, const Caller& caller, CreationFailure& failure);

// An idle client, or null where none is at hand.
Client* lend_idle_client(const ServiceClient& service);

// Keeps a connected socket as an idle client where there is room for one, else
// closes it.
void keep_as_client(const ServiceClient& service, UdpSocket& socket);

// The daemon's port, for callers with sockets of their own: asked for once, and
// again after forget_port or a failed call. False with `failure` filled.
bool find_port(const ServiceClient& service, Deadline deadline, const Caller& caller, uint16_t& port,
               CreationFailure& failure);
void forget_port(const ServiceClient& service);

// A call through a lent client; storage for its datagrams is the caller's,
// datagram_units of it. RPC_SUCCESS, or the failure, told in `error` too.
enum clnt_stat call_client(const ServiceClient& service, Client& client, const Call& call, Deadline deadline,
                           const Caller& caller, uint32_t* units, rpc_err& error);

// Gives the client back. One whose call failed is dropped, and all that are idle
// then are stale: the daemon may have been restarted.
void give_back_client(const ServiceClient& service, Client& client, bool failed);

// Tells standard error why there is no client, as clnt_pcreateerror does, and
// leaves it in rpc_createerr.
void tell_creation_failure(const CreationFailure& failure);

// The service's handle for callers that go through clnt_call: its calls lend a
// client each. Null when no client can be made, which standard error is told.
CLIENT* get_client(const ServiceClient& service);

// Drops the service's clients: the next call makes one. As clnt_destroy, meant
// for a service whose get_client gave a handle.
void destroy_client(const ServiceClient& service);

// From now on `caller` waits for the calls that this thread makes through
// handles; null: nobody who could give up. One thread at a time has one.
void set_handle_caller(const Caller* caller);

// Drops every client of the process. While `keep` is false, later calls keep
// none either.
void destroy_all_clients();
void keep_clients(bool keep);

// One service's client: made by its first call, kept for all later ones,
// dropped after a failed one.
#pragma once

#include <cstdint>
#include <rpc/rpc.h>

#include "rpc/exchange.h"

constexpr char server_host[] = "127.0.0.1";
constexpr char server_transport[] = "udp";
constexpr timeval TIMEOUT = {25, 0}; // of a whole call

// What a service keeps of its client. `clnt` is null until the first call of
// any of its APIs and after a drop.
struct ServiceClient {
    const rpcprog_t program;
    CLIENT* clnt = nullptr;
    Exchange exchange = {};
    ServiceClient* next = nullptr; // among the clients that hold a socket
};

// The service's handle, made with clnt_create where there is none. Null when
// it cannot be made; clnt_pcreateerror has then told standard error why. In a
// forked child the parent's handle is given up for one of the child's own.
CLIENT* get_client(ServiceClient& client);

// Destroys the handle. As clnt_destroy, it wants one: call it only after
// get_client returned one.
void destroy_client(ServiceClient& client);

// Destroys every client of the process and closes every socket kept for one.
void destroy_all_clients();

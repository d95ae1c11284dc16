// The clients' life, see client.h: made on first use, dropped after a failure,
// closed in a forked child, all gone when the last Lua state closes.
#include "rpc/client.h"

#include <cerrno>
#include <cstring>
#include <poll.h>

#include "rpc/lock.h"

namespace
{
const Caller* handle_caller; // of one thread
pthread_t handle_thread;

// What a call wants left for the socket's own receive, which is not exact, to
// wait first.
constexpr int64_t enough_ms = ms_of_second * TIMEOUT.tv_sec - ms_of_second / 2;

constexpr int patience_ms = 100; // between looks at who still wants to wait

Mutex clients_mutex; // guards every pool
ClientPool* holders; // those that have ever had a client
bool keeps_clients = true;

Mutex message_mutex; // clnt_pcreateerror writes into one buffer for all threads

// With clients_mutex held.
void drop(Client& client)
{
    client.socket.close();
    client.state = Client::State::None;
}

// The child closes its parent's sockets before anything else in it can close or
// reuse their numbers: their replies are the parent's.
void lock_clients() { clients_mutex.lock(); }
void unlock_clients() { clients_mutex.unlock(); }
void close_in_child()
{
    for (ClientPool* pool = holders; pool; pool = pool->next) {
        for (Client& client : pool->clients)
            drop(client);
        pool->waiting = 0;
        const pthread_cond_t fresh = PTHREAD_COND_INITIALIZER;
        memcpy(&pool->came_back, &fresh, sizeof fresh);
    }
    clients_mutex.unlock();
}

// With clients_mutex held.
void list(ClientPool& pool)
{
    static bool watching;
    if (!watching)
        watching = pthread_atfork(lock_clients, unlock_clients, close_in_child) == 0;
    if (pool.is_listed)
        return;
    pool.is_listed = true;
    pool.next = holders;
    holders = &pool;
}

// An idle client, or the place for a new one, or null. With clients_mutex held.
Client* find_client(ClientPool& pool)
{
    Client* free = nullptr;
    for (Client& client : pool.clients) {
        if (client.state == Client::State::Idle) {
            if (client.generation == pool.generation)
                return &client;
            drop(client);
        }
        if (client.state == Client::State::None && !free)
            free = &client;
    }
    return free;
}

// Waits a little for a client to come back. With clients_mutex held.
void wait_for_client(ClientPool& pool)
{
    if (!clients_mutex.is_held) // one thread: nobody will give one back
        return void(poll(nullptr, 0, patience_ms));
    timespec until;
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_nsec += patience_ms * 1000000;
    until.tv_sec += until.tv_nsec / 1000000000;
    until.tv_nsec %= 1000000000;
    pool.waiting++;
    pthread_cond_timedwait(&pool.came_back, &clients_mutex.mutex, &until);
    pool.waiting--;
}

bool fail(CreationFailure& failure, enum clnt_stat status, int number)
{
    failure = {};
    failure.status = status;
    failure.error.re_status = status;
    failure.error.re_errno = number;
    return false;
}

bool ask_port(uint32_t program, uint32_t xid, Deadline deadline, const Caller& caller, uint16_t& port,
              CreationFailure& failure)
{
    PortQuery query(program, server_version, Life::OneCall);
    PortQuery::State state = query.start(xid);
    while (state == PortQuery::State::Asking) {
        const Deadline next = query.next().or_sooner(deadline);
        pollfd readable = {query.fd(), POLLIN, 0};
        const int ready = poll(&readable, 1, next.left_for_poll());
        if (ready > 0)
            state = query.receive();
        if (state == PortQuery::State::Asking && caller.has_given_up())
            return fail(failure, RPC_SYSTEMERROR, EINTR);
        if (state == PortQuery::State::Asking && deadline.left() <= 0)
            return fail(failure, RPC_TIMEDOUT, 0);
        if (state == PortQuery::State::Asking)
            state = query.check_time();
    }
    port = query.port();
    failure = query.failure();
    return state == PortQuery::State::Found;
}

bool make_client(const ServiceClient& service, Client& client, Deadline deadline, const Caller& caller,
                 CreationFailure& failure)
{
    const RandomBits random = random_bits();
    uint16_t port = 0;
    if (!ask_port(service.program, random.query_xid, deadline, caller, port, failure))
        return false;
    if (!open_udp_socket(client.socket, port, LocalPort::Reserved, random.port, socket_wait_ms(TIMEOUT)))
        return fail(failure, RPC_SYSTEMERROR, errno);
    client.xid = random.call_xid;
    return true;
}
} // namespace

Client* lend_client(const ServiceClient& service, Deadline deadline, const Caller& caller, CreationFailure& failure)
{
    ClientPool& pool = *service.pool;
    clients_mutex.lock();
    TimeLeft time = TimeLeft::All;
    Client* client = find_client(pool);
    for (; !client; client = find_client(pool)) {
        time = TimeLeft::Some;
        if (deadline.left() <= 0 || caller.has_given_up()) {
            clients_mutex.unlock();
            fail(failure, RPC_TIMEDOUT, EBUSY);
            return nullptr;
        }
        wait_for_client(pool);
    }
    const bool is_new = client->state == Client::State::None;
    client->state = Client::State::Lent;
    client->time = time;
    if (is_new) {
        list(pool);
        client->generation = pool.generation;
    }
    clients_mutex.unlock();
    if (!is_new)
        return client;
    if (make_client(service, *client, deadline, caller, failure)) {
        client->time = deadline.left() > enough_ms ? TimeLeft::All : TimeLeft::Some;
        return client;
    }
    give_back_client(service, *client, true);
    return nullptr;
}

bool find_port(const ServiceClient& service, Deadline deadline, const Caller& caller, uint16_t& port,
               CreationFailure& failure)
{
    ClientPool& pool = *service.pool;
    unsigned generation;
    {
        const Guard guard(clients_mutex);
        generation = pool.generation;
        port = pool.port_generation == generation ? pool.port : 0;
    }
    if (port != 0)
        return true;
    if (!ask_port(service.program, random_bits().query_xid, deadline, caller, port, failure))
        return false;
    const Guard guard(clients_mutex);
    pool.port = port;
    pool.port_generation = generation;
    return true;
}

void forget_port(const ServiceClient& service)
{
    const Guard guard(clients_mutex);
    service.pool->port = 0;
}

Client* lend_idle_client(const ServiceClient& service)
{
    const Guard guard(clients_mutex);
    Client* client = find_client(*service.pool);
    if (!client || client->state != Client::State::Idle)
        return nullptr;
    client->state = Client::State::Lent;
    return client;
}

void keep_as_client(const ServiceClient& service, UdpSocket& socket)
{
    ClientPool& pool = *service.pool;
    const Guard guard(clients_mutex);
    Client* client = keeps_clients ? find_client(pool) : nullptr;
    if (!client || client->state != Client::State::None) {
        socket.close();
        return;
    }
    list(pool);
    client->state = Client::State::Idle;
    client->generation = pool.generation;
    client->xid = random_bits().call_xid;
    client->socket = socket;
    socket = {};
}

enum clnt_stat call_client(const ServiceClient& service, Client& client, const Call& call, Deadline deadline,
                           const Caller& caller, uint32_t* units, rpc_err& error)
{
    error = {};
    const CallHeader header = {++client.xid, service.program, static_cast<uint32_t>(server_version), call.procedure};
    const size_t size = encode_call(header, call.encode, call.request, units);
    if (size == 0)
        return error.re_status = RPC_CANTENCODEARGS;
    ssize_t got = transact(client.socket, units, size, client.time, deadline, caller, error);
    if (got < 0 && error.re_status == RPC_CANTSEND && error.re_errno == EBADF) {
        // The host closed the descriptor. Nothing has left, so a new socket may send.
        CreationFailure failure;
        client.socket.close();
        if (make_client(service, client, deadline, caller, failure)) {
            units[0] = htonl(++client.xid);
            got = transact(client.socket, units, size, TimeLeft::Some, deadline, caller, error);
        }
    }
    if (got < 0)
        return error.re_status;
    return decode_reply(units, static_cast<size_t>(got), call.decode, call.reply, error);
}

void give_back_client(const ServiceClient& service, Client& client, bool failed)
{
    ClientPool& pool = *service.pool;
    const Guard guard(clients_mutex);
    if (failed)
        pool.generation++;
    if (client.generation == pool.generation && keeps_clients)
        client.state = Client::State::Idle;
    else
        drop(client);
    if (pool.waiting > 0)
        pthread_cond_signal(&pool.came_back);
}

void tell_creation_failure(const CreationFailure& failure)
{
    rpc_createerr.cf_stat = failure.status;
    rpc_createerr.cf_error = failure.error;
    const Guard guard(message_mutex);
    clnt_pcreateerror(server_host);
}

namespace
{
Caller caller_of_handle()
{
    const Guard guard(clients_mutex);
    return handle_caller && pthread_equal(handle_thread, pthread_self()) ? *handle_caller : Caller();
}

// The handle's operations (clnt.h). A call lends a client; a failed one leaves
// it, for whoever holds the handle drops it as the RPC library's callers do.
const ServiceClient& service_of(CLIENT* clnt) { return *static_cast<const ServiceClient*>(clnt->cl_private); }

enum clnt_stat call_handle(CLIENT* clnt, rpcproc_t procedure, xdrproc_t encode, void* request, xdrproc_t decode,
                           void* reply, timeval wait)
{
    const ServiceClient& service = service_of(clnt);
    const Deadline deadline = Deadline::after(wait);
    const Caller caller = caller_of_handle();
    CreationFailure failure;
    Client* client = lend_client(service, deadline, caller, failure);
    if (!client) {
        service.pool->error = failure.error;
        return failure.status;
    }
    if (wait.tv_sec < TIMEOUT.tv_sec)
        client->time = TimeLeft::Some;
    uint32_t units[datagram_units];
    const Call call = {static_cast<uint32_t>(procedure), encode, request, decode, reply};
    rpc_err error;
    const enum clnt_stat status = call_client(service, *client, call, deadline, caller, units, error);
    give_back_client(service, *client, false);
    service.pool->error = error;
    return status;
}

void get_error(CLIENT* clnt, rpc_err* error) { *error = service_of(clnt).pool->error; }

void abort_nothing(CLIENT*) {}

bool_t free_reply(CLIENT*, xdrproc_t decode, void* reply)
{
    XDR xdrs = {};
    xdrs.x_op = XDR_FREE;
    return decode(&xdrs, reply);
}

void destroy_handle(CLIENT* clnt) { destroy_client(service_of(clnt)); }

// The descriptor of an idle client, the program and the version.
bool_t control(CLIENT* clnt, u_int request, void* info)
{
    const ServiceClient& service = service_of(clnt);
    switch (request) {
    case CLGET_FD: {
        const Guard guard(clients_mutex);
        const Client* client = find_client(*service.pool);
        if (!client || client->state != Client::State::Idle)
            return FALSE;
        *static_cast<int*>(info) = client->socket.fd;
        return TRUE;
    }
    case CLGET_PROG:
        *static_cast<uint32_t*>(info) = service.program;
        return TRUE;
    case CLGET_VERS:
        *static_cast<uint32_t*>(info) = server_version;
        return TRUE;
    default:
        return FALSE;
    }
}

CLIENT::clnt_ops handle_ops = {call_handle, abort_nothing, get_error, free_reply, destroy_handle, control};
} // namespace

void set_handle_caller(const Caller* caller)
{
    const Guard guard(clients_mutex);
    handle_caller = caller;
    handle_thread = pthread_self();
}

CLIENT* get_client(const ServiceClient& service)
{
    CreationFailure failure;
    const Caller caller = caller_of_handle();
    Client* client = lend_client(service, Deadline::after(TIMEOUT), caller, failure);
    if (!client) {
        tell_creation_failure(failure);
        return nullptr;
    }
    give_back_client(service, *client, false);
    const Guard guard(clients_mutex);
    CLIENT& handle = service.pool->handle;
    if (!handle.cl_ops) {
        handle.cl_auth = authnone_create();
        handle.cl_ops = &handle_ops;
        handle.cl_private = const_cast<ServiceClient*>(&service);
    }
    return &handle;
}

namespace
{
// With clients_mutex held: what is lent is dropped when it comes back.
void drop_all(ClientPool& pool)
{
    pool.generation++;
    for (Client& client : pool.clients)
        if (client.state == Client::State::Idle)
            drop(client);
}
} // namespace

void destroy_client(const ServiceClient& service)
{
    const Guard guard(clients_mutex);
    drop_all(*service.pool);
}

void destroy_all_clients()
{
    const Guard guard(clients_mutex);
    for (ClientPool* pool = holders; pool; pool = pool->next)
        drop_all(*pool);
}

void keep_clients(bool keep)
{
    const Guard guard(clients_mutex);
    keeps_clients = keep;
}

// The clients' life: made on first use, dropped after a failure, renewed in a
// forked child, all gone when the last Lua state closes.
#include "rpc/client.h"

#include <cerrno>
#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
ServiceClient* holders;       // the clients that hold a socket
unsigned fork_generation = 1; // counts this process and its ancestors

void count_fork() { fork_generation++; }

// A forked child shares its parent's sockets, and would read its replies. The
// handler costs nothing a call; asking for the process id would be a system
// call.
void watch_forks()
{
    static bool watching;
    if (!watching)
        watching = pthread_atfork(nullptr, nullptr, count_fork) == 0;
}

void hold(ServiceClient& client)
{
    for (ServiceClient* holder = holders; holder; holder = holder->next)
        if (holder == &client)
            return;
    client.next = holders;
    holders = &client;
}

// clnt_create holds two descriptors at a time. When it gets one and not the
// other, libtirpc frees the port mapper's address twice, so ask before.
CLIENT* create_client(rpcprog_t program)
{
    const int first = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int second = first < 0 ? -1 : fcntl(first, F_DUPFD_CLOEXEC, 0);
    const int number = errno;
    if (first >= 0)
        close(first);
    if (second >= 0) {
        close(second);
        return clnt_create(server_host, program, server_version, server_transport);
    }
    rpc_createerr.cf_stat = RPC_SYSTEMERROR;
    rpc_createerr.cf_error.re_errno = number;
    return nullptr;
}
} // namespace

CLIENT* get_client(ServiceClient& client)
{
    if (client.clnt) {
        if (client.exchange.generation == fork_generation)
            return client.clnt;
        destroy_client(client);
    }
    watch_forks();
    client.clnt = create_client(client.program);
    if (client.clnt && !take_over(client.exchange, client.clnt, client.program, TIMEOUT)) {
        clnt_destroy(client.clnt);
        client.clnt = nullptr;
    }
    if (!client.clnt) {
        clnt_pcreateerror(server_host);
        return nullptr;
    }
    client.exchange.generation = fork_generation;
    hold(client);
    return client.clnt;
}

void destroy_client(ServiceClient& client)
{
    clnt_destroy(client.clnt);
    client.clnt = nullptr;
}

void destroy_all_clients()
{
    for (; holders; holders = holders->next) {
        if (holders->clnt)
            destroy_client(*holders);
        release_port(holders->exchange);
    }
}

// The clients' life: made on first use, dropped after a failure, renewed in a
// forked child, all gone when the last Lua state closes.
#include "rpc/client.h"

#include <pthread.h>
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
} // namespace

CLIENT* get_client(ServiceClient& client)
{
    if (client.clnt) {
        if (client.exchange.generation == fork_generation)
            return client.clnt;
        destroy_client(client);
    }
    watch_forks();
    client.clnt = clnt_create(server_host, client.program, server_version, server_transport);
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

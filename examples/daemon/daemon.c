/*
 * A daemon that owns one table, the counters of eight ports: what rpcgen makes of
 * protocol/nsminfo.x carries the records, this says what is in them. `make` builds
 * it, `./daemon` runs it beside a port mapper; then in a script
 *     librpc.callapi("oltmib_portstat_get_1", "3")
 */
#include <arpa/inet.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "nsminfo.h"

enum { ports = 8 };

static oltmib_int64_t integer(int64_t value)
{
    return (oltmib_int64_t){.low = (u_int)value, .high = (int)(value >> 32)};
}

/* The row of the port that `row` names; its `res` is 1 where there is none. */
static void read_row(oltmib_PortStatEntry *row)
{
    const int port = row->ifx;
    memset(row, 0, sizeof *row);
    row->ifx = port;
    row->res = port < 1 || port > ports;
    if (row->res)
        return;
    snprintf(row->name, sizeof row->name, "ge%d", port);
    row->counters.counter9 = integer(INT64_C(5000000000) * port); /* more than fits one unit */
    row->counters.counter6 = integer(7 * port);
}

static void serve(struct svc_req *request, SVCXPRT *transport)
{
    oltmib_PortStatEntry row = {0};
    switch (request->rq_proc) {
    case NULLPROC: /* "are you there?" */
        svc_sendreply(transport, (xdrproc_t)xdr_void, NULL);
        return;
    case OLTMIB_PORTSTAT_GETN: /* the row behind the one that is named */
    case OLTMIB_PORTSTAT_GET:
        if (!svc_getargs(transport, (xdrproc_t)xdr_oltmib_PortStatEntry, (char *)&row)) {
            svcerr_decode(transport);
            return;
        }
        if (request->rq_proc == OLTMIB_PORTSTAT_GETN && row.ifx <= ports)
            row.ifx++;
        read_row(&row);
        svc_sendreply(transport, (xdrproc_t)xdr_oltmib_PortStatEntry, (char *)&row);
        return;
    default:
        svcerr_noproc(transport);
    }
}

int main(void)
{
    /* this machine's programs only */
    const struct sockaddr_in here = {.sin_family = AF_INET, .sin_addr.s_addr = htonl(INADDR_LOOPBACK)};
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    SVCXPRT *transport = bind(fd, (const struct sockaddr *)&here, sizeof here) ? NULL : svcudp_create(fd);
    pmap_unset(OLTMIB_NSMINFO_PROG, OLTMIB_NSMINFO_V1);
    if (!transport || !svc_register(transport, OLTMIB_NSMINFO_PROG, OLTMIB_NSMINFO_V1, serve, IPPROTO_UDP)) {
        fprintf(stderr, "daemon: port mapper: expected program %d registered, found it refused\n", OLTMIB_NSMINFO_PROG);
        return 1;
    }
    svc_run();
    return 1;
}

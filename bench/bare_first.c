/* The first calls of several services with bare sockets: what no library can do
   without. For each, one connected query to the port mapper (GETPORT), then a
   bound and connected socket, a datagram of the call's size out and the reply
   in. Prints the microseconds of all of them:

       bare_first PROGRAM PROCEDURE UNITS [PROGRAM PROCEDURE UNITS]...

   UNITS is the size of the request's record. */
#include <arpa/inet.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

enum { header_units = 10, reply_units = 6, most_units = 2200 };

static void give_up(const char* what)
{
    perror(what);
    exit(1);
}

static int connected_socket(uint16_t local, uint16_t port)
{
    struct sockaddr_in address = {0};
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(local);
    if (fd < 0 || (local && bind(fd, (struct sockaddr*)&address, sizeof address) != 0))
        give_up("bare_first: socket");
    address.sin_port = htons(port);
    if (connect(fd, (struct sockaddr*)&address, sizeof address) != 0)
        give_up("bare_first: connect");
    return fd;
}

/* Sends a call with that many further units; the reply's units are in `units`. */
static void call(int fd, uint32_t* units, uint32_t program, uint32_t version, uint32_t procedure, unsigned more)
{
    const uint32_t header[header_units] = {7, 0, 2, program, version, procedure, 0, 0, 0, 0};
    for (unsigned i = 0; i < header_units; i++)
        units[i] = htonl(header[i]);
    if (send(fd, units, sizeof(uint32_t) * (header_units + more), 0) < 0 ||
        recv(fd, units, sizeof(uint32_t) * most_units, 0) < (ssize_t)(sizeof(uint32_t) * reply_units))
        give_up("bare_first: call");
}

static void first_call(uint32_t program, uint32_t procedure, unsigned request, uint16_t local)
{
    static uint32_t units[most_units];
    int fd = connected_socket(0, 111);
    memset(units, 0, sizeof units);
    units[header_units] = htonl(program);
    units[header_units + 1] = htonl(1);
    units[header_units + 2] = htonl(17);
    units[header_units + 3] = 0;
    call(fd, units, 100000, 2, 3, 4);
    close(fd);
    const uint32_t port = ntohl(units[reply_units]);
    memset(units, 0, sizeof units);
    fd = connected_socket(local, (uint16_t)port);
    call(fd, units, program, 1, procedure, request); /* the socket stays open, as a kept client's does */
}

static double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec * 1e6 + (double)time.tv_nsec / 1e3;
}

int main(int count, char** words)
{
    const double start = now();
    for (int i = 1; i + 2 < count; i += 3)
        first_call((uint32_t)atoi(words[i]), (uint32_t)atoi(words[i + 1]), (unsigned)atoi(words[i + 2]),
                   (uint16_t)(700 + i));
    printf("%.1f\n", now() - start);
    return 0;
}

// A server of datagrams whose answers are the test's, on a port of 127.0.0.1.
#pragma once

#include <arpa/inet.h>
#include <atomic>
#include <cstring>
#include <functional>
#include <mutex>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "rpc/udp_socket.h"

// A call as it came: its header and what stands behind, in host byte order.
struct RpcCall {
    uint32_t xid, program, version, procedure;
    std::vector<uint32_t> arguments;
    sockaddr_in from;

    // The first argument: what a port mapper is asked for.
    uint32_t wanted() const { return arguments.empty() ? 0 : arguments[0]; }
};

class RpcServer
{
  public:
    using Units = std::vector<uint32_t>;
    // The units of the reply; none answers nothing.
    using Answer = std::function<std::optional<Units>(const RpcCall&)>;

    // An accepted reply with that body (RFC 5531).
    static Units accepted(const RpcCall& call, const Units& body, uint32_t accept_stat = 0)
    {
        Units units = {call.xid, 1, 0, 0, 0, accept_stat};
        units.insert(units.end(), body.begin(), body.end());
        return units;
    }

    // Port 0 is any.
    RpcServer(uint16_t wanted_port, Answer answer)
        : answer(std::move(answer)), fd(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = loopback_address(wanted_port);
        socklen_t size = sizeof address;
        if (bind(fd, reinterpret_cast<const sockaddr*>(&address), size) != 0)
            throw std::runtime_error("rpc server: expected port " + std::to_string(wanted_port) + ", found " +
                                     strerror(errno));
        getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
        bound = ntohs(address.sin_port);
        thread = std::thread([this] { serve(); });
    }
    ~RpcServer()
    {
        stopping = true;
        thread.join();
        close(fd);
    }
    RpcServer(const RpcServer&) = delete;
    RpcServer& operator=(const RpcServer&) = delete;

    uint16_t port() const { return bound; }

    // The calls that came so far, and how many datagrams that were none.
    std::vector<RpcCall> queries()
    {
        const std::lock_guard guard(mutex);
        return seen;
    }
    void forget()
    {
        const std::lock_guard guard(mutex);
        seen.clear();
    }
    size_t junk() const { return no_calls; }

    // Sends a datagram of any bytes from the server's port.
    void send(const sockaddr_in& to, const Units& units)
    {
        Units wire = units;
        for (uint32_t& unit : wire)
            unit = htonl(unit);
        sendto(fd, wire.data(), wire.size() * sizeof wire[0], 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }

  private:
    void serve()
    {
        while (!stopping) {
            pollfd readable = {fd, POLLIN, 0};
            if (poll(&readable, 1, 10) <= 0)
                continue;
            uint32_t units[2000];
            RpcCall call = {};
            socklen_t length = sizeof call.from;
            const ssize_t got =
                recvfrom(fd, units, sizeof units, MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&call.from), &length);
            if (got < 40 || units[1] != 0 || ntohl(units[2]) != 2) {
                no_calls += got >= 0;
                continue;
            }
            for (ssize_t i = 0; i < got / 4; i++)
                units[i] = ntohl(units[i]);
            call.xid = units[0], call.program = units[3], call.version = units[4], call.procedure = units[5];
            call.arguments.assign(units + 10, units + got / 4);
            {
                const std::lock_guard guard(mutex);
                seen.push_back(call);
            }
            if (const std::optional<Units> reply = answer(call))
                send(call.from, *reply);
        }
    }

    Answer answer;
    int fd;
    uint16_t bound = 0;
    std::atomic<bool> stopping = false;
    std::atomic<size_t> no_calls = 0;
    std::mutex mutex;
    std::vector<RpcCall> seen;
    std::thread thread;
};

// A port mapper whose answers are the test's, on port 111 of a private network.
using PortMapperQuery = RpcCall;

class FakePortMapper : public RpcServer
{
  public:
    explicit FakePortMapper(Answer answer) : RpcServer(111, std::move(answer)) {}
};

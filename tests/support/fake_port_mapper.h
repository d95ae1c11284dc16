// A port mapper whose answers are the test's, on port 111 of a private network.
#pragma once

#include <arpa/inet.h>
#include <atomic>
#include <functional>
#include <mutex>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

// A query as it came: the call header and the arguments, in host byte order.
struct PortMapperQuery {
    uint32_t xid, program, version, procedure;
    std::vector<uint32_t> arguments;
    sockaddr_in from;

    // What GETPORT of version 2 looks for.
    uint32_t wanted() const { return arguments.empty() ? 0 : arguments[0]; }
};

class FakePortMapper
{
  public:
    using Units = std::vector<uint32_t>;
    // The units of the reply; none answers nothing.
    using Answer = std::function<std::optional<Units>(const PortMapperQuery&)>;

    // An accepted reply with that body (RFC 5531).
    static Units accepted(const PortMapperQuery& query, const Units& body, uint32_t accept_stat = 0)
    {
        Units units = {query.xid, 1, 0, 0, 0, accept_stat};
        units.insert(units.end(), body.begin(), body.end());
        return units;
    }

    explicit FakePortMapper(Answer answer)
        : answer(std::move(answer)), fd(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(111);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("fake port mapper: expected port 111, found it taken or forbidden");
        thread = std::thread([this] { serve(); });
    }
    ~FakePortMapper()
    {
        stopping = true;
        thread.join();
        close(fd);
    }
    FakePortMapper(const FakePortMapper&) = delete;
    FakePortMapper& operator=(const FakePortMapper&) = delete;

    // The queries that came so far.
    std::vector<PortMapperQuery> queries()
    {
        const std::lock_guard guard(mutex);
        return seen;
    }
    void forget()
    {
        const std::lock_guard guard(mutex);
        seen.clear();
    }

    // Sends a datagram of any bytes from port 111.
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
            PortMapperQuery query = {};
            socklen_t length = sizeof query.from;
            const ssize_t got =
                recvfrom(fd, units, sizeof units, MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&query.from), &length);
            if (got < 40)
                continue;
            for (ssize_t i = 0; i < got / 4; i++)
                units[i] = ntohl(units[i]);
            query.xid = units[0], query.program = units[3], query.version = units[4], query.procedure = units[5];
            query.arguments.assign(units + 10, units + got / 4);
            {
                const std::lock_guard guard(mutex);
                seen.push_back(query);
            }
            if (const std::optional<Units> reply = answer(query))
                send(query.from, *reply);
        }
    }

    Answer answer;
    int fd;
    std::atomic<bool> stopping = false;
    std::mutex mutex;
    std::vector<PortMapperQuery> seen;
    std::thread thread;
};

// The daemons of the simulated device: one UDP transport of libtirpc's a
// service, on a port of its own, answering from tables (tables.h) and
// committing the faults that it is told to (faults.h).
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <netinet/in.h>
#include <random>
#include <string>
#include <vector>

#include "common/service.h"
#include "sim/faults.h"
#include "sim/tables.h"

// One daemon. Without a transport it is stopped.
struct Daemon {
    const Service* service;
    SVCXPRT* transport = nullptr;
    std::map<std::string, Table> tables;
};

class Device
{
  public:
    // `log_path` gets a line a call; empty is no log.
    Device(const std::string& log_path, unsigned seed);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    // Starts every daemon and serves; returns when a command says quit.
    // `control` is a datagram socket that commands come in on, or -1.
    void start_all();
    void serve(int control);

    // Carries out one command, see `commands_help`; the answer's first word is
    // "ok" or "error:".
    std::string command(const std::string& line);

    // Called by the transports.
    void dispatch(svc_req* request, SVCXPRT* transport);
    bool reply(SVCXPRT* transport, rpc_msg* message);
    void note_xid(uint32_t xid) { call.xid = xid; }

  private:
    using Clock = std::chrono::steady_clock;

    struct Pending { // a reply that waits for its time
        Clock::time_point due;
        int fd;
        sockaddr_in to;
        std::string bytes;
    };
    struct Call { // the one being served
        uint32_t xid = 0;
        const Fault* fault = nullptr;
    };

    void start(Daemon& daemon);
    void stop(Daemon& daemon);
    bool announce(Daemon& daemon);
    Daemon* daemon_of(const std::string& name);
    const Fault* fault_of(rpcprog_t program, rpcproc_t procedure);
    void refuse(SVCXPRT* transport, Refusal refusal);
    void answer(Daemon& daemon, const Api& api, SVCXPRT* transport);
    void log(const Service& service, rpcproc_t procedure, const char* name, const std::string& argument);
    void mangle(const Fault& fault, std::string& bytes);
    void send_strangers(const Fault& fault, const sockaddr_in& to, const std::string& reply);
    void send_due();
    int milliseconds_to_next() const;
    std::string count_calls(const std::string& target) const;
    std::string command_to_daemon(const std::string& verb, const std::string& argument);

    std::vector<Daemon> daemons;
    std::vector<std::unique_ptr<Fault>> faults;
    std::vector<Pending> pending;
    std::map<std::pair<rpcprog_t, rpcproc_t>, unsigned long> calls;
    Call call;
    unsigned long sequence = 0;
    FILE* log_file = nullptr;
    int stranger = -1;
    bool over = false;
    std::mt19937 random;
};

extern const char commands_help[];

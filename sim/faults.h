// Faults that the simulated device commits on demand, see `faults_help`.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/service.h"

extern const char faults_help[];

// Which calls: all, those of a program or service, of a procedure, of an API.
struct Target {
    rpcprog_t program = 0; // 0: every call
    std::optional<rpcproc_t> procedure;

    bool matches(rpcprog_t of_program, rpcproc_t of_procedure) const
    {
        return (program == 0 || program == of_program) && (!procedure || *procedure == of_procedure);
    }
};

enum class Refusal {
    None,
    ProgUnavail,
    ProgMismatch,
    ProcUnavail,
    GarbageArgs,
    SystemErr,
    Denied,
    RpcMismatch,
};

// A datagram; every "XID" in its text stands for the call's own xid.
struct Datagram {
    std::string text;
    std::string bytes(uint32_t xid) const;
};

struct Fault {
    Target target;
    long after = 0;  // calls that pass unharmed first
    long count = -1; // calls that it then happens to; -1 is all
    long delay = 0;  // in ms
    bool drop = false;
    bool twice = false;
    bool forge = false;              // a stranger answers first, with the right xid
    std::optional<size_t> truncate;  // bytes of the reply's body that are sent
    std::optional<size_t> cut;       // bytes of the whole reply that are sent
    std::optional<size_t> random;    // random bytes as the reply's body; 0 is as many as the true one
    std::optional<Datagram> raw;     // instead of the reply
    std::vector<Datagram> strangers; // that a stranger sends first
    Refusal refusal = Refusal::None;
};

// "*", "devinfo", "50002", "50002:3" or an API's name.
std::optional<Target> parse_target(const std::string& text);

// A fault's words. On an error nothing, and `error` says "expected X, found Y".
std::optional<Fault> parse_fault(const std::vector<std::string>& words, std::string& error);

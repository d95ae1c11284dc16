// Why a call gave no value. Who makes calls notes it on the way out of a failed
// one; nothing is made of it until somebody asks.
#pragma once

#include "common/registry.h"
#include "common/service.h"

enum class CallCode : uint8_t {
    Success,
    UnknownApi,
    OutOfMemory,
    NoPortMapper,
    NoDaemon,
    NoClient,
    TimedOut,
    Refused,
    Interrupted,
    Rejected,
    BadReply,
    Failed,
    NotSent,
    HostApi,
    Closed,
};

// How a call ended. Of a successful one only `code` is set.
struct CallStatus {
    CallCode code;
    char api[64];            // cut where a caller's name is longer
    const Service* service;  // null for an API that is none of ours
    enum clnt_stat creation; // why there is no client, else RPC_SUCCESS
    rpc_err error;           // the RPC library's reason
};

CallStatus unknown_api(const char* name);
CallStatus no_memory(const char* name);
// The API's client could not be made.
CallStatus no_client(const char* name, const Service* service, const CreationFailure& failure);
// The call never left: a group's was over before its turn, an API of a host's
// own cannot be one of many, or its group is gone.
CallStatus not_sent(const char* name, const Service* service);
CallStatus host_api(const char* name);
CallStatus group_closed(const char* name);
// The API's call failed.
CallStatus failed_call(const char* name, const Service* service, const rpc_err& error);

// The service whose client getter the node has, or null for a host's own.
const Service* service_of(const ApiNode& api);

constexpr size_t status_text_size = 512;

// The code's name ("timed_out") and what it means, for every call alike.
const char* name_of(CallCode code);
const char* meaning_of(CallCode code);
constexpr auto last_call_code = CallCode::Closed;

// The host's error number behind the failure, or 0.
int error_number(const CallStatus& status);

// The RPC library's own words about the last call, and one sentence with the
// API, its service and program; both fit status_text_size.
void write_reason(const CallStatus& status, char* text);
void write_sentence(const CallStatus& status, char* text);

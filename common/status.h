// Why the last callapi of this process gave no value. The dispatch notes it on
// its way out of a failed call; nothing is made of it until somebody asks.
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
};

// The last call. Of a successful one only `code` is set.
struct CallStatus {
    CallCode code;
    char api[64];            // cut where a caller's name is longer
    const Service* service;  // null for an API that is none of ours
    enum clnt_stat creation; // why there is no client, else RPC_SUCCESS
    rpc_err error;           // the RPC library's reason
};
extern CallStatus call_status;

inline void note_success() { call_status.code = CallCode::Success; }
void note_unknown_api(const char* name);
void note_no_memory(const char* name);
// The API's client could not be made: call it before anything else uses rpc_createerr.
void note_no_client(const ApiNode& api);
// The API's call failed: call it while the client lives.
void note_failed_call(const ApiNode& api, CLIENT* clnt);

constexpr size_t status_text_size = 512;

// The code's name ("timed_out") and what it means, for every call alike.
const char* name_of(CallCode code);
const char* meaning_of(CallCode code);
constexpr auto last_call_code = CallCode::Failed;

// The host's error number behind the failure, or 0.
int error_number(const CallStatus& status);

// The RPC library's own words about the last call, and one sentence with the
// API, its service and program; both fit status_text_size.
void write_reason(const CallStatus& status, char* text);
void write_sentence(const CallStatus& status, char* text);

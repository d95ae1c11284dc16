// A call's failure in words, see status.h.
#include "common/status.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace
{
struct CodeText {
    const char* name;
    const char* meaning;
};

// In the order of CallCode.
constexpr CodeText code_texts[] = {
    {"success", "the call succeeded"},
    {"unknown_api", "no API of that name is registered"},
    {"out_of_memory", "there was not enough memory for the call"},
    {"no_portmapper", "the port mapper does not answer, so no daemon can be found"},
    {"no_daemon", "the daemon has not registered with the port mapper"},
    {"no_client", "no client could be made for the daemon"},
    {"timed_out", "the daemon did not answer in time; it may still carry the call out"},
    {"refused", "nothing listens on the port that the daemon had"},
    {"interrupted", "a signal ended the wait for the daemon; it may still carry the call out"},
    {"rejected", "the daemon answered that it will not or cannot carry the call out"},
    {"bad_reply", "the daemon's answer is not this call's reply"},
    {"failed", "the call could not be made"},
    {"not_sent", "the wait was over before the call's turn came; it was not sent, so it may be repeated"},
    {"host_api", "the API is made of a host program's own functions, which cannot run beside other calls"},
    {"closed", "the group was closed, or it is the parent's of this forked process"},
};
static_assert(std::size(code_texts) == static_cast<size_t>(last_call_code) + 1, "one text for each code");

CallStatus status_of(CallCode code, const char* name, const Service* service)
{
    CallStatus status = {};
    status.code = code;
    status.service = service;
    snprintf(status.api, sizeof status.api, "%s", name);
    return status;
}

CallCode code_of_creation(enum clnt_stat status, const rpc_err& error)
{
    switch (status) {
    case RPC_PROGNOTREGISTERED:
        return CallCode::NoDaemon;
    case RPC_PMAPFAILURE:
    case RPC_CANTSEND: // only the port mapper is asked then
    case RPC_CANTRECV:
        return CallCode::NoPortMapper;
    case RPC_TIMEDOUT: // for every client is lent, with a number
        return error.re_errno == EBUSY ? CallCode::TimedOut : CallCode::NoPortMapper;
    case RPC_SYSTEMERROR:
        return error.re_errno == ENOMEM         ? CallCode::OutOfMemory
               : error.re_errno == EINTR        ? CallCode::Interrupted
               : error.re_errno == ECONNREFUSED ? CallCode::Refused
                                                : CallCode::NoClient;
    default:
        return CallCode::NoClient;
    }
}

CallCode code_of_call(const rpc_err& error)
{
    switch (error.re_status) {
    case RPC_TIMEDOUT:
        return CallCode::TimedOut;
    case RPC_INTR:
        return CallCode::Interrupted;
    case RPC_CANTDECODERES:
        return CallCode::BadReply;
    case RPC_VERSMISMATCH:
    case RPC_AUTHERROR:
    case RPC_PROGUNAVAIL:
    case RPC_PROGVERSMISMATCH:
    case RPC_PROCUNAVAIL:
    case RPC_CANTDECODEARGS:
        return CallCode::Rejected;
    case RPC_SYSTEMERROR: // the daemon's own, or with a number this host's
        if (error.re_errno == 0)
            return CallCode::Rejected;
        [[fallthrough]];
    default:
        return error.re_errno == ECONNREFUSED ? CallCode::Refused
               : error.re_errno == ENOMEM     ? CallCode::OutOfMemory
                                              : CallCode::Failed;
    }
}

void append(char* text, const char* format, const char* words)
{
    const size_t length = strlen(text);
    snprintf(text + length, status_text_size - length, format, words);
}
} // namespace

CallStatus unknown_api(const char* name) { return status_of(CallCode::UnknownApi, name, nullptr); }

CallStatus no_memory(const char* name) { return status_of(CallCode::OutOfMemory, name, nullptr); }

CallStatus not_sent(const char* name, const Service* service) { return status_of(CallCode::NotSent, name, service); }

CallStatus host_api(const char* name) { return status_of(CallCode::HostApi, name, nullptr); }

CallStatus group_closed(const char* name) { return status_of(CallCode::Closed, name, nullptr); }

CallStatus no_client(const char* name, const Service* service, const CreationFailure& failure)
{
    CallStatus status = status_of(code_of_creation(failure.status, failure.error), name, service);
    status.creation = failure.status;
    status.error = failure.error;
    return status;
}

CallStatus failed_call(const char* name, const Service* service, const rpc_err& error)
{
    CallStatus status = status_of(code_of_call(error), name, service);
    status.error = error;
    return status;
}

const Service* service_of(const ApiNode& api)
{
    for (const Service* service : all_services)
        if (service->clnt_init == api.clntinit)
            return service;
    return nullptr;
}

const char* name_of(CallCode code) { return code_texts[static_cast<unsigned>(code)].name; }

const char* meaning_of(CallCode code) { return code_texts[static_cast<unsigned>(code)].meaning; }

int error_number(const CallStatus& status)
{
    switch (status.error.re_status) {
    case RPC_CANTSEND:
    case RPC_CANTRECV:
    case RPC_INTR:
    case RPC_SYSTEMERROR:
        return status.error.re_errno;
    default: // the number's place holds something else
        return 0;
    }
}

void write_reason(const CallStatus& status, char* text)
{
    text[0] = '\0';
    if (status.creation != RPC_SUCCESS)
        append(text, "%s", clnt_sperrno(status.creation));
    const enum clnt_stat call = status.error.re_status;
    // clnt_sperrno has no words for RPC_INTR
    if (call != RPC_SUCCESS && call != RPC_INTR && call != status.creation)
        append(text, text[0] ? " - %s" : "%s", clnt_sperrno(call));
    if (const int number = error_number(status))
        append(text, text[0] ? " - %s" : "%s", strerror(number));
}

void write_sentence(const CallStatus& status, char* text)
{
    char reason[status_text_size];
    char program[16];
    text[0] = '\0';
    append(text, "%s", status.api);
    if (status.service) {
        snprintf(program, sizeof program, "%lu", static_cast<unsigned long>(status.service->program));
        append(text, " (service %s", status.service->name);
        append(text, ", program %s)", program);
    }
    append(text, ": %s", meaning_of(status.code));
    write_reason(status, reason);
    if (reason[0])
        append(text, " [%s]", reason);
}

// Why a call gave no value: the code of each reason, its sentence, and that no
// reason lasts longer than its call.
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>

#include "common/status.h"
#include "rpc/client.h"

namespace
{
constexpr char api[] = "oltmib_route_get_1";
const Service& service = *all_services[0];

// What was in the buffer before is no part of the text.
std::string reason_of(const CallStatus& status)
{
    char text[status_text_size];
    memset(text, 'x', sizeof text - 1);
    text[sizeof text - 1] = '\0';
    write_reason(status, text);
    return text;
}
std::string sentence_of(const CallStatus& status)
{
    char text[status_text_size];
    memset(text, 'x', sizeof text - 1);
    text[sizeof text - 1] = '\0';
    write_sentence(status, text);
    return text;
}

CreationFailure creation(enum clnt_stat status, enum clnt_stat reason, int number)
{
    CreationFailure failure = {};
    failure.status = status;
    failure.error.re_status = reason;
    failure.error.re_errno = number;
    return failure;
}

rpc_err failed(enum clnt_stat status, int number)
{
    rpc_err error = {};
    error.re_status = status;
    error.re_errno = number;
    return error;
}
} // namespace

TEST(status, of_a_client_that_cannot_be_made)
{
    const struct {
        CreationFailure failure;
        const char *code, *reason;
        int number;
    } rows[] = {
        {creation(RPC_PROGNOTREGISTERED, RPC_PROGNOTREGISTERED, 0), "no_daemon", "RPC: Program not registered", 0},
        // the four ways of a port mapper that is none
        {creation(RPC_PMAPFAILURE, RPC_AUTHERROR, 0), "no_portmapper",
         "RPC: Port mapper failure - RPC: Authentication error", 0},
        {creation(RPC_CANTSEND, RPC_CANTSEND, EPERM), "no_portmapper", "RPC: Unable to send - Operation not permitted",
         EPERM},
        {creation(RPC_CANTRECV, RPC_CANTRECV, ECONNREFUSED), "no_portmapper",
         "RPC: Unable to receive - Connection refused", ECONNREFUSED},
        {creation(RPC_TIMEDOUT, RPC_TIMEDOUT, 0), "no_portmapper", "RPC: Timed out", 0},
        // for every client is lent
        {creation(RPC_TIMEDOUT, RPC_TIMEDOUT, EBUSY), "timed_out", "RPC: Timed out", 0},
        {creation(RPC_SYSTEMERROR, RPC_SYSTEMERROR, EMFILE), "no_client",
         "RPC: Remote system error - Too many open files", EMFILE},
        {creation(RPC_SYSTEMERROR, RPC_SYSTEMERROR, ENOMEM), "out_of_memory",
         "RPC: Remote system error - Cannot allocate memory", ENOMEM},
        {creation(RPC_SYSTEMERROR, RPC_SYSTEMERROR, EINTR), "interrupted",
         "RPC: Remote system error - Interrupted system call", EINTR},
        {creation(RPC_SYSTEMERROR, RPC_SYSTEMERROR, ECONNREFUSED), "refused",
         "RPC: Remote system error - Connection refused", ECONNREFUSED},
        {creation(RPC_UNKNOWNHOST, RPC_UNKNOWNHOST, 0), "no_client", "RPC: Unknown host", 0},
    };
    for (const auto& [failure, code, reason, number] : rows) {
        const CallStatus status = no_client(api, &service, failure);
        EXPECT_STREQ(name_of(status.code), code) << reason;
        EXPECT_EQ(reason_of(status), reason);
        EXPECT_EQ(error_number(status), number) << reason;
    }
}

TEST(status, of_a_call_that_failed)
{
    const struct {
        rpc_err error;
        const char *code, *reason;
        int number;
    } rows[] = {
        {failed(RPC_TIMEDOUT, 7), "timed_out", "RPC: Timed out", 0},
        {failed(RPC_INTR, EINTR), "interrupted", "Interrupted system call", EINTR},
        {failed(RPC_CANTDECODERES, 7), "bad_reply", "RPC: Can't decode result", 0},
        {failed(RPC_VERSMISMATCH, 7), "rejected", "RPC: Incompatible versions of RPC", 0},
        {failed(RPC_AUTHERROR, 7), "rejected", "RPC: Authentication error", 0},
        {failed(RPC_PROGUNAVAIL, 7), "rejected", "RPC: Program unavailable", 0},
        {failed(RPC_PROGVERSMISMATCH, 7), "rejected", "RPC: Program/version mismatch", 0},
        {failed(RPC_PROCUNAVAIL, 7), "rejected", "RPC: Procedure unavailable", 0},
        {failed(RPC_CANTDECODEARGS, 7), "rejected", "RPC: Server can't decode arguments", 0},
        {failed(RPC_SYSTEMERROR, 0), "rejected", "RPC: Remote system error", 0},
        {failed(RPC_SYSTEMERROR, EMFILE), "failed", "RPC: Remote system error - Too many open files", EMFILE},
        {failed(RPC_SYSTEMERROR, ENOMEM), "out_of_memory", "RPC: Remote system error - Cannot allocate memory", ENOMEM},
        {failed(RPC_CANTRECV, ECONNREFUSED), "refused", "RPC: Unable to receive - Connection refused", ECONNREFUSED},
        {failed(RPC_CANTSEND, ECONNREFUSED), "refused", "RPC: Unable to send - Connection refused", ECONNREFUSED},
        {failed(RPC_CANTSEND, ENOMEM), "out_of_memory", "RPC: Unable to send - Cannot allocate memory", ENOMEM},
        {failed(RPC_CANTSEND, EPERM), "failed", "RPC: Unable to send - Operation not permitted", EPERM},
        {failed(RPC_CANTENCODEARGS, 0), "failed", "RPC: Can't encode arguments", 0},
        {failed(RPC_FAILED, 0), "failed", "RPC: Failed (unspecified error)", 0},
    };
    for (const auto& [error, code, reason, number] : rows) {
        const CallStatus status = failed_call(api, &service, error);
        EXPECT_STREQ(name_of(status.code), code) << reason;
        EXPECT_EQ(reason_of(status), reason);
        EXPECT_EQ(error_number(status), number) << reason;
    }
}

TEST(status, sentence_names_the_api_its_service_and_the_reason)
{
    const std::string of_service = std::string(" (service ") + service.name + ", program " +
                                   std::to_string(static_cast<unsigned long>(service.program)) + ")";
    EXPECT_EQ(sentence_of(failed_call(api, &service, failed(RPC_TIMEDOUT, 0))),
              api + of_service +
                  ": the daemon did not answer in time; it may still carry the call out [RPC: Timed out]");
    EXPECT_EQ(sentence_of(no_client(api, nullptr, creation(RPC_PROGNOTREGISTERED, RPC_PROGNOTREGISTERED, 0))),
              std::string(api) + ": the daemon has not registered with the port mapper [RPC: Program not registered]");
}

TEST(status, without_the_rpc_librarys_own_has_no_reason)
{
    for (const CallStatus& status :
         {unknown_api(api), no_memory(api), not_sent(api, &service), host_api(api), group_closed(api)}) {
        EXPECT_EQ(reason_of(status), "");
        EXPECT_EQ(sentence_of(status).find('['), std::string::npos) << sentence_of(status);
        EXPECT_EQ(error_number(status), 0);
    }
}

TEST(status, of_the_longest_name_and_reason_fits)
{
    const std::string name(200, 'n');
    const CallStatus status = no_client(name.c_str(), &service, creation(RPC_PMAPFAILURE, RPC_PROGVERSMISMATCH, 0));
    EXPECT_EQ(std::string(status.api), name.substr(0, 63));
    EXPECT_LT(sentence_of(status).size(), status_text_size - 1);
    EXPECT_EQ(sentence_of(status).back(), ']');
}

TEST(status, service_of_a_node_is_that_of_its_client)
{
    ApiNode node = {};
    for (const Service* each : all_services) {
        node.clntinit = each->clnt_init;
        EXPECT_EQ(service_of(node), each);
    }
    node.clntinit = [] { return static_cast<CLIENT*>(nullptr); };
    EXPECT_EQ(service_of(node), nullptr);
}

// One call over a kept socket, against a daemon whose datagrams the test has
// laid ready: the call's bytes, which datagrams count as its reply, what each
// reply means, and the deadline.
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/time.h>
#include <thread>

#include "tests/unit/exchange.h"

namespace
{
// One unit more than a call has room for.
bool_t encode_too_much(XDR* xdrs, void*)
{
    u_int value = 0;
    for (int unit = 0; unit < 8800 / 4 - 10 + 1; unit++)
        if (!xdr_u_int(xdrs, &value))
            return FALSE;
    return TRUE;
}

Bytes verified(uint32_t xid, uint32_t verifier_size, size_t bytes_there, uint32_t value)
{
    return units({xid, 1, 0, 1, verifier_size}) + Bytes(bytes_there, 0xEE) + units({0, value});
}
} // namespace

TEST_F(exchange, call_is_one_datagram_with_an_rfc_5531_header_and_no_credentials)
{
    daemon_sends(answer(next_xid(), 42));
    EXPECT_EQ(call(-2), RPC_SUCCESS);
    EXPECT_EQ(reply, 42);
    const auto sent = daemon.received();
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0], units({client.xid, 0, 2, program, 1, 7, 0, 0, 0, 0, 0xFFFFFFFE}));
}

TEST_F(exchange, call_without_a_body_is_the_header_alone)
{
    daemon_sends(accepted(next_xid(), 0));
    EXPECT_EQ(make_call({0, as_xdrproc(xdr_void), nullptr, as_xdrproc(xdr_void), nullptr}, long_wait), RPC_SUCCESS);
    EXPECT_EQ(daemon.received(), std::vector<Bytes>{units({client.xid, 0, 2, program, 1, 0, 0, 0, 0, 0})});
}

TEST_F(exchange, each_call_has_another_xid)
{
    daemon_sends(answer(next_xid(), 1));
    call();
    const uint32_t first = client.xid;
    daemon_sends(answer(next_xid(), 2));
    call();
    EXPECT_NE(client.xid, first);
    const auto sent = daemon.received();
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_NE(Bytes(sent[0].begin(), sent[0].begin() + 4), Bytes(sent[1].begin(), sent[1].begin() + 4));
}

TEST_F(exchange, xids_wrap)
{
    client.xid = 0xFFFFFFFF;
    EXPECT_EQ(call_answered_by(answer(0, 3)), RPC_SUCCESS);
    EXPECT_EQ(reply, 3);
}

TEST_F(exchange, replies_of_other_calls_are_passed_over)
{
    for (const uint32_t away : {1U, 2U, 0x80000000U})
        daemon_sends(answer(next_xid() - away, 99));
    EXPECT_EQ(call_answered_by(answer(next_xid(), 6)), RPC_SUCCESS);
    EXPECT_EQ(reply, 6);
    EXPECT_EQ(daemon.received().size(), 1U);
}

TEST_F(exchange, doubled_reply_disturbs_no_later_call)
{
    daemon_sends(answer(next_xid(), 1));
    daemon_sends(answer(next_xid(), 1));
    EXPECT_EQ(call(), RPC_SUCCESS);
    for (int value = 2; value < 5; value++) {
        EXPECT_EQ(call_answered_by(answer(next_xid(), static_cast<uint32_t>(value))), RPC_SUCCESS);
        EXPECT_EQ(reply, value);
    }
    EXPECT_EQ(daemon.received().size(), 4U);
}

TEST_F(exchange, datagrams_too_short_for_an_xid_are_passed_over)
{
    for (size_t size = 0; size < 4; size++)
        daemon_sends(Bytes(size, 0));
    EXPECT_EQ(call_answered_by(answer(next_xid(), 8)), RPC_SUCCESS);
    EXPECT_EQ(reply, 8);
}

// The rest of the number would be what the call itself left in the buffer.
TEST_F(exchange, datagrams_that_are_the_beginning_of_the_xid_are_passed_over)
{
    for (size_t size = 1; size < 4; size++) {
        const Bytes whole = units({next_xid()});
        daemon_sends(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)));
        EXPECT_EQ(call_answered_by(answer(next_xid(), 8)), RPC_SUCCESS) << size;
        EXPECT_EQ(reply, 8) << size;
    }
}

TEST_F(exchange, reply_cut_at_any_length_cannot_be_decoded)
{
    const Bytes whole = answer(0, 1);
    for (size_t size = 4; size < whole.size(); size++) {
        const Bytes datagram = answer(next_xid(), 1);
        EXPECT_EQ(call_answered_by(Bytes(datagram.begin(), datagram.begin() + static_cast<ptrdiff_t>(size))),
                  RPC_CANTDECODERES)
            << size;
    }
    EXPECT_EQ(call_answered_by(answer(next_xid(), 1)), RPC_SUCCESS);
}

TEST_F(exchange, call_in_place_of_a_reply_cannot_be_decoded)
{
    EXPECT_EQ(call_answered_by(units({next_xid(), 0, 2, program, 1, 7, 0, 0, 0, 0, 5})), RPC_CANTDECODERES);
    // nothing but the direction is not a reply's
    for (const uint32_t direction : {0U, 2U, 0x01000000U, 0xFFFFFFFFU})
        EXPECT_EQ(call_answered_by(units({next_xid(), direction, 0, 0, 0, 0, 5})), RPC_CANTDECODERES) << direction;
    EXPECT_EQ(call_answered_by(units({next_xid(), 1, 0, 0, 0, 0, 5})), RPC_SUCCESS);
}

TEST_F(exchange, unknown_reply_status_cannot_be_decoded)
{
    EXPECT_EQ(call_answered_by(units({next_xid(), 1, 2, 0, 0, 0, 5})), RPC_CANTDECODERES);
}

TEST_F(exchange, every_accept_status_has_its_client_status)
{
    const std::pair<uint32_t, enum clnt_stat> statuses[] = {
        {0, RPC_SUCCESS},        {1, RPC_PROGUNAVAIL}, {2, RPC_PROGVERSMISMATCH}, {3, RPC_PROCUNAVAIL},
        {4, RPC_CANTDECODEARGS}, {5, RPC_SYSTEMERROR}, {6, RPC_CANTDECODERES},    {0xFFFFFFFF, RPC_CANTDECODERES},
    };
    for (const auto& [accept_stat, status] : statuses) {
        EXPECT_EQ(call_answered_by(accepted(next_xid(), accept_stat, units({1, 3}))), status) << accept_stat;
        if (status != RPC_SUCCESS) {
            EXPECT_EQ(error().re_status, status);
            EXPECT_EQ(reply, 0);
        }
    }
}

TEST_F(exchange, every_denial_has_its_client_status)
{
    EXPECT_EQ(call_answered_by(units({next_xid(), 1, 1, 0, 2, 2})), RPC_VERSMISMATCH);
    EXPECT_EQ(call_answered_by(units({next_xid(), 1, 1, 1, 5})), RPC_AUTHERROR);
    EXPECT_EQ(call_answered_by(units({next_xid(), 1, 1, 2})), RPC_CANTDECODERES);
    EXPECT_EQ(call_answered_by(units({next_xid(), 1, 1})), RPC_CANTDECODERES);
}

// The buffer still holds what came before.
TEST_F(exchange, what_a_reply_lacks_is_not_taken_from_the_datagram_before_it)
{
    for (const Bytes& before : {answer(0, 1), units({0, 1, 1, 0, 2, 2}), units({0, 1, 1, 1, 5})})
        for (size_t size = 8; size < before.size(); size += 4)
            for (const uint32_t kind : {0U, 1U}) { // accepted and denied
                Bytes cut = units({next_xid(), 1, kind, 7, 0, 9});
                daemon_sends(before);
                cut.resize(std::min<size_t>(size, kind == 0 ? 24 : 12));
                EXPECT_EQ(call_answered_by(cut), RPC_CANTDECODERES) << size << ' ' << kind;
            }
}

TEST_F(exchange, verifiers_up_to_400_bytes_are_skipped)
{
    const std::pair<uint32_t, size_t> sizes[] = {{0, 0}, {1, 4}, {4, 4}, {5, 8}, {400, 400}};
    for (const auto& [size, padded] : sizes) {
        EXPECT_EQ(call_answered_by(verified(next_xid(), size, padded, 77)), RPC_SUCCESS) << size;
        EXPECT_EQ(reply, 77) << size;
    }
}

TEST_F(exchange, longer_verifiers_and_missing_ones_cannot_be_decoded)
{
    const std::pair<uint32_t, size_t> sizes[] = {{401, 404},      {401, 8000}, {0xFFFFFFFF, 400}, {0xFFFFFFFC, 0},
                                                 {0x80000000, 0}, {400, 0},    {400, 388},        {12, 0}};
    for (const auto& [size, there] : sizes)
        EXPECT_EQ(call_answered_by(verified(next_xid(), size, there, 77)), RPC_CANTDECODERES) << size << ' ' << there;
}

TEST_F(exchange, bytes_behind_the_reply_are_ignored)
{
    EXPECT_EQ(call_answered_by(answer(next_xid(), 4) + Bytes(3, 0xEE)), RPC_SUCCESS);
    EXPECT_EQ(reply, 4);
}

TEST_F(exchange, reply_longer_than_8800_bytes_is_read_as_far_as_it_goes)
{
    EXPECT_EQ(call_answered_by(answer(next_xid(), 4) + Bytes(30000, 0xEE)), RPC_SUCCESS);
    EXPECT_EQ(reply, 4);
    EXPECT_EQ(call_answered_by(answer(next_xid(), 5)), RPC_SUCCESS);
    EXPECT_EQ(reply, 5);
}

TEST_F(exchange, argument_that_does_not_fit_a_datagram_is_not_sent)
{
    EXPECT_EQ(make_call({1, as_xdrproc(encode_too_much), nullptr, as_xdrproc(xdr_int), &reply}, long_wait),
              RPC_CANTENCODEARGS);
    EXPECT_TRUE(daemon.received().empty());
}

TEST_F(exchange, foreign_sender_is_not_heard)
{
    Socket foreign;
    foreign.send_to(client_port(), answer(next_xid(), 99));
    EXPECT_EQ(call_answered_by(answer(next_xid(), 6)), RPC_SUCCESS);
    EXPECT_EQ(reply, 6);
}

TEST_F(exchange, deadline_passes_after_one_datagram_whatever_else_arrives)
{
    daemon_sends(answer(next_xid() - 1, 99));
    daemon_sends(Bytes(2));
    EXPECT_EQ(call(5, short_wait), RPC_TIMEDOUT);
    EXPECT_EQ(error().re_status, RPC_TIMEDOUT);
    EXPECT_EQ(reply, 0);
    EXPECT_EQ(daemon.received().size(), 1U);
}

TEST_F(exchange, late_reply_is_not_the_next_calls)
{
    const uint32_t late = next_xid();
    EXPECT_EQ(call(5, short_wait), RPC_TIMEDOUT);
    daemon_sends(answer(late, 99));
    EXPECT_EQ(call_answered_by(answer(next_xid(), 6)), RPC_SUCCESS);
    EXPECT_EQ(reply, 6);
}

// A thousand of them are looked through when the time is over; before, any number is.
TEST_F(exchange, thousands_of_strange_datagrams_in_time_are_passed_over)
{
    std::atomic<bool> is_over = false;
    const uint32_t xid = next_xid();
    std::thread chatter([&] {
        for (int round = 0; round < 200 && !is_over; round++) {
            for (int i = 0; i < 20; i++)
                daemon_sends(answer(xid - 1, 99));
            usleep(500); // no more than the socket has room for
        }
        while (!is_over) {
            daemon_sends(answer(xid, 6));
            usleep(500);
        }
    });
    EXPECT_EQ(call(), RPC_SUCCESS);
    is_over = true;
    chatter.join();
    EXPECT_EQ(reply, 6);
}

// The process may have been stopped, but a daemon that keeps sending holds nobody up.
TEST_F(exchange, a_thousand_datagrams_are_looked_through_when_the_time_is_over_and_no_more)
{
    for (const int strange : {1000, 1001}) {
        const int room = 1 << 22;
        if (setsockopt(client.socket.fd, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room) != 0)
            GTEST_SKIP() << "room for so many is for root";
        for (int i = 0; i < strange; i++)
            daemon_sends(answer(next_xid() - 1, 99));
        daemon_sends(answer(next_xid(), 6));
        EXPECT_EQ(call(5, timeval{0, 0}), strange == 1000 ? RPC_SUCCESS : RPC_TIMEDOUT);
    }
}

TEST_F(exchange, errno_of_before_is_no_failure_of_an_empty_datagram)
{
    for (const int number : {ETIME, EBADF, ECONNREFUSED, EAGAIN, EINTR}) {
        daemon_sends({});
        daemon_sends(answer(next_xid(), 6));
        errno = number;
        EXPECT_EQ(call(), RPC_SUCCESS) << strerror(number);
    }
}

TEST_F(exchange, versions_that_the_daemon_has_are_told)
{
    EXPECT_EQ(call_answered_by(accepted(next_xid(), 2, units({3, 8}))), RPC_PROGVERSMISMATCH);
    EXPECT_EQ(error().re_vers.low, 3U);
    EXPECT_EQ(error().re_vers.high, 8U);
    // cut off
    EXPECT_EQ(call_answered_by(accepted(next_xid(), 2, units({3}))), RPC_PROGVERSMISMATCH);
    EXPECT_EQ(error().re_vers.low, 0U);
    EXPECT_EQ(error().re_vers.high, 0U);
}

TEST_F(exchange, call_without_any_wait_takes_what_is_there)
{
    EXPECT_EQ(call(5, timeval{0, 0}), RPC_TIMEDOUT);
    daemon_sends(answer(next_xid(), 3));
    EXPECT_EQ(call(5, timeval{0, 0}), RPC_SUCCESS);
}

TEST_F(exchange, daemon_that_is_gone_ends_the_call_before_the_deadline)
{
    daemon.close_now();
    EXPECT_EQ(call(), RPC_CANTRECV);
    EXPECT_EQ(error().re_errno, ECONNREFUSED);
}

namespace
{
volatile sig_atomic_t alarms;
int questions;

// Alarms now and again while this lives; calls are not restarted.
struct Alarms {
    Alarms()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) { alarms = alarms + 1; };
        sigaction(SIGALRM, &action, &before);
        const itimerval every = {{0, 40000}, {0, 40000}};
        alarms = questions = 0;
        setitimer(ITIMER_REAL, &every, nullptr);
    }
    ~Alarms()
    {
        const itimerval never = {};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &before, nullptr);
    }
    struct sigaction before = {};
};
} // namespace

TEST_F(exchange, signals_reach_their_handler_and_the_call_goes_on)
{
    caller.gives_up = [](void*) { return questions++ < 0; };
    const Alarms ring;
    EXPECT_EQ(call(5, short_wait), RPC_TIMEDOUT);
    EXPECT_GT(alarms, 0);
    EXPECT_GT(questions, 0);
    EXPECT_EQ(daemon.received().size(), 1U);
}

TEST_F(exchange, signals_without_anybody_to_ask_leave_the_call_alone)
{
    const Alarms ring;
    EXPECT_EQ(call(5, short_wait), RPC_TIMEDOUT);
    EXPECT_GT(alarms, 0);
}

TEST_F(exchange, unwanted_call_ends_at_the_signal)
{
    caller.gives_up = [](void*) { return ++questions == 2; };
    const Alarms ring;
    EXPECT_EQ(call(), RPC_INTR);
    EXPECT_EQ(error().re_status, RPC_INTR);
    EXPECT_EQ(questions, 2);
}

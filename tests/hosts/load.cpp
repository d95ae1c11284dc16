// Asks a host for rows of the simulated device's tables, many at a time, and
// checks each answer against what the device holds; see `usage`.
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <string>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "sim/content.h"

namespace
{
const char usage[] =
    "load [OPTION]... PATH                asks the web server on 127.0.0.1:8080 for PATH?table=TABLE&key=KEY\n"
    "load [OPTION]... -- COMMAND...       writes such lines to a command, which answers NUMBER STATUS TEXT\n"
    "    --requests N     so many (10000)\n"
    "    --together N     so many of them at a time (64)\n"
    "    --may fail       answers may be failures that the page reports\n"
    "    --may drop       the server may refuse connections and break them off\n"
    "    --must fail      every answer must be such a failure\n"
    "Prints: \"third\" when a third of them are answered, and at last\n"
    "        requests N right N failed N dropped N wrong N stalls N longest MS\n"
    "Ends with 0 when nothing but what may be was seen.\n";

// What the hosts' page lets people read.
const char* const tables[] = {"portinfo", "vlaninfo", "svi", "optical", "d1x_pcfg"};

// A call may wait 25 s; one that waits longer than this is none that fails.
constexpr auto patience = std::chrono::seconds(40);
// So long a server may take to start, and to accept again after a restart.
constexpr auto start = std::chrono::seconds(10);
constexpr auto pause_after_drop = std::chrono::milliseconds(20);

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const std::string& where, const std::string& expected, const std::string& found)
{
    fprintf(stderr, "load: %s: expected %s, found %s\n", where.c_str(), expected.c_str(), found.c_str());
    exit(2);
}

struct Row {
    std::string query, text;
};

std::vector<Row> make_rows()
{
    std::vector<Row> rows;
    for (const Content& content : initial_content) {
        bool is_shown = false;
        for (const char* table : tables)
            is_shown = is_shown || strcmp(table, content.table) == 0;
        for (int number = content.first; is_shown && number <= content.last; number++) {
            std::string text;
            for (const char* c = content.text; *c; c++)
                text += *c == '#' ? std::to_string(number) : std::string(1, *c);
            const std::string key = text.substr(0, text.find('&'));
            rows.push_back({"table=" + std::string(content.table) + "&key=" + key, text});
        }
    }
    return rows;
}

struct Options {
    int requests = 10000;
    int together = 64;
    bool may_fail = false, may_drop = false, must_fail = false;
};

enum class Outcome { Right, Failed, Dropped, Wrong };

struct Tally {
    int asked = 0, right = 0, failed = 0, dropped = 0, wrong = 0, stalls = 0;
    Clock::duration longest{};

    int answered() const { return right + failed + dropped + wrong + stalls; }
};

// Failures look the same in all hosts: page.lua writes the code first.
bool is_reported_failure(int status, const std::string& text)
{
    const char* const codes[] = {"no_portmapper: ", "no_daemon: ", "refused: ", "timed_out: "};
    for (const char* code : codes)
        if (text.compare(0, strlen(code), code) == 0)
            return status == (strcmp(code, "timed_out: ") == 0 ? 504 : 503);
    return false;
}

Outcome judge(const Row& row, int status, const std::string& text, const Options& options)
{
    if (status == 200 && text == row.text + "\n")
        return Outcome::Right;
    if (is_reported_failure(status, text))
        return Outcome::Failed;
    // a server that is being restarted breaks off, or says so in its own words
    if (options.may_drop &&
        (status == 502 || status == 503 || (status == 200 && row.text.compare(0, text.size(), text) == 0)))
        return Outcome::Dropped;
    static int told;
    if (told++ < 5)
        fprintf(stderr, "load: %s: expected 200 '%s', found %d '%.200s'\n", row.query.c_str(), row.text.c_str(), status,
                text.c_str());
    return Outcome::Wrong;
}

void count(Tally& tally, Outcome outcome, Clock::duration took)
{
    (outcome == Outcome::Right     ? tally.right
     : outcome == Outcome::Failed  ? tally.failed
     : outcome == Outcome::Dropped ? tally.dropped
                                   : tally.wrong)++;
    tally.longest = std::max(tally.longest, took);
}

// Says once that a third of the answers are there.
class Third
{
  public:
    void look(const Tally& tally, const Options& options)
    {
        if (is_told || tally.answered() < options.requests / 3)
            return;
        puts("third");
        fflush(stdout);
        is_told = true;
    }

  private:
    bool is_told = false;
};

// One request over HTTP, from connect to the end of the answer.
struct Connection {
    enum class State { Idle, Connecting, Reading };

    State state = State::Idle;
    int fd = -1;
    const Row* row = nullptr;
    Clock::time_point since, not_before;
    std::string answer;
};

class Web
{
  public:
    Web(const Options& options, std::string path, const std::vector<Row>& rows)
        : options(options), path(std::move(path)), rows(rows), connections(static_cast<size_t>(options.together)),
          epoll(epoll_create1(EPOLL_CLOEXEC)), began(Clock::now())
    {
    }

    void run(Tally& tally)
    {
        while (tally.answered() < options.requests) {
            third.look(tally, options);
            const auto now = Clock::now();
            for (Connection& connection : connections) {
                if (connection.state == Connection::State::Idle && tally.asked < options.requests &&
                    connection.not_before <= now)
                    ask(connection, tally);
                else if (connection.state != Connection::State::Idle && now - connection.since > patience) {
                    drop(connection);
                    tally.stalls++;
                }
            }
            epoll_event events[64];
            const int ready = epoll_wait(epoll, events, 64, 10);
            for (int i = 0; i < ready; i++)
                go_on(*static_cast<Connection*>(events[i].data.ptr), events[i].events, tally);
        }
    }

  private:
    void ask(Connection& connection, Tally& tally)
    {
        connection.row = &rows[static_cast<size_t>(tally.asked++) % rows.size()];
        connection.since = Clock::now();
        connection.answer.clear();
        open(connection, tally);
    }

    void open(Connection& connection, Tally& tally)
    {
        connection.fd = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        sockaddr_in server = {};
        server.sin_family = AF_INET;
        server.sin_port = htons(8080);
        server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connection.state = Connection::State::Connecting;
        if (connection.fd < 0)
            fail("socket", "a socket", strerror(errno));
        if (connect(connection.fd, reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0 &&
            errno != EINPROGRESS)
            return broke(connection, tally);
        epoll_event event = {};
        event.events = EPOLLOUT;
        event.data.ptr = &connection;
        epoll_ctl(epoll, EPOLL_CTL_ADD, connection.fd, &event);
    }

    void go_on(Connection& connection, uint32_t events, Tally& tally)
    {
        if (connection.state == Connection::State::Connecting) {
            const std::string request = "GET " + path + "?" + connection.row->query +
                                        " HTTP/1.0\r\nHost: localhost\r\nConnection: close\r\n\r\n";
            if ((events & (EPOLLERR | EPOLLHUP)) != 0 || send(connection.fd, request.data(), request.size(),
                                                              MSG_NOSIGNAL) != static_cast<ssize_t>(request.size()))
                return broke(connection, tally);
            connection.state = Connection::State::Reading;
            epoll_event event = {};
            event.events = EPOLLIN;
            event.data.ptr = &connection;
            epoll_ctl(epoll, EPOLL_CTL_MOD, connection.fd, &event);
            return;
        }
        char buffer[8192];
        const ssize_t got = recv(connection.fd, buffer, sizeof buffer, 0);
        if (got > 0) {
            connection.answer.append(buffer, static_cast<size_t>(got));
            return;
        }
        if (got < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        const size_t head = connection.answer.find("\r\n\r\n");
        int status = 0;
        if (head == std::string::npos || sscanf(connection.answer.c_str(), "HTTP/1.%*d %d", &status) != 1)
            return broke(connection, tally);
        has_answered = true;
        const Outcome outcome = judge(*connection.row, status, connection.answer.substr(head + 4), options);
        drop(connection);
        count(tally, outcome, Clock::now() - connection.since);
    }

    // The connection ended before an answer came. Until the first one the server
    // may still be starting.
    void broke(Connection& connection, Tally& tally)
    {
        drop(connection);
        connection.not_before = Clock::now() + pause_after_drop;
        if (!has_answered && connection.answer.empty()) {
            if (Clock::now() - began > start)
                fail("127.0.0.1:8080", "a server that answers", "none within 10 s");
            tally.asked--;
            return;
        }
        count(tally, Outcome::Dropped, Clock::now() - connection.since);
    }

    void drop(Connection& connection)
    {
        close(connection.fd);
        connection.fd = -1;
        connection.state = Connection::State::Idle;
    }

    const Options& options;
    const std::string path;
    const std::vector<Row>& rows;
    Third third;
    std::vector<Connection> connections;
    const int epoll;
    const Clock::time_point began;
    bool has_answered = false;
};

// Requests as lines to a program, answers as lines from it, in any order.
class Program
{
  public:
    Program(const Options& options, char** command, const std::vector<Row>& rows) : options(options), rows(rows)
    {
        int requests[2], answers[2];
        if (pipe2(requests, O_CLOEXEC) != 0 || pipe2(answers, O_CLOEXEC) != 0)
            fail("pipe", "pipes", strerror(errno));
        pid = fork();
        if (pid == 0) {
            dup2(requests[0], STDIN_FILENO);
            dup2(answers[1], STDOUT_FILENO);
            execvp(command[0], command);
            _exit(127);
        }
        close(requests[0]);
        close(answers[1]);
        to = requests[1];
        from = answers[0];
    }

    bool run(Tally& tally)
    {
        auto latest = Clock::now();
        bool ended = false;
        while (tally.answered() < options.requests && !ended && Clock::now() - latest < patience) {
            third.look(tally, options);
            if (tally.asked < options.requests && tally.asked - tally.answered() < options.together) {
                const std::string line = rows[static_cast<size_t>(tally.asked) % rows.size()].query + "\n";
                asked_at[++tally.asked] = Clock::now();
                ended = write(to, line.data(), line.size()) != static_cast<ssize_t>(line.size());
                continue;
            }
            pollfd readable = {from, POLLIN, 0};
            if (poll(&readable, 1, 1000) != 1)
                continue;
            char buffer[8192];
            const ssize_t got = read(from, buffer, sizeof buffer);
            ended = got <= 0;
            text.append(buffer, got > 0 ? static_cast<size_t>(got) : 0);
            take_lines(tally);
            latest = Clock::now();
        }
        close(to);
        int status = 0;
        (ended ? tally.dropped : tally.stalls) += options.requests - tally.answered();
        if (tally.stalls > 0)
            kill(pid, SIGKILL);
        const bool has_ended = waitpid(pid, &status, 0) == pid && status == 0;
        if (!has_ended)
            fprintf(stderr, "load: command: expected status 0, found %d\n", status);
        return has_ended;
    }

  private:
    void take_lines(Tally& tally)
    {
        size_t end = 0;
        while ((end = text.find('\n')) != std::string::npos) {
            int number = 0, status = 0, length = 0;
            const std::string line = text.substr(0, end);
            text.erase(0, end + 1);
            const bool reads = sscanf(line.c_str(), "%d %d %n", &number, &status, &length) == 2 && length > 0;
            const auto asked = asked_at.find(number);
            if (!reads || asked == asked_at.end()) { // not an answer, or a second one
                fprintf(stderr, "load: command: expected the answer to a request, found '%.200s'\n", line.c_str());
                tally.wrong++;
                continue;
            }
            const Row& row = rows[static_cast<size_t>(number - 1) % rows.size()];
            const std::string answer = line.substr(static_cast<size_t>(length)) + "\n";
            count(tally, judge(row, status, answer, options), Clock::now() - asked->second);
            asked_at.erase(asked);
        }
    }

    const Options& options;
    const std::vector<Row>& rows;
    Third third;
    std::map<int, Clock::time_point> asked_at;
    std::string text;
    pid_t pid = 0;
    int to = -1, from = -1;
};

int number_of(const std::string& option, const char* text)
{
    const int number = atoi(text);
    if (number < 1)
        fail(option, "a number from 1 on", text);
    return number;
}
} // namespace

int main(int argc, char** argv)
{
    Options options;
    int i = 1;
    for (; i + 1 < argc && strncmp(argv[i], "--", 2) == 0 && argv[i][2]; i += 2) {
        const std::string option = argv[i], value = argv[i + 1];
        if (option == "--requests")
            options.requests = number_of(option, argv[i + 1]);
        else if (option == "--together")
            options.together = number_of(option, argv[i + 1]);
        else if (option == "--may" && value == "fail")
            options.may_fail = true;
        else if (option == "--may" && value == "drop")
            options.may_drop = true;
        else if (option == "--must" && value == "fail")
            options.must_fail = true;
        else
            break;
    }
    const bool is_program = i + 1 < argc && strcmp(argv[i], "--") == 0;
    if (!is_program && (i + 1 != argc || argv[i][0] != '/')) {
        fputs(usage, stderr);
        fail("arguments", "these", i < argc ? argv[i] : "none");
    }
    signal(SIGPIPE, SIG_IGN);
    const std::vector<Row> rows = make_rows();
    Tally tally;
    bool has_ended = true;
    if (is_program)
        has_ended = Program(options, argv + i + 1, rows).run(tally);
    else
        Web(options, argv[i], rows).run(tally);
    const auto longest = std::chrono::duration_cast<std::chrono::milliseconds>(tally.longest).count();
    printf("requests %d right %d failed %d dropped %d wrong %d stalls %d longest %ld\n", tally.answered(), tally.right,
           tally.failed, tally.dropped, tally.wrong, tally.stalls, static_cast<long>(longest));
    const bool as_may_be = tally.wrong == 0 && tally.stalls == 0 && (options.may_drop || tally.dropped == 0) &&
                           (options.may_fail || options.must_fail || tally.failed == 0) &&
                           (!options.must_fail || tally.failed == options.requests);
    return has_ended && as_may_be ? 0 : 1;
}

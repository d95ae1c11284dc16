// The simulated device: every daemon that the library knows, in one program.
#include <cerrno>
#include <cstring>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "sim/device.h"
#include "sim/fail.h"

namespace
{
const char usage[] = "simulated_device [--log FILE] [--control SOCKET] [--seed N] [--do COMMAND]...\n"
                     "    Serves every service of the library over UDP on 127.0.0.1, registered with the\n"
                     "    port mapper. Keeps rows in memory: set stores one, get returns the row of a key,\n"
                     "    getn the next one; the last int of an answer is 1 when there is no such row.\n"
                     "    FILE gets a line a call: sequence, program, procedure, API, argument.\n"
                     "    SOCKET takes commands while it runs; --do carries one out before it serves.\n"
                     "simulated_device --tell SOCKET COMMAND\n"
                     "    Sends one command to a running device and prints its answer.\n"
                     "simulated_device --tables\n"
                     "    Prints every table, its record, its rows' keys and how many it starts with.\n"
                     "Commands:\n";

sockaddr_un address_of(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        fail(path, "a socket's path of at most 107 characters", std::to_string(path.size()));
    memcpy(address.sun_path, path.c_str(), path.size());
    return address;
}

int open_control(const std::string& path)
{
    const sockaddr_un address = address_of(path);
    unlink(path.c_str());
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail(path, "a path for the control socket", strerror(errno));
    return fd;
}

// Sends one command; the exit status is 0 when it was carried out.
int tell(const std::string& path, const std::string& line)
{
    const sockaddr_un device = address_of(path);
    const sockaddr_un any = {AF_UNIX, {}};
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    // a name of the kernel's choice, for the answer
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&any), sizeof any.sun_family) != 0 ||
        connect(fd, reinterpret_cast<const sockaddr*>(&device), sizeof device) != 0 ||
        send(fd, line.data(), line.size(), MSG_NOSIGNAL) < 0)
        fail(path, "a running device", strerror(errno));
    char answer[1024];
    pollfd readable = {fd, POLLIN, 0};
    if (poll(&readable, 1, 10000) != 1)
        fail(path, "an answer within 10 seconds", "none");
    const ssize_t got = recv(fd, answer, sizeof answer, 0);
    if (got < 0)
        fail(path, "an answer", strerror(errno));
    const std::string text(answer, static_cast<size_t>(got));
    if (text.compare(0, 2, "ok") != 0) {
        fprintf(stderr, "simulated_device: %s\n", text.c_str());
        return 1;
    }
    if (text.size() > 3)
        printf("%s\n", text.c_str() + 3);
    return 0;
}

void print_help() { printf("%s%s%s", usage, commands_help, faults_help); }

void print_tables()
{
    for (const Service* service : all_services) {
        std::map<std::string, Table> tables = make_tables(*service);
        fill_tables(tables);
        for (const auto& [name, table] : tables)
            printf("%s %s %s %s, %zu %s\n", service->name, name.c_str(), table.record().name,
                   table.single() ? "one row" : "rows", table.size(), table.size() == 1 ? "row" : "rows");
    }
}

struct Options {
    std::string log, control;
    std::vector<std::string> commands; // to carry out before it serves
    unsigned seed = 1;
};

// What the command line asks for; where that is no device, it is done, and `status` its
// exit status.
Options options_of(int argc, char** argv, std::optional<int>& status)
{
    Options options;
    for (int i = 1; i < argc; i++) {
        const std::string option = argv[i];
        if (option == "--help" || option == "--tables") {
            option == "--help" ? print_help() : print_tables();
            status = 0;
            return options;
        }
        if (i + 1 == argc)
            fail("arguments", "an option of --help and its value", "'" + option + "'");
        const std::string value = argv[++i];
        if (option == "--tell") {
            std::string line;
            for (i++; i < argc; i++)
                line += std::string(line.empty() ? "" : " ") + argv[i];
            status = tell(value, line);
            return options;
        }
        if (option == "--log")
            options.log = value;
        else if (option == "--control")
            options.control = value;
        else if (option == "--do")
            options.commands.push_back(value);
        else if (option == "--seed")
            options.seed = static_cast<unsigned>(strtoul(value.c_str(), nullptr, 10));
        else
            fail("arguments", "an option of --help", "'" + option + "'");
    }
    return options;
}
} // namespace

int main(int argc, char** argv)
{
    std::optional<int> status;
    const Options options = options_of(argc, argv, status);
    if (status)
        return *status;
    Device device(options.log, options.seed);
    device.start_all();
    for (const std::string& line : options.commands) {
        const std::string said = device.command(line);
        if (said.compare(0, 2, "ok") != 0)
            fail("--do '" + line + "'", "a command", said);
    }
    const int socket = options.control.empty() ? -1 : open_control(options.control);
    device.serve(socket);
    if (socket >= 0) {
        close(socket);
        unlink(options.control.c_str());
    }
}

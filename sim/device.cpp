// Serving, see device.h. libtirpc receives, decodes and dispatches; replies go
// through an operation of our own, so that they can be held back or spoilt.
#include "sim/device.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <rpc/pmap_clnt.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "rpc/client.h"
#include "sim/fail.h"

const char commands_help[] = "  count TARGET    how many calls came in since the start\n"
                             "  port SERVICE    the port that the daemon has\n"
                             "  stop SERVICE    the daemon ends: no port, not registered\n"
                             "  start SERVICE   and comes back, on another port\n"
                             "  restart SERVICE stop and start at once\n"
                             "  unregister SERVICE   the port mapper forgets the daemon, which goes on\n"
                             "  clear           no faults any more\n"
                             "  quit            the device ends\n";

namespace
{
constexpr size_t body_offset = 24;         // of a successful reply with an empty verifier
constexpr size_t most_datagram = 64 << 10; // that a reply may grow to

Device* device; // the one that the transports' operations work for
using Operations = struct SVCXPRT::xp_ops;
const Operations* original_ops; // libtirpc's
Operations own_ops;

bool_t receive_call(SVCXPRT* transport, rpc_msg* message)
{
    if (!original_ops->xp_recv(transport, message))
        return FALSE;
    device->note_xid(message->rm_xid);
    return TRUE;
}

bool_t send_reply(SVCXPRT* transport, rpc_msg* message) { return device->reply(transport, message); }

void dispatch_call(svc_req* request, SVCXPRT* transport) { device->dispatch(request, transport); }

// A record and where it is in memory, for one XDR routine.
struct Coded {
    const Record* record;
    char* row;
};

bool_t xdr_coded(XDR* xdrs, Coded* coded) { return xdr_record(xdrs, *coded->record, coded->row); }

// A UDP socket on a free port.
int open_socket()
{
    const sockaddr_in address = loopback_address(0);
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail("socket", "a free UDP port on 127.0.0.1", strerror(errno));
    return fd;
}

void send_datagram(int fd, const sockaddr_in& to, const std::string& bytes)
{
    sendto(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

// The reply's datagram as libtirpc's server would send it.
std::string encode_reply(rpc_msg* message)
{
    std::vector<char> buffer(UDPMSGSIZE);
    XDR xdrs;
    xdrmem_create(&xdrs, buffer.data(), static_cast<u_int>(buffer.size()), XDR_ENCODE);
    if (!xdr_replymsg(&xdrs, message))
        fail("reply", "one that fits " + std::to_string(buffer.size()) + " bytes", "a longer one");
    return std::string(buffer.data(), XDR_GETPOS(&xdrs));
}
} // namespace

Device::Device(const std::string& log_path, unsigned seed) : random(seed)
{
    device = this;
    for (const Service* service : all_services) {
        daemons.push_back({service, nullptr, make_tables(*service)});
        fill_tables(daemons.back().tables);
    }
    if (!log_path.empty()) {
        log_file = fopen(log_path.c_str(), "ae");
        if (!log_file)
            fail(log_path, "a log file", strerror(errno));
        setvbuf(log_file, nullptr, _IOLBF, 0);
    }
    stranger = open_socket();
}

Device::~Device()
{
    for (Daemon& daemon : daemons)
        stop(daemon);
    if (log_file)
        fclose(log_file);
    close(stranger);
}

void Device::start_all()
{
    for (Daemon& daemon : daemons)
        start(daemon);
}

void Device::start(Daemon& daemon)
{
    daemon.transport = svcudp_create(open_socket());
    if (!daemon.transport)
        fail(daemon.service->name, "a UDP transport", "none");
    if (!original_ops) {
        original_ops = daemon.transport->xp_ops;
        own_ops = *original_ops;
        own_ops.xp_recv = receive_call;
        own_ops.xp_reply = send_reply;
    }
    daemon.transport->xp_ops = &own_ops;
    if (!announce(daemon))
        fail(daemon.service->name, "a port mapper on 127.0.0.1 that registers it", "none (is rpcbind running?)");
}

// A registration that a dead device left behind is replaced.
bool Device::announce(Daemon& daemon)
{
    pmap_unset(daemon.service->program, server_version);
    return svc_register(daemon.transport, daemon.service->program, server_version, dispatch_call, IPPROTO_UDP);
}

void Device::stop(Daemon& daemon)
{
    if (!daemon.transport)
        return;
    const int fd = daemon.transport->xp_fd;
    pending.erase(std::remove_if(pending.begin(), pending.end(), [fd](const Pending& late) { return late.fd == fd; }),
                  pending.end());
    svc_unregister(daemon.service->program, server_version);
    svc_destroy(daemon.transport);
    daemon.transport = nullptr;
}

Daemon* Device::daemon_of(const std::string& name)
{
    for (Daemon& daemon : daemons)
        if (name == daemon.service->name)
            return &daemon;
    return nullptr;
}

std::string Device::count_calls(const std::string& text) const
{
    const std::optional<Target> target = parse_target(text);
    if (!target)
        return "error: count: expected *, a service, a program, PROGRAM:PROCEDURE or an API, found '" + text + "'";
    unsigned long found = 0;
    for (const auto& [of, number] : calls)
        if (target->matches(of.first, of.second))
            found += number;
    return "ok " + std::to_string(found);
}

std::string Device::command(const std::string& line)
{
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    const std::string verb = words.empty() ? "" : words[0];
    const std::string argument = words.size() > 1 ? words[1] : "";
    if (verb == "fault") {
        std::string error;
        const std::optional<Fault> fault = parse_fault({words.begin() + 1, words.end()}, error);
        if (!fault)
            return "error: fault: " + error;
        faults.push_back(std::make_unique<Fault>(*fault));
        return "ok";
    }
    if (verb == "count")
        return count_calls(argument);
    if (verb == "clear")
        return faults.clear(), "ok";
    if (verb == "quit")
        return over = true, "ok";
    if (verb == "ping")
        return "ok";
    if (verb != "port" && verb != "stop" && verb != "start" && verb != "restart" && verb != "unregister")
        return "error: expected a command (see --help), found '" + verb + "'";
    return command_to_daemon(verb, argument);
}

std::string Device::command_to_daemon(const std::string& verb, const std::string& argument)
{
    Daemon* daemon = daemon_of(argument);
    if (!daemon)
        return "error: " + verb + ": expected a service, found '" + argument + "'";
    if (verb == "start" ? daemon->transport != nullptr : daemon->transport == nullptr)
        return "error: " + verb + ": expected a daemon that " + (verb == "start" ? "is stopped" : "runs") +
               ", found that " + argument + (verb == "start" ? " runs" : " is stopped");
    if (verb == "port")
        return "ok " + std::to_string(daemon->transport->xp_port);
    if (verb == "unregister")
        return pmap_unset(daemon->service->program, server_version), "ok";
    if (verb == "start")
        return start(*daemon), "ok";
    const int held = verb == "restart" ? dup(daemon->transport->xp_fd) : -1; // so that the port is another one
    stop(*daemon);
    if (verb == "restart") {
        start(*daemon);
        close(held);
    }
    return "ok";
}

const Fault* Device::fault_of(rpcprog_t program, rpcproc_t procedure)
{
    for (const auto& fault : faults) {
        if (fault->count == 0 || !fault->target.matches(program, procedure))
            continue;
        if (fault->after > 0) {
            fault->after--;
            continue;
        }
        if (fault->count > 0)
            fault->count--;
        return fault.get();
    }
    return nullptr;
}

// One line: sequence, program, procedure, API, argument.
void Device::log(const Service& service, rpcproc_t procedure, const char* name, const std::string& argument)
{
    calls[{service.program, procedure}]++;
    sequence++;
    if (!log_file)
        return;
    std::string shown = argument;
    for (char& c : shown)
        if (static_cast<unsigned char>(c) < ' ')
            c = '?';
    fprintf(log_file, "%lu %lu %lu %s %s\n", sequence, static_cast<unsigned long>(service.program),
            static_cast<unsigned long>(procedure), name, shown.c_str());
}

void Device::refuse(SVCXPRT* transport, Refusal refusal)
{
    switch (refusal) {
    case Refusal::None:
        return;
    case Refusal::ProgUnavail:
        return svcerr_noprog(transport);
    case Refusal::ProgMismatch:
        return svcerr_progvers(transport, server_version + 1, server_version + 2);
    case Refusal::ProcUnavail:
        return svcerr_noproc(transport);
    case Refusal::GarbageArgs:
        return svcerr_decode(transport);
    case Refusal::SystemErr:
        return svcerr_systemerr(transport);
    case Refusal::Denied:
        return svcerr_auth(transport, AUTH_TOOWEAK);
    case Refusal::RpcMismatch:
        rpc_msg message = {};
        message.rm_direction = REPLY;
        message.rm_reply.rp_stat = MSG_DENIED;
        message.rjcted_rply.rj_stat = RPC_MISMATCH;
        message.rjcted_rply.rj_vers.low = message.rjcted_rply.rj_vers.high = RPC_MSG_VERSION + 1;
        reply(transport, &message);
    }
}

void Device::answer(Daemon& daemon, const Api& api, SVCXPRT* transport)
{
    Table* table = api.request || api.reply ? &daemon.tables.at(table_name(api)) : nullptr;
    Row request(table ? table->record().size : 0);
    Coded coded = {api.request, request.data()};
    if (api.request && !svc_getargs(transport, as_xdrproc(xdr_coded), &coded)) {
        log(*daemon.service, api.procedure, api.name, "(garbage)");
        return svcerr_decode(transport);
    }
    log(*daemon.service, api.procedure, api.name, api.request ? table->form().format(request) : "");
    if (call.fault && call.fault->refusal != Refusal::None)
        return refuse(transport, call.fault->refusal);
    const Verb verb = verb_of(api);
    if (verb == Verb::Get || verb == Verb::Next) {
        Row row = table->answer(verb, request);
        coded = {api.reply, row.data()};
        svc_sendreply(transport, as_xdrproc(xdr_coded), &coded);
        return;
    }
    if (verb == Verb::Set)
        table->store(request);
    int status = 0;
    svc_sendreply(transport, as_xdrproc(xdr_int), &status);
}

void Device::dispatch(svc_req* request, SVCXPRT* transport)
{
    call.fault = nullptr;
    const auto daemon = std::find_if(daemons.begin(), daemons.end(),
                                     [transport](const Daemon& candidate) { return candidate.transport == transport; });
    if (daemon == daemons.end())
        return svcerr_noprog(transport);
    if (request->rq_proc == NULLPROC) {
        svc_sendreply(transport, as_xdrproc(xdr_void), nullptr);
        return;
    }
    call.fault = fault_of(request->rq_prog, request->rq_proc);
    for (const Api& api : *daemon->service)
        if (api.procedure == request->rq_proc)
            return answer(*daemon, api, transport);
    log(*daemon->service, request->rq_proc, "-", "");
    svcerr_noproc(transport);
}

void Device::mangle(const Fault& fault, std::string& bytes)
{
    if (fault.random && bytes.size() >= body_offset) {
        const size_t size = *fault.random ? *fault.random : bytes.size() - body_offset;
        bytes.resize(body_offset);
        for (size_t i = 0; i < std::min(size, most_datagram - body_offset - 64); i++)
            bytes += static_cast<char>(random());
    }
    if (fault.truncate)
        bytes.resize(std::min(bytes.size(), body_offset + *fault.truncate));
    if (fault.cut)
        bytes.resize(std::min(bytes.size(), *fault.cut));
    if (fault.raw)
        bytes = fault.raw->bytes(call.xid);
}

void Device::send_strangers(const Fault& fault, const sockaddr_in& to, const std::string& reply)
{
    for (const Datagram& datagram : fault.strangers)
        send_datagram(stranger, to, datagram.bytes(call.xid));
    if (!fault.forge)
        return;
    std::string forged = reply;
    for (size_t i = body_offset; i < forged.size(); i++)
        forged[i] = i % 4 == 3 ? '7' : '\0'; // sevens as characters, 55 as a number
    send_datagram(stranger, to, forged);
}

bool Device::reply(SVCXPRT* transport, rpc_msg* message)
{
    message->rm_xid = call.xid;
    std::string bytes = encode_reply(message);
    sockaddr_in to = {};
    memcpy(&to, transport->xp_rtaddr.buf, std::min<size_t>(sizeof to, transport->xp_rtaddr.len));
    const Fault none;
    const Fault& fault = call.fault ? *call.fault : none;
    send_strangers(fault, to, bytes);
    mangle(fault, bytes);
    if (fault.drop)
        return true;
    for (int times = fault.twice ? 2 : 1; times > 0; times--) {
        if (fault.delay > 0)
            pending.push_back({Clock::now() + std::chrono::milliseconds(fault.delay), transport->xp_fd, to, bytes});
        else
            send_datagram(transport->xp_fd, to, bytes);
    }
    return true;
}

void Device::send_due()
{
    const auto now = Clock::now();
    for (size_t i = 0; i < pending.size();) {
        if (pending[i].due > now) {
            i++;
            continue;
        }
        send_datagram(pending[i].fd, pending[i].to, pending[i].bytes);
        pending.erase(pending.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

int Device::milliseconds_to_next() const
{
    if (pending.empty())
        return -1;
    const auto next = std::min_element(pending.begin(), pending.end(),
                                       [](const Pending& a, const Pending& b) { return a.due < b.due; });
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(next->due - Clock::now()).count();
    return static_cast<int>(std::max<long>(left + 1, 0));
}

void Device::serve(int control)
{
    while (!over) {
        std::vector<pollfd> waiting(svc_pollfd, svc_pollfd + svc_max_pollfd);
        waiting.push_back({control, POLLIN, 0});
        const int ready = poll(waiting.data(), waiting.size(), milliseconds_to_next());
        if (ready < 0 && errno != EINTR)
            fail("poll", "sockets to wait for", strerror(errno));
        send_due();
        if (ready <= 0)
            continue;
        const bool commanded = waiting.back().revents & POLLIN;
        waiting.pop_back();
        svc_getreq_poll(waiting.data(), ready - commanded);
        if (!commanded)
            continue;
        char line[64 << 10];
        sockaddr_un from = {};
        socklen_t size = sizeof from;
        const ssize_t got = recvfrom(control, line, sizeof line, 0, reinterpret_cast<sockaddr*>(&from), &size);
        if (got < 0)
            continue;
        const std::string said = command(std::string(line, static_cast<size_t>(got)));
        sendto(control, said.data(), said.size(), MSG_NOSIGNAL, reinterpret_cast<sockaddr*>(&from), size);
    }
}

// Who else may answer a look-up: nobody. Strangers spray forged answers and junk
// at every port that the process can have while hundreds of look-ups go on; each
// look-up waits until all of it has been sent at least once.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <grp.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <netinet/ip.h>
#include <netinet/udp.h>
#include <numeric>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>

#include "tests/host/lone.h"

namespace
{
// Few enough that a look-up does not wait long for all of them.
constexpr uint16_t first_port = 40000, last_port = 40015;
constexpr int look_ups = 300;

// What the strangers and the test know of one another.
struct Shared {
    enum class Stranger { None, Process, Host };

    std::atomic<Stranger> wanted;      // whom the test has begun to fear
    uint16_t told_port;                // of the daemon that the forged answers name
    char from[16], to[16];             // the addresses that a host's frames bear
    std::atomic<bool> is_far, is_laid; // the host has a network of its own, and a wire to ours
    std::atomic<uint32_t> sweeps;      // how often everything was sent
    std::atomic<uint32_t> latest_xid;  // even that is known to the strangers
    std::atomic<bool> is_over;
};

using Datagram = std::vector<unsigned char>;
using Send = std::function<void(uint16_t port, const Datagram& datagram)>;

Datagram on_the_wire(const RpcServer::Units& units)
{
    Datagram bytes;
    for (const uint32_t unit : units)
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<unsigned char>(unit >> shift));
    return bytes;
}

// The numbers that somebody could think of.
std::vector<uint32_t> guesses(pid_t victim, uint32_t latest)
{
    timeval now;
    gettimeofday(&now, nullptr);
    const auto pid = static_cast<uint32_t>(victim);
    const auto seconds = static_cast<uint32_t>(now.tv_sec), micros = static_cast<uint32_t>(now.tv_usec);
    std::vector<uint32_t> all = {0, 1, 0xFFFFFFFF, pid, seconds, micros, pid ^ seconds, pid ^ seconds ^ micros};
    for (uint32_t away = 1; away <= 4; away++)
        all.insert(all.end(), {latest + away, latest - away});
    return all;
}

// Until the test is over.
void spray(Shared& shared, pid_t victim, uint16_t told_port, const Send& send)
{
    while (!shared.is_over) {
        for (const uint32_t xid : guesses(victim, shared.latest_xid)) {
            const Datagram answer = on_the_wire({xid, 1, 0, 0, 0, 0, told_port});
            for (uint32_t port = first_port; port <= last_port; port++)
                send(static_cast<uint16_t>(port), answer);
        }
        for (size_t size = 0; size < 44; size++)
            for (uint32_t port = first_port; port <= last_port; port++)
                send(static_cast<uint16_t>(port), Datagram(size, port % 2 ? 0 : 0xFF));
        shared.sweeps++;
    }
}

// What a foreign machine does: it has a wire to the test's network, and root
// there.
class Wire
{
  public:
    static constexpr char ours[] = "10.9.9.1", theirs[] = "10.9.9.2";

    // Makes the wire; `far` is a process in the other network.
    static void lay(pid_t far)
    {
        run("ip link add near address 02:00:00:00:00:01 type veth peer name far address 02:00:00:00:00:02 netns " +
            std::to_string(far));
        run("ip addr add " + std::string(ours) + "/24 dev near && ip link set near up");
    }
    static void run(const std::string& command)
    {
        if (system(command.c_str()) != 0)
            throw std::runtime_error("wire: expected success, found a failure of: " + command);
    }

    // At the far end.
    Wire() : fd(socket(AF_PACKET, SOCK_RAW, htons(ETH_P_IP)))
    {
        const unsigned index = if_nametoindex("far");
        to.sll_family = AF_PACKET;
        to.sll_ifindex = static_cast<int>(index);
        to.sll_halen = ETH_ALEN;
    }
    ~Wire() { close(fd); }
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    // A frame with any addresses in it, from port 111.
    void send(const char* from, const char* to_host, uint16_t port, const Datagram& datagram) const
    {
        const ether_header ethernet = {{2, 0, 0, 0, 0, 1}, {2, 0, 0, 0, 0, 2}, htons(ETH_P_IP)};
        const auto udp_size = static_cast<uint16_t>(sizeof(udphdr) + datagram.size());
        iphdr ip = {};
        ip.version = 4;
        ip.ihl = sizeof ip / 4;
        ip.ttl = 64;
        ip.protocol = IPPROTO_UDP;
        ip.tot_len = htons(static_cast<uint16_t>(sizeof ip + udp_size));
        ip.saddr = inet_addr(from);
        ip.daddr = inet_addr(to_host);
        uint16_t halves[sizeof ip / 2];
        memcpy(halves, &ip, sizeof ip);
        uint32_t sum = std::accumulate(std::begin(halves), std::end(halves), 0U);
        sum = (sum & 0xFFFF) + (sum >> 16);
        ip.check = static_cast<uint16_t>(~(sum + (sum >> 16)));
        udphdr udp = {};
        udp.uh_sport = htons(111);
        udp.uh_dport = htons(port);
        udp.uh_ulen = htons(udp_size); // without a checksum, which UDP allows
        Datagram frame(sizeof ethernet + sizeof ip + udp_size);
        memcpy(frame.data(), &ethernet, sizeof ethernet);
        memcpy(frame.data() + sizeof ethernet, &ip, sizeof ip);
        memcpy(frame.data() + sizeof ethernet + sizeof ip, &udp, sizeof udp);
        std::copy(datagram.begin(), datagram.end(), frame.end() - static_cast<std::ptrdiff_t>(datagram.size()));
        sendto(fd, frame.data(), frame.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }

  private:
    int fd;
    sockaddr_ll to = {};
};

// Sprays as an unprivileged process of this machine.
void be_process(Shared& shared, pid_t victim)
{
    if (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0)
        throw std::runtime_error("stranger: expected to lose its privileges, found them kept");
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    spray(shared, victim, shared.told_port, [fd](uint16_t port, const Datagram& datagram) {
        const sockaddr_in to = loopback_address(port);
        sendto(fd, datagram.data(), datagram.size(), MSG_DONTWAIT, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    });
}

// Sprays as a host with a network of its own, at the far end of a wire.
void be_host(Shared& shared, pid_t victim)
{
    if (unshare(CLONE_NEWNET) != 0)
        throw std::runtime_error("stranger: expected a network of its own, found none");
    shared.is_far = true;
    while (!shared.is_laid)
        usleep(100);
    Wire::run("ip addr add " + std::string(Wire::theirs) + "/24 dev far && ip link set far up");
    const Wire wire;
    spray(shared, victim, shared.told_port,
          [&](uint16_t port, const Datagram& datagram) { wire.send(shared.from, shared.to, port, datagram); });
}

class strangers : public Lone
{
  protected:
    void before_threads() override
    {
        void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(memory, MAP_FAILED);
        shared = new (memory) Shared();
        const pid_t victim = getpid();
        child = fork();
        ASSERT_GE(child, 0);
        if (child > 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        try {
            while (shared->wanted == Shared::Stranger::None && !shared->is_over)
                usleep(100);
            if (shared->wanted == Shared::Stranger::Process)
                be_process(*shared, victim);
            else if (shared->wanted == Shared::Stranger::Host)
                be_host(*shared, victim);
        } catch (const std::exception& problem) {
            fprintf(stderr, "%s\n", problem.what());
            _exit(1);
        }
        _exit(0);
    }
    void SetUp() override
    {
        Lone::SetUp();
        if (IsSkipped())
            return;
        stranger = std::make_unique<RpcServer>(0, [](const RpcCall& call) { return RpcServer::accepted(call, {666}); });
        shared->told_port = stranger->port();
        map([this](const RpcCall& query) {
            shared->latest_xid = query.xid;
            const uint32_t before = shared->sweeps;
            for (int tries = 0; shared->sweeps < before + 2 && tries < 100000; tries++)
                usleep(100);
            unaimed += shared->sweeps < before + 2;
            return RpcServer::accepted(query, {daemon->port()});
        });
        std::ofstream("/proc/sys/net/ipv4/ip_local_port_range") << first_port << ' ' << last_port << std::endl;
    }
    void TearDown() override
    {
        if (child <= 0)
            return;
        shared->is_over = true;
        if (unaimed > 0)
            kill(child, SIGKILL);
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << "the stranger's process";
    }

    // Every look-up gives the daemon's own port: none fails, none is hijacked.
    void look_up_under_fire()
    {
        int failed = 0, hijacked = 0;
        for (int i = 0; i < look_ups && unaimed == 0; i++) {
            forget_clients();
            const std::optional<std::string> value = lua->call(api, "1&6");
            failed += !value;
            hijacked += value && *value != "7";
        }
        hijacked += static_cast<int>(stranger->queries().size() + stranger->junk());
        printf("%d look-ups, %u sweeps: %d hijacked, %d failed\n", look_ups, shared->sweeps.load(), hijacked, failed);
        EXPECT_EQ(failed, 0);
        EXPECT_EQ(hijacked, 0);
        EXPECT_EQ(unaimed, 0);
        EXPECT_EQ(daemon->queries().size(), static_cast<size_t>(look_ups));
        EXPECT_EQ(daemon->junk(), 0U);
        for (const RpcCall& query : mapper->queries()) { // the strangers did aim at it
            EXPECT_GE(ntohs(query.from.sin_port), first_port);
            EXPECT_LE(ntohs(query.from.sin_port), last_port);
        }
    }

    Shared* shared = nullptr;
    std::atomic<int> unaimed = 0;        // look-ups that the strangers never got to
    std::unique_ptr<RpcServer> stranger; // the daemon that the forged answers name
    pid_t child = 0;
};

class foreign_host : public strangers
{
  protected:
    // Whose frames bear those addresses.
    void start_host(const char* from, const char* to)
    {
        strcpy(shared->from, from);
        strcpy(shared->to, to);
        shared->wanted = Shared::Stranger::Host;
        while (!shared->is_far)
            usleep(100);
        Wire::lay(child);
        shared->is_laid = true;
    }

    // What reaches a socket that hears everybody, on the last port of the range.
    struct Open {
        int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        Open()
        {
            sockaddr_in address = loopback_address(last_port);
            address.sin_addr.s_addr = INADDR_ANY;
            EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        }
        ~Open() { close(fd); }
        Open(const Open&) = delete;
        Open& operator=(const Open&) = delete;
        size_t received() const
        {
            char bytes[100];
            size_t count = 0;
            while (recv(fd, bytes, sizeof bytes, MSG_DONTWAIT) >= 0)
                count++;
            return count;
        }
    };
};
} // namespace

TEST_F(strangers, unprivileged_process_of_this_machine_hijacks_and_fails_no_look_up)
{
    shared->wanted = Shared::Stranger::Process;
    look_up_under_fire();
}

TEST_F(foreign_host, own_address_of_another_host_is_not_believed)
{
    const Open open;
    start_host(Wire::theirs, Wire::ours);
    look_up_under_fire();
    EXPECT_GT(open.received(), 0U) << "the wire carries nothing";
}

TEST_F(foreign_host, another_host_that_poses_as_ours_is_dropped)
{
    const Open open;
    start_host("127.0.0.1", "127.0.0.1");
    look_up_under_fire();
    EXPECT_EQ(open.received(), 0U);
}

// A machine that lets loopback addresses in from its wires: only the numbers
// that nobody can guess are left.
TEST_F(foreign_host, another_host_that_poses_as_ours_is_not_believed_where_the_kernel_lets_it_in)
{
    const Open open;
    Wire::run("for key in route_localnet accept_local; do for who in all default; do "
              "echo 1 > /proc/sys/net/ipv4/conf/$who/$key; done; done; "
              "for who in all default; do echo 0 > /proc/sys/net/ipv4/conf/$who/rp_filter; done");
    start_host("127.0.0.1", "127.0.0.1");
    look_up_under_fire();
    EXPECT_GT(open.received(), 0U) << "the kernel lets nothing in";
}

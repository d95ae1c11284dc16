// Tests beside the simulated device.
#pragma once

#include <cstdlib>
#include <dirent.h>
#include <gtest/gtest.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "rpc/client.h"
#include "tests/support/lua_state.h"

// Descriptors of the process that are sockets of the internet: the library's,
// where the test has none of its own.
inline int internet_sockets()
{
    int count = 0;
    for (int fd = 0; fd < 1024; fd++) {
        int domain = 0;
        socklen_t size = sizeof domain;
        count += getsockopt(fd, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 && domain == AF_INET;
    }
    return count;
}

class BesideDevice : public testing::Test
{
  protected:
    static constexpr char vlan[] = "oltmib_vlaninfo_get_1"; // service nsminfo
    static constexpr char vlan10[] = "10&1&voice&1&ge1,ge2&ge3,ge4&&0&0";

    void SetUp() override
    {
        if (!getenv("SIM_CONTROL"))
            GTEST_SKIP() << "runs beside the simulated device (tools/with_device.sh)";
    }

    // One command to the device, see `simulated_device --help`; its answer.
    static std::string tell(const std::string& command)
    {
        FILE* pipe = popen(("\"$SIM_DEVICE\" --tell \"$SIM_CONTROL\" '" + command + "'").c_str(), "r");
        std::string answer;
        for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe))
            answer += static_cast<char>(c);
        EXPECT_EQ(pclose(pipe), 0) << command;
        return answer.substr(0, answer.find('\n'));
    }
    static int calls(const std::string& target) { return std::stoi(tell("count " + target)); }

    // The device's own row of port `port` begins so.
    static std::string port_row(int port)
    {
        const std::string number = std::to_string(port);
        return number + "&ge" + number + "&";
    }
    static bool begins_with(const std::optional<std::string>& text, const std::string& beginning)
    {
        return text && text->compare(0, beginning.size(), beginning) == 0;
    }
};

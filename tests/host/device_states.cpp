// Lua states of one process: they share the clients, which go with the last one.
#include <malloc.h>

#include "common/registry.h"
#include "tests/host/device.h"

namespace
{
class states : public BesideDevice
{
  protected:
    static constexpr char collect[] = "for i = 1, 50 do collectgarbage() end";

    static int open_descriptors()
    {
        int count = 0;
        DIR* folder = opendir("/proc/self/fd");
        while (folder && readdir(folder))
            count++;
        closedir(folder);
        return count;
    }
};
} // namespace

TEST_F(states, closing_one_of_two_keeps_the_others_sockets)
{
    const int before = open_descriptors();
    LuaState kept;
    auto closed = std::make_unique<LuaState>();
    EXPECT_EQ(kept.call(vlan, "10"), vlan10);
    EXPECT_TRUE(closed->call("oltmib_devinfo_get_1", ""));
    EXPECT_EQ(internet_sockets(), 2);
    closed.reset();
    EXPECT_EQ(internet_sockets(), 2);
    tell("unregister nsminfo"); // whoever looks it up again fails
    tell("unregister devinfo");
    EXPECT_EQ(kept.call(vlan, "10"), vlan10);
    EXPECT_TRUE(kept.call("oltmib_devinfo_get_1", ""));
    EXPECT_EQ(open_descriptors(), before + 2);
}

TEST_F(states, collections_drop_no_client)
{
    LuaState lua, other;
    EXPECT_EQ(lua.call(vlan, "10"), vlan10);
    EXPECT_TRUE(other.call("oltmib_devinfo_get_1", ""));
    tell("unregister nsminfo");
    tell("unregister devinfo");
    // also where nothing in Lua refers to the module any more
    other.run("librpc = nil status = nil package.loaded.librpc = nil package.loaded['librpc.status'] = nil");
    for (int i = 0; i < 5; i++) {
        other.run(collect);
        lua.run(collect);
        EXPECT_EQ(internet_sockets(), 2);
        EXPECT_EQ(lua.call(vlan, "10"), vlan10);
        EXPECT_TRUE(lua.call("oltmib_devinfo_get_1", ""));
    }
}

TEST_F(states, after_the_last_one_no_descriptor_stays_and_the_next_one_works)
{
    const int before = open_descriptors();
    for (int round = 0; round < 5; round++) {
        {
            LuaState one, two;
            EXPECT_EQ(one.call(vlan, "10"), vlan10);
            EXPECT_TRUE(two.call("oltmib_devinfo_get_1", ""));
            EXPECT_FALSE(two.call("oltmib_nothing_get_1", ""));
            tell("fault oltmib_vlaninfo_get_1 count=1 error system_err");
            EXPECT_FALSE(two.call(vlan, "10"));
            one.run("require 'librpc' package.loaded.librpc = nil require 'librpc'");
        }
        EXPECT_EQ(open_descriptors(), before);
        EXPECT_EQ(internet_sockets(), 0);
    }
}

namespace
{
// A host's own functions, whose reply is as long as the argument.
std::string kept_text;
CLIENT* echo_init() { return reinterpret_cast<CLIENT*>(&kept_text); }
CLIENT* no_init() { return nullptr; }
void echo_destroy() {}
void* echo_parser(char* text)
{
    kept_text = text;
    return &kept_text;
}
void* echo_func(void* request, CLIENT*) { return kept_text[0] == 'f' ? nullptr : request; }
char* echo_formatter(void*) { return &kept_text[0]; }

ApiNode echo_node(const char* name, ApiClientInit init)
{
    ApiNode node = {};
    strcpy(node.name, name);
    node.func = echo_func;
    node.str2arg = echo_parser;
    node.ret2str = echo_formatter;
    node.clntinit = init;
    node.clntdestroy = echo_destroy;
    return node;
}
} // namespace

// Short ones have room on the stack, longer ones are kept in heap memory.
TEST_F(states, texts_of_a_hosts_own_functions_are_whole_whatever_their_length)
{
    LuaState lua;
    const ApiNode echo = echo_node("echo", echo_init);
    ASSERT_EQ(lua_addapi(&echo), 1);
    for (size_t length = 0; length < 4200; length++) {
        const std::string text(length, static_cast<char>('g' + length % 10));
        EXPECT_EQ(lua.call("echo", text), text) << length;
    }
    EXPECT_EQ(lua_delapi("echo"), 1);
}

// An argument that a call has no room for is copied, and so is such a reply.
TEST_F(states, long_texts_leave_no_memory_behind_however_the_call_ends)
{
    LuaState lua;
    const ApiNode echo = echo_node("echo", echo_init), no_client = echo_node("no_client", no_init);
    ASSERT_EQ(lua_addapi(&echo), 1);
    ASSERT_EQ(lua_addapi(&no_client), 1);
    tell("stop lpdet");
    tell("fault oltmib_route_get_1 error system_err");
    const std::string more(100000, '&'), word(100000, 'x');
    const struct {
        const char* api;
        std::string argument;
        const char* code; // "" where the call succeeds
    } calls[] = {
        {vlan, "10" + more, ""},
        {"oltmib_route_get_1", "1" + more, "rejected"},
        {"oltmib_lpdet_global_get_1", "1" + more, "no_daemon"},
        {"oltmib_nothing_get_1", "1" + more, "unknown_api"},
        {"echo", word, ""},
        {"echo", "f" + word, "failed"},
        {"no_client", word, "no_client"},
    };
    for (const auto& [api, argument, code] : calls) {
        size_t before = 0;
        testing::internal::CaptureStderr(); // of the daemon that is not there
        for (int i = 0; i < 60; i++) {
            if (i == 10) { // everything is there by now
                lua.run(collect);
                before = mallinfo2().uordblks + mallinfo2().hblkhd;
            }
            EXPECT_EQ(lua.call(api, argument).has_value(), code[0] == '\0') << api;
            EXPECT_EQ(lua.code(), code) << api;
        }
        lua.run(collect);
        testing::internal::GetCapturedStderr();
        if (before != 0) { // an instrumented malloc tells nothing
            EXPECT_LT(mallinfo2().uordblks + mallinfo2().hblkhd, before + 1000000) << api << ", 50 calls of 100,000";
        }
    }
    EXPECT_EQ(lua_delapi("echo"), 1);
    EXPECT_EQ(lua_delapi("no_client"), 1);
}

// A finalizer of the closing state comes after the library's own.
TEST_F(states, call_while_the_last_one_closes_leaves_no_descriptor)
{
    const int before = open_descriptors();
    {
        LuaState lua;
        lua.run("local object if newproxy then object = newproxy(true) else object = setmetatable({}, {}) end "
                "local call = librpc.callapi "
                "getmetatable(object).__gc = function() answer = call('oltmib_vlaninfo_get_1', '10') end "
                "if not newproxy then setmetatable(object, getmetatable(object)) end "
                "kept = object");
        lua.run("for i = 1, 3 do package.loaded.librpc = nil require 'librpc' end");
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(calls(vlan), 1);
    LuaState next;
    EXPECT_EQ(next.call(vlan, "10"), vlan10);
}

// What librpc.so shows to other programs, and that the names a program exports
// itself change nothing inside the library. This program plays the interpreter:
// it exports functions of its own and loads the library as Lua loads a module.
#include <algorithm>
#include <climits>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <lua.hpp>
#include <map>
#include <sstream>
#include <sys/resource.h>

#include "common/registry.h"
#include "tests/golden/golden_file.h"
#include "tests/support/captured_output.h"

// Functions of the program's own that happen to have the library's names.
static int own_calls;
#define OWN(function)                                                                                                  \
    extern "C" __attribute__((visibility("default"))) int function();                                                  \
    int function() { return ++own_calls; }
OWN(int2str)
OWN(mac2str)
OWN(str2mac)
OWN(strsplit)
OWN(strsplit2)
OWN(hex2str)
OWN(str2hex)
OWN(strappend)
OWN(lua_callapi)
OWN(xdr_oltmib_devcapEntry)
OWN(str2arg_devcap)
OWN(arg2str_devcap)
OWN(oltmib_devinfo_init)
OWN(oltmib_devinfo_clnt_init)
OWN(oltmib_devcapint_get_1)

int lua_addapi(const ApiNode*) { return ++own_calls; }
int lua_delapi(const char*) { return ++own_calls; }
ApiNode* lua_getapibyname(const char*) { return ++own_calls, nullptr; }
void list_add_tail(ListLinks*, ListLinks*) { ++own_calls; }
void __list_add(ListLinks*, ListLinks*, ListLinks*) { ++own_calls; }
void list_del(ListLinks*) { ++own_calls; }
void __list_del(ListLinks*, ListLinks*) { ++own_calls; }

// Opened twice, the library keeps the replaced nodes on purpose: no leaks.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:lua_addapi\n"; }

namespace
{
struct exports : testing::Test {
    void* library = dlopen(LIBRPC_SO, RTLD_NOW | RTLD_LOCAL);
    lua_State* L = luaL_newstate();

    void SetUp() override
    {
        ASSERT_NE(library, nullptr) << dlerror();
        luaL_openlibs(L);
        open();
    }
    ~exports() override
    {
        lua_close(L);
        EXPECT_EQ(own_calls, 0);
    }

    void* find(const std::string& name) const { return dlsym(library, name.c_str()); }

    void open()
    {
        lua_pushcfunction(L, reinterpret_cast<lua_CFunction>(find("luaopen_librpc")));
        lua_call(L, 0, 1);
        lua_pop(L, 1);
    }

    std::vector<const ApiNode*> nodes() const
    {
        std::vector<const ApiNode*> nodes;
        const auto* head = static_cast<ListLinks*>(find("apinode_head"));
        for (const ListLinks* at = head->next; at != head; at = at->next)
            nodes.push_back(static_cast<const ApiNode*>(at));
        return nodes;
    }

    // What a chunk of Lua prints, the library's lines included.
    std::string run(const char* chunk)
    {
        CapturedOutput output;
        const bool failed = luaL_dostring(L, chunk);
        std::string text = output.text();
        return failed ? text + lua_tostring(L, -1) : text;
    }
};
} // namespace

TEST_F(exports, every_named_function_is_found)
{
    for (const auto& line : golden::list("exports.txt")) {
        EXPECT_NE(find(line[0]), nullptr) << line[0];
        EXPECT_NE(find(line[0]), dlsym(RTLD_DEFAULT, line[0].c_str())) << line[0];
    }
}

TEST_F(exports, names_that_the_program_exports_too_are_never_called)
{
    for (const ApiNode* node : nodes()) {
        char text[] = "1&00:11:22:33:44:55&3,4&0102";
        void* request = node->str2arg(text);
        EXPECT_NE(node->ret2str(request), nullptr);
    }
    EXPECT_EQ(
        run("librpc.enabledebug() librpc.callapi('oltmib_api_get_1', '') librpc.disabledebug()"),
        "[lua_callapi: 160]name oltmib_api_get_1, str .\r\n[lua_callapi: 165]api oltmib_api_get_1 not found.\r\n");
    EXPECT_EQ(own_calls, 0);
}

TEST_F(exports, opening_registers_every_api_in_order_with_its_own_functions)
{
    const auto rows = golden::list("apis.txt");
    for (int round = 0; round < 2; round++, open()) {
        const auto registered = nodes();
        ASSERT_EQ(registered.size(), rows.size());
        for (size_t i = 0; i < rows.size(); i++) {
            const ApiNode& node = *registered[i];
            ASSERT_EQ(node.name, rows[i][1]);
            EXPECT_EQ(reinterpret_cast<void*>(node.func), find(node.name)) << node.name;
            EXPECT_EQ(reinterpret_cast<void*>(node.str2arg), find(rows[i][5])) << node.name;
            EXPECT_EQ(reinterpret_cast<void*>(node.ret2str), find(rows[i][6])) << node.name;
        }
    }
}

TEST_F(exports, every_service_has_its_client_pair)
{
    std::map<std::string, std::vector<std::string>> services;
    for (const auto& service : golden::list("services.txt"))
        services[service[0]] = service;
    const auto rows = golden::list("apis.txt");
    const auto registered = nodes();
    ASSERT_EQ(registered.size(), rows.size());
    for (size_t i = 0; i < rows.size(); i++) {
        const auto& service = services.at(rows[i][0]);
        EXPECT_EQ(reinterpret_cast<void*>(registered[i]->clntinit), find(service.at(3))) << rows[i][1];
        EXPECT_EQ(reinterpret_cast<void*>(registered[i]->clntdestroy), find(service.at(4))) << rows[i][1];
    }
}

TEST_F(exports, unregistered_name_returns_no_value)
{
    EXPECT_EQ(run("print(select('#', librpc.callapi('oltmib_erpsstate_get_1', '')))"), "0\n");
}

TEST_F(exports, showapi_lists_every_api_in_order_whatever_debugging_says)
{
    std::istringstream lines(run("librpc.showapi()"));
    for (const auto& row : golden::list("apis.txt")) {
        std::string line;
        ASSERT_TRUE(std::getline(lines, line));
        EXPECT_EQ(line.substr(0, line.find(',')), "name " + row[1]);
        EXPECT_EQ(line.back(), '\r');
    }
}

TEST_F(exports, showapi_after_a_second_registration_lists_every_api_once)
{
    const std::string first = run("librpc.showapi()");
    EXPECT_EQ(std::count(first.begin(), first.end(), '\n'), static_cast<long>(golden::list("apis.txt").size()));
    open();
    EXPECT_EQ(run("librpc.showapi()"), first);
}

TEST_F(exports, switches_set_the_flag_to_1_and_to_0)
{
    const int* flag = static_cast<int*>(find("rpclib_dbg"));
    EXPECT_EQ(*flag, 0);
    EXPECT_EQ(run("librpc.enabledebug()"), "");
    EXPECT_EQ(*flag, 1);
    EXPECT_EQ(run("librpc.enabledebug()"), "");
    EXPECT_EQ(*flag, 1);
    EXPECT_EQ(run("librpc.disabledebug()"), "");
    EXPECT_EQ(*flag, 0);
}

TEST_F(exports, flag_of_any_number_but_0_switches_the_trace_lines_on)
{
    int* flag = static_cast<int*>(find("rpclib_dbg"));
    for (const int value : {1, 2, -1, 256, INT_MIN, INT_MAX}) {
        *flag = value;
        EXPECT_EQ(run("librpc.callapi('a', '1')"),
                  "[lua_callapi: 160]name a, str 1.\r\n[lua_callapi: 165]api a not found.\r\n")
            << value;
    }
    *flag = 0;
    EXPECT_EQ(run("librpc.callapi('a', '1')"), "");
}

// Not even the line that no such API is registered: nobody has looked.
TEST_F(exports, call_whose_argument_cannot_be_copied_prints_the_call_and_nothing_else)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer needs the address space";
#endif
    lua_pushcfunction(L, reinterpret_cast<lua_CFunction>(find("luaopen_librpc_status")));
    lua_call(L, 0, 1);
    lua_setglobal(L, "status");
    luaL_dostring(L, "argument = ('x'):rep(32 * 1024 * 1024)");
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    for (const char* name : {"oltmib_devinfo_get_1", "oltmib_nothing_get_1"}) {
        CapturedOutput output;
        luaL_dostring(L, "librpc.enabledebug()");
        const rlimit little = {1, before.rlim_max};
        setrlimit(RLIMIT_AS, &little); // no more than there is already
        luaL_dostring(L, ("values = select('#', librpc.callapi('" + std::string(name) + "', argument))").c_str());
        setrlimit(RLIMIT_AS, &before);
        luaL_dostring(L, "librpc.disabledebug()");
        const std::string beginning = "[lua_callapi: 160]name " + std::string(name) + ", str x";
        const std::string text = output.text();
        EXPECT_EQ(text.substr(0, beginning.size()), beginning);
        EXPECT_EQ(text.find("lua_callapi", beginning.size()), std::string::npos) << text.substr(text.size() - 200);
        EXPECT_EQ(run("print(values)"), "0\n");
        EXPECT_EQ(run("print((status.last()))"), "out_of_memory\n");
        luaL_dostring(L, "librpc.callapi('oltmib_nothing_get_1', '')"); // another reason
    }
}

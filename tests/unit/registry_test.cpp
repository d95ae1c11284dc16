// The list primitives and the registry of APIs.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <future>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "tests/golden/golden_list.h"
#include "tests/support/captured_output.h"
#include "tests/unit/support.h"

// malloc as the whole program calls it (linked with --wrap=malloc).
static bool memory_is_out;
static thread_local void (*on_request)(); // what a thread does in its next request
static int until_refusal;                 // the n-th request from now on, and no other, gets none
extern "C" void* __real_malloc(size_t size);
extern "C" void* __wrap_malloc(size_t size);
extern "C" void* __wrap_malloc(size_t size)
{
    if (void (*const act)() = on_request) {
        on_request = nullptr;
        act();
    }
    const bool is_refused = memory_is_out || (until_refusal > 0 && --until_refusal == 0);
    return is_refused ? nullptr : __real_malloc(size);
}

// The same of calloc.
static bool no_room_for_more_hints;
extern "C" void* __real_calloc(size_t count, size_t size);
extern "C" void* __wrap_calloc(size_t count, size_t size);
extern "C" void* __wrap_calloc(size_t count, size_t size)
{
    return no_room_for_more_hints ? nullptr : __real_calloc(count, size);
}

// Replaced nodes are kept on purpose: no leaks.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:lua_addapi\nleak:add_described_api\n"; }

namespace
{
// A list of its own and some entries to put into it.
struct list_primitives : testing::Test {
    ListLinks head = {&head, &head};
    ListLinks a = {}, b = {}, c = {};

    // Every link there and back.
    void expect_order(std::vector<ListLinks*> order)
    {
        order.insert(order.begin(), &head);
        for (size_t i = 0; i < order.size(); i++) {
            ListLinks* next = order[(i + 1) % order.size()];
            EXPECT_EQ(order[i]->next, next);
            EXPECT_EQ(next->prev, order[i]);
        }
    }
};

void* func_one(void*, CLIENT*) { return nullptr; }
void* func_two(void*, CLIENT*) { return nullptr; }
void* parse_nothing(char*) { return nullptr; }
char* format_nothing(void*) { return nullptr; }
CLIENT* no_client() { return nullptr; }
void destroy_nothing() {}

// An empty registry before each test and after it.
struct registry : testing::Test {
    registry() { clear(); }
    ~registry() override { clear(); }

    static void clear()
    {
        while (apinode_head.next != &apinode_head)
            lua_delapi(static_cast<ApiNode*>(apinode_head.next)->name);
    }

    static ApiNode make(const std::string& name, ApiFunc func = func_one)
    {
        ApiNode api = {};
        snprintf(api.name, sizeof api.name, "%s", name.c_str());
        api.func = func;
        api.str2arg = parse_nothing;
        api.ret2str = format_nothing;
        api.clntinit = no_client;
        api.clntdestroy = destroy_nothing;
        return api;
    }

    static int add(const std::string& name, ApiFunc func = func_one)
    {
        const ApiNode api = make(name, func);
        return lua_addapi(&api);
    }

    static std::vector<std::string> names()
    {
        std::vector<std::string> names;
        for (ListLinks* at = apinode_head.next; at != &apinode_head; at = at->next) {
            EXPECT_EQ(at->next->prev, at);
            names.push_back(static_cast<ApiNode*>(at)->name);
        }
        return names;
    }
};

using Names = std::vector<std::string>;
} // namespace

TEST_F(list_primitives, list_add_sets_both_neighbours_links)
{
    __list_add(&a, &head, &head);
    expect_order({&a});
    __list_add(&b, &head, &a);
    expect_order({&b, &a});
    __list_add(&c, &b, &a);
    expect_order({&b, &c, &a});
}

TEST_F(list_primitives, list_add_tail_appends_before_the_head)
{
    list_add_tail(&a, &head);
    list_add_tail(&b, &head);
    list_add_tail(&c, &head);
    expect_order({&a, &b, &c});
}

TEST_F(list_primitives, inner_list_del_joins_the_neighbours_and_leaves_the_entry)
{
    list_add_tail(&a, &head);
    list_add_tail(&b, &head);
    __list_del(&head, &b);
    expect_order({&b});
    EXPECT_EQ(a.next, &b);
    EXPECT_EQ(a.prev, &head);
}

TEST_F(list_primitives, list_del_poisons_the_entry)
{
    list_add_tail(&a, &head);
    list_add_tail(&b, &head);
    list_add_tail(&c, &head);
    list_del(&b);
    expect_order({&a, &c});
    EXPECT_EQ(reinterpret_cast<uintptr_t>(b.next), 0x100100U);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(b.prev), 0x200200U);
}

TEST_F(registry, empty_head_points_to_itself)
{
    EXPECT_EQ(apinode_head.next, &apinode_head);
    EXPECT_EQ(apinode_head.prev, &apinode_head);
    EXPECT_EQ(lua_getapibyname("any"), nullptr);
    EXPECT_EQ(lua_delapi("any"), 0);
}

TEST_F(registry, node_begins_with_its_links_and_name_takes_40_characters)
{
    EXPECT_EQ(offsetof(ListLinks, next), 0U);
    EXPECT_EQ(offsetof(ListLinks, prev), sizeof(void*));
    EXPECT_EQ(sizeof ApiNode::name, 40U);
    ApiNode node = {};
    const char* start = reinterpret_cast<const char*>(&node);
    const size_t pointer = sizeof(void*);
    EXPECT_EQ(node.name - start, static_cast<ptrdiff_t>(2 * pointer));
    const size_t first = 2 * pointer + sizeof node.name;
    EXPECT_EQ(reinterpret_cast<const char*>(&node.func) - start, static_cast<ptrdiff_t>(first));
    EXPECT_EQ(reinterpret_cast<const char*>(&node.str2arg) - start, static_cast<ptrdiff_t>(first + pointer));
    EXPECT_EQ(reinterpret_cast<const char*>(&node.ret2str) - start, static_cast<ptrdiff_t>(first + 2 * pointer));
    EXPECT_EQ(reinterpret_cast<const char*>(&node.clntinit) - start, static_cast<ptrdiff_t>(first + 3 * pointer));
    EXPECT_EQ(reinterpret_cast<const char*>(&node.clntdestroy) - start, static_cast<ptrdiff_t>(first + 4 * pointer));
}

TEST_F(registry, addapi_copies_the_template_and_ignores_its_links)
{
    ApiNode api = make("oltmib_example_get_1");
    ListLinks elsewhere = {&elsewhere, &elsewhere};
    api.next = api.prev = &elsewhere;
    EXPECT_EQ(lua_addapi(&api), 1);
    memset(api.name, 'x', 5);
    const ApiNode* node = lua_getapibyname("oltmib_example_get_1");
    ASSERT_NE(node, nullptr);
    EXPECT_NE(node, &api);
    EXPECT_EQ(node->func, func_one);
    EXPECT_EQ(node->str2arg, parse_nothing);
    EXPECT_EQ(node->ret2str, format_nothing);
    EXPECT_EQ(node->clntinit, no_client);
    EXPECT_EQ(node->clntdestroy, destroy_nothing);
    EXPECT_EQ(names(), Names{"oltmib_example_get_1"});
    EXPECT_EQ(elsewhere.next, &elsewhere);
}

TEST_F(registry, nodes_stand_in_the_order_of_registration)
{
    for (const char* name : {"c", "a", "b"})
        EXPECT_EQ(add(name), 1);
    EXPECT_EQ(names(), (Names{"c", "a", "b"}));
}

TEST_F(registry, same_name_twice_leaves_one_node_at_the_tail_with_the_second_functions)
{
    add("twice", func_one);
    ApiNode* first = lua_getapibyname("twice");
    add("other");
    add("twice", func_two);
    EXPECT_EQ(names(), (Names{"other", "twice"}));
    EXPECT_EQ(lua_getapibyname("twice")->func, func_two);
    EXPECT_STREQ(first->name, "twice"); // unlinked, still there for who holds it
    EXPECT_EQ(first->func, func_one);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(first->next), 0x100100U);
}

// More names than the library's own, so that some have no hint that leads to their node.
TEST_F(registry, name_without_memory_for_its_hint_is_one_like_any_other)
{
    Names expected;
    for (int i = 0; i < 1000; i++)
        expected.push_back("hint" + std::to_string(i));
    no_room_for_more_hints = true;
    for (const std::string& name : expected)
        EXPECT_EQ(add(name, func_one), 1);
    no_room_for_more_hints = false;
    EXPECT_EQ(names(), expected);
    for (const std::string& name : expected)
        EXPECT_EQ(add(name, func_two), 1);
    EXPECT_EQ(names(), expected);
    for (const ListLinks* at = apinode_head.next; at != &apinode_head; at = at->next)
        EXPECT_EQ(static_cast<const ApiNode*>(at)->func, func_two);
    for (const std::string& name : expected)
        EXPECT_EQ(lua_delapi(name.c_str()), 1);
}

TEST_F(registry, addapi_without_memory_returns_0_and_changes_nothing)
{
    add("first", func_one);
    add("last");
    for (const char* name : {"first", "new"}) {
        const ApiNode api = make(name, func_two);
        memory_is_out = true;
        const int result = lua_addapi(&api);
        memory_is_out = false;
        EXPECT_EQ(result, 0);
    }
    EXPECT_EQ(names(), (Names{"first", "last"}));
    EXPECT_EQ(lua_getapibyname("first")->func, func_one);
    EXPECT_EQ(lua_getapibyname("new"), nullptr);
}

TEST_F(registry, getapibyname_wants_the_exact_name)
{
    add("oltmib_example_get_1");
    for (const char* name :
         {"oltmib_example_get_", "oltmib_example_get_1 ", "OLTMIB_EXAMPLE_GET_1", "", "oltmib_example_get_11"})
        EXPECT_EQ(lua_getapibyname(name), nullptr) << name;
    EXPECT_NE(lua_getapibyname("oltmib_example_get_1"), nullptr);
}

TEST_F(registry, names_of_39_characters_and_of_none_are_names)
{
    const std::string longest(39, 'n');
    add(longest);
    add("");
    EXPECT_STREQ(lua_getapibyname(longest.c_str())->name, longest.c_str());
    EXPECT_STREQ(lua_getapibyname("")->name, "");
    EXPECT_EQ(lua_getapibyname((longest + "n").c_str()), nullptr);
}

TEST_F(registry, delapi_unlinks_once)
{
    for (const char* name : {"a", "b", "c"})
        add(name);
    EXPECT_EQ(lua_delapi("b"), 1);
    EXPECT_EQ(names(), (Names{"a", "c"}));
    EXPECT_EQ(lua_getapibyname("b"), nullptr);
    EXPECT_EQ(lua_delapi("b"), 0);
    EXPECT_EQ(lua_delapi("c"), 1);
    EXPECT_EQ(lua_delapi("a"), 1);
    EXPECT_EQ(apinode_head.next, &apinode_head);
    EXPECT_EQ(apinode_head.prev, &apinode_head);
}

namespace
{
std::atomic<bool> is_within, was_within, may_end;
}

TEST_F(registry, list_is_printed_the_same_without_memory_for_a_copy)
{
    for (const char* name : {"c", "a", "b"})
        add(name);
    CapturedOutput with_memory;
    print_list();
    const std::string usual = with_memory.text();
    CapturedOutput without;
    memory_is_out = true;
    print_list();
    memory_is_out = false;
    EXPECT_EQ(without.text(), usual);
    EXPECT_EQ(std::count(usual.begin(), usual.end(), '\n'), 3);
}

TEST_F(registry, printing_to_who_reads_nothing_holds_up_nobody)
{
    for (int i = 0; i < 2000; i++)
        add("oltmib_example" + std::to_string(i) + "_get_1");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const int room = fcntl(ends[1], F_SETPIPE_SZ, 4096), before = dup(STDOUT_FILENO);
    fflush(stdout);
    dup2(ends[1], STDOUT_FILENO);
    std::thread printer([] {
        print_list();
        fflush(stdout);
    });
    for (int waiting = 0; waiting < room - 1000; usleep(1000)) // no line more has room then
        ASSERT_EQ(ioctl(ends[0], FIONREAD, &waiting), 0);
    std::future<ApiNode*> found =
        std::async(std::launch::async, [] { return lua_getapibyname("oltmib_example0_get_1"); });
    const std::future_status status = found.wait_for(std::chrono::seconds(20));

    std::thread reader([&] {
        char bytes[4096];
        while (read(ends[0], bytes, sizeof bytes) > 0)
            continue;
    });
    printer.join();
    dup2(before, STDOUT_FILENO);
    close(ends[1]);
    reader.join();
    EXPECT_EQ(status, std::future_status::ready);
    close(ends[0]);
    close(before);
}

// The other thread is within the registry, asking for memory, when the host forks.
TEST_F(registry, forking_waits_for_who_is_within_and_both_processes_go_on)
{
    is_within = was_within = may_end = false;
    add("a");
    std::thread other([] {
        on_request = [] {
            is_within = true;
            usleep(100000); // which a fork that does not wait is quicker than
            was_within = true;
        };
        add("b");
        while (!may_end) // in no other lock that a fork would leave held
            usleep(1000);
    });
    while (!is_within)
        std::this_thread::yield();
    const pid_t child = fork();
    if (child == 0) {
        alarm(10); // that ends a child which nobody lets in
        _exit(names() == Names{"a", "b"} && add("c") == 1 && lua_getapibyname("c") ? 0 : 1);
    }
    EXPECT_TRUE(was_within);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    may_end = true;
    other.join();
    EXPECT_EQ(add("c"), 1);
    EXPECT_EQ(names(), (Names{"a", "b", "c"}));
}

TEST_F(registry, name_can_come_back_after_delapi)
{
    add("a", func_one);
    add("b");
    lua_delapi("a");
    EXPECT_EQ(add("a", func_two), 1);
    EXPECT_EQ(names(), (Names{"b", "a"}));
    EXPECT_EQ(lua_getapibyname("a")->func, func_two);
}

TEST_F(registry, lookup_finds_nodes_that_were_linked_by_the_primitives)
{
    add("a");
    ApiNode own = make("own", func_two);
    list_add_tail(&own, &apinode_head);
    EXPECT_EQ(lua_getapibyname("own"), &own);
    add("b");
    EXPECT_EQ(lua_getapibyname("own"), &own);
    EXPECT_EQ(names(), (Names{"a", "own", "b"}));
    list_del(&own);
    EXPECT_EQ(lua_getapibyname("own"), nullptr);
    EXPECT_NE(lua_getapibyname("b"), nullptr);
}

TEST_F(registry, of_two_nodes_of_one_name_the_first_is_found)
{
    ApiNode first = make("same", func_one), second = make("same", func_two);
    list_add_tail(&first, &apinode_head);
    list_add_tail(&second, &apinode_head);
    EXPECT_EQ(lua_getapibyname("same"), &first);
    EXPECT_EQ(lua_delapi("same"), 1);
    EXPECT_EQ(lua_getapibyname("same"), &second);
    EXPECT_EQ(lua_delapi("same"), 1);
    EXPECT_EQ(lua_getapibyname("same"), nullptr);
}

TEST_F(registry, lookup_misses_nodes_that_were_unlinked_by_the_primitives)
{
    for (const char* name : {"a", "b", "c"})
        add(name);
    list_del(lua_getapibyname("b"));
    EXPECT_EQ(lua_getapibyname("b"), nullptr);
    list_del(lua_getapibyname("c"));
    EXPECT_EQ(lua_getapibyname("c"), nullptr);
    EXPECT_NE(lua_getapibyname("a"), nullptr);
    add("c", func_two);
    EXPECT_EQ(names(), (Names{"a", "c"}));
    EXPECT_EQ(lua_getapibyname("c")->func, func_two);
}

TEST_F(registry, node_renamed_in_place_is_found_by_its_new_name_alone)
{
    add("a", func_one);
    add("b", func_two);
    strcpy(static_cast<ApiNode*>(apinode_head.next)->name, "z");
    EXPECT_EQ(lua_getapibyname("a"), nullptr);
    ASSERT_NE(lua_getapibyname("z"), nullptr);
    EXPECT_EQ(lua_getapibyname("z")->func, func_one);
    add("a", func_two);
    EXPECT_EQ(names(), (Names{"z", "b", "a"}));
    EXPECT_EQ(lua_delapi("z"), 1);
    EXPECT_EQ(names(), (Names{"b", "a"}));
}

TEST_F(registry, registration_replaces_a_node_that_was_renamed_to_its_name)
{
    add("a", func_one);
    add("b", func_one);
    strcpy(lua_getapibyname("a")->name, "c");
    add("c", func_two);
    EXPECT_EQ(names(), (Names{"b", "c"}));
    EXPECT_EQ(lua_getapibyname("c")->func, func_two);
}

TEST_F(registry, nodes_linked_and_unlinked_in_the_middle_are_seen)
{
    for (const char* name : {"a", "b", "c"})
        add(name, func_one);
    ApiNode middle = make("m", func_two), before = make("c", func_two);
    ListLinks* b = lua_getapibyname("b");
    __list_add(&middle, b, b->next);
    EXPECT_EQ(lua_getapibyname("m"), &middle);
    __list_add(&before, &apinode_head, apinode_head.next); // stands before the registry's own "c"
    EXPECT_EQ(lua_getapibyname("c"), &before);
    EXPECT_EQ(names(), (Names{"c", "a", "b", "m", "c"}));
    list_del(&before);
    EXPECT_EQ(lua_getapibyname("c")->func, func_one);
    list_del(b);
    EXPECT_EQ(lua_getapibyname("b"), nullptr);
    __list_del(middle.prev, middle.next); // leaves the node's own links
    EXPECT_EQ(lua_getapibyname("m"), nullptr);
    EXPECT_EQ(names(), (Names{"a", "c"}));
}

TEST_F(registry, registration_replaces_only_the_first_of_two_nodes_of_its_name)
{
    ApiNode first = make("same", func_one), second = make("same", func_one);
    list_add_tail(&first, &apinode_head);
    list_add_tail(&second, &apinode_head);
    add("same", func_two);
    EXPECT_EQ(names(), (Names{"same", "same"}));
    EXPECT_EQ(lua_getapibyname("same"), &second);
    list_del(&second);
    EXPECT_EQ(lua_getapibyname("same")->func, func_two);
}

TEST_F(registry, node_moved_to_a_list_of_the_hosts_own_is_not_registered)
{
    ListLinks own = {&own, &own};
    add("a");
    ApiNode* moved = lua_getapibyname("a");
    list_del(moved);
    list_add_tail(moved, &own);
    EXPECT_EQ(lua_getapibyname("a"), nullptr);
}

TEST_F(registry, thousands_of_names_are_found_and_so_are_those_that_got_no_hint)
{
    for (int i = 0; i < 3000; i++)
        add("early" + std::to_string(i), func_one);
    const ApiNode last = make("late", func_two);
    EXPECT_EQ(lua_addapi(&last), 1);
    for (int i = 0; i < 3000; i++) {
        const std::string name = "early" + std::to_string(i);
        ASSERT_NE(lua_getapibyname(name.c_str()), nullptr) << name;
        EXPECT_EQ(lua_getapibyname(name.c_str())->name, name);
    }
    EXPECT_EQ(lua_getapibyname("late")->func, func_two);
    EXPECT_EQ(lua_getapibyname("early3000"), nullptr);
}

// Against a plain list of names, with every way of changing the registry.
TEST_F(registry, equals_a_plain_list_after_any_sequence)
{
    Random random(9);
    std::vector<std::pair<std::string, ApiFunc>> model;
    const auto place = [&](const std::string& name) {
        return std::find_if(model.begin(), model.end(), [&](const auto& entry) { return entry.first == name; });
    };
    for (int i = 0; i < 5000; i++) {
        const std::string name = "api" + std::to_string(between(random, 0, 30));
        const ApiFunc func = between(random, 0, 1) ? func_one : func_two;
        const auto at = place(name);
        switch (between(random, 0, 5)) {
        case 0:
        case 1:
            ASSERT_EQ(add(name, func), 1);
            if (at != model.end())
                model.erase(at);
            model.emplace_back(name, func);
            break;
        case 2:
            ASSERT_EQ(lua_delapi(name.c_str()), at != model.end());
            if (at != model.end())
                model.erase(at);
            break;
        case 3:
            if (at != model.end()) {
                list_del(lua_getapibyname(name.c_str()));
                model.erase(at);
            }
            break;
        case 4: // renamed in place to a name that is free
            if (const std::string free_name = "new" + std::to_string(i); at != model.end()) {
                for (ListLinks* node = apinode_head.next; node != &apinode_head; node = node->next)
                    if (static_cast<ApiNode*>(node)->name == name)
                        strcpy(static_cast<ApiNode*>(node)->name, free_name.c_str());
                at->first = free_name;
                ASSERT_NE(lua_getapibyname(free_name.c_str()), nullptr);
            }
            break;
        default:
            const ApiNode* node = lua_getapibyname(name.c_str());
            ASSERT_EQ(node != nullptr, at != model.end());
            if (node) {
                ASSERT_EQ(node->func, at->second);
            }
        }
        Names expected;
        for (const auto& [known, unused] : model)
            expected.push_back(known);
        ASSERT_EQ(names(), expected);
    }
}

TEST_F(registry, service_registers_its_apis_in_order_and_not_its_bare_stubs)
{
    Names expected;
    for (const Service* service : all_services) {
        EXPECT_EQ(service->init(), 1);
        for (const Api& api : *service)
            if (api.registered())
                expected.push_back(api.name);
            else
                EXPECT_EQ(lua_getapibyname(api.name), nullptr) << api.name;
    }
    EXPECT_EQ(expected, golden::column("apis.txt", 1));
    EXPECT_EQ(names(), expected);
    for_each_api([](const Service& service, const Api& api) {
        if (!api.registered())
            return;
        const ApiNode* node = lua_getapibyname(api.name);
        ASSERT_NE(node, nullptr) << api.name;
        EXPECT_EQ(node->func, api.func);
        EXPECT_EQ(node->str2arg, api.parser->str2arg);
        EXPECT_EQ(node->ret2str, api.formatter->ret2str);
        EXPECT_EQ(node->clntinit, service.clnt_init);
        EXPECT_EQ(node->clntdestroy, service.clnt_destroy);
    });
}

// As the device's own libraries have it: whoever asks wants to know of the last.
TEST_F(registry, registration_of_a_service_tells_of_its_last_node)
{
    for (const Service* service : all_services) {
        Names all;
        for (const Api& api : *service)
            if (api.registered())
                all.emplace_back(api.name);
        const Names but_the_last(all.begin(), all.end() - 1), but_the_first(all.begin() + 1, all.end());
        until_refusal = static_cast<int>(all.size());
        EXPECT_EQ(service->init(), 0) << service->name;
        EXPECT_EQ(until_refusal, 0) << service->name;
        EXPECT_EQ(names(), but_the_last);
        clear();
        if (all.size() > 1) {
            until_refusal = 1;
            EXPECT_EQ(service->init(), 1) << service->name;
            EXPECT_EQ(names(), but_the_first);
        }
        clear();
    }
}

TEST_F(registry, second_registration_of_everything_keeps_the_names_and_their_order)
{
    for (int round = 0; round < 2; round++)
        for (const Service* service : all_services)
            service->init();
    EXPECT_EQ(names(), golden::column("apis.txt", 1));
}

TEST_F(registry, print_api_shows_the_name_and_five_addresses)
{
    add("oltmib_example_get_1");
    CapturedOutput output;
    print_api(*lua_getapibyname("oltmib_example_get_1"));
    char expected[400];
    snprintf(expected, sizeof expected,
             "name %s,\t func %p,\t str2arg %p,\t ret2str %p,\t clntinit %p,\t clntdestroy %p", "oltmib_example_get_1",
             reinterpret_cast<void*>(func_one), reinterpret_cast<void*>(parse_nothing),
             reinterpret_cast<void*>(format_nothing), reinterpret_cast<void*>(no_client),
             reinterpret_cast<void*>(destroy_nothing));
    EXPECT_EQ(output.text(), expected);
}

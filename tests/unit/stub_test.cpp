// Stubs: what each asks of its client, and what becomes of the reply.
#include <gtest/gtest.h>
#include <set>

#include "tests/golden/golden_list.h"
#include "tests/unit/support.h"

namespace
{
// One stub with a request of zeroes and a client of its own.
struct every_stub : testing::TestWithParam<const Api*> {
    const Api& api = *GetParam();
    const Record nothing = {"", "", nullptr, nullptr, nullptr, 0, 1, 0};
    Object request{api.request ? *api.request : nothing};
    const size_t reply_size = api.reply ? 4U * api.reply->units : 4U;
    ScriptedClient client;

    void* call() { return api.func(request.data(), client.get()); }

    // What a reply of the stub occupies in memory.
    size_t storage() const
    {
        const Record* record = api.reply ? api.reply : api.output() ? api.output()->record : nullptr;
        return record ? record->size : sizeof(int);
    }
};

std::vector<const Api*> all_apis()
{
    std::vector<const Api*> apis;
    for_each_api([&](const Service&, const Api& api) { apis.push_back(&api); });
    return apis;
}
} // namespace

INSTANTIATE_TEST_SUITE_P(stubs, every_stub, testing::ValuesIn(all_apis()),
                         [](const auto& info) { return std::string(info.param->name); });

TEST(stubs, are_those_that_other_programs_find)
{
    std::set<std::string> stubs, exported;
    for (const Api* api : all_apis())
        EXPECT_TRUE(stubs.insert(api->name).second) << api->name;
    for (const std::string& name : golden::column("exports.txt", 0))
        if (name.compare(0, 7, "oltmib_") == 0 && name.compare(name.size() - 2, 2, "_1") == 0)
            exported.insert(name);
    EXPECT_EQ(stubs, exported);
}

TEST_P(every_stub, calls_its_procedure_once_for_25_seconds_with_its_whole_request)
{
    client.reply = Bytes(reply_size);
    EXPECT_NE(call(), nullptr);
    EXPECT_EQ(client.calls, 1);
    EXPECT_EQ(client.procedure, api.procedure);
    EXPECT_EQ(client.request, Bytes(api.request ? 4U * api.request->units : 0U));
    EXPECT_EQ(client.timeout.tv_sec, 25);
    EXPECT_EQ(client.timeout.tv_usec, 0);
}

TEST_P(every_stub, clears_its_static_reply_before_each_call_and_gives_null_after_a_failure)
{
    client.reply = Bytes(reply_size, 0x41);
    auto* reply = static_cast<char*>(call());
    ASSERT_NE(reply, nullptr);
    EXPECT_NE(std::count(reply, reply + storage(), '\0'), static_cast<ptrdiff_t>(storage()));
    for (const enum clnt_stat status : {RPC_TIMEDOUT, RPC_CANTSEND, RPC_CANTRECV, RPC_PROGUNAVAIL, RPC_FAILED}) {
        client.status = status;
        EXPECT_EQ(call(), nullptr);
        EXPECT_EQ(std::count(reply, reply + storage(), '\0'), static_cast<ptrdiff_t>(storage()));
    }
    EXPECT_EQ(client.calls, 6);
}

TEST_P(every_stub, gives_null_for_a_reply_that_is_a_byte_short)
{
    client.reply = Bytes(reply_size - 1);
    EXPECT_EQ(call(), nullptr);
}

TEST_P(every_stub, gives_the_same_storage_each_time)
{
    client.reply = Bytes(reply_size);
    void* first = call();
    EXPECT_EQ(call(), first);
}

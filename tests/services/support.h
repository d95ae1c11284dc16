// A daemon that lives in the test: calls go through the real parser, stub and
// formatter, but the client's call operation keeps what would travel and
// answers with what the test says. Expectations are units written by hand:
//
//     EXPECT_REQUEST("oltmib_svi_get_1", "7&eth0", 7, chars(32, "eth0"), zeros(20 + 32 + 2));
//     EXPECT_REPLY("oltmib_svi_get_1", "7&eth0&&&0&0", 7, chars(32, "eth0"), zeros(20 + 32 + 2));
//
// Arguments and replies lie in memory of exactly their size, so that
// a byte read behind them ends the test.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/apis.h"
#include "tests/support/scripted_client.h"

namespace support
{
// The units of a char[size] that holds `text` and zeros behind it. A character
// widens as the host's char does; `text` may fill the array, without a NUL.
inline Units chars(size_t size, const std::string& text)
{
    Units units(size);
    EXPECT_LE(text.size(), size) << "a text longer than its array";
    for (size_t i = 0; i < text.size() && i < size; i++)
        units[i] = static_cast<uint32_t>(static_cast<int>(text[i]));
    return units;
}

inline Units zeros(size_t count) { return Units(count); }

// Some ints.
template <class... Ints> Units ints(Ints... values) { return {static_cast<uint32_t>(values)...}; }

// The units of a 64-bit value: the low word, then the high word.
inline Units words(uint64_t value) { return ints(static_cast<uint32_t>(value), static_cast<uint32_t>(value >> 32)); }

// `count` ints, one more each.
inline Units counting(int first, size_t count)
{
    Units units;
    for (size_t i = 0; i < count; i++)
        units.push_back(static_cast<uint32_t>(first) + static_cast<uint32_t>(i));
    return units;
}

inline void append(Units& to, const Units& more) { to.insert(to.end(), more.begin(), more.end()); }
inline void append(Units& to, int value) { to.push_back(static_cast<uint32_t>(value)); }
inline void append(Units& to, unsigned value) { to.push_back(value); }

// Ints and the units of the above, one behind the other.
template <class... Parts> Units wire(const Parts&... parts)
{
    Units units;
    (append(units, parts), ...);
    return units;
}

// `count` times the same text.
inline std::string repeated(const std::string& text, size_t count)
{
    std::string all;
    for (size_t i = 0; i < count; i++)
        all += text;
    return all;
}

// A unit as a number, and as the character that it may be.
inline std::string described(uint32_t unit)
{
    std::string text = std::to_string(static_cast<int32_t>(unit));
    if (unit >= ' ' && unit <= '~')
        text += std::string(" ('") + static_cast<char>(unit) + "')";
    return text;
}

// For EXPECT_PRED_FORMAT2: names the first unit that differs.
inline testing::AssertionResult same_units(const char* got_text, const char*, const Units& got, const Units& want)
{
    for (size_t i = 0; i < got.size() && i < want.size(); i++)
        if (got[i] != want[i])
            return testing::AssertionFailure() << got_text << ": unit " << i << ": expected " << described(want[i])
                                               << ", found " << described(got[i]);
    if (got.size() != want.size())
        return testing::AssertionFailure()
               << got_text << ": expected " << want.size() << " units, found " << got.size();
    return testing::AssertionSuccess();
}

// The API's row among all services'; the test ends when there is none.
inline const Api& api_named(const std::string& name)
{
    for (const Service* service : all_services)
        for (const Api& api : *service)
            if (name == api.name)
                return api;
    ADD_FAILURE() << "no API is named " << name;
    abort();
}

// A record as it lies in memory, of the units that travel, and back. A test that
// names no member compiles whatever becomes of the description.
inline ExactMemory record_of_units(const Record& record, const Units& units)
{
    const Bytes bytes = ::units(units);
    const ExactMemory body = exact_stream(bytes, bytes.size());
    MemoryStream from(XDR_DECODE, body.data(), body.size());
    ExactMemory object(record.size);
    EXPECT_TRUE(record.xdr(from.get(), object.data())) << record.name;
    EXPECT_EQ(from.position(), body.size()) << record.name;
    return object;
}

inline Units units_of_record(const Record& record, const void* object)
{
    Bytes bytes(record.units * BYTES_PER_XDR_UNIT);
    MemoryStream to(XDR_ENCODE, bytes.data(), bytes.size());
    EXPECT_TRUE(record.xdr(to.get(), const_cast<void*>(object))) << record.name;
    return units_of(bytes);
}

// The text that the API's formatter makes of a reply record.
inline std::string format(const Api& api, const void* reply)
{
    const ExactMemory copy(reply, api.output() ? api.output()->record->size : sizeof(int));
    return api.formatter->ret2str(copy.data());
}

// What the API sends for an argument.
inline Units request_of(const char* name, const std::string& argument)
{
    const Api& api = api_named(name);
    ScriptedClient daemon;
    daemon.status = RPC_TIMEDOUT;
    EXPECT_EQ(api.func(api.parser->str2arg(exact_text(argument).data()), daemon.get()), nullptr);
    EXPECT_EQ(daemon.calls, 1);
    EXPECT_EQ(daemon.procedure, api.procedure);
    return units_of(daemon.request);
}

// The record that the API makes of a reply; null fails the test.
inline void* record_of(const Api& api, const Units& reply)
{
    ScriptedClient daemon;
    daemon.reply = units(reply);
    void* record = api.func(api.parser->str2arg(exact_text("").data()), daemon.get());
    if (!record)
        ADD_FAILURE() << api.name << ": the reply of " << reply.size() << " units does not decode";
    return record;
}

// What the API makes of a reply.
inline std::string text_of(const char* name, const Units& reply)
{
    const void* record = record_of(api_named(name), reply);
    return record ? format(api_named(name), record) : "";
}

// The lines of the API's parser alone, and of its formatter alone.
inline std::string parser_trace(const char* name, const std::string& argument)
{
    const ExactMemory copy = exact_text(argument);
    return traced([&] { api_named(name).parser->str2arg(copy.data()); });
}

inline std::string formatter_trace(const char* name, const Units& reply)
{
    const void* record = record_of(api_named(name), reply);
    return record ? traced([&] { format(api_named(name), record); }) : "";
}

// Fills the registry with the service's rows, once a process: a replaced node is
// never freed, which would be a leak to a sanitizer.
inline void register_once(const Service& service)
{
    for (const ListLinks* at = apinode_head.next; at != &apinode_head; at = at->next)
        if (static_cast<const ApiNode*>(at)->clntinit == service.clnt_init)
            return;
    EXPECT_EQ(service.init(), 1) << service.name;
}

// A service by its folder's name.
inline const Service& service_named(const std::string& name)
{
    for (const Service* service : all_services)
        if (name == service->name)
            return *service;
    ADD_FAILURE() << "no service is named " << name;
    abort();
}
} // namespace support

// The units that the API sends for the argument.
#define EXPECT_REQUEST(name, argument, ...)                                                                            \
    EXPECT_PRED_FORMAT2(support::same_units, support::request_of(name, argument), support::wire(__VA_ARGS__))

// The text that the API makes of a reply of these units.
#define EXPECT_REPLY(name, text, ...) EXPECT_EQ(support::text_of(name, support::wire(__VA_ARGS__)), text)

// A text and the units that it is sent as, which as a reply give it back.
#define EXPECT_BOTH_WAYS(name, text, ...)                                                                              \
    do {                                                                                                               \
        EXPECT_REQUEST(name, text, __VA_ARGS__);                                                                       \
        EXPECT_REPLY(name, text, __VA_ARGS__);                                                                         \
    } while (0)

// Every API's way from an argument to a request and from a reply to a text,
// against the vectors of this folder; and the tables' order and addresses.
#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <map>
#include <set>

#include "tests/golden/golden_file.h"
#include "tests/unit/support.h"

namespace
{
// Numbers beyond an int are read as a long and cut: the vectors show what
// comes of it where a long is wide. Elsewhere the same int is asked for.
std::string as_this_host_reads(std::string text)
{
    if (sizeof(long) > 4)
        return text;
    const auto replace = [&](const std::string& from, const std::string& to) {
        for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
            if (at == 0 || text[at - 1] != '-')
                text.replace(at, from.size(), to);
        }
    };
    replace("4294967295", "-1");
    replace("2147483648", "-2147483648");
    return text;
}

// A character travels as the host's char widens; the vectors' is signed.
Bytes as_this_host_sends(std::vector<uint32_t> units, const Record* record)
{
    size_t unit = 0;
    if (record)
        for (const Field& field : *record)
            for (unsigned i = 0; i < field.count * units_of(field.kind); i++, unit++)
                if (field.kind == Kind::Char && unit < units.size())
                    units[unit] = static_cast<uint32_t>(static_cast<int>(static_cast<char>(units[unit])));
    return ::units(units);
}

struct Row {
    const Service* service;
    const Api* api;
};

std::vector<Row> registered_rows()
{
    std::vector<Row> rows;
    for_each_api([&](const Service& service, const Api& api) {
        if (api.registered())
            rows.push_back({&service, &api});
    });
    return rows;
}

struct Outcome {
    bool replied;
    std::string text;
    std::string parser_lines, formatter_lines;
};

struct every_api : testing::TestWithParam<Row> {
    const Api& api = *GetParam().api;
    ScriptedClient client;

    // The way of a call, as the dispatcher goes it.
    Outcome run(const golden::Vector& vector)
    {
        Outcome outcome = {};
        std::string argument = as_this_host_reads(vector.argument);
        void* request = nullptr;
        outcome.parser_lines = traced([&] { request = api.parser->str2arg(argument.data()); });
        client.reply = ::units(vector.reply);
        void* reply = api.func(request, client.get());
        outcome.replied = reply != nullptr;
        if (reply)
            outcome.formatter_lines = traced([&] { outcome.text = api.formatter->ret2str(reply); });
        return outcome;
    }

    template <class Check> void for_each_vector(Check&& check)
    {
        int count = 0;
        for (const golden::Vector& vector : golden::vectors(GetParam().service->program))
            if (vector.api == api.name) {
                SCOPED_TRACE(vector.place);
                check(vector, run(vector));
                count++;
            }
        EXPECT_GT(count, 0) << "expected vectors of this API, found none";
    }
};

std::vector<std::string> parts_of(const std::string& text)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, '&');)
        parts.push_back(part);
    return parts;
}

// The names of a record's members; C++ keeps some words for itself.
std::vector<std::string> members_of(const Record& record)
{
    std::vector<std::string> members;
    std::istringstream stream(record.members);
    for (std::string member; std::getline(stream >> std::ws, member, ',');)
        members.push_back(member.back() == '_' ? member.substr(0, member.size() - 1) : member);
    return members;
}

std::string shown(const std::string& name, Kind kind, unsigned count)
{
    const char* const kinds[] = {"char", "int", "u_int", "double", "int64", "int64"};
    const Kind order[] = {Kind::Char, Kind::Int, Kind::UInt, Kind::Double, Kind::Int64, Kind::UInt64};
    const auto place = std::find(std::begin(order), std::end(order), kind) - std::begin(order);
    const bool is_array = kind == Kind::Char || count > 1;
    return name + ":" + kinds[place] + (is_array ? "[" + std::to_string(count) + "]" : "");
}

// As records.txt shows them: those of a block one by one.
std::vector<std::string> fields_of(const Record& record)
{
    std::vector<std::string> fields;
    const std::vector<std::string> members = members_of(record);
    for (unsigned i = 0; i < record.count; i++) {
        const Field& field = record.fields[i];
        if (record.block && units_of(field.kind) == 2 && field.count > 1)
            for (const std::string& member : members_of(*record.block))
                fields.push_back(shown(member, field.kind, 1));
        else
            fields.push_back(shown(members.at(i), field.kind, field.count));
    }
    return fields;
}
} // namespace

INSTANTIATE_TEST_SUITE_P(golden, every_api, testing::ValuesIn(registered_rows()), [](const auto& info) {
    return std::to_string(info.param.service->program) + "_" + info.param.api->name;
});

TEST_P(every_api, sends_its_request)
{
    for_each_vector([&](const golden::Vector& vector, const Outcome&) {
        EXPECT_EQ(client.request, as_this_host_sends(vector.request, api.request));
    });
}

TEST_P(every_api, makes_its_text_of_a_reply)
{
    for_each_vector([&](const golden::Vector& vector, const Outcome& outcome) {
        ASSERT_TRUE(outcome.replied);
        if (vector.text) {
            EXPECT_EQ(outcome.text, *vector.text);
            return;
        }
        // The int, or its bytes as a text, at the head of a record of zeroes.
        const int status = static_cast<int>(vector.reply.at(0));
        char bytes[sizeof status + 1] = "";
        memcpy(bytes, &status, sizeof status);
        const bool is_text = (*api.output())[0].kind == Kind::Char;
        const std::string first = is_text ? bytes : std::to_string(status);
        ASSERT_EQ(outcome.text.substr(0, first.size() + 1), first + "&");
        for (const std::string& part : parts_of(outcome.text.substr(first.size() + 1)))
            EXPECT_TRUE(part.empty() || part == "0" || part == "00-00-00-00-00-00") << part;
    });
}

TEST_P(every_api, prints_its_trace_lines)
{
    for_each_vector([&](const golden::Vector& vector, const Outcome& outcome) {
        std::string expected;
        for (const std::string& line : vector.traces)
            expected += (line.compare(0, 9, "[arg2str_") == 0 ? line : as_this_host_reads(line)) + "\r\n";
        EXPECT_EQ(outcome.parser_lines + (vector.text ? outcome.formatter_lines : ""), expected);
    });
}

TEST(golden, apis_are_registered_in_order_with_their_procedures_and_records)
{
    const auto entries = golden::list("apis.txt");
    const auto rows = registered_rows();
    ASSERT_EQ(rows.size(), entries.size());
    for (size_t i = 0; i < rows.size(); i++) {
        const auto& [service, api] = rows[i];
        const std::vector<std::string> row = {
            std::to_string(service->program), api->name, std::to_string(api->procedure),
            api->request ? api->request->name : "void", api->reply ? api->reply->name : "int"};
        EXPECT_EQ(row, std::vector<std::string>(entries[i].begin(), entries[i].begin() + 5));
    }
}

TEST(golden, each_converter_has_one_address_and_each_address_one_converter)
{
    const auto entries = golden::list("apis.txt");
    const auto rows = registered_rows();
    ASSERT_EQ(rows.size(), entries.size());
    std::map<std::string, const void*> addresses;
    std::set<const void*> distinct;
    for (size_t i = 0; i < rows.size(); i++) {
        const auto expect_one = [&](const std::string& name, const void* address) {
            EXPECT_EQ(addresses.emplace(name, address).first->second, address) << name;
            distinct.insert(address);
        };
        expect_one(entries[i][5], reinterpret_cast<const void*>(rows[i].api->parser->str2arg));
        expect_one(entries[i][6], reinterpret_cast<const void*>(rows[i].api->formatter->ret2str));
    }
    EXPECT_EQ(distinct.size(), addresses.size());
}

TEST(golden, records_have_their_units)
{
    std::map<std::string, std::string> expected, found;
    for (const auto& entry : golden::list("records.txt"))
        expected[entry[0]] = entry[1];
    std::set<const Record*> blocks;
    for (const Record* record : all_records())
        blocks.insert(record->block);
    for (const Record* record : all_records())
        if (blocks.count(record) == 0)
            found[record->name] = std::to_string(record->units);
    EXPECT_EQ(found, expected);
}

// Of a record's fields, because nothing on the wire tells two ints from one another.
TEST(golden, records_have_their_fields_in_order)
{
    std::map<std::string, std::vector<std::string>> expected;
    for (const auto& entry : golden::list("records.txt"))
        expected[entry[0]].assign(entry.begin() + 2, entry.end());
    std::set<const Record*> blocks;
    for (const Record* record : all_records())
        blocks.insert(record->block);
    for (const Record* record : all_records())
        if (blocks.count(record) == 0) {
            EXPECT_EQ(fields_of(*record), expected[record->name]) << record->name;
        }
}

TEST(golden, vectors_name_registered_apis_only)
{
    std::set<std::string> names;
    for (const auto& row : registered_rows())
        names.insert(row.api->name);
    for (const Service* service : all_services) {
        const auto& vectors = golden::vectors(service->program);
        EXPECT_FALSE(vectors.empty()) << service->program;
        for (const golden::Vector& vector : vectors)
            EXPECT_EQ(names.count(vector.api), 1U) << vector.place;
    }
}

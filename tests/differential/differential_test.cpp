// The library's records against what rpcgen makes of protocol/*.x: for random
// values of every type, both write the same bytes, each reads the other's, and
// both refuse bytes that end early. rpcgen's code stands in a shared object a
// service, because its functions have the names of the library's own.
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "common/schema.h"
#include "tests/differential/layout.h"

namespace
{
constexpr int rounds = 50;
constexpr unsigned unit_size = BYTES_PER_XDR_UNIT;

// A service's shared object of rpcgen's code.
const plain_service& plain_service_of(const Service& service)
{
    const std::string path = std::string(DIFFERENTIAL_FOLDER "/plain_") + service.name + ".so";
    void* object = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL); // kept to the end of the test
    if (!object) {
        ADD_FAILURE() << "expected a shared object, found: " << dlerror();
        abort();
    }
    return *static_cast<const plain_service*>(dlsym(object, "plain_code"));
}

std::vector<std::string> member_names(const Record& record)
{
    std::vector<std::string> names;
    for (unsigned i = 0; i < record.count; i++)
        names.emplace_back(member_name(record, i));
    return names;
}

using Bytes = std::vector<char>;

// Both hold a member's values in the same order. A 64-bit value is a pair of
// ints in rpcgen's struct, the low word first.
Bytes to_plain(const Field& field, const char* ours)
{
    Bytes plain(ours, ours + size_t{field.count} * size_of(field.kind));
    if (field.kind != Kind::Int64 && field.kind != Kind::UInt64)
        return plain;
    for (unsigned i = 0; i < field.count; i++) {
        uint64_t value;
        memcpy(&value, ours + sizeof value * i, sizeof value);
        const uint32_t words[2] = {static_cast<uint32_t>(value), static_cast<uint32_t>(value >> 32)};
        memcpy(plain.data() + sizeof value * i, words, sizeof words);
    }
    return plain;
}

class Pair
{
  public:
    Pair(const Record& record, const plain_record& plain) : record(record), plain(plain) {}

    Bytes random_record(std::mt19937& random) const
    {
        Bytes object(record.size);
        for (const Field& field : record)
            for (unsigned i = 0; i < field.count; i++)
                put_value(field, &object[field.offset + size_t{i} * size_of(field.kind)], random);
        return object;
    }

    // The same values in rpcgen's struct.
    Bytes to_plain_record(const Bytes& object) const
    {
        Bytes other(plain.size);
        for (size_t i = 0; i < record.count; i++) {
            const Bytes values = to_plain(record.fields[i], &object[record.fields[i].offset]);
            memcpy(&other[plain.members[i].offset], values.data(), values.size());
        }
        return other;
    }

    bool ours(xdr_op operation, Bytes& object, Bytes& bytes) const
    {
        XDR stream;
        xdrmem_create(&stream, bytes.data(), static_cast<u_int>(bytes.size()), operation);
        const bool done = xdr_record(&stream, record, object.data());
        if (done)
            bytes.resize(xdr_getpos(&stream));
        return done;
    }

    bool rpcgens(xdr_op operation, Bytes& object, Bytes& bytes) const
    {
        XDR stream;
        xdrmem_create(&stream, bytes.data(), static_cast<u_int>(bytes.size()), operation);
        const bool done = plain.code(&stream, object.data(), 0U);
        if (done)
            bytes.resize(xdr_getpos(&stream));
        return done;
    }

    const Record& record;
    const plain_record& plain;

  private:
    static void put_value(const Field& field, char* to, std::mt19937& random)
    {
        const uint32_t words[2] = {word(random), word(random)};
        if (field.kind == Kind::Double) { // any bits but a NaN's, which a copy may change
            const double value = static_cast<int32_t>(words[0]) / 256.0 * (words[1] % 1000);
            memcpy(to, &value, sizeof value);
        } else {
            memcpy(to, words, size_of(field.kind));
        }
    }
    static uint32_t word(std::mt19937& random)
    {
        constexpr uint32_t edges[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0x80, 0xFF};
        const auto any = static_cast<uint32_t>(random());
        return random() % 4 == 0 ? edges[any % std::size(edges)] : any;
    }
};

std::vector<const Record*> records_of(const Service& service)
{
    std::set<const Record*> seen;
    std::vector<const Record*> records;
    const auto add = [&](const Record* record) {
        if (record && seen.insert(record).second)
            records.push_back(record);
    };
    for (const Api& api : service)
        for (const Record* record : {api.request, api.reply}) {
            add(record ? record->block : nullptr);
            add(record);
        }
    return records;
}

std::vector<Pair> pairs_of(const Service& service)
{
    const plain_service& plain = plain_service_of(service);
    std::vector<Pair> pairs;
    for (const Record* record : records_of(service)) {
        const plain_record* found = nullptr;
        for (size_t i = 0; i < plain.record_count; i++)
            if (std::string(plain.records[i].name) == record->name)
                found = &plain.records[i];
        EXPECT_TRUE(found) << "expected " << record->name << " in " << service.name << ".x, found none";
        if (found)
            pairs.emplace_back(*record, *found);
    }
    return pairs;
}

class differential : public testing::TestWithParam<const Service*>
{
  protected:
    std::vector<Pair> pairs = pairs_of(*GetParam());
    std::mt19937 random{GetParam()->program};
};

TEST_P(differential, program_and_procedures_have_the_same_numbers)
{
    const Service& service = *GetParam();
    const plain_service& plain = plain_service_of(service);
    EXPECT_EQ(plain.program, service.program);
    EXPECT_EQ(plain.version, 1U);
    ASSERT_EQ(plain.procedure_count, service.count);
    for (size_t i = 0; i < service.count; i++) {
        EXPECT_STREQ(plain.procedures[i].stub, service.apis[i].name);
        EXPECT_EQ(plain.procedures[i].number, service.apis[i].procedure) << service.apis[i].name;
        EXPECT_NE(plain.procedures[i].function, reinterpret_cast<void*>(service.apis[i].func))
            << "expected rpcgen's own stub";
    }
}

TEST_P(differential, types_have_the_same_members)
{
    ASSERT_FALSE(pairs.empty());
    EXPECT_EQ(pairs.size(), plain_service_of(*GetParam()).record_count);
    for (const Pair& pair : pairs) {
        const std::vector<std::string> names = member_names(pair.record);
        ASSERT_EQ(names.size(), pair.plain.count) << pair.record.name;
        for (size_t i = 0; i < names.size(); i++) {
            EXPECT_EQ(names[i], pair.plain.members[i].name) << pair.record.name;
            const Field& field = pair.record.fields[i];
            EXPECT_EQ(size_t{field.count} * size_of(field.kind), pair.plain.members[i].size)
                << pair.record.name << '.' << names[i];
        }
    }
}

TEST_P(differential, both_write_the_same_bytes_and_read_the_others)
{
    for (const Pair& pair : pairs)
        for (int round = 0; round < rounds; round++) {
            SCOPED_TRACE(std::string(pair.record.name) + ", round " + std::to_string(round));
            Bytes object = pair.random_record(random), other = pair.to_plain_record(object);
            Bytes bytes(UDPMSGSIZE), other_bytes(UDPMSGSIZE);
            ASSERT_TRUE(pair.ours(XDR_ENCODE, object, bytes));
            ASSERT_TRUE(pair.rpcgens(XDR_ENCODE, other, other_bytes));
            ASSERT_EQ(bytes, other_bytes);
            ASSERT_EQ(bytes.size(), size_t{pair.record.units} * unit_size);

            Bytes read(object.size()), other_read(other.size());
            ASSERT_TRUE(pair.ours(XDR_DECODE, read, other_bytes));
            ASSERT_TRUE(pair.rpcgens(XDR_DECODE, other_read, bytes));
            ASSERT_EQ(read, object);
            ASSERT_EQ(other_read, other);
        }
}

// Bytes that no encoder made: a character is the low byte of whatever its unit
// holds.
TEST_P(differential, both_read_the_same_from_any_bytes)
{
    for (const Pair& pair : pairs)
        for (int round = 0; round < rounds; round++) {
            SCOPED_TRACE(std::string(pair.record.name) + ", round " + std::to_string(round));
            Bytes bytes(size_t{pair.record.units} * unit_size);
            for (char& byte : bytes)
                byte = static_cast<char>(random());
            Bytes object(pair.record.size), other(pair.plain.size);
            ASSERT_TRUE(pair.ours(XDR_DECODE, object, bytes));
            ASSERT_TRUE(pair.rpcgens(XDR_DECODE, other, bytes));
            ASSERT_EQ(pair.to_plain_record(object), other);
        }
}

TEST_P(differential, both_refuse_bytes_that_end_early)
{
    for (const Pair& pair : pairs)
        for (unsigned units = 0; units < pair.record.units; units++) {
            Bytes object = pair.random_record(random), other = pair.to_plain_record(object);
            Bytes room(size_t{units} * unit_size + units % unit_size);
            ASSERT_FALSE(pair.ours(XDR_ENCODE, object, room)) << pair.record.name << " in " << room.size();
            ASSERT_FALSE(pair.rpcgens(XDR_ENCODE, other, room)) << pair.record.name << " in " << room.size();
            ASSERT_FALSE(pair.ours(XDR_DECODE, object, room)) << pair.record.name << " from " << room.size();
            ASSERT_FALSE(pair.rpcgens(XDR_DECODE, other, room)) << pair.record.name << " from " << room.size();
        }
}

INSTANTIATE_TEST_SUITE_P(Services, differential, testing::ValuesIn(all_services.begin(), all_services.end()),
                         [](const auto& info) { return std::string(info.param->name); });
} // namespace

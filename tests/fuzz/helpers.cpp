// The text helpers against their plain versions, any bytes and sizes.
//
// Input: helper (1), then what it takes.
#include <algorithm>
#include <iterator>

#include "common/text.h"
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/naive.h"

namespace
{
std::string c_text(const std::string& bytes) { return bytes.c_str(); }

void check_split(const std::string& given, size_t max, const std::vector<std::string>& expected, int count,
                 const std::vector<char*>& field)
{
    EXPECT(count == static_cast<int>(expected.size()), "as many parts", "%d, not %zu", count, expected.size());
    for (size_t i = 0; i < max; i++) {
        const std::string part = i < expected.size() ? expected[i] : "";
        EXPECT(part == field[i], "the same parts", "\"%s\" at %zu of \"%s\"", field[i], i, given.c_str());
    }
}

void split(Input& input)
{
    const size_t max = 1 + input.byte() % 90;
    const char delimiter = static_cast<char>(input.byte() | 1);
    const std::string given = c_text(input.rest());
    const auto text = exact(given);
    std::vector<char*> field(max);
    const int count = strsplit(text.get(), delimiter, field.data(), static_cast<int>(max));
    check_split(given, max, naive::split(given, delimiter, max), count, field);
}

void split_runs(Input& input)
{
    const size_t max = 1 + input.byte() % 90;
    const std::string delimiters = c_text(input.bytes(1 + input.byte() % 3));
    const std::string given = c_text(input.rest());
    const auto text = exact(given);
    std::vector<char*> field(max);
    const int count = strsplit2(text.get(), delimiters.c_str(), field.data(), static_cast<int>(max));
    check_split(given, max, naive::split_runs(given, delimiters.c_str(), max), count, field);
}

void mac_text(Input& input)
{
    unsigned char mac[6];
    for (unsigned char& byte : mac)
        byte = static_cast<unsigned char>(input.byte());
    char text[18];
    const char* result = mac2str(mac, input.byte() & 1 ? text : nullptr);
    EXPECT(naive::mac_text(mac) == result, "the address in capitals", "\"%s\"", result);
}

void read_mac(Input& input)
{
    const bool own = input.byte() & 1;
    const auto text = exact(input.rest());
    unsigned char expected[6], mac[6];
    naive::read_mac(text.get(), expected);
    const void* result = str2mac(text.get(), own ? nullptr : mac);
    EXPECT(memcmp(result, expected, 6) == 0, "the address of the scan", "another one from \"%s\"", text.get());
}

void hex_text(Input& input)
{
    const int capacity = 1 + static_cast<int>(input.byte());
    const std::string bytes = input.rest();
    const auto from = exact(bytes.data(), bytes.size());
    const std::unique_ptr<char[]> text(new char[static_cast<size_t>(capacity)]());
    int expected_advance;
    const std::string expected = naive::hex_text(reinterpret_cast<const unsigned char*>(from.get()),
                                                 static_cast<int>(bytes.size()), capacity, &expected_advance);
    const int advanced = hex2str(from.get(), static_cast<int>(bytes.size()), text.get(), capacity);
    EXPECT(expected == text.get() && advanced == expected_advance, expected.c_str(), "\"%s\", advanced by %d",
           text.get(), advanced);
}

void read_hex(Input& input)
{
    const int max = static_cast<int>(input.byte());
    const std::string given = c_text(input.rest());
    const auto text = exact(given);
    const int length = static_cast<int>(given.size());
    const auto expected = naive::read_hex(given, length, max);
    const std::unique_ptr<unsigned char[]> bytes(new unsigned char[static_cast<size_t>(max)]);
    const int count = str2hex(text.get(), length, bytes.get(), max);
    EXPECT(count == static_cast<int>(expected.size()), "as many bytes", "%d from \"%s\"", count, given.c_str());
    EXPECT(std::equal(expected.begin(), expected.end(), bytes.get()), "the bytes of the scan", "others from \"%s\"",
           given.c_str());
}

void append(Input& input)
{
    const size_t capacity = 1 + input.byte();
    const std::string before = c_text(input.bytes(input.byte())).substr(0, capacity - 1);
    const int number = input.number();
    const std::string more = c_text(input.rest());
    const std::unique_ptr<char[]> text(new char[capacity]);
    memcpy(text.get(), before.c_str(), before.size() + 1);
    const int result = strappend(text.get(), static_cast<int>(capacity), "&%d%s", number, more.c_str());
    const std::string whole = before + "&" + std::to_string(number) + more;
    const bool full = before.size() + 1 >= capacity;
    const std::string expected = full ? before : whole.substr(0, capacity - 1);
    EXPECT(expected == text.get(), expected.c_str(), "\"%s\"", text.get());
    EXPECT(result == (full ? 0 : static_cast<int>(expected.size())), "the new length, or 0", "%d", result);
}

void int_text(Input& input)
{
    int value = input.number();
    EXPECT(std::to_string(value) == int2str(&value), "the number in decimal", "\"%s\"", int2str(&value));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    void (*const helper[])(Input&) = {split, split_runs, mac_text, read_mac, hex_text, read_hex, append, int_text};
    Input input(data, size);
    helper[input.byte() % std::size(helper)](input);
    return 0;
}

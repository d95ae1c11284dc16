// The text helpers against their plain versions, any bytes and sizes.
//
// Input: helper (1), then what it takes.
#include <algorithm>
#include <iterator>

#include "common/text.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/reference.h"

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
    const ExactMemory text = exact_text(given);
    std::vector<char*> field(max);
    const int count = strsplit(text.data(), delimiter, field.data(), static_cast<int>(max));
    check_split(given, max, reference::strsplit(given, delimiter, max), count, field);
}

void split_runs(Input& input)
{
    const size_t max = 1 + input.byte() % 90;
    const std::string delimiters = c_text(input.bytes(1 + input.byte() % 3));
    const std::string given = c_text(input.rest());
    const ExactMemory text = exact_text(given);
    std::vector<char*> field(max);
    const int count = strsplit2(text.data(), delimiters.c_str(), field.data(), static_cast<int>(max));
    check_split(given, max, reference::strsplit2(given, delimiters.c_str(), max), count, field);
}

void mac_text(Input& input)
{
    unsigned char mac[6];
    for (unsigned char& byte : mac)
        byte = static_cast<unsigned char>(input.byte());
    char text[18];
    const char* result = mac2str(mac, input.byte() & 1 ? text : nullptr);
    EXPECT(reference::mac2str(mac) == result, "the address in capitals", "\"%s\"", result);
}

void read_mac(Input& input)
{
    const bool own = input.byte() & 1;
    const ExactMemory text = exact_text(input.rest());
    const auto expected = reference::str2mac(text.data());
    unsigned char mac[6];
    const void* result = str2mac(text.data(), own ? nullptr : mac);
    EXPECT(memcmp(result, expected.data(), 6) == 0, "the address of the scan", "another one from \"%s\"", text.data());
}

void hex_text(Input& input)
{
    const int capacity = 1 + static_cast<int>(input.byte());
    const std::string bytes = input.rest();
    const ExactMemory from(bytes.data(), bytes.size()), text(static_cast<size_t>(capacity));
    const int count = static_cast<int>(bytes.size());
    const auto expected = reference::hex2str(reinterpret_cast<const unsigned char*>(from.data()), count, capacity);
    const int advanced = hex2str(from.data(), count, text.data(), capacity);
    EXPECT(expected.text == text.data() && advanced == expected.result, expected.text.c_str(), "\"%s\", advanced by %d",
           text.data(), advanced);
}

void read_hex(Input& input)
{
    const int max = static_cast<int>(input.byte());
    const std::string given = c_text(input.rest());
    const ExactMemory text = exact_text(given);
    const int length = static_cast<int>(given.size());
    const auto expected = reference::str2hex(given, length, max);
    const ExactMemory bytes(static_cast<size_t>(max));
    const int count = str2hex(text.data(), length, reinterpret_cast<unsigned char*>(bytes.data()), max);
    EXPECT(count == static_cast<int>(expected.size()), "as many bytes", "%d from \"%s\"", count, given.c_str());
    EXPECT(std::equal(expected.begin(), expected.end(), reinterpret_cast<unsigned char*>(bytes.data())),
           "the bytes of the scan", "others from \"%s\"", given.c_str());
}

void append(Input& input)
{
    const size_t capacity = 1 + input.byte();
    const std::string before = c_text(input.bytes(input.byte())).substr(0, capacity - 1);
    const int number = input.number();
    const std::string more = c_text(input.rest());
    const ExactMemory text(capacity);
    memcpy(text.data(), before.c_str(), before.size() + 1);
    const int result = strappend(text.data(), static_cast<int>(capacity), "&%d%s", number, more.c_str());
    const auto expected = reference::strappend(before, static_cast<int>(capacity), "&" + std::to_string(number) + more);
    EXPECT(expected.text == text.data(), expected.text.c_str(), "\"%s\"", text.data());
    EXPECT(result == expected.result, "the new length, or 0", "%d", result);
}

void int_text(Input& input)
{
    int value = input.number();
    EXPECT(reference::int2str(value) == int2str(&value), "the number in decimal", "\"%s\"", int2str(&value));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    void (*const helper[])(Input&) = {split, split_runs, mac_text, read_mac, hex_text, read_hex, append, int_text};
    Input input(data, size);
    helper[input.byte() % std::size(helper)](input);
    return 0;
}

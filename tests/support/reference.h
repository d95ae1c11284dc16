// The text contract once more, written for clearness alone and in the plainest way that the
// C library offers: what tests and fuzz targets compare the library's helpers and walkers
// with. Shares no code with them; of the library it uses the description of records and
// text forms only. A function here has the name of the library's, and gives what that
// writes.
#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "common/text_form.h"

namespace reference
{
// A value that the contract writes with one printf conversion.
template <class T> std::string print(const char* format, T value)
{
    char text[400];
    snprintf(text, sizeof text, format, value);
    return text;
}

inline std::string int2str(int value) { return print("%d", value); }

// At most `max` parts; missing ones are not added.
std::vector<std::string> strsplit(const std::string& text, char delimiter, size_t max);
std::vector<std::string> strsplit2(const std::string& text, const char* delimiters, size_t max);

std::string mac2str(const unsigned char* mac);
std::array<unsigned char, 6> str2mac(const std::string& text);

// What a helper writes into a buffer of `capacity` characters, and its result. An empty text
// with the result 0 leaves the buffer alone.
struct Written {
    std::string text;
    int result;
};
Written hex2str(const unsigned char* bytes, int count, int capacity);
Written strappend(const std::string& before, int capacity, const std::string& more);

std::vector<unsigned char> str2hex(const std::string& text, int length, int max);

// What parse_record makes of `text`: the record's bytes.
std::string parse(const TextForm& form, const char* text);
// What format_record makes of the record at `record`.
std::string format(const TextForm& form, const char* record);
} // namespace reference

// The text contract once more, written for clearness alone: what the library's
// helpers and walkers are compared with. Shares no code with them; of the
// library it uses the description of records and text forms only.
#pragma once

#include <string>
#include <vector>

#include "common/text_form.h"

namespace naive
{
// A value that the contract writes with one printf conversion.
template <class T> std::string print(const char* format, T value)
{
    char text[400];
    snprintf(text, sizeof text, format, value);
    return text;
}

// At most `max` parts; missing ones are not added.
std::vector<std::string> split(const std::string& text, char delimiter, size_t max);
std::vector<std::string> split_runs(const std::string& text, const char* delimiters, size_t max);

std::string mac_text(const unsigned char* mac);
void read_mac(const char* text, unsigned char* mac);

// hex2str's text, and through `advanced` its result.
std::string hex_text(const unsigned char* bytes, int count, int capacity, int* advanced);
std::vector<unsigned char> read_hex(const std::string& text, int length, int max);

// What parse_record makes of `text`: the record's bytes.
std::string parse(const TextForm& form, const char* text);
// What format_record makes of the record at `record`.
std::string format(const TextForm& form, const char* record);
} // namespace naive

// The text helpers once more, in the plainest way that the C library offers and
// without a look at the library's own: what the randomized tests compare with.
#pragma once

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace reference
{
inline std::string int2str(int value)
{
    char text[40];
    snprintf(text, sizeof text, "%d", value);
    return text;
}

inline std::string mac2str(const unsigned char* mac)
{
    char text[20];
    snprintf(text, sizeof text, "%02X-%02X-%02X-%02X-%02X-%02X", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    return text;
}

inline std::array<unsigned char, 6> str2mac(const std::string& text)
{
    unsigned v[6] = {0, 0, 0, 0, 0, 0};
    const char* s = text.c_str();
    if (text.find('.') != text.npos)
        sscanf(s, "%02x%02x.%02x%02x.%02x%02x", v, v + 1, v + 2, v + 3, v + 4, v + 5);
    else if (text.find(':') != text.npos)
        sscanf(s, "%02x:%02x:%02x:%02x:%02x:%02x", v, v + 1, v + 2, v + 3, v + 4, v + 5);
    else if (text.find('-') != text.npos)
        sscanf(s, "%02X-%02X-%02X-%02X-%02X-%02X", v, v + 1, v + 2, v + 3, v + 4, v + 5);
    else if (!text.empty())
        sscanf(s, "%02x%02x%02x%02x%02x%02x", v, v + 1, v + 2, v + 3, v + 4, v + 5);
    std::array<unsigned char, 6> mac;
    for (size_t i = 0; i < 6; i++)
        mac[i] = static_cast<unsigned char>(v[i] & 0xff);
    return mac;
}

struct Split {
    int count;
    std::vector<std::string> slots;
};

// Every cut first, then the first `max` pieces.
inline Split strsplit(std::string text, char delimiter, size_t max)
{
    std::vector<std::string> pieces;
    for (size_t cut; (cut = text.find(delimiter)) != text.npos; text.erase(0, cut + 1))
        pieces.push_back(text.substr(0, cut));
    pieces.push_back(text);
    pieces.resize(pieces.size() < max ? pieces.size() : max);
    const int count = static_cast<int>(pieces.size());
    pieces.resize(max);
    return {count, pieces};
}

inline Split strsplit2(std::string text, const char* delimiters, size_t max)
{
    std::vector<std::string> pieces;
    for (char* piece = strtok(text.data(), delimiters); piece && pieces.size() < max;
         piece = strtok(nullptr, delimiters))
        pieces.push_back(piece);
    const int count = static_cast<int>(pieces.size());
    pieces.resize(max);
    return {count, pieces};
}

// Writes as the library does, into a buffer of the caller's.
inline int hex2str(const unsigned char* bytes, int count, char* text, int capacity)
{
    int written = 0;
    for (int i = 0; i < count && capacity - written > 1; i++) {
        snprintf(text + written, static_cast<size_t>(capacity - written), "%02x", bytes[i]);
        written += 2;
    }
    return written;
}

inline int str2hex(const char* text, int length, unsigned char* bytes, int max)
{
    unsigned scanned = 0;
    int i = 0;
    while (i < length / 2 && i < max) {
        sscanf(text + 2 * i, "%02x", &scanned);
        bytes[i++] = static_cast<unsigned char>(scanned & 0xff);
    }
    return i;
}

// Of one "%s" value.
inline int strappend(char* text, int capacity, const char* value)
{
    const int length = static_cast<int>(strlen(text));
    if (capacity - 1 <= length)
        return 0;
    const std::string whole = std::string(text) + value;
    snprintf(text, static_cast<size_t>(capacity), "%s", whole.c_str());
    return static_cast<int>(whole.size()) < capacity ? static_cast<int>(whole.size()) : capacity - 1;
}
} // namespace reference

// The text helpers, see text.h.
#include "common/text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "common/digits.h"

namespace
{
char empty[] = "";

constexpr int mac_size = 6;
constexpr int ring_size = 4;

int hex_value(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | ('a' ^ 'A'));
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Two hex digits, or -1. Looks at the second character only behind a digit.
int hex_pair(const char* text)
{
    const int high = hex_value(text[0]);
    const int low = high < 0 ? -1 : hex_value(text[1]);
    return low < 0 ? -1 : high << 4 | low;
}

// The whole text as two digits a byte with one separator between all bytes,
// which is how nearly every MAC address is written; the scanner takes twenty
// times as long. False, `mac` unfinished, for any other text.
bool read_common_mac(const char* text, unsigned char* mac)
{
    for (int i = 0; i < mac_size; i++, text += 3) {
        const int value = hex_pair(text);
        if (value < 0)
            return false;
        const char separator = text[2];
        if (i == mac_size - 1 ? separator != '\0' : separator != ':' && separator != '-')
            return false;
        if (i > 0 && i < mac_size - 1 && separator != text[-1])
            return false;
        mac[i] = static_cast<unsigned char>(value);
    }
    return true;
}
} // namespace

char* int2str(void* value)
{
    static char text[40];
    char* const end = text + sizeof text - 1; // stays NUL
    const char* first = write_digits(end, value ? *static_cast<const int*>(value) : -1);
    return static_cast<char*>(memmove(text, first, static_cast<size_t>(end + 1 - first)));
}

char* mac2str(const void* mac, char* text)
{
    static char macstr[ring_size][20];
    static unsigned macstr_idx;
    static const char digits[] = "0123456789ABCDEF";
    if (!text)
        text = macstr[macstr_idx++ & (ring_size - 1)];
    const auto* byte = static_cast<const unsigned char*>(mac);
    for (int i = 0; i < mac_size; i++) {
        text[3 * i] = digits[byte[i] >> 4];
        text[3 * i + 1] = digits[byte[i] & 15];
        text[3 * i + 2] = i < mac_size - 1 ? '-' : '\0';
    }
    return text;
}

void* str2mac(const char* text, void* mac)
{
    static unsigned char strmac[ring_size][mac_size];
    static unsigned strmac_idx;
    unsigned value[mac_size] = {};
    if (!mac)
        mac = strmac[strmac_idx++ & (ring_size - 1)];
    if (read_common_mac(text, static_cast<unsigned char*>(mac)))
        return mac;
    const char* format = strchr(text, '.')   ? "%02x%02x.%02x%02x.%02x%02x"
                         : strchr(text, ':') ? "%02x:%02x:%02x:%02x:%02x:%02x"
                         : strchr(text, '-') ? "%02X-%02X-%02X-%02X-%02X-%02X"
                                             : "%02x%02x%02x%02x%02x%02x";
    sscanf(text, format, &value[0], &value[1], &value[2], &value[3], &value[4], &value[5]);
    for (int i = 0; i < mac_size; i++)
        static_cast<unsigned char*>(mac)[i] = static_cast<unsigned char>(value[i]);
    return mac;
}

int strsplit(char* text, char delimiter, char** field, int max)
{
    for (int i = 0; i < max; i++)
        field[i] = empty;
    field[0] = text;
    int count = 1;
    for (char* at = text; *at; at++)
        if (*at == delimiter) {
            *at = '\0';
            if (count < max)
                field[count++] = at + 1;
        }
    return count;
}

int strsplit2(char* text, const char* delimiters, char** field, int max)
{
    for (int i = 0; i < max; i++)
        field[i] = empty;
    int count = 0;
    char* rest = text;
    while (count < max) {
        char* part = strtok_r(rest, delimiters, &rest);
        if (!part)
            break;
        field[count++] = part;
    }
    return count;
}

int hex2str(const void* bytes, int count, char* text, int capacity)
{
    static const char digits[] = "0123456789abcdef";
    const auto* byte = static_cast<const unsigned char*>(bytes);
    int advanced = 0;
    for (int i = 0; i < count && capacity - advanced > 1; i++, advanced += 2) {
        char* at = text + advanced;
        *at++ = digits[byte[i] >> 4];
        if (capacity - advanced > 2)
            *at++ = digits[byte[i] & 15];
        *at = '\0';
    }
    return advanced;
}

int str2hex(const char* text, int length, void* bytes, int max)
{
    unsigned value = 0; // stays from pair to pair: one that does not scan repeats it
    int i = 0;
    for (; i < length / 2 && i < max; i++) {
        const int pair = hex_pair(text + 2 * i);
        if (pair >= 0)
            value = static_cast<unsigned>(pair);
        else
            sscanf(text + 2 * i, "%02x", &value);
        static_cast<unsigned char*>(bytes)[i] = static_cast<unsigned char>(value);
    }
    return i;
}

int strappend(char* text, int capacity, const char* format, ...)
{
    const int length = static_cast<int>(strlen(text));
    if (capacity - 1 <= length)
        return 0;
    va_list values;
    va_start(values, format);
    const int more = vsnprintf(text + length, static_cast<size_t>(capacity - length), format, values);
    va_end(values);
    return capacity - length > more ? length + more : capacity - 1;
}

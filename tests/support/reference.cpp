// The text contract, see reference.h.
#include "tests/support/reference.h"

#include <cstdlib>
#include <cstring>

namespace reference
{
std::vector<std::string> strsplit(const std::string& text, char delimiter, size_t max)
{
    std::vector<std::string> parts(1);
    for (char c : text) {
        if (c != delimiter)
            parts.back() += c;
        else
            parts.emplace_back();
    }
    if (parts.size() > max)
        parts.resize(max);
    return parts;
}

std::vector<std::string> strsplit2(const std::string& text, const char* delimiters, size_t max)
{
    std::vector<std::string> parts;
    std::string part;
    for (size_t i = 0; i <= text.size() && parts.size() < max; i++) {
        if (i < text.size() && !strchr(delimiters, text[i])) {
            part += text[i];
        } else if (!part.empty()) {
            parts.push_back(part);
            part.clear();
        }
    }
    return parts;
}

std::string mac2str(const unsigned char* mac)
{
    std::string text;
    for (int i = 0; i < 6; i++)
        text += (i > 0 ? "-" : "") + print("%02X", mac[i]);
    return text;
}

std::array<unsigned char, 6> str2mac(const std::string& text)
{
    unsigned v[6] = {0, 0, 0, 0, 0, 0};
    const char* s = text.c_str();
    if (strchr(s, '.'))
        sscanf(s, "%02x%02x.%02x%02x.%02x%02x", v, v + 1, v + 2, v + 3, v + 4, v + 5);
    else if (strchr(s, ':'))
        sscanf(s, "%02x:%02x:%02x:%02x:%02x:%02x", v, v + 1, v + 2, v + 3, v + 4, v + 5);
    else if (strchr(s, '-'))
        sscanf(s, "%02X-%02X-%02X-%02X-%02X-%02X", v, v + 1, v + 2, v + 3, v + 4, v + 5);
    else if (*s)
        sscanf(s, "%02x%02x%02x%02x%02x%02x", v, v + 1, v + 2, v + 3, v + 4, v + 5);
    std::array<unsigned char, 6> mac;
    for (size_t i = 0; i < mac.size(); i++)
        mac[i] = static_cast<unsigned char>(v[i]);
    return mac;
}

Written hex2str(const unsigned char* bytes, int count, int capacity)
{
    Written written = {"", 0};
    for (int i = 0; i < count && capacity - written.result > 1; i++) {
        const std::string digits = print("%02x", bytes[i]);
        written.text += capacity - written.result == 2 ? digits.substr(0, 1) : digits;
        written.result += 2;
    }
    return written;
}

Written strappend(const std::string& before, int capacity, const std::string& more)
{
    if (static_cast<int>(before.size()) >= capacity - 1)
        return {before, 0};
    const std::string text = (before + more).substr(0, static_cast<size_t>(capacity) - 1);
    return {text, static_cast<int>(text.size())};
}

std::vector<unsigned char> str2hex(const std::string& text, int length, int max)
{
    std::vector<unsigned char> bytes;
    unsigned value = 0;
    for (int i = 0; i < length / 2 && i < max; i++) {
        sscanf(text.c_str() + 2 * i, "%02x", &value);
        bytes.push_back(static_cast<unsigned char>(value));
    }
    return bytes;
}

namespace
{
template <class T> T get(const char* at)
{
    T value;
    memcpy(&value, at, sizeof value);
    return value;
}

template <class T> void put(std::string& record, size_t at, T value) { memcpy(&record[at], &value, sizeof value); }

std::string cut(const std::string& text, size_t size) { return text.substr(0, size - 1); }

void read_field(const Position& field, std::string& record, const std::string& text)
{
    switch (field.text) {
    case Text::Mac:
        return put(record, field.offset, str2mac(text));
    case Text::Hex:
    case Text::CountedHex: {
        const auto bytes = str2hex(text, static_cast<int>(text.size()), field.count);
        for (size_t i = 0; i < bytes.size(); i++)
            record[field.offset + i] = static_cast<char>(bytes[i]);
        if (field.text == Text::CountedHex)
            put(record, field.offset - sizeof(int), static_cast<int>(bytes.size()));
        return;
    }
    case Text::List: {
        const auto items = strsplit(cut(text, list_size), ',', 80);
        for (size_t i = 0; i < items.size() && i < field.count; i++) {
            const int value = atoi(items[i].c_str());
            if (field.kind == Kind::Char)
                put(record, field.offset + i, static_cast<char>(value));
            else
                put(record, field.offset + 4 * i, value);
        }
        return;
    }
    case Text::Plain:
    case Text::Unsigned:
    case Text::RawMac:
        break;
    }
    if (field.kind == Kind::Char)
        record.replace(field.offset, cut(text, field.count).size(), cut(text, field.count));
    else if (field.kind == Kind::Double)
        put(record, field.offset, atof(text.c_str()));
    else if (field.kind == Kind::Int || field.kind == Kind::UInt)
        put(record, field.offset, atoi(text.c_str()));
}

std::string list_text(const Position& field, const char* at)
{
    std::string text;
    for (unsigned i = 0; i < field.count; i++)
        text += (i > 0 ? "," : "") + print("%d", field.kind == Kind::Char ? at[i] : get<int>(at + 4 * i));
    return text;
}

std::string field_text(const Position& field, const char* at)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(at);
    const bool is_signed = field.text != Text::Unsigned;
    if (field.text == Text::Mac || field.text == Text::RawMac)
        return mac2str(bytes);
    if (field.text == Text::Hex)
        return hex2str(bytes, field.count, 20).text;
    if (field.text == Text::CountedHex)
        return hex2str(bytes, get<int>(at - sizeof(int)), 100).text;
    if (field.text == Text::List)
        return list_text(field, at);
    switch (field.kind) {
    case Kind::Char:
        return std::string(at, strnlen(at, field.count));
    case Kind::Double:
        return print("%.2f", get<double>(at));
    case Kind::Int:
    case Kind::UInt:
        return is_signed ? print("%d", get<int>(at)) : print("%u", get<unsigned>(at));
    case Kind::Int64:
        return is_signed ? print("%lld", get<long long>(at)) : print("%llu", get<unsigned long long>(at));
    case Kind::UInt64:
        return print("%llu", get<unsigned long long>(at));
    }
    return "";
}
} // namespace

std::string parse(const TextForm& form, const char* text)
{
    std::string record(form.record->size, '\0');
    auto parts = form.delimiters[0] ? strsplit2(text, form.delimiters, form.count) : strsplit(text, '&', form.count);
    parts.resize(form.count);
    size_t part = 0;
    for (const Position field : form) {
        if (field.use == Use::OutputOnly)
            continue;
        if (field.use != Use::Unread)
            read_field(field, record, parts[part]);
        part++;
    }
    return record;
}

std::string format(const TextForm& form, const char* record)
{
    std::string text;
    bool first = true;
    for (const Position field : form) {
        if (field.use == Use::InputOnly)
            continue;
        text += (first ? "" : form.separator) + field_text(field, record + field.offset);
        first = false;
    }
    return cut(text, form.buffer);
}
} // namespace reference

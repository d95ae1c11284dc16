// The walkers of text forms, see text_form.h.
#include "common/text_form.h"

#include <cstdlib>
#include <cstring>

#include "common/digits.h"
#include "common/text.h"
#include "rpc/bytes.h"

namespace
{
constexpr char delimiter = '&';
constexpr unsigned mac_text_size = 18;
constexpr unsigned real_size = 320; // of the longest double with two decimals

// atoi. The digits that nearly every text consists of are read here; signs,
// blanks and numbers that might not fit are the library's.
int read_int(const char* text)
{
    unsigned value = 0;
    for (int i = 0; i < 10; i++) {
        const unsigned digit = static_cast<unsigned char>(text[i]) - unsigned{'0'};
        if (digit > 9)
            return i > 0 ? static_cast<int>(value) : atoi(text);
        value = value * 10 + digit;
    }
    return atoi(text);
}

void read_text(char* to, size_t size, const char* text)
{
    const size_t length = strnlen(text, size - 1);
    memcpy(to, text, length);
    to[length] = '\0';
}

void read_list(const Field& field, char* to, const char* text)
{
    char list[list_size];
    char* item[most_items];
    read_text(list, sizeof list, text);
    const int items = strsplit(list, ',', item, most_items);
    for (int i = 0; i < field.count && i < items; i++) {
        if (field.kind == Kind::Char)
            to[i] = static_cast<char>(read_int(item[i]));
        else
            store(to + sizeof(int) * i, read_int(item[i]));
    }
}

void read_plain(const Field& field, char* to, const char* text)
{
    switch (field.kind) {
    case Kind::Char:
        return read_text(to, field.count, text);
    case Kind::Int:
    case Kind::UInt:
        return store(to, read_int(text));
    case Kind::Double:
        return store(to, atof(text));
    case Kind::Int64:
    case Kind::UInt64: // counters are never read from an argument
        return;
    }
}

void read_position(const Position& field, char* to, const char* text)
{
    switch (field.text) {
    case Text::Plain:
    case Text::Unsigned:
        return read_plain(field, to, text);
    case Text::RawMac:
        return read_text(to, field.count, text);
    case Text::Mac:
        str2mac(text, to);
        return;
    case Text::Hex:
        str2hex(text, static_cast<int>(strlen(text)), to, field.count);
        return;
    case Text::CountedHex:
        return store(to - sizeof(int), str2hex(text, static_cast<int>(strlen(text)), to, field.count));
    case Text::List:
        return read_list(field, to, text);
    }
}

// Appends to a text as far as it fits; what does not fit is dropped.
class Writer
{
  public:
    Writer(char* text, size_t size) : at(text), last(text + size - 1) {}

    void character(char c)
    {
        if (at < last)
            *at++ = c;
    }
    void text(const char* from, size_t length)
    {
        if (length > static_cast<size_t>(last - at))
            length = static_cast<size_t>(last - at);
        memcpy(at, from, length);
        at += length;
    }
    void text(const char* from) { text(from, strlen(from)); }
    void separator(const char* from)
    {
        while (*from)
            character(*from++);
    }

    template <class Integer> void number(Integer value)
    {
        if (value >= Integer{0} && value < Integer{10})
            return character(static_cast<char>('0' + value));
        char digits[20];
        char* const end_of_digits = digits + sizeof digits;
        const char* first = write_digits(end_of_digits, value);
        text(first, static_cast<size_t>(end_of_digits - first));
    }

    void end() { *at = '\0'; }

  private:
    char* at;
    char* last; // for the NUL
};

void write_list(Writer& to, const Field& field, const char* from)
{
    for (unsigned i = 0; i < field.count; i++) {
        if (i > 0)
            to.character(',');
        to.number(field.kind == Kind::Char ? from[i] : load<int>(from + sizeof(int) * i));
    }
}

void write_plain(Writer& to, const Position& field, const char* from)
{
    const bool as_unsigned = field.text == Text::Unsigned;
    switch (field.kind) {
    case Kind::Char:
        return to.text(from, strnlen(from, field.count));
    case Kind::Int:
    case Kind::UInt: // unsigned values print signed too, unless the form says otherwise
        return as_unsigned ? to.number(load<uint32_t>(from)) : to.number(load<int>(from));
    case Kind::Double: {
        char text[real_size];
        snprintf(text, sizeof text, "%.2lf", load<double>(from));
        return to.text(text);
    }
    case Kind::Int64:
        return as_unsigned ? to.number(load<uint64_t>(from)) : to.number(load<int64_t>(from));
    case Kind::UInt64:
        return to.number(load<uint64_t>(from));
    }
}

void write_position(Writer& to, const Position& field, const char* from)
{
    switch (field.text) {
    case Text::Plain:
    case Text::Unsigned:
        return write_plain(to, field, from);
    case Text::Mac:
    case Text::RawMac: {
        char text[mac_text_size];
        return to.text(mac2str(from, text));
    }
    case Text::Hex: {
        char text[hex_size] = "";
        hex2str(from, field.count, text, sizeof text);
        return to.text(text);
    }
    case Text::CountedHex: {
        char text[counted_hex_size] = "";
        hex2str(from, load<int>(from - sizeof(int)), text, sizeof text);
        return to.text(text);
    }
    case Text::List:
        return write_list(to, field, from);
    }
}
} // namespace

void* parse_record(const TextForm& form, void* record, char* text)
{
    char* parts[most_positions];
    memset(record, 0, form.record->size);
    if (form.delimiters[0])
        strsplit2(text, form.delimiters, parts, form.count);
    else
        strsplit(text, delimiter, parts, form.count);
    char** part = parts;
    for (const Position field : form) {
        if (field.use == Use::OutputOnly)
            continue;
        if (field.use != Use::Unread)
            read_position(field, static_cast<char*>(record) + field.offset, *part);
        part++;
    }
    return record;
}

char* format_record(const TextForm& form, const void* record, char* text)
{
    Writer to(text, form.buffer);
    bool first = true;
    for (const Position field : form) {
        if (field.use == Use::InputOnly)
            continue;
        if (!first)
            to.separator(form.separator);
        first = false;
        write_position(to, field, static_cast<const char*>(record) + field.offset);
    }
    to.end();
    return text;
}

void unsplit(char* text, size_t length)
{
    for (size_t i = 0; i < length; i++)
        if (text[i] == '\0')
            text[i] = delimiter;
}

// Records and positions as lists, see names.h.
#include "tools/describe/names.h"

#include <algorithm>

namespace
{
// "a, b, c" as its items.
std::vector<std::string> items_of(const char* list)
{
    std::vector<std::string> items(1);
    for (; *list; list++)
        if (*list == ',')
            items.emplace_back();
        else if (*list != ' ')
            items.back() += *list;
    return items;
}

bool is_block(const Record& record, const Field& field)
{
    return record.block && field.count == record.block->count && field.kind == record.block->fields[0].kind;
}

std::string notes_of(const Record& record, const Field& field, Side side)
{
    if (side == Side::Input && field.use == Use::Unread)
        return "not read";
    switch (field.text) {
    case Text::Plain:
        return field.kind == Kind::UInt ? "from 2147483648 on it is printed negative" : "";
    case Text::Unsigned:
    case Text::Mac:
        break;
    case Text::RawMac:
        return side == Side::Input ? "copied into the bytes as it is" : "";
    case Text::Hex:
        return std::to_string(field.count) + " bytes, two digits each";
    case Text::CountedHex: {
        Field length = field;
        length.offset = static_cast<uint16_t>(field.offset - sizeof(int));
        length.count = 1;
        return "two digits a byte; `" + std::string(field_name(record, length)) +
               "` is their number and has no position of its own";
    }
    case Text::List:
        return std::to_string(field.count) + " numbers between commas";
    }
    return "";
}

void add_once(std::vector<const Record*>& records, const Record* record)
{
    if (!record || std::find(records.begin(), records.end(), record) != records.end())
        return;
    add_once(records, record->block);
    records.push_back(record);
}
} // namespace

std::vector<Member> members_of(const Record& record)
{
    std::vector<Member> members;
    const Field* field = record.begin();
    for (const std::string& name : items_of(record.members)) {
        members.push_back({name, field, is_block(record, *field) ? record.block : nullptr});
        field++;
    }
    return members;
}

std::vector<Value> values_of(const Record& record)
{
    std::vector<Value> values;
    for (const Member& member : members_of(record)) {
        const Field& field = *member.field;
        if (!member.block) {
            values.push_back({std::string(field_name(record, field)), field.offset, field.kind, field.count});
            continue;
        }
        for (const Value& inner : values_of(*member.block))
            values.push_back({inner.name, field.offset + inner.offset, inner.kind, inner.count});
    }
    return values;
}

std::vector<NotedPosition> positions_of(const TextForm& form, Side side)
{
    std::vector<NotedPosition> positions;
    for (const Field& field : form)
        if (has_position(field, side))
            positions.push_back({describe_position(form, field, side), notes_of(*form.record, field, side), &field});
    return positions;
}

std::string table_of(const Api& api) { return std::string(split_name(api).table); }

Text text_of(const Record& record, unsigned offset)
{
    for (const Service* service : all_services)
        for (const Api& api : *service)
            for (const TextForm* form : {api.output, api.input})
                if (form && form->record == &record)
                    for (const Field& field : *form)
                        if (field.offset == offset)
                            return field.text;
    return Text::Plain;
}

std::vector<const Record*> records_of(const Service& service)
{
    std::vector<const Record*> records;
    for (const Api& api : service) {
        add_once(records, api.request);
        add_once(records, api.reply);
    }
    return records;
}

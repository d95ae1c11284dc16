// Records and positions as lists, see names.h.
#include "tools/describe/names.h"

#include <algorithm>

namespace
{
bool is_block(const Record& record, const Field& field)
{
    return record.block && field.count == record.block->count && field.kind == record.block->fields[0].kind;
}

std::string notes_of(const Record& record, const Position& position, const TextKind& kind)
{
    if (position.text == Text::CountedHex) {
        const auto before = static_cast<uint16_t>(position.offset - sizeof(int));
        return "two digits a byte; `" + std::string(field_name(record, Field(before, 1, Kind::Int))) +
               "` is their number and has no position of its own";
    }
    if (position.kind == Kind::UInt && position.text == Text::Plain && position.use != Use::Unread)
        return "from 2147483648 on it is printed negative";
    if (!kind.note)
        return "";
    return (kind.note[0] == ' ' ? std::to_string(position.count) : "") + kind.note;
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
    for (unsigned i = 0; i < record.count; i++) {
        const Field& field = record.fields[i];
        members.push_back(
            {std::string(member_name(record, i)), &field, is_block(record, field) ? record.block : nullptr});
    }
    return members;
}

std::vector<Value> values_of(const Record& record)
{
    std::vector<Value> values;
    for (const Member& member : members_of(record)) {
        const Field& field = *member.field;
        if (!member.block) {
            values.push_back({std::string(field_name(record, field)), field});
            continue;
        }
        for (const Value& inner : values_of(*member.block)) {
            const auto offset = static_cast<uint16_t>(field.offset + inner.field.offset);
            values.push_back({inner.name, Field(offset, inner.field.count, inner.field.kind)});
        }
    }
    return values;
}

std::vector<NotedPosition> positions_of(const TextForm& form, Side side)
{
    std::vector<NotedPosition> positions;
    for (const Position position : form)
        if (has_position(position, side)) {
            const PositionText text = describe_position(form, position, side);
            positions.push_back({text, notes_of(*form.record, position, *text.kind), position});
        }
    return positions;
}

std::string table_of(const Api& api) { return std::string(split_name(api).table); }

Position position_of(const Record& record, const Field& field)
{
    for (const Service* service : all_services)
        for (const Api& api : *service)
            for (const TextForm* form : {api.output(), api.input()})
                if (form && form->record == &record)
                    for (const Position position : *form)
                        if (position.offset == field.offset)
                            return position;
    return field;
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

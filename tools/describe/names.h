// Records and text positions as lists with names, for the derived files. The
// names and kinds themselves are common/schema.h's.
#pragma once

#include <string>
#include <vector>

#include "common/schema.h"

// One member of a record. A member that is a block of values has the block's
// record, and its field covers all of them.
struct Member {
    std::string name; // as the struct spells it
    const Field* field;
    const Record* block;
};

// One single value of a record: a member, or one value of a block.
struct Value {
    std::string name; // for people
    Field field;      // into the struct
};

// One position of an API's text, with what a reader of the reference wants to
// know besides.
struct NotedPosition : PositionText {
    std::string notes; // may be empty
    Position position;
};

std::vector<Member> members_of(const Record& record);
std::vector<Value> values_of(const Record& record);

// The positions of an argument's text, or of a reply's.
std::vector<NotedPosition> positions_of(const TextForm& form, Side side);

std::string table_of(const Api& api);

// How the text of any of the record's APIs shows one of its fields.
Position position_of(const Record& record, const Field& field);

// Every record that the service's procedures carry, each once, a block's
// record before the record that holds it.
std::vector<const Record*> records_of(const Service& service);

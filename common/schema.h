// What the descriptions say, for people and programs that read them: the names
// of fields, tables and operations, and how each position of a text reads. The
// Lua module librpc.schema hands it to scripts, the tools print it.
#pragma once

#include <string_view>

#include "common/service.h"

// The member of that index, as the record's struct spells it.
std::string_view member_name(const Record& record, unsigned index);

// The name of one of a record's fields, or of a value in its block; a C++
// name's trailing underscore (class_) is not part of it. The field may be a
// position's: it is found by its place.
std::string_view field_name(const Record& record, const Field& field);

enum class Operation : uint8_t { Get, Getn, Set, Other };

// "get", "getn", "set" or "other"
const char* name_of(Operation operation);

// An API's name taken apart: "oltmib_portinfo_getn_1" is Getn of "portinfo". A
// name with another verb is Other of all of it: "oltmib_dyinggasp_support_1" of
// "dyinggasp_support".
struct ApiName {
    std::string_view table;
    Operation operation;
};
ApiName split_name(const Api& api);

// The argument's text or the reply's.
enum class Side : uint8_t { Input, Output };

// True when that text has the position.
bool has_position(const Position& position, Side side);

// A kind of text: all that is said of it, wherever it is said. Null where there
// is nothing to say.
struct TextKind {
    const char* name;
    const char* meaning;    // for people
    const char* lua_type;   // of a value with a field's name, as LuaLS writes it; null: the field's own
    const char* remark;     // behind a member of a protocol file
    const char* note;       // on a position, behind "#" elements where it begins with a blank
    const char* example;    // '#' stands for a digit; with one the text repeats for each element
    const char* joint;      // between the elements of an example
    const char* dissection; // how the Wireshark plug-in shows it; null: as the field's own kind
};

// Every kind there is.
struct TextKinds {
    const TextKind* begin() const;
    const TextKind* end() const;
};
constexpr TextKinds text_kinds = {};

// The kind of one position's text.
const TextKind& kind_of(const Position& position, Side side);

// How one position of a text reads.
struct PositionText {
    std::string_view name;
    const TextKind* kind;
    unsigned size; // the array's length; 0 for single values
};
PositionText describe_position(const TextForm& form, const Position& position, Side side);

// True when every position reads alike in the argument and in the reply.
bool same_on_both_sides(const TextForm& form);

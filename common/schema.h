// What the descriptions say, for people and programs that read them: the names
// of fields, tables and operations, and how each position of a text reads. The
// Lua module librpc.schema hands it to scripts, the tools print it.
#pragma once

#include <string_view>

#include "services/service.h"

// The name of one of a record's fields, or of a value in its block; a C++
// name's trailing underscore (class_) is not part of it. `field` may be a text
// form's: it is found by its place.
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

// True when that text has a position for the field.
bool has_position(const Field& field, Side side);

// How one position of a text reads.
struct Position {
    std::string_view name;
    const char* kind; // int, unsigned, text, mac, hex, list, real, counter, bytes or skip
    unsigned size;    // the array's length; 0 for single values
};
Position describe_position(const TextForm& form, const Field& field, Side side);

// True when every position reads alike in the argument and in the reply.
bool same_on_both_sides(const TextForm& form);

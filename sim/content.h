// What the simulated device's tables start with, as data.
#pragma once

#include <vector>

// Rows of one table, written as an argument of its set. A '#' in the text stands
// for the row's number, from `first` to `last`.
struct Content {
    const char* table;
    int first, last;
    const char* text;
};

// How a table differs from the rule that its rows are told apart by the first
// position of their text, and that a table without a getn has one row. They stand
// in names.lua, from which CMake takes them: one row a table that names its key.
struct Key {
    const char* table;
    const char* members; // of the record, without a C++ name's last '_'; "" is a table of one row
};

// An API that works on another table's rows.
struct Alias {
    const char* name; // the API's, as split_name gives its table
    const char* table;
};

extern const std::vector<Content> initial_content;
extern const std::vector<Key> special_keys;
extern const std::vector<Alias> aliases;

// The rows that the simulated device keeps, one Table for all APIs of a service
// that name the same thing: oltmib_portinfo_get_1, _getn_1 and _set_1 are
// "portinfo". Tables, their keys and their texts all come from the library's
// own descriptions (common/service.h); content.h has what they start with.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "common/service.h"

using Row = std::vector<char>; // one record in memory

// What an API does with its table.
enum class Verb {
    Get,  // the row of the request's key
    Next, // the first row whose key is greater
    Set,  // stores the request as the row of its key
    Act,  // answers 0 and changes nothing
};

Verb verb_of(const Api& api);

// "portinfo" of oltmib_portinfo_get_1; APIs that read another table's rows
// under a name of their own give that table's name.
std::string table_name(const Api& api);

// A record's text with every position that an argument has, for logs and
// content; where Lua has no text for the record, its fields in wire order.
class ArgumentForm
{
  public:
    ArgumentForm() = default;
    ArgumentForm(const Record& record, const TextForm* input);

    Row parse(const std::string& text) const;
    std::string format(const Row& row) const;
    size_t count() const { return positions.size(); }
    size_t parts(const std::string& text) const; // that the text is cut into
    const std::vector<Position>& fields() const { return positions; }
    char separator() const { return form.delimiters[0] ? '$' : '&'; }

  private:
    std::vector<Position> positions;
    TextForm form = {};
};

class Table
{
  public:
    // Of the API's record; `walked` when the service has a getn for it.
    Table(std::string name, const Api& api, bool walked);

    // The answer of Get and Next: a row, or the request with a result that says
    // that there is none. Counters of the row move on.
    Row answer(Verb verb, const Row& request);
    // Keeps what a set cannot carry: counters, and an address that is read raw.
    void store(const Row& request);
    // One of the rows that the table starts with.
    void add(const std::string& text);

    const std::string& name() const { return own_name; }
    const Record& record() const { return own_record; }
    const ArgumentForm& form() const { return argument; }
    bool single() const { return one_row; }
    size_t size() const { return rows.size(); }

  private:
    friend void generate_rows(Table& table);

    int compare(const Row& a, const Row& b) const;
    Row* find(const Row& request);
    Row* next(const Row& request);
    void move_counters(Row& row);

    std::string own_name;
    const Record& own_record;
    ArgumentForm argument;
    std::vector<Position> key;
    bool one_row;
    std::vector<Field> kept;     // not carried by an argument
    std::vector<Field> counters; // only ever grow
    std::vector<Field> rates;    // go up and down
    std::vector<Row> rows;       // in key order
};

// Every table of one service by its name, still empty.
std::map<std::string, Table> make_tables(const Service& service);

// Puts the rows in that the tables start with: those of content.h, else some
// made up from the fields' kinds.
void fill_tables(std::map<std::string, Table>& tables);

// The field of that name; ends the program when the record has none.
Field field_named(const Record& record, const std::string& name);

// What the tests of several themes share beside tests/support: records with random
// content, and texts as they travel.
#pragma once

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "rpc/record.h"
#include "tests/support/apis.h"
#include "tests/support/exact_memory.h"
#include "tests/support/scripted_client.h"

using Random = std::mt19937;

inline int between(Random& random, int least, int most)
{
    return std::uniform_int_distribution<int>(least, most)(random);
}

// A text of `least` to `most` characters of `alphabet`.
inline std::string random_text(Random& random, const std::string& alphabet, int least, int most)
{
    std::string text(static_cast<size_t>(between(random, least, most)), '\0');
    for (char& c : text)
        c = alphabet[static_cast<size_t>(between(random, 0, static_cast<int>(alphabet.size()) - 1))];
    return text;
}

// Storage for any record, of exactly its size.
class Object : public ExactMemory
{
  public:
    explicit Object(const Record& record) : ExactMemory(record.size) {}

    Bytes bytes() const { return Bytes(data(), data() + size()); }
};

// Random bytes in every field, zero between them.
inline void fill_randomly(Random& random, const Record& record, char* object)
{
    for (const Field& field : record)
        for (unsigned i = 0; i < field.count * size_of(field.kind); i++)
            object[field.offset + i] = static_cast<char>(between(random, 0, 255));
}

// The units of a text in an array of `count` characters.
inline Bytes text_units(const std::string& text, size_t count)
{
    std::vector<uint32_t> values(count);
    for (size_t i = 0; i < text.size(); i++)
        values[i] = static_cast<uint32_t>(static_cast<int32_t>(text[i]));
    return units(values);
}

inline Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

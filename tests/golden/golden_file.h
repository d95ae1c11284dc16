// Reads the lists of this folder (golden_list.h) and its vectors, which model/make
// makes: vectors/PROGRAM.txt holds blocks like
//
//     api oltmib_vrrp_ssstate_get_1
//     arg 7&1&&4
//     req 7 1 0 4 0*36
//     rep 7 1 2 4 5 6 "up" 0*30 1 0
//     txt 7&1&2&4&5&6&up&1&0
//     trc [str2arg_vrrp_ssstate: 58]vrid 7, role 4, oper 0.
//
// req and rep are the units that travel: a number is one unit, "text" one unit
// a character, 0*N is N zeroes. Bytes outside printable ASCII, backslashes and
// the quotes within units are written \xHH. Each trc is a trace line of the
// converters without its line end. A line that opens with # is a comment.
#pragma once

#include <gtest/gtest.h>
#include <map>
#include <optional>

#include "tests/golden/golden_list.h"

namespace golden
{
struct Vector {
    std::string place; // "50013.txt:7"
    std::string api;
    std::string argument;
    std::vector<uint32_t> request;
    std::vector<uint32_t> reply;
    std::optional<std::string> text; // none where it is not fixed
    std::vector<std::string> traces;
};

inline std::string unescaped(const std::string& text)
{
    std::string bytes;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '\\') {
            bytes += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

inline std::vector<uint32_t> units(const std::string& text)
{
    std::vector<uint32_t> units;
    for (size_t i = 0; i < text.size(); i++) { // at a word's first character, then at the blank behind it
        if (text[i] == '"') {
            const size_t end = text.find('"', i + 1);
            for (const char c : unescaped(text.substr(i + 1, end - i - 1)))
                units.push_back(static_cast<unsigned char>(c));
            i = end + 1;
            continue;
        }
        size_t end = text.find(' ', i);
        end = end == text.npos ? text.size() : end;
        const std::string word = text.substr(i, end - i);
        if (word.compare(0, 2, "0*") == 0)
            units.resize(units.size() + std::stoul(word.substr(2)));
        else
            units.push_back(static_cast<uint32_t>(std::stoll(word)));
        i = end;
    }
    return units;
}

// What `vectors/PROGRAM.txt` holds, read once.
inline const std::vector<Vector>& vectors(unsigned long program)
{
    static std::map<unsigned long, std::vector<Vector>> all;
    std::vector<Vector>& vectors = all[program];
    if (!vectors.empty())
        return vectors;
    const std::string name = std::to_string(program) + ".txt";
    std::ifstream file(folder() + "/vectors/" + name);
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        number++;
        const std::string key = line.substr(0, 3), value = line.size() > 4 ? line.substr(4) : "";
        if (key == "api")
            vectors.push_back({name + ":" + std::to_string(number), value, "", {}, {}, std::nullopt, {}});
        else if (key == "arg")
            vectors.back().argument = unescaped(value);
        else if (key == "req")
            vectors.back().request = units(value);
        else if (key == "rep")
            vectors.back().reply = units(value);
        else if (key == "txt")
            vectors.back().text = unescaped(value);
        else if (key == "trc")
            vectors.back().traces.push_back(unescaped(value));
        else if (!key.empty() && key[0] != '#')
            ADD_FAILURE() << name << ':' << number << ": expected api, arg, req, rep, txt or trc, found " << key;
    }
    return vectors;
}
} // namespace golden

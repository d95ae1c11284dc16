// Reads the lists of this folder: services.txt, apis.txt, records.txt and
// exports.txt, one entry a line, its words between blanks. They are written by
// hand and say what others rely on; a test that wants to know how many services,
// APIs, records or functions there are, or in which order, asks them (tests in
// Lua: tests/lua/golden.lua).
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace golden
{
// GOLDEN_FOLDER of the environment goes before the one that was compiled in.
inline std::string folder()
{
    const char* elsewhere = getenv("GOLDEN_FOLDER");
    return elsewhere ? elsewhere : GOLDEN_FOLDER;
}

// The entries of a list, each as its words. Without any the test is none.
inline std::vector<std::vector<std::string>> list(const std::string& name)
{
    std::vector<std::vector<std::string>> entries;
    const std::string path = folder() + "/" + name;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        if (!line.empty() && line[0] != '#')
            entries.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
    }
    if (entries.empty()) {
        fprintf(stderr, "golden: %s: expected entries, found none\n", path.c_str());
        exit(1);
    }
    return entries;
}

// One word of each entry.
inline std::vector<std::string> column(const std::string& name, size_t number)
{
    std::vector<std::string> words;
    for (const auto& entry : list(name))
        words.push_back(entry.at(number));
    return words;
}
} // namespace golden

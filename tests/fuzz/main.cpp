// Replays kept inputs through a fuzz target: each argument is a file of them
// (corpus/TARGET.kept, see corpus.py), or one input. An ordinary program for any
// compiler.
#include <fstream>
#include <iterator>
#include <string>

#include "tests/fuzz/fuzz.h"

namespace
{
std::ifstream open(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT(file.is_open(), "a readable file", "%s", path.c_str());
    return file;
}

int replay(const std::string& bytes)
{
    const ExactMemory input(bytes.data(), bytes.size());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
    return 1;
}

// The bytes of a line, behind its name.
std::string bytes_of(const std::string& line)
{
    const size_t tab = line.find('\t');
    EXPECT(tab != std::string::npos, "a name, a tab and bytes", "%.40s", line.c_str());
    std::string bytes;
    for (size_t at = tab + 1; at < line.size(); at++) {
        if (line[at] != '\\') {
            bytes += line[at];
            continue;
        }
        EXPECT(line.size() >= at + 4 && line[at + 1] == 'x', "\\xNN", "%.4s", line.c_str() + at);
        bytes += static_cast<char>(std::stoi(line.substr(at + 2, 2), nullptr, 16));
        at += 3;
    }
    return bytes;
}

bool ends_with(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}
} // namespace

int main(int count, char** argument)
{
    int inputs = 0;
    for (int i = 1; i < count; i++) {
        std::ifstream file = open(argument[i]);
        if (ends_with(argument[i], ".kept"))
            for (std::string line; std::getline(file, line);)
                inputs += replay(bytes_of(line));
        else
            inputs += replay({std::istreambuf_iterator<char>(file), {}});
    }
    EXPECT(inputs > 0, "inputs to replay", "none in %d arguments", count - 1);
    fprintf(stderr, "%d inputs replayed\n", inputs);
}

// Replays kept inputs through a fuzz target: each argument is a file, or a
// folder of them. An ordinary program for any compiler.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/fuzz/fuzz.h"

namespace
{
int replay(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    EXPECT(!file.bad(), "a readable file", "%s", path.c_str());
    const auto input = exact(bytes.data(), bytes.size());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.get()), bytes.size());
    return 1;
}
} // namespace

int main(int count, char** argument)
{
    int inputs = 0;
    for (int i = 1; i < count; i++) {
        if (!std::filesystem::is_directory(argument[i])) {
            inputs += replay(argument[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(argument[i]))
            inputs += replay(entry.path());
    }
    EXPECT(inputs > 0, "inputs to replay", "none in %d arguments", count - 1);
    fprintf(stderr, "%d inputs replayed\n", inputs);
}

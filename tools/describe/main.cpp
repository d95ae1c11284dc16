// librpc_describe: writes the files that are derived from the description.
//
//     librpc_describe files SOURCE OUT    what is committed, into the tree OUT;
//                                         SOURCE is the tree with hand-written parts
//     librpc_describe layouts OUT         SERVICE_layout.c for tests/differential
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>

#include "tools/describe/outputs.h"

namespace fs = std::filesystem;

namespace
{
[[noreturn]] void fail(const fs::path& where, const std::string& what)
{
    std::cerr << "librpc_describe: " << where.string() << ": " << what << '\n';
    exit(1);
}

std::string read_file(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in)
        fail(path, std::string("expected a readable file, found: ") + strerror(errno));
    return text.str();
}

// Writes a file when its text differs, so that what depends on it is left alone otherwise.
void put_file(const fs::path& path, const std::function<void(std::ostream&)>& write)
{
    std::ostringstream text;
    write(text);
    if (fs::exists(path) && read_file(path) == text.str())
        return;
    fs::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary);
    out << text.str();
    out.close();
    if (!out)
        fail(path, std::string("expected a writable file, found: ") + strerror(errno));
}

void write_files(const fs::path& source, const fs::path& out)
{
    for (const Service* service : all_services) {
        const std::string name = service->name;
        put_file(out / "protocol" / (name + ".x"), [&](auto& to) { write_protocol(to, *service); });
        put_file(out / "docs/reference" / (name + ".md"), [&](auto& to) { write_reference_page(to, *service); });
    }
    put_file(out / "docs/reference/README.md", write_reference_index);
    put_file(out / "docs/reference/librpc.lua", write_annotations);
    for (const AnnotatedModule* module = annotated_modules; module->name; module++)
        put_file(out / "docs/reference/librpc" / (std::string(module->name) + ".lua"),
                 [module](auto& to) { write_module_annotations(to, *module); });
    put_file(out / "docs/reference/names.lua", write_empty_names);
    put_file(out / "tools/wireshark/librpc.lua", [&](auto& to) {
        write_dissector_data(to);
        to << '\n' << read_file(source / "tools/wireshark/dissector.lua");
    });
}

void write_layouts(const fs::path& out)
{
    for (const Service* service : all_services)
        put_file(out / (std::string(service->name) + "_layout.c"), [&](auto& to) { write_layout(to, *service); });
}
} // namespace

int main(int argc, char** argv)
{
    const std::string what = argc > 1 ? argv[1] : "";
    if (what == "files" && argc == 4)
        write_files(argv[2], argv[3]);
    else if (what == "layouts" && argc == 3)
        write_layouts(argv[2]);
    else
        fail("arguments", "expected `files SOURCE OUT` or `layouts OUT`, found something else");
}

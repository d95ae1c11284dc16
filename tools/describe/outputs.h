// The derived files, one function and one source file each. Every function
// writes the whole text of one file; what it writes depends on the description
// alone, so that two runs agree byte for byte.
#pragma once

#include <ostream>

#include "common/service.h"

// RPC language of one service, for rpcgen: protocol/SERVICE.x.
void write_protocol(std::ostream& out, const Service& service);

// The table of a service's rpcgen-made types that tests/differential compares
// the library with.
void write_layout(std::ostream& out, const Service& service);

// The reference: a page a service, and their index.
void write_reference_page(std::ostream& out, const Service& service);
void write_reference_index(std::ostream& out);

// LuaLS annotations: docs/reference/librpc.lua.
void write_annotations(std::ostream& out);

// The same of a module beside librpc: docs/reference/librpc/NAME.lua.
struct AnnotatedModule {
    const char* name;
    void (*write_derived)(std::ostream& out); // what comes from the description, or null
    const char* text;                         // the rest
};
extern const AnnotatedModule annotated_modules[]; // the last one has no name
void write_module_annotations(std::ostream& out, const AnnotatedModule& module);

// A file of names with nothing filled in: docs/reference/names.lua.
void write_empty_names(std::ostream& out);

// The programs and records as Lua tables: the first half of the Wireshark
// plug-in, whose second half is tools/wireshark/dissector.lua.
void write_dissector_data(std::ostream& out);

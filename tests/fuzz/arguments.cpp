// Argument text, any bytes, through every API's parser and into its request
// record's XDR routine.
//
// Input: API (2), flags (1: trace lines), text.
#include <cstring>

#include "common/schema.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/reference.h"

namespace
{
void check_encoding(const Record& record, void* request)
{
    const size_t size = BYTES_PER_XDR_UNIT * record.units;
    for (size_t room : {size, size - BYTES_PER_XDR_UNIT}) {
        const ExactMemory units(room);
        XDR xdrs;
        xdrmem_create(&xdrs, units.data(), static_cast<u_int>(room), XDR_ENCODE);
        const bool done = xdr_record(&xdrs, record, request);
        EXPECT(done == (room == size), "a record to fit its own units only", "%d of %zu units", done,
               room / BYTES_PER_XDR_UNIT);
        EXPECT(!done || XDR_GETPOS(&xdrs) == size, "all units to be written", "%u bytes", XDR_GETPOS(&xdrs));
    }
}

size_t offset_of(const Record& record, const char* member)
{
    unsigned i = 0;
    while (i < record.count && member_name(record, i) != member)
        i++;
    EXPECT(i < record.count, "a member of that name", "%s without %s", record.name, member);
    return record.fields[i].offset;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input input(data, size);
    const Api& api = choose_api(input);
    set_debug(input.byte() & 1);
    const std::string given = input.rest();
    void* request = api.parser->str2arg(exact_text(given).data());
    EXPECT(request, "a request record", "null from %s", api.name);
    if (!api.request)
        return 0;
    const std::string record(static_cast<char*>(request), api.request->size);
    std::string expected = reference::parse(*api.input(), given.c_str());
    if (strcmp(api.request->name, "oltmib_PortInfoEntry") == 0) // one value read fills two fields
        memcpy(&expected[offset_of(*api.request, "field9")], &expected[offset_of(*api.request, "field8")], sizeof(int));
    EXPECT(record == expected, "the record of the plain reading", "another one of %s", api.name);
    check_encoding(*api.request, request);
    return 0;
}

// error: a record fits one UDP datagram
#include "rpc/record.h"

// With a call's header of 40 bytes, 2190 units are a datagram of 8800.
struct test_Entry {
    int ifx;
#ifdef DEFECT
    char text[2190];
#else
    char text[2189];
#endif
};
RECORD(test_Entry, ifx, text)
static_assert(record_of<test_Entry>.units == sizeof(test_Entry::text) + 1);

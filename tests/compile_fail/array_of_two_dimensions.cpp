// error: a record's array has one dimension
#include "rpc/record.h"

struct test_Entry {
    int ifx;
#ifdef DEFECT
    char names[4][32];
#else
    char names[4 * 32];
#endif
};
RECORD(test_Entry, ifx, names)

// error: a record's member is an int, unsigned, double, 64-bit integer, char[N], int[N] or a block record
#include "rpc/record.h"

struct test_Entry {
    int ifx;
#ifdef DEFECT
    short level;
#else
    int level;
#endif
};
RECORD(test_Entry, ifx, level)

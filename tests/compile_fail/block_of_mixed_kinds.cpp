// error: a nested record is a block of single values of one kind
#include "rpc/record.h"

struct test_block {
    int one;
#ifdef DEFECT
    unsigned two;
#else
    int two;
#endif
};
RECORD(test_block, one, two)

struct test_Entry {
    int ifx;
    test_block block;
};
RECORD(test_Entry, ifx, block)

// error: a nested record is a block of single values of one kind
#include "rpc/record.h"

struct test_block {
    int one;
#ifdef DEFECT
    int two[2];
#else
    int two, three;
#endif
};
#ifdef DEFECT
RECORD(test_block, one, two)
#else
RECORD(test_block, one, two, three)
#endif

struct test_Entry {
    int ifx;
    test_block block;
};
RECORD(test_Entry, ifx, block)

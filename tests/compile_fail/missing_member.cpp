// error: RECORD lists each member of its struct exactly once
#include "rpc/record.h"

struct test_Entry {
    int ifx;
    char name[32];
    int oper, res;
};
#ifdef DEFECT
RECORD(test_Entry, ifx, name, res)
#else
RECORD(test_Entry, ifx, name, oper, res)
#endif
static_assert(record_of<test_Entry>.units > 0);

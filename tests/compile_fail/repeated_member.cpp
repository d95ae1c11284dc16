// error: RECORD lists the members in the order of the struct
#include "rpc/record.h"

struct test_Entry {
    int ifx, oper, res;
};
#ifdef DEFECT
RECORD(test_Entry, ifx, oper, oper)
#else
RECORD(test_Entry, ifx, oper, res)
#endif
static_assert(record_of<test_Entry>.units == 3);

// error: the record's members do not add up to its known wire units
#include "rpc/record.h"

struct test_Entry {
    int ifx;
    double real;
};
RECORD(test_Entry, ifx, real)
#ifdef DEFECT
UNITS(test_Entry, 2)
#else
UNITS(test_Entry, 3)
#endif

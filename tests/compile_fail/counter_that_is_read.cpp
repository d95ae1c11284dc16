// error: 64-bit values only come back: use COUNTER or RATE
#include "common/text_form.h"

#include "rpc/int64.h"

struct test_Entry {
    int ifx;
    oltmib_uint64_t count;
};
RECORD(test_Entry, ifx, count)

#ifdef DEFECT
TABLE(test, test_Entry)
#else
TABLE(test, test_Entry, COUNTER(count))
#endif

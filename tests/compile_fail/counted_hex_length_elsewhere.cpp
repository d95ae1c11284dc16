// error: COUNTED_HEX takes an int and the bytes right behind it
#include "common/text_form.h"

struct test_Entry {
    int length, other;
    char bytes[32];
    char more[32];
};
RECORD(test_Entry, length, other, bytes, more)

#ifdef DEFECT
TABLE(test, test_Entry, COUNTED_HEX(length, bytes))
#else
TABLE(test, test_Entry, COUNTED_HEX(other, bytes))
#endif

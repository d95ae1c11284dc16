// error: COUNTED_HEX takes an int and the bytes right behind it
#include "common/text_form.h"

struct test_Entry {
#ifdef DEFECT
    unsigned length;
#else
    int length;
#endif
    char bytes[32];
    char more[32];
};
RECORD(test_Entry, length, bytes, more)
TABLE(test, test_Entry, COUNTED_HEX(length, bytes))

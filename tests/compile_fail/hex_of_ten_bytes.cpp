// error: raise hex_size: the bytes' digits and their NUL fit it
#include "common/text_form.h"

struct test_Entry {
    char eight[8];
    char ten[10];
};
RECORD(test_Entry, eight, ten)

#ifdef DEFECT
TABLE(test, test_Entry, HEX(ten))
#else
TABLE(test, test_Entry, HEX(eight))
#endif

// error: raise counted_hex_size: the bytes' digits and their NUL fit it
#include "common/text_form.h"

#ifdef DEFECT
#define COUNT 50
#else
#define COUNT 49
#endif
struct test_Entry {
    int length;
    char bytes[COUNT];
    char more[32];
};
RECORD(test_Entry, length, bytes, more)

TABLE(test, test_Entry, COUNTED_HEX(length, bytes))

// error: the most digits that a reply's number can ask for stand for bytes of the record
#include "common/text_form.h"

struct test_Entry {
    int length;
    char bytes[32];
#ifndef DEFECT
    char more[32];
#define MORE , more
#else
#define MORE
#endif
};
RECORD(test_Entry, length, bytes MORE)

TABLE(test, test_Entry, COUNTED_HEX(length, bytes))

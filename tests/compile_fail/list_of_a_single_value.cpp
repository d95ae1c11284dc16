// error: raise most_items: a list is split into no more
#include "common/text_form.h"

struct test_Entry {
    int one;
    int eight[8];
};
RECORD(test_Entry, one, eight)

#ifdef DEFECT
TABLE(test, test_Entry, LIST(one))
#else
TABLE(test, test_Entry, LIST(eight))
#endif

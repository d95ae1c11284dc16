// error: a MAC address is six bytes
#include "common/text_form.h"

struct test_Entry {
    char five[5];
    char six[6];
};
RECORD(test_Entry, five, six)

#ifdef DEFECT
TABLE(test, test_Entry, MAC(five))
#else
TABLE(test, test_Entry, MAC(six))
#endif

// error: raise most_positions: an argument is split into no more
#include "common/text_form.h"

struct test_Entry {
    int a0, a1, a2, a3, a4, a5, a6, a7, a8, a9;
    int b0, b1, b2, b3, b4, b5, b6, b7, b8, b9;
    int c0, c1, c2, c3, c4, c5, c6, c7, c8, c9;
    int d0, d1, d2, d3, d4, d5, d6, d7, d8, d9;
#ifdef DEFECT
    int e0;
#define MORE , e0
#else
#define MORE
#endif
};
RECORD(test_Entry, a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, b0, b1, b2, b3, b4, b5, b6, b7, b8, b9, c0, c1, c2, c3, c4,
       c5, c6, c7, c8, c9, d0, d1, d2, d3, d4, d5, d6, d7, d8, d9 MORE)
TABLE(test, test_Entry)

// Descriptions of records and of their texts that must not compile: a section a case.
//
// To add one: a section like the others. Its error stands before it; without DEFECT it must
// compile, with it the compiler must refuse it with that message. rows.def is the same of a
// service's rows.
#include "common/text_form.h"
#include "rpc/int64.h"

// error: a record's array has one dimension
#ifdef CASE_array_of_two_dimensions
struct test_Entry {
    int ifx;
#ifdef DEFECT
    char names[4][32];
#else
    char names[4 * 32];
#endif
};
RECORD(test_Entry, ifx, names)
#endif

// error: a nested record is a block of single values of one kind
#ifdef CASE_block_of_arrays
struct test_block {
    int one;
#ifdef DEFECT
    int two[2];
#else
    int two, three;
#endif
};
#ifdef DEFECT
RECORD(test_block, one, two)
#else
RECORD(test_block, one, two, three)
#endif

struct test_Entry {
    int ifx;
    test_block block;
};
RECORD(test_Entry, ifx, block)
#endif

// error: a nested record is a block of single values of one kind
#ifdef CASE_block_of_mixed_kinds
struct test_block {
    int one;
#ifdef DEFECT
    unsigned two;
#else
    int two;
#endif
};
RECORD(test_block, one, two)

struct test_Entry {
    int ifx;
    test_block block;
};
RECORD(test_Entry, ifx, block)
#endif

// error: RECORD lists the members in the order of the struct
#ifdef CASE_members_out_of_order
struct test_Entry {
    int ifx;
    char name[32];
    int oper, res;
};
#ifdef DEFECT
RECORD(test_Entry, name, ifx, oper, res)
#else
RECORD(test_Entry, ifx, name, oper, res)
#endif
static_assert(record_of<test_Entry>.units == 35);
#endif

// error: RECORD lists each member of its struct exactly once
#ifdef CASE_missing_member
struct test_Entry {
    int ifx;
    char name[32];
    int oper, res;
};
#ifdef DEFECT
RECORD(test_Entry, ifx, name, res)
#else
RECORD(test_Entry, ifx, name, oper, res)
#endif
static_assert(record_of<test_Entry>.units > 0);
#endif

// error: a record fits one UDP datagram
#ifdef CASE_record_too_big
// With a call's header of 40 bytes, 2190 units are a datagram of 8800.
struct test_Entry {
    int ifx;
#ifdef DEFECT
    char text[2190];
#else
    char text[2189];
#endif
};
RECORD(test_Entry, ifx, text)
static_assert(record_of<test_Entry>.units == sizeof(test_Entry::text) + 1);
#endif

// error: RECORD lists the members in the order of the struct
#ifdef CASE_repeated_member
struct test_Entry {
    int ifx, oper, res;
};
#ifdef DEFECT
RECORD(test_Entry, ifx, oper, oper)
#else
RECORD(test_Entry, ifx, oper, res)
#endif
static_assert(record_of<test_Entry>.units == 3);
#endif

// error: a record's member is an int, unsigned, double, 64-bit integer, char[N], int[N] or a block record
#ifdef CASE_unsupported_member
struct test_Entry {
    int ifx;
#ifdef DEFECT
    short level;
#else
    int level;
#endif
};
RECORD(test_Entry, ifx, level)
#endif

// error: the most digits that a reply's number can ask for stand for bytes of the record
#ifdef CASE_counted_hex_at_the_end
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
#endif

// error: COUNTED_HEX takes an int and the bytes right behind it
#ifdef CASE_counted_hex_length_elsewhere
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
#endif

// error: COUNTED_HEX takes an int and the bytes right behind it
#ifdef CASE_counted_hex_length_of_another_type
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
#endif

// error: raise counted_hex_size: the bytes' digits and their NUL fit it
#ifdef CASE_counted_hex_of_fifty_bytes
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
#endif

// error: 64-bit values only come back: use COUNTER or RATE
#ifdef CASE_counter_that_is_read
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
#endif

// error: raise hex_size: the bytes' digits and their NUL fit it
#ifdef CASE_hex_of_ten_bytes
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
#endif

// error: raise most_items: a list is split into no more
#ifdef CASE_list_of_a_single_value
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
#endif

// error: a MAC address is six bytes
#ifdef CASE_mac_of_five_bytes
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
#endif

// error: raise most_positions: an argument is split into no more
#ifdef CASE_too_many_positions
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
#endif

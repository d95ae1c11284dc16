// A service whose rows are a case of rows.def.
#define LIBRPC_DEFINES_XDR
#include "common/text_form.h"

struct test_oneEntry {
    int key;
    char name[32];
    int oper, res;
};
RECORD(test_oneEntry, key, name, oper, res)

struct test_twoEntry {
    int key, value, oper, res;
};
RECORD(test_twoEntry, key, value, oper, res)

TABLE(one, test_oneEntry)
CONVERTERS(one)

TABLE(two, test_twoEntry)
CONVERTERS(two)

TABLE(three, test_twoEntry) // its converters are nowhere

#define SERVICE service_test
#define SERVICE_NAME "test"
#define SERVICE_TITLE "test"
#define SERVICE_PROGRAM 50099
#define SERVICE_INIT test_init
#define SERVICE_CLNT_INIT test_clnt_init
#define SERVICE_CLNT_DESTROY test_clnt_destroy
#define SERVICE_APIS "tests/compile_fail/rows.def"
#include "services/define_service.h"

/* What rpcgen makes of one protocol file, as data that a test can walk: the
 * types with their members' places, the procedures with their numbers. Each
 * SERVICE_layout.c fills it by the names of rpcgen's header, so that a name or
 * number which the header lacks does not compile. */
#pragma once

#include <rpc/rpc.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

struct plain_member {
    const char* name;
    size_t offset, size;
};

struct plain_record {
    const char* name;
    size_t size;
    xdrproc_t code;
    const struct plain_member* members;
    size_t count;
};

struct plain_procedure {
    const char* stub;
    unsigned long number;
    void* function;
};

struct plain_service {
    unsigned long program, version;
    const struct plain_record* records;
    size_t record_count;
    const struct plain_procedure* procedures;
    size_t procedure_count;
};

extern const struct plain_service plain_code;

#ifdef __cplusplus
}
#endif

#define PLAIN_LENGTH(array) (sizeof(array) / sizeof(array)[0])
#define PLAIN_MEMBER(type, member)                                                                                     \
    {                                                                                                                  \
#member, offsetof(struct type, member), sizeof(((struct type*)0)->member)                                      \
    }
#define PLAIN_RECORD(type)                                                                                             \
    {                                                                                                                  \
#type, sizeof(struct type), (xdrproc_t)xdr_##type, members_of_##type, PLAIN_LENGTH(members_of_##type)          \
    }
#define PLAIN_PROCEDURE(stub, number)                                                                                  \
    {                                                                                                                  \
#stub, number, (void*)stub                                                                                     \
    }
#define PLAIN_SERVICE(program, version)                                                                                \
    {                                                                                                                  \
        program, version, records, PLAIN_LENGTH(records), procedures, PLAIN_LENGTH(procedures)                         \
    }

// What a service is: its program, its client and its APIs, as data. The
// registration, the schema, the simulated device and the generated files all
// come from these rows; each service's are made by services/define_service.h.
#pragma once

#include "common/registry.h"
#include "common/text_form.h"

// One remote procedure.
struct Api {
    char name[sizeof ApiNode::name]; // of the stub, and of the API
    rpcproc_t procedure;
    const Record* request; // null: the call has no body
    const Record* reply;   // null: an int status
    ApiFunc func;
    ApiParser str2arg; // null: the API is not registered, Lua cannot call it
    ApiFormatter ret2str;
    const TextForm* input;  // of str2arg
    const TextForm* output; // of ret2str; null for int2str

    bool registered() const { return str2arg != nullptr; }
};

// A stub's remote call: clears the static reply `clnt_res`, sends `request`,
// waits up to TIMEOUT and decodes the reply. Returns `clnt_res`, or null on any
// RPC failure.
void* call_api(void* request, CLIENT* clnt, const Api& api, void* clnt_res);

struct Service {
    const char* name;  // of its folder
    const char* title; // for people
    rpcprog_t program;
    int (*init)();
    ApiClientInit clnt_init;
    ApiClientDestroy clnt_destroy;
    const Api* apis; // in registration order
    size_t count;

    const Api* begin() const { return apis; }
    const Api* end() const { return apis + count; }
};

// Adds every registered API of the service to the registry, in order. The
// result of the last lua_addapi.
int register_apis(const Service& service);

// The fifteen services in the order in which opening the module registers them.
constexpr size_t service_count = 15;
extern const Service* const all_services[service_count];

// What a service is: its program, its client and its APIs, as data, and the
// pieces that every call of an API is made of. The registration, the schema, the
// simulated device and the generated files all come from these rows; each
// service's are made by services/define_service.h.
#pragma once

#include "common/registry.h"
#include "common/text_form.h"
#include "rpc/client.h"
#include "rpc/exchange.h"

// One remote procedure.
struct Api {
    const char* name; // of the stub, and of the API; fits ApiNode::name
    rpcproc_t procedure;
    const Record* request; // null: the call has no body
    const Record* reply;   // null: an int status
    ApiFunc func;
    const Parser* parser = nullptr; // null: the API is not registered, Lua cannot call it
    const Formatter* formatter = nullptr;

    bool registered() const { return parser != nullptr; }

    // The forms of the argument's text and of the reply's; null without one, or
    // where the reply's text is an int.
    const TextForm* input() const { return parser ? parser->form : nullptr; }
    const TextForm* output() const { return formatter ? formatter->form : nullptr; }
};

// Room for any API's reply as text, its NUL included.
constexpr unsigned most_text_size = 4000;

// A record of any API.
struct alignas(double) RecordRoom {
    char bytes[most_record_size];
};

// A call in pieces, without input or output and without storage of its own.
//
// Fills the request from the argument's text, which is cut up on the way.
// Returns it.
void* parse_argument(const Api& api, RecordRoom& request, char* text);

// The call of that request. Clears `reply`, the storage that its reply is
// decoded into: see reply_storage.
Call make_call(const Api& api, void* request, void* reply);

// Writes the reply's text into `text` (most_text_size bytes). Its length.
size_t format_reply(const Api& api, const RecordRoom& reply, char* text);

// The record that a reply occupies in memory, or null where it is an int: a
// set's int that is formatted as a record has the record's storage.
inline const Record* reply_storage(const Api& api)
{
    return api.reply ? api.reply : api.output() ? api.output()->record : nullptr;
}

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
    const ServiceClient* client;
    const Api* apis; // in registration order
    size_t count;

    const Api* begin() const { return apis; }
    const Api* end() const { return apis + count; }
};

// Adds every registered API of the service to the registry, in order. The
// result of the last lua_addapi.
int register_apis(const Service& service);

// The services in the order in which opening the module registers them: what
// services/services.cpp lists.
struct ServiceList {
    const Service* const* first;
    size_t count;

    const Service* const* begin() const { return first; }
    const Service* const* end() const { return first + count; }
    size_t size() const { return count; }
    const Service* operator[](size_t i) const { return first[i]; }
};
extern const ServiceList all_services;

// The registry: every callable API by its name, in one circular list whose
// order is the order of registration.
#pragma once

#include <cstddef>
#include <rpc/rpc.h>

#include "rpc/export.h"

// The two links of a list's head, and of each node of it.
struct ListLinks {
    ListLinks* next;
    ListLinks* prev;
};

typedef void* (*ApiFunc)(void* request, CLIENT* clnt); // the reply, or null
typedef void* (*ApiParser)(char* text);                // the request record
typedef char* (*ApiFormatter)(void* reply);            // the reply's text
typedef CLIENT* (*ApiClientInit)();                    // the client, or null
typedef void (*ApiClientDestroy)();

// One registered API.
struct ApiNode : ListLinks {
    char name[40]; // NUL-terminated; by convention the client stub's name
    ApiFunc func;
    ApiParser str2arg;
    ApiFormatter ret2str;
    ApiClientInit clntinit;
    ApiClientDestroy clntdestroy;
};

// The registry's list; an empty one points to itself.
extern "C" __attribute__((visibility("default"))) ListLinks apinode_head;

// Puts `added` between two neighbours.
EXPORT void __list_add(ListLinks* added, ListLinks* prev, ListLinks* next);
// Puts `added` at the tail, which is before the head.
EXPORT void list_add_tail(ListLinks* added, ListLinks* head);
// Joins what stood on both sides of an entry.
EXPORT void __list_del(ListLinks* prev, ListLinks* next);
// Takes an entry out and poisons its links.
EXPORT void list_del(ListLinks* entry);

// Registers a copy of `api` (its links are ignored) at the tail, in place of
// any node of the same name. The replaced node is unlinked, never freed:
// somebody may still hold it. 1, or 0 without memory, the registry unchanged.
EXPORT int lua_addapi(const ApiNode* api);

// Unlinks the node of that name. 1, or 0 when there is none.
EXPORT int lua_delapi(const char* name);

// The first node of exactly that name, or null. A look-up finds what the list
// holds, also where a host edited it by the primitives above or renamed a node
// in place.
EXPORT ApiNode* lua_getapibyname(const char* name);

// lua_getapibyname for callers that leave the node as it is.
ApiNode* find_api(const char* name);

// Prints a node's name and its five function addresses to standard output, as
// showapi and the dispatch's trace show them; no line end.
void print_api(const ApiNode& api);

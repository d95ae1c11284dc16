// The registry: every callable API by its name, in one circular list whose
// order is the order of registration. Safe from any number of threads, as long
// as hosts edit the list by the functions below.
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
// somebody may still hold it; one that equals the new one in every field moves
// to the tail instead. 1, or 0 without memory, the registry unchanged.
EXPORT int lua_addapi(const ApiNode* api);

// Unlinks the node of that name. 1, or 0 when there is none.
EXPORT int lua_delapi(const char* name);

// The first node of exactly that name, or null. A look-up finds what the list
// holds, also where a host edited it by the primitives above or renamed a node
// in place.
EXPORT ApiNode* lua_getapibyname(const char* name);

struct Api;
struct Service;

// What a node is of: null for a node of a host's own.
struct Described {
    const Service* service;
    const Api* api;
};

// lua_addapi of a node whose functions are those of that API.
int add_described_api(const ApiNode& node, const Described& described);

// A registered node as a call needs it.
struct FoundApi : Described {
    const ApiNode* node; // null: no such name

    // True while the node's functions are those of its description: a host may
    // put others into their places.
    bool is_described() const;
};
FoundApi find_api(const char* name);

// Prints a node's name and its five function addresses to standard output, as
// showapi and the dispatch's trace show them; no line end.
void print_api(const ApiNode& api);

// print_api for each node of the list, each with a line end.
void print_list();

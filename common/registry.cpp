// The registry's list, and hints that find a name in it without walking.
//
// The list is the truth: what it holds is registered, in its order, however it
// came there. A hint says which node a name was last registered with. It is
// believed while that node is linked, still has the name and is the list's
// first of it; otherwise the list is walked.
#include "common/registry.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

ListLinks apinode_head = {&apinode_head, &apinode_head};

namespace
{
ListLinks* const poisoned_next = reinterpret_cast<ListLinks*>(0x100100);
ListLinks* const poisoned_prev = reinterpret_cast<ListLinks*>(0x200200);

// Only nodes that lua_addapi made stand here. They are never freed, so a stale
// hint may be looked at.
struct Hint {
    ApiNode* node;
    uint32_t hash; // of the name that the node was registered with
    bool is_first; // of its name, when the list was last read
};

// Open addressing: a name's hint is the first from its hash on that has the
// name or no node.
Hint first_hints[512]; // holds the library's own names
Hint* hints = first_hints;
size_t hint_count = std::size(first_hints); // a power of two
size_t hints_used;

// What a host can do behind lua_addapi and lua_delapi: it changed the list by
// the primitives since the list was last read, and there may be names without a
// hint, because it linked or renamed a node of its own.
bool list_is_unread;
bool names_without_hint;

uint32_t hash_of(const char* name) // FNV-1a
{
    uint32_t hash = 0x811c9dc5U;
    for (; *name; name++)
        hash = (hash ^ static_cast<unsigned char>(*name)) * 0x01000193U;
    return hash;
}

Hint& hint_of(const char* name, uint32_t hash)
{
    size_t at = hash & (hint_count - 1);
    while (hints[at].node && (hints[at].hash != hash || strcmp(hints[at].node->name, name) != 0))
        at = (at + 1) & (hint_count - 1);
    return hints[at];
}

// Twice the room, before it is so full that hints stand far from their hash.
// Without memory names beyond three quarters go without.
bool make_room()
{
    if (hints_used < hint_count / 4 * 3)
        return true;
    auto* more = static_cast<Hint*>(calloc(2 * hint_count, sizeof(Hint)));
    if (!more)
        return false;
    Hint* const old = hints;
    const size_t old_count = hint_count;
    hints = more;
    hint_count *= 2;
    for (size_t i = 0; i < old_count; i++)
        if (old[i].node) {
            size_t at = old[i].hash & (hint_count - 1);
            while (hints[at].node)
                at = (at + 1) & (hint_count - 1);
            hints[at] = old[i];
        }
    if (old != first_hints)
        free(old);
    return true;
}

void remember(const Hint& hint)
{
    Hint& known = hint_of(hint.node->name, hint.hash);
    if (known.node) {
        known = hint;
    } else if (make_room()) {
        hint_of(hint.node->name, hint.hash) = hint;
        hints_used++;
    } else {
        names_without_hint = true;
    }
}

// Finds out which hints name the first node of their name.
void read_list()
{
    for (size_t i = 0; i < hint_count; i++)
        hints[i].is_first = false;
    for (ListLinks* at = apinode_head.prev; at != &apinode_head; at = at->prev) {
        auto* node = static_cast<ApiNode*>(at);
        Hint& hint = hint_of(node->name, hash_of(node->name));
        hint.is_first = hint.node == node;
    }
    list_is_unread = false;
}

ApiNode* walk_to(const char* name)
{
    for (ListLinks* at = apinode_head.next; at != &apinode_head; at = at->next)
        if (strcmp(static_cast<ApiNode*>(at)->name, name) == 0)
            return static_cast<ApiNode*>(at);
    return nullptr;
}

bool is_linked(const ApiNode* node) { return node->next != poisoned_next && node->next->prev == node; }

ApiNode* believed(const char* name, uint32_t hash)
{
    if (list_is_unread)
        read_list();
    const Hint& hint = hint_of(name, hash);
    return hint.node && hint.is_first && is_linked(hint.node) ? hint.node : nullptr;
}

void link(ListLinks* added, ListLinks* prev, ListLinks* next)
{
    next->prev = added;
    added->next = next;
    added->prev = prev;
    prev->next = added;
}

void unlink(ListLinks* entry)
{
    entry->next->prev = entry->prev;
    entry->prev->next = entry->next;
    entry->next = poisoned_next;
    entry->prev = poisoned_prev;
}

void note_edit() { list_is_unread = names_without_hint = true; }
} // namespace

void __list_add(ListLinks* added, ListLinks* prev, ListLinks* next)
{
    link(added, prev, next);
    note_edit();
}

void list_add_tail(ListLinks* added, ListLinks* head) { __list_add(added, head->prev, head); }

void __list_del(ListLinks* prev, ListLinks* next)
{
    next->prev = prev;
    prev->next = next;
    note_edit();
}

void list_del(ListLinks* entry)
{
    unlink(entry);
    note_edit();
}

int lua_addapi(const ApiNode* api)
{
    auto* node = static_cast<ApiNode*>(malloc(sizeof(ApiNode)));
    if (!node)
        return 0;
    const uint32_t hash = hash_of(api->name);
    ApiNode* replaced = believed(api->name, hash);
    if (!replaced && names_without_hint)
        replaced = walk_to(api->name);
    if (replaced)
        unlink(replaced);
    const bool is_first = !replaced || !names_without_hint || !walk_to(api->name);
    *node = *api;
    link(node, apinode_head.prev, &apinode_head);
    remember({node, hash, is_first});
    return 1;
}

int lua_delapi(const char* name)
{
    ApiNode* node = find_api(name);
    if (!node)
        return 0;
    unlink(node);
    return 1;
}

ApiNode* find_api(const char* name)
{
    ApiNode* node = believed(name, hash_of(name));
    return node ? node : walk_to(name);
}

ApiNode* lua_getapibyname(const char* name)
{
    names_without_hint = true; // who holds a node can rename it
    return find_api(name);
}

void print_api(const ApiNode& api)
{
    printf("name %s,\t func %p,\t str2arg %p,\t ret2str %p,\t clntinit %p,\t clntdestroy %p", api.name,
           reinterpret_cast<const void*>(api.func), reinterpret_cast<const void*>(api.str2arg),
           reinterpret_cast<const void*>(api.ret2str), reinterpret_cast<const void*>(api.clntinit),
           reinterpret_cast<const void*>(api.clntdestroy));
}

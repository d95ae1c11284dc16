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
#include <pthread.h>

#include "rpc/lock.h"

ListLinks apinode_head = {&apinode_head, &apinode_head};

namespace
{
ListLinks* const poisoned_next = reinterpret_cast<ListLinks*>(0x100100);
ListLinks* const poisoned_prev = reinterpret_cast<ListLinks*>(0x200200);

Mutex mutex; // guards the list and everything here

// A node that lua_addapi made.
struct OwnNode : ApiNode {
    Described described;
};

// Only own nodes stand here. They are never freed, so a stale hint may be
// looked at.
struct Hint {
    OwnNode* node;
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

// FNV-1a, a word of eight characters at a time.
uint32_t hash_of(const char* name)
{
    uint64_t hash = 0xcbf29ce484222325U;
    for (size_t left = strlen(name);; name += sizeof(uint64_t)) {
        uint64_t word = 0;
        memcpy(&word, name, left < sizeof word ? left : sizeof word);
        hash = (hash ^ word) * 0x100000001b3U;
        hash ^= hash >> 32;
        if (left <= sizeof word)
            return static_cast<uint32_t>(hash);
        left -= sizeof word;
    }
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
    // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): a circle's links are never null
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

OwnNode* believed(const char* name, uint32_t hash)
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

namespace
{
// A fork may find another thread in here; the child has none that would let go.
void watch_forks()
{
    static bool watching;
    if (!watching)
        watching = pthread_atfork([] { mutex.lock(); }, [] { mutex.unlock(); }, [] { mutex.unlock(); }) == 0;
}

bool same_functions(const ApiNode& a, const ApiNode& b)
{
    return a.func == b.func && a.str2arg == b.str2arg && a.ret2str == b.ret2str && a.clntinit == b.clntinit &&
           a.clntdestroy == b.clntdestroy;
}

// With the mutex held, as everything below.
ApiNode* find_node(const char* name)
{
    ApiNode* node = believed(name, hash_of(name));
    return node ? node : walk_to(name);
}

int add(const ApiNode& api, const Described& described)
{
    watch_forks();
    const uint32_t hash = hash_of(api.name);
    OwnNode* own = believed(api.name, hash);
    if (own && same_functions(*own, api)) {
        unlink(own);
        link(own, apinode_head.prev, &apinode_head);
        return 1;
    }
    auto* node = static_cast<OwnNode*>(malloc(sizeof(OwnNode)));
    if (!node)
        return 0;
    ApiNode* replaced = own || !names_without_hint ? own : walk_to(api.name);
    if (replaced)
        unlink(replaced);
    const bool is_first = !replaced || !names_without_hint || !walk_to(api.name);
    static_cast<ApiNode&>(*node) = api;
    node->described = described;
    link(node, apinode_head.prev, &apinode_head);
    remember({node, hash, is_first});
    return 1;
}
} // namespace

void __list_add(ListLinks* added, ListLinks* prev, ListLinks* next)
{
    const Guard guard(mutex);
    link(added, prev, next);
    note_edit();
}

void list_add_tail(ListLinks* added, ListLinks* head) { __list_add(added, head->prev, head); }

void __list_del(ListLinks* prev, ListLinks* next)
{
    const Guard guard(mutex);
    next->prev = prev;
    prev->next = next;
    note_edit();
}

void list_del(ListLinks* entry)
{
    const Guard guard(mutex);
    unlink(entry);
    note_edit();
}

int lua_addapi(const ApiNode* api)
{
    const Guard guard(mutex);
    return add(*api, {nullptr, nullptr});
}

int add_described_api(const ApiNode& node, const Described& described)
{
    const Guard guard(mutex);
    return add(node, described);
}

int lua_delapi(const char* name)
{
    const Guard guard(mutex);
    ApiNode* node = find_node(name);
    if (!node)
        return 0;
    unlink(node);
    return 1;
}

ApiNode* lua_getapibyname(const char* name)
{
    const Guard guard(mutex);
    names_without_hint = true; // who holds a node can rename it
    return find_node(name);
}

FoundApi find_api(const char* name)
{
    const Guard guard(mutex);
    if (const OwnNode* own = believed(name, hash_of(name)))
        return {own->described, own};
    return {{nullptr, nullptr}, walk_to(name)};
}

namespace
{
void print_line(const ApiNode& node)
{
    print_api(node);
    printf("\r\n");
}
} // namespace

// From a copy of the list, so that no lock is held while printing waits for
// whoever reads it; nodes are never freed.
void print_list()
{
    mutex.lock();
    size_t count = 0;
    for (ListLinks* node = apinode_head.next; node != &apinode_head; node = node->next)
        count++;
    size_t at = 0;
    auto** nodes = static_cast<ApiNode**>(malloc(sizeof(void*) * (count + 1)));
    for (ListLinks* link = apinode_head.next; link != &apinode_head; link = link->next) {
        auto* node = static_cast<ApiNode*>(link);
        if (nodes)
            nodes[at++] = node;
        else // no memory for a copy
            print_line(*node);
    }
    mutex.unlock();
    for (size_t i = 0; i < at; i++)
        print_line(*nodes[i]);
    free(nodes);
}

void print_api(const ApiNode& api)
{
    printf("name %s,\t func %p,\t str2arg %p,\t ret2str %p,\t clntinit %p,\t clntdestroy %p", api.name,
           reinterpret_cast<const void*>(api.func), reinterpret_cast<const void*>(api.str2arg),
           reinterpret_cast<const void*>(api.ret2str), reinterpret_cast<const void*>(api.clntinit),
           reinterpret_cast<const void*>(api.clntdestroy));
}

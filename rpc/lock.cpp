// Turns and forks, see lock.h.
#include "rpc/lock.h"

#include <cstring>

namespace
{
Turn* turns; // written before its thread can fork, never shortened

void renew_turns()
{
    if (turns)
        turns->renew_in_child();
}
} // namespace

void Turn::renew_in_child()
{
    const Mutex fresh_mutex;
    const pthread_cond_t fresh_cond = PTHREAD_COND_INITIALIZER;
    memcpy(&mutex, &fresh_mutex, sizeof mutex);
    memcpy(&free, &fresh_cond, sizeof free);
    if (!pthread_equal(owner, pthread_self()))
        depth = 0;
    if (next)
        next->renew_in_child();
}

// With the mutex held.
void Turn::watch_forks()
{
    if (watches)
        return;
    watches = true;
    next = turns;
    turns = this;
    if (!next)
        pthread_atfork(nullptr, nullptr, renew_turns);
}

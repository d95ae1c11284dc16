// Locks of the library's own. A Mutex is held for a few instructions: never
// while something waits, calls Lua or calls a host's function. A Turn is for
// what cannot be safe otherwise.
#pragma once

#include <pthread.h>

// A mutex that needs no initialisation at run time and stays usable in a forked
// child: around_fork holds it while the process forks.
struct Mutex {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

    void lock() { pthread_mutex_lock(&mutex); }
    void unlock() { pthread_mutex_unlock(&mutex); }
};

// Holds a mutex while it lives.
class Guard
{
  public:
    explicit Guard(Mutex& mutex) : mutex(mutex) { mutex.lock(); }
    ~Guard() { mutex.unlock(); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

  private:
    Mutex& mutex;
};

// One thread at a time, for as long as it takes; a thread that has its turn may
// take it again. A forked child starts with no turn taken but its own.
class Turn
{
  public:
    void take()
    {
        const Guard guard(mutex);
        watch_forks();
        if (depth == 0 || !pthread_equal(owner, pthread_self())) {
            while (depth > 0)
                pthread_cond_wait(&free, &mutex.mutex);
            owner = pthread_self();
        }
        depth++;
    }
    void pass_on()
    {
        const Guard guard(mutex);
        if (--depth == 0)
            pthread_cond_signal(&free);
    }

    // A forked child has none of the threads that would pass on.
    void renew_in_child();

  private:
    void watch_forks();

    Mutex mutex;
    pthread_cond_t free = PTHREAD_COND_INITIALIZER;
    pthread_t owner = {};
    unsigned depth = 0;
    Turn* next = nullptr; // among those that watch forks
    bool watches = false;
};

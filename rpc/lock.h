// Locks of the library's own. A Mutex is held for a few instructions: never
// while something waits, calls Lua or calls a host's function. A Turn is for
// what cannot be safe otherwise.
#pragma once

#include <pthread.h>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#define LIBRPC_KNOWS_ONE_THREAD
#endif

// A mutex that needs no initialisation at run time and stays usable in a forked
// child whose parent held it while it forked. A process that has one thread and
// whose C library says so (glibc 2.32) takes none: nothing between lock() and
// unlock() can start another.
struct Mutex {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    bool is_held = false;

    void lock()
    {
        if (has_one_thread())
            return;
        pthread_mutex_lock(&mutex);
        is_held = true;
    }
    void unlock()
    {
        if (!is_held)
            return;
        is_held = false;
        pthread_mutex_unlock(&mutex);
    }
    static bool has_one_thread()
    {
#ifdef LIBRPC_KNOWS_ONE_THREAD
        return __libc_single_threaded != 0;
#else
        return false;
#endif
    }
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
            while (depth > 0 && mutex.is_held)
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

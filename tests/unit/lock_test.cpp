// Turns: one thread at a time, as often as it likes, and in a forked child its own alone.
#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "rpc/lock.h"

#if defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__
#define SKIP_WHERE_FORKS_ARE_WATCHED()                                                                                 \
    GTEST_SKIP() << "a sanitizer's own locks may stay locked in a forked child, which may start no thread"
#else
#define SKIP_WHERE_FORKS_ARE_WATCHED()
#endif

namespace
{
// Turns are never gone: the library's own lives as long as the process.
Turn first, second;

// A thread that takes a turn, and how far it came.
class Taker
{
  public:
    explicit Taker(Turn& turn) : thread([this, &turn] { run(turn); }) {}
    ~Taker()
    {
        let_pass_on();
        thread.join();
    }
    Taker(const Taker&) = delete;
    Taker& operator=(const Taker&) = delete;

    // As soon as it has its turn.
    void let_pass_on() { may_pass_on = true; }
    bool has_turn() const { return is_taken; }
    void await_turn() const
    {
        while (!is_taken)
            usleep(1000);
    }
    // Until it sleeps, which it does nowhere else.
    void await_sleep() const
    {
        for (char state = ' '; state != 'S';) {
            usleep(1000);
            std::ifstream file("/proc/self/task/" + std::to_string(id) + "/stat");
            std::string word;
            file >> word >> word >> state;
        }
    }

  private:
    void run(Turn& turn)
    {
        id = static_cast<pid_t>(syscall(SYS_gettid));
        turn.take();
        is_taken = true;
        while (!may_pass_on)
            std::this_thread::yield();
        turn.pass_on();
    }

    std::atomic<pid_t> id = 0;
    std::atomic<bool> is_taken = false, may_pass_on = false;
    std::thread thread;
};

// What a forked child does; true when it came to its end.
template <class Work> bool in_child(Work&& work)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(10); // that ends a child which waits for ever
        work();
        _exit(0);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}
} // namespace

TEST(turn, is_passed_on_when_it_was_given_back_as_often_as_taken)
{
    {
        const Taker known(first); // from here on the process has had two threads
    }
    first.take();
    first.take();
    const Taker other(first);
    other.await_sleep();
    first.pass_on();
    first.take();
    first.pass_on();
    other.await_sleep();
    EXPECT_FALSE(other.has_turn());
    first.pass_on();
    other.await_turn();
}

TEST(turn, of_one_thing_is_not_that_of_another)
{
    first.take();
    const Taker other(second);
    other.await_turn();
    first.pass_on();
}

TEST(turn, of_another_thread_is_nobodys_in_a_forked_child)
{
    SKIP_WHERE_FORKS_ARE_WATCHED();
    const Taker one(first), another(second);
    one.await_turn();
    another.await_turn();
    EXPECT_TRUE(in_child([] {
        first.take();
        second.take();
    }));
}

TEST(turn, of_its_own_stays_a_forked_childs)
{
    SKIP_WHERE_FORKS_ARE_WATCHED();
    first.take();
    EXPECT_TRUE(in_child([] {
        {
            const Taker other(second);
            other.await_turn();
        }
        first.take();
        first.pass_on();
        first.pass_on();
        const Taker other(first);
        other.await_turn();
    }));
    first.pass_on();
}

TEST(turn, is_passed_on_in_a_forked_child_whatever_threads_waited_in_its_parent)
{
    SKIP_WHERE_FORKS_ARE_WATCHED();
    Taker one(first);
    one.await_turn();
    Taker waiting(first), more(first);
    waiting.await_sleep();
    more.await_sleep();
    EXPECT_TRUE(in_child([] {
        first.take();
        const Taker other(first);
        other.await_sleep();
        first.pass_on();
        other.await_turn();
    }));
    for (Taker* taker : {&one, &waiting, &more})
        taker->let_pass_on();
}

TEST(turn, is_had_in_a_forked_child_whatever_another_thread_was_about)
{
    SKIP_WHERE_FORKS_ARE_WATCHED();
    {
        const Taker known(second); // the first to take a turn has it watched from then on
    }
    std::atomic<bool> is_over = false;
    std::thread busy([&] {
        while (!is_over) {
            second.take();
            second.pass_on();
        }
    });
    bool had_all = true;
    for (int i = 0; i < 200 && had_all; i++)
        had_all = in_child([] {
            second.take();
            second.pass_on();
        });
    EXPECT_TRUE(had_all);
    is_over = true;
    busy.join();
}

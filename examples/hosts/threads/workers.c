/* A program with an event loop and threads: the loop reads requests, one a line, as
 * "table=portinfo&key=3", and writes answers, as "7 200 TEXT" to the seventh request. It never
 * waits for a call: threads do, each with a Lua state of its own.
 *
 *     workers THREADS [CALLS]      CALLS: each thread takes a new state after so many calls
 *
 *     cc -pthread -o workers workers.c $(pkg-config --cflags --libs lua5.1)
 */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <lauxlib.h>
#include <lua.h>
#include <lualib.h>
#include <poll.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { most_waiting = 64, most_threads = 64, line_size = 1024 };

struct request {
    unsigned long number;
    char query[line_size];
};

/* Requests that no thread has taken yet. */
static struct {
    pthread_mutex_t mutex;
    pthread_cond_t came;
    struct request list[most_waiting];
    unsigned first, count;
    int is_over;
} waiting = {.mutex = PTHREAD_MUTEX_INITIALIZER, .came = PTHREAD_COND_INITIALIZER};

static unsigned long calls_a_state;
static int answers[2]; /* a pipe from the threads to the loop; a line is written at once */

static void fail(const char* where, const char* expected, const char* found)
{
    fprintf(stderr, "workers: %s: expected %s, found %s\n", where, expected, found);
    exit(1);
}

/* Returns 0 when no more will come. */
static int take(struct request* request)
{
    int is_there;
    pthread_mutex_lock(&waiting.mutex);
    while (waiting.count == 0 && !waiting.is_over)
        pthread_cond_wait(&waiting.came, &waiting.mutex);
    is_there = waiting.count > 0;
    if (is_there) {
        *request = waiting.list[waiting.first];
        waiting.first = (waiting.first + 1) % most_waiting;
        waiting.count--;
    }
    pthread_mutex_unlock(&waiting.mutex);
    return is_there;
}

static void give(unsigned long number, const char* query)
{
    struct request* request;
    pthread_mutex_lock(&waiting.mutex);
    request = &waiting.list[(waiting.first + waiting.count++) % most_waiting];
    request->number = number;
    strcpy(request->query, query); /* hand_on has seen that it fits */
    pthread_cond_signal(&waiting.came);
    pthread_mutex_unlock(&waiting.mutex);
}

static int has_room(void)
{
    int room;
    pthread_mutex_lock(&waiting.mutex);
    room = waiting.count < most_waiting;
    pthread_mutex_unlock(&waiting.mutex);
    return room;
}

static void end_of_requests(void)
{
    pthread_mutex_lock(&waiting.mutex);
    waiting.is_over = 1;
    pthread_cond_broadcast(&waiting.came);
    pthread_mutex_unlock(&waiting.mutex);
}

/* A state whose stack holds the page's function. */
static lua_State* open_state(void)
{
    lua_State* L = luaL_newstate();
    if (!L)
        fail("state", "memory for a Lua state", "none");
    luaL_openlibs(L);
    if (luaL_dostring(L, "package.path = '/srv/librpc/?.lua;' .. package.path\n"
                         "return require('page').numbered_row"))
        fail("page", "a page that loads", lua_tostring(L, -1));
    return L;
}

static void* work(void* nothing)
{
    struct request request;
    lua_State* L = open_state();
    unsigned long calls = 0;
    (void)nothing;
    while (take(&request)) {
        char line[PIPE_BUF];
        int length;
        if (calls_a_state > 0 && calls++ == calls_a_state) {
            lua_close(L);
            L = open_state();
            calls = 1;
        }
        lua_pushvalue(L, 1);
        lua_pushstring(L, request.query);
        if (lua_pcall(L, 1, 2, 0)) {
            length = snprintf(line, sizeof line, "%lu 500 failed: %s\n", request.number, lua_tostring(L, -1));
        } else {
            length = snprintf(line, sizeof line, "%lu %d %s", request.number, (int)lua_tointeger(L, -2),
                              lua_tostring(L, -1));
        }
        lua_settop(L, 1);
        if (length >= (int)sizeof line) {
            length = sizeof line;
            line[length - 1] = '\n';
        }
        if (write(answers[1], line, (size_t)length) != length)
            fail("answers", "a pipe", strerror(errno));
    }
    lua_close(L);
    return NULL;
}

/* Hands the whole lines of the input on, as far as there is room; what remains
 * moves to the front. Returns how many bytes remain. */
static size_t hand_on(char* input, size_t size, unsigned long* number)
{
    char *line = input, *end;
    while (has_room() && (end = memchr(line, '\n', size - (size_t)(line - input)))) {
        *end = '\0';
        if (end - line >= line_size)
            fail("input", "lines of at most 1023 characters", "a longer one");
        give(++*number, line);
        line = end + 1;
    }
    size -= (size_t)(line - input);
    memmove(input, line, size);
    if (size >= line_size && !memchr(input, '\n', size))
        fail("input", "lines of at most 1023 characters", "a longer one");
    return size;
}

/* The event loop. A program of your own has its sockets in the list too. */
static void loop(void)
{
    static char input[64 * line_size];
    size_t size = 0;
    unsigned long asked = 0, answered = 0;
    int is_open = 1;
    while (is_open || size > 0 || answered < asked) {
        struct pollfd list[] = {{answers[0], POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        const int reads = is_open && size < sizeof input - line_size;
        char output[8192];
        ssize_t got;
        if (poll(list, reads ? 2 : 1, -1) < 0)
            continue;
        if (list[0].revents) {
            got = read(answers[0], output, sizeof output);
            for (ssize_t i = 0; i < got; i++)
                answered += output[i] == '\n';
            if (got > 0 && write(STDOUT_FILENO, output, (size_t)got) != got)
                fail("output", "somebody who reads it", strerror(errno));
        }
        if (reads && list[1].revents) {
            got = read(STDIN_FILENO, input + size, sizeof input - size);
            if (got > 0)
                size += (size_t)got;
            is_open = got > 0;
            if (!is_open && size > 0 && input[size - 1] != '\n')
                input[size++] = '\n';
        }
        size = hand_on(input, size, &asked);
    }
}

int main(int argc, char** argv)
{
    pthread_t threads[most_threads];
    const int count = argc > 1 ? atoi(argv[1]) : 0;
    if (count < 1 || count > most_threads)
        fail("arguments", "1 to 64 threads", argc > 1 ? argv[1] : "none");
    calls_a_state = argc > 2 ? strtoul(argv[2], NULL, 10) : 0;
    if (pipe2(answers, O_CLOEXEC))
        fail("pipe", "a pipe", strerror(errno));
    for (int i = 0; i < count; i++)
        if ((errno = pthread_create(&threads[i], NULL, work, NULL)))
            fail("thread", "a thread", strerror(errno));
    loop();
    end_of_requests();
    for (int i = 0; i < count; i++)
        pthread_join(threads[i], NULL);
    return 0;
}

// SPDX-License-Identifier: MIT
/* zorpelx/lib/crew.cpp: threads for the engine in a child process.
 *
 * Its threads share one heap. Heaps of their own would reserve 64 MB of address space each, which a
 * cap counts, and would not keep freed memory for the next level; the engine allocates so seldom
 * that the lock is no matter.
 */
#include "crew.h"

#include <malloc.h>
#include <pthread.h>

constexpr size_t STACK = size_t{1} << 20; // bytes; the engine needs a few KB

/* A thread at work. */
struct Running {
    pthread_t thread;
    void (*work)(void *what);
    void *what;
};

static void *do_work(void *place)
{
    const Running *const running = static_cast<Running *>(place);
    running->work(running->what);
    return nullptr;
}

static void *start_thread(void (*work)(void *what), void *what)
{
    Running *const running = static_cast<Running *>(malloc(sizeof(Running)));
    if (running == nullptr) return nullptr;
    *running = {{}, work, what};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, STACK);
    const int refused = pthread_create(&running->thread, &attributes, do_work, running);
    pthread_attr_destroy(&attributes);
    if (refused == 0) return running;
    free(running);
    return nullptr;
}

static void await_thread(void *place)
{
    Running *const running = static_cast<Running *>(place);
    pthread_join(running->thread, nullptr);
    free(running);
}

Crew make_crew(int nthreads, bool ordered)
{
    if (nthreads > 1) mallopt(M_ARENA_MAX, 1);
    return {start_thread, await_thread, nthreads - 1, ordered, WORTH_A_THREAD, nthreads - 1};
}

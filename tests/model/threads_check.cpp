// SPDX-License-Identifier: MIT
/* model/threads_check.cpp: random cases with one, two and four threads, which must give the same.
 *
 * usage: threads_check --n CASES --seed SEED [--jobs J]
 *
 * The reference is the entry point that draws from the process's generator. Every half, however
 * small, gets a thread while there is one; every tenth case asks for threads that cannot be had.
 * Traces are compared byte for byte, but for those with timers.
 */
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "partition/halves.h"
#include "torture_check.h"
#include "torture_draw.h"

static std::atomic<long long> nstarted;

static void *start_thread(void (*work)(void *what), void *what)
{
    nstarted++;
    return new std::thread(work, what);
}

static void *refuse_thread(void (*)(void *what), void *)
{
    return nullptr;
}

static void await_thread(void *place)
{
    std::thread *const thread = static_cast<std::thread *>(place);
    thread->join();
    delete thread;
}

static bool same_output(const Case &c, const std::string &a, const std::string &b)
{
    return (c.options[ZORPEL_OPT_DBGLVL] & ZORPEL_DBG_TIME) != 0 || a == b;
}

/* Nothing is left of the crew's threads but what it had at first. */
static const char *check_threads(const Case &c, const Outcome &wanted, int nthreads, bool refused)
{
    Crew crew = {
        refused ? refuse_thread : start_thread, await_thread, nthreads - 1, true, 0, nthreads - 1};
    const Outcome outcome = make_call(c, &crew);
    if (!crew_at_rest_ok(&crew)) return "threads were lost";
    if (outcome.part != wanted.part) return "another partition";
    if (outcome.edgecut != wanted.edgecut) return "another cut";
    if (!same_output(c, outcome.output, wanted.output)) return "other traces";
    return nullptr;
}

/* Direct k-way partitioning and refinement have no halves. */
static Case case_of(uint64_t seed)
{
    Case c = draw_case(seed);
    if (c.entry == ENTRY_REFINE) c.part.assign(c.part.size(), 0);
    if (c.entry == ENTRY_REFINE || c.entry == ENTRY_DIRECT) c.entry = ENTRY_INTERNAL;
    if (c.entry == ENTRY_INTERNAL) c.options[ZORPEL_OPT_FIXED] = 0;
    if (c.nparts < 4) c.nparts += 3;
    return c;
}

static bool check_cases(uint64_t n, uint64_t seed, uint64_t first, uint64_t step)
{
    for (uint64_t i = first; i < n; i += step) {
        const Case c = case_of(seed * 0x100000001b3u + i);
        const Outcome wanted = make_call(c);
        for (const int nthreads : {1, 2, 4}) {
            const char *const why = check_threads(c, wanted, nthreads, i % 10 == 9);
            if (why == nullptr) continue;
            printf("case %" PRIu64 " (%s, %d parts) with %d threads: %s\n", i, c.family.c_str(),
                   c.nparts, nthreads, why);
            return false;
        }
    }
    printf("%lld threads\n", nstarted.load());
    return nstarted > 0;
}

int main(int argc, char **argv)
{
    uint64_t n = 1000, seed = 1, jobs = 1;
    for (int i = 1; i + 1 < argc; i += 2) {
        const uint64_t value = strtoull(argv[i + 1], nullptr, 10);
        if (strcmp(argv[i], "--n") == 0) n = value;
        if (strcmp(argv[i], "--seed") == 0) seed = value;
        if (strcmp(argv[i], "--jobs") == 0) jobs = value;
    }
    for (uint64_t job = 1; job < jobs; job++) // a program has one standard output to look at
        if (fork() == 0) _exit(check_cases(n, seed, job, jobs) && fflush(stdout) == 0 ? 42 : 43);
    bool ok = check_cases(n, seed, 0, jobs); // an error in a case ends the process with 0
    for (int status; wait(&status) > 0;) ok = ok && WIFEXITED(status) && WEXITSTATUS(status) == 42;
    printf("%" PRIu64 " cases of seed %" PRIu64 ": %s\n", n, seed, ok ? "all the same" : "FAILED");
    return !ok;
}

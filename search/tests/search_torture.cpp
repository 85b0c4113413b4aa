// SPDX-License-Identifier: MIT
/* search/tests/search_torture.cpp: many random searches, each checked by plain code.
 *
 * Weights of 0, fixed vertices, groups, parts of unequal size, starts out of bounds, all presets
 * and objectives. Of each case a turn is made: as it is; by three threads, with the same result;
 * cut off after some publications or some jobs; with an allocation that fails, in a process of its
 * own. Every partition that is published is checked and must be better than the one before. Usage:
 * zorpel-search-torture CASES [SEED]
 */
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "search_case.h"
#include "search/rebalance.h"

/* ---- allocations that fail ---- */

extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size);
static std::atomic<long> allocations_left = -1; // -1: all succeed

extern "C" void *__wrap_malloc(size_t size)
{
    if (allocations_left < 0) return __real_malloc(size);
    return allocations_left-- > 0 ? __real_malloc(size) : nullptr;
}

/* ---- cases ---- */

static void draw_constraints(std::mt19937 &random, SearchCase *c)
{
    const size_t n = static_cast<size_t>(c->n);
    if (random() % 3 == 0) {
        c->fixed.assign(n, -1);
        const unsigned share = random() % 4 == 0 ? 1 : 5; // at times all
        for (int &p : c->fixed)
            if (random() % share == 0) p = draw(random, 0, c->nparts - 1);
    }
    if (random() % 3 == 0) {
        c->group.assign(n, -1);
        for (size_t v = 0; v < n; v++)
            if (random() % 4 == 0 && (c->fixed.empty() || c->fixed[v] < 0))
                c->group[v] = draw(random, 0, 5);
    }
    if (random() % 4 == 0) {
        c->start.resize(n);
        for (int &p : c->start) p = draw(random, 0, c->nparts - 1);
    }
    if (random() % 3 == 0) // unequal parts
        for (int64_t &most : c->most) most = most * draw(random, 60, 160) / 100;
    if (random() % 5 == 0) std::fill(c->least.begin(), c->least.end(), 0);
    for (size_t p = 0; p < c->most.size(); p++) c->least[p] = std::min(c->least[p], c->most[p]);
}

static SearchCase draw_case(std::mt19937 &random)
{
    SearchCase c;
    c.n = random() % 4 == 0 ? draw(random, 1, 12) : draw(random, 13, 260);
    c.nparts = random() % 16 == 0 ? draw(random, 1, 70) : draw(random, 2, 8);
    c.objective = static_cast<Objective>(random() % 3);
    draw_hyperedges(random, &c, draw(random, 0, 2 * c.n), random() % 8 == 0 ? 60 : 6);
    c.vwgts.assign(static_cast<size_t>(c.n), 1);
    if (random() % 2 == 0)
        for (int &w : c.vwgts) w = draw(random, 0, random() % 9 == 0 ? 400 : 7);
    if (random() % 2 == 0)
        for (int &w : c.hewgts) w = draw(random, 0, 9);
    set_epsilon(&c, draw(random, 0, 25));
    draw_constraints(random, &c);
    return c;
}

/* ---- what is published ---- */

/* In memory that a process and its child both see. */
struct Seen {
    int calls, wrong;
    int64_t objective, excess;
};

struct Watch {
    const SearchCase *c;
    Seen *seen;
    int cancel_after; // publications; 0: never
    volatile int cancel;
};

static bool keeps_constraints(const SearchCase &c, const int *part)
{
    Ints of_group(6, -1);
    for (size_t v = 0; v < c.vwgts.size(); v++) {
        if (part[v] < 0 || part[v] >= c.nparts) return false;
        if (!c.fixed.empty() && c.fixed[v] >= 0 && part[v] != c.fixed[v]) return false;
        const int group = c.group.empty() ? -1 : c.group[v];
        if (group < 0) continue;
        int *const of = &of_group[static_cast<size_t>(group)];
        if (*of >= 0 && *of != part[v]) return false;
        *of = part[v];
    }
    return true;
}

static void look(void *place, const int *part, const Found *found)
{
    Watch *const watch = static_cast<Watch *>(place);
    Seen *const seen = watch->seen;
    const PlainFigures figures = plain_figures(*watch->c, part);
    const bool right = keeps_constraints(*watch->c, part) &&
                       figures.objective == found->objective && figures.excess == found->excess;
    const bool worse = seen->calls > 0 &&
                       (figures.excess > seen->excess ||
                        (figures.excess == seen->excess && figures.objective > seen->objective));
    seen->wrong += !right || worse;
    seen->objective = figures.objective;
    seen->excess = figures.excess;
    seen->calls++;
    if (watch->cancel_after > 0 && seen->calls >= watch->cancel_after)
        __atomic_store_n(&watch->cancel, 1, __ATOMIC_RELAXED);
}

/* ---- threads ---- */

static void *start_thread(void (*work)(void *what), void *what)
{
    return new std::thread(work, what);
}

static void await_thread(void *thread)
{
    std::thread *const own = static_cast<std::thread *>(thread);
    own->join();
    delete own;
}

/* ---- turns ---- */

struct Turn {
    Schedule schedule;
    uint64_t seed;
    int threads, cancel_after;
    bool endless;
};

static Found search_once(const SearchCase &c, const Turn &turn, Seen *seen, Ints *part)
{
    const FlatHypergraph flat = c.flat();
    const Bounds bounds = c.bounds();
    const Constraints constraints = c.constraints();
    Watch watch = {&c, seen, turn.cancel_after, 0};
    Crew crew = {};
    crew.start = start_thread;
    crew.await = await_thread;
    crew.others = turn.threads - 1;
    crew.idle = crew.others;
    crew.least_pins = 1;
    int done = 0;
    SearchOptions options = {};
    options.schedule = turn.schedule;
    options.seed = turn.seed;
    options.threads = turn.threads;
    options.crew = turn.threads > 1 ? &crew : nullptr;
    options.endless = turn.endless;
    options.cancel = &watch.cancel;
    options.start = c.start.empty() ? nullptr : c.start.data();
    options.publish = look;
    options.user = &watch;
    options.done = &done;
    part->assign(static_cast<size_t>(c.n), -1);
    *seen = {};
    return search_partition(&flat, &constraints, &bounds, c.objective, &options, part->data());
}

/* Whether a packing of the heaviest first keeps the bounds; without fixed vertices and groups. */
static bool packs(const SearchCase &c)
{
    HGraph graph = {};
    graph.ncells = c.n;
    graph.cellwgt = const_cast<int *>(c.vwgts.data());
    Ints where(c.vwgts.size(), 0);
    const Bounds bounds = c.bounds();
    return pack(&graph, &bounds, nullptr, false, where.data()) == 0;
}

static const char *check(const SearchCase &c, const Found &found, const Seen &seen,
                         const Ints &part)
{
    const PlainFigures figures = plain_figures(c, part.data());
    if (seen.wrong > 0) return "a published partition is wrong or worse than one before";
    if (seen.calls == 0) return "nothing was published";
    if (!keeps_constraints(c, part.data())) return "a constraint is broken";
    if (figures.objective != found.objective || figures.excess != found.excess)
        return "the figures are wrong";
    if (figures.objective != seen.objective || figures.excess != seen.excess)
        return "what is delivered was not published last";
    if (c.fixed.empty() && c.group.empty() && figures.excess > 0 && packs(c))
        return "a packing keeps the bounds";
    return nullptr;
}

/* The same search in a process whose allocation number left fails. */
static const char *starve(const SearchCase &c, const Turn &turn, Seen *shared, long left)
{
    *shared = {};
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        Ints part;
        fclose(stderr);
        allocations_left = left;
        search_once(c, turn, shared, &part);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) return "a failing allocation ends in a signal";
    if (shared->wrong > 0) return "a partition published before a failing allocation is wrong";
    return nullptr;
}

struct Counts {
    int plain, threads, cancelled, starved;
};

static const char *try_case(unsigned seed, Seen *shared, Counts *counts)
{
    std::mt19937 random(seed);
    const SearchCase c = draw_case(random);
    Turn turn = {SCHEDULES[random() % NPRESETS], seed, 1, 0, false};
    turn.schedule.nmembers = draw(random, 1, std::min(turn.schedule.nmembers, 6));
    turn.schedule.ncombined = draw(random, 0, std::min(turn.schedule.ncombined, 6));
    turn.schedule.exact = std::min<int64_t>(turn.schedule.exact, 20000);
    turn.schedule.roomy = random() % 2 == 0;
    Ints part, again;
    const Found found = search_once(c, turn, shared, &part);
    counts->plain++;
    if (const char *const fault = check(c, found, *shared, part)) return fault;
    switch (random() % 4) {
    case 0: {
        turn.threads = 3;
        const Found other = search_once(c, turn, shared, &again);
        counts->threads++;
        if (again != part || other.objective != found.objective)
            return "threads change what is found";
        return check(c, other, *shared, again);
    }
    case 1: {
        turn.cancel_after = draw(random, 1, 4);
        turn.threads = draw(random, 1, 2);
        const Found other = search_once(c, turn, shared, &again);
        counts->cancelled++;
        return check(c, other, *shared, again);
    }
    case 2:
        counts->starved++;
        return starve(c, turn, shared, static_cast<long>(random() % 3000));
    default:
        return nullptr;
    }
}

/* An assertion that fails or a sanitizer that aborts says which case it was. */
static volatile unsigned current_seed;

static void tell_seed(int number)
{
    char text[40];
    const int n = snprintf(text, sizeof text, "seed %u: aborted\n", current_seed);
    [[maybe_unused]] const ssize_t written =
        write(STDOUT_FILENO, text, static_cast<size_t>(std::max(n, 0)));
    signal(number, SIG_DFL);
    raise(number);
}

int main(int argc, char **argv)
{
    signal(SIGABRT, tell_seed);
    const int ncases = argc > 1 ? atoi(argv[1]) : 100;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(atoi(argv[2])) : 1;
    void *const memory =
        mmap(nullptr, sizeof(Seen), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return EXIT_FAILURE;
    Counts counts = {};
    for (int i = 0; i < ncases; i++) {
        const unsigned own = seed + static_cast<unsigned>(i);
        current_seed = own;
        const char *const fault = try_case(own, static_cast<Seen *>(memory), &counts);
        if (fault == nullptr) continue;
        printf("seed %u: %s\n", own, fault);
        return EXIT_FAILURE;
    }
    printf("%d searches, %d by threads, %d cut off, %d starved: all as promised\n", counts.plain,
           counts.threads, counts.cancelled, counts.starved);
    return EXIT_SUCCESS;
}

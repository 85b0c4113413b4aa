// SPDX-License-Identifier: MIT
/* tests/embed/caps_test.cpp: memory cap, deadline and cancel flag hold in the caller's process too.
 *
 * What the library allocates here is counted by operator new, which it takes from this program.
 */
#include <atomic>
#include <climits>
#include <cstring>
#include <malloc.h>
#include <new>
#include <thread>
#include <unistd.h>

#include "process.h"
#include "sample.h"

static std::atomic<size_t> held, peak;

void *operator new(size_t size)
{
    void *const block = malloc(size > 0 ? size : 1);
    if (block == nullptr) throw std::bad_alloc();
    const size_t now = held += malloc_usable_size(block);
    for (size_t most = peak; now > most && !peak.compare_exchange_weak(most, now);) continue;
    return block;
}

static void release(void *block)
{
    if (block != nullptr) held -= malloc_usable_size(block);
    free(block);
}

void operator delete(void *block) noexcept
{
    release(block);
}

void operator delete(void *block, size_t) noexcept
{
    release(block);
}

/* Two vertices that no hyperedge joins. */
static const int NO_HYPEREDGES[] = {0};
static const zorpelx_hypergraph TWO = {2, 0, NO_HYPEREDGES, nullptr, nullptr, nullptr};

class Caps : public LeavesNothing
{
  protected:
    zorpelx_result call(const zorpelx_hypergraph &h, const zorpelx::Options &options)
    {
        part.assign(static_cast<size_t>(std::max(0, h.nvtxs)), 77);
        zorpelx_result result = new_result();
        peak = held.load();
        const size_t start = held;
        zorpelx_partition(&h, &options, part.data(), &result);
        taken = peak - start;
        EXPECT_EQ(start, held);
        return result;
    }

    std::vector<int> part;
    size_t taken = 0; // most bytes at once in the last call
};

TEST_F(Caps, absurd_numbers_of_parts_are_refused_for_nothing)
{
    zorpelx::Options options = options_for(100000000);
    options.memory = size_t{64} << 20;
    options.timeout = 0.2;
    const zorpelx_result result = call(TWO, options);
    EXPECT_EQ(ZORPELX_BAD_OPTION, result.status);
    EXPECT_STREQ("nparts is 100000000; with 2 vertices it should be at most 1000000.",
                 result.message);
    EXPECT_LT(taken, 4096u);
    const int nothing[2] = {0, 0};
    zorpelx_quality quality;
    zorpelx_quality_init(&quality, sizeof quality);
    int count = 0;
    int64_t matrix = 0;
    char message[ZORPELX_MESSAGE_SIZE];
    peak = held.load();
    const size_t start = held;
    EXPECT_EQ(ZORPELX_BAD_OPTION,
              zorpelx_evaluate(&TWO, INT_MAX, nothing, &quality, nullptr, nullptr, message));
    EXPECT_EQ(ZORPELX_BAD_OPTION,
              zorpelx_cut_hyperedges(&TWO, INT_MAX, nothing, &count, &count, message));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_cut_matrix(&TWO, INT_MAX, nothing, &matrix, message));
    EXPECT_LT(peak - start, 4096u);
}

TEST_F(Caps, what_the_call_takes_in_this_process_is_charged)
{
    zorpelx::Options options = options_for(1000000);
    options.memory = size_t{8} << 20;
    const zorpelx_result result = call(TWO, options);
    EXPECT_EQ(ZORPELX_NO_MEMORY, result.status);
    EXPECT_NE(nullptr, strstr(result.message, "The memory cap of 8388608 bytes is passed in the "
                                              "calling process: the figures of each part would "))
        << result.message;
    EXPECT_LE(taken, options.memory);
}

/* Whatever the cap: the call keeps within it, and fails only by a sentence about memory. */
TEST_F(Caps, the_cap_bounds_what_is_taken_here)
{
    if (SANITIZED) GTEST_SKIP() << "the sanitizer waits for ever where it is refused memory itself";
    const zorpelx::Hypergraph h = random_hypergraph(8000, 12000, 3, 0);
    const zorpelx_hypergraph view = h.view();
    int failed = 0, passed = 0;
    for (size_t cap = 1; cap < (size_t{1} << 26); cap += cap + 1) {
        zorpelx::Options options = options_for(8, 2, 2);
        options.nruns = 1;
        options.memory = cap;
        const zorpelx_result result = call(view, options);
        EXPECT_LE(taken, cap + 4096) << cap; // the call's own record is not charged
        if (result.status == ZORPELX_OK) passed++;
        if (result.status == ZORPELX_OK) continue;
        failed++;
        EXPECT_EQ(ZORPELX_NO_MEMORY, result.status) << cap << " " << result.message;
        EXPECT_EQ(0, passed) << "more memory was too little";
    }
    EXPECT_GT(failed, 10);
    EXPECT_GT(passed, 0);
}

TEST_F(Caps, a_cap_that_is_wide_enough_changes_nothing)
{
    const zorpelx::Hypergraph h = random_hypergraph(5000, 8000, 5);
    const zorpelx::Options free = options_for(4, 4, 2);
    EXPECT_EQ(ZORPELX_OK, call(h.view(), free).status);
    const std::vector<int> expected = part;
    for (const int jobs : {1, 2, 4}) {
        zorpelx::Options capped = options_for(4, 4, jobs);
        capped.memory = size_t{64} << 20;
        EXPECT_EQ(ZORPELX_OK, call(h.view(), capped).status);
        EXPECT_EQ(expected, part);
    }
}

/* Free blocks of the caller's heap are there for its children too. */
TEST_F(Caps, a_cap_holds_whatever_the_callers_heap_has_free)
{
    if (SANITIZED) GTEST_SKIP() << "the sanitizer's heap has no such blocks";
    std::vector<void *> blocks;
    for (int i = 0; i < 2000; i++) blocks.push_back(malloc(100000));
    for (size_t i = 0; i + 1 < blocks.size(); i++) free(blocks[i]);
    const zorpelx::Hypergraph h = random_hypergraph(50000, 80000, 1);
    zorpelx::Options options = options_for(2);
    options.memory = size_t{2} << 20;
    const zorpelx_result result = call(h.view(), options);
    EXPECT_EQ(ZORPELX_NO_MEMORY, result.status) << result.message;
    free(blocks.back());
}

/* A flag that is set ends every check before it has seen all of its array: the fault stands at the
 * end. */
TEST_F(Caps, the_cancel_flag_is_looked_at_in_every_check)
{
    constexpr int N = 200000;
    const volatile int cancel = 1;
    for (int fault = 0; fault < 5; fault++) {
        std::vector<int> eptr(N + 1), eind(2 * N), vwgts(N, 1), hewgts(N, 1), fixed(N, -1);
        for (int e = 0; e < N; e++) {
            eptr[static_cast<size_t>(e) + 1] = 2 * e + 2;
            eind[static_cast<size_t>(2 * e)] = e;
            eind[static_cast<size_t>(2 * e) + 1] = (e + 1) % N;
        }
        if (fault == 0) eptr.back() = 0;
        if (fault == 1) eind.back() = N;
        if (fault == 2) vwgts.back() = -1;
        if (fault == 3) hewgts.back() = -1;
        if (fault == 4) fixed.back() = 2;
        const zorpelx_hypergraph h = {N, N, eptr.data(), eind.data(), vwgts.data(), hewgts.data()};
        zorpelx::Options options = options_for(2);
        options.fixed = fixed.data();
        EXPECT_EQ(ZORPELX_BAD_INPUT, call(h, options).status);
        options.cancel = &cancel;
        const zorpelx_result result = call(h, options);
        EXPECT_EQ(ZORPELX_CANCELLED, result.status) << fault << result.message;
        EXPECT_STREQ("Cancelled after 0 of 1 starts; none has finished.", result.message);
        char message[ZORPELX_MESSAGE_SIZE];
        EXPECT_EQ(ZORPELX_CANCELLED, zorpelx_check(&h, &options, message));
    }
}

TEST_F(Caps, the_deadline_is_looked_at_in_checks)
{
    constexpr int N = 10000000;
    const std::vector<int> eptr = {0, N};
    std::vector<int> eind(N);
    for (int v = 0; v < N; v++) eind[static_cast<size_t>(v)] = v;
    eind.back() = N; // found by those who have all the time
    const zorpelx_hypergraph h = {N, 1, eptr.data(), eind.data(), nullptr, nullptr};
    zorpelx::Options options = options_for(2);
    options.timeout = 1e-3;
    const zorpelx_result result = call(h, options);
    EXPECT_EQ(ZORPELX_TIMEOUT, result.status) << result.message;
    EXPECT_GE(result.seconds, 1e-3);
}

/* The second start is done while the callback hears of the first; it is not evaluated any more. */
TEST_F(Caps, the_cancel_flag_is_looked_at_in_evaluations)
{
    static volatile int cancel;
    cancel = 0;
    zorpelx::Hypergraph h;
    h.nvtxs = 300000;
    h.add_hyperedge({0, 1});
    zorpelx::Options options = options_for(2, 2, 2);
    options.nruns = 1;
    options.cancel = &cancel;
    options.on_progress = [](void *, const zorpelx_progress *progress) {
        if (progress->finished == 0) return 0;
        for (const pid_t child : children_of(getpid()))
            while (status_line(child, "State")[0] != 'Z') usleep(1000);
        __atomic_store_n(&cancel, 1, __ATOMIC_RELAXED);
        return 0;
    };
    const zorpelx_result result = call(h.view(), options);
    EXPECT_EQ(ZORPELX_CANCELLED, result.status) << result.message;
    EXPECT_EQ(1, result.finished);
}

/* Many jobs are at most two for each processor: 3,000 starts cost what they cost with two. */
TEST_F(Caps, a_thousand_jobs_are_not_a_thousand_processes)
{
    zorpelx::Options options = options_for(2, 100, 1000);
    int most = 0;
    options.user = &most;
    options.on_progress = [](void *user, const zorpelx_progress *progress) {
        int &seen = *static_cast<int *>(user);
        seen = std::max({seen, progress->running, static_cast<int>(children_of(getpid()).size())});
        return 0;
    };
    const zorpelx::Hypergraph h = random_hypergraph(50, 80, 1);
    const zorpelx_result result = call(h.view(), options);
    EXPECT_EQ(ZORPELX_OK, result.status);
    EXPECT_EQ(100, result.finished);
    EXPECT_GE(most, 1);
    EXPECT_LE(most, 2 * static_cast<int>(std::max(1u, std::thread::hardware_concurrency())));
}

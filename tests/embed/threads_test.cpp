// SPDX-License-Identifier: MIT
/* tests/embed/threads_test.cpp: several threads in a start: same bits, same traces, same limits. */
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "sample.h"

constexpr int ALL_TRACES_BUT_TIMERS = 1 + 2 + 4 + 8 + 16 + 128 + 256;

static zorpelx::Options threads_for(int nparts, int threads)
{
    zorpelx::Options options = options_for(nparts);
    options.threads = threads;
    return options;
}

TEST(Threads, change_no_bit_of_the_result)
{
    for (unsigned sample = 0; sample < 6; sample++) {
        const zorpelx::Hypergraph h = random_hypergraph(3000, 4500, sample);
        zorpelx::Options options = threads_for(5 + static_cast<int>(sample), 1);
        options.ctype = 1 + static_cast<int>(sample) % 5;
        options.reconst = static_cast<int>(sample) % 2;
        options.polish = sample != 2;
        if (sample == 3) options.pre_assigned.assign(3000, -1);
        for (size_t v = 0; v < options.pre_assigned.size(); v += 5)
            options.pre_assigned[v] = static_cast<int>(v) % options.nparts;
        const zorpelx::Partition one = zorpelx::partition(h, options);
        for (const int threads : {0, 2, 3, 4, INT_MAX}) {
            options.threads = threads;
            EXPECT_EQ(one.part, zorpelx::partition(h, options).part) << threads << " threads";
        }
    }
}

/* The traces of two starts. */
static std::vector<std::string> traces_of(const zorpelx::Hypergraph &h, int threads)
{
    std::vector<std::string> texts(2);
    zorpelx::Options options = threads_for(9, threads);
    options.starts = 2;
    options.trace = ALL_TRACES_BUT_TIMERS;
    options.traces = [&](int start, std::string_view text) {
        texts[static_cast<size_t>(start)] = text;
    };
    zorpelx::partition(h, options);
    return texts;
}

TEST(Threads, put_out_traces_in_the_order_of_one_thread)
{
    const zorpelx::Hypergraph h = random_hypergraph(4000, 6000, 8);
    const std::vector<std::string> one = traces_of(h, 1);
    EXPECT_GT(one[0].size(), 100000u);
    for (const int threads : {2, 4}) EXPECT_EQ(one, traces_of(h, threads));
}

TEST(Threads, are_all_counted_in_progress)
{
    const zorpelx::Hypergraph h = random_hypergraph(4000, 6000, 9);
    for (const int threads : {1, 2, 4}) {
        zorpelx_progress last = {};
        zorpelx::Options options = threads_for(16, threads);
        options.progress = [&](const zorpelx_progress &progress) {
            last = progress;
            return false;
        };
        zorpelx::partition(h, options);
        EXPECT_EQ(30, last.runs) << threads << " threads";
        EXPECT_EQ(30, last.allruns);
    }
}

/* Threads of the children of this thread; 0 where the system does not tell. */
static int threads_of_children()
{
    FILE *const file = fopen("/proc/thread-self/children", "r");
    if (file == nullptr) return 0;
    int count = 0;
    for (int pid; fscanf(file, "%d", &pid) == 1;) {
        DIR *const tasks = opendir(("/proc/" + std::to_string(pid) + "/task").c_str());
        if (tasks == nullptr) continue;
        while (const dirent *const entry = readdir(tasks)) count += entry->d_name[0] != '.';
        closedir(tasks);
    }
    fclose(file);
    return count;
}

/* The most threads seen in one start. */
static int most_threads(const zorpelx::Hypergraph &h, int threads)
{
    int most = 0;
    zorpelx::Options options = threads_for(32, threads);
    options.progress = [&](const zorpelx_progress &) {
        most = std::max(most, threads_of_children());
        return false;
    };
    zorpelx::partition(h, options);
    return most;
}

TEST(Threads, are_started_if_wanted)
{
    const zorpelx::Hypergraph h = random_hypergraph(20000, 30000, 1);
    const int one = most_threads(h, 1);
    if (one == 0) GTEST_SKIP() << "the system does not list children, or it went too fast";
    EXPECT_EQ(1, one);
    EXPECT_GE(most_threads(h, 2), 2);
}

TEST(Threads, end_with_a_deadline_or_a_cancellation)
{
    const zorpelx::Hypergraph h = random_hypergraph(200000, 300000, 1);
    zorpelx_hypergraph view = h.view();
    std::vector<int> part(200000);
    for (const bool cancels : {false, true}) {
        volatile int cancel = 0;
        zorpelx::Options options = threads_for(64, 2);
        options.nruns = 100;
        options.timeout = cancels ? 0 : 1;
        options.cancel = &cancel;
        std::thread setter([&] {
            std::this_thread::sleep_for(std::chrono::seconds(1));
            cancel = cancels;
        });
        zorpelx_result result = new_result();
        const int status = zorpelx_partition(&view, &options, part.data(), &result);
        setter.join();
        EXPECT_EQ(cancels ? ZORPELX_CANCELLED : ZORPELX_TIMEOUT, status) << result.message;
        EXPECT_LT(result.seconds, 20);
        EXPECT_EQ(0, threads_of_children());
    }
}

TEST(Threads, share_the_memory_cap_of_their_start)
{
    if (SANITIZED) GTEST_SKIP() << "needs the system's heap";
    const zorpelx::Hypergraph h = random_hypergraph(20000, 30000, 1);
    zorpelx_hypergraph view = h.view();
    std::vector<int> part(20000);
    for (const int threads : {1, 4}) {
        zorpelx::Options options = threads_for(16, threads);
        zorpelx_result result = new_result();
        options.memory = size_t{4} << 20;
        EXPECT_EQ(ZORPELX_NO_MEMORY, zorpelx_partition(&view, &options, part.data(), &result));
        EXPECT_NE(nullptr, strstr(result.message, "Memory allocation failed for"));
        options.memory = size_t{40} << 20;
        EXPECT_EQ(ZORPELX_OK, zorpelx_partition(&view, &options, part.data(), &result))
            << result.message;
    }
}

/* Whether a start with so many threads gives a partition within a cap. */
static bool fits(const zorpelx::Hypergraph &h, int threads, size_t mebibytes)
{
    zorpelx::Options options = threads_for(16, threads);
    options.memory = mebibytes << 20;
    zorpelx_hypergraph view = h.view();
    std::vector<int> part(static_cast<size_t>(h.nvtxs));
    zorpelx_result result = new_result();
    const int status = zorpelx_partition(&view, &options, part.data(), &result);
    EXPECT_TRUE(status == ZORPELX_OK || status == ZORPELX_NO_MEMORY) << result.message;
    return status == ZORPELX_OK;
}

TEST(Threads, need_no_larger_cap_than_one)
{
    if (SANITIZED) GTEST_SKIP() << "needs the system's heap";
    const zorpelx::Hypergraph h = random_hypergraph(20000, 30000, 1);
    size_t enough = 64; // to a megabyte
    for (size_t few = 1; few + 1 < enough;) {
        const size_t middle = (few + enough) / 2;
        (fits(h, 1, middle) ? enough : few) = middle;
    }
    EXPECT_GT(enough, 2u);
    for (const int threads : {2, 4}) {
        EXPECT_TRUE(fits(h, threads, enough)) << threads << " threads in " << enough << " MB";
        EXPECT_FALSE(fits(h, threads, enough / 2));
    }
}

TEST(Threads, are_0_or_more)
{
    const zorpelx::Hypergraph h = random_hypergraph(20, 30, 1);
    const zorpelx_hypergraph view = h.view();
    zorpelx::Options options = threads_for(2, -1);
    char message[ZORPELX_MESSAGE_SIZE];
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_check(&view, &options, message));
    EXPECT_STREQ("threads is -1; it should be at least 0.", message);
}

TEST(Threads, are_the_librarys_choice_for_a_program_that_does_not_know_them)
{
    const zorpelx::Hypergraph h = random_hypergraph(3000, 4500, 1);
    const zorpelx_hypergraph view = h.view();
    zorpelx_options options; // as the header was before
    ASSERT_EQ(ZORPELX_OK, zorpelx_options_init(&options, offsetof(zorpelx_options, threads)));
    options.threads = -7; // not a part of it
    options.nparts = 8;
    std::vector<int> part(3000);
    zorpelx_result result = new_result();
    EXPECT_EQ(ZORPELX_OK, zorpelx_partition(&view, &options, part.data(), &result))
        << result.message;
}

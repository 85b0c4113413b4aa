// SPDX-License-Identifier: MIT
/* tests/embed/host_test.cpp: the caller's process survives everything and is left as it was.
 *
 * What befalls a child is arranged by a handler that fork() runs in it, before the library's own
 * code does: so every disaster comes for certain, and at once.
 */
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "process.h"
#include "sample.h"

/* Counters that children count in too. */
struct Shared {
    std::atomic<int> handlers, exits;
};
static Shared *shared;
static pid_t host;

static std::atomic<int> nforks;       // since the test began
static int first_struck, last_struck; // forks that disaster() befalls, from 1
static void (*disaster)();

static void count_fork()
{
    nforks++;
}

static void strike()
{
    if (disaster != nullptr && nforks >= first_struck && nforks <= last_struck) disaster();
}

static void count_exit()
{
    if (getpid() != host) shared->exits++;
}

class Host : public LeavesNothing
{
  protected:
    static void SetUpTestSuite()
    {
        void *const page = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(MAP_FAILED, page);
        shared = new (page) Shared{0, 0};
        host = getpid();
        pthread_atfork(count_fork, nullptr, strike);
        atexit(count_exit);
    }
    void SetUp() override
    {
        shared->handlers = shared->exits = 0;
        nforks = 0;
        disaster = nullptr;
        LeavesNothing::SetUp();
    }
    void TearDown() override
    {
        disaster = nullptr;
        LeavesNothing::TearDown();
        EXPECT_EQ(0, shared->handlers);
        EXPECT_EQ(0, shared->exits);
    }

    static void befall(void (*what)(), int first = 1, int last = 1000)
    {
        disaster = what;
        first_struck = first;
        last_struck = last;
    }
    zorpelx_result call(const zorpelx::Options &options)
    {
        const zorpelx_hypergraph view = small.view();
        part.assign(static_cast<size_t>(small.nvtxs), 77);
        zorpelx_result result = new_result();
        const int status = zorpelx_partition(&view, &options, part.data(), &result);
        EXPECT_EQ(status, result.status);
        return result;
    }
    bool untouched() const
    {
        return std::count(part.begin(), part.end(), 77) == static_cast<long>(part.size());
    }

    const zorpelx::Hypergraph small = random_hypergraph(100, 150, 1);
    std::vector<int> part;
};

static void die_of_segv()
{
    raise(SIGSEGV); // blocked now, strikes once the library lets signals in
}

TEST_F(Host, survives_a_child_killed_by_a_signal)
{
    befall(die_of_segv);
    const zorpelx_result result = call(options_for(2));
    EXPECT_EQ(ZORPELX_FAILED, result.status);
    EXPECT_NE(nullptr, strstr(result.message, "The start with seed 1 was ended by signal 11"))
        << result.message;
    EXPECT_EQ(1, result.failed);
    EXPECT_TRUE(untouched());
}

static void count_handler(int)
{
    shared->handlers++;
}

TEST_F(Host, signal_handlers_do_not_run_in_children)
{
    befall([] { raise(SIGABRT); });
    const auto old = signal(SIGABRT, count_handler);
    EXPECT_EQ(ZORPELX_FAILED, call(options_for(2)).status);
    signal(SIGABRT, old);
}

TEST_F(Host, survives_a_child_that_leaves_without_a_word)
{
    befall([] { _exit(0); });
    const zorpelx_result result = call(options_for(2));
    EXPECT_EQ(ZORPELX_FAILED, result.status);
    EXPECT_NE(nullptr, strstr(result.message, "The engine stopped in the start with seed 1"))
        << result.message;
    EXPECT_TRUE(untouched());
}

TEST_F(Host, one_dead_start_of_several_is_told_and_the_rest_decide)
{
    befall([] { raise(SIGKILL); }, 2, 2);
    const zorpelx_result result = call(options_for(4, 3, 1));
    EXPECT_EQ(ZORPELX_OK, result.status);
    EXPECT_EQ(2, result.finished);
    EXPECT_EQ(1, result.failed);
    EXPECT_NE(nullptr, strstr(result.message, "seed 2 was ended by signal 9")) << result.message;
    EXPECT_NE(2, result.seed);
    EXPECT_FALSE(untouched());
}

TEST_F(Host, the_first_failure_by_seed_is_told)
{
    befall([] { raise(nforks == 2 ? SIGBUS : SIGKILL); });
    const zorpelx_result result = call(options_for(2, 4, 3));
    EXPECT_EQ(ZORPELX_FAILED, result.status);
    EXPECT_EQ(4, result.failed);
    EXPECT_NE(nullptr, strstr(result.message, "seed 1 was ended by signal 9")) << result.message;
}

/* A start that wants more memory than it may have: the engine itself ends the child. */
static zorpelx_result run_out_of_memory()
{
    const zorpelx::Hypergraph large = random_hypergraph(200000, 300000, 1);
    const zorpelx_hypergraph view = large.view();
    zorpelx::Options options = options_for(2);
    options.memory = size_t{4} << 20;
    std::vector<int> parts(200000, 77);
    zorpelx_result result = new_result();
    zorpelx_partition(&view, &options, parts.data(), &result);
    EXPECT_EQ(200000, std::count(parts.begin(), parts.end(), 77));
    return result;
}

TEST_F(Host, survives_want_of_memory)
{
    if (SANITIZED) GTEST_SKIP() << "the sanitizer's allocator ends the process by itself";
    const zorpelx_result result = run_out_of_memory();
    EXPECT_EQ(ZORPELX_NO_MEMORY, result.status);
    EXPECT_NE(nullptr, strstr(result.message, "Memory ran out in the start with seed 1: Memory"))
        << result.message;
    zorpelx::Options options = options_for(2);
    options.memory = size_t{1} << 40; // more than there is: no cap in effect
    EXPECT_EQ(ZORPELX_OK, call(options).status);
}

static void stop_for_ever()
{
    raise(SIGSTOP);
}

TEST_F(Host, a_child_that_hangs_ends_at_the_deadline)
{
    befall(stop_for_ever);
    zorpelx::Options options = options_for(2, 3, 2);
    options.timeout = 0.2;
    const zorpelx_result result = call(options);
    EXPECT_EQ(ZORPELX_TIMEOUT, result.status);
    EXPECT_STREQ("The deadline came after 0 of 3 starts; none has finished.", result.message);
    EXPECT_EQ(0, result.finished);
    EXPECT_GE(result.seconds, 0.2);
    EXPECT_TRUE(untouched());
}

TEST_F(Host, the_deadline_delivers_the_best_finished_start)
{
    befall(stop_for_ever, 3);
    zorpelx::Options options = options_for(2, 1000, 1);
    options.timeout = 4; // plenty for two tiny starts
    const zorpelx_result result = call(options);
    EXPECT_EQ(ZORPELX_TIMEOUT, result.status);
    EXPECT_STREQ("The deadline came after 2 of 1000 starts; the best finished start is kept.",
                 result.message);
    EXPECT_EQ(2, result.finished);
    const std::vector<int> delivered = part;
    disaster = nullptr;
    zorpelx::Options one = options_for(2);
    one.seed = result.seed;
    call(one);
    EXPECT_EQ(part, delivered);
}

TEST_F(Host, the_cancel_flag_ends_the_call)
{
    befall(stop_for_ever);
    static volatile int cancel;
    cancel = 0;
    zorpelx::Options options = options_for(2, 8, 4);
    options.cancel = &cancel;
    std::thread canceller([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        __atomic_store_n(&cancel, 1, __ATOMIC_RELAXED);
    });
    const zorpelx_result result = call(options);
    canceller.join();
    EXPECT_EQ(ZORPELX_CANCELLED, result.status);
    EXPECT_TRUE(untouched());
    nforks = 0;
    EXPECT_EQ(ZORPELX_CANCELLED, call(options).status); // set already: nothing is begun
    EXPECT_EQ(0, nforks);
}

TEST_F(Host, the_progress_callback_can_cancel)
{
    zorpelx::Options options = options_for(2, 100000, 2);
    options.on_progress = [](void *, const zorpelx_progress *progress) {
        return progress->finished >= 3 ? 1 : 0;
    };
    const zorpelx_result result = call(options);
    EXPECT_EQ(ZORPELX_CANCELLED, result.status);
    EXPECT_GE(result.finished, 3);
    EXPECT_FALSE(untouched());
}

TEST_F(Host, the_generator_of_the_caller_goes_on_undisturbed)
{
    srand(7);
    std::vector<int> expected, seen;
    for (int i = 0; i < 20; i++) expected.push_back(rand());
    srand(7);
    for (int i = 0; i < 20; i++) {
        seen.push_back(rand());
        if (i == 10) call(options_for(3, 2, 2));
    }
    EXPECT_EQ(expected, seen);
}

/* Disasters of every kind, each between two numbers drawn and two words printed. */
TEST_F(Host, no_disaster_touches_the_generator_or_standard_output)
{
    const zorpelx::Options plain = options_for(2, 2, 2);
    zorpelx::Options hasty = plain, cancelled = plain;
    hasty.timeout = 0.1;
    cancelled.on_progress = [](void *, const zorpelx_progress *) { return 1; };
    std::vector<int> expected, seen, statuses;
    srand(11);
    for (int i = 0; i < 7; i++) expected.push_back(rand());
    srand(11);
    testing::internal::CaptureStdout();
    const auto suffer = [&](void (*what)(), const zorpelx::Options &chosen) {
        seen.push_back(rand());
        printf("word ");
        befall(what);
        statuses.push_back(call(chosen).status);
    };
    suffer([] { raise(SIGKILL); }, plain);
    suffer(die_of_segv, plain);
    suffer([] { _exit(3); }, plain);
    suffer(stop_for_ever, hasty);
    suffer(stop_for_ever, cancelled);
    suffer([] { srand(5), printf("child"); }, plain);
    disaster = nullptr;
    const int status = SANITIZED ? ZORPELX_NO_MEMORY : run_out_of_memory().status;
    EXPECT_EQ(ZORPELX_NO_MEMORY, status);
    seen.push_back(rand());
    EXPECT_EQ("word word word word word word ", testing::internal::GetCapturedStdout());
    EXPECT_EQ(expected, seen);
    EXPECT_EQ((std::vector<int>{ZORPELX_FAILED, ZORPELX_FAILED, ZORPELX_FAILED, ZORPELX_TIMEOUT,
                                ZORPELX_CANCELLED, ZORPELX_OK}),
              statuses);
}

TEST_F(Host, text_waiting_in_the_callers_streams_is_written_once)
{
    FILE *const file = tmpfile();
    fputs("unwritten", file);
    testing::internal::CaptureStdout();
    printf("unwritten too");
    zorpelx::Options options = options_for(3, 3, 2);
    options.trace = ZORPEL_DBG_BISECTION | ZORPEL_DBG_RUN;
    std::string traces;
    options.on_trace = [](void *user, int, const char *text, size_t length) {
        static_cast<std::string *>(user)->append(text, length);
    };
    options.user = &traces;
    call(options);
    const int status = SANITIZED ? ZORPELX_NO_MEMORY : run_out_of_memory().status;
    EXPECT_EQ("unwritten too", testing::internal::GetCapturedStdout());
    EXPECT_EQ(ZORPELX_NO_MEMORY, status);
    EXPECT_EQ(0u, traces.find("\n  Bisecting a hgraph of size [vertices=100")) << traces;
    fflush(file);
    EXPECT_EQ(9, ftell(file));
    EXPECT_EQ(9, lseek(fileno(file), 0, SEEK_END));
    fclose(file);
}

TEST_F(Host, standard_descriptors_may_be_closed)
{
    fflush(nullptr);
    int saved[3];
    for (int fd = 0; fd < 3; fd++) {
        saved[fd] = fcntl(fd, F_DUPFD_CLOEXEC, 10);
        close(fd);
    }
    const zorpelx_result result = call(options_for(2, 2, 2));
    for (int fd = 0; fd < 3; fd++) {
        dup2(saved[fd], fd);
        close(saved[fd]);
    }
    EXPECT_EQ(ZORPELX_OK, result.status) << result.message;
}

TEST_F(Host, children_keep_no_file_of_the_caller_open)
{
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    const zorpelx::Hypergraph large = random_hypergraph(20000, 30000, 1);
    zorpelx::Options options = options_for(2, 100, 1);
    options.nruns = 100000; // the child will not end before it is looked at
    bool seen_end = false;
    options.progress = [&](const zorpelx_progress &) {
        if (ends[1] >= 0) close(ends[1]);
        ends[1] = -1;
        pollfd reader = {ends[0], POLLIN, 0};
        // a child just forked may not have got to closing yet
        seen_end = ::poll(&reader, 1, 10000) == 1 && (reader.revents & POLLHUP) != 0;
        return true;
    };
    try {
        zorpelx::partition(large, options);
    } catch (const zorpelx::Error &error) {
        EXPECT_EQ(ZORPELX_CANCELLED, error.status());
    }
    EXPECT_TRUE(seen_end);
    close(ends[0]);
}

TEST_F(Host, ignored_children_are_no_trouble)
{
    const auto old = signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(ZORPELX_OK, call(options_for(2, 5, 2)).status);
    befall([] { raise(SIGKILL); });
    EXPECT_EQ(ZORPELX_FAILED, call(options_for(2)).status);
    signal(SIGCHLD, old);
}

static void reap_all(int)
{
    const int kept = errno;
    while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
    errno = kept;
}

TEST_F(Host, a_handler_that_reaps_every_child_is_no_trouble)
{
    const auto old = signal(SIGCHLD, reap_all);
    EXPECT_EQ(ZORPELX_OK, call(options_for(2, 20, 2)).status);
    signal(SIGCHLD, old);
}

TEST_F(Host, what_the_caller_ignores_stays_ignored_in_children)
{
    const int ignored[] = {SIGTERM, SIGUSR1, SIGCHLD, SIGALRM};
    for (const int number : ignored) signal(number, SIG_IGN);
    zorpelx::Options options = options_for(2, 100000, 1);
    unsigned long long mask = 0;
    options.progress = [&](const zorpelx_progress &progress) {
        if (progress.running == 0) return false;
        for (const pid_t child : children_of(getpid()))
            mask = std::stoull("0" + status_line(child, "SigIgn"), nullptr, 16);
        return (mask >> (SIGINT - 1) & 1) != 0; // the child has got so far
    };
    options.nruns = 100000;
    EXPECT_THROW(zorpelx::partition(small, options), zorpelx::Error);
    for (const int number : ignored) {
        EXPECT_EQ(1u, mask >> (number - 1) & 1) << number;
        signal(number, SIG_DFL);
    }
    EXPECT_EQ(0u, mask >> (SIGUSR2 - 1) & 1);
}

TEST_F(Host, children_go_first_when_the_system_runs_out_of_memory)
{
    const auto score = [](pid_t pid) {
        std::ifstream file("/proc/" + std::to_string(pid) + "/oom_score_adj");
        int value = -1;
        file >> value;
        return value;
    };
    const int own = score(getpid());
    if (own < 0) GTEST_SKIP() << "the system tells no such scores";
    zorpelx::Options options = options_for(2, 100000, 1);
    options.nruns = 100000;
    int seen = -1;
    options.progress = [&](const zorpelx_progress &progress) {
        for (const pid_t child : children_of(getpid())) seen = score(child);
        return seen == 1000 || progress.seconds > 10; // or the child has not got so far
    };
    EXPECT_THROW(zorpelx::partition(small, options), zorpelx::Error);
    EXPECT_EQ(1000, seen);
    EXPECT_EQ(own, score(getpid()));
}

/* Other threads hold the locks of the generator and the heap at nearly every moment. */
TEST_F(Host, forks_while_other_threads_draw_and_allocate)
{
    std::atomic<bool> stop = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; i++) {
        threads.emplace_back([&] {
            while (!stop) {
                for (int j = 0; j < 1000; j++) rand();
                const size_t size = static_cast<size_t>(rand() % 100000);
                if (!SANITIZED) free(malloc(size));
            }
        });
    }
    for (int i = 0; i < 30; i++) EXPECT_EQ(ZORPELX_OK, call(options_for(2)).status);
    stop = true;
    for (std::thread &thread : threads) thread.join();
}

TEST_F(Host, a_want_of_descriptors_is_the_systems_fault)
{
    const zorpelx_hypergraph view = small.view();
    const zorpelx::Options options = options_for(2, 3, 2);
    part.assign(100, 77);
    int *const parts = part.data(); // sanitizers want descriptors for a look at a class
    zorpelx_result result = new_result();
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none = {3, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    zorpelx_partition(&view, &options, parts, &result);
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(ZORPELX_SYSTEM, result.status);
    EXPECT_EQ(3, result.failed);
    EXPECT_NE(nullptr, strstr(result.message, "No file in memory")) << result.message;
    EXPECT_TRUE(untouched());
}

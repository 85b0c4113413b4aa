// SPDX-License-Identifier: MIT
/* tests/embed/leaving_test.cpp: callbacks that do not return leave no child, file or memory behind.
 *
 * Memory is the leak sanitizer's business, in the check preset.
 */
#include <csetjmp>
#include <csignal>
#include <cstring>
#include <pthread.h>
#include <sys/time.h>
#include <thread>

#include "process.h"
#include "sample.h"

class Leaving : public LeavesNothing
{
  public:
    void SetUp() override
    {
        options = options_for(2, 1000, 2);
        options.user = this;
        view = h.view();
        part.assign(static_cast<size_t>(h.nvtxs), 77);
        LeavesNothing::SetUp();
    }
    int call() { return zorpelx_partition(&view, &options, part.data(), &result); }
    void expect_left() const
    {
        EXPECT_EQ(static_cast<long>(part.size()), std::count(part.begin(), part.end(), 77));
        EXPECT_EQ(ZORPELX_CANCELLED, result.status);
        EXPECT_STREQ("A callback left the call.", result.message);
        EXPECT_EQ(0, result.finished);
    }

    const zorpelx::Hypergraph h = random_hypergraph(2000, 3000, 1);
    zorpelx_hypergraph view;
    zorpelx::Options options;
    zorpelx_result result = new_result();
    std::vector<int> part, kept;
    jmp_buf place;
};

TEST_F(Leaving, an_exception_of_the_progress_callback_comes_out)
{
    options.on_progress = [](void *, const zorpelx_progress *) -> int { throw 7; };
    EXPECT_THROW(call(), int);
    expect_left();
}

TEST_F(Leaving, an_exception_that_the_library_catches_itself_comes_out_too)
{
    options.on_progress = [](void *, const zorpelx_progress *) -> int { throw std::bad_alloc(); };
    EXPECT_THROW(call(), std::bad_alloc);
    expect_left();
}

TEST_F(Leaving, an_exception_of_the_trace_callback_comes_out)
{
    options.trace = ZORPEL_DBG_BISECTION;
    options.on_trace = [](void *, int, const char *text, size_t length) {
        throw std::runtime_error(std::string(text, length));
    };
    try {
        call();
        FAIL() << "nothing came out";
    } catch (const std::runtime_error &error) {
        EXPECT_NE(nullptr, strstr(error.what(), "Bisecting a hgraph"));
    }
    expect_left();
}

TEST_F(Leaving, a_jump_out_of_the_progress_callback)
{
    options.on_progress = [](void *user, const zorpelx_progress *) -> int {
        longjmp(static_cast<Leaving *>(user)->place, 1);
    };
    if (setjmp(place) == 0) {
        const int status = call(); // before the message, which a jump would leak
        FAIL() << "returned " << status;
    }
    expect_nothing_left();
    expect_left();
    options.on_progress = nullptr; // and the next call is as any other
    options.starts = 2;
    EXPECT_EQ(ZORPELX_OK, call());
}

TEST_F(Leaving, a_jump_out_of_the_trace_callback)
{
    options.trace = ZORPEL_DBG_BISECTION;
    options.on_trace = [](void *user, int, const char *, size_t) {
        longjmp(static_cast<Leaving *>(user)->place, 1);
    };
    const std::vector<std::string> maps = names_in("/proc/self/map_files");
    if (setjmp(place) == 0) {
        const int status = call(); // before the message, which a jump would leak
        FAIL() << "returned " << status;
    }
    expect_left();
    EXPECT_LE(names_in("/proc/self/map_files").size(), maps.size());
}

TEST_F(Leaving, a_jump_over_a_call_within_a_call_releases_both)
{
    options.on_progress = [](void *user, const zorpelx_progress *) {
        Leaving &outer = *static_cast<Leaving *>(user);
        zorpelx::Options inner = outer.options;
        inner.on_progress = [](void *again, const zorpelx_progress *) -> int {
            longjmp(static_cast<Leaving *>(again)->place, 1);
        };
        zorpelx_result ignored = new_result();
        std::vector<int> room(outer.part.size());
        outer.kept.swap(room); // a jump would leak it
        return zorpelx_partition(&outer.view, &inner, outer.kept.data(), &ignored);
    };
    if (setjmp(place) == 0) {
        const int status = call(); // before the message, which a jump would leak
        FAIL() << "returned " << status;
    }
    expect_left();
}

TEST_F(Leaving, a_jump_within_a_callback_is_none_of_the_calls_business)
{
    options.starts = 3;
    options.on_progress = [](void *user, const zorpelx_progress *) {
        Leaving &self = *static_cast<Leaving *>(user);
        if (setjmp(self.place) == 0) longjmp(self.place, 1);
        return 0;
    };
    EXPECT_EQ(ZORPELX_OK, call());
    EXPECT_EQ(3, result.finished);
}

TEST_F(Leaving, the_end_of_the_thread_in_a_callback)
{
    if (SANITIZED) GTEST_SKIP() << "the sanitizer takes the end of a thread for a stray access";
    options.on_progress = [](void *, const zorpelx_progress *) -> int { pthread_exit(nullptr); };
    std::thread([&] { call(); }).join();
    expect_left();
}

TEST_F(Leaving, a_cancelled_thread)
{
    if (SANITIZED) GTEST_SKIP() << "the sanitizer takes the end of a thread for a stray access";
    pthread_t thread;
    options.on_progress = nullptr;
    ASSERT_EQ(0, pthread_create(
                     &thread, nullptr,
                     [](void *self) -> void * {
                         static_cast<Leaving *>(self)->call();
                         return nullptr;
                     },
                     this));
    while (children_of(getpid()).empty()) usleep(1000);
    EXPECT_EQ(0, pthread_cancel(thread));
    void *how = nullptr;
    EXPECT_EQ(0, pthread_join(thread, &how));
    EXPECT_EQ(PTHREAD_CANCELED, how);
    expect_left();
}

static sigjmp_buf after_alarm;

/* At any moment, so within the system's heap too: what is left of that is lost. Between the calls
 * nothing is allocated, and the next host is a new process. */
TEST_F(Leaving, jumps_out_of_a_signal_handler_at_any_moment)
{
    for (int i = 0; i < 100; i++) {
        const pid_t host = fork();
        if (host == 0) {
            signal(SIGALRM, [](int) { siglongjmp(after_alarm, 1); });
            const itimerval when = {{0, 0}, {0, 1 + i * 197 % 20000}};
            if (sigsetjmp(after_alarm, 1) == 0) {
                setitimer(ITIMER_REAL, &when, nullptr);
                call();
                pause();
            }
            _exit(waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD ? 0 : 1);
        }
        int status = -1;
        ASSERT_EQ(host, waitpid(host, &status, 0));
        EXPECT_EQ(0, status) << i;
    }
}

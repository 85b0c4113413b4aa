// SPDX-License-Identifier: MIT
/* tests/unit/exit_watch.cpp: a routine that ends the process does so with status 0, which would
 * pass for a passed test; here such an end becomes a failure of the test program. Child processes,
 * in which ends are expected, are left alone.
 */
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

constexpr int ENDED_EARLY = 70; // exit status

static pid_t watched;      // the process that runs the tests
static bool ended = false; // all of them

static void judge_exit()
{
    if (ended || getpid() != watched) return;
    fprintf(stderr, "a test ended the process\n");
    _exit(ENDED_EARLY);
}

class ExitWatch : public testing::Environment
{
    void SetUp() override
    {
        watched = getpid();
        atexit(judge_exit);
    }
    void TearDown() override { ended = true; }
};

[[maybe_unused]] static testing::Environment *const watch =
    testing::AddGlobalTestEnvironment(new ExitWatch);

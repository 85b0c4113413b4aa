// SPDX-License-Identifier: MIT
/* faults/fault_points.cpp: failures injected one at a time, each in a child process. */
#include "fault_points.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
// An error exit keeps what it holds: the process ends.
extern "C" [[gnu::visibility("default")]] const char *__asan_default_options()
{
    return "detect_leaks=0:allocator_may_return_null=1:exitcode=99";
}
#endif

static bool armed = false, in_child = false, later_fail = false;
static void (*judge_ending)(const Ending &ending) = nullptr;
static long points = 0;
static int complaints = 0;

void arm_faults(bool all_later, void (*judge)(const Ending &ending))
{
    fflush(nullptr);
    later_fail = all_later;
    judge_ending = judge;
    armed = true;
}

void disarm_faults()
{
    if (in_child) {
        fflush(nullptr);
        _exit(SURVIVED);
    }
    armed = false;
}

static void become_child(int message)
{
    in_child = true;
    alarm(60);
    const int null = open("/dev/null", O_WRONLY);
    if (null < 0 || dup2(null, STDOUT_FILENO) < 0 || dup2(message, STDERR_FILENO) < 0) _exit(98);
}

static Ending wait_for(pid_t child, int message)
{
    Ending ending = {};
    char block[4096];
    for (ssize_t got; (got = read(message, block, sizeof block)) > 0;)
        ending.message.append(block, static_cast<size_t>(got));
    close(message);
    int status = 0;
    if (waitpid(child, &status, 0) != child) abort();
    ending.signalled = WIFSIGNALED(status);
    ending.status = ending.signalled ? WTERMSIG(status) : WEXITSTATUS(status);
    return ending;
}

bool fault_here()
{
    if (!armed) return false;
    if (in_child) return later_fail;
    points++;
    int ends[2];
    if (pipe(ends) != 0) abort();
    const pid_t child = fork();
    if (child < 0) abort();
    if (child == 0) {
        close(ends[0]);
        become_child(ends[1]);
        close(ends[1]);
        return true;
    }
    close(ends[1]);
    armed = false; // the judge's own calls do not fail
    judge_ending(wait_for(child, ends[0]));
    armed = true;
    return false;
}

long count_points()
{
    return points;
}

void complain(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    vfprintf(stderr, format, args);
    va_end(args);
    fprintf(stderr, "\n");
    complaints++;
}

int count_complaints()
{
    return complaints;
}

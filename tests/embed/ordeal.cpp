// SPDX-License-Identifier: MIT
/* tests/embed/ordeal.cpp: a host of libzorpelx under kills, interrupts and failing system calls.
 *
 * Usage: embed_ordeal kills|hosts|interrupts|failures COUNT SEED
 *
 *   kills       COUNT children are killed at random moments of calls
 *   hosts       COUNT processes that make calls are killed at random moments
 *   interrupts  COUNT signals reach a host that takes them for a cancellation, at random moments
 *   failures    system calls fail one after the other, in the host and its children, until COUNT
 *               have
 *
 * After each call no child and no file may be left; what is delivered must be a partition with the
 * figures told, and if none is, the array is as it was. The program prints what it has done and
 * ends with 1 at the first thing that is not so.
 */
// What stands below in place of the C library's calls has bodies already in fortified headers.
#undef _FORTIFY_SOURCE
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <random>
#include <semaphore.h>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "sample.h"

/* Failures to come: call number `fatal` of those below fails with `code`. Children count on from
 * where their host was. */
struct Plan {
    std::atomic<int> fired; // shared with children
};
static Plan *plan;
static int calls, fatal, code;

/* What is called again and again counts only so often. */
constexpr int MOST_OF_A_KIND = 6;
enum Kind { RARE, PREAD, WAIT, NAP, NKINDS };
static int counted[NKINDS];

static bool fails(Kind kind = RARE)
{
    if (fatal == 0 || (kind != RARE && ++counted[kind] > MOST_OF_A_KIND) || ++calls != fatal)
        return false;
    plan->fired++;
    errno = code;
    return true;
}

template <class Function> static Function *real(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/* The library finds these before the C library's. */
#pragma GCC visibility push(default)
extern "C" {
pid_t fork()
{
    return fails() ? -1 : real<pid_t()>("fork")();
}

int memfd_create(const char *name, unsigned flags) noexcept
{
    return fails() ? -1 : real<int(const char *, unsigned)>("memfd_create")(name, flags);
}

int fcntl(int fd, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    return fails() ? -1 : real<int(int, int, void *)>("fcntl")(fd, command, argument);
}

void *mmap(void *address, size_t size, int access, int flags, int fd, off_t offset) noexcept
{
    if (fails()) return MAP_FAILED;
    return real<void *(void *, size_t, int, int, int, off_t)>("mmap")(address, size, access, flags,
                                                                      fd, offset);
}

int ftruncate(int fd, off_t size) noexcept
{
    return fails() ? -1 : real<int(int, off_t)>("ftruncate")(fd, size);
}

ssize_t pread(int fd, void *bytes, size_t size, off_t place)
{
    return fails() ? -1
                   : real<ssize_t(int, void *, size_t, off_t)>("pread")(fd, bytes, size, place);
}

int prctl(int option, ...) noexcept
{
    va_list arguments;
    va_start(arguments, option);
    const unsigned long argument = va_arg(arguments, unsigned long);
    va_end(arguments);
    return fails() ? -1 : real<int(int, unsigned long)>("prctl")(option, argument);
}

int open(const char *name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = va_arg(arguments, unsigned);
    va_end(arguments);
    return fails() ? -1 : real<int(const char *, int, unsigned)>("open")(name, flags, mode);
}

FILE *fopen(const char *name, const char *mode)
{
    return fails() ? nullptr : real<FILE *(const char *, const char *)>("fopen")(name, mode);
}

FILE *fdopen(int fd, const char *mode) noexcept
{
    return fails() ? nullptr : real<FILE *(int, const char *)>("fdopen")(fd, mode);
}

int dup2(int from, int to) noexcept
{
    return fails() ? -1 : real<int(int, int)>("dup2")(from, to);
}

int getrlimit(__rlimit_resource_t resource, rlimit *limit) noexcept
{
    return fails() ? -1 : real<int(__rlimit_resource_t, rlimit *)>("getrlimit")(resource, limit);
}

int sem_clockwait(sem_t *semaphore, clockid_t clock, const timespec *until)
{
    if (fails(NAP)) return -1;
    return real<int(sem_t *, clockid_t, const timespec *)>("sem_clockwait")(semaphore, clock,
                                                                            until);
}

/* A child that is there can't be missing: only an interrupt may come in between. */
pid_t waitpid(pid_t pid, int *status, int options)
{
    if (code == EINTR && fails(WAIT)) return -1;
    return real<pid_t(pid_t, int *, int)>("waitpid")(pid, status, options);
}
}
#pragma GCC visibility pop

[[noreturn]] static void give_up(const std::string &what, int round)
{
    fprintf(stderr, "round %d: %s\n", round, what.c_str());
    _exit(1);
}

/* Descriptors that are open, as bits of the first 64. */
static uint64_t open_descriptors()
{
    uint64_t bits = 0;
    for (int fd = 0; fd < 64; fd++)
        if (real<int(int, int)>("fcntl")(fd, F_GETFD) >= 0) bits |= uint64_t{1} << fd;
    return bits;
}

static const zorpelx::Hypergraph SAMPLE = random_hypergraph(400, 600, 1);

struct Outcome {
    zorpelx_result result = new_result();
    std::vector<int> part = std::vector<int>(static_cast<size_t>(SAMPLE.nvtxs), 77);
};

static Outcome call(const zorpelx::Options &options)
{
    Outcome outcome;
    const zorpelx_hypergraph view = SAMPLE.view();
    zorpelx_partition(&view, &options, outcome.part.data(), &outcome.result);
    return outcome;
}

/* What any call must leave behind. */
static void check(const Outcome &outcome, uint64_t files, int round)
{
    const zorpelx_result &result = outcome.result;
    if (waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD) give_up("a child is left", round);
    if (open_descriptors() != files) give_up("a file is left", round);
    if (result.status != ZORPELX_OK && result.message[0] == '\0') give_up("no sentence", round);
    if (result.finished == 0) {
        if (result.status == ZORPELX_OK) give_up("a success without a partition", round);
        for (const int p : outcome.part)
            if (p != 77) give_up("the array was written to", round);
        return;
    }
    const zorpelx::Quality quality = zorpelx::evaluate(SAMPLE, 4, outcome.part);
    if (quality.cut != result.cut) give_up("the cut is another", round);
}

static int moment(std::mt19937 &chance, int most)
{
    return std::uniform_int_distribution<int>(0, most)(chance);
}

/* Kills one of the children of this process after a while; returns whether there was one. */
static bool kill_a_child(std::mt19937 &chance)
{
    std::this_thread::sleep_for(std::chrono::microseconds(moment(chance, 12000)));
    const std::string name = "/proc/self/task/" + std::to_string(getpid()) + "/children";
    FILE *const file = fopen(name.c_str(), "r");
    if (file == nullptr) return false;
    std::vector<pid_t> children;
    for (int pid; fscanf(file, "%d", &pid) == 1;) children.push_back(pid);
    fclose(file);
    if (children.empty()) return false;
    const size_t which = static_cast<size_t>(moment(chance, static_cast<int>(children.size()) - 1));
    return kill(children[which], SIGKILL) == 0;
}

static void kill_children(int count, std::mt19937 &chance)
{
    const uint64_t files = open_descriptors();
    int killed = 0, failed = 0, rounds = 0;
    for (; killed < count && rounds < 100 * count; rounds++) {
        std::mt19937 own(chance());
        std::thread killer([&] { killed += kill_a_child(own); });
        const Outcome outcome = call(options_for(4, 3, 2));
        killer.join();
        check(outcome, files, rounds);
        failed += outcome.result.failed;
        if (outcome.result.status != ZORPELX_OK && outcome.result.status != ZORPELX_FAILED)
            give_up(outcome.result.message, rounds);
    }
    if (killed < count) give_up("too few children were met", rounds);
    printf("%d children killed in %d calls, %d starts failed\n", killed, rounds, failed);
    if (failed == 0) give_up("no start failed", rounds);
}

static void kill_hosts(int count, std::mt19937 &chance)
{
    prctl(PR_SET_CHILD_SUBREAPER, 1); // orphans come here
    int orphans = 0;
    for (int round = 0; round < count; round++) {
        const pid_t host = fork();
        if (host == 0)
            for (;;) call(options_for(4, 3, 2));
        std::this_thread::sleep_for(std::chrono::microseconds(moment(chance, 20000)));
        kill(host, SIGKILL);
        waitpid(host, nullptr, 0);
        int waited = 0;
        for (int status; true;) {
            const pid_t orphan = waitpid(-1, &status, WNOHANG);
            if (orphan < 0) break; // none is left
            if (orphan > 0) orphans++;
            if (orphan == 0 && ++waited > 10000) give_up("a child outlives its host", round);
            if (orphan == 0) usleep(1000);
        }
    }
    printf("%d hosts killed, %d children went with them\n", count, orphans);
}

static volatile int cancel;

static void interrupt_calls(int count, std::mt19937 &chance)
{
    struct sigaction action = {};
    action.sa_handler = [](int) { cancel = 1; };
    sigaction(SIGINT, &action, nullptr);
    const uint64_t files = open_descriptors();
    int cancelled = 0, delivered = 0;
    const pthread_t caller = pthread_self();
    for (int round = 0; round < count; round++) {
        cancel = 0;
        const int delay = moment(chance, 60000);
        std::thread interrupter([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(delay));
            pthread_kill(caller, SIGINT);
        });
        zorpelx::Options options = options_for(4, 1000, 2);
        options.cancel = &cancel;
        const Outcome outcome = call(options);
        interrupter.join();
        check(outcome, files, round);
        if (outcome.result.status != ZORPELX_CANCELLED) give_up(outcome.result.message, round);
        cancelled += outcome.result.finished == 0;
        delivered += outcome.result.finished > 0;
    }
    printf("%d calls interrupted: %d delivered a partition, %d had none\n", count, delivered,
           cancelled);
}

static void ignore_trace(void *, int, const char *, size_t)
{
}

static void fail_calls(int count)
{
    void *const page =
        mmap(nullptr, sizeof(Plan), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    plan = new (page) Plan{{0}};
    fflush(stdout);
    const int output = dup(STDOUT_FILENO), sink = memfd_create("sink", MFD_CLOEXEC);
    dup2(sink, STDOUT_FILENO); // the host's: nobody may write there
    const uint64_t files = open_descriptors();
    int rounds = 0, bad = 0;
    for (int kind = 0; plan->fired < count; kind++) {
        zorpelx::Options options = options_for(4, 2, 2);
        options.nruns = 1;
        options.timeout = 60; // none may hang
        options.memory = kind % 2 == 0 ? 0 : size_t{256} << 20;
        if (kind % 3 == 1) options.trace = ZORPEL_DBG_BISECTION;
        if (kind % 3 == 1) options.on_trace = ignore_trace;
        if (kind % 4 == 3) options.timeout = 0.01; // ends while children are at work
        if (kind % 3 == 2) options.on_progress = [](void *, const zorpelx_progress *) { return 0; };
        for (const int error : {ENOMEM, EMFILE, EAGAIN, EINTR, EPERM, ENOSYS}) {
            for (int before = -1, number = 1; before != plan->fired && number < 1000; number++) {
                before = plan->fired;
                std::fill(counted, counted + NKINDS, 0);
                calls = 0, fatal = number, code = error;
                const Outcome outcome = call(options);
                fatal = 0;
                rounds++;
                check(outcome, files, rounds);
                if (lseek(sink, 0, SEEK_END) != 0)
                    give_up("the host's output was written to", rounds);
                const int status = outcome.result.status;
                bad += status != ZORPELX_OK;
                if ((status == ZORPELX_TIMEOUT && options.timeout > 1) ||
                    status == ZORPELX_BAD_OPTION || status == ZORPELX_BAD_INPUT)
                    give_up(outcome.result.message, rounds);
            }
        }
        if (rounds > 100 * count) give_up("too few calls to fail", rounds);
    }
    dup2(output, STDOUT_FILENO);
    printf("%d system calls failed in %d calls, %d of which had to tell\n", plan->fired.load(),
           rounds, bad);
}

int main(int argc, char **argv)
{
    const std::string what = argc == 4 ? argv[1] : "";
    const int count = argc == 4 ? atoi(argv[2]) : 0;
    std::mt19937 chance(argc == 4 ? static_cast<unsigned>(atoi(argv[3])) : 0);
    if (what == "kills") kill_children(count, chance);
    if (what == "hosts") kill_hosts(count, chance);
    if (what == "interrupts") interrupt_calls(count, chance);
    if (what == "failures") fail_calls(count);
    return count > 0 ? 0 : 2;
}

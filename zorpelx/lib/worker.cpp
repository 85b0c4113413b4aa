// SPDX-License-Identifier: MIT
/* zorpelx/lib/worker.cpp: the engine at work in a child process.
 *
 * The child is a copy of the caller's process with this thread only. Before the engine runs it
 * drops all that could reach back: signal handlers, open files, the caller's streams with what
 * they have buffered. It leaves by _exit(), so no handler of the caller's runs there. What it has
 * to say goes to two files in memory, its partition to shared memory; the done flag is set last,
 * so a partition is either whole or not there.
 */
#include "worker.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "crew.h"
#include "engine_memory.h"
#include "partition/entry.h"

constexpr rlim_t LEAST_TEXT = rlim_t{64} << 10;  // bytes that a child may always write
constexpr rlim_t MOST_TRACE = rlim_t{256} << 20; // bytes of a trace kept for the caller
constexpr int SETUP_FAILED = 71;                 // status of a child that never ran the engine

SharedMemory::SharedMemory(size_t bytes) : size(bytes)
{
    start = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) throw std::bad_alloc();
}

SharedMemory::~SharedMemory()
{
    munmap(start, size);
}

Bell::Bell() : memory(sizeof(sem_t)), semaphore(static_cast<sem_t *>(memory.data()))
{
    sem_init(semaphore, 1, 0);
}

Bell::~Bell()
{
    sem_destroy(semaphore);
}

void Bell::ring()
{
    sem_post(semaphore);
}

void Bell::wait(double seconds)
{
    timespec until;
    clock_gettime(CLOCK_MONOTONIC, &until);
    const long nanoseconds = until.tv_nsec + static_cast<long>(std::max(0.0, seconds) * 1e9);
    until.tv_sec += nanoseconds / 1000000000;
    until.tv_nsec = nanoseconds % 1000000000;
    sem_clockwait(semaphore, CLOCK_MONOTONIC, &until); // a signal may end it early: no harm
}

/* Above the standard descriptors, which the child replaces even if the caller has closed them. */
Scratch::Scratch()
{
    const int low = memfd_create("zorpelx", MFD_CLOEXEC);
    descriptor = low < 0 ? -1 : fcntl(low, F_DUPFD_CLOEXEC, 3);
    if (low >= 0) close(low);
}

Scratch::~Scratch()
{
    close_now();
}

void Scratch::close_now()
{
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
}

size_t Scratch::size() const
{
    struct stat status;
    return fstat(descriptor, &status) == 0 ? static_cast<size_t>(status.st_size) : 0;
}

bool Scratch::clear()
{
    return ftruncate(descriptor, 0) == 0 && lseek(descriptor, 0, SEEK_SET) == 0;
}

Worker::Worker(Bell &ring, int nvtxs, bool search)
    : bell(ring), memory(footprint(nvtxs, search)), board(static_cast<Board *>(memory.data())),
      parts(reinterpret_cast<int *>(board + 1))
{
}

Worker::~Worker()
{
    stop();
    drop_trace();
}

/* Blocks every signal in this thread while it lives. */
class SignalPause
{
  public:
    SignalPause()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    ~SignalPause() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    SignalPause(const SignalPause &) = delete;
    SignalPause &operator=(const SignalPause &) = delete;

  private:
    sigset_t before;
};

Fault Worker::start(const Task &what)
{
    if (out.fd() < 0 || err.fd() < 0)
        return fault(ZORPELX_SYSTEM, "No file in memory for a start: too many open files?");
    work = what;
    if (!out.clear() || !err.clear())
        return fault(ZORPELX_SYSTEM, "No empty file in memory for a start: %s.", strerror(errno));
    scanner.restart();
    *board = {};
    int channel = -1; // of the child
    if (what.options->channel != nullptr) {
        channel = what.options->channel(what.options->channel_user);
        if (channel < 0)
            return fault(ZORPELX_SYSTEM, "There is no channel for the jobs of the search.");
    }
    const pid_t parent = getpid();
    const SignalPause pause; // no handler of the caller's may run in the child
    pid = fork();
    if (pid == 0) run_child(parent, channel);
    if (channel >= 0) close(channel);
    if (pid < 0) return fault(ZORPELX_SYSTEM, "No process for a start: %s.", strerror(errno));
    now = State::Busy;
    return {};
}

/* The rest of this file up to poll() runs in the child. */

/* No handler of the caller's; what the caller ignores stays ignored. The terminal's signals, and
 * the TERM that a batch system sends to all processes of a job, are for the caller to act on. */
static void forget_signals()
{
    for (int number = 1; number < NSIG; number++) {
        struct sigaction action;
        const bool ignored =
            sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
        if (!ignored) signal(number, SIG_DFL);
    }
    for (const int number : {SIGINT, SIGTERM, SIGQUIT, SIGHUP, SIGPIPE, SIGXFSZ})
        signal(number, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

/* A system that runs out of memory takes this process first. */
static void volunteer_for_want_of_memory()
{
    const int file = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
    if (file < 0) return; // then as likely as the caller
    [[maybe_unused]] const ssize_t written = write(file, "1000", 4);
    close(file);
}

/* Ends the child unless a step of its setting up was right. */
static void set_up(bool right)
{
    if (!right) _exit(SETUP_FAILED);
}

static void die_with(pid_t parent)
{
    set_up(prctl(PR_SET_PDEATHSIG, SIGKILL) == 0);
    set_up(getppid() == parent); // or it went before the line above
}

static bool lower_limit(int resource, rlim_t value)
{
    rlimit limit;
    if (getrlimit(resource, &limit) != 0) return false;
    limit.rlim_cur = std::min(limit.rlim_cur, value);
    return setrlimit(resource, &limit) == 0;
}

constexpr int CHANNEL = 3; // descriptor of the channel, if there is one

/* Keeps nothing open but out and err, as standard output and error, and the channel. The caller's
 * own must not be written to, whatever fails. */
static void replace_files(int out, int err, int channel)
{
    if (channel >= 0 && channel < CHANNEL) channel = fcntl(channel, F_DUPFD, CHANNEL);
    const int null = open("/dev/null", O_RDONLY);
    if (null < 0 || (null > 0 && dup2(null, 0) < 0)) close(0);
    set_up(dup2(out, 1) == 1 && dup2(err, 2) == 2);
    if (channel >= 0) set_up(dup2(channel, CHANNEL) == CHANNEL);
    closefrom(channel >= 0 ? CHANNEL + 1 : CHANNEL);
    stdout = fdopen(1, "w"); // new streams: the caller's hold text of the caller
    stderr = fdopen(2, "w");
    set_up(stdout != nullptr && stderr != nullptr);
}

/* Bytes of address space in use, or 0 if the system does not tell. */
static size_t address_space()
{
    FILE *const file = fopen("/proc/self/statm", "r");
    if (file == nullptr) return 0;
    unsigned long pages = 0;
    if (fscanf(file, "%lu", &pages) != 1) pages = 0;
    fclose(file);
    return pages * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

static void cap_memory(size_t most)
{
    if (most == SIZE_MAX) return;
    const size_t used = address_space();
    if (used == 0) {
        fprintf(stderr, "The memory cap needs /proc.\n");
        fflush(stderr);
        _exit(SETUP_FAILED);
    }
    set_up(lower_limit(RLIMIT_AS, most > RLIM_INFINITY - used ? RLIM_INFINITY : used + most));
    cap_engine_memory(most);
}

static void call_engine(const Task &task, int trace, bool ordered, int *part)
{
    const zorpelx_hypergraph &h = *task.hypergraph;
    const zorpelx_options &o = *task.options;
    const int options[ZORPEL_NOPTIONS] = {
        1, o.nruns, o.ctype, o.rtype, o.vcycle, o.reconst, o.fixed != nullptr, task.seed, trace};
    if (o.fixed != nullptr) std::copy(o.fixed, o.fixed + h.nvtxs, part);
    Crew crew = make_crew(task.threads, ordered);
    int cut;
    partition_with_crew(h.nvtxs, h.nhedges, h.vwgts, h.eptr, h.eind, h.hewgts, o.nparts, o.ubfactor,
                        options, part, &cut, o.polish, &crew);
}

static void call_search(const Task &task, Board *board, int *parts)
{
    Crew crew = make_crew(task.threads, false);
    try {
        const int channel = task.options->channel != nullptr ? CHANNEL : -1;
        search_and_publish(*task.hypergraph, *task.options, *task.limits, task.seed, &crew,
                           task.threads, channel, board, parts);
    } catch (const std::bad_alloc &) {
        fprintf(stderr, "Memory allocation failed for the search.\n");
        fflush(stderr);
        _exit(0);
    }
}

/* The traces that the caller gets. */
static int wanted_traces(const zorpelx_options &options)
{
    return options.on_trace != nullptr ? options.trace : 0;
}

static bool reads_progress(const zorpelx_options &options)
{
    return !is_search(options) && options.on_progress != nullptr && wanted_traces(options) == 0;
}

void Worker::run_child(pid_t parent, int channel)
{
    const zorpelx_options &options = *work.options;
    const bool progress = reads_progress(options);
    die_with(parent);
    forget_signals();
    volunteer_for_want_of_memory();
    replace_files(out.fd(), err.fd(), channel);
    if (progress) setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    if (!progress)
        lower_limit(RLIMIT_FSIZE, std::clamp<rlim_t>(work.memory, LEAST_TEXT, MOST_TRACE));
    lower_limit(RLIMIT_CORE, 0);
    cap_memory(work.memory);
    if (is_search(options))
        call_search(work, board, parts);
    else
        call_engine(work, progress ? PROGRESS_TRACES : wanted_traces(options), !progress, parts);
    fflush(stdout);
    __atomic_store_n(&board->done, 1, __ATOMIC_RELEASE);
    bell.ring();
    _exit(0);
}

/* From here on the caller's process again. */

/* What the child wrote on its error stream, as one line. */
static std::string last_words(const Scratch &err)
{
    char text[ZORPELX_MESSAGE_SIZE / 2];
    const ssize_t got = pread(err.fd(), text, sizeof text, 0);
    std::string words(text, got > 0 ? static_cast<size_t>(got) : 0);
    std::replace_if(
        words.begin(), words.end(), [](char c) { return c == '\n' || c == '\0'; }, ' ');
    while (!words.empty() && words.front() == ' ') words.erase(0, 1);
    while (!words.empty() && words.back() == ' ') words.pop_back();
    return words;
}

static Fault explain(const Task &task, int wait_status, bool known, const std::string &words)
{
    const int seed = task.seed;
    const char *const text = words.c_str();
    if (words.rfind("Memory allocation failed", 0) == 0)
        return fault(ZORPELX_NO_MEMORY, "Memory ran out in the start with seed %d: %s", seed, text);
    if (!known)
        return fault(ZORPELX_FAILED,
                     "The start with seed %d ended without a partition, and the caller reaped its "
                     "process. %s",
                     seed, text);
    if (WIFSIGNALED(wait_status) && WTERMSIG(wait_status) == SIGKILL)
        return fault(ZORPELX_FAILED,
                     "The start with seed %d was ended by signal %d (%s), as by a system that runs "
                     "out of memory. %s",
                     seed, SIGKILL, strsignal(SIGKILL), text);
    if (WIFSIGNALED(wait_status))
        return fault(ZORPELX_FAILED, "The start with seed %d was ended by signal %d (%s). %s", seed,
                     WTERMSIG(wait_status), strsignal(WTERMSIG(wait_status)), text);
    if (WEXITSTATUS(wait_status) == SETUP_FAILED)
        return fault(ZORPELX_SYSTEM, "The start with seed %d could not be set up. %s", seed, text);
    return fault(ZORPELX_FAILED, "The engine stopped in the start with seed %d: %s", seed, text);
}

void Worker::reap(int wait_status, bool known)
{
    pid = -1;
    now = __atomic_load_n(&board->done, __ATOMIC_ACQUIRE) != 0 ? State::Done : State::Failed;
    if (now == State::Failed) why = explain(work, wait_status, known, last_words(err));
}

void Worker::poll(bool for_deaths)
{
    const bool rang = __atomic_load_n(&board->done, __ATOMIC_ACQUIRE) != 0;
    if (!rang && !for_deaths) return;
    int wait_status = 0;
    pid_t found = waitpid(pid, &wait_status, WNOHANG);
    if (found == 0 && rang) { // on its way out
        kill(pid, SIGKILL);
        do {
            found = waitpid(pid, &wait_status, 0);
        } while (found < 0 && errno == EINTR);
    }
    if (found == 0 || (found < 0 && errno == EINTR)) return;
    reap(wait_status, found > 0);
}

void Worker::end_child()
{
    if (now != State::Busy) return;
    int wait_status;
    const pid_t found = waitpid(pid, &wait_status, WNOHANG);
    if (found == 0 || (found < 0 && errno == EINTR)) {
        kill(pid, SIGKILL);
        while (waitpid(pid, &wait_status, 0) < 0 && errno == EINTR) continue;
    }
    pid = -1;
}

const int *Worker::part() const
{
    const int latest = board->published > 0 ? (board->published - 1) % 2 : 0;
    return parts + static_cast<size_t>(latest) * static_cast<size_t>(work.hypergraph->nvtxs);
}

void Worker::harvest()
{
    end_child();
    now = __atomic_load_n(&board->published, __ATOMIC_ACQUIRE) > 0 ? State::Done : State::Idle;
}

void Worker::stop()
{
    end_child();
    now = State::Idle;
}

void Worker::abandon()
{
    end_child();
    now = State::Idle;
    out.close_now();
    err.close_now();
}

void Worker::scan(Counts *counts)
{
    if (reads_progress(*work.options)) scanner.scan(out.fd(), counts);
}

void Worker::drop_trace()
{
    if (trace != nullptr) munmap(trace, trace_size);
    trace = nullptr;
}

void Worker::deliver_trace()
{
    const zorpelx_options &options = *work.options;
    if (options.on_trace == nullptr) return;
    trace_size = reads_progress(options) ? 0 : out.size();
    void *const text = trace_size > 0
                           ? mmap(nullptr, trace_size, PROT_READ, MAP_PRIVATE, out.fd(), 0)
                           : MAP_FAILED;
    trace = text != MAP_FAILED ? text : nullptr;
    options.on_trace(options.user, work.start, trace != nullptr ? static_cast<char *>(trace) : "",
                     trace != nullptr ? trace_size : 0);
    drop_trace();
}

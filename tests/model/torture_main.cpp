// SPDX-License-Identifier: MIT
/* model/torture_main.cpp: zorpel-torture, random cases in child processes, failures shrunk.
 *
 * Cases run in children, a batch each, so that one that crashes or ends the process takes only its
 * batch with it: a shared counter tells which case it was. That case is repeated alone, shrunk, and
 * saved; the batch goes on behind it.
 */
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "torture_check.h"
#include "torture_draw.h"
#include "torture_shrink.h"

#if defined(__SANITIZE_ADDRESS__)
// Cases that end the process on purpose would otherwise be taken for leaks.
extern "C" [[gnu::visibility("default")]] const char *__asan_default_options()
{
    return "abort_on_error=0:exitcode=99";
}
#endif

constexpr int CLEAN = 42; // status of a child whose cases are all well; errors end with 0
constexpr int FAILED = 43;
constexpr uint64_t BATCH = 200;
constexpr int MOST_TRIES = 3000;
constexpr unsigned CASE_SECONDS = 300; // no case may run longer
constexpr size_t MOST_FAILURES = 10;

struct Request {
    uint64_t n, seed;
    double seconds; // 0: no limit
    int jobs, small;
    const char *out;
    bool checksum;
    std::vector<const char *> replay;
};

// Shared with the child of one job.
struct Board {
    uint64_t next; // case at work
    char why[512];
};

static Case case_of(const Request &request, uint64_t i)
{
    const uint64_t seed = request.seed * 0x100000001b3u + i;
    return request.small > 0 ? draw_small_case(seed, request.small) : draw_case(seed);
}

static Board *make_board()
{
    void *const place =
        mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED) abort();
    return static_cast<Board *>(place);
}

[[noreturn]] static void finish_failed(Board *board, const std::string &why)
{
    snprintf(board->why, sizeof board->why, "%s", why.c_str());
    _exit(FAILED);
}

/* ---- one case alone ------------------------------------------------------------------------ */

static std::string describe_status(int status)
{
    if (WIFSIGNALED(status)) return std::string("ended by signal: ") + strsignal(WTERMSIG(status));
    return "ended by itself with status " + std::to_string(WEXITSTATUS(status));
}

static bool quiet = false; // shrinking repeats the same message without end

// Runs a case in a child of its own; an empty text when all is well.
static std::string run_alone(const Case &c)
{
    static Board *const board = make_board();
    board->why[0] = '\0';
    fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) abort();
    if (child == 0) {
        alarm(CASE_SECONDS);
        if (quiet && freopen("/dev/null", "w", stderr) == nullptr) abort();
        const std::string why = check_case(c);
        if (!why.empty()) finish_failed(board, why);
        _exit(CLEAN);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child) abort();
    if (WIFEXITED(status) && WEXITSTATUS(status) == CLEAN) return {};
    if (WIFEXITED(status) && WEXITSTATUS(status) == FAILED) return board->why;
    return describe_status(status);
}

static std::string kind_wanted; // shrinking must not slip from one mistake to another

static bool fails_alike(const Case &c)
{
    return run_alone(c).substr(0, 2) == kind_wanted;
}

static void report_failure(const Request &request, uint64_t i, const std::string &first_why)
{
    Case c = case_of(request, i);
    printf("case %" PRIu64 " of seed %" PRIu64 " (%s): %s\n", i, request.seed, c.family.c_str(),
           first_why.c_str());
    const std::string why = run_alone(c);
    if (why.empty()) {
        printf("  passes alone: it depends on the cases before it\n");
        return;
    }
    kind_wanted = why.substr(0, 2);
    quiet = true;
    c = shrink_case(c, fails_alike, MOST_TRIES);
    const std::string smallest_why = run_alone(c);
    quiet = false;
    const std::string name = std::string(request.out) + "/" + std::to_string(request.seed) + "-" +
                             std::to_string(i) + ".case";
    printf("  %d vertices, %d hyperedges after shrinking: %s\n  %s %s\n", c.nvtxs, count_hedges(c),
           smallest_why.c_str(), save_case(name, c, smallest_why) ? "saved as" : "cannot write",
           name.c_str());
}

/* ---- batches ------------------------------------------------------------------------------- */

struct Job {
    pid_t child;
    uint64_t end; // of the batch
    Board *board;
};

static void start_job(const Request &request, Job *job, uint64_t begin, uint64_t end)
{
    job->end = end;
    job->board->next = begin;
    job->board->why[0] = '\0';
    fflush(nullptr);
    job->child = fork();
    if (job->child < 0) abort();
    if (job->child > 0) return;
    for (uint64_t i = begin; i < end; i++) {
        job->board->next = i;
        alarm(CASE_SECONDS);
        const std::string why = check_case(case_of(request, i));
        if (!why.empty()) finish_failed(job->board, why);
    }
    _exit(CLEAN);
}

struct Progress {
    uint64_t started, finished;
    std::vector<std::pair<uint64_t, std::string>> failures;
};

// Waits for a child; starts the rest of its batch if it failed. False when the job is free.
static bool end_job(const Request &request, Job *job, int status, Progress *progress)
{
    const Board *const board = job->board;
    if (WIFEXITED(status) && WEXITSTATUS(status) == CLEAN) return false;
    const bool judged = WIFEXITED(status) && WEXITSTATUS(status) == FAILED;
    const std::string why = judged ? board->why : describe_status(status);
    progress->failures.emplace_back(board->next, why);
    printf("case %" PRIu64 ": %s\n", board->next, why.c_str()); // now: a run may be cut short
    fflush(stdout);
    if (board->next + 1 >= job->end) return false;
    start_job(request, job, board->next + 1, job->end);
    return true;
}

static double seconds_since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

static bool may_start(const Request &request, const Progress &progress,
                      std::chrono::steady_clock::time_point start)
{
    if (progress.started >= request.n || progress.failures.size() >= MOST_FAILURES) return false;
    return request.seconds <= 0 || seconds_since(start) < request.seconds;
}

static Progress run_cases(const Request &request)
{
    const auto start = std::chrono::steady_clock::now();
    Progress progress = {};
    std::vector<Job> jobs(static_cast<size_t>(request.jobs));
    for (Job &job : jobs) job = {-1, 0, make_board()};
    size_t running = 0;
    for (;;) {
        for (Job &job : jobs) {
            if (job.child > 0 || !may_start(request, progress, start)) continue;
            const uint64_t end = std::min(progress.started + BATCH, request.n);
            start_job(request, &job, progress.started, end);
            progress.finished += end - progress.started; // counted when begun, all are waited for
            progress.started = end;
            running++;
        }
        if (running == 0) return progress;
        int status = 0;
        const pid_t child = wait(&status);
        for (Job &job : jobs) {
            if (job.child != child) continue;
            job.child = -1;
            if (!end_job(request, &job, status, &progress)) running--;
        }
    }
}

/* ---- checksums ----------------------------------------------------------------------------- */

static void add_bytes(uint64_t *sum, const void *bytes, size_t size)
{
    for (size_t i = 0; i < size; i++)
        *sum = (*sum ^ static_cast<const unsigned char *>(bytes)[i]) * 0x100000001b3u;
}

/* One number for the partitions, cuts and traces of all cases, which must not depend on compiler,
 * optimisation, addresses or allocator. Timers do, and stay out. */
static uint64_t sum_results(const Request &request)
{
    uint64_t sum = 0xcbf29ce484222325u;
    for (uint64_t i = 0; i < request.n; i++) {
        const Case c = case_of(request, i);
        const Outcome outcome = make_call(c);
        add_bytes(&sum, outcome.part.data(), outcome.part.size() * sizeof(int));
        add_bytes(&sum, &outcome.edgecut, sizeof(int));
        if ((c.options[ZORPEL_OPT_DBGLVL] & ZORPEL_DBG_TIME) == 0)
            add_bytes(&sum, outcome.output.data(), outcome.output.size());
    }
    return sum;
}

/* ---- the program --------------------------------------------------------------------------- */

[[noreturn]] static void usage()
{
    fprintf(stderr, "usage: zorpel-torture [--n CASES] [--seed SEED] [--seconds S] [--jobs J]\n"
                    "                      [--small VERTICES] [--out FOLDER] [--checksum]\n"
                    "       zorpel-torture --replay FILE...\n");
    exit(2);
}

static Request parse_words(int argc, char **argv)
{
    Request request = {1000, 1, 0, 1, 0, ".", false, {}};
    for (int i = 1; i < argc; i++) {
        const std::string word = argv[i];
        if (word == "--replay") {
            while (++i < argc) request.replay.push_back(argv[i]);
            if (request.replay.empty()) usage();
            return request;
        }
        if (word == "--checksum") {
            request.checksum = true;
            continue;
        }
        if (++i == argc) usage();
        if (word == "--n")
            request.n = strtoull(argv[i], nullptr, 10);
        else if (word == "--seed")
            request.seed = strtoull(argv[i], nullptr, 10);
        else if (word == "--seconds")
            request.seconds = atof(argv[i]);
        else if (word == "--jobs")
            request.jobs = std::max(1, atoi(argv[i]));
        else if (word == "--small")
            request.small = std::max(2, atoi(argv[i]));
        else if (word == "--out")
            request.out = argv[i];
        else
            usage();
    }
    return request;
}

static int replay_files(const Request &request)
{
    int failures = 0;
    for (const char *name : request.replay) {
        Case c;
        const std::string why = load_case(name, &c) ? run_alone(c) : "not a saved case";
        if (why.empty()) continue;
        printf("%s: %s\n", name, why.c_str());
        failures++;
    }
    printf("%zu saved cases, %d failures\n", request.replay.size(), failures);
    return failures > 0;
}

int main(int argc, char **argv)
{
    const Request request = parse_words(argc, argv);
    if (!request.replay.empty()) return replay_files(request);
    if (request.checksum) {
        printf("%" PRIu64 " cases of seed %" PRIu64 ": %016" PRIx64 "\n", request.n, request.seed,
               sum_results(request));
        return 0;
    }
    const auto start = std::chrono::steady_clock::now();
    printf("seed %" PRIu64 "\n", request.seed);
    const Progress progress = run_cases(request);
    for (const auto &[i, why] : progress.failures) report_failure(request, i, why);
    printf("%" PRIu64 " cases, %zu failures, %.0f seconds\n", progress.finished,
           progress.failures.size(), seconds_since(start));
    return !progress.failures.empty();
}

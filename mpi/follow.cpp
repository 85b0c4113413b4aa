// SPDX-License-Identifier: MIT
/* mpi/follow.cpp: a rank that makes jobs for the head.
 *
 * The search runs in a process of its own, called by a thread; this one carries what it says to the
 * head and back. Whatever becomes of the search, the rank stays to say so.
 */
#include <atomic>
#include <cassert>
#include <csignal>
#include <thread>
#include <unistd.h>

#include "cluster_partition.h"
#include "jobserver.h"
#include "journal.h"

namespace
{

class Follower
{
  public:
    Follower(const Settings &chosen, const Sharers &where)
        : settings(chosen), ranks(where), mail(where.all)
    {
    }

    Status follow(bool *lost)
    {
        const std::string hello = greeting(settings);
        mail.send(0, HELLO, Bytes(hello.begin(), hello.end()));
        heard = seconds_now();
        while (!ended) step();
        finish();
        *lost = lost_somebody;
        return STATUS_OK;
    }

  private:
    void step()
    {
        server.poll(
            1,
            [this](int client, const Message &message, std::vector<unsigned char> parts) {
                mail.send(0, SAID, bytes_of(Saying{client, message, parts.data()}));
            },
            [this](int client) { mail.send(0, GONE, bytes_of_record(int32_t{client})); });
        Letter letter;
        while (mail.receive(&letter)) take(letter);
        if (solved.exchange(false)) report();
        const double now = seconds_now();
        if (now - beaten > BEAT_EVERY) {
            mail.send(0, BEAT, {});
            beaten = now;
        }
        if (now - heard > 2 * static_cast<double>(settings.patience)) give_up();
    }

    void take(const Letter &letter)
    {
        assert(letter.from == 0);
        heard = seconds_now();
        if (letter.kind == PROBLEM) take_problem(letter);
        if (letter.kind == SAID) {
            const Saying saying = saying_in(letter.text);
            server.send(saying.client, saying.message, saying.parts);
        }
        if (letter.kind == END) {
            lost_somebody = record_in<int32_t>(letter.text) != 0;
            ended = true;
        }
    }

    void take_problem(const Letter &letter)
    {
        if (expected == 0) {
            expected = record_in<uint64_t>(letter.text);
            return;
        }
        problem_text.insert(problem_text.end(), letter.text.begin(), letter.text.end());
        if (problem_text.size() < expected) return;
        assert(problem_text.size() == expected && !solver.joinable());
        assignment = assignment_in(problem_text);
        Bytes().swap(problem_text);
        settings.seed = assignment.seed;
        solver = std::thread([this] { search(); });
    }

    void search()
    {
        try {
            if (digest_of(settings, assignment.problem) != assignment.digest)
                fail(STATUS_FAILED, "what arrived is not what rank 0 has read");
            const Sharing sharing = {connect_to_server, &server, settings.time > 0};
            Settings own = settings;
            own.time = own.timeout = 0;
            status = solve(own, assignment.problem, false, &solution, &sharing);
            if (solution.result.finished == 0) fail(status, "%s", solution.result.message);
        } catch (...) {
            const Failure failure = current_failure();
            status = failure.status;
            if (!ended) tell("rank " + std::to_string(ranks.rank) + ": " + failure.text);
        }
        solved = true;
    }

    void report()
    {
        Ending ending = {status, solution.result.finished, 0};
        if (ending.finished > 0) ending.digest = digest_of_part(solution.part);
        mail.send(0, DONE, bytes_of_record(ending));
    }

    /* The search may be about to end by itself, which is worth comparing. */
    void finish()
    {
        constexpr double GRACE = 0.5; // seconds
        const double until = seconds_now() + GRACE;
        while (solver.joinable() && !solved && seconds_now() < until)
            server.poll(
                5, [](int, const Message &, const std::vector<unsigned char> &) {}, [](int) {});
        stop_solving(SIGTERM);
        if (solver.joinable()) solver.join();
        report();
        while (!mail.is_delivered() &&
               seconds_now() < until + static_cast<double>(settings.patience))
            std::this_thread::yield();
    }

    [[noreturn]] void give_up()
    {
        tell("rank " + std::to_string(ranks.rank) + ": rank 0 is silent");
        fflush(nullptr);
        _exit(STATUS_FAILED);
    }

    Settings settings;
    Sharers ranks;
    Mailbox mail;
    JobServer server;
    Assignment assignment;
    Solution solution = {};
    Status status = STATUS_OK;
    std::thread solver;
    std::atomic<bool> solved = false, ended = false;
    Bytes problem_text;
    uint64_t expected = 0;
    double heard = 0, beaten = 0;
    bool lost_somebody = false;
};

} // namespace

Status follow_search(const Settings &settings, const Sharers &ranks, bool *lost)
{
    return Follower(settings, ranks).follow(lost);
}

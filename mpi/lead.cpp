// SPDX-License-Identifier: MIT
/* mpi/lead.cpp: rank 0, which reads, hands out jobs, and delivers.
 *
 * The partition command runs in a thread, with a search of its own like every rank's; this one
 * keeps the board of jobs and writes letters. A rank that is silent for too long is lost until it
 * is heard again: others make its jobs, and what it still sends is as good as theirs, since a job's
 * result depends on its number alone.
 */
#include <atomic>
#include <cassert>
#include <condition_variable>
#include <filesystem>
#include <optional>
#include <thread>

#include "cluster_partition.h"
#include "escaped.h"
#include "jobserver.h"
#include "journal.h"
#include "partition_hooks.h"

namespace
{

constexpr double HURRIED = 0.2;  // seconds for the others once a signal or a deadline has come
constexpr int CLIENTS = 1 << 16; // numbers of searches of a rank

struct RankState {
    bool greeted = false, lost = false, served = false, ended = false;
    double heard = 0;
    Ending ending = {};
};

class Leader : public PartitionHooks
{
  public:
    Leader(const Settings &chosen, const Sharers &where)
        : settings(chosen), ranks(where), mail(where.all), states(static_cast<size_t>(where.n)),
          board({[](int, bool) { return true; }, true, false},
                [this](int client, const Message &message, const unsigned char *parts) {
                    carry(client, message, parts);
                })
    {
        for (RankState &state : states) state.heard = seconds_now();
    }

    Status lead(bool *lost)
    {
        solver = std::thread([this] { partition(); });
        while (!delivered) step();
        solver.join();
        *lost = hurried || nlost() > 0;
        return status;
    }

    // In the thread of the partition command:

    void begin(const Settings &chosen, const Problem &problem) override
    {
        heed_signals();
        Assignment given = {chosen.seed, digest_of(chosen, problem), problem};
        if (!chosen.journal.empty()) join_journal(chosen, given.digest);
        if (ranks.n > 1) assignment = std::make_shared<const Bytes>(bytes_of(given));
        std::unique_lock lock(meeting);
        changed.wait_for(lock, std::chrono::seconds(settings.patience),
                         [this] { return ngreeted() == ranks.n || !refusal.empty(); });
        if (!refusal.empty()) fail(STATUS_USAGE, "%s", refusal.c_str());
        assigned = true;
    }

    const Sharing *sharing() override { return &how; }

    /* Nothing is delivered before the others have ended: the table tells of them. */
    void end(Status how_ended, const Solution &solution) override
    {
        std::unique_lock lock(meeting);
        hurried = how_ended >= STATUS_TIMEOUT;
        whole = !hurried && settings.time == 0;
        digest = digest_of_part(solution.part);
        solved = true;
        changed.wait(lock, [this] { return all_ended; });
        if (!refusal.empty()) fail(STATUS_FAILED, "%s", refusal.c_str());
    }

    void add_to(Json *json) override
    {
        Json rows = Json::array();
        for (int rank = 0; rank < ranks.n; rank++) rows.push_back(row_of(rank));
        (*json)["ranks"] = rows;
    }

  private:
    RankState &state_of(int rank)
    {
        assert(rank >= 0 && rank < ranks.n);
        return states[static_cast<size_t>(rank)];
    }

    void partition()
    {
        try {
            status = partition_with(settings, this);
            if (!settings.quiet) print_table();
        } catch (...) {
            const Failure failure = current_failure();
            tell(failure.text);
            status = failure.status;
        }
        delivering = true;
    }

    void step()
    {
        const double now = seconds_now();
        server.poll(
            1,
            [this](int client, const Message &message, std::vector<unsigned char> parts) {
                board.hear(client, message, std::move(parts), seconds_now());
            },
            [this](int client) { board.lose(client); });
        Letter letter;
        while (mail.receive(&letter)) take(letter);
        if (assigned) assign();
        board.look(now);
        beat(now);
        if ((solved || delivering) && !all_ended) end_others(now);
        if (delivering && all_ended) delivered = true;
    }

    void take(const Letter &letter)
    {
        RankState &state = state_of(letter.from);
        state.heard = seconds_now();
        if (state.lost && !ending_sent) {
            state.lost = false;
            tell(text_of("rank %d is heard again", letter.from));
        }
        if (letter.kind == HELLO) greet(letter);
        if (letter.kind == SAID) {
            const Saying saying = saying_in(letter.text);
            assert(saying.client >= 0 && saying.client < CLIENTS);
            board.hear(letter.from * CLIENTS + saying.client, saying.message,
                       Bytes(saying.parts, saying.parts + saying.message.size), state.heard);
        }
        if (letter.kind == GONE)
            board.lose(letter.from * CLIENTS + record_in<int32_t>(letter.text));
        if (letter.kind == DONE) {
            state.ending = record_in<Ending>(letter.text);
            state.ended = true;
        }
    }

    void greet(const Letter &letter)
    {
        const std::lock_guard lock(meeting);
        state_of(letter.from).greeted = true;
        const std::string theirs(letter.text.begin(), letter.text.end()), ours = greeting(settings);
        if (theirs != ours) {
            const bool version =
                theirs.substr(0, theirs.find('\n')) != ours.substr(0, ours.find('\n'));
            refusal = text_of("rank %d has another %s than rank 0", letter.from,
                              version ? "version of zorpelx-mpi" : "command line");
        }
        changed.notify_all();
    }

    int ngreeted() const
    {
        int n = 1;
        for (const RankState &state : states) n += state.greeted;
        return n;
    }

    int nlost() const
    {
        int n = 0;
        for (const RankState &state : states) n += state.lost;
        return n;
    }

    void assign()
    {
        for (int rank = 1; rank < ranks.n; rank++) {
            RankState &state = state_of(rank);
            if (!state.greeted || state.served || ending_sent) continue;
            assert(assignment != nullptr);
            mail.send(rank, PROBLEM, bytes_of_record(uint64_t{assignment->size()}));
            mail.send_long(rank, PROBLEM, assignment);
            state.served = true;
        }
    }

    void carry(int client, const Message &message, const unsigned char *parts)
    {
        const int rank = client / CLIENTS;
        assert(client >= 0 && rank < ranks.n);
        if (rank == 0) return server.send(client, message, parts);
        mail.send(rank, SAID, bytes_of(Saying{client % CLIENTS, message, parts}));
    }

    void beat(double now)
    {
        if (now - beaten < BEAT_EVERY) return;
        beaten = now;
        for (int rank = 1; rank < ranks.n; rank++) {
            RankState &state = state_of(rank);
            if (!state.lost && !state.ended) mail.send(rank, BEAT, {});
            if (state.lost || state.ended ||
                now - state.heard < static_cast<double>(settings.patience))
                continue;
            state.lost = true;
            tell(text_of("rank %d is silent: the others make its jobs", rank));
            for (int client = 0; client < 8; client++) board.lose(rank * CLIENTS + client);
        }
    }

    void end_others(double now)
    {
        if (!ending_sent) {
            ending_sent = true;
            ending_since = now;
            for (int rank = 1; rank < ranks.n; rank++)
                mail.send(rank, END, bytes_of_record(int32_t{hurried || nlost() > 0}));
        }
        bool waiting = false;
        for (int rank = 1; rank < ranks.n; rank++)
            waiting |= !state_of(rank).ended && !state_of(rank).lost;
        const bool urgent = hurried || caught_signal() != 0; // while it waited for the others, too
        const double grace = urgent ? HURRIED : static_cast<double>(settings.patience);
        if (waiting && now - ending_since < grace) return;
        const std::lock_guard lock(meeting);
        for (int rank = 1; rank < ranks.n; rank++) compare(rank);
        for (int rank = 0; rank < ranks.n; rank++) counts.push_back(counts_of(rank));
        all_ended = true;
        changed.notify_all();
    }

    /* Every rank that went through the whole search has to have the same partition. */
    void compare(int rank)
    {
        RankState &state = state_of(rank);
        if (!state.ended && !hurried) state.lost = true;
        if (!whole || !solved || state.lost || state.ending.finished == 0 ||
            state.ending.status >= STATUS_TIMEOUT || state.ending.digest == digest)
            return;
        refusal = text_of("rank %d found another partition than rank 0", rank);
    }

    void join_journal(const Settings &chosen, uint64_t run)
    {
        join_run(chosen.journal, {run, 1, std::filesystem::current_path(), chosen.words});
        journal.emplace(chosen.journal, "shard-1-of-1", run);
        for (FinishedJob &record : journal->read()) board.learn(std::move(record));
        board.on_result = [this](const JobRecord &record) { keep(record); };
    }

    /* Hours of work are worth more than their journal. */
    void keep(const JobRecord &record)
    {
        if (!journal) return;
        try {
            journal->append(record);
        } catch (const Failure &why) {
            tell("the journal ends here: " + why.text);
            journal.reset();
        }
    }

    ClientCounts counts_of(int rank) const
    {
        ClientCounts sum;
        for (int client = 0; client < 8; client++) {
            const ClientCounts its = board.counts_of(rank * CLIENTS + client);
            sum.made += its.made;
            sum.lost += its.lost;
            sum.seconds += its.seconds;
        }
        return sum;
    }

    Json row_of(int rank)
    {
        assert(counts.size() == static_cast<size_t>(ranks.n)); // they have ended
        const ClientCounts &its = counts[static_cast<size_t>(rank)];
        return {{"rank", rank},
                {"jobs", its.made},
                {"jobs_lost", its.lost},
                {"busy_seconds", its.seconds},
                {"lost", state_of(rank).lost}};
    }

    void print_table()
    {
        fprintf(stderr, "  rank   jobs  lost  busy s\n");
        for (int rank = 0; rank < ranks.n; rank++) {
            const ClientCounts &its = counts[static_cast<size_t>(rank)];
            fprintf(stderr, "%6d %6d %5d %7.1f%s\n", rank, its.made, its.lost, its.seconds,
                    state_of(rank).lost ? "  lost" : "");
        }
        fprintf(stderr, "%zu results from the journal, %lld bytes sent by rank 0\n", board.taken(),
                static_cast<long long>(mail.sent_bytes));
    }

    Settings settings;
    Sharers ranks;
    Mailbox mail;
    JobServer server;
    Sharing how = {connect_to_server, &server, false};
    std::vector<RankState> states;
    JobBoard board;
    std::optional<Journal> journal;

    std::thread solver;
    std::mutex meeting;
    std::condition_variable changed;
    std::shared_ptr<const Bytes> assignment; // set before assigned
    std::string refusal;                     // under meeting
    std::atomic<bool> assigned = false, hurried = false, solved = false, delivering = false;
    bool whole = false, all_ended = false; // under meeting
    std::vector<ClientCounts> counts;      // of the ranks, once all_ended
    uint64_t digest = 0;
    bool delivered = false, ending_sent = false;
    double beaten = 0, ending_since = 0;
    Status status = STATUS_OK;
};

} // namespace

Status lead_search(const Settings &settings, const Sharers &ranks, bool *lost)
{
    return Leader(settings, ranks).lead(lost);
}

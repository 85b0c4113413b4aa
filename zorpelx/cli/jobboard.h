/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/jobboard.h: who makes which job of a shared search.
 *
 * Searches at work, here or on other machines, are clients. Each goes through the same batches of
 * numbered jobs; the board hands out the numbers, keeps the results and brings every client those
 * that others made. Nothing here knows of sockets, files or clocks.
 *   J1  a job that has a result is not handed out
 *   J2  a client gets each result of its batch once, those that it made itself not
 *   J3  a job is at work with at most two clients, with two only if the first one is late
 */
#ifndef ZORPELX_CLI_JOBBOARD_H
#define ZORPELX_CLI_JOBBOARD_H

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "lib/transfer.h"

struct JobRecord {
    int32_t job, nclusters;
    int64_t objective, excess;
    std::vector<unsigned char> parts; // as in a message
};
using FinishedJob = std::shared_ptr<const JobRecord>;

/* What is done with jobs that have no result. */
struct BoardRules {
    std::function<bool(int job, bool independent)> may_make; // here
    bool wait;        // for results that are made elsewhere; otherwise the search is stopped
    bool skip_absent; // a batch of independent jobs is over although results are absent; the search
                      // is stopped where it would need them
};

/* What a client did. */
struct ClientCounts {
    int made = 0;       // jobs
    int lost = 0;       // jobs handed out that others had to make
    double seconds = 0; // at work, threads added up
};

class JobBoard
{
  public:
    using Send =
        std::function<void(int client, const Message &message, const unsigned char *parts)>;

    JobBoard(BoardRules chosen, Send send);

    /* A message of a client; now is the time in seconds. */
    void hear(int client, const Message &message, std::vector<unsigned char> parts, double now);
    /* A result from elsewhere. */
    void learn(FinishedJob record);
    /* The client is gone; others get its jobs. */
    void lose(int client);
    /* Whoever waits for a job gets one that is free, or late. */
    void look(double now);
    /* From now on every client is told to stop. */
    void stop();

    std::function<void(const JobRecord &record)> on_result; // made by a client, for the first time

    /* Independent jobs that are to be made elsewhere and have no result yet. */
    const std::set<int> &absent() const { return absent_jobs; }
    bool has(int job) const { return results.count(job) > 0; }
    size_t count() const { return results.size(); }
    ClientCounts counts_of(int client) const;
    size_t taken() const { return ntaken; } // results that came from elsewhere

  private:
    struct AtWork {
        int client;
        double since;
    };
    struct Client {
        int first = 0, n = 0;
        bool independent = true, incomplete = false, waits = false;
        std::set<int> has; // jobs of the batch
        ClientCounts counts;
    };

    void open(Client &client, const Message &message);
    void file(int client, const Message &message, std::vector<unsigned char> parts, double now);
    bool keep(FinishedJob record);
    bool answer(int number, Client &client, double now);
    bool give_result(int number, Client &client);
    bool give_job(int number, Client &client, double now);
    bool is_late(int job, double now) const;
    void say(int number, Client &client, Say what, int job);

    BoardRules rules;
    Send send_to;
    std::map<int, Client> clients;
    std::map<int, FinishedJob> results;
    std::map<int, std::vector<AtWork>> at_work; // by job
    std::set<int> absent_jobs;
    double longest = 0; // seconds that a job took, of those that have ended
    size_t bytes = 0, ntaken = 0;
    bool stopped = false;
};

#endif

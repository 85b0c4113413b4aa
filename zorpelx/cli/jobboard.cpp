// SPDX-License-Identifier: MIT
/* zorpelx/cli/jobboard.cpp: who makes which job of a shared search. */
#include "jobboard.h"

#include <algorithm>
#include <cassert>

constexpr size_t MOST_BYTES = size_t{1} << 30; // of results that are kept
constexpr double LATE_AFTER = 5;               // seconds, at least
constexpr double LATE_FIRST = 300;             // seconds, while no job has ended
constexpr double LATE_FACTOR = 4;              // times the longest job so far

JobBoard::JobBoard(BoardRules chosen, Send send)
    : rules(std::move(chosen)), send_to(std::move(send))
{
}

void JobBoard::say(int number, Client &client, Say what, int job)
{
    client.waits = false;
    send_to(number, {what, job, 0, 0, 0, 0, 0, 0}, nullptr);
}

void JobBoard::hear(int client, const Message &message, std::vector<unsigned char> parts,
                    double now)
{
    if (message.say == Say::OPEN) open(clients[client], message);
    if (message.say == Say::WANT) clients[client].waits = true;
    if (message.say == Say::MADE) file(client, message, std::move(parts), now);
    look(now);
}

void JobBoard::open(Client &client, const Message &message)
{
    client.first = message.job;
    client.n = message.n;
    client.independent = message.independent != 0;
    if (client.first == 0) client.incomplete = false; // it begins again
    client.has.clear();
}

/* Results of batches that are over are dropped first when they become too many. */
bool JobBoard::keep(FinishedJob record)
{
    if (!results.emplace(record->job, record).second) return false;
    absent_jobs.erase(record->job);
    bytes += record->parts.size();
    while (bytes > MOST_BYTES && results.size() > 1) {
        int oldest = record->job;
        for (const auto &[number, client] : clients) oldest = std::min(oldest, client.first);
        const auto first = results.begin();
        if (first->first >= oldest) break;
        bytes -= first->second->parts.size();
        results.erase(first);
    }
    return true;
}

void JobBoard::file(int number, const Message &message, std::vector<unsigned char> parts,
                    double now)
{
    Client &client = clients[number];
    client.has.insert(message.job);
    for (const AtWork &work : at_work[message.job]) {
        if (work.client != number) continue;
        longest = std::max(longest, now - work.since);
        client.counts.seconds += now - work.since;
    }
    at_work.erase(message.job);
    client.counts.made++;
    const auto record = std::make_shared<JobRecord>(JobRecord{
        message.job, message.nclusters, message.objective, message.excess, std::move(parts)});
    if (keep(record) && on_result) on_result(*record);
}

void JobBoard::learn(FinishedJob record)
{
    at_work.erase(record->job);
    if (keep(std::move(record))) ntaken++;
}

void JobBoard::lose(int number)
{
    const auto found = clients.find(number);
    if (found == clients.end()) return;
    found->second.waits = false;
    for (auto &[job, workers] : at_work) {
        const auto its = [&](const AtWork &work) { return work.client == number; };
        found->second.counts.lost += static_cast<int>(std::erase_if(workers, its));
    }
    std::erase_if(at_work, [](const auto &entry) { return entry.second.empty(); });
}

void JobBoard::stop()
{
    stopped = true;
    for (auto &[number, client] : clients)
        if (client.waits) say(number, client, Say::STOP, 0);
}

ClientCounts JobBoard::counts_of(int client) const
{
    const auto found = clients.find(client);
    return found == clients.end() ? ClientCounts() : found->second.counts;
}

bool JobBoard::give_result(int number, Client &client)
{
    for (int job = client.first; job < client.first + client.n; job++) {
        const auto found = results.find(job);
        if (found == results.end() || client.has.count(job) > 0) continue;
        const JobRecord &record = *found->second;
        client.has.insert(job);
        client.waits = false;
        send_to(number,
                {Say::TAKE, job, 0, record.nclusters, 0, record.objective, record.excess,
                 static_cast<int64_t>(record.parts.size())},
                record.parts.data());
        return true;
    }
    return false;
}

/* A client that has died or hangs without anybody's noticing must not hold up the others. */
bool JobBoard::is_late(int job, double now) const
{
    const auto found = at_work.find(job);
    const double late = longest > 0 ? std::max(LATE_AFTER, LATE_FACTOR * longest) : LATE_FIRST;
    return found != at_work.end() && found->second.size() == 1 &&
           now - found->second[0].since > late;
}

bool JobBoard::give_job(int number, Client &client, double now)
{
    for (const bool late : {false, true})
        for (int job = client.first; job < client.first + client.n; job++) {
            if (results.count(job) > 0 || !rules.may_make(job, client.independent)) continue;
            const auto found = at_work.find(job);
            if (found != at_work.end() && (!late || !is_late(job, now))) continue;
            if (found != at_work.end() && found->second[0].client == number) continue;
            at_work[job].push_back({number, now});
            assert(at_work[job].size() <= 2); // J3
            say(number, client, Say::MAKE, job);
            return true;
        }
    return false;
}

/* False if the client has to wait. */
bool JobBoard::answer(int number, Client &client, double now)
{
    if (stopped || (client.incomplete && !client.independent)) {
        say(number, client, Say::STOP, 0);
        return true;
    }
    if (give_result(number, client) || give_job(number, client, now)) return true;
    bool elsewhere = false, here = false; // where absent results are to come from
    for (int job = client.first; job < client.first + client.n; job++) {
        if (results.count(job) > 0) continue;
        const bool made_here = rules.may_make(job, client.independent);
        (made_here ? here : elsewhere) = true;
        if (!made_here && client.independent) absent_jobs.insert(job);
    }
    if (here || (elsewhere && rules.wait)) return false;
    const bool skipped = elsewhere && rules.skip_absent && client.independent;
    client.incomplete |= elsewhere;
    say(number, client, elsewhere && !skipped ? Say::STOP : Say::OVER, 0);
    return true;
}

void JobBoard::look(double now)
{
    for (auto &[number, client] : clients)
        if (client.waits) answer(number, client, now);
}

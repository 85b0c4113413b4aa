/* SPDX-License-Identifier: MIT */
/* mpi/distributed/ranks.h: what the ranks of a run say to each other, counted.
 *
 * All routines are collective: every rank calls them in the same order. Their results do not
 * depend on timing; what a rank receives comes in the order of the ranks, and of each in the order
 * in which it was sent. Callers see to it that no result depends on the number of ranks.
 */
#ifndef ZORPEL_MPI_DISTRIBUTED_RANKS_H
#define ZORPEL_MPI_DISTRIBUTED_RANKS_H

#include <cassert>
#include <climits>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include <mpi.h>

#include "core/heavy_assert.h"

/* The ranks, seen from one of them.
 *   A1  bytes and messages count what this rank has sent to others; a sum or the like over all
 *       ranks counts as ceil(log2(nranks)) messages of its size; summed is the part of bytes that
 *       these have, which does not depend on the size of the hypergraph. A rank sends at most
 *       max(nranks - 1, ceil(log2(nranks))) messages a step, and nothing to itself
 */
struct Ranks {
    MPI_Comm comm;
    int rank, nranks;
    int64_t bytes, messages, summed;
    int64_t steps;   // operations in which all ranks took part
    int64_t waiting; // processor time within them, which is mostly spent on waiting: nanoseconds
};

Ranks ranks_of(MPI_Comm comm);

/* Tests A1. */
bool ranks_ok(const Ranks *ranks);

/* The processor time of this process, all its threads together: nanoseconds. */
int64_t processor_time();

/* Says one sentence on standard error and ends all ranks. */
[[noreturn]] void give_up(const Ranks *ranks, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

/* Sums, minima and maxima over all ranks, place by place. */
void sum_all(Ranks *ranks, int64_t *values, size_t n);
int64_t sum_of_all(Ranks *ranks, int64_t value);
int64_t least_of_all(Ranks *ranks, int64_t value);
int64_t most_of_all(Ranks *ranks, int64_t value);

/* The sum over the ranks before this one. */
int64_t sum_before(Ranks *ranks, int64_t value);

/* Every rank's value, by rank. */
std::vector<int64_t> list_all(Ranks *ranks, int64_t value);

/* Bytes of rank 0 for all. */
void tell_all(Ranks *ranks, void *bytes, int64_t nbytes);

/* The untyped ends of the templates below. */
void exchange_records(Ranks *ranks, const void *send, const int64_t *nsend, void *receive,
                      const int64_t *nreceive, size_t size);
void exchange_counts(Ranks *ranks, const int64_t *nsend, int64_t *nreceive);

/* Records on their way, those for one rank together. Filled in two passes over whatever they are
 * made from: count() all, open_mail(), add() all in the same order.
 *   A2  the records for rank r stand at first[r] to first[r + 1] - 1
 */
template <class T> struct Mail {
    std::vector<T> records;
    std::vector<int64_t> first, at; // [nranks + 1]; at: where the next record for a rank goes
};

/* Tests A2 of mail that is about to leave or has come in: the rows are those of all ranks, and
 * every record that was counted has been added. at  empty, or where the next record for each rank
 * would go */
bool mail_ok(const Ranks *ranks, const std::vector<int64_t> &first, const std::vector<int64_t> &at,
             size_t nrecords);

template <class T> void begin_mail(const Ranks *ranks, Mail<T> *mail)
{
    mail->first.assign(static_cast<size_t>(ranks->nranks) + 1, 0);
}

template <class T> void count_mail(Mail<T> *mail, int to)
{
    assert(to >= 0 && static_cast<size_t>(to) + 1 < mail->first.size());
    mail->first[static_cast<size_t>(to) + 1]++;
}

template <class T> void open_mail(Mail<T> *mail)
{
    assert(!mail->first.empty() && mail->first[0] == 0 && mail->records.empty());
    for (size_t r = 1; r < mail->first.size(); r++) mail->first[r] += mail->first[r - 1];
    mail->at = mail->first;
    mail->records.resize(static_cast<size_t>(mail->first.back()));
}

template <class T> void add_mail(Mail<T> *mail, int to, const T &record)
{
    assert(to >= 0 && static_cast<size_t>(to) + 1 < mail->at.size());
    int64_t *const at = &mail->at[static_cast<size_t>(to)];
    assert(*at >= mail->first[static_cast<size_t>(to)]);
    assert(*at < mail->first[static_cast<size_t>(to) + 1]);
    mail->records[static_cast<size_t>((*at)++)] = record;
}

/* Exchanges the letters of all ranks: afterwards mail holds what has come in, by sender. */
template <class T> void exchange(Ranks *ranks, Mail<T> *mail)
{
    static_assert(std::is_trivially_copyable_v<T>);
    assert(mail->first.size() == static_cast<size_t>(ranks->nranks) + 1 && mail->first[0] == 0);
    assert(mail->first.back() == static_cast<int64_t>(mail->records.size()));
    HEAVY_ASSERT(mail_ok(ranks, mail->first, mail->at, mail->records.size()));
    if (ranks->nranks == 1) return; // what is sent is what comes in
    const size_t n = static_cast<size_t>(ranks->nranks);
    std::vector<int64_t> nsend(n), nreceive(n), first(n + 1, 0);
    for (size_t r = 0; r < n; r++) nsend[r] = mail->first[r + 1] - mail->first[r];
    exchange_counts(ranks, nsend.data(), nreceive.data());
    assert(nreceive[static_cast<size_t>(ranks->rank)] == nsend[static_cast<size_t>(ranks->rank)]);
    for (size_t r = 0; r < n; r++) first[r + 1] = first[r] + nreceive[r];
    std::vector<T> received(static_cast<size_t>(first[n]));
    exchange_records(ranks, mail->records.data(), nsend.data(), received.data(), nreceive.data(),
                     sizeof(T));
    mail->records = std::move(received);
    mail->first = std::move(first);
    mail->at.clear();
    HEAVY_ASSERT(mail_ok(ranks, mail->first, mail->at, mail->records.size()));
}

/* The first of the items 0..n-1 that rank r owns, when n items are divided among the ranks in
 * blocks of whole grains. */
constexpr int64_t GRAIN = 8;
inline int64_t share_begin(const Ranks *ranks, int64_t n, int r)
{
    assert(n >= 0 && r >= 0 && r <= ranks->nranks);
    const int64_t grains = (n + GRAIN - 1) / GRAIN;
    const int64_t per = grains / ranks->nranks, rest = grains % ranks->nranks;
    const int64_t begin = GRAIN * (r * per + (r < rest ? r : rest));
    return begin < n ? begin : n;
}

/* The rank that owns item i. */
inline int share_owner(const Ranks *ranks, int64_t n, int64_t i)
{
    assert(i >= 0 && i < n);
    const int64_t grains = (n + GRAIN - 1) / GRAIN, grain = i / GRAIN;
    const int64_t per = grains / ranks->nranks, rest = grains % ranks->nranks;
    const int64_t large = rest * (per + 1); // grains in the shares that have one more
    const int64_t owner = grain < large ? grain / (per + 1) : rest + (grain - large) / per;
    assert(owner >= 0 && owner < ranks->nranks);
    return static_cast<int>(owner);
}

/* A number that depends on nothing but its arguments, for ties and turns that all ranks decide
 * alike. Source: Steele, Lea, Flood, Fast splittable pseudorandom number generators, OOPSLA 2014.
 */
inline uint64_t mixed(uint64_t z)
{
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
}
inline uint64_t lot(uint64_t seed, uint64_t a, uint64_t b = 0)
{
    return mixed(mixed(seed + 0x9e3779b97f4a7c15u * (a + 1)) + 0xd1342543de82ef95u * (b + 1));
}

#endif

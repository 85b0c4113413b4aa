// SPDX-License-Identifier: MIT
/* mpi/distributed/ranks.cpp: exchanges of records between ranks, and what they cost. */
#include "distributed/ranks.h"

#include <cstdarg>
#include <cstdio>
#include <ctime>

Ranks ranks_of(MPI_Comm comm)
{
    Ranks ranks = {comm, 0, 1, 0, 0, 0, 0, 0};
    MPI_Comm_rank(comm, &ranks.rank);
    MPI_Comm_size(comm, &ranks.nranks);
    assert(ranks.rank >= 0 && ranks.rank < ranks.nranks);
    return ranks;
}

void give_up(const Ranks *ranks, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    fprintf(stderr, "zorpelx-mpi: rank %d: ", ranks->rank);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    va_end(arguments);
    MPI_Abort(ranks->comm, 1);
    __builtin_unreachable();
}

int64_t processor_time()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return int64_t{1000000000} * time.tv_sec + time.tv_nsec;
}

/* One operation of all ranks. */
template <class Operation> static void together(Ranks *ranks, const Operation &operation)
{
    const int64_t began = processor_time();
    operation();
    ranks->waiting += processor_time() - began;
    ranks->steps++;
    HEAVY_ASSERT(ranks_ok(ranks));
}

static void count_collective(Ranks *ranks, int64_t nbytes)
{
    assert(nbytes >= 0);
    for (int n = 1; n < ranks->nranks; n *= 2) {
        ranks->messages++;
        ranks->bytes += nbytes;
        ranks->summed += nbytes;
    }
}

static void reduce_all(Ranks *ranks, int64_t *values, size_t n, MPI_Op operation)
{
    assert(n > 0 && n <= INT_MAX);
    together(ranks, [&] {
        MPI_Allreduce(MPI_IN_PLACE, values, static_cast<int>(n), MPI_INT64_T, operation,
                      ranks->comm);
    });
    count_collective(ranks, static_cast<int64_t>(n * sizeof *values));
}

void sum_all(Ranks *ranks, int64_t *values, size_t n)
{
    reduce_all(ranks, values, n, MPI_SUM);
}

int64_t sum_of_all(Ranks *ranks, int64_t value)
{
    reduce_all(ranks, &value, 1, MPI_SUM);
    return value;
}

int64_t least_of_all(Ranks *ranks, int64_t value)
{
    reduce_all(ranks, &value, 1, MPI_MIN);
    return value;
}

int64_t most_of_all(Ranks *ranks, int64_t value)
{
    reduce_all(ranks, &value, 1, MPI_MAX);
    return value;
}

int64_t sum_before(Ranks *ranks, int64_t value)
{
    int64_t sum = 0;
    together(ranks, [&] { MPI_Exscan(&value, &sum, 1, MPI_INT64_T, MPI_SUM, ranks->comm); });
    count_collective(ranks, sizeof value);
    return ranks->rank == 0 ? 0 : sum; // what rank 0 receives is not defined
}

std::vector<int64_t> list_all(Ranks *ranks, int64_t value)
{
    std::vector<int64_t> values(static_cast<size_t>(ranks->nranks));
    together(ranks, [&] {
        MPI_Allgather(&value, 1, MPI_INT64_T, values.data(), 1, MPI_INT64_T, ranks->comm);
    });
    count_collective(ranks, static_cast<int64_t>(sizeof value) * ranks->nranks / 2);
    return values;
}

void tell_all(Ranks *ranks, void *bytes, int64_t nbytes)
{
    constexpr int64_t PIECE = 1 << 30;
    for (int64_t at = 0; at < nbytes; at += PIECE)
        together(ranks, [&] {
            MPI_Bcast(static_cast<char *>(bytes) + at,
                      static_cast<int>(nbytes - at < PIECE ? nbytes - at : PIECE), MPI_BYTE, 0,
                      ranks->comm);
        });
    if (nbytes > 0) count_collective(ranks, nbytes);
}

void exchange_counts(Ranks *ranks, const int64_t *nsend, int64_t *nreceive)
{
    together(ranks,
             [&] { MPI_Alltoall(nsend, 1, MPI_INT64_T, nreceive, 1, MPI_INT64_T, ranks->comm); });
    ranks->messages += ranks->nranks - 1;
    ranks->bytes += static_cast<int64_t>(sizeof *nsend) * (ranks->nranks - 1);
}

/* Counts and places as MPI takes them, in records. */
static void set_places(const Ranks *ranks, const int64_t *counts, std::vector<int> *n,
                       std::vector<int> *first)
{
    int64_t sum = 0;
    for (int r = 0; r < ranks->nranks; r++) {
        assert(counts[r] >= 0);
        if (sum + counts[r] > INT_MAX)
            give_up(ranks, "more than 2147483647 records in one exchange; more ranks are needed");
        first->push_back(static_cast<int>(sum));
        n->push_back(static_cast<int>(counts[r]));
        sum += counts[r];
    }
}

void exchange_records(Ranks *ranks, const void *send, const int64_t *nsend, void *receive,
                      const int64_t *nreceive, size_t size)
{
    assert(size > 0 && size <= INT_MAX);
    assert(nsend[ranks->rank] == nreceive[ranks->rank]);
    std::vector<int> sends, sendfirst, receives, receivefirst;
    set_places(ranks, nsend, &sends, &sendfirst);
    set_places(ranks, nreceive, &receives, &receivefirst);
    MPI_Datatype record;
    MPI_Type_contiguous(static_cast<int>(size), MPI_BYTE, &record);
    MPI_Type_commit(&record);
    together(ranks, [&] {
        MPI_Alltoallv(send, sends.data(), sendfirst.data(), record, receive, receives.data(),
                      receivefirst.data(), record, ranks->comm);
    });
    MPI_Type_free(&record);
    for (int r = 0; r < ranks->nranks; r++) {
        if (r == ranks->rank || nsend[r] == 0) continue;
        ranks->messages++;
        ranks->bytes += nsend[r] * static_cast<int64_t>(size);
    }
}

/* SPDX-License-Identifier: MIT */
/* mpi/letters.h: what the ranks of a shared search write to each other.
 *
 * Rank 0, the head, reads the files and keeps the board of jobs. Every rank, the head too, runs the
 * search in a process of its own; what that process says to its rank goes to the head as it is, and
 * the answers come back the same way.
 */
#ifndef ZORPEL_MPI_LETTERS_H
#define ZORPEL_MPI_LETTERS_H

#include <cassert>
#include <cstring>
#include <string>

#include "lib/transfer.h"
#include "mail.h"
#include "solving.h"

enum LetterKind {
    HELLO = 1, // to the head: version, host and command line
    PROBLEM,   // from the head: how long it is, then the problem in pieces
    SAID,      // a message of a search, or to it
    GONE,      // to the head: a search has ended
    BEAT,      // I am alive
    DONE,      // to the head: how the search of this rank ended
    END,       // from the head: no more is to be done
};

/* A message of a search: the number of the search on its rank, the message, its parts. */
struct Saying {
    int32_t client;
    Message message;
    const unsigned char *parts;
};
Bytes bytes_of(const Saying &saying);
Saying saying_in(const Bytes &text);

struct Ending {
    int32_t status;   // of the search
    int32_t finished; // it has a partition
    uint64_t digest;  // of the partition
};

template <class Record> Bytes bytes_of_record(const Record &record)
{
    Bytes text(sizeof record);
    memcpy(text.data(), &record, sizeof record);
    return text;
}

template <class Record> Record record_in(const Bytes &text)
{
    Record record = {};
    assert(text.size() == sizeof record);
    memcpy(&record, text.data(), std::min(text.size(), sizeof record));
    return record;
}

/* All that a rank needs to know of what is partitioned. */
struct Assignment {
    int64_t seed;
    uint64_t digest; // of settings and problem
    Problem problem;
};
Bytes bytes_of(const Assignment &assignment);
Assignment assignment_in(const Bytes &text);

/* What ranks must have in common, and the host behind it. */
std::string greeting(const Settings &settings);

#endif

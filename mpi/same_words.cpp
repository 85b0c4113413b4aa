// SPDX-License-Identifier: MIT
/* mpi/same_words.cpp: versions and command lines are compared by digests, in one exchange. */
#include "same_words.h"

#include <cassert>
#include <vector>

#include "letters.h"

/* Source: Fowler, Noll, Vo, FNV-1a. */
static uint64_t digest_of_text(const std::string &text)
{
    uint64_t digest = 0xcbf29ce484222325u;
    for (const char c : text) digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
    return digest;
}

struct WordsDigest {
    uint64_t version, all;
};

Status check_same_words(const Settings &settings, MPI_Comm all)
{
    int rank, nranks;
    MPI_Comm_rank(all, &rank);
    MPI_Comm_size(all, &nranks);
    assert(0 <= rank && rank < nranks);
    const std::string words = greeting(settings);
    WordsDigest mine = {digest_of_text(words.substr(0, words.find('\n'))), digest_of_text(words)};
    std::vector<WordsDigest> theirs(static_cast<size_t>(nranks));
    MPI_Allgather(&mine, sizeof mine, MPI_BYTE, theirs.data(), sizeof mine, MPI_BYTE, all);
    for (size_t r = 1; r < theirs.size(); r++) {
        if (theirs[r].all == theirs[0].all) continue;
        const bool version = theirs[r].version != theirs[0].version;
        if (rank == 0)
            tell(text_of("rank %zu has another %s than rank 0", r,
                         version ? "version of zorpelx-mpi" : "command line"));
        return STATUS_USAGE;
    }
    return STATUS_OK;
}

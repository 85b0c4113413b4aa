// SPDX-License-Identifier: MIT
/* mpi/distributed/file_share_ok.cpp: the predicate of a share of a file. */
#include "core/holds.h"
#include "distributed/file_share.h"

/* What is in the buffer is no longer in the file: other programs may write to it, which the reader
 * reports when it is done. */
static bool has_changed(const FileShare *share)
{
    ShareFault fault = {};
    check_unchanged(share, &fault);
    return fault.kind != FAULT_NONE;
}

bool share_ok(const FileShare *share)
{
    HOLDS(Z1, share->at <= share->filled && share->filled == share->buffer.size());
    HOLDS(Z1, share->place >= static_cast<int64_t>(share->filled) && share->place <= share->size);
    const size_t n = share->filled - share->at;
    std::string bytes(n, 0);
    ShareFault fault = {};
    if (!read_bytes(share, share->place - static_cast<int64_t>(n), bytes.data(),
                    static_cast<int64_t>(n), &fault))
        return true;
    HOLDS(Z1, share->buffer.compare(share->at, n, bytes) == 0 || has_changed(share));
    return true;
}

/* SPDX-License-Identifier: MIT */
/* mpi/distributed/file_share.h: a rank's share of a file: bytes, whole lines, and its digest.
 *
 * A line belongs to the rank in whose bytes it begins. Files are read by pread() in pieces, so that
 * nothing but the pieces takes memory.
 */
#ifndef ZORPEL_MPI_DISTRIBUTED_FILE_SHARE_H
#define ZORPEL_MPI_DISTRIBUTED_FILE_SHARE_H

#include <string>

#include "distributed/share_fault.h"

/*   Z1  the lines not yet taken begin at the bytes buffer[at] .. buffer[filled-1], which are those
 *       of the file before place; the buffer ends with them
 */
struct FileShare {
    int file;
    int64_t size;       // of the file
    int64_t begin, end; // bytes of this share
    int64_t place;      // where the next piece begins
    std::string buffer;
    size_t at, filled;
    int64_t skip;          // bytes before all shares
    uint64_t digest, head; // of the share, and of what is before all shares
};

/* Tests Z1 against the file, unless that has changed since set_share(). */
bool share_ok(const FileShare *share);

/* Opens a file on all ranks and makes sure that it is one: everyone's size is the same, and each
 * rank's share is, byte for byte, what the rank before it finds there.
 *   skip  bytes at the begin that all ranks read: compared too, and left out of the shares
 * False on all ranks, with a fault, if that is not so. */
bool open_share(Ranks *ranks, const char *name, FileShare *share, ShareFault *fault);
bool set_share(Ranks *ranks, int64_t skip, FileShare *share, ShareFault *fault);

/* Whether the share, and what is before all shares, still is what it was when it was opened; a
 * fault otherwise. */
void check_unchanged(const FileShare *share, ShareFault *fault);
void close_share(FileShare *share);

/* Reads so many bytes from a place; a fault if they are not there. */
bool read_bytes(const FileShare *share, int64_t place, void *bytes, int64_t n, ShareFault *fault);

/* The next line of the share that is no comment, without its newline; false if there is none. */
void rewind_share(FileShare *share);
bool next_line(FileShare *share, const char **begin, const char **end, ShareFault *fault);

/* The line at the first byte of the file that is no comment, for headers; sets the byte behind. */
bool first_line(FileShare *share, std::string *line, int64_t *behind, ShareFault *fault);

/* A whole number with an optional sign.
 *   at  in/out  afterwards behind the number and the white space before it
 * Returns 1 if there is one, 0 at the end of the line, -1 if something else is there or it is too
 * large for 62 bits. */
int next_number(const char **at, const char *end, int64_t *number);

#endif

/* SPDX-License-Identifier: MIT */
/* zorpelx/files/rawfile.h: the bytes of a file, block by block, within a budget. */
#ifndef ZORPELX_FILES_RAWFILE_H
#define ZORPELX_FILES_RAWFILE_H

#include <string>
#include <vector>

#include "budget.h"

/* A file being read.
 *   R1  block[begin .. end - 1] is read from the file and not yet taken
 *   R2  finished: the file has no more bytes than those */
struct RawFile {
    int descriptor;
    bool owned; // to be closed
    Budget *budget;
    std::vector<unsigned char> block; // [RAW_BLOCK]
    size_t begin, end;
    bool finished;
};
constexpr size_t RAW_BLOCK = size_t{1} << 18;

/* Opens a file without waiting for the other end of a pipe. The name "-" is standard input.
 * Errors  ZORPELX_SYSTEM */
RawFile open_raw(const std::string &name, Budget *budget);
void close_raw(RawFile *file);

/* Reads a block more once all is taken; false at the end of the file. Waits within the budget.
 * Errors  ZORPELX_SYSTEM, _TIMEOUT, _CANCELLED */
bool refill(RawFile *file);

/* Waits for bytes and reads up to `size` of them into `room`, not by way of the block. Returns how many; 0 at the end of the file, which is then finished. */
size_t read_into(RawFile *file, char *room, size_t size);

/* Reads on until `wanted` bytes are there or the file ends; for the first bytes of a file. */
void fill_up_to(RawFile *file, size_t wanted);

#endif

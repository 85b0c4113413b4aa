/* SPDX-License-Identifier: MIT */
/* io/partfile.h: the partition file and the fix file, one part number per vertex and line. */
#ifndef ZORPEL_IO_PARTFILE_H
#define ZORPEL_IO_PARTFILE_H

/* Writes part[0..nvtxs-1] to "<name>.part.<largest part + 1>"; nothing when nvtxs is below 1.
 * Errors: a file that cannot be opened or written whole ends the process; what was written of it
 * is removed. */
void WriteHGraphPart(int nvtxs, const int *part, const char *name);

/* Reads up to nvtxs entries into part; a malformed one stops the reading, and entries not read
 * keep their value. */
void ReadPartition(int nvtxs, int *part, const char *name);

#endif

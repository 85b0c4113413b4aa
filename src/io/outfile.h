/* SPDX-License-Identifier: MIT */
/* io/outfile.h: files that are written whole or not at all (io/ only). */
#ifndef ZORPEL_IO_OUTFILE_H
#define ZORPEL_IO_OUTFILE_H

#include <cstdio>

/* Closes a file that was opened for writing under this name. If that or a write before it failed,
 * the file is removed, unless it is no regular one, and the process ends: "text: cannot write name:
 * reason". */
void close_whole(FILE *file, const char *name, const char *text);

#endif

// SPDX-License-Identifier: MIT
/* io/outfile.cpp: files that are written whole or not at all.
 *
 * Whoever finds a partition file takes it for a partition. So one that could not be written to its
 * end, on a full disk or beyond a limit, goes away before the process ends.
 */
#include "io/outfile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "core/errors.h"

/* Removes the file itself, also behind a symbolic link; devices and pipes stay. */
static void remove_regular(const char *name)
{
    struct stat status;
    if (stat(name, &status) != 0 || !S_ISREG(status.st_mode)) return;
    char *const path = realpath(name, nullptr);
    unlink(path != nullptr ? path : name);
    free(path);
}

void close_whole(FILE *file, const char *name, const char *text)
{
    const bool failed = ferror(file) != 0;
    const int reason = errno; // of a write that failed: nothing else has been called since
    if (fclose(file) == 0 && !failed) return;
    const int kept = failed ? reason : errno;
    remove_regular(name);
    errexit__("%s: cannot write %s: %s", text, name, strerror(kept));
}

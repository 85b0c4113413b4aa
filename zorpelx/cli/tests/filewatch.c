/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/tests/filewatch.c: a shim that watches how a program writes its files.
 *
 * Preloaded, it notes in the file FILEWATCH_LOG what the program does to files, a line each, and,
 * counted from 1, before operation FILEWATCH_KILL it sends the program FILEWATCH_SIGNAL, or kills
 * it, and operation FILEWATCH_FAIL it lets fail with error FILEWATCH_ERROR. With FILEWATCH_SHORT a
 * write takes so many bytes at most; with FILEWATCH_NAMED the file system knows no nameless files.
 * Children are left alone.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

static pid_t watched;
static int count;

__attribute__((constructor)) static void begin(void)
{
    watched = getpid();
}

static long number(const char *name)
{
    const char *const text = getenv(name);
    return text == NULL ? 0 : strtol(text, NULL, 10);
}

/* Notes an operation; returns the error that it has to fail with, 0 if it is to be done. */
__attribute__((format(printf, 1, 2))) static int note(const char *format, ...)
{
    if (getpid() != watched) return 0;
    count++;
    if (count == number("FILEWATCH_KILL"))
        raise(getenv("FILEWATCH_SIGNAL") != NULL ? (int)number("FILEWATCH_SIGNAL") : SIGKILL);
    FILE *const log = fopen(getenv("FILEWATCH_LOG"), "a");
    if (log == NULL) abort();
    va_list arguments;
    va_start(arguments, format);
    vfprintf(log, format, arguments);
    va_end(arguments);
    fclose(log);
    return count == number("FILEWATCH_FAIL") ? (int)number("FILEWATCH_ERROR") : 0;
}

static int failed(int error)
{
    errno = error;
    return -1;
}

static const char *kind(int file)
{
    struct stat status;
    return fstat(file, &status) == 0 && S_ISDIR(status.st_mode) ? "folder" : "file";
}

int openat(int folder, const char *name, int flags, ...)
{
    int (*const next)(int, const char *, int, ...) = dlsym(RTLD_NEXT, "openat");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t); // 0 or nonsense where none is needed
    va_end(arguments);
    const int nameless = (flags & O_TMPFILE) == O_TMPFILE;
    if (nameless && getenv("FILEWATCH_NAMED") != NULL) return failed(EOPNOTSUPP);
    int error = 0;
    if (nameless) error = note("create\n");
    if (flags & O_CREAT) error = note("create beside\n");
    return error != 0 ? failed(error) : next(folder, name, flags, mode);
}

ssize_t write(int file, const void *bytes, size_t size)
{
    ssize_t (*const next)(int, const void *, size_t) = dlsym(RTLD_NEXT, "write");
    const int error = note("write\n");
    const long most = number("FILEWATCH_SHORT");
    if (most > 0 && size > (size_t)most) size = (size_t)most;
    return error != 0 ? failed(error) : next(file, bytes, size);
}

int fchmod(int file, mode_t mode)
{
    int (*const next)(int, mode_t) = dlsym(RTLD_NEXT, "fchmod");
    const int error = note("mode\n");
    return error != 0 ? failed(error) : next(file, mode);
}

int fsync(int file)
{
    int (*const next)(int) = dlsym(RTLD_NEXT, "fsync");
    const int error = note("sync %s\n", kind(file));
    return error != 0 ? failed(error) : next(file);
}

int linkat(int from, const char *name, int folder, const char *link, int flags)
{
    int (*const next)(int, const char *, int, const char *, int) = dlsym(RTLD_NEXT, "linkat");
    const int error = note("link %s\n", link[0] == '.' ? "beside" : link);
    return error != 0 ? failed(error) : next(from, name, folder, link, flags);
}

int renameat(int from, const char *name, int folder, const char *target)
{
    int (*const next)(int, const char *, int, const char *) = dlsym(RTLD_NEXT, "renameat");
    const int error = note("rename %s\n", target);
    return error != 0 ? failed(error) : next(from, name, folder, target);
}

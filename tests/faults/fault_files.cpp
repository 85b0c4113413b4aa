// SPDX-License-Identifier: MIT
/* faults/fault_files.cpp: every opening, read, write and closing of a run of the program fails
 * once, alone and with all later ones.
 *
 * Whatever fails, the process ends with status 0, and unless it says what went wrong on standard
 * error the partition file is there, whole; if it says that the file cannot be written, the file
 * has been removed. Files are opened through the C library's custom streams, so that its own
 * buffering and error marks behave as with a failing disk.
 */
#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "fault_points.h"

int program_main(int nwords, char **words);

constexpr int NVERTICES = 20000; // more than one block of the partition file
static int reason = EIO;
static int points_of[4]; // openings, reads, writes, closings

/* ---- streams that can fail ----------------------------------------------------------------- */

extern "C" FILE *__real_fopen(const char *name, const char *mode);

/* fault_here, with the place in the file as it was for the parent. */
static bool fault_at(int kind, int fd)
{
    const off_t place = fd < 0 ? 0 : lseek(fd, 0, SEEK_CUR);
    points_of[kind]++;
    const bool fault = fault_here();
    if (fault)
        errno = reason;
    else if (fd >= 0 && lseek(fd, place, SEEK_SET) < 0)
        abort();
    return fault;
}

static int fd_of(void *cookie)
{
    return static_cast<int>(reinterpret_cast<intptr_t>(cookie));
}

static ssize_t read_or_fail(void *cookie, char *block, size_t size)
{
    if (fault_at(1, fd_of(cookie))) return -1;
    return read(fd_of(cookie), block, size);
}

static ssize_t write_or_fail(void *cookie, const char *block, size_t size)
{
    if (fault_at(2, fd_of(cookie))) return 0; // as the C library wants it
    return write(fd_of(cookie), block, size);
}

static int close_or_fail(void *cookie)
{
    const bool fault = fault_at(3, fd_of(cookie));
    const int status = close(fd_of(cookie));
    if (fault) errno = reason;
    return fault ? EOF : status;
}

extern "C" FILE *__wrap_fopen(const char *name, const char *mode)
{
    if (fault_at(0, -1)) return nullptr;
    const int flags = mode[0] == 'w' ? O_WRONLY | O_CREAT | O_TRUNC : O_RDONLY;
    const int fd = open(name, flags, 0644);
    if (fd < 0) return nullptr;
    const cookie_io_functions_t calls = {read_or_fail, write_or_fail, nullptr, close_or_fail};
    return fopencookie(reinterpret_cast<void *>(static_cast<intptr_t>(fd)), mode, calls);
}

/* A removal leaves a mark only: the process that goes on without the fault still writes the file.
 */
extern "C" int __real_unlink(const char *name);
extern "C" int __wrap_unlink(const char *name)
{
    const std::string mark = std::string(name).substr(std::string(name).rfind('/') + 1) + ".gone";
    const int fd = open(mark.c_str(), O_WRONLY | O_CREAT, 0644);
    return fd < 0 ? -1 : close(fd);
}

/* ---- judging ------------------------------------------------------------------------------- */

// Lines of the partition file that hold one part number; -1 when there is no such file.
static long count_lines()
{
    FILE *const file = __real_fopen("f.hgr.part.2", "r");
    if (file == nullptr) return -1;
    long lines = 0;
    for (char line[16]; fgets(line, sizeof line, file) != nullptr;)
        lines += strcmp(line, "0\n") == 0 || strcmp(line, "1\n") == 0;
    fclose(file);
    return lines;
}

static void judge_file(const Ending &ending)
{
    const bool survived = !ending.signalled && ending.status == SURVIVED;
    if (ending.signalled || (ending.status != 0 && !survived))
        complain("%s %d: %s", ending.signalled ? "signal" : "status", ending.status,
                 ending.message.c_str());
    if (ending.message.empty() && (!survived || count_lines() != NVERTICES))
        complain("a silent end with %ld lines written", count_lines());
    if (!ending.message.empty() && survived) complain("went on after: %s", ending.message.c_str());
    const bool removed = __real_unlink("f.hgr.part.2.gone") == 0;
    if (removed != (ending.message.find("cannot write") != std::string::npos))
        complain("the file is%s removed after: %s", removed ? "" : " not", ending.message.c_str());
}

static void write_inputs()
{
    FILE *const graph = __real_fopen("f.hgr", "w");
    FILE *const fix = __real_fopen("f.fix", "w");
    if (graph == nullptr || fix == nullptr) abort();
    fprintf(graph, "%d %d\n", NVERTICES - 1, NVERTICES);
    for (int v = 1; v < NVERTICES; v++) fprintf(graph, "%d %d\n", v, v + 1);
    for (int v = 0; v < NVERTICES; v++) fprintf(fix, "%d\n", v < NVERTICES / 2 ? 0 : 1);
    if (fclose(graph) != 0 || fclose(fix) != 0) abort();
}

int main()
{
    char place[] = "faults-XXXXXX";
    if (mkdtemp(place) == nullptr || chdir(place) != 0) return 2;
    write_inputs();
    const int kept = dup(STDOUT_FILENO);
    if (freopen("/dev/null", "w", stdout) == nullptr) return 2;
    char word[11][8] = {"zorpel", "f.hgr", "f.fix", "2", "5", "1", "5", "1", "0", "0", "0"};
    char *words[11];
    for (int i = 0; i < 11; i++) words[i] = word[i];
    for (const int error : {EIO, ENOSPC, EDQUOT}) {
        reason = error;
        for (const bool all_later : {false, true}) {
            arm_faults(all_later, judge_file);
            program_main(11, words);
            disarm_faults();
            if (count_lines() != NVERTICES) complain("the run without a fault wrote no whole file");
            __real_unlink("f.hgr.part.2");
        }
    }
    __real_unlink("f.hgr");
    __real_unlink("f.fix");
    if (chdir("..") != 0 || rmdir(place) != 0) complain("files left over in %s", place);
    dprintf(kept, "openings %d, reads %d, writes %d, closings %d failed; %d complaints\n",
            points_of[0], points_of[1], points_of[2], points_of[3], count_complaints());
    for (const int points : points_of)
        if (points < 6) return 1; // the faults no longer reach the program
    return count_complaints() > 0;
}

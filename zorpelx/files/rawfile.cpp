// SPDX-License-Identifier: MIT
/* zorpelx/files/rawfile.cpp: the bytes of a file, block by block, within a budget.
 *
 * A pipe is opened without waiting for its writer and polled, so that a deadline holds even if no
 * writer ever comes. A pipe that no writer has opened yet never polls as ended.
 */
#include "rawfile.h"

#include <cassert>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "fileerror.h"
#include "zorpelx.h"

constexpr double LONGEST_WAIT = 0.1; // seconds until deadline and cancel flag are looked at again

[[noreturn]] static void unreadable(const RawFile &file)
{
    file_error(ZORPELX_SYSTEM, "%s: %s", file.budget->name.c_str(), strerror(errno));
}

RawFile open_raw(const std::string &name, Budget *budget)
{
    charge(budget, RAW_BLOCK);
    RawFile file = {STDIN_FILENO, name != "-", budget, {}, 0, 0, false};
    file.block.resize(RAW_BLOCK);
    if (file.owned) file.descriptor = open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file.descriptor < 0) unreadable(file);
    return file;
}

void close_raw(RawFile *file)
{
    if (file->owned && file->descriptor >= 0) close(file->descriptor);
    file->descriptor = -1;
    give_back(file->budget, file->block.size());
    file->block = {};
}

/* Returns when there is something to read, or the end of the file. */
static void wait_for_bytes(const RawFile &file)
{
    for (;;) {
        check_time(*file.budget);
        struct pollfd wanted = {file.descriptor, POLLIN, 0};
        const int moment = 1 + static_cast<int>(1000 * time_left(*file.budget, LONGEST_WAIT));
        const int ready = poll(&wanted, 1, moment);
        if (ready > 0) return;
        if (ready < 0 && errno != EINTR && errno != EAGAIN) unreadable(file);
    }
}

size_t read_into(RawFile *file, char *room, size_t size)
{
    for (;;) {
        wait_for_bytes(*file);
        const ssize_t got = read(file->descriptor, room, size);
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (got < 0) unreadable(*file);
        file->finished = got == 0;
        return static_cast<size_t>(got);
    }
}

/* Reads into the block from `at` on. */
static void read_more(RawFile *file, size_t at)
{
    char *const room = reinterpret_cast<char *>(file->block.data());
    file->end = at + read_into(file, room + at, file->block.size() - at);
}

bool refill(RawFile *file)
{
    if (file->begin < file->end) return true;
    if (file->finished) return false;
    file->begin = file->end = 0;
    read_more(file, 0);
    return !file->finished;
}

void fill_up_to(RawFile *file, size_t wanted)
{
    assert(file->begin == 0 && wanted <= file->block.size());
    while (file->end < wanted && !file->finished) read_more(file, file->end);
}

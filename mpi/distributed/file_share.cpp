// SPDX-License-Identifier: MIT
/* mpi/distributed/file_share.cpp: pieces of a file, lines in them, digests. */
#include "distributed/file_share.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/heavy_assert.h"

constexpr int64_t PIECE = 1 << 20;

bool read_bytes(const FileShare *share, int64_t place, void *bytes, int64_t n, ShareFault *fault)
{
    assert(place >= 0 && n >= 0);
    char *to = static_cast<char *>(bytes);
    while (n > 0) {
        const ssize_t got = pread(share->file, to, static_cast<size_t>(n), place);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) note_fault(fault, FAULT_IO, -1, "cannot be read: %s", strerror(errno));
        if (got == 0) note_fault(fault, FAULT_IO, -1, "has become shorter while it was read");
        if (got <= 0) return false;
        to += got;
        place += got;
        n -= got;
    }
    return true;
}

/* A number that other bytes hardly have: not secure, but four places at a time are fast. */
static uint64_t digest_of(const FileShare *share, int64_t begin, int64_t end, ShareFault *fault)
{
    std::vector<uint64_t> words(PIECE / 8);
    assert(begin >= 0 && begin <= end && end <= share->size);
    uint64_t sums[4] = {1, 2, 3, static_cast<uint64_t>(end - begin)};
    for (int64_t at = begin; at < end; at += PIECE) {
        const int64_t n = end - at < PIECE ? end - at : PIECE;
        if (n < PIECE) std::fill(words.begin(), words.end(), 0);
        if (!read_bytes(share, at, words.data(), n, fault)) return 0;
        for (size_t i = 0; i < words.size(); i += 4)
            for (size_t j = 0; j < 4; j++)
                sums[j] = (sums[j] ^ words[i + j]) * 0x9e3779b97f4a7c15u ^ sums[j] >> 29;
    }
    return mixed(mixed(mixed(sums[0]) + sums[1]) + sums[2]) + mixed(sums[3]);
}

bool open_share(Ranks *ranks, const char *name, FileShare *share, ShareFault *fault)
{
    struct stat status;
    share->file = open(name, O_RDONLY | O_CLOEXEC);
    if (share->file < 0 || fstat(share->file, &status) != 0)
        note_fault(fault, FAULT_IO, -1, "cannot be opened: %s", strerror(errno));
    else if (!S_ISREG(status.st_mode))
        note_fault(fault, FAULT_IO, -1, "is no regular file, of which ranks could read shares");
    share->size = fault->kind == FAULT_NONE ? status.st_size : 0;
    if (agree_on_fault(ranks, fault)) return false;
    if (least_of_all(ranks, share->size) != most_of_all(ranks, share->size))
        note_fault(fault, FAULT_INPUT, -1, "is not the same on all ranks: its size differs");
    return !agree_on_fault(ranks, fault);
}

static int64_t cut_at(const Ranks *ranks, int64_t skip, int64_t size, int r)
{
    return skip + static_cast<int64_t>(static_cast<__int128>(size - skip) * r / ranks->nranks);
}

bool set_share(Ranks *ranks, int64_t skip, FileShare *share, ShareFault *fault)
{
    assert(skip >= 0 && skip <= share->size);
    const int next = (ranks->rank + 1) % ranks->nranks;
    share->begin = cut_at(ranks, skip, share->size, ranks->rank);
    share->end = cut_at(ranks, skip, share->size, ranks->rank + 1);
    assert(share->begin >= skip && share->begin <= share->end && share->end <= share->size);
    share->digest = digest_of(share, share->begin, share->end, fault);
    share->skip = skip;
    share->head = digest_of(share, 0, skip, fault);
    uint64_t mine = share->digest;
    if (ranks->nranks > 1)
        mine = digest_of(share, cut_at(ranks, skip, share->size, next),
                         cut_at(ranks, skip, share->size, next + 1), fault);
    if (agree_on_fault(ranks, fault)) return false;
    const std::vector<int64_t> digests = list_all(ranks, static_cast<int64_t>(share->digest)),
                               heads = list_all(ranks, static_cast<int64_t>(share->head));
    if (mine != static_cast<uint64_t>(digests[static_cast<size_t>(next)]) ||
        share->head != static_cast<uint64_t>(heads[0]))
        note_fault(fault, FAULT_INPUT, -1, "is not the same on ranks %d and %d", ranks->rank,
                   share->head != static_cast<uint64_t>(heads[0]) ? 0 : next);
    rewind_share(share);
    return !agree_on_fault(ranks, fault);
}

void check_unchanged(const FileShare *share, ShareFault *fault)
{
    struct stat status;
    if (fstat(share->file, &status) != 0 || status.st_size != share->size ||
        digest_of(share, 0, share->skip, fault) != share->head ||
        digest_of(share, share->begin, share->end, fault) != share->digest)
        note_fault(fault, FAULT_IO, -1, "has changed while it was read");
}

void close_share(FileShare *share)
{
    if (share->file >= 0) close(share->file);
    share->file = -1;
    std::string().swap(share->buffer);
}

/* Goes on to where the share's first line begins. */
void rewind_share(FileShare *share)
{
    share->place = share->begin > 0 ? share->begin - 1 : 0; // a newline may be before it
    share->at = share->filled = 0;
    share->buffer.clear();
}

/* Moves what is not taken to the front and reads a piece behind it; false at the end of file. */
static bool fill(FileShare *share, ShareFault *fault)
{
    const int64_t n = share->size - share->place < PIECE ? share->size - share->place : PIECE;
    if (n <= 0) return false;
    assert(share->at <= share->filled && share->filled == share->buffer.size());
    share->buffer.erase(0, share->at);
    share->filled -= share->at;
    share->at = 0;
    share->buffer.resize(share->filled + static_cast<size_t>(n));
    if (!read_bytes(share, share->place, share->buffer.data() + share->filled, n, fault))
        return false;
    share->place += n;
    share->filled += static_cast<size_t>(n);
    HEAVY_ASSERT(share_ok(share));
    return true;
}

static int64_t place_of_next(const FileShare *share)
{
    return share->place - static_cast<int64_t>(share->filled - share->at);
}

/* The next line, comments included, wherever it begins. */
static bool take_line(FileShare *share, const char **begin, const char **end, ShareFault *fault)
{
    size_t looked = 0; // bytes of the line that are known to have no newline
    for (;;) {
        const char *const from = share->buffer.data() + share->at;
        const size_t n = share->filled - share->at;
        const void *const newline = memchr(from + looked, '\n', n - looked);
        if (newline != nullptr) {
            *begin = from;
            *end = static_cast<const char *>(newline);
            share->at += static_cast<size_t>(*end - from) + 1;
            assert(share->at <= share->filled);
            return true;
        }
        looked = n;
        if (fill(share, fault)) continue;
        *begin = share->buffer.data() + share->at; // fill may have moved it
        *end = *begin + n;
        share->at = share->filled;
        return n > 0;
    }
}

bool next_line(FileShare *share, const char **begin, const char **end, ShareFault *fault)
{
    const bool first = share->filled == 0 && share->at == 0 && share->begin > 0;
    if (first && !take_line(share, begin, end, fault)) return false; // belongs to the rank before
    do {
        if (fault->kind != FAULT_NONE || place_of_next(share) >= share->end) return false;
        if (!take_line(share, begin, end, fault)) return false;
    } while (*begin < *end && **begin == '%');
    return true;
}

bool first_line(FileShare *share, std::string *line, int64_t *behind, ShareFault *fault)
{
    share->begin = 0;
    share->end = share->size;
    rewind_share(share);
    const char *begin, *end;
    if (!next_line(share, &begin, &end, fault)) {
        note_fault(fault, FAULT_INPUT, 0, "has no header");
        return false;
    }
    line->assign(begin, end);
    *behind = place_of_next(share);
    return true;
}

int next_number(const char **at, const char *end, int64_t *number)
{
    const char *s = *at;
    while (s < end && (*s == ' ' || *s == '\t' || *s == '\r')) s++;
    *at = s;
    if (s == end) return 0;
    const bool negative = *s == '-';
    if (*s == '-' || *s == '+') s++;
    if (s == end || *s < '0' || *s > '9') return -1;
    uint64_t value = 0;
    for (; s < end && *s >= '0' && *s <= '9'; s++) {
        value = value * 10 + static_cast<uint64_t>(*s - '0');
        if (value >> 62 != 0) return -1;
    }
    if (s < end && *s != ' ' && *s != '\t' && *s != '\r') return -1;
    *number = negative ? -static_cast<int64_t>(value) : static_cast<int64_t>(value);
    *at = s;
    return 1;
}

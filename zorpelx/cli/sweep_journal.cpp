// SPDX-License-Identifier: MIT
/* zorpelx/cli/sweep_journal.cpp: the results of a sweep, line by line, as they come. */
#include "sweep_journal.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <unistd.h>

#include "escaped.h"

[[noreturn]] static void fail_for(const std::string &name)
{
    fail(STATUS_IO, "%s: %s", escaped(name).c_str(), strerror(errno));
}

static std::string content_of(const SweepJournal &journal)
{
    std::string content;
    char piece[1 << 16];
    for (;;) {
        const ssize_t got = read(journal.file, piece, sizeof piece);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail_for(journal.name);
        if (got == 0) return content;
        content.append(piece, static_cast<size_t>(got));
    }
}

static void write_line(const SweepJournal &journal, const std::string &line)
{
    size_t done = 0;
    while (done < line.size()) {
        const ssize_t put = write(journal.file, line.data() + done, line.size() - done);
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) fail_for(journal.name);
        done += static_cast<size_t>(put);
    }
    if (fdatasync(journal.file) != 0 && errno != EINVAL) fail_for(journal.name);
}

void append_line(const SweepJournal &journal, const Json &line)
{
    write_line(journal, line.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n');
}

/* Takes in whole lines; what is torn at the end is cut off from the file. */
static std::vector<Json> whole_lines(const SweepJournal &journal, const std::string &content)
{
    std::vector<Json> lines;
    size_t from = 0;
    for (size_t end; (end = content.find('\n', from)) != std::string::npos; from = end + 1) {
        const std::string_view text = std::string_view(content).substr(from, end - from);
        Json line = Json::parse(text, nullptr, false);
        const bool last = end + 1 == content.size();
        if (line.is_discarded() && last) break;
        if (line.is_discarded())
            fail(STATUS_BAD_INPUT, "%s:%zu: this is no line of a journal",
                 escaped(journal.name).c_str(), lines.size() + 1);
        lines.push_back(std::move(line));
    }
    if (from < content.size() && ftruncate(journal.file, static_cast<off_t>(from)) != 0)
        fail_for(journal.name);
    return lines;
}

static void check_head(const SweepJournal &journal, const Json &head, const Json &found)
{
    for (const auto &[field, value] : head.items()) {
        if (found.is_object() && found.contains(field) && found[field] == value) continue;
        fail(STATUS_USAGE,
             "%s is of another sweep: its %s differs; choose another folder by -o, or remove it",
             escaped(journal.name).c_str(), field.c_str());
    }
}

SweepJournal open_journal(const std::string &name, const Json &head)
{
    SweepJournal journal;
    journal.name = name;
    journal.file = open(name.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (journal.file < 0) fail_for(name);
    if (flock(journal.file, LOCK_EX | LOCK_NB) != 0)
        fail(STATUS_USAGE, "%s: another sweep is at work there", escaped(name).c_str());
    journal.lines = whole_lines(journal, content_of(journal));
    if (journal.lines.empty()) {
        append_line(journal, head);
        return journal;
    }
    check_head(journal, head, journal.lines[0]);
    journal.lines.erase(journal.lines.begin());
    return journal;
}

void close_journal(SweepJournal *journal)
{
    if (journal->file >= 0) close(journal->file);
    journal->file = -1;
}

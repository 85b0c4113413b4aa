/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/journal.h: the results of jobs in files, which outlive who wrote them.
 *
 * A folder holds run.json, which says what is partitioned and how, and a file of results for each
 * writer. Results are appended whole, with a checksum, and put on the disk one by one: a writer
 * that is killed leaves at most one that is cut off, which readers pass over and the next writer
 * removes.
 */
#ifndef ZORPELX_CLI_JOURNAL_H
#define ZORPELX_CLI_JOURNAL_H

#include <map>
#include <string>
#include <vector>

#include "jobboard.h"
#include "solving.h"

/* What run.json says. */
struct RunNote {
    uint64_t digest = 0; // digest_of() what is partitioned and how
    int64_t shards = 1;
    std::string folder;             // where names of files begin
    std::vector<std::string> words; // of the command line that began it
};

/* A number that hardly two hypergraphs, versions or settings that decide on the result share. */
uint64_t digest_of(const Settings &settings, const Problem &problem);

uint64_t digest_of_part(const std::vector<int> &part);

/* Makes the folder where there is none, and the note in it; another note that is there has to be of
 * the same run.
 * Throws  STATUS_USAGE if it is of another one, STATUS_IO */
void join_run(const std::string &folder, const RunNote &note);

/* The note of a run that has begun. Throws: STATUS_BAD_INPUT, STATUS_IO */
RunNote read_run(const std::string &folder);

class Journal
{
  public:
    /* For the results of a run in its folder.
     *   name  of the file that this process writes; empty: none */
    Journal(const std::string &where, const std::string &name, uint64_t run);
    ~Journal();
    Journal(const Journal &) = delete;
    Journal &operator=(const Journal &) = delete;

    /* What any writer has added since the last call. Throws: STATUS_IO */
    std::vector<FinishedJob> read();
    /* Appends a result. Throws: STATUS_IO; the file is as before then. */
    void append(const JobRecord &record);

  private:
    void open_own(const std::string &name);
    size_t read_file(const std::string &path, size_t from, std::vector<FinishedJob> *records) const;

    std::string folder;
    uint64_t digest;
    int own = -1;
    size_t own_size = 0;
    std::map<std::string, size_t> seen; // bytes of each file that were read
};

#endif

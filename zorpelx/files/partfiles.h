/* SPDX-License-Identifier: MIT */
/* zorpelx/files/partfiles.h: partition and fix files, a number per vertex. */
#ifndef ZORPELX_FILES_PARTFILES_H
#define ZORPELX_FILES_PARTFILES_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "budget.h"
#include "rules.h"

/* One entry per vertex; where the file supplies none, 0 as zorpel takes it. nparts of 0: not
 * known. */
std::vector<int64_t> scan_fix(std::string_view bytes, int64_t nvertices, int64_t nparts,
                              Findings *findings, Budget *budget);

/* Every number of a partition file, each from 0 and below 2^31 - 1.
 *   nvertices  as many numbers as there should be; -1 if that is not known
 *   unended    out: the last line has no newline
 * Errors  FileError with the place */
std::vector<int64_t> scan_partition(std::string_view bytes, int64_t nvertices, Budget *budget,
                                    bool *unended);

/* Every number of a file of numbers, whatever they mean, each of 32 bits. */
std::vector<int64_t> scan_numbers(std::string_view bytes, Budget *budget, bool *unended);

#endif

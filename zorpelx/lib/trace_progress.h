/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/trace_progress.h: progress read off the engine's trace while it grows. */
#ifndef ZORPELX_LIB_TRACE_PROGRESS_H
#define ZORPELX_LIB_TRACE_PROGRESS_H

#include <cstdint>
#include <string>
#include <sys/types.h>

#include "zorpelx.h"

/* The traces that progress is read off. */
constexpr int PROGRESS_TRACES = ZORPEL_DBG_COARSEN | ZORPEL_DBG_RUN;

struct Counts {
    int64_t runs = 0;
    int64_t levels = 0;
    int level_vtxs = -1;
    int run_cut = -1;
};

/* Reads a growing file of lines made under PROGRESS_TRACES; what is read is freed. */
class TraceScanner
{
  public:
    void restart() { *this = TraceScanner(); }
    void scan(int fd, Counts *counts);

  private:
    off_t place = 0;
    std::string line; // the last line as far as it was written
};

#endif

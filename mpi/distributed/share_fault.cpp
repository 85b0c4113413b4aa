// SPDX-License-Identifier: MIT
/* mpi/distributed/share_fault.cpp: of many faults, one that all ranks name alike. */
#include "distributed/share_fault.h"

#include <cstdarg>
#include <cstdio>

void note_fault(ShareFault *fault, FaultKind kind, int64_t line, const char *format, ...)
{
    assert(kind != FAULT_NONE);
    if (fault->kind != FAULT_NONE) return;
    fault->kind = kind;
    fault->line = line;
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(fault->text, sizeof fault->text, format, arguments);
    va_end(arguments);
}

bool agree_on_fault(Ranks *ranks, ShareFault *fault)
{
    const int64_t line = least_of_all(ranks, fault->kind == FAULT_NONE ? INT64_MAX : fault->line);
    if (line == INT64_MAX) return false;
    const bool mine = fault->kind != FAULT_NONE && fault->line == line;
    const int64_t speaker = least_of_all(ranks, mine ? ranks->rank : ranks->nranks);
    assert(speaker >= 0 && speaker < ranks->nranks);
    MPI_Bcast(fault, static_cast<int>(sizeof *fault), MPI_BYTE, static_cast<int>(speaker),
              ranks->comm);
    return true;
}

/* SPDX-License-Identifier: MIT */
/* mpi/same_words.h: what all ranks of a distributed command must have in common. */
#ifndef ZORPEL_MPI_SAME_WORDS_H
#define ZORPEL_MPI_SAME_WORDS_H

#include <mpi.h>

#include "failure.h"
#include "solving.h"

/* Compares version and command line of all ranks, which call it together; rank 0 names the first
 * rank that differs. STATUS_USAGE on all ranks if one does. */
Status check_same_words(const Settings &settings, MPI_Comm all);

#endif

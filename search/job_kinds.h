/* SPDX-License-Identifier: MIT */
/* search/job_kinds.h: the jobs of a search. What one does depends on its number, the seed and, for
 * combinations, the pool. */
#ifndef ZORPEL_SEARCH_JOB_KINDS_H
#define ZORPEL_SEARCH_JOB_KINDS_H

#include "search/search_state.h"

/* A partition from scratch. */
void make_member(const Search *search, int job, Member *result);

/* A combination of two members of the pool: what neither cuts stays together. */
void combine(const Search *search, int job, Member *result);

#endif

/* SPDX-License-Identifier: MIT */
/* search/job_batch.h: jobs that need nothing of each other, made by threads and by others. */
#ifndef ZORPEL_SEARCH_JOB_BATCH_H
#define ZORPEL_SEARCH_JOB_BATCH_H

#include "search/search_state.h"

/* Makes the partition of a job: a part for each vertex of search->task.graph. Several threads call
 * it at once. */
using JobWork = void(const Search *search, int job, Member *result);

/* Makes the next n jobs, MOST_POOL at most, several at a time, and takes their results in by
 * number. */
void make_batch(Search *search, int n, SearchStep step, JobWork *work);

#endif

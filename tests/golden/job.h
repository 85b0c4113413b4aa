/* SPDX-License-Identifier: MIT */
/* tests/golden/job.h: a call of an entry point as a line of standard input: entry point, parts,
 * factor, options, seed, fix file or "-".
 */
#ifndef ZORPEL_TESTS_GOLDEN_JOB_H
#define ZORPEL_TESTS_GOLDEN_JOB_H

#include <iostream>
#include <string>

#include "zorpel.h"

struct Job {
    std::string entry, fix;
    int nparts, ubfactor;
    int options[ZORPEL_NOPTIONS];
};

inline bool take_job(Job *job)
{
    int *const options = job->options;
    options[ZORPEL_OPT_USE] = 1;
    std::cin >> job->entry >> job->nparts >> job->ubfactor;
    for (int slot = ZORPEL_OPT_NRUNS; slot <= ZORPEL_OPT_RECONST; slot++) std::cin >> options[slot];
    std::cin >> options[ZORPEL_OPT_SEED] >> job->fix;
    options[ZORPEL_OPT_FIXED] = job->fix != "-";
    options[ZORPEL_OPT_DBGLVL] = 0;
    return static_cast<bool>(std::cin);
}

#endif

// SPDX-License-Identifier: MIT
/* tests/counts/count_work.cpp: calls the counted library and tells how much work each call did.
 *
 *   count_work HGR <JOBS >COUNTS
 * A job is a line: ENTRY NPARTS UBFACTOR NRUNS CTYPE RTYPE VCYCLE RECONST SEED FIX, with ENTRY
 * recursive, internal or refine and FIX the name of a fix file or -. Its answer is a line with the
 * counts, separated by commas; the first line of all has their names.
 */
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "../golden/job.h"
#include "flat_hypergraph.h"
#include "zorpel.h"

extern "C" int zorpel_work_counts(const long long **counts, const char *const **names);

/* What part holds before the call: the fix file, else alternate sides for a refinement. */
static std::vector<int> starting_parts(int nvtxs, const Job *job)
{
    std::vector<int> part(static_cast<size_t>(nvtxs), 0);
    if (job->entry == "refine")
        for (size_t v = 0; v < part.size(); v++) part[v] = v % 2;
    if (job->fix == "-") return part;
    std::ifstream file(job->fix);
    for (int &p : part)
        if (!(file >> p)) {
            fprintf(stderr, "%s is short\n", job->fix.c_str());
            exit(1);
        }
    return part;
}

static void call_library(const Input *input, const Job *job)
{
    const int *const vwgts = input->vwgts.empty() ? nullptr : input->vwgts.data();
    const int *const hewgts = input->hewgts.empty() ? nullptr : input->hewgts.data();
    std::vector<int> part = starting_parts(input->nvtxs, job);
    int cut;
    if (job->entry == "refine") {
        srand(static_cast<unsigned>(job->options[ZORPEL_OPT_SEED]));
        ZORPEL_2WayRefine(input->nvtxs, input->nhedges, vwgts, input->eptr.data(),
                          input->eind.data(), hewgts, job->ubfactor, job->options, part.data(),
                          &cut);
        return;
    }
    const auto entry =
        job->entry == "internal" ? ZORPEL_PartRecursiveInternal : ZORPEL_PartRecursive;
    entry(input->nvtxs, input->nhedges, vwgts, input->eptr.data(), input->eind.data(), hewgts,
          job->nparts, job->ubfactor, job->options, part.data(), &cut);
}

int main(int nwords, char **words)
{
    if (nwords != 2) {
        fputs("usage: count_work HGR <JOBS >COUNTS\n", stderr);
        return 2;
    }
    const Input input = read_input(words[1]);
    const long long *counts;
    const char *const *names;
    const int n = zorpel_work_counts(&counts, &names);
    for (int i = 0; i < n; i++) printf("%s%c", names[i], i + 1 < n ? ',' : '\n');
    Job job;
    while (take_job(&job)) {
        const std::vector<long long> before(counts, counts + n);
        call_library(&input, &job);
        for (int i = 0; i < n; i++)
            printf("%lld%c", counts[i] - before[static_cast<size_t>(i)], i + 1 < n ? ',' : '\n');
    }
    return 0;
}

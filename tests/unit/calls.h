/* SPDX-License-Identifier: MIT */
/* tests/unit/calls.h: calls of the public entry points on hypergraphs held in vectors. */
#ifndef ZORPEL_TESTS_UNIT_CALLS_H
#define ZORPEL_TESTS_UNIT_CALLS_H

#include <array>
#include <vector>

#include "support.h"
#include "zorpel.h"

using Options = std::array<int, ZORPEL_NOPTIONS>;

/* One run of HFC and FM, no V-cycles, seed 1, no traces. */
inline Options quick_options()
{
    return {1, 1, ZORPEL_CTYPE_HFC, ZORPEL_RTYPE_FM, ZORPEL_VCYCLE_NO, 0, 0, 1, 0};
}

/* The same with one slot changed. */
inline Options options_with(int slot, int value)
{
    Options options = quick_options();
    options[static_cast<size_t>(slot)] = value;
    return options;
}

/* A hypergraph as a caller holds it; empty weights are passed as null. */
struct Problem {
    int nvtxs = 0, nhedges = 0;
    Nets nets;
    std::vector<int> vwgts, hewgts, eptr = {0}, eind;
};

inline Problem make_problem(int nvtxs, const Nets &nets)
{
    Problem problem;
    problem.nvtxs = nvtxs;
    problem.nhedges = static_cast<int>(nets.size());
    problem.nets = nets;
    for (const std::vector<int> &net : nets) {
        problem.eind.insert(problem.eind.end(), net.begin(), net.end());
        problem.eptr.push_back(static_cast<int>(problem.eind.size()));
    }
    return problem;
}

struct Result {
    std::vector<int> part;
    int cut;
    bool operator==(const Result &) const = default;
};

inline const int *or_null(const std::vector<int> &x)
{
    return x.empty() ? nullptr : x.data();
}

using Partitioner = void (*)(int nvtxs, int nhedges, const int *vwgts, const int *eptr,
                             const int *eind, const int *hewgts, int nparts, int ubfactor,
                             const int *options, int *part, int *edgecut);

/* part holds pre-assignments, or is left out. */
inline Result partition_by(Partitioner entry, const Problem &problem, int nparts, int ubfactor,
                           const Options &options, std::vector<int> part = {})
{
    part.resize(static_cast<size_t>(problem.nvtxs), -77);
    Result result = {part, -77};
    entry(problem.nvtxs, problem.nhedges, or_null(problem.vwgts), problem.eptr.data(),
          problem.eind.data(), or_null(problem.hewgts), nparts, ubfactor, options.data(),
          result.part.data(), &result.cut);
    return result;
}

inline Result partition(const Problem &problem, int nparts, int ubfactor, const Options &options,
                        std::vector<int> part = {})
{
    return partition_by(ZORPEL_PartRecursive, problem, nparts, ubfactor, options, std::move(part));
}

inline Result refine(const Problem &problem, int ubfactor, const Options &options,
                     const std::vector<int> &part)
{
    Result result = {part, -77};
    ZORPEL_2WayRefine(problem.nvtxs, problem.nhedges, or_null(problem.vwgts), problem.eptr.data(),
                      problem.eind.data(), or_null(problem.hewgts), ubfactor, options.data(),
                      result.part.data(), &result.cut);
    return result;
}

#endif

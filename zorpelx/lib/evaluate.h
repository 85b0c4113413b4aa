/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/evaluate.h: exact quality of partitions that were checked before. */
#ifndef ZORPELX_LIB_EVALUATE_H
#define ZORPELX_LIB_EVALUATE_H

#include <cstdint>
#include <vector>

#include "watch.h"

/* Lists the parts that a hyperedge touches, with the help of a mark per part. */
class Touched
{
  public:
    Touched(const zorpelx_hypergraph &hypergraph, int nparts, Watch &heeded);

    /* Parts of another partition [nvtxs], to be asked for from here on. */
    void turn_to(const int *parts);
    /* The parts of hyperedge e in order of first appearance; good until the next call. Asked for with
     * rising e. */
    const std::vector<int> &by(int e);

  private:
    const zorpelx_hypergraph &h;
    Watch &watch;
    const Charge charge;
    const int *part = nullptr;
    std::vector<int> mark; // [nparts] last hyperedge that touched each part
    std::vector<int> list;
};

/* Evaluates one partition after the other, in memory that is taken once. */
class Evaluator
{
  public:
    Evaluator(const zorpelx_hypergraph &hypergraph, int nparts, Watch &heeded);

    const zorpelx_quality &evaluate(const int *part); // [nvtxs]

    /* Of the partition evaluated last. */
    const std::vector<int64_t> &pwgts() const { return weights; }  // [nparts]
    const std::vector<int64_t> &pcuts() const { return external; } // [nparts] external degrees

  private:
    void weigh_parts(const int *part);
    void weigh_cut(const int *part);
    double scaled_cost() const;

    const zorpelx_hypergraph &h;
    Watch &watch;
    const Charge charge;
    std::vector<int64_t> weights, external;
    std::vector<int> nvtxs; // [nparts]
    Touched touched;
    zorpelx_quality quality = {};
};

#endif

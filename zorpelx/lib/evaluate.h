/* zorpelx/lib/evaluate.h: exact quality of a partition that was checked before. */
#ifndef ZORPELX_LIB_EVALUATE_H
#define ZORPELX_LIB_EVALUATE_H

#include <cstdint>
#include <vector>

#include "zorpelx.h"

struct Evaluation {
    zorpelx_quality quality;
    std::vector<int64_t> pwgts; // [nparts]
    std::vector<int64_t> pcuts; // [nparts] external degrees
};

Evaluation evaluate(const zorpelx_hypergraph &h, int nparts, const int *part);

#endif

/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/claims.h: what verify was told to check. */
#ifndef ZORPELX_CLI_CLAIMS_H
#define ZORPELX_CLI_CLAIMS_H

#include <string>
#include <vector>

#include "figures.h"
#include "hypergraph.h"
#include "options.h"
#include "record.h"

/* Something that should be so. */
struct Claim {
    std::string name;
    bool holds;
    std::string text;
};

/* All that a record tells and that can be counted from the files: its own bytes, the digests of the
 * files, every figure, the generator. The files beside hypergraph and partition are read here. */
std::vector<Claim> claims_of_record(const Settings &settings, const Record &record,
                                    const Hypergraph &graph, const std::vector<int64_t> &part,
                                    const Figures &figures);

#endif

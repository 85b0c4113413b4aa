/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/difference.h: where two JSON values differ. */
#ifndef ZORPELX_CLI_DIFFERENCE_H
#define ZORPELX_CLI_DIFFERENCE_H

#include <string>
#include <vector>

#include "json.h"

/* One place. A side that has nothing there is null. */
struct Difference {
    std::string field; // "figures.parts.2.weight"
    Json recorded, now;
};

/* Every difference, in the order of the first; objects and arrays are entered. */
std::vector<Difference> differences(const Json &recorded, const Json &now);

/* "figures.cut: 176 in the record, 180 now" */
std::string difference_text(const Difference &difference);

#endif

/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/limits.h: how much weight each part may get. */
#ifndef ZORPELX_LIB_LIMITS_H
#define ZORPELX_LIB_LIMITS_H

#include <cstdint>
#include <vector>

struct Limits {
    int64_t least, most;
};

/* The limits of each part [nparts]; see zorpelx_part_limits(). */
std::vector<Limits> part_limits(int nparts, int ubfactor, bool polish, int64_t total);

#endif

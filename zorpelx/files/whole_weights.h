/* SPDX-License-Identifier: MIT */
/* zorpelx/files/whole_weights.h: weights of files that have real ones, as whole numbers. */
#ifndef ZORPELX_FILES_WHOLE_WEIGHTS_H
#define ZORPELX_FILES_WHOLE_WEIGHTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "rules.h"

/* Weights that add up to at most 2147483646. Where all are whole and add up to no more, they stay.
 * Otherwise all are multiplied by one number, a power of ten or, if they are whole and large, one
 * over a divisor, and rounded; then that is told with `what`, "areas" for instance.
 *   real  none is negative or infinite */
std::vector<int64_t> whole_weights(const std::vector<double> &real, const char *what,
                                   Findings *findings);

#endif

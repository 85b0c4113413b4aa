/* SPDX-License-Identifier: MIT */
/* zorpelx/report/assignment.h: which part of one partition is which of another. */
#ifndef ZORPELX_REPORT_ASSIGNMENT_H
#define ZORPELX_REPORT_ASSIGNMENT_H

#include <cstddef>
#include <cstdint>
#include <vector>

/* The columns that the rows get, each at most one, such that what they gain together is greatest.
 *   gain  [n][m] with n <= m, none negative
 * Cost    O(n * n * m)
 * Source  Kuhn, The Hungarian method for the assignment problem, Naval Research Logistics 2, 1955,
 *         in the form with shortest augmenting paths. */
std::vector<size_t> best_assignment(const std::vector<std::vector<int64_t>> &gain);

#endif

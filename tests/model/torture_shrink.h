/* SPDX-License-Identifier: MIT */
/* model/torture_shrink.h: the smallest case that still fails. */
#ifndef ZORPEL_TESTS_TORTURE_SHRINK_H
#define ZORPEL_TESTS_TORTURE_SHRINK_H

#include "torture_case.h"

/* Drops hyperedges, pins and vertices and makes weights and options plainer while fails(case)
 * stays true; makes at most most_tries calls of it. */
Case shrink_case(const Case &c, bool (*fails)(const Case &c), int most_tries);

#endif

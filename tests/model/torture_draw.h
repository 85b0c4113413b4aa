/* SPDX-License-Identifier: MIT */
/* model/torture_draw.h: random cases, each a function of its seed alone. */
#ifndef ZORPEL_TESTS_TORTURE_DRAW_H
#define ZORPEL_TESTS_TORTURE_DRAW_H

#include <cstdint>

#include "torture_case.h"

/* Draws the case of a seed: family, weights, call and options. */
Case draw_case(uint64_t seed);

/* The same on at most most_vtxs vertices. */
Case draw_small_case(uint64_t seed, int most_vtxs);

int count_families();
const char *family_name(int family);

#endif

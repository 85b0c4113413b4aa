/* SPDX-License-Identifier: MIT */
/* search/exact.h: the optimum of very small hypergraphs, by branch and bound. */
#ifndef ZORPEL_SEARCH_EXACT_H
#define ZORPEL_SEARCH_EXACT_H

#include "search/parts.h"

constexpr int EXACT_VERTICES = 24; // most that are tried
constexpr int EXACT_PARTS = 64;

/* Looks for a partition within the bounds of a smaller objective than *value; with *excess
 * above 0 any within the bounds will do.
 *   graph   in      at most EXACT_VERTICES vertices, bounds at most EXACT_PARTS parts
 *   fixed   in      [ncells] as in Parts, or null
 *   budget  in      most assignments of a vertex that are tried
 *   where   in/out  [ncells] replaced if something better is found
 * Returns true if the budget was enough: where is then an optimum, or there is none within the
 * bounds.
 * Source  Land, Doig, An automatic method of solving discrete programming problems, Econometrica
 *         28(3), 1960. */
bool solve_exactly(const HGraph *graph, const Bounds *bounds, Objective objective, const int *fixed,
                   int64_t budget, int64_t *value, int64_t *excess, int *where);

#endif

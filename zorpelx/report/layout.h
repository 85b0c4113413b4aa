/* SPDX-License-Identifier: MIT */
/* zorpelx/report/layout.h: places for the points of a picture, near to what they are joined with.
 */
#ifndef ZORPELX_REPORT_LAYOUT_H
#define ZORPELX_REPORT_LAYOUT_H

#include <cstddef>
#include <cstdint>
#include <vector>

struct Spot {
    double x, y;
};

/* An undirected link between two nodes; the weight is above 0. */
struct Link {
    int32_t from, to;
    double weight;
};

/* A place for each node, in a rectangle of the given size from 0, 0. The same on every machine: no
 * random numbers, and no function but the square root.
 * Cost    O(nodes * (20 + steps * 1000) + links * (20 + steps)), with fewer steps for more nodes
 * Source  Brandes and Pich, Eigensolver methods for progressive multidimensional scaling of large
 *         data, Graph Drawing 2006, for the first places; Fruchterman and Reingold, Graph drawing
 *         by force-directed placement, Software: Practice and Experience 21, 1991, from there. */
std::vector<Spot> lay_out(size_t nnodes, const std::vector<Link> &links, double width,
                          double height);

#endif

/* SPDX-License-Identifier: MIT */
/* zorpelx/report/cluster.h: clusters of vertices, for pictures of large hypergraphs. */
#ifndef ZORPELX_REPORT_CLUSTER_H
#define ZORPELX_REPORT_CLUSTER_H

#include <cstdint>
#include <vector>

#include "facts.h"

/* The cluster of each vertex, numbered from 0 without gaps in the order of their first vertices. No
 * cluster has vertices of two parts; there are at most `most`, but one for every part at least. */
std::vector<int32_t> clusters_of(const Hypergraph &graph, const NamedPartition &division,
                                 int64_t most);

#endif

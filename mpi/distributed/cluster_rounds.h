/* SPDX-License-Identifier: MIT */
/* mpi/distributed/cluster_rounds.h: clusters of vertices, found in rounds by all ranks together. */
#ifndef ZORPEL_MPI_DISTRIBUTED_CLUSTER_ROUNDS_H
#define ZORPEL_MPI_DISTRIBUTED_CLUSTER_ROUNDS_H

#include "distributed/division.h"

/* Clusters of one level.
 *   L1  label[v] / 2 is the leader of v's cluster, a vertex that leads itself; label[v] % 2 says
 *       whether the cluster has more than one vertex
 *   L2  clusterweight[v], of a leader, is the weight of its cluster
 *   L3  a cluster of several vertices weighs at most mostweight
 *   L4  a cluster has no vertices that are fixed in different parts; clusterfixed[v], of a leader,
 *       is the part of those that are fixed, -1 if none is
 */
struct Clustering {
    int64_t mostweight;
    int64_t nclusters;                  // over all ranks
    std::vector<int64_t> label;         // [own]
    std::vector<int64_t> clusterweight; // [own]
    std::vector<int> clusterfixed;      // [own], or empty as in the level
};

inline int64_t leader_of(int64_t label)
{
    return label >> 1;
}
inline bool is_single(int64_t label)
{
    return (label & 1) == 0;
}

/* Forms clusters until there are no more than enough of them, or rounds are over.
 *   inside  in  null, or a partition: clusters keep to one of its parts
 * A vertex that is alone proposes to join the cluster that it is connected to most heavily; the
 * owner of a cluster's leader takes what fits, the strongest connection first. Vertices take turns
 * by lot, drawn from their numbers, so that proposals of one turn hardly ever cross.
 * The result depends on the hypergraph and seed only, not on who owns what.
 * Cost    four exchanges a turn; O(sum of squares of small hyperedges' sizes) a round.
 * Source  Meyerhenke, Sanders, Schulz, Parallel graph partitioning for complex networks, IPDPS 2015
 *         (clusters of bounded size by labels that travel); Gottesbueren, Hamann, Deterministic
 *         parallel hypergraph partitioning, Euro-Par 2022 (rounds in parts, decided together). */
void form_clusters(Ranks *ranks, const Level *level, uint64_t seed, int64_t mostweight,
                   int64_t enough, const Division *inside, Clustering *clustering);

/* Tests L1 to L4; all ranks call it together. */
bool clustering_ok(Ranks *ranks, const Level *level, const Clustering *clustering);

#endif

// SPDX-License-Identifier: MIT
/* search/tests/share_bisect_test.cpp: bisections whose bounds follow from those of the parts. */
#include <gtest/gtest.h>
#include <numeric>

#include "search/bisect.h"
#include "search_support.h"

namespace
{

/* A path of n vertices of weight 1, bisected within bounds; returns the weight of side 0. */
int weight_of_side_0(int n, int64_t least0, int64_t least1, int64_t most)
{
    HGraph *const graph = CreateHGraph__();
    std::vector<int> ptr = {0}, ind;
    for (int v = 0; v + 1 < n; v++) {
        ind.insert(ind.end(), {v, v + 1});
        ptr.push_back(static_cast<int>(ind.size()));
    }
    graph->ncells = n;
    graph->nnets = n - 1;
    graph->netptr = new_array(ptr);
    graph->netind = new_array(ind);
    graph->cellwgt = new_array(std::vector<int>(static_cast<size_t>(n), 1));
    graph->netwgt = new_array(std::vector<int>(static_cast<size_t>(n - 1), 1));
    CreateIncidentHGraph__(graph);
    const HGraphPtr owner(graph);
    int64_t mosts[] = {most, most}, leasts[] = {least0, least1};
    const Bounds bounds = {2, mosts, leasts};
    const SearchTask task = {graph, &bounds, Objective::cut, nullptr, 50, nullptr};
    const BisectOptions options = {1, 0, 1, MAX_NET_SIZE, 1};
    std::vector<int> part(static_cast<size_t>(n), -1);
    bisect_recursively(&task, graph, &options, part.data());
    return n - std::accumulate(part.begin(), part.end(), 0);
}

TEST(Bisect, bounds_that_can_be_kept_are_kept)
{
    const int side = weight_of_side_0(12, 7, 2, 10);
    EXPECT_GE(side, 7);
    EXPECT_LE(side, 10);
}

TEST(Bisect, what_is_too_light_for_all_its_parts_is_shared_as_they_are)
{
    const int side = weight_of_side_0(12, 24, 8, 40); // three to one
    EXPECT_GE(side, 8);
    EXPECT_LE(side, 10);
}

} // namespace

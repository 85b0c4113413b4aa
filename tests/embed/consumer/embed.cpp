// SPDX-License-Identifier: MIT
#include <cstdio>
#include <zorpelx.hpp>

int main()
{
    zorpelx::Hypergraph hypergraph;
    hypergraph.nvtxs = 6;
    hypergraph.add_hyperedge({0, 1, 2});
    hypergraph.add_hyperedge({3, 4, 5});
    hypergraph.add_hyperedge({2, 3});
    zorpelx::Options options;
    options.nparts = 2;
    try {
        const zorpelx::Partition partition = zorpelx::partition(hypergraph, options);
        std::printf("cut %d, vertices 2 and 3 %s\n", static_cast<int>(partition.result.cut),
                    partition.part[2] == partition.part[3] ? "together" : "apart");
    } catch (const zorpelx::Error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return error.status();
    }
    return 0;
}

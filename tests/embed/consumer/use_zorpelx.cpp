#include <cstdio>
#include <zorpelx.hpp>

int main()
{
    zorpelx::Hypergraph hypergraph;
    hypergraph.nvtxs = 4;
    hypergraph.add_hyperedge({0, 1});
    hypergraph.add_hyperedge({2, 3});
    const zorpelx::Partition partition = zorpelx::partition(hypergraph, zorpelx::Options());
    std::printf("cut %d\n", static_cast<int>(partition.result.cut));
    return static_cast<int>(partition.result.cut);
}

// SPDX-License-Identifier: MIT
/* mpi/cluster_verify.cpp: verify --distributed: cut, km1 and weights, counted by all ranks.
 *
 * Nothing here is shared with the partitioner but the transport and the reading of shares: no
 * ghosts, no levels. The part of every pin is asked of the vertex's owner, some hyperedges at a
 * time; sorted parts of a hyperedge tell how many it touches.
 */
#include "casts.h"
#include "cluster_distributed.h"

#include <algorithm>
#include <cstdio>

#include "distributed/ask.h"
#include "distributed/read_share.h"
#include "json.h"
#include "zorpelx.h"

constexpr int64_t AT_A_TIME = 4 << 20; // pins asked for in one exchange, about

/* Sums over all ranks. */
struct CountedHere {
    int64_t cut = 0, km1 = 0, pins = 0, cutnets = 0;
    std::vector<int64_t> weight;
};

/* One hyperedge; its parts are at the disposal of the count. */
static void count_net(int64_t weight, int *begin, int *end, CountedHere *counted)
{
    std::sort(begin, end);
    const int64_t touched = std::unique(begin, end) - begin;
    if (touched < 2) return;
    counted->cutnets++;
    counted->cut += weight;
    counted->km1 += weight * (touched - 1);
}

static void count_nets(Ranks *ranks, int64_t nvertices, const LooseNets &nets,
                       const std::vector<int> &own, CountedHere *counted)
{
    size_t e = 0;
    const size_t n = nets.weight.size();
    std::vector<int64_t> asked;
    std::vector<int> parts;
    while (sum_of_all(ranks, e < n) > 0) {
        size_t end = e;
        while (end < n && (end == e || nets.ptr[end + 1] - nets.ptr[e] <= AT_A_TIME)) end++;
        asked.assign(nets.pins.begin() + nets.ptr[e], nets.pins.begin() + nets.ptr[end]);
        ask_owners(ranks, nvertices, asked, own, &parts);
        for (size_t i = e; i < end; i++)
            count_net(nets.weight[i], parts.data() + (nets.ptr[i] - nets.ptr[e]),
                      parts.data() + (nets.ptr[i + 1] - nets.ptr[e]), counted);
        e = end;
    }
}

static void count_weights(Ranks *ranks, const std::vector<int64_t> &weights,
                          const std::vector<int> &own, int64_t nparts, CountedHere *counted)
{
    int64_t largest = nparts - 1;
    for (const int part : own) largest = std::max<int64_t>(largest, part);
    counted->weight.assign(static_cast<size_t>(most_of_all(ranks, largest)) + 1, 0);
    for (size_t v = 0; v < own.size(); v++)
        counted->weight[static_cast<size_t>(own[v])] += weights[v];
    sum_all(ranks, counted->weight.data(), counted->weight.size());
}

static void sum_counts(Ranks *ranks, const LooseNets &nets, CountedHere *counted)
{
    int64_t sums[] = {counted->cut, counted->km1, static_cast<int64_t>(nets.pins.size()),
                      counted->cutnets};
    sum_all(ranks, sums, 4);
    counted->cut = sums[0];
    counted->km1 = sums[1];
    counted->pins = sums[2];
    counted->cutnets = sums[3];
}

/*   complaints  what is not as asked for, if anything */
static void print_counts(const Settings &settings, const CountedHere &counted, bool within,
                         const std::string &complaints)
{
    const auto [lightest, heaviest] =
        std::minmax_element(counted.weight.begin(), counted.weight.end());
    if (settings.format == FORMAT_JSON) {
        Json answer = answer_json(settings, VERIFY, complaints.empty() ? STATUS_OK : STATUS_FAILED,
                                  complaints);
        answer.update(Json{{"cut", counted.cut},
                           {"km1", counted.km1},
                           {"soed", counted.cut + counted.km1},
                           {"cut_hyperedges", counted.cutnets},
                           {"pins", counted.pins},
                           {"part_weights", counted.weight},
                           {"within", within}});
        fputs(json_text(answer).c_str(), stdout);
        return;
    }
    printf("cut %lld\nkm1 %lld\nsoed %lld\ncut hyperedges %lld\nlightest part %lld\n"
           "heaviest part %lld\n",
           ll(counted.cut), ll(counted.km1), ll(counted.cut + counted.km1), ll(counted.cutnets),
           ll(*lightest), ll(*heaviest));
}

/* Whether the parts are what -k and --epsilon say. */
static bool within_bounds_of(const Settings &settings, const CountedHere &counted)
{
    if (!was_given(settings, &Settings::epsilon)) return true;
    const int nparts = static_cast<int>(counted.weight.size());
    int64_t total = 0;
    for (const int64_t weight : counted.weight) total += weight;
    std::vector<int64_t> least(counted.weight.size()), most(counted.weight.size());
    if (zorpelx_part_bounds(nparts, settings.epsilon, -1, nullptr, total, least.data(),
                            most.data()) != ZORPELX_OK)
        fail(STATUS_USAGE, "these bounds cannot be");
    return *std::max_element(counted.weight.begin(), counted.weight.end()) <= most[0];
}

Status run_distributed_verify(const Settings &settings, MPI_Comm comm)
{
    Ranks ranks = ranks_of(comm);
    ShareHeader header;
    ShareFault fault = {};
    LooseNets nets;
    Level level = {};
    std::vector<int> own;
    if (!read_hypergraph_share(&ranks, settings.hypergraph.c_str(), settings.first, &header, &nets,
                               &level, &fault))
        return tell_fault(&ranks, settings.hypergraph, fault);
    const bool told = was_given(settings, &Settings::nparts);
    if (!read_vertex_numbers(&ranks, settings.partition.c_str(), header.nvertices, 0,
                             told ? settings.nparts - 1 : (1 << 24) - 1, &own, &fault))
        return tell_fault(&ranks, settings.partition, fault);
    CountedHere counted;
    count_nets(&ranks, header.nvertices, nets, own, &counted);
    sum_counts(&ranks, nets, &counted);
    count_weights(&ranks, level.weight, own, told ? settings.nparts : 1, &counted);
    const bool within = within_bounds_of(settings, counted);
    std::vector<std::string> complaints;
    if (!within) complaints.push_back("a part is heavier than --epsilon allows");
    if (was_given(settings, &Settings::expect) && counted.cut != settings.expect)
        complaints.push_back(
            text_of("the cut is %lld, not %lld", ll(counted.cut), ll(settings.expect)));
    std::string all;
    for (const std::string &complaint : complaints) all += (all.empty() ? "" : "; ") + complaint;
    if (ranks.rank == 0) {
        print_counts(settings, counted, within, all);
        for (const std::string &complaint : complaints) tell(complaint);
    }
    return complaints.empty() ? STATUS_OK : STATUS_FAILED;
}

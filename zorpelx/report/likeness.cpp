/* zorpelx/report/likeness.cpp: how far two partitions of one hypergraph agree. */
#include "likeness.h"

#include <algorithm>
#include <unordered_map>

#include "assignment.h"

static std::vector<VertexFlow> collect_flows(const Hypergraph &graph, const Division &first,
                                             const Division &second)
{
    std::unordered_map<int64_t, VertexFlow> flows;
    for (size_t v = 0; v < first.part.size(); v++) {
        const int64_t p = first.part[v], q = second.part[v];
        VertexFlow &flow =
            flows.try_emplace(p * second.nparts + q, VertexFlow{p, q, 0, 0}).first->second;
        flow.vertices++;
        flow.weight += graph.vertexwgt[v];
    }
    std::vector<VertexFlow> list;
    for (const auto &[key, flow] : flows) list.push_back(flow);
    std::sort(list.begin(), list.end(), [](const VertexFlow &a, const VertexFlow &b) {
        if (a.weight != b.weight) return a.weight > b.weight;
        if (a.vertices != b.vertices) return a.vertices > b.vertices;
        return a.from != b.from ? a.from < b.from : a.to < b.to;
    });
    return list;
}

/* Rows are the parts of whichever partition has fewer. */
static std::vector<int64_t> match_best(const std::vector<VertexFlow> &flows, int64_t nfirst,
                                       int64_t nsecond)
{
    const bool turned = nfirst > nsecond; // rows are the second's
    const size_t n = static_cast<size_t>(std::min(nfirst, nsecond));
    const size_t m = static_cast<size_t>(std::max(nfirst, nsecond));
    std::vector<std::vector<int64_t>> gain(n, std::vector<int64_t>(m, 0));
    for (const VertexFlow &flow : flows) {
        const int64_t row = turned ? flow.to : flow.from, column = turned ? flow.from : flow.to;
        gain[static_cast<size_t>(row)][static_cast<size_t>(column)] = flow.vertices;
    }
    const std::vector<size_t> chosen = best_assignment(gain);
    std::vector<int64_t> twin(static_cast<size_t>(nsecond), -1);
    for (size_t i = 0; i < n; i++) {
        if (turned)
            twin[i] = static_cast<int64_t>(chosen[i]);
        else
            twin[chosen[i]] = static_cast<int64_t>(i);
    }
    return twin;
}

/* The pairs with most vertices first. */
static std::vector<int64_t> match_greedily(std::vector<VertexFlow> flows, int64_t nfirst,
                                           int64_t nsecond)
{
    std::stable_sort(flows.begin(), flows.end(), [](const VertexFlow &a, const VertexFlow &b) {
        return a.vertices > b.vertices;
    });
    std::vector<int64_t> twin(static_cast<size_t>(nsecond), -1);
    std::vector<bool> taken(static_cast<size_t>(nfirst), false);
    for (const VertexFlow &flow : flows) {
        if (twin[static_cast<size_t>(flow.to)] >= 0 || taken[static_cast<size_t>(flow.from)])
            continue;
        twin[static_cast<size_t>(flow.to)] = flow.from;
        taken[static_cast<size_t>(flow.from)] = true;
    }
    return twin;
}

/* Pairs out of n. In floating point: 10^9 vertices have too many for the products below. */
static long double pairs_of(int64_t n)
{
    return static_cast<long double>(n) * static_cast<long double>(n - 1) / 2;
}

static double rand_index(const std::vector<VertexFlow> &flows, const Division &first,
                         const Division &second)
{
    std::vector<int64_t> rows(static_cast<size_t>(first.nparts), 0);
    std::vector<int64_t> columns(static_cast<size_t>(second.nparts), 0);
    long double both = 0, left = 0, right = 0;
    for (const VertexFlow &flow : flows) {
        both += pairs_of(flow.vertices);
        rows[static_cast<size_t>(flow.from)] += flow.vertices;
        columns[static_cast<size_t>(flow.to)] += flow.vertices;
    }
    for (const int64_t n : rows) left += pairs_of(n);
    for (const int64_t n : columns) right += pairs_of(n);
    const long double all = pairs_of(static_cast<int64_t>(first.part.size()));
    const long double expected = all > 0 ? left * right / all : 0;
    const long double most = (left + right) / 2;
    return most == expected ? 1 : static_cast<double>((both - expected) / (most - expected));
}

static void add_changed(ChangedNet changed, size_t most, std::vector<ChangedNet> *list)
{
    const auto heavier = [](const ChangedNet &a, const ChangedNet &b) {
        return a.weight != b.weight ? a.weight > b.weight : a.net < b.net;
    };
    list->insert(std::upper_bound(list->begin(), list->end(), changed, heavier), changed);
    if (list->size() > most) list->pop_back();
}

static void compare_nets(const Hypergraph &graph, const Division &first, const Division &second,
                         size_t nchanged, Likeness *agreement)
{
    std::vector<int64_t> count(static_cast<size_t>(std::max(first.nparts, second.nparts)), 0);
    for (int64_t e = 0; e < graph.nnets; e++) {
        const int64_t before = static_cast<int64_t>(shares_of(graph, first, e, &count).size());
        const int64_t after = static_cast<int64_t>(shares_of(graph, second, e, &count).size());
        const int64_t weight = graph.netwgt[static_cast<size_t>(e)];
        if (before < 2 && after > 1) {
            agreement->ncut++;
            agreement->cutwgt += weight;
            add_changed({e, weight, after}, nchanged, &agreement->cut);
        } else if (before > 1 && after < 2) {
            agreement->nmend++;
            agreement->mendwgt += weight;
            add_changed({e, weight, before}, nchanged, &agreement->mended);
        }
    }
}

Likeness likeness_of(const Hypergraph &graph, const Division &first, const Division &second,
                     size_t nchanged)
{
    Likeness agreement = {};
    agreement.flows = collect_flows(graph, first, second);
    agreement.exact = std::max(first.nparts, second.nparts) <= MOST_MATCHED;
    agreement.twin = agreement.exact ? match_best(agreement.flows, first.nparts, second.nparts)
                                     : match_greedily(agreement.flows, first.nparts, second.nparts);
    for (const VertexFlow &flow : agreement.flows) {
        if (agreement.twin[static_cast<size_t>(flow.to)] == flow.from) continue;
        agreement.moved += flow.vertices;
        agreement.movedwgt += flow.weight;
    }
    agreement.rand = rand_index(agreement.flows, first, second);
    compare_nets(graph, first, second, nchanged, &agreement);
    return agreement;
}

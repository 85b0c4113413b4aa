// SPDX-License-Identifier: MIT
/* zorpelx/report/account.cpp: everything that a report tells. */
#include "account.h"

#include <algorithm>
#include <numeric>

/* A hyperedge of two points is a link between them; another one pulls its points to a hub. */
static std::vector<Link> links_of(const Sketch &sketch, size_t *nnodes)
{
    std::vector<Link> links;
    *nnodes = sketch.part.size();
    for (size_t i = 0; i + 1 < sketch.start.size(); i++) {
        const size_t begin = sketch.start[i], end = sketch.start[i + 1];
        if (end - begin == 2) {
            links.push_back({sketch.pins[begin], sketch.pins[begin + 1], 1});
            continue;
        }
        const double weight = 2.0 / static_cast<double>(end - begin);
        for (size_t j = begin; j < end; j++)
            links.push_back({sketch.pins[j], static_cast<int32_t>(*nnodes), weight});
        ++*nnodes;
    }
    return links;
}

static void count_kind(Account *account)
{
    const Hypergraph &graph = *account->graph;
    const NamedPartition &division = account->divisions[0];
    account->origin = origin_of(graph);
    account->kinds = contents_of(graph, division, group_by_kind(graph), MOST_GROUPS);
    account->prefixes =
        contents_of(graph, division, group_by_prefix(graph, division.nparts), MOST_GROUPS);
    if (account->origin == FROM_MATRIX) account->words = words_of(graph, division);
    if (account->origin == FROM_FORMULA) account->variables = shared_variables(graph, division);
}

Account account_of(const Hypergraph &graph, std::vector<NamedPartition> divisions, size_t ncostly)
{
    Account account = {};
    account.first = 1;
    account.graph = &graph;
    account.divisions = std::move(divisions);
    const NamedPartition &main = account.divisions[0];
    for (const NamedPartition &division : account.divisions)
        account.figures.push_back(figures_of(graph, division.part, division.nparts));
    for (size_t i = 1; i < account.divisions.size(); i++)
        account.agreements.push_back(likeness_of(graph, main, account.divisions[i], MOST_CHANGED));
    account.facts = facts_of(graph, main, ncostly);
    account.allowed.epsilon = -1;
    count_kind(&account);
    account.sketch = sketch_of(graph, main);
    size_t nnodes = 0;
    const std::vector<Link> links = links_of(account.sketch, &nnodes);
    account.places = lay_out(nnodes, links, DRAWING_WIDTH, DRAWING_HEIGHT);
    return account;
}

std::vector<int64_t> shown_parts(const Figures &figures, size_t most)
{
    std::vector<int64_t> parts(figures.weight.size());
    std::iota(parts.begin(), parts.end(), 0);
    if (parts.size() <= most) return parts;
    std::stable_sort(parts.begin(), parts.end(), [&](int64_t a, int64_t b) {
        return figures.weight[static_cast<size_t>(a)] > figures.weight[static_cast<size_t>(b)];
    });
    parts.resize(most);
    std::sort(parts.begin(), parts.end());
    return parts;
}

std::string pointer_to(const char *list, int64_t index, const char *field)
{
    return std::string("/") + list + '/' + std::to_string(index) + '/' + field;
}

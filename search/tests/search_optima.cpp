// SPDX-License-Identifier: MIT
/* search/tests/search_optima.cpp: how often each preset finds the optimum of small hypergraphs.
 *
 * Hypergraphs of 4 to 12 vertices in 2 to 4 parts, bounds of 0 to 20 percent, all objectives. The
 * optimum is found by trying all partitions in code of its own. Prints one line for each preset;
 * fails if best finds less than 99 of 100.
 * Usage: zorpel-search-optima CASES [SEED]
 */
#include <cstdio>
#include <cstdlib>

#include "search_case.h"

static SearchCase draw_case(unsigned seed)
{
    std::mt19937 random(seed);
    SearchCase c;
    c.n = draw(random, 4, 12);
    c.nparts = draw(random, 2, c.n > 10 ? 3 : 4);
    if (random() % 8 == 0) c.nparts = 4;
    c.objective = static_cast<Objective>(random() % 3);
    draw_hyperedges(random, &c, draw(random, c.n, 3 * c.n), draw(random, 2, 6));
    c.vwgts.assign(static_cast<size_t>(c.n), 1);
    if (random() % 2 == 0)
        for (int &w : c.vwgts) w = draw(random, 1, 6);
    if (random() % 2 == 0)
        for (int &w : c.hewgts) w = draw(random, 1, 5);
    set_epsilon(&c, draw(random, 0, 20));
    return c;
}

/* The least objective within the bounds, by all partitions; -1: there is none. */
struct AllPartitions {
    const SearchCase &c;
    Ints where;
    std::vector<int64_t> weight;
    int64_t best = -1;

    explicit AllPartitions(const SearchCase &of)
        : c(of), where(of.vwgts.size(), 0), weight(of.most.size(), 0)
    {
        place(0, 0);
    }
    void place(size_t v, int used)
    {
        if (v == where.size()) {
            const PlainFigures figures = plain_figures(c, where.data());
            if (figures.excess == 0 && (best < 0 || figures.objective < best))
                best = figures.objective;
            return;
        }
        for (int p = 0; p < std::min(used + 1, c.nparts); p++) { // parts are bounded alike
            int64_t *const sum = &weight[static_cast<size_t>(p)];
            if (*sum + c.vwgts[v] > c.most[0]) continue;
            *sum += c.vwgts[v];
            where[v] = p;
            place(v + 1, std::max(used, p + 1));
            *sum -= c.vwgts[v];
        }
    }
};

int main(int argc, char **argv)
{
    const int ncases = argc > 1 ? atoi(argv[1]) : 300;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(atoi(argv[2])) : 1;
    int feasible = 0, optimal[NPRESETS] = {};
    for (int i = 0; i < ncases; i++) {
        const SearchCase c = draw_case(seed + static_cast<unsigned>(i));
        const int64_t least = AllPartitions(c).best;
        if (least < 0) continue;
        feasible++;
        const FlatHypergraph flat = c.flat();
        const Bounds bounds = c.bounds();
        const Constraints none = {nullptr, nullptr};
        for (int preset = 0; preset < NPRESETS; preset++) {
            SearchOptions options = {};
            options.schedule = SCHEDULES[preset];
            options.seed = static_cast<uint64_t>(i);
            Ints part(static_cast<size_t>(c.n));
            const Found found =
                search_partition(&flat, &none, &bounds, c.objective, &options, part.data());
            const PlainFigures figures = plain_figures(c, part.data());
            if (figures.objective != found.objective || figures.excess != found.excess ||
                (figures.excess == 0 && figures.objective < least)) {
                printf("case %d: wrong figures\n", i);
                return EXIT_FAILURE;
            }
            optimal[preset] += figures.excess == 0 && figures.objective == least;
        }
    }
    for (int preset = 0; preset < NPRESETS; preset++)
        printf("%s %d of %d\n", SCHEDULES[preset].name, optimal[preset], feasible);
    return feasible > 0 && optimal[PRESET_BEST] * 100 >= feasible * 99 ? EXIT_SUCCESS
                                                                       : EXIT_FAILURE;
}

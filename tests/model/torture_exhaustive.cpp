// SPDX-License-Identifier: MIT
/* model/torture_exhaustive.cpp: every hypergraph up to a small size, on a grid of options.
 *
 * A hypergraph of n vertices is a choice of at most four distinct sets of vertices, each once or
 * twice, so empty and one-vertex hyperedges and identical ones are among them. Up to GRID_VERTICES
 * vertices every one meets every point of the grid; above, one point each, in turn. Every case is
 * judged as in zorpel-torture.
 * usage: torture_exhaustive MOST_VERTICES GRID_VERTICES
 */
#include <cstdio>
#include <cstdlib>

#include "torture_check.h"

constexpr int MOST_HEDGES = 4;

// Points of the grid: entry, parts, matching, refinement, V-cycles, reconstruction.
constexpr int GRID[] = {3, 3, 5, 3, 4, 2};
constexpr int GRID_POINTS = 3 * 3 * 5 * 3 * 4 * 2;

struct Walk {
    int nvtxs;
    bool whole_grid;
    int sets[MOST_HEDGES], copies[MOST_HEDGES], nsets;
    long hypergraphs, cases;
};

static void set_point(Case *c, long point)
{
    static const Entry entries[] = {ENTRY_RECURSIVE, ENTRY_INTERNAL, ENTRY_SHALLOW};
    int digits[6];
    for (int i = 0; i < 6; i++) {
        digits[i] = static_cast<int>(point % GRID[i]);
        point /= GRID[i];
    }
    c->entry = entries[digits[0]];
    c->coarsento = 2;
    c->nparts = 2 + digits[1];
    c->polish = digits[1] == 1;
    c->ubfactor = 10;
    c->options[ZORPEL_OPT_CTYPE] = 1 + digits[2];
    c->options[ZORPEL_OPT_RTYPE] = 1 + digits[3];
    c->options[ZORPEL_OPT_VCYCLE] = digits[4];
    c->options[ZORPEL_OPT_RECONST] = digits[5];
}

static void judge(Walk *walk, const Case &c)
{
    walk->cases++;
    const std::string why = check_case(c);
    if (why.empty()) return;
    fprintf(stderr, "%s\n%s", why.c_str(), to_text(c).c_str());
    exit(1);
}

static void try_hypergraph(Walk *walk)
{
    Case c = empty_case();
    c.family = "exhaustive";
    c.nvtxs = walk->nvtxs;
    c.part.assign(static_cast<size_t>(c.nvtxs), 0);
    for (int i = 0; i < walk->nsets; i++) {
        std::vector<int> pins;
        for (int v = 0; v < walk->nvtxs; v++)
            if (walk->sets[i] >> v & 1) pins.push_back(v);
        for (int copy = 0; copy < walk->copies[i]; copy++) add_hedge(&c, pins);
    }
    const long first = walk->whole_grid ? 0 : walk->hypergraphs * 7 % GRID_POINTS;
    const long last = walk->whole_grid ? GRID_POINTS - 1 : first;
    for (long point = first; point <= last; point++) {
        set_point(&c, point);
        judge(walk, c);
    }
    walk->hypergraphs++;
}

// Adds the sets from `least` on, in increasing order, while few enough hyperedges stand.
static void choose_sets(Walk *walk, int least, int left)
{
    try_hypergraph(walk);
    for (int set = least; left > 0 && set < 1 << walk->nvtxs; set++) {
        for (int copies = 1; copies <= 2 && copies <= left; copies++) {
            walk->sets[walk->nsets] = set;
            walk->copies[walk->nsets++] = copies;
            choose_sets(walk, set + 1, left - copies);
            walk->nsets--;
        }
    }
}

int main(int argc, char **argv)
{
    if (argc != 3) return 2;
    const int most = atoi(argv[1]), whole = atoi(argv[2]);
    long hypergraphs = 0, cases = 0;
    for (int n = 1; n <= most; n++) {
        Walk walk = {n, n <= whole, {}, {}, 0, 0, 0};
        choose_sets(&walk, 0, MOST_HEDGES);
        printf("%d vertices: %ld hypergraphs, %ld cases\n", n, walk.hypergraphs, walk.cases);
        hypergraphs += walk.hypergraphs;
        cases += walk.cases;
    }
    printf("in all: %ld hypergraphs, %ld cases\n", hypergraphs, cases);
    return 0;
}

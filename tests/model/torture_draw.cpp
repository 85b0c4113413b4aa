// SPDX-License-Identifier: MIT
/* model/torture_draw.cpp: families of hypergraphs and random option points.
 *
 * Most cases are tiny, since most mistakes show on a dozen vertices and a dozen costs little; one
 * in five is large enough to be coarsened, one in some hundreds for the V-cycles to coarsen.
 */
#include "torture_draw.h"

#include <algorithm>
#include <cmath>
#include <numeric>

// State of a splitmix64 generator.
struct Draw {
    uint64_t state;
};

static uint64_t next_bits(Draw *draw)
{
    draw->state += 0x9e3779b97f4a7c15u;
    uint64_t z = draw->state;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
}

// A number from least to most, both included.
static int between(Draw *draw, int least, int most)
{
    const uint64_t span = static_cast<uint64_t>(static_cast<int64_t>(most) - least) + 1;
    return static_cast<int>(least + static_cast<int64_t>(next_bits(draw) % span));
}

static bool one_in(Draw *draw, int n)
{
    return between(draw, 1, n) == 1;
}

// Up to size distinct vertices of least..most.
static std::vector<int> draw_pins(Draw *draw, int size, int least, int most)
{
    std::vector<int> pins;
    for (int i = 0; i < size && least <= most; i++) pins.push_back(between(draw, least, most));
    return pins;
}

static void tiny(Draw *draw, Case *c)
{
    c->nvtxs = std::min(c->nvtxs, between(draw, 0, 6));
    for (int e = between(draw, 0, 8); e > 0; e--)
        add_hedge(c, draw_pins(draw, between(draw, 0, 4), 0, c->nvtxs - 1));
}

static void uniform(Draw *draw, Case *c)
{
    for (int e = between(draw, 1, 2 * c->nvtxs); e > 0; e--)
        add_hedge(c, draw_pins(draw, between(draw, 2, 6), 0, c->nvtxs - 1));
}

static void clustered(Draw *draw, Case *c)
{
    const int width = between(draw, 3, 12);
    for (int e = 2 * c->nvtxs; e > 0; e--) {
        const int first = between(draw, 0, c->nvtxs - 1) / width * width;
        const int last = std::min(first + width, c->nvtxs) - 1;
        if (one_in(draw, 10))
            add_hedge(c, draw_pins(draw, between(draw, 2, 5), 0, c->nvtxs - 1));
        else
            add_hedge(c, draw_pins(draw, between(draw, 2, 4), first, last));
    }
}

// Each vertex drives a net to a few vertices nearby; some nets are global.
static void netlist(Draw *draw, Case *c)
{
    for (int v = 0; v < c->nvtxs; v++) {
        const int reach = one_in(draw, 15) ? c->nvtxs : 10;
        std::vector<int> pins =
            draw_pins(draw, between(draw, 1, one_in(draw, 30) ? 60 : 4), std::max(0, v - reach),
                      std::min(c->nvtxs - 1, v + reach));
        pins.insert(pins.begin(), v);
        add_hedge(c, pins);
    }
}

// Only a few vertices have hyperedges.
static void islands(Draw *draw, Case *c)
{
    const int used = between(draw, 0, c->nvtxs / 2);
    for (int e = between(draw, 0, used); e > 0; e--)
        add_hedge(c, draw_pins(draw, between(draw, 2, 4), 0, used));
}

static void giant(Draw *draw, Case *c)
{
    std::vector<int> all(static_cast<size_t>(c->nvtxs));
    std::iota(all.begin(), all.end(), 0);
    for (int i = between(draw, 1, 2); i > 0; i--) add_hedge(c, all);
    for (int e = between(draw, 0, c->nvtxs); e > 0; e--)
        add_hedge(c, draw_pins(draw, 2, 0, c->nvtxs - 1));
}

static void identical(Draw *draw, Case *c)
{
    for (int kinds = between(draw, 1, 5); kinds > 0; kinds--) {
        std::vector<int> pins = draw_pins(draw, between(draw, 2, 8), 0, c->nvtxs - 1);
        for (int copies = between(draw, 1, 10); copies > 0; copies--) {
            std::rotate(pins.begin(), pins.begin() + between(draw, 0, 1), pins.end());
            add_hedge(c, pins);
        }
    }
}

static void star(Draw *draw, Case *c)
{
    const int hub = between(draw, 0, c->nvtxs - 1);
    for (int v = 0; v < c->nvtxs; v++)
        if (v != hub) add_hedge(c, {hub, v});
}

static void chain(Draw *draw, Case *c)
{
    const int size = between(draw, 2, 4);
    for (int v = 0; v + 1 < c->nvtxs; v++) {
        std::vector<int> pins;
        for (int i = v; i < std::min(v + size, c->nvtxs); i++) pins.push_back(i);
        add_hedge(c, pins);
    }
}

// Low vertex numbers are popular; sizes have a long tail.
static void power_law(Draw *draw, Case *c)
{
    for (int e = between(draw, 1, 2 * c->nvtxs); e > 0; e--) {
        std::vector<int> pins;
        const int size = 2 + 60 / between(draw, 5, 100);
        for (int i = 0; i < size; i++) {
            const int x = between(draw, 0, c->nvtxs - 1);
            pins.push_back(one_in(draw, 4) ? x : x / between(draw, 1, c->nvtxs));
        }
        add_hedge(c, pins);
    }
}

static void grid(Draw *, Case *c)
{
    const int width = std::max(1, static_cast<int>(std::sqrt(c->nvtxs)));
    for (int v = 0; v < c->nvtxs; v++) {
        std::vector<int> pins = {v};
        if ((v + 1) % width != 0 && v + 1 < c->nvtxs) pins.push_back(v + 1);
        if (v + width < c->nvtxs) pins.push_back(v + width);
        if (pins.size() > 1) add_hedge(c, pins);
    }
}

static void with_singles(Draw *draw, Case *c)
{
    for (int e = between(draw, 1, 2 * c->nvtxs); e > 0; e--)
        add_hedge(c, draw_pins(draw, between(draw, 1, 3), 0, c->nvtxs - 1));
}

static void with_empties(Draw *draw, Case *c)
{
    for (int e = between(draw, 1, 2 * c->nvtxs); e > 0; e--)
        add_hedge(c, one_in(draw, 3) ? std::vector<int>()
                                     : draw_pins(draw, between(draw, 2, 4), 0, c->nvtxs - 1));
}

// Sizes on both sides of the pruning limit of 50.
static void around_prune(Draw *draw, Case *c)
{
    for (int e = between(draw, 1, 6); e > 0; e--)
        add_hedge(c, draw_pins(draw, between(draw, 49, 80), 0, c->nvtxs - 1));
    chain(draw, c);
}

struct Family {
    const char *name;
    void (*draw)(Draw *draw, Case *c);
};

static const Family FAMILIES[] = {
    {"tiny", tiny},
    {"uniform", uniform},
    {"clustered", clustered},
    {"netlist", netlist},
    {"islands", islands},
    {"giant", giant},
    {"identical", identical},
    {"star", star},
    {"chain", chain},
    {"power-law", power_law},
    {"grid", grid},
    {"one-vertex-hyperedges", with_singles},
    {"empty-hyperedges", with_empties},
    {"around-prune", around_prune},
};
constexpr int NFAMILIES = sizeof FAMILIES / sizeof FAMILIES[0];

int count_families()
{
    return NFAMILIES;
}

const char *family_name(int family)
{
    return FAMILIES[family].name;
}

/* ---- weights ------------------------------------------------------------------------------- */

// How the weights of a kind are spread.
enum Spread { NULL_ARRAY, ONES, SMALL, WITH_ZEROS, ALL_ZERO, FEW_HEAVY, HUGE_TOTAL, NSPREADS };

static std::vector<int> draw_weights(Draw *draw, int n)
{
    static const int odds[NSPREADS] = {10, 2, 6, 3, 1, 4, 1}; // of 27
    int pick = between(draw, 0, 26), spread = 0;
    while (pick >= odds[spread]) pick -= odds[spread++];
    std::vector<int> weights;
    if (spread == NULL_ARRAY) return weights;
    const int most = n > 0 ? 2147483646 / n : 1;
    for (int i = 0; i < n; i++) {
        int w = 1;
        if (spread == SMALL) w = between(draw, 1, 10);
        if (spread == WITH_ZEROS) w = between(draw, 0, 3);
        if (spread == ALL_ZERO) w = 0;
        if (spread == FEW_HEAVY) w = one_in(draw, 8) ? between(draw, 20, 2000) : 1;
        if (spread == HUGE_TOTAL) w = most - between(draw, 0, std::min(most, 100));
        weights.push_back(w);
    }
    return weights;
}

/* ---- calls and options --------------------------------------------------------------------- */

static void draw_call(Draw *draw, Case *c)
{
    static const Entry calls[] = {ENTRY_RECURSIVE, ENTRY_RECURSIVE, ENTRY_RECURSIVE,
                                  ENTRY_INTERNAL,  ENTRY_SHALLOW,   ENTRY_SHALLOW,
                                  ENTRY_SHALLOW,   ENTRY_REFINE,    ENTRY_DIRECT};
    c->entry = calls[between(draw, 0, 8)];
    c->ubfactor = one_in(draw, 4) ? between(draw, 1, 49) : between(draw, 1, 20);
    c->coarsento = between(draw, 2, 40);
    c->polish = !one_in(draw, 3);
    switch (between(draw, 0, 5)) {
    case 0:
        c->nparts = between(draw, std::max(2, c->nvtxs - 1), c->nvtxs + 3);
        break;
    case 1:
        c->nparts = between(draw, 2, 70);
        break;
    case 2:
        c->nparts = 2;
        break;
    default:
        c->nparts = between(draw, 2, 9);
        break;
    }
    c->nparts = std::max(2, std::min(c->nparts, c->nvtxs > 100 ? 12 : 70));
}

static void draw_options(Draw *draw, Case *c)
{
    int *const options = c->options;
    options[ZORPEL_OPT_USE] = !one_in(draw, 40);
    options[ZORPEL_OPT_NRUNS] = one_in(draw, 30) ? 11 : between(draw, 1, 3);
    options[ZORPEL_OPT_CTYPE] = between(draw, 1, 5);
    options[ZORPEL_OPT_RTYPE] = between(draw, 1, 3);
    options[ZORPEL_OPT_VCYCLE] = between(draw, 0, 3);
    options[ZORPEL_OPT_RECONST] = between(draw, 0, 1);
    options[ZORPEL_OPT_FIXED] = one_in(draw, 3);
    options[ZORPEL_OPT_SEED] = one_in(draw, 50) ? -1 : between(draw, 0, 1000000);
    options[ZORPEL_OPT_DBGLVL] = one_in(draw, 4) ? between(draw, 0, 511) : 0;
    if (c->entry == ENTRY_DIRECT) options[ZORPEL_OPT_RTYPE] = between(draw, 1, 2);
    if (c->entry == ENTRY_SHALLOW || c->entry == ENTRY_DIRECT) options[ZORPEL_OPT_USE] = 1;
    if (c->entry == ENTRY_SHALLOW && one_in(draw, 6))
        options[ZORPEL_OPT_CTYPE] = between(draw, 6, 7); // library use only
}

static void draw_parts(Draw *draw, Case *c)
{
    c->part.assign(static_cast<size_t>(c->nvtxs), 0);
    if (c->entry == ENTRY_REFINE)
        for (int &side : c->part) side = between(draw, 0, 1);
    if (!is_fixed(*c)) return;
    const int scarcity = between(draw, 0, 4); // 0: every vertex is fixed
    for (int &part : c->part)
        part = scarcity > 0 && !one_in(draw, scarcity + 1) ? -1 : between(draw, 0, c->nparts - 1);
}

static int draw_size(Draw *draw)
{
    if (one_in(draw, 600)) return between(draw, 1001, 1200); // beyond the V-cycles' target
    if (one_in(draw, 12)) return between(draw, 101, 260);    // beyond a bisection's target
    if (one_in(draw, 4)) return between(draw, 20, 70);
    return between(draw, 2, 20);
}

static Case draw_with_size(Draw *draw, int nvtxs)
{
    Case c = empty_case();
    c.nvtxs = nvtxs;
    const Family &family = FAMILIES[between(draw, 0, NFAMILIES - 1)];
    c.family = family.name;
    family.draw(draw, &c);
    c.vwgts = draw_weights(draw, c.nvtxs);
    c.hewgts = draw_weights(draw, count_hedges(c));
    draw_call(draw, &c);
    draw_options(draw, &c);
    draw_parts(draw, &c);
    return c;
}

Case draw_case(uint64_t seed)
{
    Draw draw = {seed};
    return draw_with_size(&draw, draw_size(&draw));
}

Case draw_small_case(uint64_t seed, int most_vtxs)
{
    Draw draw = {seed};
    return draw_with_size(&draw, between(&draw, 2, most_vtxs));
}

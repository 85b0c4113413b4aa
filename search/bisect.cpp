// SPDX-License-Identifier: MIT
/* search/bisect.cpp: recursive bisection whose bounds follow from those of the parts.
 *
 * A half that is lighter than it might be leaves its parts more room: so each bisection takes the
 * room that is left, and of it the root of the recursion's depth.
 * Source: Simon, Teng, How good is recursive bisection?, SIAM J. Scientific Computing 18(5), 1997;
 * Schlag et al., k-way hypergraph partitioning via n-level recursive bisection, ALENEX 2016 (bounds
 * that adapt).
 */
#include "search/bisect.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "core/memory.h"
#include "core/vectors.h"
#include "partition/bisection.h"
#include "core/ctrl.h"
#include "partition/split.h"

/* The bounds of a bisection: side 0 weighs at least least0, side 1 least1. */
struct SideBounds {
    int64_t total, least0, least1;
};

/* Sets splitratio and ubfactor so that the engine keeps the bounds: it computes them in single and
 * double precision and truncates. */
static void set_sides(PartCtrl *ctrl, const SideBounds *sides)
{
    assert(sides->total > 0);
    assert(0 <= sides->least0 && sides->least0 <= sides->total);
    assert(0 <= sides->least1 && sides->least1 <= sides->total);
    const double total = static_cast<double>(sides->total);
    const double low = static_cast<double>(sides->least0);
    const double high = static_cast<double>(sides->total - sides->least1);
    const double split = (low + high) / 2 / total;
    double room = (high - low) / 2 / total;
    ctrl->splitratio = static_cast<float>(split);
    for (double step = 0x1p-26; step < 0x1p-8; step *= 2, room -= step) {
        ctrl->ubfactor = static_cast<float>(std::max(room, 0.0));
        const float least0 = (ctrl->splitratio - ctrl->ubfactor) * static_cast<float>(sides->total);
        const double least1 =
            (1.0 - static_cast<double>(ctrl->splitratio) - static_cast<double>(ctrl->ubfactor)) *
            total;
        if (std::floor(static_cast<double>(least0)) >= static_cast<double>(sides->least0) &&
            std::floor(least1) >= static_cast<double>(sides->least1))
            break;
        if (room <= 0) break;
    }
}

/* What the parts first to last - 1 may weigh together, at least and at most. */
struct Range {
    int64_t least, most;
};

static Range range_of(const Bounds *bounds, int first, int last)
{
    Range range = {0, 0};
    for (int p = first; p < last; p++) {
        range.least += std::min(bounds->least[p], bounds->most[p]);
        range.most += bounds->most[p];
    }
    return range;
}

/* The least that a side should weigh: the least of its parts, or its share of the weight where
 * that is too little for all of them. */
static int64_t least_of_side(const Range *side, const Range *all, int64_t total)
{
    assert(0 <= side->least && side->least <= all->least);
    if (total >= all->least) return side->least;
    const double share = static_cast<double>(side->least) / static_cast<double>(all->least);
    return std::min(total, static_cast<int64_t>(share * static_cast<double>(total)));
}

/* How the parts first to last - 1 may be bisected before middle: every half may be heavier than its
 * share by the root, of the depth of the recursion that is left, of what all of them may be. */
static SideBounds bounds_of(const Bounds *bounds, int first, int middle, int last, int64_t total)
{
    assert(first < middle && middle < last && last <= bounds->nparts && total >= 0);
    const Range all = range_of(bounds, first, last);
    const double weight = static_cast<double>(total), most = static_cast<double>(all.most);
    const double depth = std::ceil(std::log2(static_cast<double>(last - first)));
    const double slack = total > 0 ? std::pow(std::max(1.0, most / weight), 1 / depth) : 1.0;
    const Range ranges[2] = {range_of(bounds, first, middle), range_of(bounds, middle, last)};
    int64_t mosts[2];
    for (int side = 0; side < 2; side++)
        mosts[side] = static_cast<int64_t>(
            weight * (static_cast<double>(ranges[side].most) / std::max(most, 1.0)) * slack);
    const int64_t leasts[2] = {least_of_side(&ranges[0], &all, total),
                               least_of_side(&ranges[1], &all, total)};
    return {total, std::max(total - mosts[1], std::min(leasts[0], mosts[0])),
            std::max(total - mosts[0], std::min(leasts[1], mosts[1]))};
}

static void bisect(const SearchTask *task, PartCtrl *ctrl, HGraph *graph, int first, int last,
                   int *part)
{
    const int k = last - first, middle = first + k / 2;
    assert(k >= 1 && (graph->label != nullptr || graph->ncells == 0));
    if (k == 1) {
        for (int v = 0; v < graph->ncells; v++) part[graph->label[v]] = first;
        return;
    }
    const int64_t total = sum_wide(graph->ncells, graph->cellwgt);
    int *sideof = imalloc__(static_cast<size_t>(graph->ncells) + 1, "search: bisection");
    std::fill(sideof, sideof + graph->ncells, 0);
    if (graph->ncells > 0 && total > 0) {
        const SideBounds sides = bounds_of(task->bounds, first, middle, last, total);
        set_sides(ctrl, &sides);
        Hypergraph_Bisection__(ctrl, graph, sideof);
    }
    for (int v = 0; v < graph->ncells; v++) part[graph->label[v]] = sideof[v] == 0 ? first : middle;
    if (k > 2) {
        HGraph *halves[2] = {CreateHGraph__(), CreateHGraph__()};
        SplitGraphPart__(ctrl, graph, sideof, halves[0], halves[1]);
        bisect(task, ctrl, halves[0], first, middle, part);
        bisect(task, ctrl, halves[1], middle, last, part);
        for (HGraph *half : halves) {
            QXfree__(&half->label, LTERM);
            FreeHGraph__(half);
        }
    }
    QXfree__(&sideof, LTERM);
}

/* Renames the parts after the fixed vertices that they hold, one each: the engine keeps these
 * apart, but does not say which goes where. */
static void name_parts(int nfixed, int nparts, int ncells, int *part)
{
    if (nfixed == 0) return;
    int *name = ismalloc__(static_cast<size_t>(nparts), -1, "search: names of parts");
    bool apart = true;
    for (int v = 0; v < nfixed; v++) {
        apart = apart && name[part[v]] < 0;
        name[part[v]] = v;
    }
    for (int v = 0; v < ncells && apart; v++) part[v] = name[part[v]];
    for (int v = 0; v < nfixed; v++) part[v] = v;
    assert(nfixed == nparts);
    QXfree__(&name, LTERM);
}

static int *copy_ints(size_t n, const int *x)
{
    int *const copy = imalloc__(n, "search: copy");
    icopy__(static_cast<int>(n), x, copy);
    return copy;
}

void bisect_recursively(const SearchTask *task, const HGraph *graph, const BisectOptions *options,
                        int *part)
{
    HGraph *const root = CreateHGraph__();
    root->ncells = graph->ncells;
    root->nnets = graph->nnets;
    root->nfixed = std::max(graph->nfixed, 0);
    root->netptr = copy_ints(static_cast<size_t>(graph->nnets) + 1, graph->netptr);
    root->netind = copy_ints(static_cast<size_t>(graph->netptr[graph->nnets]), graph->netind);
    root->netwgt = copy_ints(static_cast<size_t>(graph->nnets), graph->netwgt);
    root->cellwgt = copy_ints(static_cast<size_t>(graph->ncells), graph->cellwgt);
    root->label = imalloc__(static_cast<size_t>(graph->ncells), "search: label");
    for (int v = 0; v < graph->ncells; v++) root->label[v] = v;
    assert(root->nfixed == 0 || root->nfixed == task->bounds->nparts);
    PartCtrl ctrl = {};
    ctrl.nparts = task->bounds->nparts;
    ctrl.CoarsenTo = COARSEN_TO;
    ctrl.maxnetsize = options->maxnetsize;
    ctrl.Nruns = options->nruns;
    ctrl.CType = options->ctype;
    ctrl.RType = RTYPE_FM;
    ctrl.VCycle = options->vcycle;
    ctrl.Reconst = task->objective == Objective::cut ? 0 : 1;
    ctrl.seed = options->seed;
    ctrl.random = own_generator(static_cast<unsigned>(options->seed));
    bisect(task, &ctrl, root, 0, task->bounds->nparts, part);
    name_parts(root->nfixed, task->bounds->nparts, graph->ncells, part);
    QXfree__(&root->label, LTERM);
    FreeHGraph__(root);
}

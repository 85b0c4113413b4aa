// SPDX-License-Identifier: MIT
/* driver/reports.cpp: what the program prints before and after partitioning.
 *
 * Before: the banner, the sizes and the options by name. After: cut, sum of external degrees,
 * scaled cost, absorption and the parts, counted from the partition and the arrays alone, in O(pins
 * + nparts): pins are placed by part and then by hyperedge, which leaves the parts of each
 * hyperedge in order. Reals are rounded where they always were, so that every digit stays.
 */
#include "driver/reports.h"

#include <cassert>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "core/memory.h"
#include "core/vectors.h"
#include "driver/tool_version.h"
#include "zorpel.h"

/* The name of an option's value: names[value - first], "??" outside. */
static const char *option_name(const char *const *names, int count, int first, int value)
{
    return value < first || value - first >= count ? "??" : names[value - first];
}

static void print_options(const int *options, int mode)
{
    static const char *const ctypes[] = {"HFC", "FC", "GFC", "HEDGE", "EDGE"};
    static const char *const rtypes[] = {"FM", "1WayFM", "EEFM"};
    static const char *const objectives[] = {"Cut-minimization", "SOED-minimization"};
    static const char *const reconsts[] = {"Reconst-False", "Reconst-True"};
    static const char *const vcycles[] = {"No V-cycles", "V-cycles @ End", "V-cycle for Min",
                                          "Always V-cycle"};
    static const char *const fixeds[] = {"No Fixed Vertices", "With Fixed Vertices"};
    const int rtype = options[ZORPEL_OPT_RTYPE];
    printf(" Options: %s, ", option_name(ctypes, 5, 1, options[ZORPEL_OPT_CTYPE]));
    if (mode == MODE_RECURSIVE)
        printf("%s, %s, ", option_name(rtypes, 3, 1, rtype),
               option_name(reconsts, 2, 0, options[ZORPEL_OPT_RECONST]));
    else
        printf("%s, ", option_name(objectives, 2, 1, rtype));
    printf("%s", option_name(vcycles, 4, 0, options[ZORPEL_OPT_VCYCLE]));
    if (mode == MODE_RECURSIVE)
        printf(", %s", option_name(fixeds, 2, 0, options[ZORPEL_OPT_FIXED]));
    printf("\n");
}

void PrintInfo(const HGraph *graph, int nparts, int ubfactor, const int *options, const char *name,
               int mode)
{
    const double share = ubfactor / 100.0;
    puts("*******************************************************************************");
    printf(" ZORPEL %s  Copyright (c) 2026 the ZORPEL authors\n\n", ZORPEL_VERSION);
    puts("HyperGraph Information -----------------------------------------------------");
    printf(" Name: %s, #Vtxs: %5d, #Hedges: %5d, #Parts: %d, UBfactor: %1.2f\n", name,
           graph->ncells, graph->nnets, nparts, mode == MODE_RECURSIVE ? share : share + 1.0);
    if (options != nullptr) print_options(options, mode);
    printf("\n");
    if (mode == MODE_RECURSIVE)
        puts("Recursive Partitioning... --------------------------------------------------");
    else
        puts("K-way Partitioning... ------------------------------------------------------");
}

static int weight_of(const int *wgts, int i)
{
    assert(i >= 0);
    return wgts != nullptr ? wgts[i] : 1;
}

void ComputePartWeights(int n, const int *vwgts, const int *part, int *pwgts)
{
    assert(n <= 0 || (part != nullptr && pwgts != nullptr));
    for (int v = 0; v < n; v++) pwgts[part[v]] += weight_of(vwgts, v);
}

/* Quality of a partition. */
struct Quality {
    int cut;
    long long soed;
    float scaled_cost;
    float absorption; // rounded to single at each addition, parts in order
};

static float absorb(float absorption, double share)
{
    return static_cast<float>(static_cast<double>(absorption) + share);
}

/* The parts of each hyperedge's pins, in increasing order, [eptr[nhedges]]: the pins placed by
 * part, and from there by hyperedge. */
static int *sorted_parts(int nhedges, int nparts, const int *eptr, const int *eind, const int *part)
{
    const int npins = eptr[nhedges];
    assert(nparts > 0 && npins >= 0);
    int *starts = ismalloc__(static_cast<size_t>(nparts) + 1, 0, "PrintPartStatistics: starts");
    int *nets = imalloc__(static_cast<size_t>(npins), "PrintPartStatistics: nets");
    int *ends = imalloc__(static_cast<size_t>(nhedges), "PrintPartStatistics: ends");
    int *const parts = imalloc__(static_cast<size_t>(npins), "ComputePartCuts: pdegrees");
    for (int j = 0; j < npins; j++) starts[part[eind[j]]]++;
    counts_to_starts(nparts, starts);
    for (int e = 0; e < nhedges; e++)
        for (int j = eptr[e]; j < eptr[e + 1]; j++) nets[starts[part[eind[j]]]++] = e;
    icopy__(nhedges, eptr, ends);
    assert(starts[nparts - 1] == npins);
    for (int p = 0, j = 0; p < nparts; p++)
        for (; j < starts[p]; j++) parts[ends[nets[j]]++] = p;
    QXfree__(&starts, &nets, &ends, LTERM);
    return parts;
}

/* Adds a cut hyperedge of this weight, the parts of its pins in order, to the figures. */
static void add_cut(int size, const int *parts, int weight, Quality *quality, int *pcuts)
{
    quality->cut += weight;
    for (int i = 0, begin = 0; i < size; begin = i) {
        assert(begin == 0 || parts[begin - 1] < parts[begin]);
        while (i < size && parts[i] == parts[begin]) i++;
        pcuts[parts[begin]] += weight;
        quality->absorption = absorb(quality->absorption, (i - begin - 1.0) / (size - 1));
    }
}

/* pcuts [nparts] gets each part's external degree. O(pins + nparts). */
static Quality measure(int nvtxs, int nhedges, int nparts, const int *eptr, const int *eind,
                       const int *hewgts, const int *part, const int *pwgts, int *pcuts)
{
    Quality quality = {0, 0, 0, 0};
    int *parts = sorted_parts(nhedges, nparts, eptr, eind, part);
    for (int e = 0; e < nhedges; e++) {
        const int size = eptr[e + 1] - eptr[e];
        const int *const its = parts + eptr[e];
        if (size > 0 && its[0] != its[size - 1])
            add_cut(size, its, weight_of(hewgts, e), &quality, pcuts);
        else
            quality.absorption = absorb(quality.absorption, 1.0);
    }
    for (int p = 0; p < nparts; p++) {
        quality.soed += pcuts[p];
        quality.scaled_cost = absorb(quality.scaled_cost, static_cast<double>(pcuts[p]) / pwgts[p]);
    }
    quality.scaled_cost = static_cast<float>(static_cast<double>(quality.scaled_cost) /
                                             (static_cast<double>(nvtxs) * (nparts - 1)));
    QXfree__(&parts, LTERM);
    return quality;
}

void PrintPartStatistics(int nvtxs, int nhedges, int nparts, const int *eptr, const int *eind,
                         const int *hewgts, const int *vwgts, const int *part)
{
    int *pwgts = ismalloc__(static_cast<size_t>(nparts), 0, "ComputePartCuts: pwgts");
    int *pcuts = ismalloc__(static_cast<size_t>(nparts), 0, "ComputePartCuts: pcuts");
    ComputePartWeights(nvtxs, vwgts, part, pwgts);
    const Quality quality = measure(nvtxs, nhedges, nparts, eptr, eind, hewgts, part, pwgts, pcuts);
    printf("\n --------------------------------------------------------------------------");
    printf("\n  Summary for the %d-way partition:", nparts);
    printf("\n                Hyperedge Cut:%10d\t\t(minimize)", quality.cut);
    if (quality.soed <= INT_MAX)
        printf("\n      Sum of External Degrees:%10d\t\t(minimize)",
               static_cast<int>(quality.soed));
    else
        printf("\n      Sum of External Degrees:%10lld\t\t(minimize)", quality.soed);
    printf("\n                  Scaled Cost:%10.2e\t\t(minimize)",
           static_cast<double>(quality.scaled_cost));
    printf("\n                   Absorption:%10.2f\t\t(maximize)",
           static_cast<double>(quality.absorption));
    printf("\n\n      Partition Sizes & External Degrees:\n\t");
    for (int p = 0; p < nparts; p++) {
        printf("%6d[%4d] ", pwgts[p], pcuts[p]);
        if (p % 5 == 4) printf("\n\t");
    }
    QXfree__(&pwgts, &pcuts, LTERM);
}

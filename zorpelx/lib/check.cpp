// SPDX-License-Identifier: MIT
/* zorpelx/lib/check.cpp: checks of everything that a caller hands over.
 *
 * The order matters: sizes before the arrays they measure, offsets before what they point to. A
 * sentence names the array and the place as the caller wrote them, counted from 0. Every loop over
 * the caller's arrays goes by the steps of a watch.
 */
#include "check.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/ctrl.h"
#include "records.h"

constexpr int MOST_THINGS = INT_MAX - 1;  // arrays have one more place than there are things
constexpr int MOST_EMPTY_PARTS = 1000000; // parts that any number of vertices may have
constexpr int ALL_TRACES = ZORPEL_DBG_COARSEN | ZORPEL_DBG_INIT | ZORPEL_DBG_PASS |
                           ZORPEL_DBG_BISECTION | ZORPEL_DBG_RUN | ZORPEL_DBG_TIME |
                           ZORPEL_DBG_DETAIL | ZORPEL_DBG_MOVE;

static Fault check_sizes(const zorpelx_hypergraph &h)
{
    if (h.nvtxs < 0 || h.nvtxs > MOST_THINGS)
        return fault(ZORPELX_BAD_INPUT, "nvtxs is %d; it should be between 0 and %d.", h.nvtxs,
                     MOST_THINGS);
    if (h.nhedges < 0 || h.nhedges > MOST_THINGS)
        return fault(ZORPELX_BAD_INPUT, "nhedges is %d; it should be between 0 and %d.", h.nhedges,
                     MOST_THINGS);
    return {};
}

static Fault check_offsets(const zorpelx_hypergraph &h, Watch &watch)
{
    if (h.eptr == nullptr)
        return fault(ZORPELX_BAD_OPTION, "eptr is null; it should hold nhedges + 1 offsets.");
    if (h.eptr[0] != 0)
        return fault(ZORPELX_BAD_INPUT, "eptr[0] is %d; the first hyperedge starts at 0.",
                     h.eptr[0]);
    for (int e = 0; e < h.nhedges; e++) {
        watch.step();
        if (h.eptr[e + 1] < h.eptr[e])
            return fault(ZORPELX_BAD_INPUT,
                         "eptr[%d] is %d, less than eptr[%d], which is %d: hyperedge %d ends "
                         "before it starts.",
                         e + 1, h.eptr[e + 1], e, h.eptr[e], e);
    }
    if (h.eind == nullptr && h.eptr[h.nhedges] > 0)
        return fault(ZORPELX_BAD_OPTION, "eind is null; it should hold %d vertices.",
                     h.eptr[h.nhedges]);
    return {};
}

static Fault repeated_pin(const zorpelx_hypergraph &h, int e, int second)
{
    int first = h.eptr[e];
    while (h.eind[first] != h.eind[second]) first++;
    return fault(ZORPELX_BAD_INPUT, "Hyperedge %d lists vertex %d twice, at eind[%d] and eind[%d].",
                 e, h.eind[second], first, second);
}

static Fault check_pins(const zorpelx_hypergraph &h, Watch &watch)
{
    const size_t nvtxs = static_cast<size_t>(h.nvtxs);
    const Charge charge(watch, nvtxs * sizeof(int), "a mark for each vertex");
    std::vector<int> last(nvtxs, -1); // hyperedge that listed each vertex
    for (int e = 0; e < h.nhedges; e++) {
        watch.step();
        for (int j = h.eptr[e]; j < h.eptr[e + 1]; j++) {
            watch.step();
            const int v = h.eind[j];
            if (v < 0 || v >= h.nvtxs)
                return fault(ZORPELX_BAD_INPUT,
                             "eind[%d] is %d, in hyperedge %d; the vertices are numbered from 0 "
                             "to %d.",
                             j, v, e, h.nvtxs - 1);
            int &seen = last[static_cast<size_t>(v)];
            if (seen == e) return repeated_pin(h, e, j);
            seen = e;
        }
    }
    return {};
}

/* name is the array's, things what it weighs. */
static Fault check_weights(const int *weights, int n, Totals totals, const char *name,
                           const char *things, Watch &watch)
{
    if (weights == nullptr) return {};
    int64_t total = 0;
    for (int i = 0; i < n; i++) {
        watch.step();
        if (weights[i] < 0)
            return fault(ZORPELX_BAD_INPUT, "%s[%d] is %d; weights are not negative.", name, i,
                         weights[i]);
        total += weights[i];
        if (totals == Totals::Bounded && total > MOST_WEIGHT)
            return fault(ZORPELX_BAD_INPUT,
                         "The weights of the %s total more than %lld from %s[%d] on.", things,
                         static_cast<long long>(MOST_WEIGHT), name, i);
    }
    return {};
}

Fault check_hypergraph(const zorpelx_hypergraph *hypergraph, Totals totals, Watch &watch)
{
    if (hypergraph == nullptr) return fault(ZORPELX_BAD_OPTION, "The hypergraph is null.");
    const zorpelx_hypergraph &h = *hypergraph;
    if (Fault found = check_sizes(h)) return found;
    if (Fault found = check_offsets(h, watch)) return found;
    if (Fault found = check_pins(h, watch)) return found;
    if (Fault found = check_weights(h.vwgts, h.nvtxs, totals, "vwgts", "vertices", watch))
        return found;
    return check_weights(h.hewgts, h.nhedges, totals, "hewgts", "hyperedges", watch);
}

static Fault check_range(const char *name, int value, int least, int most)
{
    if (value >= least && value <= most) return {};
    if (most == INT_MAX)
        return fault(ZORPELX_BAD_OPTION, "%s is %d; it should be at least %d.", name, value, least);
    return fault(ZORPELX_BAD_OPTION, "%s is %d; it should be between %d and %d.", name, value,
                 least, most);
}

static Fault check_numbers(const zorpelx_options &o)
{
    const struct {
        const char *name;
        int value, least, most;
    } ranges[] = {
        {"nparts", o.nparts, 2, INT_MAX},
        {"ubfactor", o.ubfactor, 1, 49},
        {"nruns", o.nruns, 1, INT_MAX},
        {"ctype", o.ctype, 1, 5},
        {"rtype", o.rtype, 1, 3},
        {"vcycle", o.vcycle, 0, 3},
        {"reconst", o.reconst, 0, 1},
        {"polish", o.polish, 0, 1},
        {"starts", o.starts, 1, INT_MAX},
        {"jobs", o.jobs, 0, INT_MAX},
        {"threads", o.threads, 0, INT_MAX},
        {"objective", o.objective, ZORPELX_CUT, ZORPELX_SOED},
        {"preset", o.preset, ZORPELX_FAST, ZORPELX_BEST},
        {"keep_price", o.keep_price, 0, INT_MAX},
        {"shared", o.shared, 0, 1},
    };
    for (const auto &range : ranges)
        if (Fault found = check_range(range.name, range.value, range.least, range.most))
            return found;
    return {};
}

static Fault check_seed(const zorpelx_options &o)
{
    if (o.seed < -1)
        return fault(ZORPELX_BAD_OPTION,
                     "seed is %d; it should be -1, for one drawn by chance, or at least 0.",
                     o.seed);
    if (o.seed == 0 && o.starts > 1)
        return fault(
            ZORPELX_BAD_OPTION,
            "seed is 0, which gives the same random numbers as 1; with %d starts it should "
            "be at least 1.",
            o.starts);
    if (o.seed > 0 && o.starts - 1 > INT_MAX - o.seed)
        return fault(ZORPELX_BAD_OPTION, "seed is %d; with %d starts it should be at most %d.",
                     o.seed, o.starts, INT_MAX - (o.starts - 1));
    return {};
}

constexpr int MOST_SHARED = 1000000; // starts of one search

static Fault check_search(const zorpelx_options &o)
{
    if (std::isnan(o.epsilon) || std::isinf(o.epsilon))
        return fault(ZORPELX_BAD_OPTION, "epsilon is %g; it should be a number of percent.",
                     o.epsilon);
    if (std::isnan(o.least) || o.least > 100)
        return fault(ZORPELX_BAD_OPTION, "least is %g; it should be at most 100 percent.", o.least);
    if (std::isnan(o.time) || o.time < 0)
        return fault(ZORPELX_BAD_OPTION, "time is %g; it should be 0 or more seconds.", o.time);
    if (o.shared != 0 && o.starts > MOST_SHARED)
        return fault(ZORPELX_BAD_OPTION, "starts is %d; shared ones are %d at most.", o.starts,
                     MOST_SHARED);
    if (o.channel != nullptr && o.starts > 1 && o.shared == 0)
        return fault(ZORPELX_BAD_OPTION, "starts is %d; a channel needs one, or shared ones.",
                     o.starts);
    if (o.keep_price > 0 && o.epsilon >= 0 && o.start == nullptr)
        return fault(ZORPELX_BAD_OPTION, "keep_price is %d; it needs a start.", o.keep_price);
    if (o.epsilon >= 0) return {};
    const char *const alone = o.capacities != nullptr ? "capacities"
                              : o.start != nullptr    ? "start"
                              : o.groups != nullptr   ? "groups"
                              : o.time > 0            ? "time"
                              : o.least >= 0          ? "least"
                              : o.keep_price > 0      ? "keep_price"
                              : o.shared != 0         ? "shared"
                              : o.channel != nullptr  ? "channel"
                                                      : nullptr;
    if (alone == nullptr) return {};
    return fault(ZORPELX_BAD_OPTION, "%s is for searches; epsilon should be at least 0 with it.",
                 alone);
}

static Fault check_options(const zorpelx_options &o)
{
    if (Fault found = check_numbers(o)) return found;
    if ((o.trace & ~ALL_TRACES) != 0)
        return fault(ZORPELX_BAD_OPTION, "trace is %d; it should be a sum of ZORPEL_DBG_* values.",
                     o.trace);
    if (Fault found = check_seed(o)) return found;
    if (Fault found = check_search(o)) return found;
    if (std::isnan(o.timeout) || o.timeout < 0)
        return fault(ZORPELX_BAD_OPTION, "timeout is %g; it should be 0 or more seconds.",
                     o.timeout);
    return {};
}

/* More parts than vertices leave some empty, which can be meant; far more are a mistake that would
 * cost memory and time by the part. */
static Fault check_nparts(int nparts, int nvtxs)
{
    const int most = std::max(nvtxs, MOST_EMPTY_PARTS);
    if (nparts <= most) return {};
    return fault(ZORPELX_BAD_OPTION, "nparts is %d; with %d vertices it should be at most %d.",
                 nparts, nvtxs, most);
}

static Fault check_fixed(const zorpelx_hypergraph &h, const zorpelx_options &o, Watch &watch)
{
    if (o.fixed == nullptr) return {};
    if (h.nvtxs > MOST_THINGS - o.nparts) // the engine adds a vertex for each part
        return fault(ZORPELX_BAD_INPUT,
                     "With pre-assignments nvtxs and nparts should total at most %d; they are %d "
                     "and %d.",
                     MOST_THINGS, h.nvtxs, o.nparts);
    for (int v = 0; v < h.nvtxs; v++) {
        watch.step();
        if (o.fixed[v] < -1 || o.fixed[v] >= o.nparts)
            return fault(ZORPELX_BAD_INPUT, "fixed[%d] is %d; it should be between -1 and %d.", v,
                         o.fixed[v], o.nparts - 1);
    }
    return {};
}

/* A number for each vertex of what only searches know. */
static Fault check_numbers_of_vertices(const zorpelx_hypergraph &h, const int *numbers,
                                       const char *name, int least, int most, Watch &watch)
{
    for (int v = 0; numbers != nullptr && v < h.nvtxs; v++) {
        watch.step();
        if (numbers[v] < least || numbers[v] > most)
            return fault(ZORPELX_BAD_INPUT, "%s[%d] is %d; it should be between %d and %d.", name,
                         v, numbers[v], least, most);
    }
    return {};
}

/* Groups of vertices that are fixed in different parts cannot stay together. */
static Fault check_groups(const zorpelx_hypergraph &h, const zorpelx_options &o, Watch &watch)
{
    if (Fault found = check_numbers_of_vertices(h, o.groups, "groups", -1, h.nvtxs - 1, watch))
        return found;
    if (o.groups == nullptr || o.fixed == nullptr) return {};
    const size_t nvtxs = static_cast<size_t>(h.nvtxs);
    const Charge charge(watch, nvtxs * sizeof(int), "a vertex of each group");
    std::vector<int> first(nvtxs, -1); // fixed vertex of each group
    for (int v = 0; v < h.nvtxs; v++) {
        watch.step();
        if (o.groups[v] < 0 || o.fixed[v] < 0) continue;
        int &other = first[static_cast<size_t>(o.groups[v])];
        if (other < 0) other = v;
        if (o.fixed[other] != o.fixed[v])
            return fault(ZORPELX_BAD_INPUT,
                         "Vertices %d and %d are in one group and fixed in parts %d and %d.", other,
                         v, o.fixed[other], o.fixed[v]);
    }
    return {};
}

/* A price makes hyperedges of its own, which count in the total of weights. */
static Fault check_price(const zorpelx_hypergraph &h, const zorpelx_options &o)
{
    if (o.start == nullptr || o.keep_price == 0) return {};
    int64_t total = 0;
    for (int e = 0; e < h.nhedges; e++) total += h.hewgts != nullptr ? h.hewgts[e] : 1;
    for (int v = 0; v < h.nvtxs && total <= MOST_WEIGHT; v++)
        total += int64_t{o.keep_price} * (h.vwgts != nullptr ? h.vwgts[v] : 1);
    if (total > MOST_WEIGHT)
        return fault(ZORPELX_BAD_OPTION,
                     "keep_price is %d; with the weights of hyperedges the prices total more than "
                     "%lld.",
                     o.keep_price, static_cast<long long>(MOST_WEIGHT));
    if (h.nvtxs > MOST_THINGS - h.nhedges || h.nvtxs > MOST_THINGS - o.nparts ||
        h.nvtxs > (INT_MAX - h.eptr[h.nhedges]) / 2)
        return fault(ZORPELX_BAD_INPUT, "The hypergraph is too large for keep_price.");
    return {};
}

static Fault check_searched(const zorpelx_hypergraph &h, const zorpelx_options &o, Watch &watch)
{
    if (o.epsilon < 0) return {};
    double sum = 0;
    for (int p = 0; o.capacities != nullptr && p < o.nparts; p++) {
        sum += o.capacities[p];
        if (!(o.capacities[p] > 0) || std::isinf(sum))
            return fault(ZORPELX_BAD_OPTION,
                         "capacities[%d] is %g; it should be above 0, and their sum finite.", p,
                         o.capacities[p]);
    }
    if (Fault found = check_numbers_of_vertices(h, o.start, "start", 0, o.nparts - 1, watch))
        return found;
    if (Fault found = check_groups(h, o, watch)) return found;
    return check_price(h, o);
}

Fault check_call(const zorpelx_hypergraph *hypergraph, const zorpelx_options &options, Watch &watch)
{
    if (Fault found = check_options(options)) return found;
    if (Fault found = check_hypergraph(hypergraph, Totals::Bounded, watch)) return found;
    if (Fault found = check_nparts(options.nparts, hypergraph->nvtxs)) return found;
    if (Fault found = check_fixed(*hypergraph, options, watch)) return found;
    return check_searched(*hypergraph, options, watch);
}

Fault check_partition(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                      Watch &watch)
{
    const int nvtxs = hypergraph->nvtxs;
    if (Fault found = check_range("nparts", nparts, 1, INT_MAX)) return found;
    if (Fault found = check_nparts(nparts, nvtxs)) return found;
    if (part == nullptr && nvtxs > 0)
        return fault(ZORPELX_BAD_OPTION, "part is null; it should hold the parts of %d vertices.",
                     nvtxs);
    for (int v = 0; v < nvtxs; v++) {
        watch.step();
        if (part[v] < 0 || part[v] >= nparts)
            return fault(ZORPELX_BAD_INPUT, "part[%d] is %d; it should be between 0 and %d.", v,
                         part[v], nparts - 1);
    }
    return {};
}

int zorpelx_check(const zorpelx_hypergraph *hypergraph, const zorpelx_options *options,
                  char *message)
{
    return reporting_to(message, [&]() -> Fault {
        zorpelx_options known;
        if (Fault found = adopt_options(options, &known)) return found;
        Watch watch(known);
        return check_call(hypergraph, known, watch);
    });
}

// SPDX-License-Identifier: MIT
/* zorpelx/lib/evaluate.cpp: exact quality of a partition.
 *
 * One pass over the pins; the parts that a hyperedge touches are listed with the help of a mark
 * per part, so the cost is O(nvtxs + pins + nparts) however many parts there are.
 */
#include "evaluate.h"

#include <algorithm>
#include <cmath>

#include "check.h"
#include "records.h"

static int64_t weight_of(const int *weights, int i)
{
    return weights != nullptr ? weights[i] : 1;
}

static size_t at(int i)
{
    return static_cast<size_t>(i);
}

static int64_t most_touched(const zorpelx_hypergraph &h, int nparts)
{
    return std::min<int64_t>(nparts, h.nhedges > 0 ? h.eptr[h.nhedges] : 0);
}

static size_t bytes_of_marks(const zorpelx_hypergraph &h, int nparts)
{
    return sizeof(int) * static_cast<size_t>(nparts + most_touched(h, nparts));
}

Touched::Touched(const zorpelx_hypergraph &hypergraph, int nparts, Watch &heeded)
    : h(hypergraph), watch(heeded),
      charge(heeded, bytes_of_marks(hypergraph, nparts), "a mark for each part"),
      mark(at(nparts), -1)
{
    list.reserve(static_cast<size_t>(most_touched(h, nparts)));
}

void Touched::turn_to(const int *parts)
{
    part = parts;
    std::fill(mark.begin(), mark.end(), -1);
}

const std::vector<int> &Touched::by(int e)
{
    list.clear();
    watch.step();
    for (int j = h.eptr[e]; j < h.eptr[e + 1]; j++) {
        watch.step();
        const int p = part[h.eind[j]];
        if (mark[at(p)] == e) continue;
        mark[at(p)] = e;
        list.push_back(p);
    }
    return list;
}

/* A sum of reals that stays exact to the last place of the result (Neumaier's compensation). */
struct Sum {
    double sum = 0, lost = 0;

    void add(double x)
    {
        const double next = sum + x;
        lost += std::fabs(sum) >= std::fabs(x) ? sum - next + x : x - next + sum;
        sum = next;
    }
    double value() const { return std::isfinite(sum) ? sum + lost : sum; }
};

constexpr size_t BYTES_A_PART = 2 * sizeof(int64_t) + sizeof(int);

Evaluator::Evaluator(const zorpelx_hypergraph &hypergraph, int nparts, Watch &heeded)
    : h(hypergraph), watch(heeded),
      charge(heeded, BYTES_A_PART * at(nparts), "the figures of each part"), weights(at(nparts)),
      external(at(nparts)), nvtxs(at(nparts)), touched(hypergraph, nparts, heeded)
{
}

void Evaluator::weigh_parts(const int *part)
{
    std::fill(weights.begin(), weights.end(), 0);
    std::fill(nvtxs.begin(), nvtxs.end(), 0);
    for (int v = 0; v < h.nvtxs; v++) {
        watch.step();
        weights[at(part[v])] += weight_of(h.vwgts, v);
        nvtxs[at(part[v])]++;
    }
    for (const int64_t weight : weights) quality.total_weight += weight;
    const auto [lightest, heaviest] = std::minmax_element(weights.begin(), weights.end());
    quality.lightest_part = *lightest;
    quality.heaviest_part = *heaviest;
    quality.empty_parts = static_cast<int>(std::count(nvtxs.begin(), nvtxs.end(), 0));
    if (quality.total_weight == 0) return;
    const double nparts = static_cast<double>(weights.size());
    quality.imbalance =
        static_cast<double>(*heaviest) * nparts / static_cast<double>(quality.total_weight) - 1;
}

/* External degrees and everything that sums over the hyperedges. */
void Evaluator::weigh_cut(const int *part)
{
    std::fill(external.begin(), external.end(), 0);
    touched.turn_to(part);
    Sum absorbed; // by the hyperedges cut
    for (int e = 0; e < h.nhedges; e++) {
        const std::vector<int> &parts = touched.by(e);
        if (parts.size() < 2) continue;
        const int64_t weight = weight_of(h.hewgts, e), degree = static_cast<int64_t>(parts.size());
        const int64_t npins = h.eptr[e + 1] - h.eptr[e];
        for (const int p : parts) external[at(p)] += weight;
        quality.cut_hedges++;
        quality.cut += weight;
        quality.soed += weight * degree;
        quality.connectivity += weight * (degree - 1);
        absorbed.add(static_cast<double>(npins - degree) / static_cast<double>(npins - 1));
    }
    absorbed.add(h.nhedges - quality.cut_hedges);
    quality.absorption = absorbed.value();
}

double Evaluator::scaled_cost() const
{
    if (weights.size() == 1 || h.nvtxs == 0) return 0;
    Sum sum;
    for (size_t p = 0; p < weights.size(); p++)
        if (external[p] != 0)
            sum.add(static_cast<double>(external[p]) / static_cast<double>(weights[p]));
    return sum.value() / (static_cast<double>(h.nvtxs) * static_cast<double>(weights.size() - 1));
}

const zorpelx_quality &Evaluator::evaluate(const int *part)
{
    quality = {};
    quality.size = sizeof quality;
    weigh_parts(part);
    weigh_cut(part);
    quality.scaled_cost = scaled_cost();
    return quality;
}

/* Checks common to the evaluations; result is the array that the caller wants filled. */
static Fault check_evaluation(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                              const void *result, const char *name, Watch &watch)
{
    if (Fault found = check_hypergraph(hypergraph, Totals::Any, watch)) return found;
    if (Fault found = check_partition(hypergraph, nparts, part, watch)) return found;
    if (result == nullptr) return fault(ZORPELX_BAD_OPTION, "%s is null.", name);
    return {};
}

int zorpelx_evaluate(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                     zorpelx_quality *quality, int64_t *pwgts, int64_t *pcuts, char *message)
{
    return reporting_to(message, [&]() -> Fault {
        Watch watch;
        if (Fault found = check_evaluation(hypergraph, nparts, part, quality, "quality", watch))
            return found;
        if (!size_is_known(*quality))
            return fault(ZORPELX_BAD_OPTION,
                         "The size of quality is %zu instead of %zu; set it by "
                         "zorpelx_quality_init().",
                         quality->size, sizeof *quality);
        Evaluator evaluator(*hypergraph, nparts, watch);
        hand_back(evaluator.evaluate(part), quality);
        const auto &weights = evaluator.pwgts(), &external = evaluator.pcuts();
        if (pwgts != nullptr) std::copy(weights.begin(), weights.end(), pwgts);
        if (pcuts != nullptr) std::copy(external.begin(), external.end(), pcuts);
        return {};
    });
}

int zorpelx_cut_hyperedges(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                           int *hedges, int *count, char *message)
{
    return reporting_to(message, [&]() -> Fault {
        Watch watch;
        if (Fault found = check_evaluation(hypergraph, nparts, part, count, "count", watch))
            return found;
        if (hedges == nullptr && hypergraph->nhedges > 0)
            return fault(ZORPELX_BAD_OPTION, "hedges is null.");
        Touched touched(*hypergraph, nparts, watch);
        touched.turn_to(part);
        int found = 0;
        for (int e = 0; e < hypergraph->nhedges; e++)
            if (touched.by(e).size() > 1) hedges[found++] = e;
        *count = found;
        return {};
    });
}

int zorpelx_cut_matrix(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                       int64_t *matrix, char *message)
{
    return reporting_to(message, [&]() -> Fault {
        Watch watch;
        if (Fault found = check_evaluation(hypergraph, nparts, part, matrix, "matrix", watch))
            return found;
        const size_t n = at(nparts);
        Touched touched(*hypergraph, nparts, watch);
        touched.turn_to(part);
        std::fill(matrix, matrix + n * n, 0);
        for (int e = 0; e < hypergraph->nhedges; e++) {
            const std::vector<int> &parts = touched.by(e);
            const int64_t weight = weight_of(hypergraph->hewgts, e);
            for (const int p : parts)
                for (const int q : parts)
                    if (p != q || parts.size() == 1) matrix[at(p) * n + at(q)] += weight;
        }
        return {};
    });
}

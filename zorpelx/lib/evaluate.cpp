/* zorpelx/lib/evaluate.cpp: exact quality of a partition.
 *
 * One pass over the pins; the parts that a hyperedge touches are listed with the help of a mark
 * per part, so the cost is O(nvtxs + pins + nparts) however many parts there are.
 */
#include "evaluate.h"

#include <algorithm>
#include <cmath>

#include "check.h"

static int64_t weight_of(const int *weights, int i)
{
    return weights != nullptr ? weights[i] : 1;
}

static size_t at(int i)
{
    return static_cast<size_t>(i);
}

/* Lists the parts that a hyperedge touches. */
class Touched
{
  public:
    Touched(const zorpelx_hypergraph &hypergraph, int nparts, const int *parts)
        : h(hypergraph), part(parts), mark(at(nparts), -1)
    {
    }

    /* The parts of hyperedge e in order of first meeting; good until the next call. */
    const std::vector<int> &by(int e)
    {
        list.clear();
        for (int j = h.eptr[e]; j < h.eptr[e + 1]; j++) {
            const int p = part[h.eind[j]];
            if (mark[at(p)] == e) continue;
            mark[at(p)] = e;
            list.push_back(p);
        }
        return list;
    }

  private:
    const zorpelx_hypergraph &h;
    const int *part;
    std::vector<int> mark; // [nparts] last hyperedge that touched each part
    std::vector<int> list;
};

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

static void weigh_parts(const zorpelx_hypergraph &h, const int *part, Evaluation *evaluation)
{
    std::vector<int> nvtxs(evaluation->pwgts.size(), 0);
    for (int v = 0; v < h.nvtxs; v++) {
        evaluation->pwgts[at(part[v])] += weight_of(h.vwgts, v);
        nvtxs[at(part[v])]++;
    }
    zorpelx_quality &quality = evaluation->quality;
    for (const int64_t weight : evaluation->pwgts) quality.total_weight += weight;
    const auto [lightest, heaviest] =
        std::minmax_element(evaluation->pwgts.begin(), evaluation->pwgts.end());
    quality.lightest_part = *lightest;
    quality.heaviest_part = *heaviest;
    quality.empty_parts = static_cast<int>(std::count(nvtxs.begin(), nvtxs.end(), 0));
    if (quality.total_weight == 0) return;
    const double nparts = static_cast<double>(evaluation->pwgts.size());
    quality.imbalance =
        static_cast<double>(*heaviest) * nparts / static_cast<double>(quality.total_weight) - 1;
}

/* External degrees and everything that sums over the hyperedges. */
static void weigh_cut(const zorpelx_hypergraph &h, int nparts, const int *part,
                      Evaluation *evaluation)
{
    zorpelx_quality &quality = evaluation->quality;
    Touched touched(h, nparts, part);
    Sum absorbed; // by the hyperedges cut
    for (int e = 0; e < h.nhedges; e++) {
        const std::vector<int> &parts = touched.by(e);
        if (parts.size() < 2) continue;
        const int64_t weight = weight_of(h.hewgts, e), degree = static_cast<int64_t>(parts.size());
        const int64_t npins = h.eptr[e + 1] - h.eptr[e];
        for (const int p : parts) evaluation->pcuts[at(p)] += weight;
        quality.cut_hedges++;
        quality.cut += weight;
        quality.soed += weight * degree;
        quality.connectivity += weight * (degree - 1);
        absorbed.add(static_cast<double>(npins - degree) / static_cast<double>(npins - 1));
    }
    absorbed.add(h.nhedges - quality.cut_hedges);
    quality.absorption = absorbed.value();
}

static double scaled_cost(const zorpelx_hypergraph &h, int nparts, const Evaluation &evaluation)
{
    if (nparts == 1 || h.nvtxs == 0) return 0;
    Sum sum;
    for (size_t p = 0; p < evaluation.pwgts.size(); p++)
        if (evaluation.pcuts[p] != 0)
            sum.add(static_cast<double>(evaluation.pcuts[p]) /
                    static_cast<double>(evaluation.pwgts[p]));
    return sum.value() / (static_cast<double>(h.nvtxs) * (nparts - 1));
}

Evaluation evaluate(const zorpelx_hypergraph &h, int nparts, const int *part)
{
    Evaluation evaluation = {
        {}, std::vector<int64_t>(at(nparts), 0), std::vector<int64_t>(at(nparts), 0)};
    evaluation.quality.size = sizeof evaluation.quality;
    weigh_parts(h, part, &evaluation);
    weigh_cut(h, nparts, part, &evaluation);
    evaluation.quality.scaled_cost = scaled_cost(h, nparts, evaluation);
    return evaluation;
}

/* Checks common to the evaluations; result is the array that the caller wants filled. */
static Fault check_evaluation(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                              const void *result, const char *name)
{
    if (Fault found = check_hypergraph(hypergraph, Totals::Any)) return found;
    if (Fault found = check_partition(hypergraph, nparts, part)) return found;
    if (result == nullptr) return fault(ZORPELX_BAD_OPTION, "%s is null.", name);
    return {};
}

int zorpelx_evaluate(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                     zorpelx_quality *quality, int64_t *pwgts, int64_t *pcuts, char *message)
{
    return reporting_to(message, [&]() -> Fault {
        if (Fault found = check_evaluation(hypergraph, nparts, part, quality, "quality"))
            return found;
        if (quality->size != sizeof *quality)
            return fault(ZORPELX_BAD_OPTION,
                         "The size of quality is %zu instead of %zu; set it by "
                         "zorpelx_quality_init().",
                         quality->size, sizeof *quality);
        const Evaluation evaluation = evaluate(*hypergraph, nparts, part);
        *quality = evaluation.quality;
        if (pwgts != nullptr) std::copy(evaluation.pwgts.begin(), evaluation.pwgts.end(), pwgts);
        if (pcuts != nullptr) std::copy(evaluation.pcuts.begin(), evaluation.pcuts.end(), pcuts);
        return {};
    });
}

int zorpelx_cut_hyperedges(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                           int *hedges, int *count, char *message)
{
    return reporting_to(message, [&]() -> Fault {
        if (Fault found = check_evaluation(hypergraph, nparts, part, count, "count")) return found;
        if (hedges == nullptr && hypergraph->nhedges > 0)
            return fault(ZORPELX_BAD_OPTION, "hedges is null.");
        Touched touched(*hypergraph, nparts, part);
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
        if (Fault found = check_evaluation(hypergraph, nparts, part, matrix, "matrix"))
            return found;
        const size_t n = at(nparts);
        Touched touched(*hypergraph, nparts, part);
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

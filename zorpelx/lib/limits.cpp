// SPDX-License-Identifier: MIT
/* zorpelx/lib/limits.cpp: how much weight each part may get.
 *
 * Follows the engine down its bisections with the least and the most weight that a half can have,
 * in the engine's own precisions. Its bounds are not quite monotonous in the weight where single
 * precision rounds, so limits derived from a range of weights are widened by the rounding.
 */
#include "limits.h"

#include <algorithm>

#include "core/ctrl.h"
#include "fault.h"

constexpr int ROUNDING_SHIFT = 20; // single precision errs by less than this power of a half

struct Bisection {
    float share, factor; // of side 0; allowed for either side

    int64_t least0(int64_t weight) const
    {
        return std::max<int64_t>(
            0, static_cast<int64_t>((share - factor) * static_cast<float>(weight))); // < weight
    }
    int64_t least1(int64_t weight) const
    {
        const double least = 1.0 - static_cast<double>(share) - static_cast<double>(factor);
        return std::max<int64_t>(0, static_cast<int64_t>(least * static_cast<double>(weight)));
    }
};

static int64_t rounding(const Limits &weight)
{
    return weight.least == weight.most ? 0 : weight.most >> ROUNDING_SHIFT;
}

static int64_t sum_or_most(int64_t a, int64_t b)
{
    int64_t sum;
    return __builtin_add_overflow(a, b, &sum) ? INT64_MAX : sum;
}

static Limits widened(Limits limits, int64_t by)
{
    return {std::max<int64_t>(0, limits.least - by), sum_or_most(limits.most, by)};
}

/* x, 0 or more, without its fraction; single precision may have rounded a total up to 2^63. */
static int64_t truncated(double x)
{
    constexpr double TOO_MUCH = 9223372036854775808.0; // 2^63
    return x < TOO_MUCH ? static_cast<int64_t>(x) : INT64_MAX;
}

/* Of the parts of a half that may weigh so much, into limits [nparts]. */
static void bisection_limits(int nparts, float factor, Limits weight, Limits *limits)
{
    if (nparts == 1) {
        *limits = weight;
        return;
    }
    const int left = nparts / 2;
    const Bisection cut = {static_cast<float>(static_cast<double>(left) / nparts), factor};
    const auto [least, most] = weight;
    const int64_t error = rounding(weight);
    bisection_limits(left, factor, widened({cut.least0(least), most - cut.least1(most)}, error),
                     limits);
    bisection_limits(nparts - left, factor,
                     widened({cut.least1(least), most - cut.least0(most)}, error), limits + left);
}

/* The final refinement bounds all parts alike: by the ratio of the heaviest to the average. */
static Limits polish_limits(const std::vector<Limits> &limits, int64_t total)
{
    Limits all = limits[0];
    for (const Limits &part : limits)
        all = {std::min(all.least, part.least), std::max(all.most, part.most)};
    const double nparts = static_cast<double>(limits.size());
    const float ratio =
        static_cast<float>(nparts * static_cast<double>(all.most) / static_cast<double>(total));
    const float weight = static_cast<float>(total), count = static_cast<float>(limits.size());
    const int64_t least = truncated(weight / (count * ratio));
    const int64_t most = truncated(ratio * weight / count);
    return widened({std::min(all.least, least), std::max(all.most, most)}, rounding(all));
}

std::vector<Limits> part_limits(int nparts, int ubfactor, bool polish, int64_t total)
{
    std::vector<Limits> limits(static_cast<size_t>(nparts));
    bisection_limits(nparts, static_cast<float>(ubfactor / 100.0), {total, total}, limits.data());
    if (polish && nparts > 2 && nparts < KWAY_POLISH_PARTS && total > 0)
        std::fill(limits.begin(), limits.end(), polish_limits(limits, total));
    return limits;
}

int zorpelx_part_limits(int nparts, int ubfactor, int polish, int64_t total, int64_t *least,
                        int64_t *most)
{
    if (nparts < 1 || ubfactor < 1 || ubfactor > 49 || polish < 0 || polish > 1 || total < 0)
        return ZORPELX_BAD_OPTION;
    return reporting_to(nullptr, [&]() -> Fault {
        const std::vector<Limits> limits = part_limits(nparts, ubfactor, polish != 0, total);
        for (size_t p = 0; p < limits.size(); p++) {
            if (least != nullptr) least[p] = limits[p].least;
            if (most != nullptr) most[p] = limits[p].most;
        }
        return {};
    });
}

// SPDX-License-Identifier: MIT
/* model/torture_check.cpp: judges the outcome of a call.
 *
 * What holds of every outcome:
 *   C1  every vertex has a part of 0 .. nparts - 1, and a pre-assigned one has its own
 *   C2  no alarm line is printed, but for hyperedges of one vertex in the input (then the cut may
 *       be off, and so it is not judged)
 *   C3  the returned value is the cut of the returned partition; with the reconst option and no
 *       polish the sum of the cuts of all bisections; for the direct partitioner its objective
 *   C4  a refined bisection is no worse than the given one, and balanced if that was
 *   C5  a bisection into equal halves of free vertices, none of which outweighs the room between
 *       the bounds, keeps both bounds; and so inside each half while no polish follows
 *   C6  the statistics printed for it are those counted here
 *   C7  the same call again prints and returns the same; so does one with weights of one
 *       written out where the arrays were null
 */
#include "torture_check.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>

#include "driver/reports.h"

static std::string format(const char *text, ...) __attribute__((format(printf, 1, 2)));
static std::string format(const char *text, ...)
{
    char line[256];
    va_list args;
    va_start(args, text);
    vsnprintf(line, sizeof line, text, args);
    va_end(args);
    return line;
}

Figures count_figures(const Case &c, const std::vector<int> &part, int nparts)
{
    const size_t k = static_cast<size_t>(nparts);
    Figures figures = {0, 0, 0, std::vector<long long>(k, 0), std::vector<long long>(k, 0)};
    for (int v = 0; v < c.nvtxs; v++)
        figures.weight[static_cast<size_t>(part[static_cast<size_t>(v)])] += vertex_weight(c, v);
    for (int e = 0; e < count_hedges(c); e++) {
        const int size = hedge_size(c, e), w = hedge_weight(c, e);
        const auto pins = c.eind.begin() + c.eptr[static_cast<size_t>(e)];
        std::set<int> touched;
        for (auto pin = pins; pin != pins + size; pin++)
            touched.insert(part[static_cast<size_t>(*pin)]);
        if (touched.size() < 2) {
            figures.absorption += 1;
            continue;
        }
        const int lambda = static_cast<int>(touched.size());
        figures.cut += w;
        figures.soed += static_cast<long long>(lambda) * w;
        figures.absorption += static_cast<double>(size - lambda) / (size - 1);
        for (const int p : touched) figures.degree[static_cast<size_t>(p)] += w;
    }
    return figures;
}

/* ---- C1, C2 -------------------------------------------------------------------------------- */

static std::string check_parts(const Case &c, const Outcome &outcome)
{
    const int nparts = c.entry == ENTRY_REFINE ? 2 : c.nparts;
    for (size_t v = 0; v < outcome.part.size(); v++) {
        const int p = outcome.part[v];
        if (p < 0 || p >= nparts) return format("C1: vertex %zu has part %d", v, p);
        if (is_fixed(c) && c.part[v] != -1 && c.part[v] != p)
            return format("C1: vertex %zu is fixed in %d but stands in %d", v, c.part[v], p);
    }
    return {};
}

static bool has_single(const Case &c)
{
    for (int e = 0; e < count_hedges(c); e++)
        if (hedge_size(c, e) == 1) return true;
    return false;
}

static std::string check_alarms(const Case &c, const Outcome &outcome)
{
    if (outcome.output.find("Fixing failed") != std::string::npos) return "C2: Fixing failed";
    if (!has_single(c) && outcome.output.find("Wrong cut!") != std::string::npos)
        return "C2: Wrong cut!";
    return {};
}

/* ---- C3, C4 -------------------------------------------------------------------------------- */

/* Weight of hyperedge e times the bisections that cut it, when parts first .. first + k - 1 come
 * from bisections of floor(k/2) and the rest, and pieces of one vertex are dropped. */
static long long count_bisections(const std::vector<int> &parts, int first, int k)
{
    if (k < 2 || parts.size() < 2) return 0;
    std::vector<int> left, right;
    for (const int p : parts) (p < first + k / 2 ? left : right).push_back(p);
    return (!left.empty() && !right.empty()) + count_bisections(left, first, k / 2) +
           count_bisections(right, first + k / 2, k - k / 2);
}

static long long sum_of_bisections(const Case &c, const std::vector<int> &part)
{
    long long sum = 0;
    for (int e = 0; e < count_hedges(c); e++) {
        std::vector<int> parts;
        for (int j = c.eptr[static_cast<size_t>(e)]; j < c.eptr[static_cast<size_t>(e) + 1]; j++)
            parts.push_back(part[static_cast<size_t>(c.eind[static_cast<size_t>(j)])]);
        sum += hedge_weight(c, e) * count_bisections(parts, 0, c.nparts);
    }
    return sum;
}

static bool is_polished(const Case &c)
{
    const bool wanted = c.entry == ENTRY_RECURSIVE || (c.entry == ENTRY_SHALLOW && c.polish);
    return wanted && c.nparts > 2 && c.nparts < 65;
}

static std::string check_value(const Case &c, const Outcome &outcome, const Figures &figures)
{
    if (has_single(c)) return {};
    const bool reconst = (c.options[ZORPEL_OPT_USE] != 0 || c.entry == ENTRY_SHALLOW) &&
                         c.options[ZORPEL_OPT_RECONST] == 1 && c.entry != ENTRY_REFINE;
    long long least = figures.cut, most = figures.cut;
    if (c.entry == ENTRY_DIRECT) {
        least = most = c.options[ZORPEL_OPT_RTYPE] == 1 ? figures.cut : figures.soed;
    } else if (reconst && !is_polished(c)) {
        // the parts of fixed vertices were renumbered: lambda - 1 bisections at most
        least = is_fixed(c) ? figures.cut : sum_of_bisections(c, outcome.part);
        most = is_fixed(c) ? figures.soed - figures.cut : least;
    }
    if (most > INT_MAX || (outcome.edgecut >= least && outcome.edgecut <= most)) return {};
    return format("C3: %d returned, not %lld .. %lld", outcome.edgecut, least, most);
}

/* Least weight of a half with the given share, by the engine's own rounding or one below. */
static long long least_weight(double share, int ubfactor, long long total)
{
    const double bound = (share - ubfactor / 100.0) * static_cast<double>(total);
    const double loss = static_cast<double>(total) / 4194304; // of single precision
    return bound > loss ? static_cast<long long>(bound - loss) : 0;
}

static bool keeps_bounds(long long left, long long right, int ubfactor)
{
    const long long least = least_weight(0.5, ubfactor, left + right);
    return left >= least && right >= least;
}

static std::string check_refined(const Case &c, const Figures &figures)
{
    if (c.entry != ENTRY_REFINE || has_single(c)) return {};
    const Figures before = count_figures(c, c.part, 2);
    if (figures.cut > before.cut)
        return format("C4: the cut rose from %lld to %lld", before.cut, figures.cut);
    if (keeps_bounds(before.weight[0], before.weight[1], c.ubfactor) &&
        !keeps_bounds(figures.weight[0], figures.weight[1], c.ubfactor))
        return format("C4: balance lost: %lld %lld", figures.weight[0], figures.weight[1]);
    return {};
}

/* ---- C5 ------------------------------------------------------------------------------------ */

/* Most weight that a vertex of a hypergraph may have for the promise of balance: the room between
 * the bounds, taken over the vertices that lie in hyperedges that coarsening sees. */
static long long room_for_vertex(long long connected, int ubfactor)
{
    const long long least = least_weight(0.5, ubfactor, connected);
    return connected - 2 * least - 2;
}

struct Half {
    std::vector<bool> inside; // [nvtxs]
    int first, k;             // its parts
};

/* Whether the hyperedge survived, whole or as a piece, into the half, with at most 50 vertices. */
static std::vector<bool> find_connected(const Case &c, const Half &half)
{
    std::vector<bool> connected(static_cast<size_t>(c.nvtxs), false);
    for (int e = 0; e < count_hedges(c); e++) {
        std::vector<size_t> pins;
        for (int j = c.eptr[static_cast<size_t>(e)]; j < c.eptr[static_cast<size_t>(e) + 1]; j++) {
            const size_t v = static_cast<size_t>(c.eind[static_cast<size_t>(j)]);
            if (half.inside[v]) pins.push_back(v);
        }
        const bool whole = static_cast<int>(pins.size()) == hedge_size(c, e);
        if (pins.size() > 50 || (!whole && c.options[ZORPEL_OPT_RECONST] == 0)) continue;
        if (pins.size() == 1 && !whole) continue;
        for (const size_t v : pins) connected[v] = true;
    }
    return connected;
}

static std::string check_half(const Case &c, const std::vector<int> &part, const Half &half)
{
    if (half.k < 2 || half.k % 2 != 0) return {};
    const std::vector<bool> connected = find_connected(c, half);
    long long heaviest = 0, weight = 0, sides[2] = {0, 0};
    for (size_t v = 0; v < part.size(); v++) {
        if (!half.inside[v]) continue;
        const int w = vertex_weight(c, static_cast<int>(v));
        heaviest = std::max<long long>(heaviest, w);
        if (connected[v]) weight += w;
        sides[part[v] >= half.first + half.k / 2] += w;
    }
    if (heaviest > room_for_vertex(weight, c.ubfactor)) return {};
    if (!keeps_bounds(sides[0], sides[1], c.ubfactor))
        return format("C5: parts %d..%d of weight %lld and %lld", half.first,
                      half.first + half.k - 1, sides[0], sides[1]);
    if (is_polished(c)) return {};
    Half left = {half.inside, half.first, half.k / 2}, right = left;
    right.first += half.k / 2;
    for (size_t v = 0; v < part.size(); v++) {
        if (part[v] >= right.first) left.inside[v] = false;
        if (part[v] < right.first) right.inside[v] = false;
    }
    const std::string why = check_half(c, part, left);
    return why.empty() ? check_half(c, part, right) : why;
}

static std::string check_balance(const Case &c, const Outcome &outcome)
{
    const bool bisects =
        c.entry == ENTRY_RECURSIVE || c.entry == ENTRY_INTERNAL || c.entry == ENTRY_SHALLOW;
    if (!bisects || is_fixed(c) || is_polished(c) || has_single(c)) return {};
    const Half whole = {std::vector<bool>(static_cast<size_t>(c.nvtxs), true), 0, c.nparts};
    return check_half(c, outcome.part, whole);
}

/* ---- C6 ------------------------------------------------------------------------------------ */

static bool near(double shown, double counted)
{
    if (std::isnan(counted) || std::isinf(counted)) return !std::isfinite(shown);
    return std::fabs(shown - counted) <= 0.01 + 0.01 * std::fabs(counted);
}

static double number_after(const std::string &text, const char *label)
{
    const size_t at = text.find(label);
    return at == std::string::npos ? NAN : atof(text.c_str() + at + std::string(label).size());
}

static double scaled_cost(const Case &c, const Figures &figures)
{
    double sum = 0;
    for (size_t p = 0; p < figures.weight.size(); p++)
        sum += static_cast<double>(figures.degree[p]) / static_cast<double>(figures.weight[p]);
    return sum / (static_cast<double>(c.nvtxs) * (static_cast<double>(c.nparts) - 1));
}

static std::string check_table(const std::string &text, const Figures &figures)
{
    const size_t at = text.find("External Degrees:\n\t");
    if (at == std::string::npos) return "C6: no table of parts";
    const char *next = text.c_str() + at + std::string("External Degrees:\n\t").size();
    for (size_t p = 0; p < figures.weight.size(); p++) {
        long long weight = -1, degree = -1;
        int taken = 0;
        if (sscanf(next, " %lld[%lld]%n", &weight, &degree, &taken) != 2 ||
            weight != figures.weight[p] || degree != figures.degree[p])
            return format("C6: part %zu shown with %lld[%lld], not %lld[%lld]", p, weight, degree,
                          figures.weight[p], figures.degree[p]);
        next += taken;
    }
    return {};
}

static std::string print_statistics(const Case &c, const std::vector<int> &part)
{
    char *text = nullptr;
    size_t size = 0;
    FILE *const kept = stdout;
    stdout = open_memstream(&text, &size);
    PrintPartStatistics(c.nvtxs, count_hedges(c), c.nparts, c.eptr.data(), c.eind.data(),
                        c.hewgts.empty() ? nullptr : c.hewgts.data(),
                        c.vwgts.empty() ? nullptr : c.vwgts.data(), part.data());
    fclose(stdout);
    stdout = kept;
    const std::string result(text, size);
    free(text);
    return result;
}

static std::string check_statistics(const Case &c, const Outcome &outcome, const Figures &figures)
{
    const std::string text = print_statistics(c, outcome.part);
    if (number_after(text, "Hyperedge Cut:") != static_cast<double>(figures.cut))
        return "C6: cut not as counted";
    if (figures.soed <= INT_MAX &&
        number_after(text, "Sum of External Degrees:") != static_cast<double>(figures.soed))
        return "C6: sum of external degrees not as counted";
    if (!near(number_after(text, "Absorption:"), figures.absorption))
        return "C6: absorption not as counted";
    if (!near(number_after(text, "Scaled Cost:"), scaled_cost(c, figures)))
        return "C6: scaled cost not as counted";
    return check_table(text, figures);
}

/* ---- all of them --------------------------------------------------------------------------- */

std::string check_outcome(const Case &c, const Outcome &outcome)
{
    std::string why = check_parts(c, outcome);
    if (!why.empty()) return why;
    const int nparts = c.entry == ENTRY_REFINE ? 2 : c.nparts;
    const Figures figures = count_figures(c, outcome.part, nparts);
    why = check_alarms(c, outcome);
    if (why.empty()) why = check_value(c, outcome, figures);
    if (why.empty()) why = check_refined(c, figures);
    if (why.empty()) why = check_balance(c, outcome);
    if (why.empty() && c.entry != ENTRY_REFINE) why = check_statistics(c, outcome, figures);
    return why;
}

// C7. The lines of timers differ from run to run.
static std::string check_again(const Case &c, const Outcome &outcome)
{
    Case again = c;
    if (c.vwgts.empty()) again.vwgts.assign(static_cast<size_t>(c.nvtxs), 1);
    if (c.hewgts.empty()) again.hewgts.assign(static_cast<size_t>(count_hedges(c)), 1);
    const Outcome second = make_call(again);
    if (second.part != outcome.part) return "C7: another partition the second time";
    if (second.edgecut != outcome.edgecut) return "C7: another cut the second time";
    const bool timed = (c.options[ZORPEL_OPT_DBGLVL] & ZORPEL_DBG_TIME) != 0;
    if (!timed && second.output != outcome.output) return "C7: another trace the second time";
    return {};
}

std::string check_case(const Case &c)
{
    const Outcome outcome = make_call(c);
    const std::string why = check_outcome(c, outcome);
    return why.empty() ? check_again(c, outcome) : why;
}

// SPDX-License-Identifier: MIT
/* fuzz/fuzz_interface.cpp: any bytes as calls of libzorpelx.
 *
 * Bytes become a hypergraph, options and a partition; most are folded into the range where a call
 * is sound, some are taken as they are. Whether it is sound is decided here once more, and so are
 * the figures. A sound call of few bytes is also made in child processes, now and then.
 */
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "take_byte.h"
#include "zorpelx.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size);

[[noreturn]] static void finding(const std::string &what)
{
    fprintf(stderr, "finding: %s\n", what.c_str());
    abort();
}

static void expect(bool right, const char *what)
{
    if (!right) finding(what);
}

static int take_any(Source *source)
{
    uint32_t number = 0;
    for (int i = 0; i < 4; i++) number = number << 8 | static_cast<uint32_t>(take_byte(source));
    return static_cast<int>(number);
}

/* From least to most, or now and then any number. */
static int take(Source *source, int least, int most)
{
    const int byte = take_byte(source);
    return byte == 255 ? take_any(source) : least + byte % (most - least + 1);
}

/* A percentage, or now and then what is none. */
static double take_percent(Source *source)
{
    const double odd[] = {NAN, INFINITY, -INFINITY, -1, -1e300, 1e300, 100.5, 1e-300};
    const int byte = take_byte(source);
    return byte > 247 ? odd[byte - 248] : byte / 2.0;
}

/* What a call is made of; arrays have the lengths that they are told to have. */
struct Input {
    int nvtxs, nhedges, nparts;
    std::vector<int> eptr, eind, vwgts, hewgts, fixed, part, start, groups;
    std::vector<double> capacities;
    zorpelx_options options;
    bool weighted, costly, fixing;
};

static void take_options(Source *source, Input *input)
{
    zorpelx_options *const o = &input->options;
    expect(zorpelx_options_init(o, sizeof *o) == ZORPELX_OK, "the options have no size");
    o->nparts = input->nparts;
    o->ubfactor = take(source, 1, 49);
    o->nruns = take(source, 1, 2);
    o->ctype = take(source, 1, 5);
    o->rtype = take(source, 1, 3);
    o->vcycle = take(source, 0, 3);
    o->reconst = take(source, 0, 1);
    o->polish = take(source, 0, 1);
    o->seed = take(source, -1, 9);
    o->starts = take(source, 1, 2);
    o->jobs = take(source, 0, 2);
    if (take_byte(source) == 255) o->size = static_cast<size_t>(take_any(source));
}

/* Bytes of the options in the first version of the header, which ended with the field user. */
static bool size_is_sound(size_t size)
{
    return size >= offsetof(zorpelx_options, user) + sizeof(void *) &&
           size <= sizeof(zorpelx_options) && size % alignof(zorpelx_options) == 0;
}

/* Options that only searches know; mostly none. */
static void take_search(Source *source, Input *input)
{
    zorpelx_options *const o = &input->options;
    const int which = take_byte(source);
    if (which % 2 == 0) return;
    o->epsilon = take_percent(source);
    if (which & 2) o->least = take_percent(source);
    o->objective = take(source, 0, 2);
    o->preset = take(source, 0, 1);
    o->shared = take(source, 0, 1);
    o->threads = take(source, 0, 2);
    if (which & 4) o->keep_price = take(source, 0, 3);
    if (which & 8)
        for (int p = 0; p < std::clamp(input->nparts, 0, 1000000); p++)
            input->capacities.push_back(1 + take_percent(source));
    const int last_part = std::clamp(input->nparts, 1, 9) - 1;
    for (int v = 0; v < input->nvtxs; v++) {
        if (which & 16) input->start.push_back(take(source, 0, last_part));
        if (which & 32) input->groups.push_back(take(source, -1, input->nvtxs - 1));
    }
}

/* What the library may see of the arrays and the options. */
static void point(Input *input)
{
    zorpelx_options *const o = &input->options;
    if (input->fixing) o->fixed = input->fixed.data();
    if (!input->capacities.empty()) o->capacities = input->capacities.data();
    if (!input->start.empty()) o->start = input->start.data();
    if (!input->groups.empty()) o->groups = input->groups.data();
}

/* The options as a library of this header takes those of an older one. */
static zorpelx_options known_options(const Input &input)
{
    zorpelx_options known;
    zorpelx_options_init(&known, sizeof known);
    memcpy(&known, &input.options, std::min(input.options.size, sizeof known));
    return known;
}

static Input take_input(Source *source)
{
    Input input = {};
    input.nvtxs = take_byte(source) % 24;
    input.nhedges = take_byte(source) % 24;
    input.nparts = take(source, 2, 6);
    take_options(source, &input);
    input.eptr.push_back(take_byte(source) == 255 ? take_any(source) : 0);
    for (int e = 0; e < input.nhedges; e++)
        input.eptr.push_back(take_byte(source) == 255 ? take_byte(source)
                                                      : std::min(input.eptr.back(), INT_MAX - 5) +
                                                            take_byte(source) % 5);
    const int longest = *std::max_element(input.eptr.begin(), input.eptr.end());
    for (int j = 0, v = 0; j < longest && j < 300; j++) { // mostly a few steps on, so seldom twice
        const int byte = take_byte(source);
        v = input.nvtxs > 0 ? (v + 1 + byte % 3) % input.nvtxs : 0;
        input.eind.push_back(byte == 255 ? take_any(source) : v);
    }
    input.weighted = take_byte(source) % 2 == 1;
    input.costly = take_byte(source) % 2 == 1;
    input.fixing = take_byte(source) % 3 == 1;
    const int last_part = std::clamp(input.nparts, 1, 9) - 1;
    for (int v = 0; v < input.nvtxs; v++) {
        input.vwgts.push_back(take(source, 0, 5));
        input.fixed.push_back(take(source, -1, last_part));
        input.part.push_back(take(source, 0, last_part));
    }
    for (int e = 0; e < input.nhedges; e++) input.hewgts.push_back(take(source, 0, 5));
    take_search(source, &input);
    return input;
}

static bool outside(int value, int least, int most)
{
    return value < least || value > most;
}

static bool weights_are_bad(const std::vector<int> &weights, bool bounded)
{
    long long total = 0;
    for (const int weight : weights) {
        if (weight < 0) return true;
        total += weight;
    }
    return bounded && total > INT_MAX - 1;
}

static bool hypergraph_is_bad(const Input &input, bool bounded)
{
    if (input.eptr[0] != 0) return true;
    for (size_t e = 1; e < input.eptr.size(); e++)
        if (input.eptr[e] < input.eptr[e - 1]) return true;
    for (size_t e = 1; e < input.eptr.size(); e++) {
        std::set<int> pins;
        for (int j = input.eptr[e - 1]; j < input.eptr[e]; j++) {
            const int v = input.eind[static_cast<size_t>(j)];
            if (outside(v, 0, input.nvtxs - 1) || !pins.insert(v).second) return true;
        }
    }
    return (input.weighted && weights_are_bad(input.vwgts, bounded)) ||
           (input.costly && weights_are_bad(input.hewgts, bounded));
}

static bool seeds_are_bad(const zorpelx_options &o)
{
    return o.seed < -1 || (o.seed == 0 && o.starts > 1) ||
           (o.seed > 0 && o.starts - 1 > INT_MAX - o.seed);
}

static bool options_are_bad(const zorpelx_options &o)
{
    return outside(o.nparts, 2, 1000000) || outside(o.ubfactor, 1, 49) || o.nruns < 1 ||
           outside(o.ctype, 1, 5) || outside(o.rtype, 1, 3) || outside(o.vcycle, 0, 3) ||
           outside(o.reconst, 0, 1) || outside(o.polish, 0, 1) || o.starts < 1 || o.jobs < 0 ||
           o.threads < 0 || seeds_are_bad(o);
}

static bool numbers_are_bad(const std::vector<int> &numbers, int least, int most)
{
    return std::any_of(numbers.begin(), numbers.end(),
                       [&](int number) { return outside(number, least, most); });
}

static bool capacities_are_bad(const std::vector<double> &capacities)
{
    double sum = 0;
    for (const double capacity : capacities) {
        if (!(capacity > 0)) return true;
        sum += capacity;
    }
    return !std::isfinite(sum);
}

/* Groups whose members are fixed in different parts, or that are none. */
static bool groups_are_bad(const Input &input)
{
    if (numbers_are_bad(input.groups, -1, input.nvtxs - 1)) return true;
    for (size_t v = 0; input.fixing && v < input.groups.size(); v++)
        for (size_t u = 0; u < v; u++)
            if (input.groups[u] >= 0 && input.groups[u] == input.groups[v] && input.fixed[u] >= 0 &&
                input.fixed[v] >= 0 && input.fixed[u] != input.fixed[v])
                return true;
    return false;
}

static bool price_is_bad(const Input &input, int price)
{
    if (price > 0 && input.start.empty()) return true;
    long long total = 0;
    for (const int cost : input.hewgts) total += input.costly ? cost : 1;
    for (const int weight : input.vwgts) total += 1LL * price * (input.weighted ? weight : 1);
    return price > 0 && total > INT_MAX - 1;
}

static bool search_is_bad(const Input &input, const zorpelx_options &o)
{
    if (outside(o.objective, 0, 2) || outside(o.preset, 0, 2) || outside(o.shared, 0, 1) ||
        o.keep_price < 0 || !std::isfinite(o.epsilon) || std::isnan(o.least) || o.least > 100)
        return true;
    if (o.epsilon < 0)
        return o.capacities != nullptr || o.start != nullptr || o.groups != nullptr ||
               o.least >= 0 || o.keep_price > 0 || o.shared != 0;
    return (o.shared == 1 && o.starts > 1000000) || capacities_are_bad(input.capacities) ||
           numbers_are_bad(input.start, 0, o.nparts - 1) || groups_are_bad(input) ||
           price_is_bad(input, o.keep_price);
}

static bool call_is_bad(const Input &input)
{
    if (!size_is_sound(input.options.size)) return true;
    const zorpelx_options o = known_options(input);
    return options_are_bad(o) || hypergraph_is_bad(input, true) ||
           (input.fixing && numbers_are_bad(input.fixed, -1, o.nparts - 1)) ||
           search_is_bad(input, o);
}

/* The figures of a sound partition, from sets of parts. */
static void compare_figures(const Input &input, const std::vector<int> &part,
                            const zorpelx_quality &quality, const std::vector<int64_t> &pwgts)
{
    int64_t cut = 0, soed = 0;
    int ncut = 0;
    std::vector<int64_t> weights(pwgts.size(), 0);
    for (size_t e = 1; e < input.eptr.size(); e++) {
        std::set<int> parts;
        for (int j = input.eptr[e - 1]; j < input.eptr[e]; j++)
            parts.insert(part[static_cast<size_t>(input.eind[static_cast<size_t>(j)])]);
        if (parts.size() < 2) continue;
        const int64_t weight = input.costly ? input.hewgts[e - 1] : 1;
        ncut++;
        cut += weight;
        soed += weight * static_cast<int64_t>(parts.size());
    }
    for (size_t v = 0; v < part.size(); v++)
        weights[static_cast<size_t>(part[v])] += input.weighted ? input.vwgts[v] : 1;
    expect(quality.cut == cut && quality.soed == soed && quality.cut_hedges == ncut,
           "the figures of the cut are others");
    expect(weights == pwgts, "the weights of the parts are others");
}

static void evaluate(const Input &input, const zorpelx_hypergraph &view)
{
    const size_t room = static_cast<size_t>(outside(input.nparts, 1, 1000000) ? 1 : input.nparts);
    std::vector<int64_t> pwgts(room, -1), pcuts(room, -1);
    zorpelx_quality quality;
    zorpelx_quality_init(&quality, sizeof quality);
    char message[ZORPELX_MESSAGE_SIZE];
    const int status = zorpelx_evaluate(&view, input.nparts, input.part.data(), &quality,
                                        pwgts.data(), pcuts.data(), message);
    const bool bad = hypergraph_is_bad(input, false) || outside(input.nparts, 1, 1000000) ||
                     numbers_are_bad(input.part, 0, input.nparts - 1);
    expect((status != ZORPELX_OK) == bad, message);
    expect(bad == (message[0] != '\0'), "a fault without a sentence, or the reverse");
    if (!bad) compare_figures(input, input.part, quality, pwgts);
    if (input.nparts > 40) return;
    std::vector<int> hedges(input.hewgts.size() + 1);
    std::vector<int64_t> matrix(room * room);
    int count = -1;
    expect(zorpelx_cut_hyperedges(&view, input.nparts, input.part.data(), hedges.data(), &count,
                                  message) == status,
           "the cut hyperedges have another status");
    expect(bad ? count == -1 : count == quality.cut_hedges, "the cut hyperedges are others");
    expect(zorpelx_cut_matrix(&view, input.nparts, input.part.data(), matrix.data(), message) ==
               status,
           "the matrix has another status");
}

/* What a search promises besides: bounds where the result is valid, groups that stay together. */
static void compare_search(const Input &input, const zorpelx_options &o,
                           const std::vector<int> &part, const std::vector<int64_t> &pwgts,
                           bool valid)
{
    std::vector<int64_t> low(pwgts.size()), high(pwgts.size());
    const int64_t total = std::accumulate(pwgts.begin(), pwgts.end(), int64_t{0});
    expect(zorpelx_part_bounds(o.nparts, o.epsilon, o.least, o.capacities, total, low.data(),
                               high.data()) == ZORPELX_OK,
           "a search without bounds");
    for (size_t p = 0; valid && p < pwgts.size(); p++)
        expect(pwgts[p] <= high[p], "a part beyond its bound");
    for (size_t v = 0; v < input.groups.size(); v++)
        for (size_t u = 0; u < v; u++)
            expect(input.groups[u] < 0 || input.groups[u] != input.groups[v] || part[u] == part[v],
                   "a group in two parts");
}

static void partition(const Input &input, const zorpelx_hypergraph &view, bool bad)
{
    zorpelx_options options = bad ? input.options : known_options(input);
    if (!bad && (options.nruns > 20 || options.starts > 20 || options.nparts > 100)) return;
    options.timeout = 60;
    std::vector<int> part(static_cast<size_t>(input.nvtxs) + 1, 77);
    zorpelx_result result;
    zorpelx_result_init(&result, sizeof result);
    const int status = zorpelx_partition(&view, &options, part.data(), &result);
    expect(part.back() == 77, "the array was written beyond its end");
    part.pop_back();
    expect((status == ZORPELX_OK) != bad, result.message);
    if (bad) return;
    expect(!numbers_are_bad(part, 0, options.nparts - 1), "a part that is none");
    zorpelx_quality quality;
    zorpelx_quality_init(&quality, sizeof quality);
    std::vector<int64_t> pwgts(static_cast<size_t>(options.nparts));
    zorpelx_evaluate(&view, options.nparts, part.data(), &quality, pwgts.data(), nullptr, nullptr);
    compare_figures(input, part, quality, pwgts);
    expect(quality.cut == result.cut && quality.soed == result.soed, "the cut told is another");
    for (size_t v = 0; options.fixed != nullptr && v < part.size(); v++)
        expect(input.fixed[v] == -1 || input.fixed[v] == part[v] || result.valid == 0,
               "a pre-assignment is not kept");
    if (options.epsilon >= 0) compare_search(input, options, part, pwgts, result.valid == 1);
}

static void bound_parts(Source *source)
{
    const int nparts = take(source, 1, 70), ubfactor = take(source, 1, 49),
              polish = take(source, 0, 1);
    const int64_t total = static_cast<int64_t>(take_any(source)) << take_byte(source) % 32;
    if (nparts > 10000) return;
    const size_t room = static_cast<size_t>(std::max(nparts, 1));
    std::vector<int64_t> least(room, -1), most(room, -1);
    const int status =
        zorpelx_part_limits(nparts, ubfactor, polish, total, least.data(), most.data());
    const bool bad = nparts < 1 || outside(ubfactor, 1, 49) || outside(polish, 0, 1) || total < 0;
    expect((status != ZORPELX_OK) == bad, "limits for what has none, or the reverse");
    for (size_t p = 0; !bad && p < room; p++)
        expect(least[p] >= 0 && least[p] <= most[p], "limits that exclude each other");
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    Source source = {bytes, size};
    const bool in_children = take_byte(&source) == 1;
    bound_parts(&source);
    Input input = take_input(&source);
    if (input.eind.size() < static_cast<size_t>(std::max(0, input.eptr.back()))) return 0;
    for (const int offset : input.eptr) // the checks may look so far
        if (offset > static_cast<int>(input.eind.size())) return 0;
    point(&input);
    const zorpelx_hypergraph view = {input.nvtxs,
                                     input.nhedges,
                                     input.eptr.data(),
                                     input.eind.data(),
                                     input.weighted ? input.vwgts.data() : nullptr,
                                     input.costly ? input.hewgts.data() : nullptr};
    const bool bad = call_is_bad(input);
    char message[ZORPELX_MESSAGE_SIZE];
    const int status = zorpelx_check(&view, &input.options, message);
    expect((status != ZORPELX_OK) == bad, bad ? "a bad call passed" : message);
    expect(bad == (message[0] != '\0'), "a fault without a sentence, or the reverse");
    evaluate(input, view);
    if (in_children || bad) partition(input, view, bad);
    return 0;
}

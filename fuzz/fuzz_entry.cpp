// SPDX-License-Identifier: MIT
/* fuzz/fuzz_entry.cpp: any bytes as a call of an entry point.
 *
 * Bytes become counts, options, weights and hyperedges; most are folded into the range where the
 * call is valid, some are taken as they are: any number may stand in eind, eptr, part and the
 * weights, as long as the arrays have the sizes that they ought to. A valid call is judged as the
 * tester judges it; an invalid one must take the fatal exit.
 */
#include <algorithm>
#include <cstdio>
#include <set>

#include "hook.h"
#include "take_byte.h"
#include "torture_check.h"

// A number from least to most, or now and then any one.
static int take_option(Source *source, int least, int most)
{
    const int byte = take_byte(source);
    if (byte == 255) return take_byte(source) - 128;
    return least + byte % (most - least + 1);
}

// Mostly small, now and then huge or negative.
static int take_weight(Source *source)
{
    const int byte = take_byte(source);
    if (byte < 250) return byte % 16;
    return byte == 250 ? -take_byte(source) : take_byte(source) << 23;
}

static void take_weights(Source *source, size_t n, std::vector<int> *weights)
{
    if (take_byte(source) % 2 == 0) return;
    for (size_t i = 0; i < n; i++) weights->push_back(take_weight(source));
}

// Mostly a vertex, now and then one just outside, or any number.
static int take_vertex(Source *source, int nvtxs)
{
    const int byte = take_byte(source);
    if (byte < 250) return byte % std::max(1, nvtxs);
    if (byte < 253) return nvtxs + byte - 251;
    return byte == 253 ? -1 - take_byte(source) : take_byte(source) << 23 | take_byte(source);
}

// A hyperedge of distinct vertices, or one that may list any number any number of times.
static void take_hedge(Source *source, bool raw, Case *c)
{
    std::vector<int> pins;
    for (int size = take_byte(source) % 9; size > 0 && (raw || c->nvtxs > 0); size--)
        pins.push_back(raw ? take_vertex(source, c->nvtxs) : take_byte(source) % c->nvtxs);
    if (!raw) return add_hedge(c, pins);
    c->eind.insert(c->eind.end(), pins.begin(), pins.end());
    c->eptr.push_back(static_cast<int>(c->eind.size()));
}

// A start that may fall, or lie behind the last.
static void spoil_start(Source *source, Case *c)
{
    const size_t e = static_cast<size_t>(take_byte(source)) % c->eptr.size();
    if (e + 1 < c->eptr.size()) c->eptr[e] += take_byte(source) - 128;
}

static Case take_case(Source *source)
{
    Case c = empty_case();
    c.family = "bytes";
    c.entry = static_cast<Entry>(take_byte(source) % (ENTRY_REFINE + 1));
    c.nparts = take_option(source, 2, 12);
    c.ubfactor = take_option(source, 1, 49);
    c.options[ZORPEL_OPT_USE] = 1;
    c.options[ZORPEL_OPT_NRUNS] = take_option(source, 1, 3);
    c.options[ZORPEL_OPT_CTYPE] = take_option(source, 1, 5);
    c.options[ZORPEL_OPT_RTYPE] = take_option(source, 1, 3);
    c.options[ZORPEL_OPT_VCYCLE] = take_option(source, 0, 3);
    c.options[ZORPEL_OPT_RECONST] = take_option(source, 0, 1);
    c.options[ZORPEL_OPT_FIXED] = take_option(source, 0, 1);
    c.options[ZORPEL_OPT_SEED] = take_byte(source);
    c.options[ZORPEL_OPT_DBGLVL] = take_byte(source) % 2 * (take_byte(source) & ~32);
    c.nvtxs = take_byte(source) % 160;
    const int nhedges = take_byte(source);
    take_weights(source, static_cast<size_t>(c.nvtxs), &c.vwgts);
    take_weights(source, static_cast<size_t>(nhedges), &c.hewgts);
    const int least = c.entry == ENTRY_REFINE ? 0 : -1;
    const int most = c.entry == ENTRY_REFINE ? 1 : std::max(0, c.nparts - 1);
    for (int v = 0; v < c.nvtxs; v++) c.part.push_back(take_option(source, least, most));
    const int manners = take_byte(source);
    for (int e = 0; e < nhedges; e++) take_hedge(source, manners % 4 == 3, &c);
    if (manners >= 248) spoil_start(source, &c);
    return c;
}

static bool outside(int value, int least, int most)
{
    return value < least || value > most;
}

static bool weights_are_bad(const std::vector<int> &weights)
{
    long long total = 0;
    for (const int w : weights) {
        if (w < 0) return true;
        total += w;
    }
    return total > 2147483646;
}

static bool starts_are_bad(const Case &c)
{
    return c.eptr[0] != 0 || !std::is_sorted(c.eptr.begin(), c.eptr.end());
}

// A number that is no vertex, or one listed again.
static bool pins_are_bad(const Case &c)
{
    for (int e = 0; e < count_hedges(c); e++) {
        const auto begin = c.eind.begin() + c.eptr[static_cast<size_t>(e)];
        const std::set<int> pins(begin, begin + hedge_size(c, e));
        if (static_cast<int>(pins.size()) < hedge_size(c, e)) return true;
        if (!pins.empty() && (*pins.begin() < 0 || *pins.rbegin() >= c.nvtxs)) return true;
    }
    return false;
}

// Whether the call breaks a rule of the entry points.
static bool is_invalid(const Case &c)
{
    const int *const o = c.options;
    const bool refine = c.entry == ENTRY_REFINE;
    if (!refine && (c.nparts < 2 || outside(c.ubfactor, 1, 49) || o[ZORPEL_OPT_NRUNS] < 1 ||
                    outside(o[ZORPEL_OPT_CTYPE], 1, 5) || outside(o[ZORPEL_OPT_RTYPE], 1, 3) ||
                    outside(o[ZORPEL_OPT_VCYCLE], 0, 3) || outside(o[ZORPEL_OPT_RECONST], 0, 1) ||
                    outside(o[ZORPEL_OPT_FIXED], 0, 1)))
        return true;
    const int least = refine ? 0 : -1, most = refine ? 1 : c.nparts - 1;
    const bool judged = refine || o[ZORPEL_OPT_FIXED] == 1;
    for (const int p : c.part)
        if (judged && outside(p, least, most)) return true;
    return weights_are_bad(c.vwgts) || weights_are_bad(c.hewgts) || starts_are_bad(c) ||
           pins_are_bad(c);
}

/* The arrays are the case's own: a fatal exit must not jump over a destructor. */
struct Call {
    const Case *c;
    int *part;
    int edgecut;
};

static const int *data_or_null(const std::vector<int> &list)
{
    return list.empty() ? nullptr : list.data();
}

static void call_entry(void *argument)
{
    Call *const call = static_cast<Call *>(argument);
    const Case &c = *call->c;
    const int nhedges = static_cast<int>(c.eptr.size()) - 1;
    if (c.entry == ENTRY_REFINE) {
        ZORPEL_2WayRefine(c.nvtxs, nhedges, data_or_null(c.vwgts), c.eptr.data(), c.eind.data(),
                          data_or_null(c.hewgts), c.ubfactor, c.options, call->part,
                          &call->edgecut);
        return;
    }
    const auto entry =
        c.entry == ENTRY_RECURSIVE ? ZORPEL_PartRecursive : ZORPEL_PartRecursiveInternal;
    entry(c.nvtxs, nhedges, data_or_null(c.vwgts), c.eptr.data(), c.eind.data(),
          data_or_null(c.hewgts), c.nparts, c.ubfactor, c.options, call->part, &call->edgecut);
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    Source source = {bytes, size};
    const Case c = take_case(&source);
    const bool invalid = is_invalid(c);
    if (!invalid && c.options[ZORPEL_OPT_NRUNS] > 12) return 0;
    if (!invalid && c.nparts > 100) return 0;
    fuzz_silence();
    Outcome outcome = {c.part, 0, {}};
    Call call = {&c, outcome.part.data(), 0};
    const bool survived = fuzz_survives(call_entry, &call);
    if (survived == invalid) fuzz_finding(invalid ? "an invalid call passed" : fuzz_message());
    if (!survived) return 0;
    outcome.edgecut = call.edgecut;
    const std::string why =
        c.entry == ENTRY_REFINE && outside(c.ubfactor, 1, 49) ? "" : check_outcome(c, outcome);
    if (!why.empty()) fuzz_finding(why.c_str());
    return 0;
}
